#include "display_session.h"
#include "probe_widget.h"

#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/window.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace cocoa_test;
using nimbit::ivec4;
using nimbit::vec4;
using nimbit::ui::event_type;

namespace {

constexpr vec4 blue{0.1f, 0.2f, 0.8f, 1.0f};
constexpr vec4 red{0.9f, 0.1f, 0.1f, 1.0f};

struct painted_window {
    nimbit::ui::window w;
    probe_widget root{blue};
    probe_widget child{red};

    explicit painted_window(ivec4 frame, uint32_t style = nimbit::ui::window_style_borderless) {
        w.create("probe", frame, style);
        root.create(w.get_root(), {0, 0, frame.w, frame.h});
        child.create(root, {20, 30, 40, 20});
        w.show();
    }
    // The client point as a screen point.
    nimbit::_vec2<int> at(int x, int y) const {
        const ivec4 c = w.get_client_rect();
        return {c.x + x, c.y + y};
    }
};

bool looks(const screen_image& img, int x, int y, vec4 color) {
    return color_distance(img.pixel(x, y), color) < 0.02f;
}

} // namespace

TEST(CocoaWindow, PaintsWidgetsWhereTheyAreOnScreen) {
    painted_window p({100, 120, 200, 100});
    const ivec4 client = p.w.get_client_rect();
    EXPECT_EQ(client.w, 200);
    EXPECT_EQ(client.h, 100);
    screen_image img;
    ASSERT_TRUE(wait_for([&] {
        img = capture_screen(client);
        return looks(img, 25, 35, red) && looks(img, 5, 5, blue);
    }));
    // The child covers exactly (20, 30) .. (59, 49): y grows downwards.
    EXPECT_TRUE(looks(img, 20, 30, red));
    EXPECT_TRUE(looks(img, 59, 49, red));
    EXPECT_TRUE(looks(img, 19, 30, blue));
    EXPECT_TRUE(looks(img, 60, 49, blue));
    EXPECT_TRUE(looks(img, 20, 29, blue));
    EXPECT_TRUE(looks(img, 20, 50, blue));
    EXPECT_TRUE(looks(img, 199, 99, blue));
}

TEST(CocoaWindow, ClicksAndTheWheelReachTheWidgetUnderThePointer) {
    painted_window p({100, 120, 200, 100});
    ASSERT_TRUE(wait_for([&] { return p.w.has_focus(); }));
    ASSERT_TRUE(click_at(p.at(30, 40)));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::mouse_up) == 1; }));
    EXPECT_EQ(p.child.data_of(event_type::mouse_down), std::vector<unsigned long long>{0});
    EXPECT_EQ(p.root.count(event_type::mouse_down), 0u);

    ASSERT_TRUE(click_at(p.at(30, 40), 3));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::mouse_up) == 2; }));
    EXPECT_EQ(p.child.data_of(event_type::mouse_down), (std::vector<unsigned long long>{0, 2}));

    ASSERT_TRUE(click_at(p.at(150, 80)));
    ASSERT_TRUE(wait_for([&] { return p.root.count(event_type::mouse_up) == 1; }));
    EXPECT_EQ(p.child.count(event_type::mouse_down), 2u);

    // The wheel goes to the widget under the pointer, forty per line.
    ASSERT_TRUE(xdotool("mousemove " + std::to_string(p.at(30, 40).x) + " " + std::to_string(p.at(30, 40).y) +
                        " click 4"));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::mouse_wheel) >= 1; }));
    const double up = nimbit::ui::wheel_delta(p.child.data_of(event_type::mouse_wheel).at(0));
    EXPECT_GT(up, 0.0);
    EXPECT_EQ(std::fmod(up, 40.0), 0.0);
    ASSERT_TRUE(xdotool("click 5"));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::mouse_wheel) >= 2; }));
    EXPECT_LT(nimbit::ui::wheel_delta(p.child.data_of(event_type::mouse_wheel).back()), 0.0);
}

TEST(CocoaWindow, KeysArriveAsRawKeyCharacterAndUpAndModifiersAreSeen) {
    painted_window p({100, 120, 200, 100});
    ASSERT_TRUE(wait_for([&] { return p.w.has_focus(); }));
    p.child.focus();
    ASSERT_TRUE(xdotool("type --delay 30 aB"));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::key_char) == 2; }));
    EXPECT_EQ(p.child.data_of(event_type::key_char), (std::vector<unsigned long long>{'a', 'B'}));
    // key_down carries the upper-cased character, key_down_raw the virtual key code (A is 0, B is 11)
    // with the character in the high half.
    EXPECT_EQ(p.child.data_of(event_type::key_down), (std::vector<unsigned long long>{'A', 'B'}));
    const auto raw = p.child.data_of(event_type::key_down_raw);
    ASSERT_GE(raw.size(), 2u);
    EXPECT_EQ(raw.front(), 0ull | (0x41ull << 32));
    EXPECT_EQ(raw.back(), 11ull | (0x42ull << 32));
    EXPECT_EQ(p.child.data_of(event_type::key_up).back(), 'B');

    // Editing keys arrive as their command codes.
    p.child.received.clear();
    ASSERT_TRUE(xdotool("key --delay 30 BackSpace Return Tab Escape"));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::key_char) == 4; }));
    EXPECT_EQ(p.child.data_of(event_type::key_char), (std::vector<unsigned long long>{127, 13, 9, 27}));

    // Arrows have no text: key_down carries the function-key character, the raw code the key.
    p.child.received.clear();
    ASSERT_TRUE(xdotool("key Left"));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::key_up) == 1; }));
    EXPECT_EQ(p.child.data_of(event_type::key_down), std::vector<unsigned long long>{63234});
    EXPECT_EQ(nimbit::ui::pair_low(p.child.data_of(event_type::key_down_raw).at(0)), 123u);
    EXPECT_EQ(p.child.count(event_type::key_char), 0u);

    // Command shortcuts are keys, not text.
    p.child.received.clear();
    bool command_seen = false;
    nimbit::ui::event_manager::instance().add_event(
        &p.child, &p, event_type::key_down, [&](const nimbit::ui::event_info& e) {
            if (e.data == 'C')
                command_seen = nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command);
        });
    // Command is the Alt key on Linux; hold it until the keyboard reports it, as a person would.
    ASSERT_TRUE(xdotool("keydown alt"));
    ASSERT_TRUE(wait_for([] { return nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command); }));
    ASSERT_TRUE(xdotool("key c"));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::key_up) >= 1; }));
    ASSERT_TRUE(xdotool("keyup alt"));
    EXPECT_TRUE(command_seen);
    EXPECT_EQ(p.child.count(event_type::key_char), 0u);
    EXPECT_TRUE(wait_for([] { return !nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command); }));

    // The key state sees held modifiers.
    using nimbit::ui::keyboard;
    ASSERT_FALSE(keyboard::is_key_down(keyboard::control));
    ASSERT_TRUE(xdotool("keydown ctrl"));
    EXPECT_TRUE(wait_for([] { return keyboard::is_key_down(keyboard::control); }));
    EXPECT_FALSE(keyboard::is_key_down(keyboard::shift));
    ASSERT_TRUE(xdotool("keydown shift"));
    EXPECT_TRUE(wait_for([] { return keyboard::is_key_down(keyboard::shift); }));
    ASSERT_TRUE(xdotool("keyup shift keyup ctrl"));
    EXPECT_TRUE(wait_for(
        [] { return !keyboard::is_key_down(keyboard::control) && !keyboard::is_key_down(keyboard::shift); }));
    // Names come from the keyboard layout.
    EXPECT_EQ(keyboard::get_key_name(0), "A");
    EXPECT_EQ(keyboard::get_key_name(49), "Space");
    EXPECT_EQ(keyboard::get_key_name(96), "F5");
    EXPECT_EQ(keyboard::get_key_name(-5), "");
    EXPECT_EQ(keyboard::get_key_name(100000), "");
}

TEST(CocoaWindow, DoubleClickReplacesTheSecondPress) {
    painted_window p({100, 120, 200, 100});
    ASSERT_TRUE(wait_for([&] { return p.w.has_focus(); }));
    // Each button held a little, as a hand does: GNUstep loses a release that follows its press
    // within the same few milliseconds.
    ASSERT_TRUE(xdotool("mousemove " + std::to_string(p.at(30, 40).x) + " " + std::to_string(p.at(30, 40).y) +
                        " mousedown 1 sleep 0.06 mouseup 1 sleep 0.06 mousedown 1 sleep 0.06 mouseup 1"));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::mouse_dbl_click) == 1; }));
    pump(0.1);
    EXPECT_EQ(p.child.count(event_type::mouse_down), 1u);
    EXPECT_EQ(p.child.count(event_type::mouse_up), 1u); // the release after the double click is swallowed
}
