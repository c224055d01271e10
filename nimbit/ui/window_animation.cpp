#include "nimbit/ui/window.h"

#include <vector>

// The window's animation tick: every running widget animation steps once a tick.

namespace nimbit::ui {

namespace {
constexpr float animation_tick_seconds = 0.025f;
} // namespace

void window::add_animation(widget* w) {
    if (!w)
        return;
    animations[w] = true;
    animation_pending = true;
    if (!animation_running && native) {
        native->start_timer(animation_timer_id, animation_tick_seconds, true);
        animation_running = true;
    }
}

void window::remove_animation(widget* w) {
    // Only marked: the tick may be walking the map; the entry goes at the next tick.
    if (auto it = animations.find(w); it != animations.end())
        it->second = false;
}

void window::process_animation_timer() {
    animation_pending = false;
    std::vector<widget*> running;
    running.reserve(animations.size());
    for (const auto& [w, on] : animations)
        if (on)
            running.push_back(w);
    for (widget* w : running) {
        // An earlier animate() may have destroyed or stopped this one.
        auto it = animations.find(w);
        if (it != animations.end() && it->second)
            w->animate();
    }
    std::erase_if(animations, [](const auto& entry) { return !entry.second; });
    if (animations.empty() && !animation_pending && animation_running) {
        if (native)
            native->stop_timer(animation_timer_id);
        animation_running = false;
    }
}

} // namespace nimbit::ui
