#pragma once

// How quickly the application answers the artist, seen from its own event loop: for every key press
// that reaches a window, the time from the press (as the window server stamped it) to the end of
// the repaint it caused; for every window that appears, when its first picture was drawn. The
// on-screen host keeps these in its record so that a walkthrough can report latencies measured
// where the work happens rather than guessed from outside.

#include "hostsim/sim_record.h"

#include <vector>

// The monotonic clock in milliseconds.
double MonotonicMs();

// The key presses handled since the last call, oldest first.
std::vector<hostsim::KeyTiming> TakeKeyTimings();

// Looks for windows of the application that became visible since the last call, paints them now
// (as the run loop would at the end of this pass) and returns them. The first call only notes
// which windows are visible.
std::vector<hostsim::WindowShown> TakeShownWindows();

// The visible windows of the application.
std::vector<hostsim::VisibleWindow> ListVisibleWindows();

#ifdef __OBJC__
#import <AppKit/AppKit.h>
// The application class of the on-screen host: an NSApplication that times the key presses it
// dispatches (see KeyTiming).
@interface HostApplication : NSApplication
@end
#endif
