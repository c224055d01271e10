#pragma once

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"

#include <cstdio>
#include <cstdlib>
#include <string>

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
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return false;
    const bool ok = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    return std::fclose(f) == 0 && ok;
}

inline std::string read_text(const nimbit::file_path& path) {
    std::string out;
    if (std::FILE* f = std::fopen(path.c_str(), "rb")) {
        char buffer[4096];
        size_t n;
        while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
            out.append(buffer, n);
        std::fclose(f);
    }
    return out;
}
