#include "nimbit/filesystem/file_path.h"

#include <gtest/gtest.h>

using nimbit::file_path;

TEST(FilePath, AppendJoinsWithExactlyOneSeparator) {
    EXPECT_EQ(file_path("a/").append("/b").to_string(), "a/b");
    EXPECT_EQ(file_path("a").append("b").to_string(), "a/b");
    EXPECT_EQ(file_path("a").append("").to_string(), "a");
    EXPECT_EQ(file_path("").append("b").to_string(), "b");
    EXPECT_EQ(file_path("").append("/b").to_string(), "b");
    EXPECT_EQ(file_path("/").append("b").to_string(), "/b");
    EXPECT_EQ(file_path("a").append_extension("png").to_string(), "a.png");
}

TEST(FilePath, ExtensionLeafAndStemFollowTheLastSeparator) {
    EXPECT_EQ(file_path("dir.old/file").extension(), "");
    EXPECT_EQ(file_path("x.tar.gz").extension(), "gz");
    EXPECT_EQ(file_path("a/b.png/").leaf(false), "b");
    EXPECT_EQ(file_path("a/b.png/").leaf(true), "b.png");
    EXPECT_EQ(file_path("noext").leaf(false), "noext");
    EXPECT_EQ(file_path("a/b/c.png").stem().to_string(), "a/b");
    EXPECT_EQ(file_path("a/b/").stem().to_string(), "a");
    EXPECT_EQ(file_path("c.png").stem().to_string(), "");
    EXPECT_EQ(file_path("a\\b\\c").fix_separator().to_string(), "a/b/c");
}

TEST(FilePath, OrderingIsBytewiseWithShorterFirst) {
    EXPECT_TRUE(file_path("ab") < file_path("abc"));
    EXPECT_TRUE(file_path("B") < file_path("a"));
    EXPECT_FALSE(file_path("a") < file_path("a"));
    EXPECT_EQ(file_path("a/b"), file_path(std::string("a/b")));
}
