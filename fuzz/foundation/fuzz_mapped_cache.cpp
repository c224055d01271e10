// Arbitrary header and data files under a mapped cache, then a few operations on it.
// Input: flags (1 byte), header length (4), data length (4), header bytes, data bytes, operations.
#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/mapped_cache.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

const std::string& scratch_cache() {
    static const std::string path = [] {
        // Memory-backed when possible: every run rewrites the files, and a disk would only slow it.
        const char* base = std::getenv("TMPDIR");
        if (!base || !*base)
            base = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        std::string folder = std::string(base) + "/mapped_cache_fuzz.XXXXXX";
        if (!::mkdtemp(folder.data()))
            std::abort();
        static std::string made;
        made = folder;
        std::atexit([] {
            for (const char* leaf : {"/effects_cache", "/effects_cache.header"})
                ::unlink((made + leaf).c_str());
            ::rmdir(made.c_str());
        });
        return folder + "/effects_cache";
    }();
    return path;
}

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

struct reader {
    const uint8_t* data;
    size_t size;
    size_t at = 0;
    uint32_t take(size_t bytes) {
        uint32_t v = 0;
        for (size_t i = 0; i < bytes; ++i)
            v |= static_cast<uint32_t>(at < size ? data[at++] : 0) << (8 * i);
        return v;
    }
    const uint8_t* span(size_t& length) {
        length = std::min(length, size - at);
        const uint8_t* p = data + at;
        at += length;
        return p;
    }
    bool done() const { return at >= size; }
};

void write_file(const std::string& path, const uint8_t* bytes, size_t length) {
    if (FILE* out = std::fopen(path.c_str(), "wb")) {
        std::fwrite(bytes, 1, length, out);
        std::fclose(out);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    reader in{data, size};
    const uint32_t flags = in.take(1);
    size_t header_length = in.take(4);
    size_t data_length = in.take(4);
    const uint8_t* header = in.span(header_length);
    const uint8_t* values = in.span(data_length);
    const std::string& path = scratch_cache();
    write_file(path + ".header", header, header_length);
    write_file(path, values, data_length);

    nimbit::mapped_cache cache;
    if (flags & 2)
        cache.set_max_size(1 + in.take(2) * 16);
    cache.load(nimbit::file_path(path), (flags & 1) != 0);
    std::vector<unsigned char> value(1 << 16);
    for (int op = 0; op < 16 && !in.done(); ++op) {
        const uint32_t kind = in.take(1);
        const std::string name = "n" + std::to_string(kind >> 4 & 7);
        switch (kind % 6) {
        case 0:
        case 1: {
            const nimbit::cache_value v = cache.get_data(name);
            unsigned sum = 0;
            for (uint64_t i = 0; i < v.size; ++i)
                sum += v.data[i];
            check(v.size || !v.data);
            (void)sum;
            break;
        }
        case 2: {
            const size_t length = 1 + in.take(2);
            std::memset(value.data(), static_cast<int>(kind), length);
            if (cache.set_data(name, value.data(), length)) {
                const nimbit::cache_value v = cache.get_data(name);
                check(v.size == length && std::memcmp(v.data, value.data(), length) == 0);
            }
            break;
        }
        case 3:
            cache.remove_data(name);
            break;
        case 4:
            cache.remove_oldest_entry();
            break;
        default:
            cache.defrag(kind >> 4);
        }
        check(cache.check_consistency());
    }
    cache.close();
    return 0;
}
