#include "nimbit/filesystem/file_operations.h"

#include "nimbit/filesystem/file_descriptor.h"
#include "nimbit/filesystem/file_path.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace nimbit {

// Linux keeps a birth time on some file systems but offers no call to change it, so only the
// modification date is set here; the creation date is accepted and dropped. The access time is
// left as it is.
bool set_file_dates(const file_path& path, int64_t /*created*/, int64_t modified) {
    if (path.empty())
        return false;
    const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(modified), 0}};
    return ::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

bool set_file_dates(const file_descriptor& file, int64_t /*created*/, int64_t modified) {
    const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(modified), 0}};
    return file && ::futimens(file.get(), times) == 0;
}

} // namespace nimbit
