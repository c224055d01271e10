// The backend's windows on a real window server: painting, input routing, timers, modal sessions,
// and the showcase styled on screen with its controls driven by real input.

#include "display_session.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/showcase_controls.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"
#include "tests/support/offscreen_test.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace cocoa_test;
using nimbit::ivec4;
using nimbit::vec4;
using nimbit::ui::event_type;
using nimbit::ui::keyboard;
using values = std::vector<uint64_t>;
using point = nimbit::_vec2<int>;

namespace {

constexpr vec4 blue{0.1f, 0.2f, 0.8f, 1.0f};
constexpr vec4 red{0.9f, 0.1f, 0.1f, 1.0f};

bool hold_command() { // Command is Alt on Linux; held until the keyboard reports it
    return xdotool("keydown alt") &&
           wait_for([] { return nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command); });
}

// A widget that paints itself in one colour and records every input event it receives.
struct probe_widget : nimbit::ui::widget {
    explicit probe_widget(vec4 color) : color(color) {}

    template <class Parent> void create(Parent& parent, const ivec4& rect) {

        widget::create(parent, rect);
        events.watch(*this, "",
                     {event_type::mouse_up, event_type::mouse_down, event_type::mouse_dbl_click,
                      event_type::mouse_wheel, event_type::key_down, event_type::key_down_raw,
                      event_type::key_up, event_type::key_char, event_type::timer});
        nimbit::ui::event_manager::instance().add_event(
            this, this, event_type::draw, [this](const nimbit::ui::event_info&) {
                get_window()->get_drawer().set_brush_color(color);
                get_window()->get_drawer().draw_rect({0, 0, get_rect().w, get_rect().h});
            });
    }
    size_t count(event_type type) const { return events.data(type).size(); }
    std::vector<uint64_t> data_of(event_type type) const { return events.data(type); }

    vec4 color;
    event_recorder events;
};

struct timed_window {
    nimbit::ui::window w;
    probe_widget root{{0.2f, 0.2f, 0.2f, 1}};
    explicit timed_window(nimbit::ivec4 frame = {200, 200, 160, 90}) {
        w.create("timers", frame, nimbit::ui::window_style_titled);
        root.create(w.get_root(), {0, 0, frame.w, frame.h});
    }
    // Runs action on every tick of any of the root's timers.
    void on_timer(void* owner, std::function<void()> action) {
        nimbit::ui::event_manager::instance().add_event(
            &root, owner, event_type::timer, [action](const nimbit::ui::event_info&) { action(); });
    }
};

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

TEST(CocoaTimers, TimersRepeatOrFireOnceMayDestroyTheirWindowAndDriveModalSessions) {
    timed_window t;
    t.root.add_timer(7, 20, false);
    t.root.add_timer(8, 20, true);
    ASSERT_TRUE(wait_for([&] { return t.root.count(event_type::timer) >= 5; }));
    const auto ids = t.root.data_of(event_type::timer);
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 8ull), 1);
    EXPECT_GE(std::count(ids.begin(), ids.end(), 7ull), 4);
    EXPECT_TRUE(t.root.has_timer(7));
    EXPECT_FALSE(t.root.has_timer(8));
    t.root.remove_timer(7);

    // A timer may destroy its own window; nothing fires into it afterwards.
    auto doomed = std::make_unique<timed_window>();
    bool gone = false;
    doomed->on_timer(&gone, [&] { doomed.reset(), gone = true; });
    doomed->root.add_timer(1, 10, false);
    ASSERT_TRUE(wait_for([&] { return gone; }));
    pump(0.05);

    // show_modal returns the end_modal code; other windows keep working during the session.
    timed_window other({420, 200, 160, 90});
    other.w.show_no_focus();
    t.on_timer(&t, [&] {
        if (other.root.count(event_type::timer) >= 3)
            t.w.end_modal(42);
    });
    other.root.add_timer(1, 20, false);
    t.root.add_timer(2, 20, false);
    EXPECT_EQ(t.w.show_modal(), 42);
    EXPECT_GE(other.root.count(event_type::timer), 3u);
    EXPECT_FALSE(t.w.is_modal());
    EXPECT_FALSE(t.w.is_shown());
    t.root.remove_timer(2);
    other.root.remove_timer(1);
    // Closed otherwise, the session returns 0: show_modal starts again from 0.
    other.w.set_modal_code(9);
    other.on_timer(&t, [&] { other.w.hide(); });
    other.root.add_timer(3, 50, true);
    EXPECT_EQ(other.w.show_modal(), 0);
    EXPECT_FALSE(other.w.is_modal());

    // Ended by input that the session itself dispatches (a click, as a question's OK ends it): it
    // returns its code and the window that had the keyboard has it back. (A question ended by its
    // keys, and asked again, is in the e2e gallery scene.)
    timed_window owner({40, 40, 160, 90});
    owner.w.show();
    ASSERT_TRUE(wait_for([&] { return owner.w.has_focus(); }));
    timed_window asked({260, 240, 160, 90});
    nimbit::ui::event_manager::instance().add_event(
        &asked.root, &asked, event_type::mouse_up,
        [&](const nimbit::ui::event_info&) { asked.w.end_modal(5); });
    xdotool_later("sleep 0.5 mousemove 300 270 mousedown 1 sleep 0.1 mouseup 1");
    EXPECT_EQ(asked.w.show_modal(), 5);
    EXPECT_FALSE(asked.w.is_shown());
    EXPECT_TRUE(wait_for([&] { return owner.w.has_focus(); }));
}

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
}
