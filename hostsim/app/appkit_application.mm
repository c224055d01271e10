#include "hostsim/app/appkit_application.h"

#import <AppKit/AppKit.h>

#include <string>

namespace {

// The executable path as the host reports it; set by the application before the plug-in loads.
std::string& ExecutablePathSlot() {
    static std::string path;
    return path;
}

int IsActive() {
    return [NSApp isActive] ? 1 : 0;
}

const char* ExecutablePath() {
    return ExecutablePathSlot().empty() ? nullptr : ExecutablePathSlot().c_str();
}

NativeMenu* MainMenu() {
    return reinterpret_cast<NativeMenu*>([NSApp mainMenu]);
}

int ItemCount(NativeMenu* menu) {
    return static_cast<int>([reinterpret_cast<NSMenu*>(menu) numberOfItems]);
}

NativeMenuItem* ItemAt(NativeMenu* menu, int index) {
    NSMenu* nsMenu = reinterpret_cast<NSMenu*>(menu);
    if (index < 0 || index >= [nsMenu numberOfItems])
        return nullptr;
    return reinterpret_cast<NativeMenuItem*>([nsMenu itemAtIndex:index]);
}

// The text lives in the current autorelease pool: the plug-in reads it at once.
const char* ItemTitle(NativeMenuItem* item) {
    return [[reinterpret_cast<NSMenuItem*>(item) title] UTF8String];
}

int ItemEnabled(NativeMenuItem* item) {
    return [reinterpret_cast<NSMenuItem*>(item) isEnabled] ? 1 : 0;
}

NativeMenu* ItemSubmenu(NativeMenuItem* item) {
    NSMenuItem* nsItem = reinterpret_cast<NSMenuItem*>(item);
    return [nsItem hasSubmenu] ? reinterpret_cast<NativeMenu*>([nsItem submenu]) : nullptr;
}

// As choosing the item does: its action goes to its target through the application.
void SendAction(NativeMenuItem* item) {
    NSMenuItem* nsItem = reinterpret_cast<NSMenuItem*>(item);
    if ([nsItem action] != NULL)
        [NSApp sendAction:[nsItem action] to:[nsItem target] from:nsItem];
}

const NativeApplication table = {IsActive,  ExecutablePath, MainMenu,    ItemCount, ItemAt,
                                 ItemTitle, ItemEnabled,    ItemSubmenu, SendAction};

} // namespace

void SetAppKitExecutablePath(const std::string& path) {
    ExecutablePathSlot() = path;
}

const NativeApplication* AppKitApplicationTable() {
    return &table;
}
