// Arbitrary header and data files under a mapped cache, then a few operations on it.
// Input: flags (1 byte), header length (4), data length (4), header bytes, data bytes, operations.
#include "fuzz_support.h"
#include "nimbit/utils/mapped_cache.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    size_t at = 0;
    const auto take = [&](size_t bytes) {
        uint32_t v = 0;
        for (size_t i = 0; i < bytes; ++i)
            v |= static_cast<uint32_t>(at < size ? data[at++] : 0) << (8 * i);
        return v;
    };
    const uint32_t flags = take(1);
    const size_t header_length = take(4), data_length = take(4);
    const nimbit::file_path path = scratch("effects_cache");
    for (const auto& [file, length] :
         {std::pair{path.append_extension("header"), header_length}, {path, data_length}}) {
        const size_t n = std::min(length, size - at);
        write_file(file, data + at, n);
        at += n;
    }

    nimbit::mapped_cache cache;
    if (flags & 2)
        cache.set_max_size(1 + take(2) * 16);
    cache.load(path, (flags & 1) != 0);
    std::vector<unsigned char> value(1 << 16);
    for (int op = 0; op < 16 && at < size; ++op) {
        const uint32_t kind = take(1);
        const std::string name = "n" + std::to_string(kind >> 4 & 7);
        switch (kind % 6) {
        case 0:
        case 1: {
            const nimbit::cache_value v = cache.get_data(name);
            check(v.size || !v.data);
            // Touch every byte, so a value reaching past the mapping shows.
            check(std::count(v.data, v.data + v.size, 0) <= static_cast<long>(v.size));
            break;
        }
        case 2: {
            const size_t length = 1 + take(2);
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
    return 0;
}
