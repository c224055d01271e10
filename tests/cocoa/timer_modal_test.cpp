#include "display_session.h"
#include "probe_widget.h"

#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace cocoa_test;
using nimbit::ui::event_type;

namespace {

struct timed_window {
    nimbit::ui::window w;
    probe_widget root{{0.2f, 0.2f, 0.2f, 1}};
    explicit timed_window(nimbit::ivec4 frame = {200, 200, 160, 90}) {
        w.create("timers", frame, nimbit::ui::window_style_titled);
        root.create(w.get_root(), {0, 0, frame.w, frame.h});
    }
};

} // namespace

TEST(CocoaTimers, RepeatingTimersRepeatSingleShotsFireOnceAndATimerMayDestroyItsWindow) {
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
    t.root.received.clear();
    pump(0.1);
    EXPECT_EQ(t.root.count(event_type::timer), 0u);

    // A timer may destroy its own window.
    auto doomed = std::make_unique<timed_window>();
    bool gone = false;
    nimbit::ui::event_manager::instance().add_event(&doomed->root, &gone, event_type::timer,
                                                    [&](const nimbit::ui::event_info&) {
                                                        doomed.reset();
                                                        gone = true;
                                                    });
    doomed->root.add_timer(1, 10, false);
    ASSERT_TRUE(wait_for([&] { return gone; }));
    pump(0.05); // nothing fires into the destroyed window
}

TEST(CocoaModal, ShowModalReturnsTheEndModalCodeOrZeroWhenClosed) {
    timed_window t;
    nimbit::ui::event_manager::instance().add_event(
        &t.root, &t, event_type::timer, [&](const nimbit::ui::event_info&) { t.w.end_modal(42); });
    t.root.add_timer(3, 50, true);
    EXPECT_EQ(t.w.show_modal(), 42);
    EXPECT_FALSE(t.w.is_modal());
    EXPECT_FALSE(t.w.is_shown());
    // Closed otherwise, the session returns 0: show_modal starts again from 0.
    timed_window other;
    other.w.set_modal_code(9);
    nimbit::ui::event_manager::instance().add_event(&other.root, &t, event_type::timer,
                                                    [&](const nimbit::ui::event_info&) { other.w.hide(); });
    other.root.add_timer(3, 50, true);
    EXPECT_EQ(other.w.show_modal(), 0);
    EXPECT_FALSE(other.w.is_modal());
}

TEST(CocoaModal, OtherWindowsKeepWorkingDuringTheSession) {
    timed_window modal({200, 200, 160, 90});
    timed_window other({420, 200, 160, 90});
    other.w.show_no_focus();
    nimbit::ui::event_manager::instance().add_event(&modal.root, &modal, event_type::timer,
                                                    [&](const nimbit::ui::event_info&) {
                                                        if (other.root.count(event_type::timer) >= 3)
                                                            modal.w.end_modal(1);
                                                    });
    other.root.add_timer(1, 20, false);
    modal.root.add_timer(2, 20, false);
    EXPECT_EQ(modal.w.show_modal(), 1);
    EXPECT_GE(other.root.count(event_type::timer), 3u);
}

using CocoaModalDeathTest = ::testing::Test;

TEST_F(CocoaModalDeathTest, EndingOrNestingSessionsWrongIsAProgrammingError) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            timed_window t;
            t.w.end_modal(1);
        },
        "nimbit/ui/cocoa/native_window.mm:[0-9]+: assertion failed: modalSession != nullptr");
    EXPECT_DEATH(
        {
            timed_window t;
            nimbit::ui::event_manager::instance().add_event(
                &t.root, &t, event_type::timer, [&](const nimbit::ui::event_info&) { t.w.show_modal(); });
            t.root.add_timer(1, 10, true);
            t.w.show_modal();
        },
        "nimbit/ui/cocoa/native_window.mm:[0-9]+: assertion failed: !modalSession");
}
