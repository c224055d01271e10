// Unpacks arbitrary bytes as a folder pack into a scratch folder holding links that point outside
// it, then removes the folder. Nothing outside may change, and no more than the limit given may be
// written.
#include "fuzz/fuzz_support.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/nimpacker.h"

#include <system_error>

namespace {

constexpr uint64_t size_limit = 256 * 1024;
constexpr std::string_view sentinel = "left alone";

namespace fs = std::filesystem;

// The bytes in plain files below root; links are not followed.
uint64_t bytes_below(const fs::path& root) {
    uint64_t total = 0;
    std::error_code error;
    for (fs::recursive_directory_iterator it(root, error), end; !error && it != end; it.increment(error))
        if (it->symlink_status(error).type() == fs::file_type::regular)
            total += it->file_size(error);
    return total;
}

bool outside_untouched(const nimbit::file_path& outside) {
    std::error_code error;
    size_t entries = 0;
    for (fs::directory_iterator it(outside.c_str(), error), end; !error && it != end; it.increment(error))
        ++entries;
    return !error && entries == 1 && fs::file_size(outside.append("keep").c_str(), error) == sentinel.size();
}

} // namespace

FUZZ_TARGET() {
    const nimbit::file_path destination = scratch("out");
    const nimbit::file_path outside = scratch("outside");
    static const bool outside_made =
        nimbit::make_dir(outside) && write_file(outside.append("keep"), sentinel);
    check(outside_made && nimbit::make_dir(destination));
    // Links where a pack would put a folder or a file.
    check(::symlink(outside.c_str(), destination.append("link").c_str()) == 0);
    check(::symlink(outside.append("keep").c_str(), destination.append("file_link").c_str()) == 0);

    nimbit::nimpacker::unpack_files(in.data, static_cast<unsigned long>(in.size), destination, size_limit);
    check(bytes_below(destination.c_str()) <= size_limit);
    check(outside_untouched(outside));
    check(nimbit::remove_dir(destination));
    check(outside_untouched(outside));
}
