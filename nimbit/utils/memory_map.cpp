#include "nimbit/utils/memory_map.h"

#include "nimbit/filesystem/file_path.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nimbit {

namespace {

bool fits_off_t(uint64_t value) {
    return value <= static_cast<uint64_t>(INT64_MAX);
}

} // namespace

uint64_t memory_map::page_size() {
    static const uint64_t page = [] {
        const long p = ::sysconf(_SC_PAGESIZE);
        return p > 0 ? static_cast<uint64_t>(p) : uint64_t{4096};
    }();
    return page;
}

memory_map::memory_map(const file_path& path, memory_map_access access, uint64_t size, bool deferred,
                       bool truncate)
    : access(access) {
    // O_NONBLOCK keeps a FIFO planted at the path from blocking the open; only regular files are used.
    const int flags = (writable() ? O_RDWR | O_CREAT : O_RDONLY) | O_CLOEXEC | O_NONBLOCK;
    fd = ::open(path.c_str(), flags, 0777);
    if (fd < 0)
        return;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        end_map();
        return;
    }
    was_opened = true;
    if (writable())
        ::fchmod(fd, 0777); // the umask must not narrow what the creator asked for; failure is harmless
    const uint64_t present = static_cast<uint64_t>(st.st_size);
    length = (size != 0 || (writable() && truncate)) ? size : present;
    if (writable() && (present < length || truncate)) {
        if (!fits_off_t(length) || ::ftruncate(fd, static_cast<off_t>(length)) != 0) {
            end_map();
            return;
        }
    }
    // A read-only file cannot be grown, and a view past its end would fault: keep to what is there.
    if (!writable() && length > present)
        length = present;
    if (length == 0) {
        end_map();
        return;
    }
    if (!deferred)
        remap(0, length);
}

memory_map::~memory_map() {
    end_map();
}

void memory_map::unmap_view() {
    if (view)
        ::munmap(view, size_of_view);
    view = nullptr;
    offset_of_view = 0;
    size_of_view = 0;
}

uint64_t memory_map::remap(uint64_t offset, uint64_t size) {
    unmap_view();
    const uint64_t page = page_size();
    const uint64_t start = offset - offset % page;
    if (fd < 0 || size == 0) {
        end_map();
        return start;
    }
    // The file may have changed length under us (another process, a damaged disk); look again so
    // that the view never reaches past its end.
    current_size();
    if (fd < 0 || offset > length || size > length - offset) {
        end_map();
        return start;
    }
    const uint64_t span = size + (offset - start);
    const int prot = writable() ? PROT_READ | PROT_WRITE : PROT_READ;
    void* p = ::mmap(nullptr, span, prot, MAP_SHARED, fd, static_cast<off_t>(start));
    if (p == MAP_FAILED) {
        end_map();
        return start;
    }
    view = static_cast<unsigned char*>(p);
    offset_of_view = start;
    size_of_view = span;
    return start;
}

uint64_t memory_map::current_size() {
    struct stat st {};
    if (fd >= 0 && ::fstat(fd, &st) == 0)
        length = static_cast<uint64_t>(st.st_size);
    return length;
}

bool memory_map::same_file(const file_path& path) const {
    struct stat open_file {
    }, named{};
    return fd >= 0 && ::fstat(fd, &open_file) == 0 && ::stat(path.c_str(), &named) == 0 &&
           open_file.st_dev == named.st_dev && open_file.st_ino == named.st_ino;
}

void memory_map::end_map() {
    unmap_view();
    if (fd >= 0)
        ::close(fd);
    fd = -1;
    length = 0;
}

bool memory_map::resize(uint64_t new_length) {
    if (fd < 0 || !writable() || !fits_off_t(new_length))
        return false;
    unmap_view();
    if (::ftruncate(fd, static_cast<off_t>(new_length)) != 0)
        return false;
    length = new_length;
    return true;
}

bool memory_map::write(uint64_t offset, const void* bytes, uint64_t size) {
    if (fd < 0 || !writable() || !fits_off_t(offset) || offset > INT64_MAX - size)
        return false;
    const auto* from = static_cast<const unsigned char*>(bytes);
    while (size > 0) {
        const ssize_t done = ::pwrite(fd, from, size, static_cast<off_t>(offset));
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return false;
        from += done;
        offset += static_cast<uint64_t>(done);
        size -= static_cast<uint64_t>(done);
    }
    return true;
}

bool memory_map::reserve(uint64_t offset, uint64_t size) {
    if (fd < 0 || !writable() || !fits_off_t(offset) || !fits_off_t(size) || offset > INT64_MAX - size)
        return false;
    if (size == 0)
        return true;
    if (offset + size > length)
        return false;
#if defined(__linux__)
    int err = 0;
    do
        err = ::posix_fallocate(fd, static_cast<off_t>(offset), static_cast<off_t>(size));
    while (err == EINTR);
    // A file system that cannot preallocate leaves the risk where it was; only a real lack of space
    // or a write error refuses.
    return err == 0 || err == EOPNOTSUPP || err == EINVAL;
#else
    return true;
#endif
}

} // namespace nimbit
