#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <unistd.h>

using nimbit::file_path;
using nimbit::file_stats;

namespace {

TEST(FileOperations, StatsMakeDirAndRemoveDir) {
    temp_folder tmp;
    ASSERT_TRUE(write_text(tmp / "f.txt", "12345"));
    const file_stats missing(tmp / "nothing/here"), file(tmp / "f.txt"), folder(tmp.path());
    EXPECT_TRUE(!missing.exists && missing.type == 2 && !file_stats(file_path()).exists);
    EXPECT_TRUE(file.exists && file.type == 0 && file.size == 5u);
    EXPECT_TRUE(folder.exists && folder.type == 1);

    EXPECT_TRUE(nimbit::set_file_dates(tmp / "f.txt", 1000000000, 1234567890));
    EXPECT_EQ(file_stats(tmp / "f.txt").modified, 1234567890);
    EXPECT_FALSE(nimbit::set_file_dates(tmp / "missing", 0, 0));

    // make_dir creates every missing level, a trailing separator or not.
    EXPECT_TRUE(nimbit::make_dir(tmp / "a/b/c/"));
    EXPECT_EQ(tree(tmp.path()), (std::vector<std::string>{"a", "a/b", "a/b/c", "f.txt"}));
    EXPECT_TRUE(nimbit::make_dir(tmp / "a/b/c")) << "an existing folder is success";

    // A file in the way.
    EXPECT_FALSE(nimbit::make_dir(tmp / "f.txt") || nimbit::make_dir(tmp / "f.txt/sub/deeper"));
    EXPECT_FALSE(nimbit::make_dir(file_path()));

    // remove_dir deletes the tree but not what links point to.
    ASSERT_TRUE(nimbit::make_dir(tmp / "outside") && nimbit::make_dir(tmp / "tree/a/b"));
    ASSERT_TRUE(write_text(tmp / "outside/keep", "keep") && write_text(tmp / "tree/a/b/f", "x"));
    ASSERT_EQ(::symlink((tmp / "outside").c_str(), (tmp / "tree/link").c_str()), 0);

    EXPECT_TRUE(nimbit::remove_dir(tmp / "tree"));
    EXPECT_FALSE(file_stats(tmp / "tree").exists || nimbit::remove_dir(tmp / "tree"));
    EXPECT_EQ(read_text(tmp / "outside/keep"), "keep");
    EXPECT_TRUE(nimbit::remove_file(tmp / "outside/keep"));
    EXPECT_FALSE(nimbit::remove_file(tmp / "outside/keep"));
}

TEST(FileOperations, CopyFileTruncatesAndCopyDirCopiesTheTreeUnderTheSourceName) {
    temp_folder tmp;
    std::string big(200000, '\0');
    for (size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i * 7);
    ASSERT_TRUE(write_text(tmp / "src", big));
    ASSERT_TRUE(write_text(tmp / "dst", std::string(300000, 'z')));
    EXPECT_TRUE(nimbit::copy_file(tmp / "src", tmp / "dst"));
    EXPECT_EQ(read_text(tmp / "dst"), big);

    EXPECT_FALSE(nimbit::copy_file(tmp / "missing", tmp / "dst2"));
    EXPECT_FALSE(file_stats(tmp / "dst2").exists);
    EXPECT_FALSE(nimbit::copy_file(tmp / "src", tmp / "no/such/folder/dst"));

    // A folder is copied as a whole tree, under its own name.
    ASSERT_TRUE(nimbit::make_dir(tmp / "dir/a/b") && nimbit::make_dir(tmp / "dir/empty") &&
                nimbit::make_dir(tmp / "out"));
    ASSERT_TRUE(write_text(tmp / "dir/top", "1") && write_text(tmp / "dir/a/b/deep", "2"));
    EXPECT_TRUE(nimbit::copy_dir(tmp / "dir", tmp / "out"));
    EXPECT_EQ(tree(tmp / "out"),
              (std::vector<std::string>{"dir", "dir/a", "dir/a/b", "dir/a/b/deep", "dir/empty", "dir/top"}));
    EXPECT_EQ(read_text(tmp / "out/dir/a/b/deep"), "2");
    EXPECT_FALSE(nimbit::copy_dir(tmp / "missing", tmp / "out") ||
                 nimbit::copy_dir(tmp / "dir", tmp / "missing"));
    EXPECT_FALSE(nimbit::copy_dir(tmp / "dir/top", tmp / "out")) << "the source must be a folder";
    EXPECT_FALSE(nimbit::copy_dir(tmp / "dir", tmp / "dir/a")) << "a folder cannot be copied into itself";
    EXPECT_FALSE(file_stats(tmp / "dir/a/dir").exists);
}

std::vector<std::string> walk(const file_path& root, bool recursive, bool with_dots) {
    std::vector<std::string> seen;
    for (const nimbit::folder_entry& entry : nimbit::folder_enumerator{root, recursive}) {
        const std::string name = entry.path.leaf(true);
        if (!with_dots && (name == "." || name == ".."))
            continue;
        EXPECT_EQ(entry.is_folder, file_stats(entry.path).type == 1) << entry.path.to_string();
        seen.push_back(entry.path.to_string().substr(root.to_string().size() + 1));
    }
    return seen;
}

TEST(FolderIterator, WalksBreadthFirstAndYieldsUsablePaths) {
    temp_folder tmp;
    ASSERT_TRUE(nimbit::make_dir(tmp / "a/b/c") && nimbit::make_dir(tmp / "d"));
    for (const char* file : {"f0", "a/f1", "a/b/f2", "a/b/c/f3", "d/f4"})
        ASSERT_TRUE(write_text(tmp / file, ""));

    const auto seen = walk(tmp.path(), true, false);
    EXPECT_EQ(seen.size(), 9u);
    // Breadth-first: nothing deeper comes before anything shallower.
    auto depth = [](const std::string& s) {
        return std::count(s.begin(), s.end(), '/');
    };
    for (size_t i = 1; i < seen.size(); ++i)
        EXPECT_LE(depth(seen[i - 1]), depth(seen[i])) << seen[i - 1] << " before " << seen[i];

    // "." and ".." come once from every folder that was opened: the root and its four sub-folders.
    const auto all = walk(tmp.path(), true, true);
    EXPECT_EQ(all.size(), seen.size() + 10);

    EXPECT_EQ(walk(tmp.path(), false, false).size(), 3u) << "without recursion only the top level";

    // A missing folder ends at once.
    nimbit::folder_iterator it(nimbit::folder_enumerator{tmp / "missing", true});
    EXPECT_TRUE(it.at_end() && it == nimbit::folder_iterator());
    EXPECT_TRUE((++it).at_end());
}

} // namespace
