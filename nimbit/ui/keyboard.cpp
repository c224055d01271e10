#include "nimbit/ui/keyboard.h"

#include "nimbit/ui/native_input.h"

#include <unordered_map>

namespace nimbit::ui {

bool keyboard::is_key_down(int k) {
    if (k >= 0)
        return native_is_key_down(k);
    // The plain control and shift members test only the left-hand key; the option and command groups
    // test one code for all three members. Kept as the shortcut settings expect.
    switch (k) {
    case control:
        return native_is_key_down(virtual_key::left_control);
    case left_control:
        return native_is_key_down(virtual_key::left_control) &&
               !native_is_key_down(virtual_key::right_control);
    case right_control:
        return native_is_key_down(virtual_key::right_control);
    case shift:
        return native_is_key_down(virtual_key::left_shift);
    case left_shift:
        return native_is_key_down(virtual_key::left_shift) && !native_is_key_down(virtual_key::right_shift);
    case right_shift:
        return native_is_key_down(virtual_key::right_shift);
    case option:
    case left_option:
    case right_option:
        return native_is_key_down(virtual_key::option);
    case command:
    case left_command:
    case right_command:
        return native_is_key_down(virtual_key::command);
    case shortcut:
#ifdef _WIN32
        return native_is_key_down(virtual_key::left_control) || native_is_key_down(virtual_key::right_control);
#else
        return native_is_key_down(virtual_key::command);
#endif
    case space:
        return native_is_key_down(virtual_key::space);
    case tab:
        return native_is_key_down(virtual_key::tab);
    default:
        return false;
    }
}

bool keyboard::was_key_pressed(int k) {
    // The last state seen per key: a press is reported on the up-to-down edge only.
    static std::unordered_map<int, bool> last_state;
    const bool down = is_key_down(k);
    bool& last = last_state[k];
    const bool pressed = down && !last;
    last = down;
    return pressed;
}

std::string keyboard::get_key_name(int key_code) {
    return key_code < 0 ? std::string() : native_get_key_name(key_code);
}

} // namespace nimbit::ui
