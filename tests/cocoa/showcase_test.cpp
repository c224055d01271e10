#include "display_session.h"

#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/native_bitmap.h"
#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/showcase_controls.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

using namespace cocoa_test;
using nimbit::ivec4;
using nimbit::vec4;
using nimbit::ui::event_type;

namespace {

// The showcase window, shown and painted, with screen points for its controls.
struct showcase_window {
    nimbit::ui::window w;
    std::unique_ptr<nimbit::ui::showcase> show_case;

    showcase_window() {
        w.create("Showcase", {80, 60, nimbit::ui::showcase_size.x, nimbit::ui::showcase_size.y},
                 nimbit::ui::window_style_borderless);
        show_case = nimbit::ui::build_showcase(w);
        w.show();
    }
    ~showcase_window() { show_case.reset(); }
    nimbit::ui::showcase_controls& c() { return show_case->controls(); }

    // A point inside the widget (its own coordinates) on the screen.
    nimbit::_vec2<int> on(const nimbit::ui::widget& target, int x, int y) const {
        const nimbit::_vec2<int> p = target.calc_absolute_pos();
        const ivec4 client = w.get_client_rect();
        return {client.x + p.x + x, client.y + p.y + y};
    }
    nimbit::_vec2<int> centre(const nimbit::ui::widget& target) const {
        return on(target, target.get_rect().w / 2, target.get_rect().h / 2);
    }
    bool ready() {
        return wait_for([&] { return w.has_focus(); });
    }
};

} // namespace

TEST(CocoaShowcase, ScreenshotIsSavedEveryControlIsStyledAndButtonAndWheelWork) {
    showcase_window s;
    ASSERT_TRUE(s.ready());
    const ivec4 client = s.w.get_client_rect();
    screen_image shot;
    // Painted once the search field's dark background is on screen.
    ASSERT_TRUE(wait_for([&] {
        shot = capture_screen(client);
        const nimbit::_vec2<int> p = s.c().search.calc_absolute_pos();
        return color_distance(shot.pixel(p.x + 4, p.y + 4), {0.071f, 0.071f, 0.075f, 1}) < 0.05f;
    }));
    const std::string path = std::filesystem::absolute("showcase_dark.png").string();
    ASSERT_TRUE(save_png(shot, path));
    std::printf("showcase screenshot: %s\n", path.c_str());

    EXPECT_EQ(shot.size, (nimbit::_vec2<int>{client.w, client.h}));
    EXPECT_EQ(client.w, nimbit::ui::showcase_size.x);
    EXPECT_EQ(client.h, nimbit::ui::showcase_size.y);
    // Not one flat colour: text, frames, the picture and the controls show.
    std::set<unsigned> colors;
    size_t magenta = 0;
    for (int y = 0; y < shot.size.y; ++y)
        for (int x = 0; x < shot.size.x; ++x) {
            const vec4 p = shot.pixel(x, y);
            colors.insert(unsigned(p.x * 255) << 16 | unsigned(p.y * 255) << 8 | unsigned(p.z * 255));
            magenta += color_distance(p, {1, 0, 1, 1}) < 0.1f;
        }
    EXPECT_GT(colors.size(), 50u);
    // The unstyled default background is magenta; every control here is styled.
    EXPECT_EQ(magenta, 0u);
    // The file on disk is a PNG of the same size.
    auto check = nimbit::ui::create_native_bitmap();
    std::FILE* f = std::fopen(path.c_str(), "rb");
    ASSERT_NE(f, nullptr);
    std::vector<unsigned char> bytes(1 << 22);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), f));
    std::fclose(f);
    ASSERT_TRUE(check->decode(bytes.data(), bytes.size()));
    EXPECT_EQ(check->get_size(), shot.size);

    // A press of the button arrives, and the wheel scrolls the list.
    int presses = 0;
    nimbit::ui::event_manager::instance().add_event(&s.c().button, &s, event_type::pressed,
                                                    [&](const nimbit::ui::event_info&) { ++presses; });
    ASSERT_TRUE(click_at(s.centre(s.c().button)));
    ASSERT_TRUE(wait_for([&] { return presses == 1; }));

    const int before = s.c().scroll.get_value();
    // The wheel over the scroll bar (the list itself leaves the wheel to its bar's owner).
    const nimbit::_vec2<int> over_list = s.centre(s.c().scroll);
    ASSERT_TRUE(
        xdotool("mousemove " + std::to_string(over_list.x) + " " + std::to_string(over_list.y) + " click 5"));
    EXPECT_TRUE(wait_for([&] { return s.c().scroll.get_value() > before; }));
    const int down = s.c().scroll.get_value();
    ASSERT_TRUE(xdotool("click 4"));
    EXPECT_TRUE(wait_for([&] { return s.c().scroll.get_value() < down; }));
}

TEST(CocoaShowcase, InputBoxTakesTypingSelectionAndThePasteboard) {
    showcase_window s;
    ASSERT_TRUE(s.ready());
    nimbit::ui::input_box& search = s.c().search;
    ASSERT_TRUE(click_at(s.centre(search)));
    ASSERT_TRUE(wait_for([&] { return search.get_inside().has_focus(); }));
    ASSERT_TRUE(xdotool("key End"));
    ASSERT_TRUE(xdotool("type --delay 30 Xy"));
    ASSERT_TRUE(wait_for([&] { return search.get_text() == "Gaussian BlurXy"; })) << search.get_text();

    // Shift+Left twice selects the last two characters.
    ASSERT_TRUE(xdotool("key --delay 30 shift+Left shift+Left"));
    ASSERT_TRUE(wait_for([&] { return search.get_selected_text() == "Xy"; })) << search.get_selected_text();

    // Command+C (Alt on Linux) copies through the real pasteboard, Command+V pastes it back.
    nimbit::ui::get_native_clipboard().set_text("before");
    ASSERT_TRUE(xdotool("keydown alt"));
    ASSERT_TRUE(wait_for([] { return nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command); }));
    ASSERT_TRUE(xdotool("key c"));
    ASSERT_TRUE(wait_for([] { return nimbit::ui::get_native_clipboard().get_text() == "Xy"; }));
    ASSERT_TRUE(xdotool("keyup alt key End keydown alt"));
    ASSERT_TRUE(wait_for([] { return nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command); }));
    ASSERT_TRUE(xdotool("key v"));
    EXPECT_TRUE(wait_for([&] { return search.get_text() == "Gaussian BlurXyXy"; })) << search.get_text();
    ASSERT_TRUE(xdotool("keyup alt"));
}

TEST(CocoaShowcase, DropDownOpensItsMenuAndTheChoiceArrives) {
    showcase_window s;
    ASSERT_TRUE(s.ready());
    nimbit::ui::drop_down_box& box = s.c().drop_down;
    const int before = box.get_selected_item();
    ASSERT_EQ(box.get_selected_text(), "Light");
    bool chosen = false;
    nimbit::ui::event_manager::instance().add_event(&box, &s, event_type::value_changed,
                                                    [&](const nimbit::ui::event_info&) { chosen = true; });
    // The menu runs its own loop inside the press, so the rest of the gesture comes from a process
    // in the background: GNUstep's context menu follows the held button and chooses the item the
    // button is released over. "Dark", the first item, lies just below the box's lower-left corner
    // (GNUstep puts a title bar above the items and the menu a little to the right).
    const nimbit::_vec2<int> corner = s.on(box, 0, box.get_rect().h);
    const nimbit::_vec2<int> dark{corner.x + 52, corner.y + 8};
    xdotool_later("sleep 0.8 mousemove " + std::to_string(dark.x) + " " + std::to_string(dark.y) +
                  " sleep 0.2 mouseup 1");
    const nimbit::_vec2<int> open_at = s.centre(box);
    ASSERT_TRUE(
        xdotool("mousemove " + std::to_string(open_at.x) + " " + std::to_string(open_at.y) + " mousedown 1"));
    EXPECT_TRUE(wait_for([&] { return chosen; }));
    EXPECT_EQ(box.get_selected_text(), "Dark");
    EXPECT_NE(box.get_selected_item(), before);
}
