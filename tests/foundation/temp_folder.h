#pragma once

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/folder_iterator.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// A fresh folder under the system's temporary folder, removed with everything in it at the end of
// the test.
class temp_folder {
public:
    temp_folder() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/quillo-test-XXXXXX";
        if (char* made = ::mkdtemp(pattern.data()))
            root = nimbit::file_path(std::string(made));
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

// Small whole-file helpers for checking results.
inline bool write_text(const nimbit::file_path& path, const std::string& text) {
    std::ofstream out(path.c_str(), std::ios::binary);
    return out && out.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
}
inline std::string read_text(const nimbit::file_path& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
inline std::vector<unsigned char> read_bytes(const nimbit::file_path& path) {
    const std::string text = read_text(path);
    return {text.begin(), text.end()};
}
inline bool write_bytes(const nimbit::file_path& path, const std::vector<unsigned char>& content) {
    return write_text(path, std::string(content.begin(), content.end()));
}

// Every path below root other than "." and "..", relative to root, sorted.
inline std::vector<std::string> tree(const nimbit::file_path& root, bool recursive = true) {
    std::vector<std::string> out;
    for (const auto& entry : nimbit::folder_enumerator{root, recursive})
        if (const std::string leaf = entry.path.leaf(true); leaf != "." && leaf != "..")
            out.push_back(entry.path.to_string().substr(root.to_string().size() + 1));
    std::sort(out.begin(), out.end());
    return out;
}
