#include "host/host_platform.h"

#import <AppKit/AppKit.h>

// The host's menu and activity through AppKit itself. Written for both the system frameworks and
// GNUstep (compiled by g++ there): manual retain and release, index loops rather than fast
// enumeration, no blocks.

namespace {

// The first item of menu titled title, or with prefix whose title begins with it, ignoring case; nil
// when there is none.
NSMenuItem *FindItem(NSMenu *menu, std::string_view title, bool prefix = false) {
    NSString *wanted = nil;
    // A title cut by the host may end inside a character: that character is left out.
    for (size_t cut = 0; wanted == nil && cut <= (prefix ? 3u : 0u) && cut <= title.size(); ++cut)
        wanted = [[NSString alloc] initWithBytes:title.data()
                                          length:title.size() - cut
                                        encoding:NSUTF8StringEncoding];
    if (wanted == nil)
        return nil;
    NSMenuItem *found = nil;
    const NSInteger count = [menu numberOfItems];
    for (NSInteger i = 0; i < count && found == nil; ++i) {
        NSMenuItem *item = [menu itemAtIndex:i];
        NSString *itemTitle = [item title];
        if (prefix ? [itemTitle length] >= [wanted length] &&
                         [itemTitle compare:wanted
                                    options:NSCaseInsensitiveSearch
                                      range:NSMakeRange(0, [wanted length])] == NSOrderedSame
                   : [itemTitle caseInsensitiveCompare:wanted] == NSOrderedSame)
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
    if (categoryItem == nil && category.size() >= CutCategoryLength)
        categoryItem = FindItem(effectMenu, category, true);
    if (categoryItem == nil || ![categoryItem isEnabled] || ![categoryItem hasSubmenu])
        return false;
    NSMenuItem *effect = FindItem([categoryItem submenu], name);
    if (effect == nil)
        return false;
    [NSApp sendAction:[effect action] to:[effect target] from:effect];
    return true;
}

} // namespace HostPlatform
