#pragma once

#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>

// While it lives, a write past `bytes` in any file fails with EFBIG: a disk that runs out of room
// half-way, for tests of what a failed write leaves behind. SIGXFSZ stays ignored afterwards, which
// only turns what would kill the test into a failed write.
struct file_size_limit {
    explicit file_size_limit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        if (::getrlimit(RLIMIT_FSIZE, &saved) == 0) {
            rlimit small = saved;
            small.rlim_cur = bytes;
            applied = ::setrlimit(RLIMIT_FSIZE, &small) == 0;
        }
        if (!applied)
            ADD_FAILURE() << "the file size limit could not be set";
    }
    ~file_size_limit() {
        if (applied)
            ::setrlimit(RLIMIT_FSIZE, &saved);
    }

    rlimit saved{};
    bool applied = false;
};
