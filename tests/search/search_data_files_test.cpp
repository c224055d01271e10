#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "popup/catalogue_index.h"
#include "popup/effect_alias.h"
#include "popup/search_data_files.h"
#include "popup/user_lists.h"
#include "tests/foundation/temp_folder.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

struct SearchFilesTest : ::testing::Test {
    std::vector<EffectData> catalogue = LoadFixtureEffects().effects;
    CatalogueIndex index{catalogue};
    std::vector<EffectAlias> blacklist, aliases, slots;

    const EffectData* Named(std::string_view name) const {
        for (const EffectData& entry : catalogue)
            if (entry.name == name)
                return &entry;
        ADD_FAILURE() << "no catalogue entry " << name;
        return nullptr;
    }
    void Parse(std::string_view text) {
        blacklist.clear();
        aliases.clear();
        ParseSearchData(text, index, blacklist, aliases);
    }
};

TEST_F(SearchFilesTest, EveryLineFormReadsAndWritesBackInItsOwnForm) {
    const EffectData* gaussian = Named("Gaussian Blur");
    const EffectData* box = Named("Fast Box Blur");
    const EffectData* glow = Named("Glow");
    Parse("-Gaussian Blur\n"
          "Glow\n"
          "Glow # Fast Box Blur\n"
          "Blur = Gaussian Blur # Fast Box Blur\n"
          "shine = Glow\n");
    ASSERT_EQ(blacklist.size(), 1u);
    EXPECT_EQ(blacklist[0].effect, gaussian);
    EXPECT_EQ(blacklist[0].alias, "gaussian blur");
    ASSERT_EQ(aliases.size(), 4u);
    EXPECT_EQ(aliases[0].alias, "glow");
    EXPECT_EQ(aliases[0].override, nullptr);
    EXPECT_EQ(aliases[1].effect, glow);
    EXPECT_EQ(aliases[1].override, box);
    EXPECT_EQ(aliases[2].alias, "blur");
    EXPECT_EQ(aliases[2].effect, gaussian);
    EXPECT_EQ(aliases[2].override, box);
    EXPECT_EQ(aliases[3].alias, "shine");

    // Aliases come back lower-cased, names in their catalogue spelling.
    EXPECT_EQ(FormatSearchData(blacklist, aliases), "-Gaussian Blur\n"
                                                    "Glow\n"
                                                    "Glow # Fast Box Blur\n"
                                                    "blur = Gaussian Blur # Fast Box Blur\n"
                                                    "shine = Glow\n");
}

TEST_F(SearchFilesTest, ReadingIgnoresCaseAndBlanksAndWindowsLineEnds) {
    Parse("  BLUR=gaussian BLUR#fast box blur  \r\n\tglow\t\r\n\n   \n");
    ASSERT_EQ(aliases.size(), 2u);
    EXPECT_EQ(aliases[0].alias, "blur");
    EXPECT_EQ(aliases[0].effect, Named("Gaussian Blur"));
    EXPECT_EQ(aliases[0].override, Named("Fast Box Blur"));
    EXPECT_EQ(aliases[1].effect, Named("Glow"));
    EXPECT_EQ(FormatSearchData(blacklist, aliases), "blur = Gaussian Blur # Fast Box Blur\nGlow\n");
}

TEST_F(SearchFilesTest, MinusOnlyBlacklistsDirectlyInFrontOfANameWithoutAlias) {
    Parse("- Gaussian Blur\n"       // names " gaussian blur": no such effect
          "x = -Gaussian Blur\n"    // an alias of "-gaussian blur": no such effect
          "-Glow # Fast Box Blur\n" // a blacklist entry; the override has no meaning there
          "-\n");
    EXPECT_TRUE(aliases.empty());
    ASSERT_EQ(blacklist.size(), 1u);
    EXPECT_EQ(blacklist[0].effect, Named("Glow"));
    EXPECT_EQ(FormatSearchData(blacklist, aliases), "-Glow\n");
}

TEST_F(SearchFilesTest, UnknownNamesDropLinesButAnUnknownOverrideOnlyDropsItself) {
    Parse("No Such Effect\n"
          "a = No Such Effect\n"
          "Glow # No Such Effect\n"
          "= Glow\n"
          " # Glow\n"
          "Glow\n"
          "Glow\n");
    ASSERT_EQ(aliases.size(), 4u);
    EXPECT_EQ(aliases[0].effect, Named("Glow"));
    EXPECT_EQ(aliases[0].override, nullptr);
    // An empty alias text is kept, and written so that it reads back the same.
    EXPECT_EQ(aliases[1].alias, "");
    EXPECT_EQ(FormatSearchData(blacklist, aliases), "Glow\n = Glow\nGlow\nGlow\n");
    std::vector<EffectAlias> again = aliases;
    Parse(FormatSearchData({}, again));
    ASSERT_EQ(aliases.size(), 4u);
    EXPECT_EQ(aliases[1].alias, "");
}

TEST_F(SearchFilesTest, WritingPutsTheBlacklistFirstInListOrder) {
    std::vector<EffectAlias> black{{"glow", Named("Glow"), nullptr}, {"tint", Named("Tint"), nullptr}};
    std::vector<EffectAlias> alias{{"levels", Named("Levels"), nullptr}};
    EXPECT_EQ(FormatSearchData(black, alias), "-Glow\n-Tint\nLevels\n");
}

TEST_F(SearchFilesTest, ShortcutsFillNineSlotsInOrderAndKeepLabelCase) {
    std::string text = "no equals sign\nGau = NOT AN EFFECT\n";
    const char* names[] = {"Glow", "Tint",   "Levels", "Gaussian Blur", "Fast Box Blur", "Glow",
                           "Tint", "Levels", "Glow",   "Tint",          "Levels",        "Glow"};
    for (int i = 0; i < 12; ++i)
        text += "L" + std::to_string(i) + "x = " + names[i] + "\n";
    ParseShortcutsData(text, index, slots);
    ASSERT_EQ(slots.size(), 9u);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(slots[i].alias, "L" + std::to_string(i) + "x");
        EXPECT_EQ(slots[i].effect, Named(names[i]));
    }
    ParseShortcutsData("", index, slots);
    ASSERT_EQ(slots.size(), 9u);
    EXPECT_FALSE(HasShortcuts(slots));
}

TEST_F(SearchFilesTest, EmptyShortcutSlotsCloseUpTowardsSlotOne) {
    slots.assign(ShortcutSlotCount, EffectAlias{});
    slots[1] = {"Glo", Named("Glow"), nullptr};
    slots[4] = {"Gau", Named("Gaussian Blur"), nullptr};
    const std::string text = FormatShortcutsData(slots);
    EXPECT_EQ(text, "Glo = Glow\nGau = Gaussian Blur\n");
    ParseShortcutsData(text, index, slots);
    EXPECT_EQ(slots[0].effect, Named("Glow"));
    EXPECT_EQ(slots[1].effect, Named("Gaussian Blur"));
    EXPECT_EQ(slots[1].alias, "Gau");
    EXPECT_EQ(CountShortcuts(slots), 2u);
}

// The files on disk, and which folder they are read from.
struct SearchFilesOnDiskTest : SearchFilesTest {
    temp_folder root;
    nimbit::file_path user = root / "user", common = root / "common";

    void SetUp() override {
        ::setenv("QUILLO_USER_DATA_DIR", user.c_str(), 1);
        ::setenv("QUILLO_COMMON_DATA_DIR", common.c_str(), 1);
    }
    void Put(const nimbit::file_path& folder, std::string_view name, const std::string& text) {
        ASSERT_TRUE(nimbit::make_dir(folder.append("Tarvelo")));
        ASSERT_TRUE(write_text(folder.append("Tarvelo").append(name), text));
    }
};

TEST_F(SearchFilesOnDiskTest, UsersOwnFileWinsOverTheSiteWideOne) {
    Put(common, SearchDataFileName, "Glow\n");
    EXPECT_EQ(ChooseReadFolder(SearchDataFileName), common.append("Tarvelo"));
    ReadSearchDataFile(blacklist, aliases, catalogue, ChooseReadFolder(SearchDataFileName));
    ASSERT_EQ(aliases.size(), 1u);

    Put(user, SearchDataFileName, "-Tint\n");
    EXPECT_EQ(ChooseReadFolder(SearchDataFileName), UserSettingsFolder());
    ReadSearchDataFile(blacklist, aliases, catalogue, ChooseReadFolder(SearchDataFileName));
    EXPECT_TRUE(aliases.empty());
    ASSERT_EQ(blacklist.size(), 1u);
    // The shortcuts file is chosen on its own: the user has none, so the site-wide folder is read.
    EXPECT_EQ(ChooseReadFolder(ShortcutsDataFileName), common.append("Tarvelo"));
}

TEST_F(SearchFilesOnDiskTest, WrittenFilesReadBackAndMissingFilesGiveEmptyLists) {
    blacklist = {{"tint", Named("Tint"), nullptr}};
    aliases = {{"blur", Named("Gaussian Blur"), Named("Fast Box Blur")}, {"glow", Named("Glow"), nullptr}};
    slots.assign(ShortcutSlotCount, EffectAlias{});
    slots[3] = {"Lev", Named("Levels"), nullptr};
    const nimbit::file_path folder = UserSettingsFolder();
    ASSERT_TRUE(nimbit::make_dir(folder));
    ASSERT_TRUE(WriteSearchDataFiles(blacklist, aliases, slots, folder));
    EXPECT_EQ(read_text(folder.append("effects_search.txt")),
              "-Tint\nblur = Gaussian Blur # Fast Box Blur\nGlow\n");
    EXPECT_EQ(read_text(folder.append("effects_shortcuts.txt")), "Lev = Levels\n");

    std::vector<EffectAlias> b{{"stale", nullptr, nullptr}}, a, s;
    ReadSearchDataFile(b, a, catalogue, folder);
    ReadShortcutsDataFile(s, catalogue, folder);
    ASSERT_EQ(b.size(), 1u);
    EXPECT_EQ(b[0].effect, Named("Tint"));
    ASSERT_EQ(a.size(), 2u);
    EXPECT_EQ(a[0].override, Named("Fast Box Blur"));
    EXPECT_EQ(s[0].effect, Named("Levels"));

    // Empty lists write empty files, not no files.
    ASSERT_TRUE(WriteSearchDataFiles({}, {}, std::vector<EffectAlias>(ShortcutSlotCount), folder));
    EXPECT_EQ(read_text(folder.append("effects_search.txt")), "");

    ReadSearchDataFile(b, a, catalogue, root / "missing");
    ReadShortcutsDataFile(s, catalogue, root / "missing");
    EXPECT_TRUE(b.empty());
    EXPECT_TRUE(a.empty());
    EXPECT_EQ(s.size(), 9u);
    EXPECT_FALSE(HasShortcuts(s));
    EXPECT_FALSE(WriteSearchDataFiles({}, {}, s, root / "missing"));
}

} // namespace
