#include "nimbit/ui/native_popup_menu.h"

#import <AppKit/AppKit.h>

#include "nimbit/ui/cocoa/cocoa_util.h"
#include "nimbit/ui/cocoa/native_window.h"

// Popup menus are NSMenus built afresh for each show from the toolkit's items. Every item's tag is
// its id; choosing one stores id + 1 in the slot that show returns.

@interface NativeMenuTarget : NSObject {
  @public
    uint32_t chosen;
}
- (void)choose:(id)sender;
@end

@implementation NativeMenuTarget
- (void)choose:(id)sender {
    chosen = static_cast<uint32_t>([sender tag]) + 1u;
}
@end

namespace nimbit::ui {

namespace {

NSMenu *build_menu(std::span<const menu_item> items, NativeMenuTarget *target) {
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:@""] autorelease];
    [menu setAutoenablesItems:NO];
    for (const menu_item &item : items) {
        if (item.separator) {
            [menu addItem:[NSMenuItem separatorItem]];
            continue;
        }
        NSMenuItem *entry = [[[NSMenuItem alloc] initWithTitle:cocoa::to_ns_string(item.text)
                                                        action:@selector(choose:)
                                                 keyEquivalent:@""] autorelease];
        [entry setTarget:target];
        [entry setTag:static_cast<NSInteger>(item.id)];
        [entry setEnabled:item.enabled ? YES : NO];
        [entry setState:item.checked ? NSOnState : NSOffState];
        if (!item.submenu.empty())
            [entry setSubmenu:build_menu(item.submenu, target)];
        [menu addItem:entry];
    }
    return menu;
}

class cocoa_popup_menu final : public native_popup_menu {
  public:
    uint32_t show(const native_window &in, _vec2<int> position, std::span<const menu_item> items,
                  uint32_t max_height) override {
        (void)max_height; // NSMenu scrolls a menu taller than the screen by itself
        const auto &owner = static_cast<const cocoa::cocoa_window &>(in);
        NSView *view = owner.get_content_view();
        NSWindow *window = [view window];
        if (items.empty() || view == nil || window == nil)
            return 0;
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        NativeMenuTarget *target = [[NativeMenuTarget alloc] init];
        NSMenu *menu = build_menu(items, target);
        // The view is flipped: its point is the window point of the same spot.
        const NSPoint in_window = [view convertPoint:NSMakePoint(position.x, position.y) toView:nil];
        // A synthetic right-button press at the spot: AppKit opens a context menu there and tracks it
        // until an item is chosen or the menu is dismissed.
        NSEvent *event = [NSEvent mouseEventWithType:NSRightMouseDown
                                            location:in_window
                                       modifierFlags:0
                                           timestamp:[[NSApp currentEvent] timestamp]
                                        windowNumber:[window windowNumber]
                                             context:nil
                                         eventNumber:0
                                          clickCount:1
                                            pressure:1.0];
        [NSMenu popUpContextMenu:menu withEvent:event forView:view];
        const uint32_t slot = target->chosen;
        [target release];
        [pool release];
        return slot;
    }
};

} // namespace

std::unique_ptr<native_popup_menu> create_native_popup_menu() { return std::make_unique<cocoa_popup_menu>(); }

} // namespace nimbit::ui
