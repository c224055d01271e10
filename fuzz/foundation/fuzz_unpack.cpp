// Unpacks arbitrary bytes as a folder pack into a fresh scratch folder, then removes it.
#include "fuzz/fuzz_support.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/nimpacker.h"

namespace {

// The sum of the compressed lengths the file records claim, read as far as the input goes. Many
// records may point at one highly compressed block; keeping this small keeps the bytes written per
// input (at most about a thousand times this) within what a fuzz run can afford.
uint64_t claimed_stream_bytes(const uint8_t* data, size_t size) {
    fuzz_input in{data, size};
    in.take(4); // magic
    for (uint64_t folders = in.take(4); folders > 0 && in.more(); --folders)
        in.bytes(in.take(4));
    uint64_t total = 0;
    for (uint64_t files = in.take(4); files > 0 && in.more(); --files) {
        in.bytes(in.take(4) + 4); // the name and the plain size
        total += in.take(4);
        in.bytes(4 + 16); // the offset and both dates
    }
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
