#pragma once

// Helpers shared by the Objective-C++ files of the AppKit backend. AppKit's screen coordinates have
// their origin at the bottom-left of the main screen and y growing upwards; the toolkit's have it at
// the top-left with y growing downwards. Every conversion goes through here.

#import <AppKit/AppKit.h>

#include "nimbit/graphics/vec.h"

#include <string>
#include <string_view>

namespace nimbit::ui::cocoa {

// An autoreleased NSString holding the UTF-8 text (invalid sequences become U+FFFD).
NSString *to_ns_string(std::string_view utf8);
std::string to_utf8(NSString *text);

// The height of the main screen: the axis that y is flipped about.
CGFloat main_screen_height();
// Screen rectangles between the two conventions.
NSRect to_ns_screen_rect(const ivec4 &r);
ivec4 from_ns_screen_rect(NSRect r);
// A point in screen coordinates, y down.
_vec2<int> from_ns_screen_point(NSPoint p);

NSColor *to_ns_color(const vec4 &c);

} // namespace nimbit::ui::cocoa
