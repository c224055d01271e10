#include "host/host_platform.h"

#import <AppKit/AppKit.h>
#include <mach-o/dyld.h>

namespace {

NSMenuItem* FindItem(NSMenu* menu, std::string_view title) {
    NSString* wanted = [[NSString alloc] initWithBytes:title.data()
                                                length:title.size()
                                              encoding:NSUTF8StringEncoding];
    if (wanted == nil)
        return nil;
    for (NSMenuItem* item in [menu itemArray]) {
        if ([[item title] caseInsensitiveCompare:wanted] == NSOrderedSame)
            return item;
    }
    return nil;
}

} // namespace

namespace HostPlatform {

std::string ExecutablePath() {
    char buffer[1024] = {};
    uint32_t size = sizeof buffer;
    if (_NSGetExecutablePath(buffer, &size) != 0)
        return std::string();
    return buffer;
}

bool IsHostActive() {
    return [NSApp isActive];
}

bool ChooseEffectMenuItem(std::string_view category, std::string_view name) {
    NSMenu* mainMenu = [NSApp mainMenu];
    if (mainMenu == nil || [mainMenu numberOfItems] < 6)
        return false;
    NSMenu* effectMenu = [[mainMenu itemAtIndex:5] submenu];
    if (effectMenu == nil)
        return false;
    NSMenuItem* categoryItem = FindItem(effectMenu, category);
    if (categoryItem == nil || ![categoryItem isEnabled] || ![categoryItem hasSubmenu])
        return false;
    NSMenuItem* effect = FindItem([categoryItem submenu], name);
    if (effect == nil)
        return false;
    [NSApp sendAction:[effect action] to:[effect target] from:effect];
    return true;
}

} // namespace HostPlatform
