#pragma once

#include <functional>

// The application object and its event loop, for programs that own the loop themselves (the tests,
// the host simulator). Inside the real host the host runs the loop and none of this is called.

namespace nimbit::ui::cocoa {

// Creates the shared application object when the process has none yet. Safe to call repeatedly.
// False when the window server cannot be reached (no display).
bool start_application();

// Dispatches the events that arrive within `seconds` (at least the ones already queued) and lets
// the run loop's timers fire. Returns the number of events dispatched.
int process_events(double seconds);

// Objects AppKit hands out autoreleased are freed when the innermost pool ends. The event loop has
// one per event; code that calls the toolkit outside of it (start-up, tests) opens its own.
class autorelease_pool {
public:
    autorelease_pool();
    ~autorelease_pool();
    autorelease_pool(const autorelease_pool&) = delete;
    autorelease_pool& operator=(const autorelease_pool&) = delete;

private:
    void* pool;
};

// Processes events until `done` returns true or `timeout_seconds` pass; true when it became true.
bool run_until(const std::function<bool()>& done, double timeout_seconds);

} // namespace nimbit::ui::cocoa
