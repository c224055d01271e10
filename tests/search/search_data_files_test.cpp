#include "nimbit/utils/string_utils.h"
#include "popup/catalogue_index.h"
#include "popup/effect_alias.h"
#include "popup/search_data_files.h"
#include "popup/user_lists.h"
#include "tests/foundation/temp_folder.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

namespace {

struct SearchFilesTest : ::testing::Test {
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

TEST_F(SearchFilesTest, EveryLineFormReadsAndWritesBackInItsOwnForm) {
    EXPECT_EQ(
        RoundTrip("Glow\nGlow # Fast Box Blur\nBlur = Gaussian Blur # Fast Box Blur\nshine = Glow\n"
                  "-Gaussian Blur\n"),
        "-Gaussian Blur\nGlow\nGlow # Fast Box Blur\nblur = Gaussian Blur # Fast Box Blur\nshine = Glow\n");
    // Case, blanks and Windows line ends are forgiven.
    EXPECT_EQ(RoundTrip("  BLUR=gaussian BLUR#fast box blur  \r\n\tglow\t\r\n\n   \n"),
              "blur = Gaussian Blur # Fast Box Blur\nGlow\n");
}

TEST_F(SearchFilesTest, MinusTrapsUnknownNamesAndEmptyAliases) {
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
    temp_folder root;
    ::setenv("QUILLO_USER_DATA_DIR", (root / "user").c_str(), 1);
    ::setenv("QUILLO_COMMON_DATA_DIR", (root / "common").c_str(), 1);
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
TEST_F(ListsTest, AddAndReplaceShortcutsStayWithinNineSlots) {
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
}

TEST_F(ListsTest, ShortcutLabelsStopAtTheFirstEmptySlotButCountsDoNot) {
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
