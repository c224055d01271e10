#pragma once

#include "nimbit/graphics/rgba_image.h"
#include "nimbit/graphics/vec.h"

#include <string>

// What the AppKit backend's tests have beyond the shared driver: a window server (an Xvfb started
// for the test process), xdotool as the user and screen capture.

namespace cocoa_test {

// Runs xdotool with the arguments (split at spaces), handling events until it ends; true when it
// succeeded.
bool xdotool(const std::string& arguments);
// Starts xdotool without waiting, for input that must arrive while a nested loop runs.
void xdotool_later(const std::string& arguments);

// A click as a person makes it: the button (xdotool's: 1 left, 2 middle, 3 right) is held for a
// tenth of a second. (GNUstep delivers a press that focuses the window after a release already
// queued behind it.)
bool click_at(nimbit::_vec2<int> screen_point, int button = 1);

// The screen's pixels in a rectangle (screen coordinates, y down).
nimbit::graphics::rgba_image capture_screen(const nimbit::ivec4& rect);

} // namespace cocoa_test
