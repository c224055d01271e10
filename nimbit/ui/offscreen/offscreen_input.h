#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/event_type.h"

#include <cstdint>

// Input for the offscreen backend: the state the platform would own (pointer, buttons, keys, screen)
// is set by tests, and the helpers below deliver events through events_of(window).process_event, the
// entry the native side uses, with the payloads a real backend sends.

namespace nimbit::ui {
class window;
}

namespace nimbit::ui::offscreen {

void set_pointer(_vec2<int> screen);
void set_button_down(uint32_t button, bool down);
void set_key_down(int key_code, bool down);
void set_screen_dpi(float dpi);
// The visible frame of the main screen (without menu bar and dock).
void set_screen_rect(const ivec4& visible);
ivec4 get_screen_rect();
uint32_t get_cursor();
// Pointer at 0,0, no button or key down, 72 dpi, a 1920 x 1080 screen with a 25-pixel menu bar.
void reset_input();

// Moves the pointer to a client point of the window and delivers mouse_move.
void move_mouse(window& w, _vec2<int> client_point);
// Delivers mouse_down (pressed) or mouse_up at a client point.
void press_mouse(window& w, _vec2<int> client_point, uint32_t button = 0);
void release_mouse(window& w, _vec2<int> client_point, uint32_t button = 0);
void click(window& w, _vec2<int> client_point, uint32_t button = 0);
// A left double click as the platform reports it: down, up, then a press with click count 2
// (mouse_dbl_click) and its release.
void double_click(window& w, _vec2<int> client_point);
// A wheel step of `delta` lines (positive away from the user).
void wheel(window& w, _vec2<int> client_point, double delta);
// key_down_raw, key_down, key_char (when `character` is not 0) and key_up for one key.
void type_key(window& w, int key_code, char16_t character);

} // namespace nimbit::ui::offscreen
