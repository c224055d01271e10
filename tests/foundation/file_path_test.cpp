#include "nimbit/filesystem/file_path.h"

#include <gtest/gtest.h>

using nimbit::file_path;

TEST(FilePath, JoinsAndSplitsAtTheLastSeparator) {
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {file_path("a/").append("/b").to_string(), "a/b"},
        {file_path("").append("/b").to_string(), "b"},
        {file_path("/").append("b").to_string(), "/b"},
        {file_path("a").append("").to_string(), "a"},
        {file_path("a").append_extension("png").to_string(), "a.png"},
        {file_path("dir.old/file").extension(), ""},
        {file_path("x.tar.gz").extension(), "gz"},
        {file_path("a/b.png/").leaf(false), "b"},
        {file_path("a/b.png/").leaf(true), "b.png"},
        {file_path("a/b/c.png").stem().to_string(), "a/b"},
        {file_path("a/b/").stem().to_string(), "a"},
        {file_path("c.png").stem().to_string(), ""},
        {file_path("a\\b\\c").fix_separator().to_string(), "a/b/c"},
    };
    // clang-format on
    for (size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
}

TEST(FilePath, OrderingIsBytewiseWithShorterFirst) {
    EXPECT_TRUE(file_path("ab") < file_path("abc") && file_path("B") < file_path("a"));
    EXPECT_FALSE(file_path("a") < file_path("a"));
}
