#pragma once

#include <cstdint>

namespace nimbit::ui {

// The numeric values are part of the contract with the native backends and the window's router:
// never renumber. Gaps are values the toolkit does not raise.
enum class event_type : uint32_t {
    none = 0,
    mouse_up = 1,        // button: 0 left, 1 other, 2 right
    mouse_down = 2,      // button as for mouse_up
    mouse_dbl_click = 3, // left press with click count 2, replaces mouse_down
    mouse_wheel = 4,     // bits of a double: vertical delta * 40
    mouse_enter = 5,
    mouse_leave = 6,
    mouse_move = 7,      // 0, or 2 while dragging with the right button
    key_down = 8,        // upper-cased character of the key
    key_down_raw = 9,    // low 32 bits: hardware key code; high 32 bits: upper-cased character or -1
    key_up = 10,         // upper-cased character
    key_char = 11,       // one UTF-16 unit; 127 delete backward, 9 tab, 13 new line, 27 cancel
    draw = 12,           //
    resize = 13,         // old size, w low and h high
    move = 14,           // old position, x low and y high
    timer = 15,          // widget timer id
    close = 16,          //
    create = 17,         //
    destroy = 18,        //
    enabled = 21,        //
    disabled = 22,       //
    parent_resize = 23,  // the parent's old size
    parent_move = 24,    // the parent's old position
    child_added = 25,    // the child's address
    child_removed = 26,  // the child's address
    parent_changed = 27, // the new parent's address, 0 when detached
    focus_gained = 33,   // focus_cause
    focus_lost = 34,     // focus_cause
    shown = 35,
    hidden = 36,
    value_changed = 37,
    pressed = 38,
    cancelled = 39,
    pointer_event = 41, // routed to the widget under the pointer
    input_ime = 42,     // composition update, to the focused widget
    theme_changed = 43, // the address of the changed key's characters
    custom = 44,        // application-defined
};

// Every event the toolkit raises carries `normal`.
enum class event_state : uint32_t {
    none = 0,
    partial = 1,
    normal = 2,
};

// Who caused an event: the user (default), or a control acting on its own behalf (a text input
// raising key_char, pressed or cancelled itself).
enum class event_agent : uint32_t {
    program = 0,
    user = 1,
};

// Why the keyboard focus moved; the payload of focus_gained and focus_lost.
enum class focus_cause : uint32_t {
    mouse = 0,
    keyboard = 1,
};

} // namespace nimbit::ui
