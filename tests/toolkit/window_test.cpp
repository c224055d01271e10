#include "tests/support/widget_fixture.h"

#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/popup_menu.h"
#include "nimbit/ui/tooltip.h"

namespace {

using enum event_type;

constexpr auto mouse_types = {mouse_down, mouse_up, mouse_dbl_click, mouse_move, mouse_enter, mouse_leave};

// A window at 100,100 and one recorder, with widgets created and watched in one step.
struct WindowTest : OffscreenTest {
    TestWindow win;
    event_recorder r;
    void add(widget& w, const ivec4& rect, const std::string& name, std::initializer_list<event_type> types,
             widget* parent = nullptr) {
        w.create(parent ? *parent : win.get_root(), rect);
        r.watch(w, name, types);
    }
};

TEST_F(WindowTest, HitTestingUsesHalfOpenRectanglesChildOrderAndSkipsHiddenWidgetsAndResizesSetTheRoot) {
    widget a, hidden, inner, b, c;
    a.create(win.get_root(), {10, 10, 50, 40});
    inner.create(a, {0, 0, 10, 10});
    hidden.create(win.get_root(), {0, 0, 400, 300});
    hidden.hide();
    widget* root = &win.get_root();
    // clang-format off
    const std::pair<_vec2<int>, widget*> hits[] = {{{399, 299}, root}, {{400, 299}, nullptr}, {{399, 300}, nullptr},
        {{-1, 0}, nullptr}, {{10, 10}, &inner}, {{19, 19}, &inner}, {{20, 19}, &a}, {{59, 49}, &a}, {{60, 49}, root}};
    // clang-format on
    for (auto [p, w] : hits)
        EXPECT_EQ(win.get_widget_at_pos(p), w) << p.x << "," << p.y;
    // The last child is on top.
    for (widget* w : {&b, &c})
        w->create(win.get_root(), {100, 0, 50, 50});
    EXPECT_EQ(win.get_widget_at_pos({105, 5}), &c);
    // A client resize raises one event (the root following it is in the showcase's grown picture).
    event_recorder resized(win, resize);
    win.set_rect({0, 0, 500, 400});
    EXPECT_EQ(resized.data(), std::vector<uint64_t>{0});
}

TEST_F(WindowTest, DoubleClickSwallowsTheClosingReleaseACapturedWidgetAloneGetsMovesAndHoverFollows) {
    widget button, slider, other;
    const auto clicks = {mouse_down, mouse_up, mouse_dbl_click};
    add(button, {10, 10, 50, 20}, "b", clicks);
    r.watch(win, "w", clicks);
    offscreen::double_click(win, {15, 15});
    EXPECT_EQ(r.take(), (lines{ev("b", mouse_down), ev("w", mouse_down), ev("b", mouse_up), ev("w", mouse_up),
                               ev("b", mouse_dbl_click), ev("w", mouse_dbl_click)}));
    offscreen::click(win, {15, 15}); // the swallow is used up: the next click is whole
    EXPECT_TRUE(r.take().size() == 4 && win.get_focus() == &button);

    add(slider, {0, 0, 50, 50}, "s", mouse_types);
    add(other, {100, 100, 50, 50}, "o", mouse_types);
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
}

// Wheel events bubble to the first live widget with a wheel list; disabled ancestors block clicks.
TEST_F(WindowTest, WheelBubblesToALiveListenerAndDisabledAncestorsBlockInput) {
    widget scroller, panel, label;
    add(scroller, {0, 0, 200, 200}, "scroller", {mouse_wheel});
    add(panel, {0, 0, 200, 200}, "panel", {}, &scroller);
    add(label, {10, 10, 50, 20}, "label", {mouse_down, key_down, focus_gained}, &panel);
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

TEST_F(WindowTest, TabMovesFocusAlongCreationOrderWithWrapAndSkipsWhatCannotTakeIt) {
    widget first, disabled_parent, inside, hidden, last;
    for (widget* w : {&first, &disabled_parent, &hidden, &last})
        w->create(win.get_root(), {0, 0, 10, 10});
    inside.create(disabled_parent, {0, 0, 5, 5});
    for (widget* w : {&first, &inside, &hidden, &last})
        w->set_tab_stop(true);
    disabled_parent.enable(false);
    hidden.hide();
    win.set_tab_navigation(true);
    r.watch(win, "w", {key_char});
    r.watch(last, "last", {key_char});
    auto tab = [&](bool shift = false) {
        offscreen::set_key_down(virtual_key::left_shift, shift);
        offscreen::type_key(win, virtual_key::tab, 9);
        offscreen::set_key_down(virtual_key::left_shift, false);
        return win.get_focus();
    };
    // With no focus yet the root counts as focused; the order wraps both ways.
    EXPECT_EQ((std::vector{tab(), tab(), tab(), tab(true)}),
              (std::vector<widget*>{&first, &last, &first, &last}));
    win.set_tab_navigation(false); // Tab becomes an ordinary character: the first key_char 9 recorded
    tab();
    EXPECT_EQ(r.take(), (lines{ev("last", key_char), ev("w", key_char)}));
}

// Keys go to the focused widget, then the window; focus changes carry their cause and skip the gain on
// dead widgets.
TEST_F(WindowTest, KeysAndFocusGoToTheFocusedWidgetThenTheWindowAndPointerEventsToOneWidget) {
    widget field, under, dead;
    add(field, {0, 0, 10, 10}, "f", {key_down_raw, key_down, key_char, key_up, focus_gained, focus_lost});
    add(dead, {0, 0, 10, 10}, "d", {focus_gained, focus_lost});
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
    add(under, {50, 50, 50, 50}, "under", types);
    r.watch(field, "f", types);
    r.watch(win, "w", types);
    offscreen::set_pointer(win.get_client_rect().position() + _vec2<int>{55, 55});
    send(win, pointer_event, 9);
    send(win, input_ime, 4);
    EXPECT_EQ(r.take(true), (lines{ev("under", pointer_event, 9), ev("f", input_ime, 4)}));
    dead.enable(false);
    win.set_focus(&dead, focus_cause::mouse);
    // The window's own focus notifications reach the focused widget when it is live, then the window.
    dead.enable(true);
    send(win, focus_lost);
    EXPECT_EQ(r.take(true), (lines{ev("f", focus_lost, 0), ev("d", focus_lost, 0), ev("w", focus_lost, 0)}));
}

TEST_F(WindowTest, WidgetTimersFireOnTheClockAndKeepTheirFirstInterval) {
    TestWindow fresh;
    widget w;
    w.create(win.get_root(), {0, 0, 10, 10});
    event_recorder fired(w, timer);
    w.add_timer(7, 100, false);
    w.add_timer(7, 10, false); // already running: the interval stays 100 ms
    w.add_timer(8, 30, true);
    const auto after = [&](int ms) { // the timer events so far, after waiting ms
        offscreen::advance_ms(ms);
        return fired.count();
    };
    EXPECT_EQ((std::vector{after(99), after(1), after(200)}), (std::vector<size_t>{1, 2, 4}));
    EXPECT_EQ(fired.data(), (std::vector<uint64_t>{8, 7, 7, 7})) << "the single shot fired once";
    w.remove_timer(7);
    EXPECT_FALSE(w.has_timer(8) || w.has_timer(7));
    EXPECT_EQ(after(500), 4u);
    // Native ids count from 1, and a widget's timers die with it.
    {
        widget doomed;
        doomed.create(fresh.get_root(), {0, 0, 10, 10});
        doomed.add_timer(1, 50);
        doomed.add_timer(2, 50);
        EXPECT_TRUE(fresh.os().is_timer_running(1) && fresh.os().is_timer_running(2));
    }
    EXPECT_FALSE(fresh.os().is_timer_running(1));
    offscreen::advance_ms(100); // nothing may reach the destroyed widget
    // A single-shot handler may restart its timer.
    int restarts = 0;
    event_manager::instance().add_event(&w, &win, timer, [&](const event_info& e) {
        if (e.data == 1 && ++restarts < 3)
            w.add_timer(1, 10, true);
    });
    w.add_timer(1, 10, true);
    offscreen::advance_ms(100);
    EXPECT_EQ(restarts, 3);
    // A rect target is reached in halving steps, one per animation tick, and then the tick stops.
    w.set_rect_target({100, 0, 10, 10});
    std::vector<int> xs;
    for (int i = 0; i < 5; ++i) {
        offscreen::advance_ms(25);
        xs.push_back(w.get_rect().x);
    }
    EXPECT_EQ(xs, (std::vector<int>{50, 75, 88, 100, 100}));
    EXPECT_FALSE(win.os().is_timer_running(window::animation_timer_id));
}

// The tooltip (its timer ticks every 0.1 s) stays as it is for `ticks` - 1 more ticks and shows or
// hides at the next one.
bool flips_at_tick(window& win, int ticks) {
    const bool before = win.is_tooltip_shown();
    offscreen::advance_ms(100 * (ticks - 1));
    const bool early = win.is_tooltip_shown();
    offscreen::advance_ms(100);
    return early == before && win.is_tooltip_shown() != before;
}

TEST_F(WindowTest, TooltipShowsAtTheEighthTickHidesAtTheSixtyFirstAndAreasRestartTheDelay) {
    widget w;
    w.create(win.get_root(), {10, 10, 100, 50});
    w.add_tooltip("Applies the effect", "Apply");
    offscreen::move_mouse(win, {20, 20});
    offscreen::advance_ms(100); // the first tick sees a new widget under the pointer and resets the counter
    ASSERT_TRUE(flips_at_tick(win, 8));
    EXPECT_EQ(win.get_tooltip_window()->get_text(), "Applies the effect");
    EXPECT_TRUE(flips_at_tick(win, 53)) << "hidden at the sixty-first tick after the reset";

    // Areas are inclusive, and moving into one restarts the delay.
    widget areas;
    areas.create(win.get_root(), {200, 0, 100, 50});
    areas.add_tooltip({0, 0, 40, 50}, "left");
    offscreen::move_mouse(win, {240, 10}); // the right edge of the first area counts
    offscreen::advance_ms(200);            // new widget, then a new area: two resets
    ASSERT_TRUE(flips_at_tick(win, 8));
    EXPECT_EQ(win.get_tooltip_window()->get_text(), "left");
    offscreen::move_mouse(win, {250, 10}); // between the areas
    offscreen::advance_ms(100);
    EXPECT_FALSE(win.is_tooltip_shown());
    areas.remove_tooltips();
    w.remove_tooltips();
    EXPECT_FALSE(win.os().is_timer_running(window::tooltip_timer_id));
}

TEST_F(WindowTest, ShowRaisesOnChangesAndShowModalReturnsTheEndCode) {
    r.watch(win, "d", {shown, hidden});
    for (bool on : {true, true, false, false})
        win.show(on);
    EXPECT_EQ(r.take(), (lines{ev("d", shown), ev("d", hidden)}));
    offscreen::offscreen_window::set_modal_driver([&](window& w) {
        EXPECT_TRUE(&w == &win && win.is_modal());
        win.end_modal(42);
    });
    EXPECT_EQ(win.show_modal(), 42);
    EXPECT_FALSE(win.is_modal() || win.is_shown());
    EXPECT_EQ(r.take(true), (lines{ev("d", shown, 0), ev("d", hidden, 0), ev("d", hidden, 0)}));
    // Without a driver, widget timers drive the modal loop; with nothing to drive it, it ends.
    offscreen::offscreen_window::set_modal_driver({});
    widget w;
    w.create(win.get_root(), {0, 0, 10, 10});
    int ticks = 0;
    event_manager::instance().add_event(&w, &win, timer, [&](const event_info&) {
        if (++ticks == 3)
            win.end_modal(-2);
    });
    w.add_timer(1, 500);
    const uint64_t start = offscreen::now_us();
    EXPECT_EQ(win.show_modal(), -2);
    EXPECT_EQ(offscreen::now_us() - start, 1'500'000u);
    w.remove_timer(1);
    EXPECT_EQ(win.show_modal(), 0);
}

// Plain control and shift test the left key only; the option and command members take either key;
// the editing shortcuts' member is Command here; any other member is a key code of its own. A press is
// reported once, on the up-to-down edge.
TEST_F(WindowTest, ModifierMembersTestTheirKeysKeyPressesReportOnceAndThePointerIsRelativeToTheWidget) {
    using kb = keyboard;
    // clang-format off
    const std::tuple<int, std::vector<int>, bool> rows[] = { // member, keys down, expected
        {kb::control, {59}, true},       {kb::control, {62}, false},          {kb::left_control, {59}, true},
        {kb::left_control, {59, 62}, false}, {kb::right_control, {62}, true}, {kb::right_control, {59}, false},
        {kb::shift, {56}, true},         {kb::shift, {60}, false},            {kb::left_shift, {56}, true},
        {kb::left_shift, {56, 60}, false},   {kb::right_shift, {60}, true},   {kb::option, {58}, true},
        {kb::left_option, {58}, true},   {kb::right_option, {58}, true},      {kb::right_option, {61}, false},
        {kb::command, {55}, true},       {kb::left_command, {55}, true},      {kb::right_command, {55}, true},
        {kb::right_command, {54}, false}, {kb::tab, {49}, false},             {12, {12}, true},
        {kb::shortcut, {55}, true},      {kb::shortcut, {59}, false},         {-70, {48, 49, 55, 56, 58, 59}, false}};
    // clang-format on
    for (const auto& [member, down, expected] : rows) {
        offscreen::reset_input();
        for (int code : down)
            offscreen::set_key_down(code, true);
        EXPECT_EQ(keyboard::is_key_down(member), expected) << "member " << member;
    }
    offscreen::reset_input();
    std::vector<bool> pressed{keyboard::was_key_pressed(virtual_key::q)};
    for (bool down : {true, true, false, true}) {
        offscreen::set_key_down(virtual_key::q, down);
        pressed.push_back(keyboard::was_key_pressed(virtual_key::q));
    }
    EXPECT_EQ(pressed, (std::vector<bool>{false, true, false, false, true}));
    widget panel, item;
    panel.create(win.get_root(), {10, 20, 100, 100});
    item.create(panel, {5, 5, 10, 10});
    offscreen::set_pointer({130, 140});
    EXPECT_EQ(std::pair(mouse::get_position(nullptr), mouse::get_position(&item)),
              std::pair(_vec2<int>{130, 140}, _vec2<int>{15, 15}));
    offscreen::set_button_down(2, true);
    EXPECT_TRUE(mouse::is_button_down(mouse::button::right) && !mouse::is_button_down(mouse::button::left));
}

// The answer scripted for the next menu, and what showing it returned.
uint32_t choose(popup_menu& menu, window& win, std::optional<uint32_t> answer, _vec2<int> at = {},
                bool screen = false) {
    offscreen::push_menu_answer(answer);
    return menu.show(win, at, screen);
}

TEST_F(WindowTest, MenusReturnTheChosenIdOrAllBitsWhenDismissedAndSkipDisabledOrRemovedItems) {
    popup_menu menu;
    menu.add_item(0, "Copy");
    menu.add_separator(9);
    menu.add_item(3, "Remove");
    menu.add_item(4, "Paste", 1);
    menu.add_item(5, "Cut", 0);
    menu.check_item(3, true);
    EXPECT_EQ(menu.get_item_text(4) + menu.get_item_text(77), "Paste");
    EXPECT_EQ(choose(menu, win, 0, {20, 30}), 0u) << "id 0 is a valid choice, told apart from dismissal";
    EXPECT_EQ(choose(menu, win, std::nullopt), popup_menu::dismissed);
    EXPECT_EQ(choose(menu, win, 3, {120, 130}, true), 3u);
    const auto& shown = offscreen::shown_menus();
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_EQ(std::pair(shown[0].position, shown[2].position),
              std::pair(_vec2<int>{30, 40}, _vec2<int>{30, 40}))
        << "a screen point made relative to the window";
    EXPECT_EQ(shown[0].items.at(0).text + shown[0].items.at(2).text, "CutPaste") << "inserted at 0, then 1";
    // Disabled or removed items cannot be chosen; a submenu's items can.
    popup_menu sub;
    sub.add_item(21, "Inner");
    menu.add_item(1, "One");
    menu.add_item(2, "Two");
    menu.add_item(20, "More", -1, &sub);
    menu.enable_item(1, false);
    EXPECT_EQ(choose(menu, win, 1), popup_menu::dismissed);
    EXPECT_EQ(choose(menu, win, 21), 21u);
    menu.remove_item(2);
    EXPECT_EQ(choose(menu, win, 2), popup_menu::dismissed);
    menu.remove_all_items();
    const size_t count = shown.size();
    EXPECT_EQ(choose(menu, win, 1), 0u) << "an empty menu is not shown";
    EXPECT_EQ(shown.size(), count);
}

} // namespace
