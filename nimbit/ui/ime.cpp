#include "nimbit/ui/ime.h"

namespace nimbit::ui {

namespace {
struct composition {
    std::string text;
    int cursor = 0;
    ime::highlight segment;
};
composition& state() {
    static composition c;
    return c;
}
} // namespace

bool ime::is_composing() {
    return !state().text.empty();
}

const std::string& ime::get_string() {
    return state().text;
}

ime::highlight ime::get_highlight_style() {
    return state().segment;
}

int ime::get_cursor_position() {
    return state().cursor;
}

void ime::set_composition(std::string_view utf8, int cursor, highlight segment) {
    if (utf8.empty()) {
        end_composition();
        return;
    }
    state() = {std::string(utf8), cursor, segment};
}

void ime::end_composition() {
    state() = {};
}

} // namespace nimbit::ui
