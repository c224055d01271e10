#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

// Windows virtual keys and the toolkit's key codes. The toolkit speaks macOS virtual key codes
// everywhere (key_codes.h); these functions translate.
//
// The modifiers as the host names them on Windows: Control is Control (the "Ctrl + Space" chord), the
// Option keys (58, 61) are the Alt keys and the Command keys (55, 54) the Windows keys. Editing
// shortcuts (copy, paste, select all) ask for keyboard::shortcut, which is Control here.

namespace nimbit::ui::win32 {

// The key code of a WM_KEYDOWN / WM_KEYUP (wParam, lParam), telling left from right modifiers and
// the keypad's Enter from Return; -1 when the key has none.
int virtual_key_from_message(WPARAM vk, LPARAM flags);
// The Windows virtual key of a key code (left and right keys kept apart); 0 when it has none.
UINT windows_key(int virtual_key);
bool is_modifier(int virtual_key);
// What key_down and key_up carry: the key's upper-cased character ignoring modifiers, or the
// platform code of a key without one (arrows, function and editing keys, as on macOS); 0 for none.
uint32_t key_character(WPARAM vk);
// The key's name on the current layout ("A", "Space", "F5"); empty when unknown.
std::string virtual_key_name(int virtual_key);

} // namespace nimbit::ui::win32
