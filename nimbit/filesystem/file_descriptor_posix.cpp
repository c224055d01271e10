#include "nimbit/filesystem/file_descriptor.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nimbit {

namespace {

bool fits_off_t(uint64_t value) {
    return value <= static_cast<uint64_t>(INT64_MAX);
}

// Deletes everything in the open folder. Entries are looked at without following links, and a
// sub-folder is opened relative to this one with O_NOFOLLOW: a link, even one put in place of a
// folder after it was looked at, is unlinked or left, never descended.
void remove_contents(int folder) {
    std::vector<std::string> names;
    const int listing = ::fcntl(folder, F_DUPFD_CLOEXEC, 0);
    DIR* dir = listing >= 0 ? ::fdopendir(listing) : nullptr;
    if (!dir) {
        if (listing >= 0)
            ::close(listing);
        return;
    }
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    ::closedir(dir);

    for (const std::string& name : names) {
        struct stat st;
        if (::fstatat(folder, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (!S_ISDIR(st.st_mode)) {
            ::unlinkat(folder, name.c_str(), 0);
            continue;
        }
        file_descriptor sub(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!sub)
            continue;
        remove_contents(sub.get());
        sub.close();
        ::unlinkat(folder, name.c_str(), AT_REMOVEDIR);
    }
}

} // namespace

bool file_descriptor::close() {
    const int result = handle >= 0 ? ::close(handle) : 0;
    handle = -1;
    return result == 0;
}

bool describe(const file_descriptor& file, file_facts& out) {
    struct stat st;
    if (!file || ::fstat(file.get(), &st) != 0)
        return false;
    out.type = S_ISREG(st.st_mode) ? 0 : S_ISDIR(st.st_mode) ? 1 : 2;
    out.size = st.st_size > 0 ? static_cast<uint64_t>(st.st_size) : 0;
    out.links = static_cast<uint64_t>(st.st_nlink);
    out.device = static_cast<uint64_t>(st.st_dev);
    out.inode = static_cast<uint64_t>(st.st_ino);
    return true;
}

file_descriptor open_for_reading(const file_path& path) {
    return file_descriptor(path.empty() ? -1 : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

file_descriptor open_for_writing(const file_path& path) {
    return file_descriptor(path.empty() ? -1 : ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
}

file_descriptor create_new_file(const file_path& path, bool& exists) {
    file_descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    exists = !file && errno == EEXIST;
    return file;
}

file_descriptor open_regular_file(const file_path& path, bool writable, unsigned mode) {
    // O_NONBLOCK keeps a FIFO planted at the path from blocking the open.
    const int flags = (writable ? O_RDWR | O_CREAT : O_RDONLY) | O_CLOEXEC | O_NONBLOCK;
    file_descriptor file(::open(path.c_str(), flags, static_cast<mode_t>(mode)));
    file_facts facts;
    if (file && (!describe(file, facts) || facts.type != 0))
        return file_descriptor();
    return file;
}

int64_t read_up_to(const file_descriptor& file, uint64_t pos, void* out, size_t n) {
    auto* p = static_cast<unsigned char*>(out);
    size_t done = 0;
    while (done < n) {
        if (!fits_off_t(pos + done))
            return -1;
        const ssize_t got = ::pread(file.get(), p + done, n - done, static_cast<off_t>(pos + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        done += static_cast<size_t>(got);
    }
    return static_cast<int64_t>(done);
}

bool write_all(const file_descriptor& file, const void* data, size_t size) {
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t n = ::write(file.get(), p, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        p += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

bool write_at(const file_descriptor& file, uint64_t pos, const void* data, size_t size) {
    if (!fits_off_t(pos) || pos > INT64_MAX - size)
        return false;
    const auto* from = static_cast<const unsigned char*>(data);
    while (size > 0) {
        const ssize_t done = ::pwrite(file.get(), from, size, static_cast<off_t>(pos));
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return false;
        from += done;
        pos += static_cast<uint64_t>(done);
        size -= static_cast<size_t>(done);
    }
    return true;
}

bool sync_file(const file_descriptor& file) {
    return ::fsync(file.get()) == 0;
}

bool set_file_length(const file_descriptor& file, uint64_t length) {
    return fits_off_t(length) && ::ftruncate(file.get(), static_cast<off_t>(length)) == 0;
}

bool reserve_space(const file_descriptor& file, uint64_t offset, uint64_t size) {
    if (!fits_off_t(offset) || !fits_off_t(size) || offset > INT64_MAX - size)
        return false;
#if defined(__linux__)
    int err = 0;
    do
        err = ::posix_fallocate(file.get(), static_cast<off_t>(offset), static_cast<off_t>(size));
    while (err == EINTR);
    // A file system that cannot preallocate leaves the risk where it was; only a real lack of space
    // or a write error refuses.
    return err == 0 || err == EOPNOTSUPP || err == EINVAL;
#else
    (void)file;
    return true;
#endif
}

void copy_permissions(const file_path& model, const file_descriptor& file) {
    struct stat existing;
    if (::stat(model.c_str(), &existing) == 0)
        ::fchmod(file.get(), existing.st_mode & 07777);
}

void set_permissions(const file_descriptor& file, unsigned mode) {
    ::fchmod(file.get(), static_cast<mode_t>(mode));
}

// flock, not fcntl locks: those belong to the process, so two open files in one process would not
// exclude each other, and closing any descriptor of the file drops them.
bool lock_file(const file_descriptor& file, bool shared) {
    int result;
    do
        result = ::flock(file.get(), shared ? LOCK_SH : LOCK_EX);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

void unlock_file(const file_descriptor& file) {
    ::flock(file.get(), LOCK_UN);
}

unsigned char* map_view(const file_descriptor& file, uint64_t start, uint64_t size, bool writable) {
    if (!fits_off_t(start))
        return nullptr;
    const int prot = writable ? PROT_READ | PROT_WRITE : PROT_READ;
    void* p = ::mmap(nullptr, size, prot, MAP_SHARED, file.get(), static_cast<off_t>(start));
    return p == MAP_FAILED ? nullptr : static_cast<unsigned char*>(p);
}

void unmap_view(unsigned char* view, uint64_t size) {
    ::munmap(view, size);
}

uint64_t map_granularity() {
    static const uint64_t page = [] {
        const long p = ::sysconf(_SC_PAGESIZE);
        return p > 0 ? static_cast<uint64_t>(p) : uint64_t{4096};
    }();
    return page;
}

bool replace_file(const file_path& from, const file_path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        return false;
    // Makes the rename itself durable. Failing here loses nothing, so the result is not checked.
    const file_path folder = to.stem();
    const file_descriptor dir(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir)
        ::fsync(dir.get());
    return true;
}

bool delete_file(const file_path& path) {
    return !path.empty() && ::unlink(path.c_str()) == 0;
}

make_result make_one_folder(const file_path& path) {
    if (::mkdir(path.c_str(), 0777) == 0)
        return make_result::made;
    if (errno == EEXIST)
        return make_result::exists;
    return errno == ENOENT ? make_result::no_parent : make_result::failed;
}

bool remove_tree(const file_path& path) {
    // A trailing "/" would make the system resolve a link at the end of the path after all.
    std::string name = path.to_string();
    while (name.size() > 1 && name.back() == '/')
        name.pop_back();
    if (name.empty())
        return false;
    file_descriptor folder(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        struct stat st;
        return ::lstat(name.c_str(), &st) == 0 && S_ISLNK(st.st_mode) && ::unlink(name.c_str()) == 0;
    }
    remove_contents(folder.get());
    folder.close();
    return ::rmdir(name.c_str()) == 0;
}

std::string real_path(const file_path& path) {
    char buffer[PATH_MAX];
    return ::realpath(path.c_str(), buffer) ? std::string(buffer) : std::string();
}

unsigned long process_id() {
    return static_cast<unsigned long>(::getpid());
}

bool open_root_folder(const file_path& path, held_folder& out) {
    out.handle = file_descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    out.path = path;
    return bool(out.handle);
}

bool open_child_folder(const held_folder& parent, const std::string& name, bool create, held_folder& out) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    int next = ::openat(parent.handle.get(), name.c_str(), flags);
    if (next < 0 && errno == ENOENT && create &&
        (::mkdirat(parent.handle.get(), name.c_str(), 0777) == 0 || errno == EEXIST))
        next = ::openat(parent.handle.get(), name.c_str(), flags);
    out.handle = file_descriptor(next);
    out.path = parent.path.append(file_path(name));
    return next >= 0;
}

file_descriptor create_plain_file(const held_folder& folder, const std::string& name) {
    // O_NONBLOCK keeps a pipe without a reader from blocking the open; on a plain file it does nothing.
    file_descriptor file(::openat(folder.handle.get(), name.c_str(),
                                  O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
    file_facts facts;
    if (!file || !describe(file, facts) || facts.type != 0 || facts.links > 1 ||
        (facts.size > 0 && ::ftruncate(file.get(), 0) != 0))
        return file_descriptor();
    return file;
}

bool name_is_portable(const std::string&) {
    return true;
}

} // namespace nimbit
