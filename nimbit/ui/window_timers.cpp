#include "nimbit/ui/window.h"

#include "nimbit/ui/event_manager.h"

// The window's widget timers, and the dispatch of every native timer (its own included).

namespace nimbit::ui {

void window::add_timer(widget* w, uint32_t id, uint32_t interval_ms, bool single_shot) {
    if (!native || has_timer(w, id))
        return; // a running timer keeps its interval
    uint32_t native_id = ++next_timer_id;
    if (native_id >= first_reserved_timer_id || native_id == 0) // never hand out the reserved ids
        native_id = next_timer_id = 1;
    timers[native_id] = timer_event{id, w, single_shot};
    native->start_timer(native_id, static_cast<float>(interval_ms) * 0.001f, !single_shot);
}

void window::remove_timer(widget* w, uint32_t id) {
    for (auto it = timers.begin(); it != timers.end(); ++it)
        if (it->second.target == w && it->second.id == id) {
            if (native)
                native->stop_timer(it->first);
            timers.erase(it);
            return;
        }
}

bool window::has_timer(const widget* w, uint32_t id) const {
    for (const auto& [native_id, t] : timers)
        if (t.target == w && t.id == id)
            return true;
    return false;
}

void window::drop_widget_timers(widget* w) {
    for (auto it = timers.begin(); it != timers.end();) {
        if (it->second.target == w) {
            if (native)
                native->stop_timer(it->first);
            it = timers.erase(it);
        } else {
            ++it;
        }
    }
}

void window::process_timer(widget* w, uint32_t id) {
    event_manager::instance().fire_event(w, event_type::timer, id);
}

void window::process_native_timer(uint32_t native_id) {
    if (native_id == tooltip_timer_id) {
        process_tooltip_timer();
        return;
    }
    if (native_id == animation_timer_id) {
        process_animation_timer();
        return;
    }
    auto it = timers.find(native_id);
    if (it == timers.end())
        return;
    const timer_event t = it->second;
    if (t.single_shot) {
        // Forgotten before it fires, so that the handler may start it again.
        timers.erase(it);
        if (native)
            native->stop_timer(native_id);
    }
    process_timer(t.target, t.id);
}

} // namespace nimbit::ui
