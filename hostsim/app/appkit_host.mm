#include "hostsim/app/appkit_host.h"

#import <AppKit/AppKit.h>

#include "hostsim/app/event_timing.h"
#include "hostsim/sim_host.h"

#include <cstdlib>
#include <exception>

// The target of the Effect menu's items: applies the item's effect (its tag) as the host does.
@interface HostMenuTarget : NSObject {
    hostsim::SimHost *host;
    void (*changed)(void *);
    void *context;
}
- (id)initWithHost:(hostsim::SimHost *)simHost
           changed:(void (*)(void *))callback
           context:(void *)callbackContext;
- (void)chooseEffect:(id)sender;
@end

@implementation HostMenuTarget

- (id)initWithHost:(hostsim::SimHost *)simHost
           changed:(void (*)(void *))callback
           context:(void *)callbackContext {
    self = [super init];
    if (self != nil) {
        host = simHost;
        changed = callback;
        context = callbackContext;
    }
    return self;
}

- (void)chooseEffect:(id)sender {
    host->ChooseMenuEffect(static_cast<AEGP_InstalledEffectKey>([sender tag]));
    if (changed != nullptr)
        changed(context);
}

@end

namespace {

NSString *ToNS(const std::string &text) {
    NSString *s = [NSString stringWithUTF8String:text.c_str()];
    return s != nil ? s : @"?";
}

NSMenu *MenuFrom(const hostsim::MenuItem &model, NSString *title, HostMenuTarget *target) {
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:title] autorelease];
    // Enabled states come from the project, not from validation.
    [menu setAutoenablesItems:NO];
    for (const auto &child : model.submenu) {
        NSString *childTitle = ToNS(child->title);
        NSMenuItem *item = [[[NSMenuItem alloc] initWithTitle:childTitle action:NULL
                                                keyEquivalent:@""] autorelease];
        if (child->hasSubmenu)
            [item setSubmenu:MenuFrom(*child, childTitle, target)];
        else if (child->effectKey != 0) {
            [item setTarget:target];
            [item setAction:@selector(chooseEffect:)];
            [item setTag:child->effectKey];
        }
        [item setEnabled:child->enabled];
        [menu addItem:item];
    }
    return menu;
}

} // namespace

bool StartAppKitApplication() {
    const char *display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0')
        return false;
    @try {
        [HostApplication sharedApplication];
    } @catch (NSException *e) {
        return false; // no window server
    }
    return NSApp != nil;
}

void InstallHostMainMenu(hostsim::SimHost &host, void (*changed)(void *), void *context) {
    // The menu's items hold their target weakly; it lives as long as the application.
    static HostMenuTarget *target = nil;
    [target release];
    target = [[HostMenuTarget alloc] initWithHost:&host changed:changed context:context];
    NSMenu *mainMenu = MenuFrom(host.MainMenu(), @"Simulated Host", target);
    if ([mainMenu numberOfItems] > 0) {
        NSMenuItem *appItem = [mainMenu itemAtIndex:0];
        if (![appItem hasSubmenu])
            [appItem setSubmenu:[[[NSMenu alloc] initWithTitle:[appItem title]] autorelease]];
        NSMenuItem *quit = [[[NSMenuItem alloc] initWithTitle:@"Quit"
                                                       action:@selector(terminate:)
                                                keyEquivalent:@"q"] autorelease];
        [quit setTarget:NSApp];
        [[appItem submenu] addItem:quit];
    }
    [NSApp setMainMenu:mainMenu];
}
