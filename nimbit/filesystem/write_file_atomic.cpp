#include "nimbit/filesystem/write_file_atomic.h"

#include "nimbit/filesystem/file_path.h"

#include <atomic>
#include <cerrno>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nimbit {

namespace {

// A name beside the target that no other writer in this or another process picks at the same time.
std::string temporary_name(const file_path& target) {
    static std::atomic<unsigned> counter{0};
    return target.to_string() + ".~" + std::to_string(::getpid()) + "." + std::to_string(counter++);
}

bool write_all(int fd, const unsigned char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// Makes the rename itself durable. Failing here loses nothing, so the result is not checked.
void sync_folder(const file_path& target) {
    file_path folder = target.stem();
    const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

} // namespace

bool write_file_atomic(const file_path& path, const void* data, size_t size) {
    if (path.empty() || (data == nullptr && size > 0))
        return false;
    std::string temp;
    int fd = -1;
    for (int attempt = 0; attempt < 16 && fd < 0; ++attempt) {
        temp = temporary_name(path);
        fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST)
            return false;
    }
    if (fd < 0)
        return false;

    struct stat existing;
    if (::stat(path.c_str(), &existing) == 0)
        ::fchmod(fd, existing.st_mode & 07777);

    bool ok = write_all(fd, static_cast<const unsigned char*>(data), size) && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::rename(temp.c_str(), path.c_str()) == 0;
    if (!ok) {
        ::unlink(temp.c_str());
        return false;
    }
    sync_folder(path);
    return true;
}

} // namespace nimbit
