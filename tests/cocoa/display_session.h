#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/cocoa/native_app.h"

#include <functional>
#include <string>
#include <vector>

// What the backend tests share: a window server (an Xvfb started for the test process), xdotool as
// the user, screen capture and waiting on conditions while the event loop runs.

namespace cocoa_test {

// Runs xdotool with the arguments (split at spaces), handling events until it ends; true when it
// succeeded.
bool xdotool(const std::string& arguments);
// Starts xdotool without waiting, for input that must arrive while a nested loop runs.
void xdotool_later(const std::string& arguments);

// A click as a person makes it: the button is held for a tenth of a second. (GNUstep delivers a
// press that focuses the window after a release already queued behind it.)
bool click_at(nimbit::_vec2<int> screen_point, int button = 1);

// Runs the event loop until done() holds or the time is up.
inline bool wait_for(const std::function<bool()>& done, double timeout_seconds = 5.0) {
    return nimbit::ui::cocoa::run_until(done, timeout_seconds);
}
// Runs the event loop for a while (to let a window server settle, never to wait for a result).
inline void pump(double seconds) {
    nimbit::ui::cocoa::process_events(seconds);
}

struct screen_image {
    nimbit::_vec2<int> size;
    std::vector<unsigned char> rgba; // straight RGBA, rows top to bottom
    nimbit::vec4 pixel(int x, int y) const;
};
// The screen's pixels in a rectangle (screen coordinates, y down).
screen_image capture_screen(const nimbit::ivec4& rect);

// Colour distance: the largest channel difference (alpha ignored).
float color_distance(const nimbit::vec4& a, const nimbit::vec4& b);

} // namespace cocoa_test
