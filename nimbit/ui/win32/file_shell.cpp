#include "nimbit/ui/native_file_shell.h"

#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/win32/win32_util.h"
#include "nimbit/utils/wide_string_win32.h"

#include <shellapi.h>
#include <shlobj.h>

// Hand-offs to the shell: links and files open with their default handler, items are shown
// selected in Explorer.

namespace nimbit::file_shell {

namespace {

bool shell_open(const std::wstring& target, const wchar_t* parameters = nullptr) {
    ui::win32::com_scope com; // some handlers are COM objects
    const auto result = reinterpret_cast<INT_PTR>(
        ShellExecuteW(nullptr, L"open", target.c_str(), parameters, nullptr, SW_SHOWNORMAL));
    return result > 32;
}

std::wstring windows_path(const file_path& path) {
    std::wstring w = widen(path.to_string());
    for (wchar_t& c : w)
        if (c == L'/')
            c = L'\\';
    return w;
}

} // namespace

bool show_in_explorer(const file_path& path, bool select) {
    if (path.empty())
        return false;
    const std::wstring full = windows_path(path);
    if (!select)
        return shell_open(full);
    {
        ui::win32::com_scope com;
        PIDLIST_ABSOLUTE item = nullptr;
        if (com.ok() && SUCCEEDED(SHParseDisplayName(full.c_str(), nullptr, &item, 0, nullptr)) && item) {
            const HRESULT shown = SHOpenFolderAndSelectItems(item, 0, nullptr, 0);
            CoTaskMemFree(item);
            if (SUCCEEDED(shown))
                return true;
        }
    }
    // Where the shell cannot select (or the item is not there yet), Explorer is asked directly.
    const std::wstring parameters = L"/select,\"" + full + L"\"";
    return shell_open(L"explorer.exe", parameters.c_str());
}

bool open_link(const std::string& url) {
    if (url.empty())
        return false;
    return shell_open(widen(url));
}

} // namespace nimbit::file_shell
