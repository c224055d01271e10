#include "toolkit_fixture.h"

#include "nimbit/ui/popup_menu.h"

namespace toolkit_test {
namespace {

using PopupMenuTest = OffscreenTest;
using PopupMenuDeathTest = OffscreenTest;

TEST_F(PopupMenuTest, ReturnsTheChosenIdOrAllBitsWhenDismissed) {
    TestWindow win({100, 50, 400, 300});
    popup_menu menu;
    menu.add_item(0, "Copy");
    menu.add_separator(9);
    menu.add_item(3, "Remove");
    menu.add_item(4, "Paste", 1);
    menu.check_item(3, true);
    EXPECT_EQ(menu.get_item_text(4) + menu.get_item_text(77), "Paste");

    offscreen::push_menu_answer(0); // id 0 is a valid choice, told apart from dismissal
    EXPECT_EQ(menu.show(win, {20, 30}, false), 0u);
    offscreen::push_menu_answer(std::nullopt);
    EXPECT_EQ(menu.show(win, {20, 30}, false), popup_menu::dismissed);
    offscreen::push_menu_answer(3);
    EXPECT_EQ(menu.show(win, {120, 80}, true), 3u);

    const auto& shown = offscreen::shown_menus();
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_EQ(shown[0].position, (_vec2<int>{30, 40}));
    EXPECT_EQ(shown[2].position, (_vec2<int>{30, 40})) << "a screen point made relative to the window";
    ASSERT_EQ(shown[0].items.size(), 4u);
    EXPECT_TRUE(shown[0].items[1].text == "Paste" && shown[0].items[2].separator &&
                shown[0].items[3].checked);
}

TEST_F(PopupMenuDeathTest, DisabledOrRemovedItemsCannotBeChosenAndIdsAreUnique) {
    TestWindow win;
    popup_menu menu, sub;
    sub.add_item(21, "Inner");
    menu.add_item(1, "One");
    menu.add_item(2, "Two");
    menu.add_item(20, "More", -1, &sub);
    menu.enable_item(1, false);
    offscreen::push_menu_answer(1);
    EXPECT_EQ(menu.show(win, {0, 0}, false), popup_menu::dismissed);
    offscreen::push_menu_answer(21);
    EXPECT_EQ(menu.show(win, {0, 0}, false), 21u);
    menu.remove_item(2);
    offscreen::push_menu_answer(2);
    EXPECT_EQ(menu.show(win, {0, 0}, false), popup_menu::dismissed);
    menu.add_item(2, "Two again"); // the id is free again
    menu.remove_all_items();
    const size_t shown = offscreen::shown_menus().size();
    offscreen::push_menu_answer(1);
    EXPECT_EQ(menu.show(win, {0, 0}, false), 0u) << "an empty menu is not shown";
    EXPECT_EQ(offscreen::shown_menus().size(), shown);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            popup_menu menu;
            menu.add_item(1, "a");
            menu.add_separator(1);
        },
        "assertion failed: menuItems.find\\(id\\) == end\\(menuItems\\) && \"menu item already exists\"");
}

} // namespace
} // namespace toolkit_test
