#pragma once

#include "nimbit/ui/key_codes.h"

#include <string>

namespace nimbit::ui {

// Keyboard state, polled from the platform. Non-negative keys are macOS virtual key codes; the
// negative members (key_query) name modifier groups.
class keyboard {
public:
    using key = key_query::name;
    using enum key_query::name;

    static bool is_key_down(int k);
    // True once per press: the key is down now and was not at the previous call for it.
    static bool was_key_pressed(int k);
    static std::string get_key_name(int key_code);
};

} // namespace nimbit::ui
