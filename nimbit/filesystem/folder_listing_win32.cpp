#include "nimbit/filesystem/folder_listing.h"

#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

namespace nimbit {

struct folder_listing::impl {
    HANDLE find = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW found{};
    bool pending = false; // the first entry comes with FindFirstFileExW and waits for next()
    void close() {
        if (find != INVALID_HANDLE_VALUE)
            FindClose(find);
        find = INVALID_HANDLE_VALUE;
        pending = false;
    }
};

folder_listing::folder_listing() : self(std::make_unique<impl>()) {}
folder_listing::~folder_listing() {
    self->close();
}

bool folder_listing::open(const file_path& folder) {
    self->close();
    std::wstring pattern = widen(folder.empty() ? std::string(".") : folder.to_string());
    if (pattern.back() != L'/' && pattern.back() != L'\\')
        pattern += L'\\';
    pattern += L'*';
    self->find = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &self->found, FindExSearchNameMatch,
                                  nullptr, FIND_FIRST_EX_LARGE_FETCH);
    self->pending = self->find != INVALID_HANDLE_VALUE;
    return self->pending;
}

bool folder_listing::next(std::string& name, bool& is_folder) {
    if (!self->pending && (self->find == INVALID_HANDLE_VALUE || !FindNextFileW(self->find, &self->found)))
        return false;
    self->pending = false;
    name = narrow(self->found.cFileName);
    // A junction or a symbolic link to a folder carries the folder attribute too; it is not walked.
    const DWORD attributes = self->found.dwFileAttributes;
    is_folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) && !(attributes & FILE_ATTRIBUTE_REPARSE_POINT);
    return true;
}

} // namespace nimbit
