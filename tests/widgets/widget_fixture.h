#pragma once

#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_clipboard.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

// A shown offscreen window of 400 x 300 at the screen origin, with input, clipboard and menu
// scripts reset, plus helpers that feed keys the way the platform does.
class WidgetTest : public ::testing::Test {
protected:
    static constexpr int command_key = nimbit::ui::virtual_key::command,
                         shift_key = nimbit::ui::virtual_key::left_shift,
                         control_key = nimbit::ui::virtual_key::left_control;

    void SetUp() override {
        nimbit::ui::offscreen::reset_input();
        nimbit::ui::get_offscreen_clipboard().clear();
        nimbit::ui::offscreen::clear_menu_answers();
        nimbit::ui::offscreen::clear_shown_menus();
        win.create("test", {0, 0, 400, 300});
        win.show();
    }
    void TearDown() override { nimbit::ui::offscreen::reset_input(); }

    nimbit::ui::offscreen::offscreen_window& native() { return nimbit::ui::offscreen::native_of(win); }
    nimbit::ui::offscreen_drawer& canvas() { return native().get_canvas(); }

    // Paints whatever is dirty after dropping earlier records, and returns the calls.
    std::vector<nimbit::ui::draw_call> repaint() {
        win.get_root().update(false);
        canvas().clear_calls();
        native().paint_pending();
        return canvas().calls();
    }
    // Repaints and counts the calls that match.
    template <typename Match> int count_painted(Match match) {
        int n = 0;
        for (const auto& c : repaint())
            n += match(c) ? 1 : 0;
        return n;
    }

    // key_down as the platform sends it for a key: the upper-cased character or function-key code.
    void key(uint32_t code) {
        nimbit::ui::offscreen::events_of(win).process_event(nimbit::ui::event_type::key_down, code);
    }
    void key_with(int modifier, uint32_t code) {
        nimbit::ui::offscreen::set_key_down(modifier, true);
        key(code);
        nimbit::ui::offscreen::set_key_down(modifier, false);
    }
    // key_char, one UTF-16 unit at a time.
    void type(std::u16string_view text) {
        for (char16_t c : text)
            nimbit::ui::offscreen::events_of(win).process_event(nimbit::ui::event_type::key_char, c);
    }

    nimbit::ui::window win;
};

// Counts the events of one type raised on a source and keeps the last one.
struct event_log : nimbit::ui::event_object {
    int count = 0;
    nimbit::ui::event_info last;
    std::vector<unsigned long long> data;
    event_log(nimbit::ui::event_object& source, nimbit::ui::event_type type) {
        nimbit::ui::event_manager::instance().add_event(&source, this, type,
                                                        [this](const nimbit::ui::event_info& e) {
                                                            ++count;
                                                            last = e;
                                                            data.push_back(e.data);
                                                        });
    }
};
