#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/write_file_atomic.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include <sys/resource.h>
#include <sys/stat.h>

using nimbit::file_path;

namespace {

TEST(WriteFileAtomic, CreatesAndReplacesKeepingPermissionsAndFailuresLeaveTheOldFile) {
    temp_folder tmp;
    const file_path target = tmp / "settings";
    ASSERT_TRUE(nimbit::write_file_atomic(target, "first version", 13));
    EXPECT_EQ(read_text(target), "first version");

    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
    ASSERT_TRUE(nimbit::write_file_atomic(target, "second", 6));
    EXPECT_EQ(read_text(target), "second");
    struct stat st;
    ASSERT_EQ(::stat(target.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0640u);

    EXPECT_TRUE(nimbit::write_file_atomic(target, nullptr, 0) && nimbit::file_stats(target).size == 0);
    ASSERT_TRUE(write_text(target, "old"));

    // Failures leave the old file and no litter.
    EXPECT_FALSE(nimbit::write_file_atomic(tmp / "missing/settings", "x", 1) ||
                 nimbit::write_file_atomic(file_path(), "x", 1));

    // A write that runs out of room half-way: the file-size limit makes write() fail with EFBIG.
    rlimit saved;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = saved;
    small.rlim_cur = 4096;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string big(64 * 1024, 'n');
    const bool written = nimbit::write_file_atomic(target, big.data(), big.size());
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, old_handler);
    EXPECT_FALSE(written);
    EXPECT_EQ(read_text(target), "old");
    EXPECT_EQ(tree(tmp.path()), std::vector<std::string>{"settings"}) << "no temporary file is left behind";
}

} // namespace
