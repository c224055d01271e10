// The simulated host's main window on Windows: a top-level window whose menu bar is the main menu
// (sim_menu.cpp's model), where the plug-in finds the Effect menu and sends an effect item's
// WM_COMMAND, and whose being in the foreground is the host being active.

#include "hostsim/sim_host.h"
#include "hostsim/sim_platform.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

#include <vector>

namespace hostsim {

namespace {

constexpr wchar_t WindowClass[] = L"QuilloSimulatedHost";
// Menu item ids: a WM_COMMAND carries 16 bits of them.
constexpr UINT FirstCommand = 1;
constexpr size_t MaxCommands = 0xF000;

struct WindowState {
    SimHost* host = nullptr;
    std::vector<const MenuItem*> commands; // by id - FirstCommand
};

WindowState* StateOf(HWND window) {
    return reinterpret_cast<WindowState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

// '&' marks the next letter as the item's access key: a literal one is written twice.
std::wstring MenuText(const std::string& title) {
    std::wstring text;
    for (wchar_t c : nimbit::widen(title)) {
        text += c;
        if (c == L'&')
            text += L'&';
    }
    return text;
}

HMENU BuildMenuHandle(const MenuItem& menu, bool bar, WindowState& state) {
    HMENU handle = bar ? CreateMenu() : CreatePopupMenu();
    for (const auto& item : menu.submenu) {
        const UINT grayed = item->enabled ? 0 : MF_GRAYED;
        if (item->hasSubmenu) {
            AppendMenuW(handle, MF_POPUP | grayed,
                        reinterpret_cast<UINT_PTR>(BuildMenuHandle(*item, false, state)),
                        MenuText(item->title).c_str());
        } else if (state.commands.size() < MaxCommands) {
            state.commands.push_back(item.get());
            AppendMenuW(handle, MF_STRING | grayed, FirstCommand + state.commands.size() - 1,
                        MenuText(item->title).c_str());
        }
    }
    return handle;
}

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    WindowState* state = StateOf(window);
    switch (message) {
    case WM_NCCREATE:
        SetWindowLongPtrW(
            window, GWLP_USERDATA,
            reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams));
        break;
    case WM_COMMAND:
        // From the menu: no control, notification 0. Choosing an item does what it does on the Mac.
        if (state != nullptr && lParam == 0 && HIWORD(wParam) == 0 && LOWORD(wParam) >= FirstCommand &&
            LOWORD(wParam) - FirstCommand < state->commands.size()) {
            try {
                state->host->ChooseMenuEffect(state->commands[LOWORD(wParam) - FirstCommand]->effectKey);
            } catch (...) {
                // nothing crosses a window procedure
            }
            return 0;
        }
        break;
    case WM_CLOSE:
        // Closing is quitting: the driver's message loop ends and it runs the death hooks.
        PostQuitMessage(0);
        return 0;
    case WM_NCDESTROY:
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        delete state;
        break;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

namespace platform {

void* CreateMainWindow(SimHost& host) {
    static const ATOM registered = [] {
        WNDCLASSEXW windowClass{};
        windowClass.cbSize = sizeof windowClass;
        windowClass.lpfnWndProc = MainWindowProc;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
        windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
        windowClass.lpszClassName = WindowClass;
        return RegisterClassExW(&windowClass);
    }();
    if (registered == 0)
        return nullptr;
    // The window owns its state from WM_NCCREATE on and deletes it at WM_NCDESTROY.
    return CreateWindowExW(0, WindowClass, L"Simulated Host", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                           CW_USEDEFAULT, 900, 640, nullptr, nullptr, GetModuleHandleW(nullptr),
                           new WindowState{&host, {}});
}

void DestroyMainWindow(void* window) {
    if (window != nullptr && IsWindow(static_cast<HWND>(window)))
        DestroyWindow(static_cast<HWND>(window));
}

void SetMainWindowMenu(void* window, const MenuItem& menu) {
    const HWND handle = static_cast<HWND>(window);
    WindowState* state = handle != nullptr ? StateOf(handle) : nullptr;
    if (state == nullptr)
        return;
    state->commands.clear();
    const HMENU old = GetMenu(handle);
    SetMenu(handle, BuildMenuHandle(menu, true, *state));
    if (old != nullptr)
        DestroyMenu(old);
    DrawMenuBar(handle);
}

void SetMainWindowActive(void* window, bool active) {
    const HWND handle = static_cast<HWND>(window);
    if (handle == nullptr)
        return;
    if (active)
        SetForegroundWindow(handle);
    else if (GetForegroundWindow() == handle)
        SetForegroundWindow(GetDesktopWindow());
}

} // namespace platform
} // namespace hostsim
