#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/memory_map.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using nimbit::file_path;
using nimbit::memory_map;
using nimbit::memory_map_access;

class MemoryMapTest : public testing::Test {
protected:
    temp_folder tmp;
    std::string folder = tmp.path().to_string(), file = folder + "/f";
};

TEST_F(MemoryMapTest, RemapShowsAPageAlignedWindowAndNeverPassesTheEnd) {
    const uint64_t page = memory_map::page_size();
    std::string text(3 * page, '.');
    text.replace(page + 100, 5, "hello");
    std::ofstream(file, std::ios::binary) << text;
    memory_map map(file_path(file), memory_map_access::read, 0, true, false);
    EXPECT_EQ(map.data(), nullptr) << "deferred";
    EXPECT_EQ(map.remap(page + 100, 5), page);
    ASSERT_TRUE(map.data() && map.view_size() == 105u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(map.data()) + 100, 5), "hello");
    map.remap(2 * page, page + 1);
    EXPECT_FALSE(map.data() || map.is_open()) << "a failed remap ends the map";
}

TEST_F(MemoryMapTest, SizeAndTruncateDecideTheFileLength) {
    const auto length_after = [&](memory_map_access access, uint64_t size, bool truncate) {
        memory_map map(file_path(file), access, size, false, truncate);
        return std::filesystem::file_size(file);
    };
    EXPECT_EQ(length_after(memory_map_access::read_write, 300, false), 300u) << "created";
    EXPECT_EQ(length_after(memory_map_access::read_write, 50, false), 300u) << "not cut without truncate";
    EXPECT_EQ(length_after(memory_map_access::read, 4096, false), 300u) << "read-only never grows";
    EXPECT_EQ(length_after(memory_map_access::read_write, 8, true), 8u);
    EXPECT_EQ(length_after(memory_map_access::read_write, 0, true), 0u);
    struct stat st {};
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0777u);

    ASSERT_EQ(::mkfifo((folder + "/pipe").c_str(), 0600), 0);
    for (const std::string& odd : {folder + "/missing/f", folder, folder + "/pipe"})
        for (auto access : {memory_map_access::read, memory_map_access::read_write})
            EXPECT_FALSE(memory_map(file_path(odd), access, 16, false, false).opened()) << odd;
}

} // namespace
