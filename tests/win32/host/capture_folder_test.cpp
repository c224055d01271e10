// The capture folder kept in the settings file, read back on Windows: an absolute path there
// starts with a drive letter (either slash) or names a share, and must be taken like "/..." is
// elsewhere; otherwise the artist's folder falls back to the default at every start.

#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "tests/foundation/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

TEST(CaptureFolderOnWindows, ReadBackWhenItIsAnExistingAbsoluteFolder) {
    const temp_folder temp;
    std::string folder = temp.path().to_string(), slashed = folder;
    std::replace(folder.begin(), folder.end(), '/', '\\');
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    ASSERT_GE(folder.size(), 3u);
    ASSERT_EQ(folder[1], ':');
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
        {temp.path().leaf(true),               false}, // relative
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
}

} // namespace
