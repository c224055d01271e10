#include "popup/effect_alias.h"
#include "popup/user_lists.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

namespace {

struct ListsTest : ::testing::Test {
    std::vector<EffectData> catalogue{MakeEffect(1, "Gaussian Blur"), MakeEffect(2, "Glow"),
                                      MakeEffect(3, "X"), MakeEffect(4, "levels")};
    const EffectData* gaussian = &catalogue[0];
    const EffectData* glow = &catalogue[1];
    std::vector<EffectAlias> slots = std::vector<EffectAlias>(ShortcutSlotCount);
};

TEST_F(ListsTest, AddToListAppendsFavoritesAndBlacklistEntriesWithoutDeduplicating) {
    std::vector<EffectAlias> blacklist, aliases;
    AddToList(blacklist, aliases, gaussian, false);
    AddToList(blacklist, aliases, gaussian, false);
    AddToList(blacklist, aliases, glow, true);
    ASSERT_TRUE(aliases.size() == 2u && blacklist.size() == 1u);
    EXPECT_TRUE(aliases[1].alias == "gaussian blur" && aliases[1].effect == gaussian);
    EXPECT_TRUE(blacklist[0].alias == "glow" && blacklist[0].effect == glow);
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
    EXPECT_FALSE(HasShortcuts(slots));
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

TEST_F(ListsTest, ActualEffectIsTheFirstOverrideForIt) {
    std::vector<EffectAlias> aliases{{"gb", gaussian, nullptr},
                                     {"blur", gaussian, &catalogue[2]},
                                     {"soft", gaussian, glow},
                                     {"glow", glow, nullptr}};
    EXPECT_EQ(GetActualEffect(aliases, gaussian), &catalogue[2]);
    EXPECT_EQ(GetActualEffect(aliases, glow), glow);
    EXPECT_EQ(GetActualEffect(aliases, nullptr), nullptr);
}

} // namespace
