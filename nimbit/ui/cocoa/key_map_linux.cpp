// X11 side of the key map, used under GNUstep. GNUstep reports X key codes in -[NSEvent keyCode];
// the toolkit wants macOS virtual key codes. The table below names each virtual key by its X key
// symbol, and the X server's keyboard mapping turns symbols into key codes, so the translation
// follows whatever keyboard the server has. Key state comes from XQueryKeymap on a connection of
// our own, which sees the keyboard as it is now (like CGEventSourceKeyState on macOS).
#include "nimbit/ui/cocoa/key_map.h"

#include "nimbit/ui/key_codes.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <array>
#include <cctype>
#include <mutex>

namespace nimbit::ui::cocoa {

namespace {

struct key_entry {
    int virtual_key;
    KeySym symbol;
};

// macOS virtual key code -> X key symbol. Letters and digits by their ANSI position.
constexpr key_entry key_table[] = {
    {0, XK_a},
    {1, XK_s},
    {2, XK_d},
    {3, XK_f},
    {4, XK_h},
    {5, XK_g},
    {6, XK_z},
    {7, XK_x},
    {8, XK_c},
    {9, XK_v},
    {11, XK_b},
    {12, XK_q},
    {13, XK_w},
    {14, XK_e},
    {15, XK_r},
    {16, XK_y},
    {17, XK_t},
    {18, XK_1},
    {19, XK_2},
    {20, XK_3},
    {21, XK_4},
    {22, XK_6},
    {23, XK_5},
    {24, XK_equal},
    {25, XK_9},
    {26, XK_7},
    {27, XK_minus},
    {28, XK_8},
    {29, XK_0},
    {30, XK_bracketright},
    {31, XK_o},
    {32, XK_u},
    {33, XK_bracketleft},
    {34, XK_i},
    {35, XK_p},
    {36, XK_Return},
    {37, XK_l},
    {38, XK_j},
    {39, XK_apostrophe},
    {40, XK_k},
    {41, XK_semicolon},
    {42, XK_backslash},
    {43, XK_comma},
    {44, XK_slash},
    {45, XK_n},
    {46, XK_m},
    {47, XK_period},
    {virtual_key::tab, XK_Tab},
    {virtual_key::space, XK_space},
    {50, XK_grave},
    {51, XK_BackSpace},
    {53, XK_Escape},
    // Modifiers: Command = Alt, Option = Super, so that Control and Shift keep their places.
    {virtual_key::right_command, XK_Alt_R},
    {virtual_key::command, XK_Alt_L},
    {virtual_key::left_shift, XK_Shift_L},
    {57, XK_Caps_Lock},
    {virtual_key::option, XK_Super_L},
    {virtual_key::left_control, XK_Control_L},
    {virtual_key::right_shift, XK_Shift_R},
    {virtual_key::right_option, XK_Super_R},
    {virtual_key::right_control, XK_Control_R},
    {65, XK_KP_Decimal},
    {67, XK_KP_Multiply},
    {69, XK_KP_Add},
    {71, XK_Num_Lock},
    {75, XK_KP_Divide},
    {76, XK_KP_Enter},
    {78, XK_KP_Subtract},
    {81, XK_KP_Equal},
    {82, XK_KP_0},
    {83, XK_KP_1},
    {84, XK_KP_2},
    {85, XK_KP_3},
    {86, XK_KP_4},
    {87, XK_KP_5},
    {88, XK_KP_6},
    {89, XK_KP_7},
    {91, XK_KP_8},
    {92, XK_KP_9},
    {96, XK_F5},
    {97, XK_F6},
    {98, XK_F7},
    {99, XK_F3},
    {100, XK_F8},
    {101, XK_F9},
    {103, XK_F11},
    {105, XK_F13},
    {106, XK_F16},
    {107, XK_F14},
    {109, XK_F10},
    {111, XK_F12},
    {113, XK_F15},
    {114, XK_Insert},
    {115, XK_Home},
    {116, XK_Prior},
    {117, XK_Delete},
    {118, XK_F4},
    {119, XK_End},
    {120, XK_F2},
    {121, XK_Next},
    {122, XK_F1},
    {123, XK_Left},
    {124, XK_Right},
    {125, XK_Down},
    {126, XK_Up},
};

constexpr int no_key = -1;

struct key_maps {
    Display* display = nullptr;
    std::array<int, 256> to_virtual;   // X key code -> virtual key
    std::array<int, 128> to_x;         // virtual key -> X key code (0: none)
    std::array<KeySym, 128> symbol_of; // virtual key -> X key symbol
};

key_maps& maps() {
    static key_maps m;
    static std::once_flag once;
    std::call_once(once, [] {
        m.to_virtual.fill(no_key);
        m.to_x.fill(0);
        m.symbol_of.fill(NoSymbol);
        for (const key_entry& e : key_table)
            m.symbol_of[static_cast<size_t>(e.virtual_key)] = e.symbol;
        m.display = XOpenDisplay(nullptr);
        if (!m.display)
            return;
        for (const key_entry& e : key_table) {
            const KeyCode code = XKeysymToKeycode(m.display, e.symbol);
            if (code == 0)
                continue;
            m.to_x[static_cast<size_t>(e.virtual_key)] = code;
            if (m.to_virtual[code] == no_key)
                m.to_virtual[code] = e.virtual_key;
        }
    });
    return m;
}

bool valid_virtual_key(int k) {
    return k >= 0 && k < 128;
}

} // namespace

int virtual_key_from_event_code(unsigned short event_key_code) {
    return event_key_code < 256 ? maps().to_virtual[event_key_code] : no_key;
}

bool is_virtual_key_down(int virtual_key) {
    if (!valid_virtual_key(virtual_key))
        return false;
    key_maps& m = maps();
    const int code = m.to_x[static_cast<size_t>(virtual_key)];
    if (!m.display || code == 0)
        return false;
    char keys[32] = {};
    XQueryKeymap(m.display, keys);
    return (keys[code / 8] >> (code % 8)) & 1;
}

std::string virtual_key_name(int virtual_key) {
    if (!valid_virtual_key(virtual_key))
        return {};
    const KeySym symbol = maps().symbol_of[static_cast<size_t>(virtual_key)];
    if (symbol == NoSymbol)
        return {};
    const char* name = XKeysymToString(symbol);
    if (!name)
        return {};
    std::string text = name;
    // X names letters in lower case ("a") and most other keys capitalised ("Escape", "space" aside).
    if (!text.empty())
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    if (text.size() == 1)
        return text;
    // Symbols such as "bracketleft" read better as the character they stand for.
    if (symbol > 0x20 && symbol < 0x7f)
        return std::string(1, static_cast<char>(std::toupper(static_cast<int>(symbol))));
    return text;
}

} // namespace nimbit::ui::cocoa
