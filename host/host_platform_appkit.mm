#include "host/host_platform.h"

#import <AppKit/AppKit.h>

// The host's menu and activity through AppKit itself. Written for both the system frameworks and
// GNUstep (compiled by g++ there): manual retain and release, index loops rather than fast
// enumeration, no blocks.

namespace {

// The first item of menu titled title, ignoring case; nil when there is none.
NSMenuItem *FindItem(NSMenu *menu, std::string_view title) {
    NSString *wanted = [[NSString alloc] initWithBytes:title.data()
                                                length:title.size()
                                              encoding:NSUTF8StringEncoding];
    if (wanted == nil)
        return nil;
    NSMenuItem *found = nil;
    const NSInteger count = [menu numberOfItems];
    for (NSInteger i = 0; i < count && found == nil; ++i) {
        NSMenuItem *item = [menu itemAtIndex:i];
        if ([[item title] caseInsensitiveCompare:wanted] == NSOrderedSame)
            found = item;
    }
    [wanted release];
    return found;
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
    NSMenuItem *categoryItem = FindItem(effectMenu, category);
    if (categoryItem == nil || ![categoryItem isEnabled] || ![categoryItem hasSubmenu])
        return false;
    NSMenuItem *effect = FindItem([categoryItem submenu], name);
    if (effect == nil)
        return false;
    [NSApp sendAction:[effect action] to:[effect target] from:effect];
    return true;
}

} // namespace HostPlatform
