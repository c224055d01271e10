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
using nimbit::ui::keyboard;
using values = std::vector<uint64_t>;

namespace {

constexpr vec4 blue{0.1f, 0.2f, 0.8f, 1.0f};
constexpr vec4 red{0.9f, 0.1f, 0.1f, 1.0f};

} // namespace

TEST(CocoaWindow, PaintsWidgetsInPlaceAndRoutesPointerWheelAndKeysToThem) {
    nimbit::ui::window w;
    probe_widget root{blue}, child{red};
    w.create("probe", {100, 120, 200, 100}, nimbit::ui::window_style_borderless);
    root.create(w.get_root(), {0, 0, 200, 100});
    child.create(root, {20, 30, 40, 20});
    w.show();
    const ivec4 client = w.get_client_rect();
    screen_image img;
    auto looks = [&](int x, int y, vec4 color) {
        return color_distance(img.pixel(x, y), color) < 0.02f;
    };
    ASSERT_TRUE(wait_for([&] {
        img = capture_screen(client);
        return looks(25, 35, red) && looks(5, 5, blue);
    }));
    // The child covers exactly (20, 30) .. (59, 49): y grows downwards.
    for (auto [x, y, color] : {std::tuple{20, 30, red},
                               {59, 49, red},
                               {19, 30, blue},
                               {60, 49, blue},
                               {20, 29, blue},
                               {20, 50, blue},
                               {199, 99, blue}})
        EXPECT_TRUE(looks(x, y, color)) << x << "," << y;

    const std::string over_child =
        "mousemove " + std::to_string(client.x + 30) + " " + std::to_string(client.y + 40);
    ASSERT_TRUE(wait_for([&] { return w.has_focus(); }));
    // A double click replaces the second press and swallows the release after it. Each button is
    // held a little, as a hand does: GNUstep loses a release that follows its press within a few ms.
    ASSERT_TRUE(xdotool(over_child +
                        " mousedown 1 sleep 0.06 mouseup 1 sleep 0.06 mousedown 1 sleep 0.06 mouseup 1"));
    ASSERT_TRUE(wait_for([&] { return child.count(event_type::mouse_dbl_click) == 1; }));
    pump(0.1);
    EXPECT_EQ(child.data_of(event_type::mouse_down), values{0}); // the left button
    EXPECT_EQ(child.count(event_type::mouse_up), 1u);
    pump(0.6); // past the double-click interval
    child.events.entries.clear();
    // Clicks go to the widget under the pointer, with the button in the data.
    ASSERT_TRUE(click_at({client.x + 30, client.y + 40}, 3));
    ASSERT_TRUE(wait_for([&] { return child.count(event_type::mouse_up) == 1; }));
    EXPECT_EQ(child.data_of(event_type::mouse_down), values{2});
    EXPECT_EQ(root.count(event_type::mouse_down), 0u);
    ASSERT_TRUE(click_at({client.x + 150, client.y + 80}));
    ASSERT_TRUE(wait_for([&] { return root.count(event_type::mouse_up) == 1; }));
    EXPECT_EQ(child.count(event_type::mouse_down), 1u);

    // The wheel goes to the widget under the pointer, forty per line.
    ASSERT_TRUE(xdotool(over_child + " click 4"));
    ASSERT_TRUE(wait_for([&] { return child.count(event_type::mouse_wheel) >= 1; }));
    const double up = nimbit::ui::wheel_delta(child.data_of(event_type::mouse_wheel).at(0));
    EXPECT_GT(up, 0.0);
    EXPECT_EQ(std::fmod(up, 40.0), 0.0);

    // Keys arrive as raw key, character and up: key_down carries the upper-cased character,
    // key_down_raw the virtual key code (A is 0, B is 11) with the character in the high half.
    child.focus();
    child.events.entries.clear();
    ASSERT_TRUE(xdotool("type --delay 30 aB"));
    ASSERT_TRUE(wait_for([&] { return child.count(event_type::key_char) == 2; }));
    EXPECT_EQ(child.data_of(event_type::key_char), (values{'a', 'B'}));
    EXPECT_EQ(child.data_of(event_type::key_down), (values{'A', 'B'}));
    const auto raw = child.data_of(event_type::key_down_raw);
    ASSERT_GE(raw.size(), 2u);
    EXPECT_EQ(raw.front(), 0ull | (0x41ull << 32));
    EXPECT_EQ(raw.back(), 11ull | (0x42ull << 32));
    EXPECT_EQ(child.data_of(event_type::key_up).back(), 'B');
    // (Return, Tab, Escape and the arrows reach the popup in the e2e walkthrough.)

    // Names come from the keyboard layout.
    for (auto [code, name] : {std::pair{0, "A"}, {49, "Space"}, {96, "F5"}, {-5, ""}, {100000, ""}})
        EXPECT_EQ(keyboard::get_key_name(code), name) << code;
}
