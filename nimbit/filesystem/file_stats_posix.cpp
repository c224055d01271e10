#include "nimbit/filesystem/file_stats.h"

#include "nimbit/filesystem/file_path.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace nimbit {

namespace {

int type_of(mode_t mode) {
    if (S_ISREG(mode))
        return 0;
    if (S_ISDIR(mode))
        return 1;
    return 2;
}

} // namespace

file_stats::file_stats(const file_path& path) {
    if (path.empty())
        return;
#if defined(__APPLE__)
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
        return;
    exists = true;
    size = static_cast<uint64_t>(st.st_size);
    created = st.st_birthtimespec.tv_sec;
    modified = st.st_mtimespec.tv_sec;
    type = type_of(st.st_mode);
#else
    // stat() has no birth time on Linux; statx reports it where the file system keeps one.
    struct statx st;
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &st) != 0)
        return;
    exists = true;
    size = st.stx_size;
    created = (st.stx_mask & STATX_BTIME) ? st.stx_btime.tv_sec : 0;
    modified = st.stx_mtime.tv_sec;
    type = type_of(st.stx_mode);
#endif
}

} // namespace nimbit
