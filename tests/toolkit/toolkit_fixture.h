#pragma once

#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"
#include "tests/support/offscreen_test.h"

#include <string>
#include <vector>

namespace toolkit_test {

using namespace nimbit;
using namespace nimbit::ui;
using lines = std::vector<std::string>;
using enum event_type;

// A created window at 100,100 on the screen, without a title bar: its client area is its frame.
struct TestWindow : window {
    explicit TestWindow(ivec4 frame = {100, 100, 400, 300}) { create("test", frame, window_style_resizable); }
    offscreen::offscreen_window& os() { return offscreen::native_of(*this); }
};

// What a platform backend hands the window; the one place tests call into it.
inline void send(window& w, event_type t, uint64_t data = 0) {
    offscreen::events_of(w).process_event(t, data);
}
inline void paint(window& w, const ivec4& dirty) {
    offscreen::events_of(w).paint(dirty);
}

inline std::string ev(const std::string& who, event_type t) {
    return event_recorder::line(who, t);
}
inline std::string ev(const std::string& who, event_type t, uint64_t data) {
    return event_recorder::line(who, t, data);
}

} // namespace toolkit_test
