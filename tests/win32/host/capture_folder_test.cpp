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
    // clang-format off
    const std::pair<std::string, bool> cases[] = {
        {folder,                 true},
        {slashed,                true},
        {slashed + "/",          true},
        {folder.substr(2),       false}, // drive-relative: depends on the current drive
        {temp.path().leaf(true), false}, // relative
        {slashed + "/missing",   false},
    };
    // clang-format on
    for (const auto& [stored, taken] : cases) {
        SCOPED_TRACE(stored);
        PreferencesData written;
        written.captureFolder = stored;
        const std::vector<unsigned char> bytes = EncodePreferences(written);
        PreferencesData read;
        const std::string fallback = read.captureFolder;
        PreferencesReadReport report;
        ASSERT_TRUE(DecodePreferences(bytes.data(), bytes.size(), read, report));
        EXPECT_EQ(read.captureFolder, taken ? stored : fallback);
        EXPECT_EQ(report.captureFolderRejected, !taken);
    }
}

} // namespace
