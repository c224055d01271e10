#include "nimbit/ui/offscreen/offscreen_clock.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace nimbit::ui::offscreen {

namespace {
struct scheduled {
    const void* key;
    uint32_t id;
    uint64_t due;
    uint64_t interval;
    uint64_t order; // start order, breaks ties between equal due times
    bool repeat;
    std::function<void()> fire;
};

struct clock_state {
    uint64_t now = 0;
    uint64_t next_order = 0;
    std::vector<scheduled> timers;
};

clock_state& state() {
    static clock_state s;
    return s;
}

// Index of the earliest timer due at or before `limit`, or -1.
std::ptrdiff_t earliest(uint64_t limit) {
    const auto& timers = state().timers;
    std::ptrdiff_t best = -1;
    for (size_t i = 0; i < timers.size(); ++i) {
        const auto& t = timers[i];
        if (t.due > limit)
            continue;
        if (best < 0 || t.due < timers[best].due ||
            (t.due == timers[best].due && t.order < timers[best].order))
            best = static_cast<std::ptrdiff_t>(i);
    }
    return best;
}

void fire_at(size_t index) {
    auto& s = state();
    scheduled& t = s.timers[index];
    s.now = std::max(s.now, t.due);
    // Rescheduled (or dropped) before it fires, so that the callback may stop or restart it.
    std::function<void()> fire = t.fire;
    if (t.repeat) {
        t.due += t.interval;
        t.order = s.next_order++;
    } else {
        s.timers.erase(s.timers.begin() + static_cast<std::ptrdiff_t>(index));
    }
    fire();
}
} // namespace

uint64_t now_us() {
    return state().now;
}

void advance_us(uint64_t us) {
    const uint64_t target = state().now + us;
    for (std::ptrdiff_t i; (i = earliest(target)) >= 0;)
        fire_at(static_cast<size_t>(i));
    state().now = std::max(state().now, target);
}

bool run_next_timer() {
    const std::ptrdiff_t i = earliest(UINT64_MAX);
    if (i < 0)
        return false;
    fire_at(static_cast<size_t>(i));
    return true;
}

size_t running_timers() {
    return state().timers.size();
}

void start_timer(const void* key, uint32_t id, uint64_t interval_us, bool repeat,
                 std::function<void()> fire) {
    stop_timer(key, id);
    auto& s = state();
    // As on screen, a timer cannot run faster than every 0.1 ms (and 0 would never let time pass).
    interval_us = std::max<uint64_t>(interval_us, 100);
    s.timers.push_back(
        scheduled{key, id, s.now + interval_us, interval_us, s.next_order++, repeat, std::move(fire)});
}

void stop_timer(const void* key, uint32_t id) {
    std::erase_if(state().timers, [&](const scheduled& t) { return t.key == key && t.id == id; });
}

void stop_timers(const void* key) {
    std::erase_if(state().timers, [&](const scheduled& t) { return t.key == key; });
}

bool is_timer_running(const void* key, uint32_t id) {
    const auto& timers = state().timers;
    return std::any_of(timers.begin(), timers.end(),
                       [&](const scheduled& t) { return t.key == key && t.id == id; });
}

} // namespace nimbit::ui::offscreen
