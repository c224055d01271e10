#pragma once

// What the toolkit and widget tests share on top of the offscreen fixture: windows, the calls through
// which the platform hands them input, and the event lines the recorder writes.

#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/offscreen/offscreen_clipboard.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"
#include "tests/support/offscreen_test.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

using namespace nimbit;
using namespace nimbit::ui;
using lines = std::vector<std::string>;

// What a platform backend hands the window; the one place tests call into it.
inline void send(window& w, event_type t, uint64_t data = 0) {
    offscreen::events_of(w).process_event(t, data);
}

inline std::string ev(const std::string& who, event_type t, std::optional<uint64_t> data = {}) {
    return event_recorder::line(who, t, data);
}

// A created window at 100,100 on the screen, without a title bar: its client area is its frame.
struct TestWindow : window {
    explicit TestWindow(ivec4 frame = {100, 100, 400, 300}) { create("test", frame, window_style_resizable); }
    offscreen::offscreen_window& os() { return offscreen::native_of(*this); }
};

// A shown window of 400 x 300 at the screen origin, and helpers that feed keys the way the platform
// does.
class WidgetTest : public OffscreenTest {
protected:
    static constexpr int command_key = virtual_key::command, shift_key = virtual_key::left_shift;

    void SetUp() override {
        OffscreenTest::SetUp();
        win.create("test", {0, 0, 400, 300});
        win.show();
    }

    // key_down as the platform sends it: the upper-cased character or function-key code.
    void key(uint32_t code) { send(win, event_type::key_down, code); }
    void key_with(int modifier, uint32_t code, int times = 1) {
        offscreen::set_key_down(modifier, true);
        while (times-- > 0)
            key(code);
        offscreen::set_key_down(modifier, false);
    }
    void type(std::u16string_view text) { // key_char, one UTF-16 unit at a time
        for (char16_t c : text)
            send(win, event_type::key_char, c);
    }

    window win;
};
