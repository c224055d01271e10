#include "toolkit_fixture.h"

#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/tooltip.h"

namespace toolkit_test {
namespace {

using enum event_type;

using TimingTest = OffscreenTest;

TEST_F(TimingTest, WidgetTimersFireOnTheClockAndKeepTheirFirstInterval) {
    TestWindow win, fresh;
    widget w;
    w.create(win.get_root(), {0, 0, 10, 10});
    event_recorder fired(w, timer);
    w.add_timer(7, 100, false);
    w.add_timer(7, 10, false); // already running: the interval stays 100 ms
    w.add_timer(8, 30, true);
    offscreen::advance_ms(99);
    EXPECT_EQ(fired.data(), std::vector<uint64_t>{8});
    offscreen::advance_ms(1);
    EXPECT_EQ(fired.data(), (std::vector<uint64_t>{8, 7}));
    offscreen::advance_ms(200);
    EXPECT_EQ(fired.data(), (std::vector<uint64_t>{8, 7, 7, 7})) << "the single shot fired once";
    w.remove_timer(7);
    EXPECT_FALSE(w.has_timer(8) || w.has_timer(7));
    offscreen::advance_ms(500);
    EXPECT_EQ(fired.count(), 4u);
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
}

// The animation halves the distance at each tick and snaps once every component is within its step.
TEST_F(TimingTest, AnimationHalvesTheDistanceAndSnapsAtTheStep) {
    struct Case {
        ivec4 from, to, step;
        std::vector<ivec4> ticks;
    };
    // clang-format off
    const Case cases[] = {
        {{0, 0, 10, 10}, {100, 0, 10, 10}, {10, 0, 0, 0},
         {{50, 0, 10, 10}, {75, 0, 10, 10}, {88, 0, 10, 10}, {100, 0, 10, 10}, {100, 0, 10, 10}}},
        // Backwards and growing: at the fourth tick x has 12 left (within 20) and w 3 (within 6).
        {{200, 0, 40, 10}, {0, 0, 100, 10}, {-20, 0, 6, 0},
         {{100, 0, 70, 10}, {50, 0, 85, 10}, {25, 0, 93, 10}, {0, 0, 100, 10}}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.from.x);
        TestWindow win;
        widget w;
        w.create(win.get_root(), c.from);
        w.set_rect_target(c.to);
        EXPECT_EQ(w.get_animation_step(), c.step);
        EXPECT_TRUE(win.os().is_timer_running(window::animation_timer_id));
        std::vector<ivec4> seen;
        for (size_t tick = 0; tick < c.ticks.size(); ++tick) {
            offscreen::advance_ms(25);
            seen.push_back(w.get_rect());
        }
        EXPECT_EQ(seen, c.ticks);
        EXPECT_EQ(w.get_rect_target(), c.to);
        EXPECT_FALSE(win.os().is_timer_running(window::animation_timer_id));
    }
}

// Ticks of the tooltip timer, one per 0.1 s of clock.
void tooltip_ticks(int n) {
    offscreen::advance_ms(100 * static_cast<uint64_t>(n));
}

// The tooltip stays hidden for `ticks` - 1 more ticks and shows at the next one.
::testing::AssertionResult shows_at_tick(window& win, int ticks) {
    tooltip_ticks(ticks - 1);
    if (win.is_tooltip_shown())
        return ::testing::AssertionFailure() << "shown too early";
    tooltip_ticks(1);
    return win.is_tooltip_shown() ? ::testing::AssertionSuccess()
                                  : ::testing::AssertionFailure() << "not shown";
}

TEST_F(TimingTest, TooltipShowsAtTheEighthTickHidesAtTheSixtyFirstAndAreasRestartTheDelay) {
    TestWindow win;
    widget w;
    w.create(win.get_root(), {10, 10, 100, 50});
    w.add_tooltip("Applies the effect", "Apply");
    offscreen::move_mouse(win, {20, 20});
    tooltip_ticks(1); // the first tick sees a new widget under the pointer and resets the counter
    ASSERT_TRUE(shows_at_tick(win, 8));
    tooltip* tip = win.get_tooltip_window();
    EXPECT_EQ(tip->get_rect().position(), (win.get_client_rect().position() + _vec2<int>{25, 40}));
    auto& canvas = offscreen::native_of(*tip).get_canvas();
    canvas.clear_calls();
    offscreen::native_of(*tip).paint_pending();
    std::string texts;
    for (const auto& c : canvas.calls_named("draw_text"))
        texts += c.text + "|";
    EXPECT_EQ(texts, "Apply|Applies the effect|");
    EXPECT_EQ(canvas.calls_named("draw_rect").at(0).color,
              theme::default_map.at(theme_keys::tooltip_back_color).get<vec4>());
    tooltip_ticks(52); // the sixtieth tick after the reset: still shown
    EXPECT_TRUE(win.is_tooltip_shown());
    tooltip_ticks(1);
    EXPECT_FALSE(win.is_tooltip_shown());

    // Areas are inclusive, and moving between them restarts the delay.
    widget areas;
    areas.create(win.get_root(), {200, 0, 100, 50});
    areas.add_tooltip({0, 0, 40, 50}, "left");
    areas.add_tooltip({60, 0, 40, 50}, "right");
    offscreen::move_mouse(win, {240, 10}); // the right edge of the first area counts
    tooltip_ticks(2);                      // new widget, then a new area: two resets
    ASSERT_TRUE(shows_at_tick(win, 8));
    EXPECT_EQ(win.get_tooltip_window()->get_text(), "left");
    offscreen::move_mouse(win, {270, 10});
    tooltip_ticks(1); // another area: hidden, counting again
    EXPECT_FALSE(win.is_tooltip_shown());
    EXPECT_TRUE(shows_at_tick(win, 8));
    EXPECT_EQ(win.get_tooltip_window()->get_text(), "right");
    offscreen::move_mouse(win, {250, 10}); // between the areas
    tooltip_ticks(1);
    EXPECT_FALSE(win.is_tooltip_shown());
    areas.remove_tooltips();
    w.remove_tooltips();
    EXPECT_FALSE(win.os().is_timer_running(window::tooltip_timer_id));
}

TEST_F(TimingTest, ShowRaisesOnChangesAndShowModalReturnsTheEndCode) {
    TestWindow dialog({10, 10, 100, 100});
    event_recorder r;
    r.watch(dialog, "d", {shown, hidden});
    for (bool on : {true, true, false, false})
        dialog.show(on);
    EXPECT_EQ(r.take(), (lines{ev("d", shown), ev("d", hidden)}));
    offscreen::offscreen_window::set_modal_driver([&](window& w) {
        EXPECT_TRUE(&w == &dialog && dialog.is_modal());
        dialog.end_modal(42);
    });
    EXPECT_EQ(dialog.show_modal(), 42);
    EXPECT_FALSE(dialog.is_modal() || dialog.is_shown());
    EXPECT_EQ(r.take(true), (lines{ev("d", shown, 0), ev("d", hidden, 0), ev("d", hidden, 0)}));
    offscreen::offscreen_window::set_modal_driver([&](window& w) {
        EXPECT_EQ(w.get_rect(), offscreen::get_screen_rect());
        w.set_modal_code(5); // a code set and then the window closed: the code is kept
        w.hide();
    });
    EXPECT_EQ(dialog.show_modal(true), 5);
    // Without a driver, widget timers drive the modal loop; with nothing to drive it, it ends.
    offscreen::offscreen_window::set_modal_driver({});
    widget w;
    w.create(dialog.get_root(), {0, 0, 10, 10});
    int ticks = 0;
    event_manager::instance().add_event(&w, &dialog, timer, [&](const event_info&) {
        if (++ticks == 3)
            dialog.end_modal(-2);
    });
    w.add_timer(1, 500);
    const uint64_t start = offscreen::now_us();
    EXPECT_EQ(dialog.show_modal(), -2);
    EXPECT_EQ(offscreen::now_us() - start, 1'500'000u);
    w.remove_timer(1);
    EXPECT_EQ(dialog.show_modal(), 0);
    // Ending a modal session that is not running, or nesting one, is an error.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(dialog.end_modal(1), "modalSession != nullptr");
    offscreen::offscreen_window::set_modal_driver([](window& inner) { inner.show_modal(); });
    EXPECT_DEATH(dialog.show_modal(), "!modalSession");
}

} // namespace
} // namespace toolkit_test
