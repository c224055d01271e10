#include "display_session.h"
#include "probe_widget.h"

#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

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
    // Runs action on every tick of any of the root's timers.
    void on_timer(void* owner, std::function<void()> action) {
        nimbit::ui::event_manager::instance().add_event(
            &root, owner, event_type::timer, [action](const nimbit::ui::event_info&) { action(); });
    }
};

} // namespace

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
}
