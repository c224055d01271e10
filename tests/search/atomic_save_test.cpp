#include "nimbit/filesystem/file_path.h"
#include "popup/effect_alias.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"
#include "popup/user_lists.h"
#include "tests/foundation/temp_folder.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

#include <csignal>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// One complete state of the user's settings: the record and the three lists.
struct SavedState {
    PreferencesData prefs;
    std::vector<EffectAlias> blacklist, aliases, shortcuts = std::vector<EffectAlias>(ShortcutSlotCount);

    void Save(const nimbit::file_path& folder) const {
        SavePreferences(prefs, blacklist, aliases, shortcuts, folder, true);
    }
};

// A writer process is killed at random moments while it saves two states in turn. Whatever the
// moment, each file must hold one whole state or the other: never a mix, a cut or nothing.
TEST(AtomicSave, KilledWriterNeverLeavesATornFile) {
    temp_folder root;
    ::setenv("QUILLO_DOCS_DIR", root.path().c_str(), 1);
    const std::vector<EffectData> catalogue = LoadFixtureEffects().effects;
    const nimbit::file_path folder = root / "Tarvelo";

    SavedState a, b;
    b.prefs.theme = UIColorTheme::Light;
    b.prefs.customKeyName = std::string(3000, 'k');
    // Lists large enough that a write takes a while, so kills land inside writes too.
    for (size_t i = 0; i < 4000; ++i)
        a.aliases.push_back({"a" + std::to_string(i), &catalogue[i % catalogue.size()], nullptr});
    for (size_t i = 0; i < 3000; ++i)
        b.blacklist.push_back({"", &catalogue[(i * 7) % catalogue.size()], nullptr});
    b.shortcuts[0] = {"Gau", &catalogue[0], nullptr};
    a.Save(folder);

    const std::vector<unsigned char> bytes[2] = {EncodePreferences(a.prefs), EncodePreferences(b.prefs)};
    const std::string settings[2] = {{bytes[0].begin(), bytes[0].end()}, {bytes[1].begin(), bytes[1].end()}};
    const std::string search[2] = {FormatSearchData(a.blacklist, a.aliases),
                                   FormatSearchData(b.blacklist, b.aliases)};
    const std::string slots[2] = {FormatShortcutsData(a.shortcuts), FormatShortcutsData(b.shortcuts)};
    ASSERT_EQ(read_text(folder.append("effects_settings")), settings[0]);

    std::mt19937 rng(42);
    int seen[2] = {0, 0};
    for (int trial = 0; trial < 200; ++trial) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (unsigned n = trial;; ++n)
                (n % 2 ? a : b).Save(folder);
        }
        ::usleep(rng() % 20000);
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);

        const std::string gotSettings = read_text(folder.append("effects_settings"));
        const std::string gotSearch = read_text(folder.append("effects_search.txt"));
        const std::string gotSlots = read_text(folder.append("effects_shortcuts.txt"));
        ASSERT_TRUE((gotSettings == settings[0] || gotSettings == settings[1]) &&
                    (gotSearch == search[0] || gotSearch == search[1]) &&
                    (gotSlots == slots[0] || gotSlots == slots[1]))
            << "trial " << trial;
        ++seen[gotSettings == settings[1]];
    }
    // Both states were met, so the writer really ran in between the kills.
    EXPECT_TRUE(seen[0] > 0 && seen[1] > 0);
}

} // namespace
