#pragma once

#include <string>
#include <string_view>

namespace nimbit::ui {

// The input method's composition in progress (marked text), process-wide: the platform writes it
// while the user composes and raises input_ime on the focused widget; text controls read it when
// they paint. The committed text arrives separately as key_char.
class ime {
public:
    // The segment the input method is converting, in characters of the composition string.
    struct highlight {
        int start = 0;
        int length = 0;
    };

    static bool is_composing();
    // UTF-8; empty when not composing.
    static const std::string& get_string();
    static highlight get_highlight_style();
    // Cursor inside the composition string, in characters.
    static int get_cursor_position();

    // Platform side. An empty string ends the composition.
    static void set_composition(std::string_view utf8, int cursor, highlight segment);
    static void end_composition();
};

} // namespace nimbit::ui
