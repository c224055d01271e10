#include "nimbit/filesystem/known_folders.h"

#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

#include <knownfolders.h>
#include <shlobj.h>

namespace nimbit {

namespace {

// The environment variable's value, or the empty string when it is unset or empty.
std::string env(std::string_view name) {
    return detail::environment(name).value_or(std::string());
}

// A known folder's path with "/" separators, or empty when the system has none.
file_path known_folder(REFKNOWNFOLDERID id) {
    PWSTR path = nullptr;
    file_path result;
    if (SUCCEEDED(SHGetKnownFolderPath(id, KF_FLAG_DEFAULT, nullptr, &path)) && path)
        result = file_path(narrow(path)).fix_separator();
    CoTaskMemFree(path);
    return result;
}

} // namespace

file_path get_user_data_path() {
    if (std::string dir = env("QUILLO_USER_DATA_DIR"); !dir.empty())
        return file_path(std::move(dir));
    return known_folder(FOLDERID_RoamingAppData);
}

file_path get_common_data_path() {
    if (std::string dir = env("QUILLO_COMMON_DATA_DIR"); !dir.empty())
        return file_path(std::move(dir));
    return known_folder(FOLDERID_ProgramData);
}

file_path get_docs_data_path() {
    if (std::string dir = env("QUILLO_DOCS_DIR"); !dir.empty())
        return file_path(std::move(dir));
    return known_folder(FOLDERID_Documents);
}

namespace detail {

std::optional<std::string> environment(std::string_view name) {
    const std::wstring wide = widen(name);
    const DWORD size = GetEnvironmentVariableW(wide.c_str(), nullptr, 0);
    if (size == 0)
        return GetLastError() == ERROR_ENVVAR_NOT_FOUND ? std::nullopt : std::optional<std::string>("");
    std::wstring value(size, L'\0');
    const DWORD length = GetEnvironmentVariableW(wide.c_str(), value.data(), size);
    if (length == 0 || length >= size)
        return std::string();
    value.resize(length);
    return narrow(value);
}

file_path shared_docs_path() {
    return known_folder(FOLDERID_PublicDocuments);
}

} // namespace detail

} // namespace nimbit
