#include "popup/effect_alias.h"
#include "popup/user_lists.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

namespace {

struct ListsTest : ::testing::Test {
    std::vector<EffectData> catalogue{
        MakeEffect(1, "Gaussian Blur"), MakeEffect(2, "Glow"),           MakeEffect(3, "X"),
        MakeEffect(4, "levels"),        MakePreset(-1, "\xC3\xA9toile"), MakeEffect(5, "Fast Box Blur")};
    const EffectData* gaussian = &catalogue[0];
    const EffectData* glow = &catalogue[1];
    std::vector<EffectAlias> slots = std::vector<EffectAlias>(ShortcutSlotCount);
};

TEST_F(ListsTest, AddToListAppendsFavoritesAndBlacklistEntriesWithoutDeduplicating) {
    std::vector<EffectAlias> blacklist, aliases;
    AddToList(blacklist, aliases, gaussian, false);
    AddToList(blacklist, aliases, gaussian, false);
    AddToList(blacklist, aliases, glow, true);
    AddToList(blacklist, aliases, nullptr, true);
    ASSERT_EQ(aliases.size(), 2u);
    EXPECT_EQ(aliases[1].alias, "gaussian blur");
    EXPECT_EQ(aliases[1].effect, gaussian);
    EXPECT_EQ(aliases[1].override, nullptr);
    ASSERT_EQ(blacklist.size(), 1u);
    EXPECT_EQ(blacklist[0].alias, "glow");
}

TEST_F(ListsTest, ShortcutLabelsTakeThreeBytesAndUpperCaseTheFirst) {
    EXPECT_EQ(MakeShortcutLabel("Gaussian Blur"), "Gau");
    EXPECT_EQ(MakeShortcutLabel("X"), "X");
    EXPECT_EQ(MakeShortcutLabel("levels"), "Lev");
    EXPECT_EQ(MakeShortcutLabel("3D Channel Extract"), "3D ");
    EXPECT_EQ(MakeShortcutLabel(""), "");
    // A multi-byte first character is left as it is, not half-converted.
    EXPECT_EQ(MakeShortcutLabel("\xC3\xA9toile"), "\xC3\xA9t");
}

TEST_F(ListsTest, AddToShortcutsFillsTheFirstEmptySlotUntilAllNineAreTaken) {
    slots[0] = {"Glo", glow, nullptr};
    EXPECT_TRUE(AddToShortcuts(slots, &catalogue[2]));
    EXPECT_EQ(slots[1].alias, "X");
    EXPECT_EQ(slots[1].effect, &catalogue[2]);
    slots[0] = {};
    EXPECT_TRUE(AddToShortcuts(slots, gaussian));
    EXPECT_EQ(slots[0].alias, "Gau");
    EXPECT_EQ(CountShortcuts(slots), 2u);
    for (int i = 0; i < 7; ++i)
        EXPECT_TRUE(AddToShortcuts(slots, glow));
    EXPECT_EQ(CountShortcuts(slots), 9u);
    const std::vector<EffectAlias> before = slots;
    EXPECT_FALSE(AddToShortcuts(slots, gaussian));
    for (size_t i = 0; i < slots.size(); ++i)
        EXPECT_EQ(slots[i].effect, before[i].effect);
}

TEST_F(ListsTest, ReplaceToShortcutsOnlyChangesOccupiedSlotsWithinNine) {
    slots[0] = {"Glo", glow, nullptr};
    slots[8] = {"Glo", glow, nullptr};
    EXPECT_TRUE(ReplaceToShortcuts(slots, gaussian, 8));
    EXPECT_EQ(slots[8].effect, gaussian);
    EXPECT_EQ(slots[8].alias, "Gau");
    EXPECT_FALSE(ReplaceToShortcuts(slots, gaussian, 1)); // empty slot
    EXPECT_EQ(slots[1].effect, nullptr);
    EXPECT_FALSE(ReplaceToShortcuts(slots, gaussian, 9)); // the context menu's tenth item
    // Even a longer list only has nine slots.
    slots.push_back({"Glo", glow, nullptr});
    EXPECT_FALSE(ReplaceToShortcuts(slots, gaussian, 9));
    EXPECT_EQ(slots[9].effect, glow);
    EXPECT_FALSE(ReplaceToShortcuts(slots, gaussian, ~0ul));
}

TEST_F(ListsTest, ShortcutQueriesStopAtTheFirstEmptySlotOnlyForLabels) {
    EXPECT_FALSE(HasShortcuts(slots));
    EXPECT_EQ(CountShortcuts(slots), 0u);
    EXPECT_TRUE(GetShortcutsAlias(slots).empty());
    slots[0] = {"Glo", glow, nullptr};
    slots[1] = {"Gau", gaussian, nullptr};
    slots[4] = {"Lev", &catalogue[3], nullptr};
    EXPECT_TRUE(HasShortcuts(slots));
    EXPECT_EQ(CountShortcuts(slots), 3u);
    EXPECT_EQ(GetShortcutsAlias(slots), (std::vector<std::string>{"Glo", "Gau"}));
    std::vector<EffectAlias> onlyLast(ShortcutSlotCount);
    onlyLast[8] = {"Glo", glow, nullptr};
    EXPECT_TRUE(HasShortcuts(onlyLast));
    EXPECT_TRUE(GetShortcutsAlias(onlyLast).empty());
}

TEST_F(ListsTest, ActualEffectIsTheFirstOverrideForIt) {
    std::vector<EffectAlias> aliases{{"gb", gaussian, nullptr},
                                     {"blur", gaussian, &catalogue[5]},
                                     {"soft", gaussian, glow},
                                     {"glow", glow, nullptr}};
    EXPECT_EQ(GetActualEffect(aliases, gaussian), &catalogue[5]);
    EXPECT_EQ(GetActualEffect(aliases, glow), glow);
    EXPECT_EQ(GetActualEffect(aliases, &catalogue[3]), &catalogue[3]);
    EXPECT_EQ(GetActualEffect(aliases, nullptr), nullptr);
}

} // namespace
