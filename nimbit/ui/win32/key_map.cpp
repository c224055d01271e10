#include "nimbit/ui/win32/key_map.h"

#include "nimbit/ui/key_codes.h"
#include "nimbit/utils/wide_string_win32.h"

#include <cwctype>

namespace nimbit::ui::win32 {

namespace {

struct key_entry {
    int virtual_key;
    UINT vk;
};

// macOS virtual key code -> Windows virtual key. Letters and digits by their ANSI position.
// clang-format off
constexpr key_entry key_table[] = {
    {0, 'A'}, {1, 'S'}, {2, 'D'}, {3, 'F'}, {4, 'H'}, {5, 'G'}, {6, 'Z'}, {7, 'X'}, {8, 'C'}, {9, 'V'},
    {11, 'B'}, {12, 'Q'}, {13, 'W'}, {14, 'E'}, {15, 'R'}, {16, 'Y'}, {17, 'T'}, {18, '1'}, {19, '2'},
    {20, '3'}, {21, '4'}, {22, '6'}, {23, '5'}, {24, VK_OEM_PLUS}, {25, '9'}, {26, '7'},
    {27, VK_OEM_MINUS}, {28, '8'}, {29, '0'}, {30, VK_OEM_6}, {31, 'O'}, {32, 'U'}, {33, VK_OEM_4},
    {34, 'I'}, {35, 'P'}, {36, VK_RETURN}, {37, 'L'}, {38, 'J'}, {39, VK_OEM_7}, {40, 'K'},
    {41, VK_OEM_1}, {42, VK_OEM_5}, {43, VK_OEM_COMMA}, {44, VK_OEM_2}, {45, 'N'}, {46, 'M'},
    {47, VK_OEM_PERIOD}, {virtual_key::tab, VK_TAB}, {virtual_key::space, VK_SPACE}, {50, VK_OEM_3},
    {51, VK_BACK}, {53, VK_ESCAPE},
    {virtual_key::right_command, VK_RWIN}, {virtual_key::command, VK_LWIN},
    {virtual_key::left_shift, VK_LSHIFT}, {57, VK_CAPITAL}, {virtual_key::option, VK_LMENU},
    {virtual_key::left_control, VK_LCONTROL}, {virtual_key::right_shift, VK_RSHIFT},
    {virtual_key::right_option, VK_RMENU}, {virtual_key::right_control, VK_RCONTROL},
    {65, VK_DECIMAL}, {67, VK_MULTIPLY}, {69, VK_ADD}, {71, VK_NUMLOCK}, {75, VK_DIVIDE},
    {78, VK_SUBTRACT}, {82, VK_NUMPAD0}, {83, VK_NUMPAD1}, {84, VK_NUMPAD2}, {85, VK_NUMPAD3},
    {86, VK_NUMPAD4}, {87, VK_NUMPAD5}, {88, VK_NUMPAD6}, {89, VK_NUMPAD7}, {91, VK_NUMPAD8},
    {92, VK_NUMPAD9},
    {96, VK_F5}, {97, VK_F6}, {98, VK_F7}, {99, VK_F3}, {100, VK_F8}, {101, VK_F9}, {103, VK_F11},
    {105, VK_F13}, {106, VK_F16}, {107, VK_F14}, {109, VK_F10}, {111, VK_F12}, {113, VK_F15},
    {114, VK_INSERT}, {115, VK_HOME}, {116, VK_PRIOR}, {117, VK_DELETE}, {118, VK_F4}, {119, VK_END},
    {120, VK_F2}, {121, VK_NEXT}, {122, VK_F1}, {123, VK_LEFT}, {124, VK_RIGHT}, {125, VK_DOWN},
    {126, VK_UP},
};
// clang-format on

constexpr int keypad_enter = 76;

int from_windows(UINT vk) {
    for (const key_entry& e : key_table)
        if (e.vk == vk)
            return e.virtual_key;
    return -1;
}

} // namespace

int virtual_key_from_message(WPARAM wparam, LPARAM flags) {
    const bool extended = (flags >> 24) & 1;
    UINT vk = static_cast<UINT>(wparam);
    switch (vk) {
    case VK_SHIFT: {
        // The scan code tells the two shift keys apart.
        const UINT scan = (static_cast<UINT>(flags) >> 16) & 0xFF;
        vk = MapVirtualKeyW(scan, MAPVK_VSC_TO_VK_EX) == VK_RSHIFT ? VK_RSHIFT : VK_LSHIFT;
        break;
    }
    case VK_CONTROL:
        vk = extended ? VK_RCONTROL : VK_LCONTROL;
        break;
    case VK_MENU:
        vk = extended ? VK_RMENU : VK_LMENU;
        break;
    case VK_RETURN:
        if (extended)
            return keypad_enter;
        break;
    default:
        break;
    }
    return from_windows(vk);
}

UINT windows_key(int virtual_key) {
    if (virtual_key == keypad_enter)
        return VK_RETURN;
    for (const key_entry& e : key_table)
        if (e.virtual_key == virtual_key)
            return e.vk;
    return 0;
}

bool is_modifier(int k) {
    return k == virtual_key::command || k == virtual_key::right_command || k == virtual_key::option ||
           k == virtual_key::right_option || k == virtual_key::left_shift || k == virtual_key::right_shift ||
           k == virtual_key::left_control || k == virtual_key::right_control || k == 57;
}

uint32_t key_character(WPARAM wparam) {
    const UINT vk = static_cast<UINT>(wparam);
    // The codes AppKit gives keys without a character (its function-key range).
    switch (vk) {
    case VK_UP:
        return event_key::up;
    case VK_DOWN:
        return event_key::down;
    case VK_LEFT:
        return event_key::left;
    case VK_RIGHT:
        return event_key::right;
    case VK_HOME:
        return event_key::home;
    case VK_END:
        return event_key::end;
    case VK_DELETE:
        return event_key::forward_delete;
    case VK_PRIOR:
        return 63276;
    case VK_NEXT:
        return 63277;
    case VK_INSERT:
        return 63302;
    case VK_BACK:
        return 127;
    case VK_RETURN:
        return event_key::return_key;
    case VK_TAB:
        return event_key::tab;
    case VK_ESCAPE:
        return event_key::escape;
    default:
        break;
    }
    if (vk >= VK_F1 && vk <= VK_F24)
        return 63236 + (vk - VK_F1);
    // The unshifted character of the key on the current layout; dead keys have the top bit set.
    const UINT ch = MapVirtualKeyW(vk, MAPVK_VK_TO_CHAR) & 0x7FFFFFFF;
    if (ch == 0 || ch < 32)
        return 0;
    return static_cast<uint32_t>(std::towupper(static_cast<wint_t>(ch)));
}

std::string virtual_key_name(int virtual_key) {
    const UINT vk = windows_key(virtual_key);
    if (vk == 0)
        return {};
    UINT scan = MapVirtualKeyW(vk, MAPVK_VK_TO_VSC);
    if (scan == 0)
        return {};
    LONG flags = static_cast<LONG>(scan << 16);
    switch (vk) { // the keys that share a scan code with a keypad key
    case VK_INSERT:
    case VK_DELETE:
    case VK_HOME:
    case VK_END:
    case VK_PRIOR:
    case VK_NEXT:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_UP:
    case VK_DOWN:
    case VK_DIVIDE:
    case VK_RCONTROL:
    case VK_RMENU:
    case VK_LWIN:
    case VK_RWIN:
        flags |= 1 << 24;
        break;
    default:
        break;
    }
    if (virtual_key == keypad_enter)
        flags |= 1 << 24;
    wchar_t name[64] = {};
    const int length = GetKeyNameTextW(flags, name, 64);
    if (length <= 0)
        return {};
    std::wstring text(name, static_cast<size_t>(length));
    // Layouts name keys in capitals ("SPACE") or, under Wine, as X does ("space"): written as a
    // capitalised word, like the other platforms.
    bool all_upper = text.size() > 1;
    for (wchar_t c : text)
        all_upper = all_upper && !std::iswlower(static_cast<wint_t>(c));
    if (all_upper)
        for (size_t i = 1; i < text.size(); ++i)
            if (std::iswalpha(static_cast<wint_t>(text[i - 1])))
                text[i] = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(text[i])));
    text[0] = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(text[0])));
    return narrow(text);
}

} // namespace nimbit::ui::win32
