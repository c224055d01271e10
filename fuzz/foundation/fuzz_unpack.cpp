// Unpacks arbitrary bytes as a folder pack into a fresh scratch folder, then removes it.
#include "fuzz_support.h"
#include "nimbit/filesystem/nimpacker.h"

#include <cstdint>

namespace {

// The sum of the compressed lengths the file records claim, read as far as the input goes. Many
// records may point at one highly compressed block; keeping this small keeps the bytes written per
// input (at most about a thousand times this) within what a fuzz run can afford.
uint64_t claimed_stream_bytes(const uint8_t* data, size_t size) {
    size_t pos = 4;
    const auto u32 = [&](size_t skip) -> int64_t { // -1 when the input ends first
        if (pos > size || size - pos < skip + 4)
            return -1;
        const uint8_t* p = data + pos + skip;
        return p[0] | p[1] << 8 | p[2] << 16 | int64_t{p[3]} << 24;
    };
    const int64_t folders = u32(0);
    pos += 4;
    for (int64_t i = 0, n; i < folders; ++i, pos += 4 + n)
        if ((n = u32(0)) < 0 || size - pos - 4 < static_cast<uint64_t>(n))
            return 0;
    uint64_t total = 0;
    const int64_t files = folders < 0 ? 0 : u32(0);
    pos += 4;
    for (int64_t i = 0, n, length; i < files; ++i, pos += n + 32)
        if ((n = u32(0)) < 0 || (length = u32(4 + n + 4)) < 0)
            break;
        else
            total += length;
    return total;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const nimbit::file_path destination = scratch("out");
    if (claimed_stream_bytes(data, size) > 16384 || !nimbit::make_dir(destination))
        return 0;
    nimbit::nimpacker::unpack_files(data, static_cast<unsigned long>(size), destination);
    nimbit::remove_dir(destination);
    return 0;
}
