#pragma once

#include <string>

// What the AppKit backend's tests have beyond the shared driver (display_session.cpp, with the
// window server: an Xvfb started for the test process): xdotool as the user.

namespace cocoa_test {

// Runs xdotool with the arguments (split at spaces), handling events until it ends; true when it
// succeeded.
bool xdotool(const std::string& arguments);
// Starts xdotool without waiting, for input that must arrive while a nested loop runs.
void xdotool_later(const std::string& arguments);

} // namespace cocoa_test
