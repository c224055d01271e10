#include "toolkit_fixture.h"

#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/mouse.h"

namespace toolkit_test {
namespace {

using RoutingTest = OffscreenTest;
using RoutingDeathTest = OffscreenTest;
constexpr auto mouse_types = {event_type::mouse_down, event_type::mouse_up,    event_type::mouse_dbl_click,
                              event_type::mouse_move, event_type::mouse_enter, event_type::mouse_leave};
constexpr int tab_key = virtual_key::tab, shift_key = virtual_key::left_shift;

// A window and one recorder, with widgets created and watched in one step. Widgets declared after
// the scene go before it.
struct Scene {
    TestWindow win;
    event_recorder r;
    void add(widget& w, const ivec4& rect, const std::string& name, std::initializer_list<event_type> types,
             widget* parent = nullptr) {
        w.create(parent ? *parent : win.get_root(), rect);
        r.watch(w, name, types);
    }
};

TEST_F(RoutingTest, HitTestingUsesHalfOpenRectanglesChildOrderAndSkipsHiddenWidgets) {
    TestWindow win({0, 0, 200, 100});
    widget a, hidden, inner, b, c;
    a.create(win.get_root(), {10, 10, 50, 40});
    inner.create(a, {0, 0, 10, 10});
    hidden.create(win.get_root(), {0, 0, 200, 100});
    hidden.hide();
    widget* root = &win.get_root();
    const std::pair<_vec2<int>, widget*> hits[] = {
        {{199, 99}, root},  {{200, 99}, nullptr}, {{199, 100}, nullptr},
        {{-1, 0}, nullptr}, {{10, 10}, &inner},   {{19, 19}, &inner},
        {{20, 19}, &a},     {{59, 49}, &a},       {{60, 49}, root}};
    for (auto [p, w] : hits)
        EXPECT_EQ(win.get_widget_at_pos(p), w) << p.x << "," << p.y;
    // The last child is on top until the order changes.
    b.create(win.get_root(), {100, 0, 50, 50});
    c.create(win.get_root(), {100, 0, 50, 50});
    EXPECT_EQ(win.get_widget_at_pos({105, 5}), &c);
    b.bring_to_front();
    EXPECT_EQ(win.get_widget_at_pos({105, 5}), &b);
    c.send_to_back();
    EXPECT_EQ(win.get_root().get_children(), (std::vector<widget*>{&c, &a, &hidden, &b}));
    win.get_root().hide();
    EXPECT_EQ(win.get_widget_at_pos({15, 15}), nullptr);
}

TEST_F(RoutingTest, DoubleClickSwallowsTheClosingReleaseAndACapturedWidgetAloneGetsMoves) {
    Scene s;
    auto& [win, r] = s;
    widget button, slider, other;
    const auto clicks = {event_type::mouse_down, event_type::mouse_up, event_type::mouse_dbl_click};
    s.add(button, {10, 10, 50, 20}, "b", clicks);
    r.watch(win, "w", clicks);
    offscreen::double_click(win, {15, 15});
    EXPECT_EQ(r.take(), (lines{ev("b", event_type::mouse_down), ev("w", event_type::mouse_down),
                               ev("b", event_type::mouse_up), ev("w", event_type::mouse_up),
                               ev("b", event_type::mouse_dbl_click), ev("w", event_type::mouse_dbl_click)}));
    offscreen::click(win, {15, 15}); // the swallow is used up: the next click is whole
    EXPECT_EQ(r.take().size(), 4u);
    EXPECT_EQ(win.get_focus(), &button);

    s.add(slider, {0, 0, 50, 50}, "s", mouse_types);
    s.add(other, {100, 100, 50, 50}, "o", mouse_types);
    r.watch(win, "w", {event_type::mouse_move});
    offscreen::press_mouse(win, {10, 10});
    mouse::capture_widget(slider);
    EXPECT_TRUE(win.os().is_capturing());
    r.take();
    offscreen::move_mouse(win, {120, 120});
    offscreen::release_mouse(win, {120, 120});
    EXPECT_EQ(r.take(), (lines{ev("s", event_type::mouse_move), ev("s", event_type::mouse_up)}));
    mouse::release_widget(slider);
    EXPECT_FALSE(win.os().is_capturing());
    EXPECT_EQ(mouse::get_captured_widget(), nullptr);
    offscreen::move_mouse(win, {121, 121});
    EXPECT_EQ(r.take(), (lines{ev("o", event_type::mouse_enter), ev("w", event_type::mouse_move)}));
    {
        widget gone;
        gone.create(win.get_root(), {0, 0, 5, 5});
        mouse::capture_widget(gone);
    }
    EXPECT_EQ(mouse::get_captured_widget(), nullptr) << "a destroyed captured widget is forgotten";
    offscreen::move_mouse(win, {1, 1});
}

TEST_F(RoutingDeathTest, ReleasingAnotherWidgetThanTheCapturedOneIsAnError) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            TestWindow win;
            widget a;
            widget b;
            a.create(win.get_root(), {0, 0, 5, 5});
            b.create(win.get_root(), {0, 0, 5, 5});
            mouse::capture_widget(a);
            mouse::release_widget(b);
        },
        "nimbit/ui/mouse.cpp:[0-9]+: assertion failed: get_captured_widget\\(\\) == &widgetToRelease && "
        "\"The widget to "
        "be released is different from the captured widget\"");
}

TEST_F(RoutingTest, WheelBubblesToTheFirstLiveWidgetWithAWheelList) {
    TestWindow win;
    widget scroller, panel, label;
    scroller.create(win.get_root(), {0, 0, 200, 200});
    panel.create(scroller, {0, 0, 200, 200});
    label.create(panel, {10, 10, 50, 20});
    event_recorder r;
    r.watch(scroller, "scroller", {event_type::mouse_wheel});
    r.watch(win.get_root(), "root", {event_type::mouse_wheel});
    r.watch(win, "window", {event_type::mouse_wheel});
    offscreen::wheel(win, {15, 15}, -1.5);
    EXPECT_DOUBLE_EQ(wheel_delta(r.last_data()), -60.0);
    EXPECT_EQ(r.take(), lines{ev("scroller", event_type::mouse_wheel)});
    scroller.enable(false);
    offscreen::wheel(win, {15, 15}, 1.0);
    EXPECT_EQ(r.take(), lines{ev("root", event_type::mouse_wheel)});
}

TEST_F(RoutingTest, EnterAndLeaveComeInOrderAndLeavingTheWindowKeepsTheHoveredWidget) {
    Scene s;
    auto& [win, r] = s;
    widget a, b;
    s.add(a, {0, 0, 50, 50}, "a", mouse_types);
    s.add(b, {50, 0, 50, 50}, "b", mouse_types);
    r.watch(win, "w", {event_type::mouse_move, event_type::mouse_leave});
    for (int x : {10, 11, 60})
        offscreen::move_mouse(win, {x, 10});
    EXPECT_EQ(r.take(), (lines{ev("a", event_type::mouse_enter), ev("w", event_type::mouse_move),
                               ev("a", event_type::mouse_move), ev("w", event_type::mouse_move),
                               ev("a", event_type::mouse_leave), ev("b", event_type::mouse_enter),
                               ev("w", event_type::mouse_move)}));
    send(win, event_type::mouse_leave);
    EXPECT_EQ(r.take(), lines{ev("b", event_type::mouse_leave)});
    EXPECT_EQ(win.get_hovered(), &b);
}

TEST_F(RoutingTest, TabMovesFocusAlongCreationOrderWithWrapAndSkipsWhatCannotTakeIt) {
    TestWindow win;
    widget first, disabled_parent, inside, hidden, last;
    for (widget* w : {&first, &disabled_parent, &hidden, &last})
        w->create(win.get_root(), {0, 0, 10, 10});
    inside.create(disabled_parent, {0, 0, 5, 5});
    for (widget* w : {&first, &inside, &hidden, &last})
        w->set_tab_stop(true);
    disabled_parent.enable(false);
    hidden.hide();
    win.set_tab_navigation(true);
    event_recorder r;
    r.watch(win, "w", {event_type::key_char});
    r.watch(first, "first", {event_type::key_char});
    auto tab = [&](bool shift = false) {
        offscreen::set_key_down(shift_key, shift);
        offscreen::type_key(win, tab_key, 9);
        offscreen::set_key_down(shift_key, false);
        return win.get_focus();
    };
    EXPECT_EQ(tab(), &first) << "no focus yet: the root counts as focused";
    EXPECT_EQ(tab(), &last);
    EXPECT_EQ(tab(), &first) << "wraps";
    EXPECT_EQ(tab(true), &last);
    EXPECT_EQ(r.count(), 0u) << "no key_char 9 anywhere";
    disabled_parent.enable(true); // inside was created last, so it comes after last
    EXPECT_EQ(tab(), &inside);
    EXPECT_EQ(tab(), &first);
    win.set_tab_navigation(false); // Tab becomes an ordinary character
    first.focus();
    tab();
    EXPECT_EQ(r.take(), (lines{ev("first", event_type::key_char), ev("w", event_type::key_char)}));
}

TEST_F(RoutingTest, DisabledAncestorsBlockInputUntilReEnabled) {
    Scene s;
    auto& [win, r] = s;
    widget panel, button;
    s.add(panel, {0, 0, 100, 100}, "panel", {});
    s.add(button, {10, 10, 20, 20}, "b",
          {event_type::mouse_down, event_type::key_down, event_type::focus_gained}, &panel);
    r.watch(win, "w", {event_type::mouse_down});
    panel.enable(false);
    offscreen::click(win, {15, 15});
    EXPECT_EQ(r.take(), lines{ev("w", event_type::mouse_down)});
    panel.enable(true);
    offscreen::press_mouse(win, {15, 15});
    offscreen::type_key(win, 0, u'a');
    EXPECT_EQ(r.take(), (lines{ev("b", event_type::focus_gained), ev("b", event_type::mouse_down),
                               ev("w", event_type::mouse_down), ev("b", event_type::key_down)}));
}

TEST_F(RoutingTest, KeysGoToTheFocusedWidgetThenTheWindowAndPointerEventsToOneWidget) {
    Scene s;
    auto& [win, r] = s;
    widget field, under;
    s.add(field, {0, 0, 10, 10}, "f",
          {event_type::key_down_raw, event_type::key_down, event_type::key_char, event_type::key_up});
    field.focus(focus_cause::keyboard);
    r.watch(win, "w", {event_type::key_down});
    offscreen::type_key(win, 0, u'a');
    const uint64_t upper = 'A';
    EXPECT_EQ(r.take(true), (lines{ev("f", event_type::key_down_raw, upper << 32),
                                   ev("f", event_type::key_down, upper), ev("w", event_type::key_down, upper),
                                   ev("f", event_type::key_char, 'a'), ev("f", event_type::key_up, upper)}));
    // Pointer events go to the widget under the pointer, input method updates to the focused one.
    const auto types = {event_type::pointer_event, event_type::input_ime};
    s.add(under, {50, 50, 50, 50}, "under", types);
    r.watch(field, "f", types);
    r.watch(win, "w", types);
    offscreen::set_pointer(win.get_client_rect().position() + _vec2<int>{55, 55});
    send(win, event_type::pointer_event, 9);
    send(win, event_type::input_ime, 4);
    send(win, event_type::draw); // ignored by the router
    EXPECT_EQ(r.take(true),
              (lines{ev("under", event_type::pointer_event, 9), ev("f", event_type::input_ime, 4)}));
}

TEST_F(RoutingTest, FocusChangesCarryTheirCauseAndSkipGainOnDeadWidgets) {
    Scene s;
    auto& [win, r] = s;
    widget a, b;
    s.add(a, {0, 0, 10, 10}, "a", {event_type::focus_gained, event_type::focus_lost});
    s.add(b, {0, 0, 10, 10}, "b", {event_type::focus_gained, event_type::focus_lost});
    win.set_focus(&a, focus_cause::keyboard);
    win.set_focus(&a, focus_cause::mouse); // already focused: nothing
    b.enable(false);
    win.set_focus(&b, focus_cause::mouse);
    EXPECT_EQ(r.take(true),
              (lines{ev("a", event_type::focus_gained, 1), ev("a", event_type::focus_lost, 0)}));
    EXPECT_EQ(win.get_focus(), &b);
    // The window's own focus notifications reach the focused widget when it is live, then the window.
    b.enable(true);
    r.watch(win, "w", {event_type::focus_lost});
    send(win, event_type::focus_lost);
    EXPECT_EQ(r.take(true), (lines{ev("b", event_type::focus_lost, 0), ev("w", event_type::focus_lost, 0)}));
}

TEST_F(RoutingTest, ClientResizeSetsTheRootAndReachesAnchoredChildren) {
    Scene s;
    auto& [win, r] = s;
    widget footer;
    s.add(footer, {0, 270, 400, 30}, "footer", {event_type::resize, event_type::move});
    for (anchor_type a : {anchor_type::left, anchor_type::right, anchor_type::bottom})
        footer.set_anchor(a, 0);
    r.watch(win, "w", {event_type::resize});
    win.set_rect({0, 0, 500, 400});
    EXPECT_EQ(win.get_root().get_rect(), (ivec4{0, 0, 500, 400}));
    EXPECT_EQ(footer.get_rect(), (ivec4{0, 370, 500, 30}));
    EXPECT_EQ(r.take(true), lines{ev("w", event_type::resize, 0)});
    // A titled window's client area, and so its root, is what the title bar leaves of the frame.
    window titled;
    titled.create("titled", {10, 20, 300, 200}, window_style_titled | window_style_resizable);
    const int bar = offscreen::offscreen_window::title_bar_height;
    EXPECT_EQ(titled.get_client_rect(), (ivec4{10, 20 + bar, 300, 200 - bar}));
    titled.set_rect({10, 20, 320, 240});
    EXPECT_EQ(titled.get_root().get_rect(), (ivec4{0, 0, 320, 240 - bar}));
}

} // namespace
} // namespace toolkit_test
