#pragma once

#include "nimbit/graphics/vec.h"

#include <cstdint>
#include <string>

// Process-wide input state that the platform owns: the pointer, the mouse buttons, the keyboard and
// the cursor. Defined by the backend library (offscreen, cocoa).
//
// Key codes are macOS virtual key codes whatever the platform (a backend elsewhere translates), so
// that stored shortcuts mean the same key everywhere.

namespace nimbit::ui {

// Pointer position in screen coordinates (y down).
_vec2<int> native_get_pointer_position();
// 0 left, 1 other, 2 right.
bool native_is_button_down(uint32_t button);
bool native_is_key_down(int key_code);
// The character or name the current keyboard layout gives the key ("A", "Space", "F5"); empty when
// the key has none.
std::string native_get_key_name(int key_code);
// Dots per inch of the main screen.
float native_get_screen_dpi();
void native_set_cursor(uint32_t cursor);

} // namespace nimbit::ui
