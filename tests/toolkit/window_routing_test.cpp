#include "toolkit_fixture.h"

#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/mouse.h"

namespace toolkit_test {
namespace {

using enum event_type;

using RoutingTest = OffscreenTest;
constexpr auto mouse_types = {mouse_down, mouse_up, mouse_dbl_click, mouse_move, mouse_enter, mouse_leave};

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

TEST_F(RoutingTest, DoubleClickSwallowsTheClosingReleaseACapturedWidgetAloneGetsMovesAndHoverFollows) {
    Scene s;
    auto& [win, r] = s;
    widget button, slider, other;
    const auto clicks = {mouse_down, mouse_up, mouse_dbl_click};
    s.add(button, {10, 10, 50, 20}, "b", clicks);
    r.watch(win, "w", clicks);
    offscreen::double_click(win, {15, 15});
    EXPECT_EQ(r.take(), (lines{ev("b", mouse_down), ev("w", mouse_down), ev("b", mouse_up), ev("w", mouse_up),
                               ev("b", mouse_dbl_click), ev("w", mouse_dbl_click)}));
    offscreen::click(win, {15, 15}); // the swallow is used up: the next click is whole
    EXPECT_EQ(r.take().size(), 4u);
    EXPECT_EQ(win.get_focus(), &button);

    s.add(slider, {0, 0, 50, 50}, "s", mouse_types);
    s.add(other, {100, 100, 50, 50}, "o", mouse_types);
    r.watch(win, "w", {mouse_move});
    offscreen::press_mouse(win, {10, 10});
    mouse::capture_widget(slider);
    EXPECT_TRUE(win.os().is_capturing());
    r.take();
    offscreen::move_mouse(win, {120, 120});
    offscreen::release_mouse(win, {120, 120});
    EXPECT_EQ(r.take(), (lines{ev("s", mouse_move), ev("s", mouse_up)}));
    mouse::release_widget(slider);
    EXPECT_FALSE(win.os().is_capturing() || mouse::get_captured_widget());
    offscreen::move_mouse(win, {121, 121});
    EXPECT_EQ(r.take(), (lines{ev("o", mouse_enter), ev("w", mouse_move)}));
    // Enter and leave come in order; leaving the window keeps the hovered widget.
    for (int x : {10, 11})
        offscreen::move_mouse(win, {x, 10});
    send(win, mouse_leave);
    EXPECT_EQ(r.take(), (lines{ev("o", mouse_leave), ev("s", mouse_enter), ev("w", mouse_move),
                               ev("s", mouse_move), ev("w", mouse_move), ev("s", mouse_leave)}));
    EXPECT_EQ(win.get_hovered(), &slider);
    {
        widget gone;
        gone.create(win.get_root(), {0, 0, 5, 5});
        mouse::capture_widget(gone);
    }
    EXPECT_EQ(mouse::get_captured_widget(), nullptr) << "a destroyed captured widget is forgotten";
    offscreen::move_mouse(win, {1, 1});
    mouse::capture_widget(slider); // releasing another widget than the captured one is an error
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(mouse::release_widget(other), "get_captured_widget\\(\\) == &widgetToRelease");
}

// Wheel events bubble to the first live widget with a wheel list; disabled ancestors block clicks.
TEST_F(RoutingTest, WheelBubblesToALiveListenerAndDisabledAncestorsBlockInput) {
    Scene s;
    auto& [win, r] = s;
    widget scroller, panel, label;
    s.add(scroller, {0, 0, 200, 200}, "scroller", {mouse_wheel});
    s.add(panel, {0, 0, 200, 200}, "panel", {}, &scroller);
    s.add(label, {10, 10, 50, 20}, "label", {mouse_down, key_down, focus_gained}, &panel);
    r.watch(win.get_root(), "root", {mouse_wheel});
    r.watch(win, "w", {mouse_wheel, mouse_down});
    offscreen::wheel(win, {15, 15}, -1.5);
    EXPECT_DOUBLE_EQ(wheel_delta(r.last_data()), -60.0);
    EXPECT_EQ(r.take(), lines{ev("scroller", mouse_wheel)});
    scroller.enable(false);
    offscreen::wheel(win, {15, 15}, 1.0);
    offscreen::click(win, {15, 15});
    EXPECT_EQ(r.take(), (lines{ev("root", mouse_wheel), ev("w", mouse_down)}));
    scroller.enable(true);
    offscreen::press_mouse(win, {15, 15});
    offscreen::type_key(win, 0, u'a');
    EXPECT_EQ(r.take(), (lines{ev("label", focus_gained), ev("label", mouse_down), ev("w", mouse_down),
                               ev("label", key_down)}));
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
    r.watch(win, "w", {key_char});
    r.watch(first, "first", {key_char});
    auto tab = [&](bool shift = false) {
        offscreen::set_key_down(virtual_key::left_shift, shift);
        offscreen::type_key(win, virtual_key::tab, 9);
        offscreen::set_key_down(virtual_key::left_shift, false);
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
    tab();
    EXPECT_EQ(r.take(), (lines{ev("first", key_char), ev("w", key_char)}));
}

// Keys go to the focused widget, then the window; focus changes carry their cause and skip the gain on
// dead widgets.
TEST_F(RoutingTest, KeysAndFocusGoToTheFocusedWidgetThenTheWindowAndPointerEventsToOneWidget) {
    Scene s;
    auto& [win, r] = s;
    widget field, under, dead;
    s.add(field, {0, 0, 10, 10}, "f", {key_down_raw, key_down, key_char, key_up, focus_gained, focus_lost});
    s.add(dead, {0, 0, 10, 10}, "d", {focus_gained, focus_lost});
    field.focus(focus_cause::keyboard);
    win.set_focus(&field, focus_cause::mouse); // already focused: nothing
    r.watch(win, "w", {key_down, focus_lost});
    offscreen::type_key(win, 0, u'a');
    const uint64_t upper = 'A';
    EXPECT_EQ(r.take(true),
              (lines{ev("f", focus_gained, 1), ev("f", key_down_raw, upper << 32), ev("f", key_down, upper),
                     ev("w", key_down, upper), ev("f", key_char, 'a'), ev("f", key_up, upper)}));
    // Pointer events go to the widget under the pointer, input method updates to the focused one.
    const auto types = {pointer_event, input_ime};
    s.add(under, {50, 50, 50, 50}, "under", types);
    r.watch(field, "f", types);
    r.watch(win, "w", types);
    offscreen::set_pointer(win.get_client_rect().position() + _vec2<int>{55, 55});
    send(win, pointer_event, 9);
    send(win, input_ime, 4);
    send(win, draw); // ignored by the router
    EXPECT_EQ(r.take(true), (lines{ev("under", pointer_event, 9), ev("f", input_ime, 4)}));
    dead.enable(false);
    win.set_focus(&dead, focus_cause::mouse);
    EXPECT_EQ(win.get_focus(), &dead);
    // The window's own focus notifications reach the focused widget when it is live, then the window.
    dead.enable(true);
    send(win, focus_lost);
    EXPECT_EQ(r.take(true), (lines{ev("f", focus_lost, 0), ev("d", focus_lost, 0), ev("w", focus_lost, 0)}));
}

TEST_F(RoutingTest, ClientResizeSetsTheRootAndATitledWindowsClientAreaLeavesTheBar) {
    TestWindow win;
    event_recorder resized(win, resize);
    win.set_rect({0, 0, 500, 400});
    EXPECT_EQ(win.get_root().get_rect(), (ivec4{0, 0, 500, 400}));
    EXPECT_EQ(resized.data(), std::vector<uint64_t>{0});
    window titled;
    titled.create("titled", {10, 20, 300, 200}, window_style_titled | window_style_resizable);
    const int bar = offscreen::offscreen_window::title_bar_height;
    EXPECT_EQ(titled.get_client_rect(), (ivec4{10, 20 + bar, 300, 200 - bar}));
    titled.set_rect({10, 20, 320, 240});
    EXPECT_EQ(titled.get_root().get_rect(), (ivec4{0, 0, 320, 240 - bar}));
}

} // namespace
} // namespace toolkit_test
