#pragma once

#include <string>

namespace nimbit::ui {

// Keyboard state, polled from the platform. Non-negative keys are macOS virtual key codes; the
// negative members name modifier groups.
class keyboard {
public:
    enum key : int {
        control = -100, // the left key only
        left_control = -99,
        right_control = -98,
        shift = -97, // the left key only
        left_shift = -96,
        right_shift = -95,
        option = -94,
        left_option = -93,
        right_option = -92,
        command = -91,
        left_command = -90,
        right_command = -89,
        space = -88,
        tab = -87,
    };

    static bool is_key_down(int k);
    // True once per press: the key is down now and was not at the previous call for it.
    static bool was_key_pressed(int k);
    static std::string get_key_name(int key_code);
};

} // namespace nimbit::ui
