#include "nimbit/ui/cocoa/native_app.h"

#import <AppKit/AppKit.h>

namespace nimbit::ui::cocoa {

autorelease_pool::autorelease_pool() : pool([[NSAutoreleasePool alloc] init]) {}

autorelease_pool::~autorelease_pool() { [static_cast<NSAutoreleasePool *>(pool) release]; }

bool start_application() {
    if (NSApp != nil)
        return true;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    bool ok = false;
    @try {
        [NSApplication sharedApplication];
#ifndef GNUSTEP
        // An accessory application: no dock icon or menu bar of its own (GNUstep has no dock).
        [NSApp setActivationPolicy:NSApplicationActivationPolicyAccessory];
#endif
        [NSApp finishLaunching];
        ok = NSApp != nil;
    } @catch (NSException *e) {
        NSLog(@"start_application: %@", [e reason]);
    }
    [pool release];
    return ok;
}

int process_events(double seconds) {
    if (NSApp == nil)
        return 0;
    int count = 0;
    NSDate *until = [[NSDate alloc] initWithTimeIntervalSinceNow:seconds];
    for (;;) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                            untilDate:until
                                               inMode:NSDefaultRunLoopMode
                                              dequeue:YES];
        if (event != nil) {
            [NSApp sendEvent:event];
            ++count;
        }
        [NSApp updateWindows];
        [pool release];
        if (event == nil)
            break;
    }
    [until release];
    return count;
}

bool run_until(const std::function<bool()> &done, double timeout_seconds) {
    NSDate *limit = [[NSDate alloc] initWithTimeIntervalSinceNow:timeout_seconds];
    bool reached = done();
    while (!reached && [limit timeIntervalSinceNow] > 0) {
        process_events(0.02);
        reached = done();
    }
    [limit release];
    return reached;
}

} // namespace nimbit::ui::cocoa
