#pragma once
// What the fuzz targets share: a check that stops the run, a reader that hands out the input byte by
// byte (zeros once it runs dry), and a scratch folder for the files rewritten on every input.
#include "nimbit/filesystem/file_path.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

inline void check(bool condition) {
    if (!condition)
        std::abort();
}

struct fuzz_input {
    const uint8_t* data;
    size_t size;
    size_t at = 0;

    bool more() const { return at < size; }
    uint8_t byte() { return at < size ? data[at++] : 0; }
    // A little-endian number of up to eight bytes.
    uint64_t take(size_t bytes) {
        uint64_t v = 0;
        for (size_t i = 0; i < bytes; ++i)
            v |= static_cast<uint64_t>(byte()) << (8 * i);
        return v;
    }
    std::string_view text() const { return {reinterpret_cast<const char*>(data), size}; }
    // The next n bytes, or as many as are left.
    std::string_view bytes(size_t n) {
        const size_t from = at;
        at += std::min(n, size - at);
        return text().substr(from, at - from);
    }
};

// One folder for the whole run, memory-backed when the system has it, removed at exit.
inline nimbit::file_path scratch(const char* leaf) {
    static const struct folder {
        const std::filesystem::path root =
            std::filesystem::path(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") /
            ("quillo-fuzz-" + std::to_string(::getpid()));
        folder() { std::filesystem::create_directories(root); }
        ~folder() { std::filesystem::remove_all(root); }
    } made;
    return nimbit::file_path(made.root.string()).append(nimbit::file_path(leaf));
}

inline bool write_file(const nimbit::file_path& path, std::string_view bytes) {
    return static_cast<bool>(std::ofstream(path.c_str(), std::ios::binary).write(bytes.data(), bytes.size()));
}

// A target's body, run once per input (seen whole or byte by byte through `in`); it may return early.
#define FUZZ_TARGET()                                                                                        \
    static void fuzz_one(fuzz_input& in);                                                                    \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {                                \
        fuzz_input in{data, size};                                                                           \
        fuzz_one(in);                                                                                        \
        return 0;                                                                                            \
    }                                                                                                        \
    static void fuzz_one(fuzz_input& in)
