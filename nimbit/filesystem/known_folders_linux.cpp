#include "nimbit/filesystem/known_folders.h"

#include <cstdlib>
#include <string>

#include <pwd.h>
#include <unistd.h>

namespace nimbit {

namespace {

// An environment variable's value, or the empty string when it is unset or empty.
std::string env(std::string_view name) {
    const char* value = std::getenv(std::string(name).c_str());
    return value ? std::string(value) : std::string();
}

file_path home_folder() {
    if (std::string home = env("HOME"); !home.empty())
        return file_path(std::move(home));
    // Services may run without HOME; the password database still knows the folder.
    passwd entry;
    passwd* found = nullptr;
    char buffer[4096];
    if (::getpwuid_r(::getuid(), &entry, buffer, sizeof buffer, &found) == 0 && found && found->pw_dir)
        return file_path(found->pw_dir);
    return {};
}

file_path under_home(const char* relative) {
    const file_path home = home_folder();
    return home.empty() ? file_path() : home.append(file_path(relative));
}

} // namespace

file_path get_user_data_path() {
    if (std::string dir = env("QUILLO_USER_DATA_DIR"); !dir.empty())
        return file_path(std::move(dir));
    if (std::string dir = env("XDG_CONFIG_HOME"); !dir.empty())
        return file_path(std::move(dir));
    return under_home(".config");
}

file_path get_common_data_path() {
    if (std::string dir = env("QUILLO_COMMON_DATA_DIR"); !dir.empty())
        return file_path(std::move(dir));
    return file_path("/etc/xdg");
}

file_path get_docs_data_path() {
    if (std::string dir = env("QUILLO_DOCS_DIR"); !dir.empty())
        return file_path(std::move(dir));
    if (std::string dir = env("XDG_DOCUMENTS_DIR"); !dir.empty())
        return file_path(std::move(dir));
    return under_home("Documents");
}

namespace detail {

std::optional<std::string> environment(std::string_view name) {
    const char* value = std::getenv(std::string(name).c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
}

file_path shared_docs_path() {
    // The folder that holds the users' homes, then Shared, then the documents folder's name.
    const file_path users = home_folder().stem();
    const file_path docs = get_docs_data_path();
    if (users.empty() || docs.empty())
        return {};
    return users.append(file_path("Shared")).append(file_path(docs.leaf(true)));
}

} // namespace detail

} // namespace nimbit
