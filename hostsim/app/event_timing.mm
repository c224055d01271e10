#include "hostsim/app/event_timing.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace {

std::vector<hostsim::KeyTiming> pendingKeys;
std::vector<NSInteger> visibleBefore;
bool visibleNoted = false;

std::string FromNS(NSString *text) {
    const char *utf8 = text != nil ? [text UTF8String] : nullptr;
    return utf8 != nullptr ? utf8 : "";
}

// The window server stamps events in milliseconds of its own monotonic clock, kept in 32 bits. The
// difference to now is taken modulo that width; anything outside a minute means the two clocks are
// not the same one (another window server), and the press is not timed.
double PressToNowMs(double pressedMs, double nowMs) {
    constexpr double Wrap = 4294967296.0;
    double delta = std::fmod(nowMs, Wrap) - std::fmod(pressedMs, Wrap);
    if (delta < -Wrap / 2)
        delta += Wrap;
    return delta >= 0 && delta < 60000 ? delta : -1;
}

void DisplayVisibleWindows() {
    NSArray *all = [NSApp windows];
    for (NSUInteger i = 0; i < [all count]; ++i) {
        NSWindow *w = [all objectAtIndex:i];
        if ([w isVisible])
            [w displayIfNeeded];
    }
}

} // namespace

double MonotonicMs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1000.0 + static_cast<double>(now.tv_nsec) / 1e6;
}

std::vector<hostsim::KeyTiming> TakeKeyTimings() {
    std::vector<hostsim::KeyTiming> taken;
    taken.swap(pendingKeys);
    return taken;
}

std::vector<hostsim::WindowShown> TakeShownWindows() {
    std::vector<hostsim::WindowShown> shown;
    std::vector<NSInteger> visibleNow;
    NSArray *all = [NSApp windows];
    for (NSUInteger i = 0; i < [all count]; ++i) {
        NSWindow *w = [all objectAtIndex:i];
        if (![w isVisible])
            continue;
        visibleNow.push_back([w windowNumber]);
        if (!visibleNoted ||
            std::find(visibleBefore.begin(), visibleBefore.end(), [w windowNumber]) != visibleBefore.end())
            continue;
        [w displayIfNeeded];
        shown.push_back({FromNS([w title]), MonotonicMs()});
    }
    visibleBefore = visibleNow;
    visibleNoted = true;
    return shown;
}

std::vector<hostsim::VisibleWindow> ListVisibleWindows() {
    std::vector<hostsim::VisibleWindow> list;
    const double screenHeight = [[NSScreen mainScreen] frame].size.height;
    NSArray *all = [NSApp windows];
    for (NSUInteger i = 0; i < [all count]; ++i) {
        NSWindow *w = [all objectAtIndex:i];
        if (![w isVisible])
            continue;
        const NSRect f = [w frame];
        list.push_back({FromNS([w title]), static_cast<int>(std::lround(f.origin.x)),
                        static_cast<int>(std::lround(screenHeight - f.origin.y - f.size.height)),
                        static_cast<int>(std::lround(f.size.width)),
                        static_cast<int>(std::lround(f.size.height)), [w isKeyWindow] == YES});
    }
    return list;
}

@implementation HostApplication

- (void)sendEvent:(NSEvent *)event {
    if ([event type] != NSKeyDown) {
        [super sendEvent:event];
        return;
    }
    hostsim::KeyTiming timing;
    timing.characters = FromNS([event characters]);
    timing.keyCode = [event keyCode];
    timing.window = FromNS([[event window] title]);
    const double pressedMs = [event timestamp] * 1000.0;
    const double dispatchedMs = MonotonicMs();
    timing.queuedMs = PressToNowMs(pressedMs, dispatchedMs);
    timing.pressedAtMs = timing.queuedMs >= 0 ? dispatchedMs - timing.queuedMs : -1;
    [super sendEvent:event];
    // The repaint the key asked for happens at the end of this pass of the loop anyway; doing it
    // here puts its end on the clock.
    DisplayVisibleWindows();
    timing.latencyMs = PressToNowMs(pressedMs, MonotonicMs());
    if (pendingKeys.size() < 1000)
        pendingKeys.push_back(timing);
}

@end
