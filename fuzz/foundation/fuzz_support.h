#pragma once
// What the foundation fuzzers share: a scratch folder for the files they rewrite on every input, and
// a check that stops the run.
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

inline void check(bool condition) {
    if (!condition)
        std::abort();
}

// One folder for the whole run, memory-backed when the system has it, removed at exit.
inline nimbit::file_path scratch(const char* leaf) {
    static const struct folder {
        nimbit::file_path root;
        folder() {
            const char* base = std::getenv("TMPDIR");
            if (!base || !*base)
                base = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
            std::string pattern = std::string(base) + "/quillo-fuzz-XXXXXX";
            check(::mkdtemp(pattern.data()) != nullptr);
            root = nimbit::file_path(pattern);
        }
        ~folder() { nimbit::remove_dir(root); }
    } made;
    return made.root.append(nimbit::file_path(leaf));
}

inline bool write_file(const nimbit::file_path& path, const unsigned char* bytes, size_t length) {
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out)
        return false;
    std::fwrite(bytes, 1, length, out);
    return std::fclose(out) == 0;
}
