#pragma once

#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_clipboard.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/window.h"
#include "tests/support/offscreen_test.h"

#include <cstdint>
#include <string_view>
#include <vector>

using namespace nimbit;
using namespace nimbit::ui;

// A shown offscreen window of 400 x 300 at the screen origin, and helpers that feed keys the way
// the platform does.
class WidgetTest : public OffscreenTest {
protected:
    static constexpr int command_key = virtual_key::command, shift_key = virtual_key::left_shift,
                         control_key = virtual_key::left_control;

    void SetUp() override {
        OffscreenTest::SetUp();
        win.create("test", {0, 0, 400, 300});
        win.show();
    }

    template <typename Match> int count_painted(Match match) {
        int n = 0;
        for (const auto& c : painted(win))
            n += match(c) ? 1 : 0;
        return n;
    }

    // What the platform hands the window; the one place tests call into it.
    void send(event_type t, uint64_t data = 0) {
        nimbit::ui::offscreen::events_of(win).process_event(t, data);
    }
    // key_down as the platform sends it: the upper-cased character or function-key code.
    void key(uint32_t code) { send(event_type::key_down, code); }
    void key_with(int modifier, uint32_t code, int times = 1) {
        offscreen::set_key_down(modifier, true);
        while (times-- > 0)
            key(code);
        offscreen::set_key_down(modifier, false);
    }
    void type(std::u16string_view text) { // key_char, one UTF-16 unit at a time
        for (char16_t c : text)
            send(event_type::key_char, c);
    }

    window win;
};

// The agent of the last event of one type a source raised.
struct agent_of : event_object {
    event_agent last{};
    agent_of(event_object& source, event_type type) {
        event_manager::instance().add_event(&source, this, type,
                                            [this](const event_info& e) { last = e.agent; });
    }
};
