#include "nimbit/filesystem/known_folders.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>

using nimbit::file_path;

namespace {

// Points every well-known folder into a temporary folder for the test's lifetime.
class KnownFolders : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(nimbit::make_dir(tmp / "user") && nimbit::make_dir(tmp / "common/Tarvelo"));
        ::setenv("QUILLO_USER_DATA_DIR", (tmp / "user").c_str(), 1);
        ::setenv("QUILLO_COMMON_DATA_DIR", (tmp / "common").c_str(), 1);
        ::setenv("QUILLO_DOCS_DIR", (tmp / "docs").c_str(), 1);
        ::setenv("QUILLO_SHARED_DOCS_DIR", (tmp / "shared").c_str(), 1);
        ::unsetenv("QUILLO_TEST_ASSETS");
    }
    void TearDown() override {
        for (const char* name : {"QUILLO_USER_DATA_DIR", "QUILLO_COMMON_DATA_DIR", "QUILLO_DOCS_DIR",
                                 "QUILLO_SHARED_DOCS_DIR", "QUILLO_TEST_ASSETS"})
            ::unsetenv(name);
    }
    temp_folder tmp;
};

TEST_F(KnownFolders, OverridesAndModesChooseAssetsPathVariableOrPlatformFolder) {
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "", 2), tmp / "shared");
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), tmp / "docs");

    ::setenv("QUILLO_TEST_ASSETS", "/from/variable", 1);
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), file_path("/from/variable"));

    // A one-character entry does not count.
    ASSERT_TRUE(write_text(tmp / "common/Tarvelo/Quillo", "Other=1\nAssetsPath=x\n"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), file_path("/from/variable"));

    ASSERT_TRUE(write_text(tmp / "common/Tarvelo/Quillo", "Other=1\r\nAssetsPath=/opt/assets\r\n"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), file_path("/opt/assets"));

    // The common folder's modes: the variable, then the user's or the machine's folder.
    EXPECT_EQ(nimbit::get_common_data_path("QUILLO_TEST_ASSETS", 0), file_path("/from/variable"));
    EXPECT_EQ(nimbit::get_common_data_path("QUILLO_TEST_ASSETS", 1), tmp / "user");
}

TEST(KnownFoldersDefaults, FollowTheXdgVariablesAndHome) {
    for (const char* name : {"QUILLO_USER_DATA_DIR", "QUILLO_DOCS_DIR", "QUILLO_COMMON_DATA_DIR"})
        ::unsetenv(name);
    ::setenv("XDG_CONFIG_HOME", "/xdg/config", 1);
    ::setenv("XDG_DOCUMENTS_DIR", "/xdg/docs", 1);
    EXPECT_EQ(nimbit::get_user_data_path(), file_path("/xdg/config"));
    EXPECT_EQ(nimbit::get_docs_data_path(), file_path("/xdg/docs"));
    EXPECT_EQ(nimbit::get_common_data_path(), file_path("/etc/xdg"));
    ::unsetenv("XDG_CONFIG_HOME");
    ::unsetenv("XDG_DOCUMENTS_DIR");
    ::setenv("HOME", "/home/artist", 1);
    EXPECT_EQ(nimbit::get_user_data_path(), file_path("/home/artist/.config"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "", 2), file_path("/home/Shared/Documents"));
}

} // namespace
