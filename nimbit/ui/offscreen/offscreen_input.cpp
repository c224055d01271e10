#include "nimbit/ui/offscreen/offscreen_input.h"

#include "nimbit/ui/native_input.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/window.h"

#include <cwctype>
#include <unordered_set>

namespace nimbit::ui {

namespace {
struct input_state {
    _vec2<int> pointer;
    bool buttons[3] = {};
    std::unordered_set<int> keys;
    float dpi = 72.0f;
    ivec4 screen{0, 25, 1920, 1055};
    uint32_t cursor = 0;
};

input_state& input() {
    static input_state s;
    return s;
}

// US layout names of the macOS virtual key codes.
const char* key_name(int code) {
    static const char* const names[] = {
        "A",  "S", "D", "F", "H", "G", "Z",   "X",     "C",      "V",      "",  "B",     "Q", "W",
        "E",  "R", "Y", "T", "1", "2", "3",   "4",     "6",      "5",      "=", "9",     "7", "-",
        "8",  "0", "]", "O", "U", "[", "I",   "P",     "Return", "L",      "J", "'",     "K", ";",
        "\\", ",", "/", "N", "M", ".", "Tab", "Space", "`",      "Delete", "",  "Escape"};
    if (code >= 0 && code < static_cast<int>(std::size(names)))
        return names[code];
    switch (code) {
    case 122:
        return "F1";
    case 120:
        return "F2";
    case 99:
        return "F3";
    case 118:
        return "F4";
    case 96:
        return "F5";
    case 97:
        return "F6";
    case 98:
        return "F7";
    case 100:
        return "F8";
    case 101:
        return "F9";
    case 109:
        return "F10";
    case 103:
        return "F11";
    case 111:
        return "F12";
    case 123:
        return "Left";
    case 124:
        return "Right";
    case 125:
        return "Down";
    case 126:
        return "Up";
    default:
        return "";
    }
}
} // namespace

_vec2<int> native_get_pointer_position() {
    return input().pointer;
}
bool native_is_button_down(uint32_t button) {
    return button < 3 && input().buttons[button];
}
bool native_is_key_down(int key_code) {
    return input().keys.count(key_code) != 0;
}
std::string native_get_key_name(int key_code) {
    return key_name(key_code);
}
float native_get_screen_dpi() {
    return input().dpi;
}
void native_set_cursor(uint32_t cursor) {
    input().cursor = cursor;
}

namespace offscreen {

void set_pointer(_vec2<int> screen) {
    input().pointer = screen;
}
void set_button_down(uint32_t button, bool down) {
    if (button < 3)
        input().buttons[button] = down;
}
void set_key_down(int key_code, bool down) {
    if (down)
        input().keys.insert(key_code);
    else
        input().keys.erase(key_code);
}
void set_screen_dpi(float dpi) {
    input().dpi = dpi;
}
void set_screen_rect(const ivec4& visible) {
    input().screen = visible;
}
ivec4 get_screen_rect() {
    return input().screen;
}
uint32_t get_cursor() {
    return input().cursor;
}
void reset_input() {
    input() = input_state{};
}

namespace {
void point_at(window& w, _vec2<int> client_point) {
    set_pointer(client_point + w.get_client_rect().position());
}
} // namespace

void move_mouse(window& w, _vec2<int> client_point) {
    point_at(w, client_point);
    events_of(w).process_event(event_type::mouse_move, input().buttons[2] ? 2 : 0);
}

void press_mouse(window& w, _vec2<int> client_point, uint32_t button) {
    point_at(w, client_point);
    set_button_down(button, true);
    events_of(w).process_event(event_type::mouse_down, button);
}

void release_mouse(window& w, _vec2<int> client_point, uint32_t button) {
    point_at(w, client_point);
    set_button_down(button, false);
    events_of(w).process_event(event_type::mouse_up, button);
}

void click(window& w, _vec2<int> client_point, uint32_t button) {
    press_mouse(w, client_point, button);
    release_mouse(w, client_point, button);
}

void double_click(window& w, _vec2<int> client_point) {
    click(w, client_point, 0);
    point_at(w, client_point);
    set_button_down(0, true);
    events_of(w).process_event(event_type::mouse_dbl_click, 0);
    release_mouse(w, client_point, 0);
}

void wheel(window& w, _vec2<int> client_point, double delta) {
    point_at(w, client_point);
    events_of(w).process_event(event_type::mouse_wheel, pack_wheel(delta * 40.0));
}

void type_key(window& w, int key_code, char16_t character) {
    const unsigned long long upper =
        character ? static_cast<unsigned long long>(std::towupper(character)) : 0;
    const unsigned long long high = character ? upper : 0xFFFFFFFFull;
    set_key_down(key_code, true);
    events_of(w).process_event(event_type::key_down_raw, static_cast<uint32_t>(key_code) | (high << 32));
    events_of(w).process_event(event_type::key_down, upper);
    if (character)
        events_of(w).process_event(event_type::key_char, character);
    set_key_down(key_code, false);
    events_of(w).process_event(event_type::key_up, upper);
}

} // namespace offscreen
} // namespace nimbit::ui
