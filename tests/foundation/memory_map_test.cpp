#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/memory_map.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

using nimbit::file_path;
using nimbit::memory_map;
using nimbit::memory_map_access;

// Creating, growing and cutting the mapped files is covered through the chunk file and the cache.
TEST(MemoryMap, RemapShowsAPageAlignedWindowAndNeverPassesTheEnd) {
    temp_folder tmp;
    const std::string file = (tmp / "f").to_string();
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

} // namespace
