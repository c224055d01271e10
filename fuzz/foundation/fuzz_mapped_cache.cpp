// Arbitrary header and data files under a mapped cache, then a few operations on it, through one
// object or two sharing the files, with the data file now and then cut short behind their backs.
// Input: flags (1 byte), header length (4), data length (4), header bytes, data bytes, operations.
#include "fuzz/fuzz_support.h"
#include "nimbit/utils/mapped_cache.h"

#include <cstring>
#include <vector>

FUZZ_TARGET() {
    const uint8_t flags = in.byte();
    const size_t header_length = in.take(4), data_length = in.take(4);
    const nimbit::file_path path = scratch("effects_cache");
    for (const auto& [file, length] :
         {std::pair{path.append_extension("header"), header_length}, {path, data_length}})
        write_file(file, in.bytes(length));

    nimbit::mapped_cache caches[2];
    for (nimbit::mapped_cache& cache : caches) {
        if (flags & 2)
            cache.set_max_size(1 + in.take(2) * 16);
        cache.load(path, (flags & 1) != 0);
    }
    std::vector<unsigned char> value(1 << 16);
    for (int op = 0; op < 16 && in.more(); ++op) {
        const uint32_t kind = in.byte();
        nimbit::mapped_cache& cache = caches[(flags & 4) ? kind >> 7 : 0];
        const std::string name = "n" + std::to_string(kind >> 4 & 7);
        if (kind % 7 < 2) {
            const nimbit::cache_value v = cache.get_data(name);
            check(v.size || !v.data);
            // Touch every byte, so a value reaching past the mapping or the file shows.
            check(std::count(v.data, v.data + v.size, 0) <= static_cast<long>(v.size));
        } else if (kind % 7 == 2) {
            const size_t length = 1 + in.take(2);
            std::memset(value.data(), static_cast<int>(kind), length);
            if (cache.set_data(name, value.data(), length)) {
                const nimbit::cache_value v = cache.get_data(name);
                check(v.size == length && std::memcmp(v.data, value.data(), length) == 0);
            }
        } else if (kind % 7 == 3) {
            cache.remove_data(name);
        } else if (kind % 7 == 4) {
            cache.remove_oldest_entry();
        } else if (kind % 7 == 5) {
            cache.defrag(kind >> 4);
        } else {
            // A file that cannot be cut leaves nothing to check.
            [[maybe_unused]] const int cut = ::truncate(path.c_str(), static_cast<off_t>(in.take(3)));
        }
        check(cache.check_consistency());
    }
}
