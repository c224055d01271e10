#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/memory_map.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using nimbit::memory_map;
using nimbit::memory_map_access;

class MemoryMapTest : public testing::Test {
protected:
    void SetUp() override {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/memory_map_test.XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        file = folder + "/f";
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    void write_text(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }

    std::string folder, file;
};

TEST_F(MemoryMapTest, RemapShowsAPageAlignedWindowOfTheFile) {
    const uint64_t page = memory_map::page_size();
    std::string text(3 * page, '.');
    text.replace(page + 100, 5, "hello");
    write_text(text);
    memory_map map(nimbit::file_path(file), memory_map_access::read, 0, true, false);
    EXPECT_EQ(map.data(), nullptr) << "deferred: nothing mapped yet";
    EXPECT_EQ(map.size(), 3 * page);

    EXPECT_EQ(map.remap(page + 100, 5), page);
    ASSERT_NE(map.data(), nullptr);
    EXPECT_EQ(map.view_offset(), page);
    EXPECT_EQ(map.view_size(), 105u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(map.data()) + 100, 5), "hello");

    // A window reaching past the end would fault when touched: refused, and the map is ended.
    map.remap(2 * page, page + 1);
    EXPECT_EQ(map.data(), nullptr);
    EXPECT_FALSE(map.is_open());
    EXPECT_TRUE(map.opened());
}

TEST_F(MemoryMapTest, SizeAndTruncateDecideTheFileLength) {
    write_text(std::string(100, 'x'));
    {
        memory_map grow(nimbit::file_path(file), memory_map_access::read_write, 300, false, false);
        ASSERT_NE(grow.data(), nullptr);
        EXPECT_EQ(grow.data()[99], 'x');
        EXPECT_EQ(grow.data()[299], 0);
    }
    EXPECT_EQ(std::filesystem::file_size(file), 300u);
    {
        memory_map keep(nimbit::file_path(file), memory_map_access::read_write, 50, false, false);
        EXPECT_EQ(keep.view_size(), 50u);
    }
    EXPECT_EQ(std::filesystem::file_size(file), 300u) << "a longer file is not cut without truncate";
    {
        memory_map cut(nimbit::file_path(file), memory_map_access::read_write, 8, false, true);
        EXPECT_EQ(cut.size(), 8u);
    }
    EXPECT_EQ(std::filesystem::file_size(file), 8u);
    {
        memory_map empty(nimbit::file_path(file), memory_map_access::read_write, 0, false, true);
        EXPECT_FALSE(empty.is_open()) << "a zero length closes the file";
    }
    EXPECT_EQ(std::filesystem::file_size(file), 0u);

    // Read-only never grows a file and never maps past its end.
    write_text("abc");
    memory_map reader(nimbit::file_path(file), memory_map_access::read, 4096, false, false);
    EXPECT_EQ(reader.size(), 3u);
    EXPECT_FALSE(reader.resize(10));
    EXPECT_FALSE(reader.write(0, "z", 1));
    EXPECT_EQ(std::filesystem::file_size(file), 3u);
}

TEST_F(MemoryMapTest, NewFilesAreCreatedWithFullPermissionsAndOddPathsFailQuietly) {
    {
        memory_map created(nimbit::file_path(file), memory_map_access::read_write, 16, false, false);
        ASSERT_TRUE(created.is_open());
        ASSERT_TRUE(created.write(4, "four", 4));
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(created.data()) + 4, 4), "four");
    }
    struct stat st {};
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0777u);

    for (const std::string& odd : {folder + "/missing/f", folder, std::string()}) {
        memory_map rw(nimbit::file_path(odd), memory_map_access::read_write, 16, false, false);
        memory_map ro(nimbit::file_path(odd), memory_map_access::read, 0, false, false);
        EXPECT_FALSE(rw.opened()) << odd;
        EXPECT_FALSE(ro.opened()) << odd;
        EXPECT_EQ(ro.data(), nullptr);
    }
    ASSERT_EQ(::mkfifo((folder + "/pipe").c_str(), 0600), 0);
    memory_map pipe(nimbit::file_path(folder + "/pipe"), memory_map_access::read, 0, false, false);
    EXPECT_FALSE(pipe.opened()) << "a FIFO neither blocks nor counts as a file";
}

} // namespace
