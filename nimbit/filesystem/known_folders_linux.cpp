#include "nimbit/filesystem/known_folders.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
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

struct file_closer {
    void operator()(std::FILE* f) const { std::fclose(f); }
};

// The product settings of the machine-wide folder: lines of key=value; "AssetsPath" is the one read.
std::string read_assets_path(const file_path& settings) {
    std::unique_ptr<std::FILE, file_closer> file(std::fopen(settings.c_str(), "rb"));
    if (!file)
        return {};
    constexpr std::string_view key = "AssetsPath=";
    char line[4096];
    while (std::fgets(line, sizeof line, file.get())) {
        std::string_view text = line;
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
            text.remove_suffix(1);
        if (text.substr(0, key.size()) == key)
            return std::string(text.substr(key.size()));
    }
    return {};
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

file_path get_docs_data_path(std::string_view product, std::string_view variable, int mode) {
    if (mode == 0) {
        const file_path common = get_common_data_path();
        if (!common.empty() && !product.empty()) {
            std::string assets =
                read_assets_path(common.append(file_path("Tarvelo")).append(file_path(product)));
            if (assets.size() > 1)
                return file_path(std::move(assets));
        }
        if (!variable.empty())
            if (const char* value = std::getenv(std::string(variable).c_str()))
                return file_path(value);
        return get_docs_data_path();
    }
    if (mode == 2) {
        if (std::string dir = env("QUILLO_SHARED_DOCS_DIR"); !dir.empty())
            return file_path(std::move(dir));
        // The folder that holds the users' homes, then Shared, then the documents folder's name.
        const file_path users = home_folder().stem();
        const file_path docs = get_docs_data_path();
        if (users.empty() || docs.empty())
            return {};
        return users.append(file_path("Shared")).append(file_path(docs.leaf(true)));
    }
    return get_docs_data_path();
}

file_path get_common_data_path(std::string_view variable, int mode) {
    if (mode == 1)
        return get_user_data_path();
    if (mode == 0 && !variable.empty())
        if (const char* value = std::getenv(std::string(variable).c_str()))
            return file_path(value);
    return get_common_data_path();
}

} // namespace nimbit
