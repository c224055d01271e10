#include "host/host_platform.h"
#include "host/menu_title.h"

#import <AppKit/AppKit.h>

// The host's menu and activity through AppKit itself. Written for both the system frameworks and
// GNUstep (compiled by g++ there): manual retain and release, index loops rather than fast enumeration, no
// blocks.

namespace {

// The item of menu that HostPlatform::FindMenuTitle picks; nil when there is none. The titles' UTF-8
// copies go with a pool of their own.
NSMenuItem *FindItem(NSMenu *menu, std::string_view title, bool category) {
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    const int index = HostPlatform::FindMenuTitle(
        static_cast<int>([menu numberOfItems]),
        [menu](int i) -> std::string_view {
            const char *text = [[[menu itemAtIndex:i] title] UTF8String];
            return text != nullptr ? text : "";
        },
        title, category);
    [pool drain];
    return index >= 0 ? [menu itemAtIndex:index] : nil;
}

} // namespace

namespace HostPlatform {

bool IsHostActive() { return [NSApp isActive]; }

bool ChooseEffectMenuItem(std::string_view category, std::string_view name) {
    NSMenu *mainMenu = [NSApp mainMenu];
    if (mainMenu == nil || [mainMenu numberOfItems] < 6)
        return false;
    NSMenu *effectMenu = [[mainMenu itemAtIndex:5] submenu];
    if (effectMenu == nil)
        return false;
    NSMenuItem *categoryItem = FindItem(effectMenu, category, true);
    if (categoryItem == nil || ![categoryItem isEnabled] || ![categoryItem hasSubmenu])
        return false;
    NSMenuItem *effect = FindItem([categoryItem submenu], name, false);
    if (effect == nil)
        return false;
    [NSApp sendAction:[effect action] to:[effect target] from:effect];
    return true;
}

} // namespace HostPlatform
