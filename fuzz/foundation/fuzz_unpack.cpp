// Unpacks arbitrary bytes as a folder pack into a fresh temporary folder, then removes it.
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/nimpacker.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

uint32_t u32(const uint8_t* p) {
    return p[0] | p[1] << 8 | p[2] << 16 | uint32_t(p[3]) << 24;
}

// The sum of the compressed lengths the file records claim, read as far as the input goes. Many
// records may point at one highly compressed block; keeping this small keeps the bytes written per
// input (at most about a thousand times this) within what a fuzz run can afford.
uint64_t claimed_stream_bytes(const uint8_t* data, size_t size) {
    size_t pos = 4;
    uint64_t total = 0;
    auto need = [&](size_t n) {
        return pos <= size && n <= size - pos;
    };
    if (!need(4))
        return 0;
    uint32_t folders = u32(data + pos);
    pos += 4;
    for (uint32_t i = 0; i < folders; ++i) {
        if (!need(4))
            return 0;
        const uint32_t n = u32(data + pos);
        pos += 4;
        if (!need(n))
            return 0;
        pos += n;
    }
    if (!need(4))
        return 0;
    const uint32_t files = u32(data + pos);
    pos += 4;
    for (uint32_t i = 0; i < files; ++i) {
        if (!need(4))
            return total;
        const uint32_t n = u32(data + pos);
        pos += 4;
        if (!need(n) || !need(n + size_t{28}))
            return total;
        total += u32(data + pos + n + 4);
        pos += n + 28;
    }
    return total;
}

// One temporary folder for the whole run, removed when the fuzzer exits.
struct scratch_folder {
    nimbit::file_path root;
    scratch_folder() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/unpack-fuzz-XXXXXX";
        if (const char* made = ::mkdtemp(pattern.data()))
            root = nimbit::file_path(std::string(made));
    }
    ~scratch_folder() {
        if (!root.empty())
            nimbit::remove_dir(root);
    }
};

const nimbit::file_path& work_folder() {
    static const scratch_folder scratch;
    return scratch.root;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (work_folder().empty() || claimed_stream_bytes(data, size) > 16384)
        return 0;
    const nimbit::file_path destination = work_folder().append(nimbit::file_path("out"));
    nimbit::remove_dir(destination);
    if (!nimbit::make_dir(destination))
        return 0;
    nimbit::nimpacker::unpack_files(data, static_cast<unsigned long>(size), destination);
    nimbit::remove_dir(destination);
    return 0;
}
