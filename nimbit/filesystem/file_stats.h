#pragma once

#include <cstdint>

namespace nimbit {

class file_path;

// The status of one path, read once by the constructor. A missing path leaves exists false and
// type 2. Symbolic links are followed.
struct file_stats {
    explicit file_stats(const file_path& path);

    bool exists = false;
    uint64_t size = 0;
    int64_t created = 0;  // birth time, seconds since the epoch (0 when the file system has none)
    int64_t modified = 0; // seconds since the epoch
    int type = 2;         // 0 regular file, 1 folder, 2 anything else or missing
};

} // namespace nimbit
