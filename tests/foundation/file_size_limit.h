#pragma once

#include <csignal>

#include <sys/resource.h>

// While it lives, a write past `bytes` in any file fails with EFBIG (SIGXFSZ ignored): a disk that
// runs out of room half-way, for tests of what a failed write leaves behind.
class file_size_limit {
public:
    explicit file_size_limit(rlim_t bytes) : old_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        if (::getrlimit(RLIMIT_FSIZE, &saved) != 0)
            return;
        rlimit small = saved;
        small.rlim_cur = bytes;
        applied = ::setrlimit(RLIMIT_FSIZE, &small) == 0;
    }
    ~file_size_limit() {
        if (applied)
            ::setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, old_handler);
    }
    file_size_limit(const file_size_limit&) = delete;
    file_size_limit& operator=(const file_size_limit&) = delete;

    bool applied = false;

private:
    void (*old_handler)(int);
    rlimit saved{};
};
