#include "nimbit/ui/keyboard.h"

#include "nimbit/ui/native_input.h"

#include <unordered_map>

namespace nimbit::ui {

namespace {
// Virtual key codes of the keys the modifier members test.
constexpr int code_left_control = 59, code_right_control = 62, code_left_shift = 56, code_right_shift = 60;
constexpr int code_option = 58, code_command = 55, code_space = 49, code_tab = 48;
} // namespace

bool keyboard::is_key_down(int k) {
    if (k >= 0)
        return native_is_key_down(k);
    // The plain control and shift members test only the left-hand key; the option and command groups
    // test one code for all three members. Kept as the shortcut settings expect.
    switch (k) {
    case control:
        return native_is_key_down(code_left_control);
    case left_control:
        return native_is_key_down(code_left_control) && !native_is_key_down(code_right_control);
    case right_control:
        return native_is_key_down(code_right_control);
    case shift:
        return native_is_key_down(code_left_shift);
    case left_shift:
        return native_is_key_down(code_left_shift) && !native_is_key_down(code_right_shift);
    case right_shift:
        return native_is_key_down(code_right_shift);
    case option:
    case left_option:
    case right_option:
        return native_is_key_down(code_option);
    case command:
    case left_command:
    case right_command:
        return native_is_key_down(code_command);
    case space:
        return native_is_key_down(code_space);
    case tab:
        return native_is_key_down(code_tab);
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
