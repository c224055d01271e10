#include "nimbit/ui/native_input.h"

#import <AppKit/AppKit.h>

#include "nimbit/ui/cocoa/cocoa_util.h"
#include "nimbit/ui/cocoa/input_state.h"
#include "nimbit/ui/cocoa/key_map.h"
#include "nimbit/ui/mouse.h"

namespace nimbit::ui {

namespace {
int pointer_event_depth = 0;
_vec2<int> pointer_event_position;
} // namespace

void cocoa::begin_pointer_event(_vec2<int> screen_position) {
    ++pointer_event_depth;
    pointer_event_position = screen_position;
}

void cocoa::end_pointer_event() {
    if (pointer_event_depth > 0)
        --pointer_event_depth;
}

_vec2<int> native_get_pointer_position() {
    if (pointer_event_depth > 0)
        return pointer_event_position;
    return cocoa::from_ns_screen_point([NSEvent mouseLocation]);
}

bool native_is_button_down(uint32_t button) {
    // pressedMouseButtons: bit 0 left, bit 1 right, bit 2 and up the others.
    const NSUInteger pressed = [NSEvent pressedMouseButtons];
    switch (button) {
    case 0:
        return pressed & 1;
    case 2:
        return pressed & 2;
    case 1:
        return pressed & ~NSUInteger(3);
    default:
        return false;
    }
}

bool native_is_key_down(int key_code) { return cocoa::is_virtual_key_down(key_code); }

std::string native_get_key_name(int key_code) { return cocoa::virtual_key_name(key_code); }

float native_get_screen_dpi() {
    NSScreen *screen = [NSScreen mainScreen];
    if (screen == nil)
        return 72.0f;
    NSValue *resolution = [[screen deviceDescription] objectForKey:NSDeviceResolution];
    const float dpi = resolution ? static_cast<float>([resolution sizeValue].width) : 72.0f;
    return dpi > 0 ? dpi : 72.0f;
}

void native_set_cursor(uint32_t kind) {
    NSCursor *c = nil;
    switch (static_cast<cursor>(kind)) {
    case cursor::ibeam:
        c = [NSCursor IBeamCursor];
        break;
    case cursor::hand:
        c = [NSCursor pointingHandCursor];
        break;
    case cursor::resize_horizontal:
        c = [NSCursor resizeLeftRightCursor];
        break;
    case cursor::resize_vertical:
        c = [NSCursor resizeUpDownCursor];
        break;
    case cursor::wait: // AppKit has no public busy cursor; the arrow is the honest fallback
    case cursor::arrow:
    default:
        c = [NSCursor arrowCursor];
        break;
    }
    [c set];
}

} // namespace nimbit::ui
