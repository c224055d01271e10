#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"
#include "nimbit/filesystem/known_folders.h"
#include "nimbit/filesystem/write_file_atomic.h"

#if !defined(_WIN32)
#include "file_size_limit.h"
#endif
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

using nimbit::file_path;
using nimbit::file_stats;

namespace {

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
    // Ordering is bytewise with the shorter first.
    EXPECT_TRUE(file_path("ab") < file_path("abc") && file_path("B") < file_path("a"));
    EXPECT_FALSE(file_path("a") < file_path("a"));
}

TEST(FileOperations, StatsMakeCopyAndRemoveFolders) {
    temp_folder tmp;
    ASSERT_TRUE(write_text(tmp / "f.txt", "12345"));
    const file_stats missing(tmp / "nothing/here"), file(tmp / "f.txt"), folder(tmp.path());
    EXPECT_TRUE(!missing.exists && missing.type == 2 && !file_stats(file_path()).exists);
    EXPECT_TRUE(file.exists && file.type == 0 && file.size == 5u);
    EXPECT_TRUE(folder.exists && folder.type == 1);
#if defined(__linux__)
    EXPECT_EQ(file_stats(file_path("/proc/version")).created, 0) << "no birth time kept: none made up";
#endif

    EXPECT_FALSE(nimbit::set_file_dates(tmp / "missing", 0, 0));

    // make_dir creates every missing level, a trailing separator or not.
    EXPECT_TRUE(nimbit::make_dir(tmp / "a/b/c/"));
    EXPECT_EQ(tree(tmp.path()), (std::vector<std::string>{"a", "a/b", "a/b/c", "f.txt"}));
    EXPECT_TRUE(nimbit::make_dir(tmp / "a/b/c")) << "an existing folder is success";

    // A file in the way.
    EXPECT_FALSE(nimbit::make_dir(tmp / "f.txt") || nimbit::make_dir(tmp / "f.txt/sub/deeper"));
    EXPECT_FALSE(nimbit::make_dir(file_path()));

    // copy_dir copies a folder into another, but never into itself.
    ASSERT_TRUE(write_text(tmp / "a/b/f", "x") && nimbit::make_dir(tmp / "copy"));
    EXPECT_TRUE(nimbit::copy_dir(tmp / "a", tmp / "copy"));
    EXPECT_EQ(read_text(tmp / "copy/a/b/f"), "x");
    EXPECT_FALSE(nimbit::copy_dir(tmp / "a", tmp / "a") || nimbit::copy_dir(tmp / "a", tmp / "a/b"));

    EXPECT_TRUE(nimbit::remove_file(tmp / "f.txt") && !nimbit::remove_file(tmp / "f.txt"));
}

// remove_dir removes links, at the top or anywhere inside, and never what they point to.
TEST(FileOperations, RemoveDirLeavesWhatLinksPointTo) {
    if (!links_available())
        GTEST_SKIP() << "this system makes no symbolic links";
    temp_folder tmp;
    ASSERT_TRUE(nimbit::make_dir(tmp / "outside/deep") && nimbit::make_dir(tmp / "tree/a/b"));
    ASSERT_TRUE(write_text(tmp / "outside/keep", "keep") && write_text(tmp / "outside/deep/keep", "keep") &&
                write_text(tmp / "tree/a/b/f", "x"));
    // clang-format off
    const std::pair<const char*, const char*> links[] = {
        {"tree/folder_link", "outside"},
        {"tree/a/b/file_link", "outside/keep"},
        {"tree/a/up", "."},  // the folder holding the whole test
        {"tree/a/dangling", "no/such/thing"},
    };
    // clang-format on
    for (const auto& [link, target] : links)
        ASSERT_TRUE(make_symlink(tmp / target, tmp / link)) << link;
    for (const char* top : {"top_link", "top_link2"})
        ASSERT_TRUE(make_symlink(tmp / "outside", tmp / top));
    const auto outside = tree(tmp / "outside");

    // A link given as the folder goes as a link, a trailing separator or not.
    EXPECT_TRUE(nimbit::remove_dir(tmp / "top_link") && nimbit::remove_dir(tmp / "top_link2/"));
    EXPECT_TRUE(nimbit::remove_dir(tmp / "tree"));
    EXPECT_FALSE(file_stats(tmp / "tree").exists || nimbit::remove_dir(tmp / "tree"));
    EXPECT_EQ(tree(tmp.path()),
              (std::vector<std::string>{"outside", "outside/deep", "outside/deep/keep", "outside/keep"}));
    EXPECT_TRUE(read_text(tmp / "outside/keep") == "keep" && read_text(tmp / "outside/deep/keep") == "keep");

    // A file is not a folder: left alone.
    EXPECT_FALSE(nimbit::remove_dir(tmp / "outside/keep") || nimbit::remove_dir(file_path()));
    EXPECT_EQ(tree(tmp / "outside"), outside);
}

// Copying a file onto itself, under whatever name, fails and leaves it whole.
TEST(FileOperations, CopyFileReplacesOtherFilesButNeverItself) {
    temp_folder tmp;
    ASSERT_TRUE(write_text(tmp / "f", "contents") && write_text(tmp / "other", "much longer old contents"));
    ASSERT_TRUE(make_hard_link(tmp / "f", tmp / "hard"));
    ASSERT_TRUE(!links_available() || make_symlink(tmp / "f", tmp / "soft"));
    for (const char* same : {"f", "hard", "soft", "./f"}) {
        if (!links_available() && same == std::string("soft"))
            continue;
        EXPECT_FALSE(nimbit::copy_file(tmp / "f", tmp / same)) << same;
        EXPECT_FALSE(nimbit::copy_file(tmp / same, tmp / "f")) << same;
        EXPECT_EQ(read_text(tmp / "f"), "contents") << same;
    }
    EXPECT_TRUE(nimbit::copy_file(tmp / "f", tmp / "other") && nimbit::copy_file(tmp / "f", tmp / "new"));
    EXPECT_TRUE(read_text(tmp / "other") == "contents" && read_text(tmp / "new") == "contents");
    EXPECT_FALSE(nimbit::copy_file(tmp / "missing", tmp / "new2") || file_stats(tmp / "new2").exists);
}

// The enumerator hands out "." and ".." as well; tree() drops them, so the raw walk is checked here.
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

TEST(WriteFileAtomic, CreatesAndReplacesKeepingPermissionsAndFailuresLeaveTheOldFile) {
    temp_folder tmp;
    const file_path target = tmp / "settings";
    ASSERT_TRUE(nimbit::write_file_atomic(target, "first version", 13));
    EXPECT_EQ(read_text(target), "first version");

#if !defined(_WIN32) // no permission bits: files take the folder's access rights
    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
#endif
    ASSERT_TRUE(nimbit::write_file_atomic(target, "second", 6));
    EXPECT_EQ(read_text(target), "second");
#if !defined(_WIN32)
    struct stat st;
    ASSERT_EQ(::stat(target.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0640u);
#endif

    EXPECT_TRUE(nimbit::write_file_atomic(target, nullptr, 0) && nimbit::file_stats(target).size == 0);
    ASSERT_TRUE(write_text(target, "old"));

    // Failures leave the old file and no litter.
    EXPECT_FALSE(nimbit::write_file_atomic(tmp / "missing/settings", "x", 1) ||
                 nimbit::write_file_atomic(file_path(), "x", 1));

#if !defined(_WIN32) // no per-process file size limit on Windows
    // A write that runs out of room half-way: the file-size limit makes write() fail with EFBIG.
    const std::string big(64 * 1024, 'n');
    {
        file_size_limit limit(4096);
        ASSERT_TRUE(limit.applied);
        EXPECT_FALSE(nimbit::write_file_atomic(target, big.data(), big.size()));
    }
#endif
    EXPECT_EQ(read_text(target), "old");
    EXPECT_EQ(tree(tmp.path()), std::vector<std::string>{"settings"}) << "no temporary file is left behind";
}

const char* const folder_variables[] = {"QUILLO_USER_DATA_DIR", "QUILLO_COMMON_DATA_DIR", "QUILLO_DOCS_DIR",
                                        "QUILLO_SHARED_DOCS_DIR", "QUILLO_TEST_ASSETS"};

// Points every well-known folder into a temporary folder for the test's lifetime.
class KnownFolders : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(nimbit::make_dir(tmp / "user") && nimbit::make_dir(tmp / "common/Tarvelo"));
        unset_env("QUILLO_TEST_ASSETS");
        set_env("QUILLO_USER_DATA_DIR", (tmp / "user").to_string());
        set_env("QUILLO_COMMON_DATA_DIR", (tmp / "common").to_string());
        set_env("QUILLO_DOCS_DIR", (tmp / "docs").to_string());
        set_env("QUILLO_SHARED_DOCS_DIR", (tmp / "shared").to_string());
    }
    void TearDown() override {
        for (const char* name : folder_variables)
            unset_env(name);
    }
    temp_folder tmp;
};

TEST_F(KnownFolders, OverridesModesAndDefaultsChooseTheFolder) {
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "", 2), tmp / "shared");
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), tmp / "docs");

    set_env("QUILLO_TEST_ASSETS", "/from/variable");
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), file_path("/from/variable"));

    // A one-character entry does not count.
    ASSERT_TRUE(write_text(tmp / "common/Tarvelo/Quillo", "Other=1\nAssetsPath=x\n"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), file_path("/from/variable"));

    ASSERT_TRUE(write_text(tmp / "common/Tarvelo/Quillo", "Other=1\r\nAssetsPath=/opt/assets\r\n"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), file_path("/opt/assets"));

    // The common folder's modes: the variable, then the user's or the machine's folder.
    EXPECT_EQ(nimbit::get_common_data_path("QUILLO_TEST_ASSETS", 0), file_path("/from/variable"));
    EXPECT_EQ(nimbit::get_common_data_path("QUILLO_TEST_ASSETS", 1), tmp / "user");

#if !defined(_WIN32) // Windows has its known folders instead
    // Without overrides: the XDG variables, then the home folder.
    for (const char* name : folder_variables)
        unset_env(name);
    set_env("XDG_CONFIG_HOME", "/xdg/config");
    set_env("XDG_DOCUMENTS_DIR", "/xdg/docs");
    EXPECT_EQ(nimbit::get_user_data_path(), file_path("/xdg/config"));
    EXPECT_EQ(nimbit::get_docs_data_path(), file_path("/xdg/docs"));
    EXPECT_EQ(nimbit::get_common_data_path(), file_path("/etc/xdg"));
    unset_env("XDG_CONFIG_HOME");
    unset_env("XDG_DOCUMENTS_DIR");
    set_env("HOME", "/home/artist");
    EXPECT_EQ(nimbit::get_user_data_path(), file_path("/home/artist/.config"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "", 2), file_path("/home/Shared/Documents"));
#endif
}

} // namespace
