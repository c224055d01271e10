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
    EXPECT_TRUE(nimbit::remove_file(tmp / "outside/keep") && !nimbit::remove_file(tmp / "outside/keep"));
}

// The enumerator hands out "." and ".." as well; tree() drops them, so the raw walk is checked here.
TEST(FileOperations, CopyDirCopiesAFolderIntoAnotherButNeverIntoItself) {
    temp_folder tmp;
    ASSERT_TRUE(nimbit::make_dir(tmp / "a/inner") && write_text(tmp / "a/inner/f", "x") &&
                nimbit::make_dir(tmp / "b"));
    EXPECT_TRUE(nimbit::copy_dir(tmp / "a", tmp / "b"));
    EXPECT_EQ(read_text(tmp / "b/a/inner/f"), "x");
    EXPECT_FALSE(nimbit::copy_dir(tmp / "a", tmp / "a") || nimbit::copy_dir(tmp / "a", tmp / "a/inner"));
}

TEST(FolderIterator, WalksBreadthFirstAndYieldsUsablePaths) {
    temp_folder tmp;
    ASSERT_TRUE(nimbit::make_dir(tmp / "a/b/c") && nimbit::make_dir(tmp / "d"));
    for (const char* file : {"f0", "a/f1", "a/b/f2", "a/b/c/f3", "d/f4"})
        ASSERT_TRUE(write_text(tmp / file, ""));
    std::vector<size_t> depths;
    for (const nimbit::folder_entry& entry : nimbit::folder_enumerator{tmp.path(), true}) {
        const std::string path = entry.path.to_string().substr(tmp.path().to_string().size());
        EXPECT_EQ(entry.is_folder, file_stats(entry.path).type == 1) << path;
        depths.push_back(std::count(path.begin(), path.end(), '/'));
    }
    // Nine entries plus "." and ".." from the root and its four sub-folders, nothing deeper first.
    EXPECT_EQ(depths.size(), 9u + 10u);
    EXPECT_TRUE(std::is_sorted(depths.begin(), depths.end()));
    EXPECT_EQ(tree(tmp.path(), false).size(), 3u) << "without recursion only the top level";

    nimbit::folder_iterator it(nimbit::folder_enumerator{tmp / "missing", true});
    EXPECT_TRUE(it.at_end() && (++it).at_end());
}

} // namespace
