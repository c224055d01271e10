#pragma once

#include <cstdint>
#include <string>

// Key codes as the platform sees them. The toolkit speaks macOS virtual key codes everywhere; on
// macOS these functions are thin wrappers, under GNUstep (X11) they translate from X key codes.
//
// On Linux the modifier keys are laid out so that Control stays Control: the Command keys (55, 54)
// are the left and right Alt keys and the Option keys (58, 61) the left and right Super ("Windows")
// keys. Command-style shortcuts such as Command+C are therefore typed as Alt+C.

namespace nimbit::ui::cocoa {

// The virtual key code of the key an NSEvent reports in -keyCode; -1 when it has none.
int virtual_key_from_event_code(unsigned short event_key_code);
// Whether the key is held right now, asked of the window system (not of the event queue).
bool is_virtual_key_down(int virtual_key);
// What the key is called on the current keyboard layout ("A", "Space", "F5"); empty when unknown.
std::string virtual_key_name(int virtual_key);

} // namespace nimbit::ui::cocoa
