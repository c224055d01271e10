#include "nimbit/ui/native_file_browser.h"

#include "nimbit/ui/win32/native_window.h"
#include "nimbit/ui/window.h"
#include "nimbit/utils/wide_string_win32.h"

#include <shlobj.h>
#include <shobjidl.h>

// The system's common item dialogs (open, save, folder), run modally over the parent window.

namespace nimbit::file_browser {

namespace {

// Releases a COM interface at the end of a scope.
template <class T> struct com_ptr {
    T* p = nullptr;
    ~com_ptr() {
        if (p)
            p->Release();
    }
    T* operator->() const { return p; }
    T** out() { return &p; }
};

HWND owner_of(const ui::window* parent) {
    if (!parent)
        return nullptr;
    const auto* native = dynamic_cast<const ui::win32::win32_window*>(&parent->get_native());
    return native ? native->get_hwnd() : nullptr;
}

file_path path_of(IShellItem* item) {
    file_path path;
    PWSTR name = nullptr;
    if (item && SUCCEEDED(item->GetDisplayName(SIGDN_FILESYSPATH, &name)) && name) {
        path = file_path(narrow(name));
        CoTaskMemFree(name);
    }
    return path;
}

} // namespace

std::vector<file_path> file_dialog(const ui::window* parent, dialog_type type, const std::string& title,
                                   const std::vector<file_filter>& filters, bool allow_multiple,
                                   const std::string& default_name) {
    std::vector<file_path> chosen;
    ui::win32::com_scope com;
    if (!com.ok())
        return chosen;
    com_ptr<IFileDialog> dialog;
    const bool open = type == dialog_type::open;
    if (FAILED(CoCreateInstance(open ? CLSID_FileOpenDialog : CLSID_FileSaveDialog, nullptr,
                                CLSCTX_INPROC_SERVER, open ? IID_IFileOpenDialog : IID_IFileSaveDialog,
                                reinterpret_cast<void**>(dialog.out()))))
        return chosen;
    // Patterns match regardless of case on Windows: each filter is taken as written.
    std::vector<std::wstring> texts;
    texts.reserve(filters.size() * 2);
    for (const file_filter& f : filters) {
        texts.push_back(widen(f.label));
        texts.push_back(widen(f.pattern.empty() ? std::string("*.*") : f.pattern));
    }
    std::vector<COMDLG_FILTERSPEC> types;
    for (size_t i = 0; i + 1 < texts.size(); i += 2)
        types.push_back({texts[i].c_str(), texts[i + 1].c_str()});
    if (!types.empty())
        dialog->SetFileTypes(static_cast<UINT>(types.size()), types.data());
    if (!title.empty())
        dialog->SetTitle(widen(title).c_str());
    FILEOPENDIALOGOPTIONS options = 0;
    dialog->GetOptions(&options);
    options |= FOS_FORCEFILESYSTEM;
    if (open) {
        options |= FOS_FILEMUSTEXIST | FOS_PATHMUSTEXIST;
        if (allow_multiple)
            options |= FOS_ALLOWMULTISELECT;
    } else {
        options |= FOS_OVERWRITEPROMPT;
        if (!default_name.empty())
            dialog->SetFileName(widen(default_name).c_str());
        // The first filter's extension is added to a name typed without one.
        if (!filters.empty() && filters.front().pattern.size() > 2 && filters.front().pattern != "*.*")
            dialog->SetDefaultExtension(widen(filters.front().pattern.substr(2)).c_str());
    }
    dialog->SetOptions(options);
    if (FAILED(dialog->Show(owner_of(parent))))
        return chosen; // cancelled
    if (open) {
        com_ptr<IShellItemArray> items;
        if (SUCCEEDED(static_cast<IFileOpenDialog*>(dialog.p)->GetResults(items.out()))) {
            DWORD count = 0;
            items->GetCount(&count);
            for (DWORD i = 0; i < count; ++i) {
                com_ptr<IShellItem> item;
                if (SUCCEEDED(items->GetItemAt(i, item.out())))
                    if (file_path p = path_of(item.p); !p.empty())
                        chosen.push_back(p);
            }
        }
    } else {
        com_ptr<IShellItem> item;
        if (SUCCEEDED(dialog->GetResult(item.out())))
            if (file_path p = path_of(item.p); !p.empty())
                chosen.push_back(p);
    }
    return chosen;
}

file_path folder_select_dialog(const ui::window* parent, const std::string& title,
                               const file_path& start_folder) {
    ui::win32::com_scope com;
    if (!com.ok())
        return {};
    com_ptr<IFileOpenDialog> dialog;
    if (FAILED(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOpenDialog,
                                reinterpret_cast<void**>(dialog.out()))))
        return {};
    FILEOPENDIALOGOPTIONS options = 0;
    dialog->GetOptions(&options);
    dialog->SetOptions(options | FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST);
    if (!title.empty())
        dialog->SetTitle(widen(title).c_str());
    if (!start_folder.empty()) {
        com_ptr<IShellItem> start;
        if (SUCCEEDED(SHCreateItemFromParsingName(widen(start_folder.to_string()).c_str(), nullptr,
                                                  IID_IShellItem, reinterpret_cast<void**>(start.out()))))
            dialog->SetFolder(start.p);
    }
    if (FAILED(dialog->Show(owner_of(parent))))
        return {};
    com_ptr<IShellItem> item;
    if (FAILED(dialog->GetResult(item.out())))
        return {};
    return path_of(item.p);
}

} // namespace nimbit::file_browser
