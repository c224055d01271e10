// The capture folder kept in the settings file, read back on Windows: an absolute path there
// starts with a drive letter (either slash) or names a share, and must be taken like "/..." is
// elsewhere; otherwise the artist's folder falls back to the default at every start.

#include "nimbit/utils/wide_string_win32.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>

namespace {

std::string TempFolder() {
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    std::wstring folder = std::wstring(temp) + L"quillo-capture-folder-test";
    CreateDirectoryW(folder.c_str(), nullptr);
    return nimbit::narrow(folder);
}

TEST(CaptureFolderOnWindows, ReadBackWhenItIsAnExistingAbsoluteFolder) {
    const std::string folder = TempFolder();
    ASSERT_GE(folder.size(), 3u);
    ASSERT_EQ(folder[1], ':');
    std::string slashed = folder;
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    struct Case {
        std::string stored;
        bool taken;
    };
    // clang-format off
    const Case cases[] = {
        {folder,                               true},
        {slashed,                      true},
        {slashed + "/",                true},
        {folder.substr(2),                     false}, // drive-relative: depends on the current drive
        {"quillo-capture-folder-test",         false}, // relative
        {slashed + "/missing",         false},
    };
    // clang-format on
    for (const Case& c : cases) {
        PreferencesData written;
        written.captureFolder = c.stored;
        const std::vector<unsigned char> bytes = EncodePreferences(written);
        PreferencesData read;
        const std::string fallback = read.captureFolder;
        PreferencesReadReport report;
        ASSERT_TRUE(DecodePreferences(bytes.data(), bytes.size(), read, report)) << c.stored;
        EXPECT_EQ(read.captureFolder, c.taken ? c.stored : fallback) << c.stored;
        EXPECT_EQ(report.captureFolderRejected, !c.taken) << c.stored;
    }
    RemoveDirectoryW(nimbit::widen(folder).c_str());
}

} // namespace
