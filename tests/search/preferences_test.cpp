#include "nimbit/filesystem/file_stats.h"
#include "nimbit/utils/chunk_file.h"
#include "nimbit/utils/string_utils.h"
#include "popup/catalogue_index.h"
#include "popup/effect_alias.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"
#include "popup/user_lists.h"
#include "tests/search/fixture_catalogue.h"
#include "tests/support/data_folders.h"

#include <gtest/gtest.h>

#include <csignal>

#include <sys/wait.h>

namespace {

// Settings bytes built by hand, the way another machine's file would arrive.
struct SettingsBytes {
    std::string bytes{"NBCHF\0\0\x01", 8};

    SettingsBytes& Raw(uint32_t id, std::string_view data) {
        for (uint32_t v : {id, static_cast<uint32_t>(data.size())})
            for (int i = 0; i < 4; ++i)
                bytes += static_cast<char>((v >> (8 * i)) & 0xff);
        bytes += data;
        return *this;
    }
    SettingsBytes& Int(uint32_t id, int64_t value, int width = 4) {
        std::string data;
        for (int i = 0; i < width; ++i)
            data += static_cast<char>((static_cast<uint64_t>(value) >> (8 * i)) & 0xff);
        return Raw(id, data);
    }
    bool DecodeInto(PreferencesData& prefs) const {
        return DecodePreferences(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), prefs);
    }
};

struct PreferencesTest : ::testing::Test, private_data_folders {
    nimbit::file_path folder = root / "user/Tarvelo";
};

TEST_F(PreferencesTest, ReaderSkipsRetiredUnknownAndMisSizedChunksAndCutsStringsAtZero) {
    PreferencesData prefs;
    ASSERT_TRUE(SettingsBytes()
                    .Int(6, 99)
                    .Int(0xffffffffu, 5)
                    .Int(2, 3, 8) // an int stored 8 bytes wide: ignored, not half read
                    .Int(8, 65, 2)
                    .Raw(4, "")
                    .Int(5, 7, 4)
                    .Raw(7, std::string("F5\0junk", 7))
                    .Int(4, 2, 1) // any non-zero byte is true
                    .Int(9, 1)
                    .Int(12, -1)
                    .Int(13, 1, 4) // a flag is one byte
                    .DecodeInto(prefs));
    EXPECT_TRUE(prefs.shortcutChoice == 0 && prefs.customKeyCode == -1 && prefs.theme == UIColorTheme::Dark &&
                !prefs.recentFirst);
    EXPECT_EQ(prefs.captureFolder, PreferencesData().captureFolder);
    EXPECT_TRUE(prefs.fullResolutionScreenshots);
    EXPECT_EQ(prefs.GenerateShortcutText(), "CTRL + CMD + F5");
    // A chunk that claims more data than the file holds ends the reading there.
    SettingsBytes cut;
    cut.Int(1, 1).Int(5, 1234567890123ll, 8).bytes += std::string("\x02\0\0\0\xff\xff\0\0\x01", 9);
    PreferencesData other;
    ASSERT_TRUE(cut.DecodeInto(other));
    EXPECT_TRUE(other.theme == UIColorTheme::Light && other.newsTime == 1234567890123ll &&
                other.shortcutChoice == 0);
    // Not a settings file at all: nothing changes.
    const std::string wrong("NBCHX\0\0\x01\x01\0\0\0\x04\0\0\0\x01\0\0\0", 20);
    EXPECT_FALSE(
        DecodePreferences(reinterpret_cast<const unsigned char*>(wrong.data()), wrong.size(), other) ||
        DecodePreferences(nullptr, 0, other) || LoadPreferences(other, root / "nowhere") ||
        LoadPreferences(other, nimbit::file_path()));
    EXPECT_EQ(other.theme, UIColorTheme::Light);
}

TEST_F(PreferencesTest, StoredCaptureFolderIsTakenOnlyWhenItExistsAsAFolder) {
    const PreferencesData defaults;
    ASSERT_TRUE(nimbit::make_dir(root / "shots"));
    ASSERT_TRUE(write_text(root / "a-file", "x"));
    for (const std::string& stored : {(root / "missing").to_string(), (root / "a-file").to_string(),
                                      std::string("relative"), std::string()}) {
        PreferencesData prefs;
        ASSERT_TRUE(SettingsBytes().Raw(3, stored).DecodeInto(prefs));
        EXPECT_EQ(prefs.captureFolder, defaults.captureFolder) << stored;
    }
    PreferencesData prefs;
    ASSERT_TRUE(
        SettingsBytes().Raw(3, (root / "shots").to_string() + std::string("\0/x", 3)).DecodeInto(prefs));
    EXPECT_EQ(prefs.captureFolder, (root / "shots").to_string());
}

TEST_F(PreferencesTest, SaveWritesEveryFieldButSixInOrderAndLoadsBack) {
    PreferencesData prefs;
    prefs.theme = UIColorTheme::Light, prefs.shortcutChoice = 4, prefs.fullResolutionScreenshots = true;
    prefs.captureFolder = (root / "captures/deep/down").to_string();
    prefs.newsTime = -5, prefs.customKeyCode = 122, prefs.customKeyName = "F1";
    prefs.customCtrl = 1, prefs.customOpt = 2, prefs.customShift = 3, prefs.customCmd = 4;
    prefs.recentFirst = true, prefs.ignoreAccents = true;
    ASSERT_TRUE(SavePreferences(prefs, {}, {}, {}, folder, false));

    nimbit::chunk_file file(folder.append("effects_settings"), nimbit::chunk_file_access::read);
    std::vector<uint32_t> ids;
    while (const uint32_t id = file.next_chunk())
        ids.push_back(id);
    EXPECT_EQ(ids, (std::vector<uint32_t>{1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 12, 13, 14}));

    // Saving made the capture folder, so the reader accepts it.
    PreferencesData loaded;
    ASSERT_TRUE(LoadPreferences(loaded, folder));
    EXPECT_EQ(EncodePreferences(loaded), EncodePreferences(prefs));
    EXPECT_EQ(loaded.GenerateShortcutText(), "CTRL + OPT + SHIFT + CMD + F1");
}

TEST_F(PreferencesTest, FirstRunWritesDefaultsWithoutTextFilesAndFailuresAreReported) {
    const int64_t before = CurrentNewsTime();
    const PreferencesData prefs;
    EXPECT_EQ(prefs.captureFolder, (root / "docs").to_string() + "/Tarvelo/Quillo/Capture");
    // Seconds now, not microseconds.
    EXPECT_TRUE(prefs.newsTime >= before && prefs.newsTime <= CurrentNewsTime() &&
                prefs.newsTime < 100000000000);
    EXPECT_EQ(prefs.GenerateShortcutText(), "");

    EXPECT_FALSE(SettingsFileExists(folder));
    ASSERT_TRUE(SavePreferences(prefs, {}, {}, {}, folder, false));
    EXPECT_TRUE(SettingsFileExists(folder));
    EXPECT_EQ(tree(folder), std::vector<std::string>{"effects_settings"});
    ASSERT_TRUE(SavePreferences(prefs, {}, {}, {}, folder, true));
    EXPECT_TRUE(nimbit::file_stats(folder.append("effects_shortcuts.txt")).exists);

    ASSERT_TRUE(write_text(root / "blocker", "not a folder"));
    EXPECT_FALSE(SavePreferences(prefs, {}, {}, {}, root / "blocker/Tarvelo", true));
    EXPECT_EQ(read_text(root / "blocker"), "not a folder");
    // With no data folder at all nothing is written into the host's working folder.
    EXPECT_FALSE(SavePreferences(prefs, {}, {}, {}, nimbit::file_path(), true));
    EXPECT_FALSE(nimbit::file_stats(nimbit::file_path("effects_settings")).exists);
}

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
TEST_F(PreferencesTest, KilledWriterNeverLeavesATornFile) {
    const std::vector<EffectData> catalogue = LoadFixtureEffects().effects;

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

struct SearchFilesTest : ::testing::Test, private_data_folders {
    std::vector<EffectData> catalogue = LoadFixtureEffects().effects;
    CatalogueIndex index{catalogue};
    std::vector<EffectAlias> blacklist, aliases, slots;

    const EffectData* Named(std::string_view name) const { return index.Find(nimbit::string_lower(name)); }
    std::string RoundTrip(std::string_view text) {
        blacklist.clear();
        aliases.clear();
        ParseSearchData(text, index, blacklist, aliases);
        return FormatSearchData(blacklist, aliases);
    }
};

TEST_F(SearchFilesTest, EveryLineFormReadsAndWritesBackInItsOwnFormAndUnknownNamesDrop) {
    EXPECT_EQ(
        RoundTrip("Glow\nGlow # Fast Box Blur\nBlur = Gaussian Blur # Fast Box Blur\nshine = Glow\n"
                  "-Gaussian Blur\n"),
        "-Gaussian Blur\nGlow\nGlow # Fast Box Blur\nblur = Gaussian Blur # Fast Box Blur\nshine = Glow\n");
    // Case, blanks and Windows line ends are forgiven.
    EXPECT_EQ(RoundTrip("  BLUR=gaussian BLUR#fast box blur  \r\n\tglow\t\r\n\n   \n"),
              "blur = Gaussian Blur # Fast Box Blur\nGlow\n");
    // A minus traps unknown names and empty aliases.
    EXPECT_EQ(RoundTrip("- Gaussian Blur\n"       // names " gaussian blur": no such effect
                        "x = -Gaussian Blur\n"    // an alias of "-gaussian blur": no such effect
                        "-Glow # Fast Box Blur\n" // a blacklist line keeps no override
                        "-\n"
                        "No Such Effect\n"
                        "Tint # No Such Effect\n" // an unknown override drops only itself
                        " # Glow\n"
                        "= Glow\n"), // an empty alias is kept and written to read back the same
              "-Glow\nTint\n = Glow\n");
    EXPECT_EQ(RoundTrip("Glow\nGlow\n"), "Glow\nGlow\n"); // duplicates stay
}

TEST_F(SearchFilesTest, ShortcutsFillNineSlotsAndEmptySlotsCloseUp) {
    std::string text = "no equals sign\nGau = NOT AN EFFECT\n";
    for (int i = 0; i < 12; ++i)
        text += "L" + std::to_string(i) + "x = " + (i % 2 ? "Glow" : "Levels") + "\n";
    ParseShortcutsData(text, index, slots);
    ASSERT_EQ(slots.size(), 9u);
    EXPECT_TRUE(slots[0].alias == "L0x" && slots[0].effect == Named("Levels") && slots[8].alias == "L8x" &&
                slots[7].effect == Named("Glow"));
    slots.assign(ShortcutSlotCount, EffectAlias{});
    slots[1] = {"Glo", Named("Glow"), nullptr};
    slots[4] = {"Gau", Named("Gaussian Blur"), nullptr};
    EXPECT_EQ(FormatShortcutsData(slots), "Glo = Glow\nGau = Gaussian Blur\n");
}

TEST_F(SearchFilesTest, FilesAreReadFromTheUsersFolderWhenTheyHaveOneAndWrittenThere) {
    const nimbit::file_path common = root / "common/Tarvelo", user = UserSettingsFolder();
    ASSERT_TRUE(nimbit::make_dir(common));
    ASSERT_TRUE(write_text(common.append("effects_search.txt"), "Glow\n"));
    EXPECT_EQ(ChooseReadFolder(SearchDataFileName), common);

    ASSERT_TRUE(nimbit::make_dir(user));
    slots.assign(ShortcutSlotCount, EffectAlias{});
    slots[3] = {"Lev", Named("Levels"), nullptr};
    ASSERT_TRUE(WriteSearchDataFiles({{"tint", Named("Tint"), nullptr}}, {}, slots, user));
    EXPECT_EQ(ChooseReadFolder(SearchDataFileName), user);
    blacklist = {{"stale", nullptr, nullptr}};
    ReadSearchDataFile(blacklist, aliases, catalogue, ChooseReadFolder(SearchDataFileName));
    ReadShortcutsDataFile(slots, catalogue, user);
    ASSERT_EQ(blacklist.size(), 1u);
    EXPECT_TRUE(blacklist[0].effect == Named("Tint") && aliases.empty() &&
                slots[0].effect == Named("Levels"));

    // Missing files give empty lists and nine empty slots; an unwritable folder reports failure.
    ReadSearchDataFile(blacklist, aliases, catalogue, root / "missing");
    ReadShortcutsDataFile(slots, catalogue, root / "missing");
    EXPECT_TRUE(blacklist.empty() && slots.size() == 9u && !HasShortcuts(slots));
    EXPECT_FALSE(WriteSearchDataFiles({}, {}, slots, root / "missing") ||
                 WriteSearchDataFiles({}, {}, slots, nimbit::file_path()));
}

struct ListsTest : ::testing::Test {
    std::vector<EffectData> catalogue{MakeEffect(1, "Gaussian Blur"), MakeEffect(2, "Glow"),
                                      MakeEffect(3, "X"), MakeEffect(4, "levels")};
    const EffectData* gaussian = &catalogue[0];
    const EffectData* glow = &catalogue[1];
    std::vector<EffectAlias> slots = std::vector<EffectAlias>(ShortcutSlotCount);
};

TEST_F(ListsTest, AddToListAppendsWithoutDeduplicatingAndTheFirstOverrideIsTheActualEffect) {
    std::vector<EffectAlias> blacklist, aliases;
    AddToList(blacklist, aliases, gaussian, false);
    AddToList(blacklist, aliases, gaussian, false);
    AddToList(blacklist, aliases, glow, true);
    ASSERT_TRUE(aliases.size() == 2u && blacklist.size() == 1u);
    EXPECT_TRUE(aliases[1].alias == "gaussian blur" && aliases[1].effect == gaussian);
    EXPECT_TRUE(blacklist[0].alias == "glow" && blacklist[0].effect == glow);

    // An entry's actual effect is the first override for it.
    aliases = {{"gb", gaussian, nullptr},
               {"blur", gaussian, &catalogue[2]},
               {"soft", gaussian, glow},
               {"glow", glow, nullptr}};
    EXPECT_EQ(GetActualEffect(aliases, gaussian), &catalogue[2]);
    EXPECT_EQ(GetActualEffect(aliases, glow), glow);
    EXPECT_EQ(GetActualEffect(aliases, nullptr), nullptr);
}

// Labels take three bytes and upper-case the first, unless it starts a multi-byte letter.
TEST_F(ListsTest, AddAndReplaceShortcutsStayWithinNineSlotsAndLabelsStopAtTheFirstEmptySlot) {
    EXPECT_EQ(MakeShortcutLabel("levels") + MakeShortcutLabel("") + MakeShortcutLabel("\xC3\xA9toile") +
                  MakeShortcutLabel("zoom"),
              "Lev\xC3\xA9tZoo");
    slots[0] = {"Glo", glow, nullptr};
    EXPECT_TRUE(!AddToShortcuts(slots, nullptr) && AddToShortcuts(slots, &catalogue[2]) &&
                slots[1].alias == "X");
    EXPECT_FALSE(ReplaceToShortcuts(slots, gaussian, 2) || slots[2].effect) << "an empty slot stays empty";
    EXPECT_TRUE(ReplaceToShortcuts(slots, gaussian, 1) && slots[1].alias == "Gau");
    while (CountShortcuts(slots) < 9)
        ASSERT_TRUE(AddToShortcuts(slots, glow));
    EXPECT_FALSE(AddToShortcuts(slots, gaussian));
    EXPECT_TRUE(ReplaceToShortcuts(slots, gaussian, 8));
    // The menu offers at most nine items; a tenth index is out of range even for a longer list.
    slots.push_back({"Glo", glow, nullptr});
    EXPECT_FALSE(ReplaceToShortcuts(slots, gaussian, 9) || slots[9].effect != glow);

    // Labels stop at the first empty slot but counts do not.
    slots.assign(ShortcutSlotCount, EffectAlias{});
    slots[0] = {"Gau", gaussian, nullptr};
    EXPECT_TRUE(HasShortcuts(slots)) << "the first slot counts";
    slots[0] = {};
    slots[8] = {"Glo", glow, nullptr};
    EXPECT_TRUE(HasShortcuts(slots) && GetShortcutsAlias(slots).empty());
    slots[0] = {"Gau", gaussian, nullptr};
    slots[1] = {"Lev", &catalogue[3], nullptr};
    EXPECT_EQ(CountShortcuts(slots), 3u);
    EXPECT_EQ(GetShortcutsAlias(slots), (std::vector<std::string>{"Gau", "Lev"}));
}

} // namespace
