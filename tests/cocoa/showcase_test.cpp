#include "display_session.h"

#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/showcase_controls.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

using namespace cocoa_test;
using nimbit::ivec4;
using nimbit::vec4;
using nimbit::ui::event_type;
using point = nimbit::_vec2<int>;

namespace {

std::string move_to(point p) {
    return "mousemove " + std::to_string(p.x) + " " + std::to_string(p.y);
}
bool hold_command() { // Command is Alt on Linux; held until the keyboard reports it
    return xdotool("keydown alt") &&
           wait_for([] { return nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command); });
}

} // namespace

TEST(CocoaShowcase, IsStyledOnScreenAndTakesPointerKeysAndThePasteboard) {
    nimbit::ui::window w;
    w.create("Showcase", {80, 60, nimbit::ui::showcase_size.x, nimbit::ui::showcase_size.y},
             nimbit::ui::window_style_borderless);
    std::unique_ptr<nimbit::ui::showcase> show_case = nimbit::ui::build_showcase(w);
    nimbit::ui::showcase_controls& c = show_case->controls();
    w.show();
    const ivec4 client = w.get_client_rect();
    // A point inside the widget (its own coordinates) on the screen.
    auto on = [&](const nimbit::ui::widget& target, int x, int y) {
        const point p = target.calc_absolute_pos();
        return point{client.x + p.x + x, client.y + p.y + y};
    };
    auto centre = [&](const nimbit::ui::widget& t) {
        return on(t, t.get_rect().w / 2, t.get_rect().h / 2);
    };
    ASSERT_TRUE(wait_for([&] { return w.has_focus(); }));

    // Painted, and styled, once the search field's dark background is on screen.
    ASSERT_TRUE(wait_for([&] {
        const point p = on(c.search, 4, 4);
        return color_distance(capture_screen({p.x, p.y, 1, 1}).pixel(0, 0), {0.071f, 0.071f, 0.075f, 1}) <
               0.05f;
    }));

    // The input box takes typing and selection; Command+C copies through the real pasteboard.
    nimbit::ui::input_box& search = c.search;
    ASSERT_TRUE(click_at(centre(search)));
    ASSERT_TRUE(wait_for([&] { return search.get_inside().has_focus(); }));
    ASSERT_TRUE(xdotool("key End"));
    ASSERT_TRUE(xdotool("type --delay 30 Xy"));
    ASSERT_TRUE(wait_for([&] { return search.get_text() == "Gaussian BlurXy"; })) << search.get_text();
    ASSERT_TRUE(xdotool("key --delay 30 shift+Left shift+Left"));
    ASSERT_TRUE(wait_for([&] { return search.get_selected_text() == "Xy"; })) << search.get_selected_text();
    nimbit::ui::get_native_clipboard().set_text("before");
    ASSERT_TRUE(hold_command());
    ASSERT_TRUE(xdotool("key c"));
    ASSERT_TRUE(wait_for([] { return nimbit::ui::get_native_clipboard().get_text() == "Xy"; }));
    ASSERT_TRUE(xdotool("keyup alt"));

    // The drop-down opens its menu and the choice arrives. The menu runs its own loop inside the
    // press, so the rest of the gesture comes from a process in the background: GNUstep's context
    // menu follows the held button and chooses the item the button is released over. "Dark", the
    // first item, lies just below the box's lower-left corner (under the menu's title bar, a little
    // to the right).
    nimbit::ui::drop_down_box& box = c.drop_down;
    const int light = box.get_selected_item();
    ASSERT_EQ(box.get_selected_text(), "Light");
    bool chosen = false;
    nimbit::ui::event_manager::instance().add_event(&box, &w, event_type::value_changed,
                                                    [&](const nimbit::ui::event_info&) { chosen = true; });
    const point corner = on(box, 0, box.get_rect().h);
    xdotool_later("sleep 0.8 " + move_to({corner.x + 52, corner.y + 8}) + " sleep 0.2 mouseup 1");
    ASSERT_TRUE(xdotool(move_to(centre(box)) + " mousedown 1"));
    EXPECT_TRUE(wait_for([&] { return chosen; }));
    EXPECT_EQ(box.get_selected_text(), "Dark");
    EXPECT_NE(box.get_selected_item(), light);
}
