#pragma once

#include <cerrno>
#include <cstddef>

#include <unistd.h>

namespace nimbit {

// An open file descriptor, closed at the end of its scope unless closed before.
class file_descriptor {
public:
    explicit file_descriptor(int fd = -1) : fd(fd) {}
    ~file_descriptor() { close(); }
    file_descriptor(file_descriptor&& other) noexcept : fd(other.fd) { other.fd = -1; }
    file_descriptor& operator=(file_descriptor&& other) noexcept {
        if (this != &other) {
            close();
            fd = other.fd;
            other.fd = -1;
        }
        return *this;
    }
    file_descriptor(const file_descriptor&) = delete;
    file_descriptor& operator=(const file_descriptor&) = delete;

    explicit operator bool() const { return fd >= 0; }
    int get() const { return fd; }
    // The result of close(2); 0 when nothing was open.
    int close() {
        const int result = fd >= 0 ? ::close(fd) : 0;
        fd = -1;
        return result;
    }

private:
    int fd;
};

// Writes all of data, going on after short writes and interruptions.
inline bool write_all(int fd, const void* data, size_t size) {
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t n = ::write(fd, p, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        p += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

} // namespace nimbit
