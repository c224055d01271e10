// Any sequence of keys, characters, pastes, clicks, drags and option changes on a text field: the
// caret and the selection always stay inside the text, and painting never reads outside it.
#include "fuzz/fuzz_support.h"
#include "nimbit/ui/clipboard.h"
#include "nimbit/ui/event_type.h"
#include "nimbit/ui/input_box.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/window.h"

#include <string>

using namespace nimbit;
using namespace nimbit::ui;

namespace {
constexpr uint32_t keys[] = {27,    'A',   'C',   'V',   'X',   'Z', 63234, 63235,
                             63272, 63273, 63275, 63232, 63233, 13,  ' ',   'Q'};
constexpr int modifiers[] = {55, 56, 59};
} // namespace

FUZZ_TARGET() {
    offscreen::reset_input();
    offscreen::clear_menu_answers();
    window win;
    win.create("fuzz", {0, 0, 200, 40});
    win.show();
    input_box box;
    box.create(win.get_root(), {0, 0, 120, 26});
    box.focus();
    input_inside_panel& field = box.get_inside();
    auto& events = offscreen::events_of(win);

    while (in.more()) {
        const uint8_t op = in.byte(), arg = in.byte();
        // clang-format off
        switch (op % 12) {
        case 0:
        case 1: events.process_event(event_type::key_char, static_cast<char16_t>(arg | (in.byte() << 8))); break;
        case 2: events.process_event(event_type::key_down, keys[arg % std::size(keys)]); break;
        case 3: offscreen::set_key_down(modifiers[arg % 3], (arg & 0x80) != 0); break;
        case 4: clipboard::set_text(std::string(in.bytes(arg % 16))); break;
        case 5: offscreen::click(win, {arg % 200, 10}, in.byte() % 3); break;
        case 6:
            offscreen::press_mouse(win, {arg % 200, 10});
            offscreen::move_mouse(win, {in.byte() % 250, 10});
            offscreen::release_mouse(win, {arg % 250, 10});
            break;
        case 7: (arg & 1) ? field.load_previous_state() : field.load_next_state(); break;
        case 8: box.set_max_chars(arg % 8); break;
        case 9: box.set_type_password(arg & 1); break;
        case 10: offscreen::push_menu_answer(arg % 7); break;
        case 11: field.erase_text(static_cast<int8_t>(arg), static_cast<int8_t>(in.byte()), true); break;
        }
        // clang-format on
        if (!win.get_focus() || win.get_focus() == &win.get_root())
            box.focus();
        const int length = static_cast<int>(field.get_wide_text().size());
        const int caret = field.get_caret(), selection = field.get_selection();
        check(caret >= 0 && caret <= length && caret + selection >= 0 && caret + selection <= length);
        if (in.at % 7 == 0)
            offscreen::native_of(win).paint_pending();
    }
    offscreen::native_of(win).paint_pending();
    offscreen::reset_input();
}
