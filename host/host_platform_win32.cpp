#include "host/host_platform.h"
#include "host/menu_title.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

// The host's menu and activity on Windows: its main window (the utility suite's answer, handed over
// at start-up), that window's menu bar and the foreground window.

namespace {

HWND mainWindow = nullptr;

// The item's label as the menu shows it: '&' marks gone ("&&" is one '&'), the shortcut after a tab
// left out.
std::string ItemTitle(HMENU menu, int index) {
    const int length = GetMenuStringW(menu, static_cast<UINT>(index), nullptr, 0, MF_BYPOSITION);
    if (length <= 0)
        return std::string();
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    text.resize(static_cast<size_t>(
        GetMenuStringW(menu, static_cast<UINT>(index), text.data(), length + 1, MF_BYPOSITION)));
    std::wstring shown;
    for (size_t i = 0; i < text.size() && text[i] != L'\t'; ++i) {
        if (text[i] == L'&' && ++i == text.size())
            break;
        shown += text[i];
    }
    return nimbit::narrow(shown);
}

// The index of the item of menu that HostPlatform::FindMenuTitle picks; -1 when there is none.
int FindItem(HMENU menu, std::string_view title, bool category) {
    return HostPlatform::FindMenuTitle(
        GetMenuItemCount(menu), [menu](int i) { return ItemTitle(menu, i); }, title, category);
}

bool Enabled(HMENU menu, int index) {
    const UINT state = GetMenuState(menu, static_cast<UINT>(index), MF_BYPOSITION);
    return state != static_cast<UINT>(-1) && (state & (MF_GRAYED | MF_DISABLED)) == 0;
}

} // namespace

namespace HostPlatform {

std::string ExecutablePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0)
            return std::string();
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2); // cut short: a longer buffer
    }
    std::string narrowed = nimbit::narrow(path);
    for (char& c : narrowed)
        c = c == '\\' ? '/' : c;
    return narrowed;
}

int PresetsFolderLevels() {
    return 1;
}

void SetMainWindow(void* window) {
    mainWindow = static_cast<HWND>(window);
}

bool IsHostActive() {
    const HWND front = GetForegroundWindow();
    DWORD process = 0;
    return front != nullptr && GetWindowThreadProcessId(front, &process) != 0 &&
           process == GetCurrentProcessId();
}

bool ChooseEffectMenuItem(std::string_view category, std::string_view name) {
    const HWND main = mainWindow;
    if (main == nullptr || !IsWindow(main))
        return false;
    const HMENU menuBar = GetMenu(main);
    if (menuBar == nullptr || GetMenuItemCount(menuBar) < 6)
        return false;
    const HMENU effectMenu = GetSubMenu(menuBar, 5);
    if (effectMenu == nullptr)
        return false;
    const int categoryIndex = FindItem(effectMenu, category, true);
    if (categoryIndex < 0 || !Enabled(effectMenu, categoryIndex))
        return false;
    const HMENU categoryMenu = GetSubMenu(effectMenu, categoryIndex);
    if (categoryMenu == nullptr)
        return false;
    const int effectIndex = FindItem(categoryMenu, name, false);
    // A greyed item is one the artist could not choose either.
    if (effectIndex < 0 || !Enabled(categoryMenu, effectIndex) ||
        GetSubMenu(categoryMenu, effectIndex) != nullptr)
        return false;
    const UINT id = GetMenuItemID(categoryMenu, effectIndex);
    SendMessageW(main, WM_COMMAND, MAKEWPARAM(id, 0), 0);
    return true;
}

} // namespace HostPlatform
