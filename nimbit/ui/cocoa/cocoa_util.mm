#include "nimbit/ui/cocoa/cocoa_util.h"

#include <cmath>

namespace nimbit::ui::cocoa {

NSString *to_ns_string(std::string_view utf8) {
    NSString *s = [[NSString alloc] initWithBytes:utf8.data()
                                           length:utf8.size()
                                         encoding:NSUTF8StringEncoding];
    if (s == nil) {
        // Not valid UTF-8: keep what can be kept rather than lose the whole text.
        std::string cleaned;
        cleaned.reserve(utf8.size());
        for (unsigned char c : utf8)
            cleaned += c < 0x80 ? static_cast<char>(c) : '?';
        s = [[NSString alloc] initWithBytes:cleaned.data()
                                     length:cleaned.size()
                                   encoding:NSUTF8StringEncoding];
    }
    return [s autorelease];
}

std::string to_utf8(NSString *text) {
    if (text == nil)
        return {};
    const char *bytes = [text UTF8String];
    return bytes ? std::string(bytes) : std::string();
}

CGFloat main_screen_height() {
    NSArray *screens = [NSScreen screens];
    // The first screen holds the menu bar and the origin of the global coordinates.
    NSScreen *main = [screens count] > 0 ? [screens objectAtIndex:0] : [NSScreen mainScreen];
    return main ? [main frame].size.height : 0;
}

NSRect to_ns_screen_rect(const ivec4 &r) {
    return NSMakeRect(r.x, main_screen_height() - r.y - r.h, r.w, r.h);
}

ivec4 from_ns_screen_rect(NSRect r) {
    const CGFloat top = main_screen_height() - (r.origin.y + r.size.height);
    return {static_cast<int>(std::lround(r.origin.x)), static_cast<int>(std::lround(top)),
            static_cast<int>(std::lround(r.size.width)), static_cast<int>(std::lround(r.size.height))};
}

_vec2<int> from_ns_screen_point(NSPoint p) {
    return {static_cast<int>(std::floor(p.x)), static_cast<int>(std::floor(main_screen_height() - p.y))};
}

NSColor *to_ns_color(const vec4 &c) {
    return [NSColor colorWithCalibratedRed:c.x green:c.y blue:c.z alpha:c.w];
}

} // namespace nimbit::ui::cocoa
