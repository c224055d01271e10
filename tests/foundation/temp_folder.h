#pragma once

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/folder_iterator.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#if defined(_WIN32)
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>
#else
#include <unistd.h>
#endif

inline std::filesystem::path native_path(const nimbit::file_path& path) {
    const std::string& text = path.to_string();
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

// A fresh folder under the system's temporary folder, removed with everything in it at the end of
// the test.
class temp_folder {
public:
    // A random name, made or tried again: mkdtemp is not everywhere.
    temp_folder() {
        const std::u8string base = std::filesystem::temp_directory_path().u8string();
        std::random_device random;
        for (int attempt = 0; attempt < 16 && root.empty(); ++attempt) {
            const nimbit::file_path candidate =
                nimbit::file_path(std::string(base.begin(), base.end()))
                    .fix_separator()
                    .append(nimbit::file_path("quillo-test-" + std::to_string(random())));
            std::error_code error;
            if (std::filesystem::create_directory(native_path(candidate), error))
                root = candidate;
        }
    }
    ~temp_folder() {
        if (!root.empty())
            nimbit::remove_dir(root);
    }
    temp_folder(const temp_folder&) = delete;
    temp_folder& operator=(const temp_folder&) = delete;

    const nimbit::file_path& path() const { return root; }
    nimbit::file_path operator/(const char* relative) const {
        return root.append(nimbit::file_path(relative));
    }

private:
    nimbit::file_path root;
};

// Small whole-file helpers for checking results. Paths go to the streams as UTF-8, which Windows
// would otherwise read in its ANSI code page.
inline bool write_text(const nimbit::file_path& path, const std::string& text) {
    std::ofstream out(native_path(path), std::ios::binary);
    return out && out.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
}
inline std::string read_text(const nimbit::file_path& path) {
    std::ifstream in(native_path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
inline std::vector<unsigned char> read_bytes(const nimbit::file_path& path) {
    const std::string text = read_text(path);
    return {text.begin(), text.end()};
}
inline bool write_bytes(const nimbit::file_path& path, const std::vector<unsigned char>& content) {
    return write_text(path, std::string(content.begin(), content.end()));
}

// Links and the environment, by the system's own calls.
#if defined(_WIN32)
// A symbolic link to a file or folder (as the target is now), true only when it is there after.
// Without developer mode, creating one needs a privilege that the flag asks to do without.
inline bool make_symlink(const nimbit::file_path& target, const nimbit::file_path& link) {
    const DWORD kind = GetFileAttributesW(nimbit::widen(target.to_string()).c_str());
    const bool folder = kind != INVALID_FILE_ATTRIBUTES && (kind & FILE_ATTRIBUTE_DIRECTORY);
    const DWORD flags =
        (folder ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0) | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
    const std::wstring name = nimbit::widen(link.to_string());
    return CreateSymbolicLinkW(name.c_str(), nimbit::widen(target.to_string()).c_str(), flags) &&
           GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
}
// Wine 8 answers CreateSymbolicLinkW with success and makes nothing.
inline bool links_available() {
    static const bool available = [] {
        temp_folder tmp;
        return nimbit::make_dir(tmp / "t") && make_symlink(tmp / "t", tmp / "l");
    }();
    return available;
}
inline bool make_hard_link(const nimbit::file_path& target, const nimbit::file_path& link) {
    return CreateHardLinkW(nimbit::widen(link.to_string()).c_str(), nimbit::widen(target.to_string()).c_str(),
                           nullptr);
}
inline bool running_under_wine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}
inline void set_env(const char* name, const std::string& value) {
    SetEnvironmentVariableW(nimbit::widen(name).c_str(), nimbit::widen(value).c_str());
}
inline void unset_env(const char* name) {
    SetEnvironmentVariableW(nimbit::widen(name).c_str(), nullptr);
}
#else
inline bool make_symlink(const nimbit::file_path& target, const nimbit::file_path& link) {
    return ::symlink(target.c_str(), link.c_str()) == 0;
}
inline bool links_available() {
    return true;
}
inline bool make_hard_link(const nimbit::file_path& target, const nimbit::file_path& link) {
    return ::link(target.c_str(), link.c_str()) == 0;
}
inline void set_env(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
}
inline void unset_env(const char* name) {
    ::unsetenv(name);
}
#endif

// Every path below root other than "." and "..", relative to root, sorted.
inline std::vector<std::string> tree(const nimbit::file_path& root, bool recursive = true) {
    std::vector<std::string> out;
    for (const auto& entry : nimbit::folder_enumerator{root, recursive})
        if (const std::string leaf = entry.path.leaf(true); leaf != "." && leaf != "..")
            out.push_back(entry.path.to_string().substr(root.to_string().size() + 1));
    std::sort(out.begin(), out.end());
    return out;
}
