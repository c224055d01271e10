#pragma once

#include <cstdint>
#include <functional>

// The offscreen backend's clock. It never follows wall time: tests move it, and every timer that falls
// due on the way fires in time order (ties in the order they were started). Times are whole
// microseconds, so intervals such as 0.025 s add up exactly.

namespace nimbit::ui::offscreen {

uint64_t now_us();
void advance_us(uint64_t us);
inline void advance_ms(uint64_t ms) {
    advance_us(ms * 1000);
}
// Moves the clock to the earliest pending timer and fires it; false when no timer runs.
bool run_next_timer();
size_t running_timers();

// The scheduler under offscreen windows (one owner per `key` object).
void start_timer(const void* key, uint32_t id, uint64_t interval_us, bool repeat, std::function<void()> fire);
void stop_timer(const void* key, uint32_t id);
void stop_timers(const void* key);
bool is_timer_running(const void* key, uint32_t id);

} // namespace nimbit::ui::offscreen
