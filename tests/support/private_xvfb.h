#pragma once

#include <string>
#include <sys/types.h>

// An X server of the process's own for tests and benchmarks that need real windows.

namespace quillo_test {

// Starts Xvfb on a display number the server picks itself (-displayfd), so that runs side by side
// never collide; `display` becomes its name (":N") once it accepts clients. With `no_reset` the
// server keeps its state when its last client leaves (short-lived clients such as xdotool come and
// go). The server goes down with this process even when the process is killed. Returns its pid, or
// -1 when it could not start.
pid_t start_private_xvfb(std::string& display, bool no_reset = false);

// Stops a server that start_private_xvfb started.
void stop_private_xvfb(pid_t server);

} // namespace quillo_test
