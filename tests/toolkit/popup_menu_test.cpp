#include "toolkit_fixture.h"

#include "nimbit/ui/popup_menu.h"

namespace toolkit_test {
namespace {

using PopupMenuTest = OffscreenTest;

// The answer scripted for the next menu, and what showing it returned.
uint32_t choose(popup_menu& menu, window& win, std::optional<uint32_t> answer, _vec2<int> at = {},
                bool screen = false) {
    offscreen::push_menu_answer(answer);
    return menu.show(win, at, screen);
}

TEST_F(PopupMenuTest, ReturnsTheChosenIdOrAllBitsWhenDismissed) {
    TestWindow win({100, 50, 400, 300});
    popup_menu menu;
    menu.add_item(0, "Copy");
    menu.add_separator(9);
    menu.add_item(3, "Remove");
    menu.add_item(4, "Paste", 1);
    menu.check_item(3, true);
    EXPECT_EQ(menu.get_item_text(4) + menu.get_item_text(77), "Paste");
    EXPECT_EQ(choose(menu, win, 0, {20, 30}), 0u) << "id 0 is a valid choice, told apart from dismissal";
    EXPECT_EQ(choose(menu, win, std::nullopt), popup_menu::dismissed);
    EXPECT_EQ(choose(menu, win, 3, {120, 80}, true), 3u);
    const auto& shown = offscreen::shown_menus();
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_EQ(shown[2].position, (_vec2<int>{30, 40})) << "a screen point made relative to the window";
    ASSERT_EQ(shown[0].items.size(), 4u);
    EXPECT_TRUE(shown[0].position == (_vec2<int>{30, 40}) && shown[0].items[1].text == "Paste" &&
                shown[0].items[2].separator && shown[0].items[3].checked);
}

TEST_F(PopupMenuTest, DisabledOrRemovedItemsCannotBeChosenAndIdsAreUnique) {
    TestWindow win;
    popup_menu menu, sub;
    sub.add_item(21, "Inner");
    menu.add_item(1, "One");
    menu.add_item(2, "Two");
    menu.add_item(20, "More", -1, &sub);
    menu.enable_item(1, false);
    EXPECT_EQ(choose(menu, win, 1), popup_menu::dismissed);
    EXPECT_EQ(choose(menu, win, 21), 21u);
    menu.remove_item(2);
    EXPECT_EQ(choose(menu, win, 2), popup_menu::dismissed);
    menu.add_item(2, "Two again"); // the id is free again
    menu.remove_all_items();
    const size_t shown = offscreen::shown_menus().size();
    EXPECT_EQ(choose(menu, win, 1), 0u) << "an empty menu is not shown";
    EXPECT_EQ(offscreen::shown_menus().size(), shown);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(menu.add_separator(1); menu.add_separator(1), "menu item already exists");
}

} // namespace
} // namespace toolkit_test
