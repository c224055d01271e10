// macOS side of the key map: event key codes already are virtual key codes; the key state comes
// from the combined session state and key names from the current keyboard layout.
#include "nimbit/ui/cocoa/key_map.h"

#import <Carbon/Carbon.h>

#include "nimbit/ui/cocoa/cocoa_util.h"

namespace nimbit::ui::cocoa {

int virtual_key_from_event_code(unsigned short event_key_code) {
    return event_key_code < 128 ? event_key_code : -1;
}

bool is_virtual_key_down(int virtual_key) {
    if (virtual_key < 0 || virtual_key >= 128)
        return false;
    return CGEventSourceKeyState(kCGEventSourceStateCombinedSessionState,
                                 static_cast<CGKeyCode>(virtual_key));
}

std::string virtual_key_name(int virtual_key) {
    switch (virtual_key) {
    case kVK_Space:
        return "Space";
    case kVK_Return:
        return "Return";
    case kVK_Tab:
        return "Tab";
    case kVK_Escape:
        return "Escape";
    case kVK_Delete:
        return "Delete";
    case kVK_LeftArrow:
        return "Left";
    case kVK_RightArrow:
        return "Right";
    case kVK_UpArrow:
        return "Up";
    case kVK_DownArrow:
        return "Down";
    case kVK_F1:
        return "F1";
    case kVK_F2:
        return "F2";
    case kVK_F3:
        return "F3";
    case kVK_F4:
        return "F4";
    case kVK_F5:
        return "F5";
    case kVK_F6:
        return "F6";
    case kVK_F7:
        return "F7";
    case kVK_F8:
        return "F8";
    case kVK_F9:
        return "F9";
    case kVK_F10:
        return "F10";
    case kVK_F11:
        return "F11";
    case kVK_F12:
        return "F12";
    default:
        break;
    }
    if (virtual_key < 0 || virtual_key >= 128)
        return {};
    TISInputSourceRef source = TISCopyCurrentKeyboardLayoutInputSource();
    if (!source)
        return {};
    std::string name;
    CFDataRef layout =
        static_cast<CFDataRef>(TISGetInputSourceProperty(source, kTISPropertyUnicodeKeyLayoutData));
    if (layout) {
        const UCKeyboardLayout *keys = reinterpret_cast<const UCKeyboardLayout *>(CFDataGetBytePtr(layout));
        UInt32 dead_keys = 0;
        UniChar chars[4] = {};
        UniCharCount length = 0;
        if (UCKeyTranslate(keys, static_cast<UInt16>(virtual_key), kUCKeyActionDisplay, 0, LMGetKbdType(),
                           kUCKeyTranslateNoDeadKeysBit, &dead_keys, 4, &length, chars) == noErr &&
            length > 0) {
            NSString *text = [[NSString stringWithCharacters:chars length:length] uppercaseString];
            name = to_utf8(text);
        }
    }
    CFRelease(source);
    return name;
}

} // namespace nimbit::ui::cocoa
