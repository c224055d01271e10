#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/event_type.h"

#include <cstdint>

namespace nimbit::ui {

// The calls a platform window makes on the toolkit window above it, and only those: a backend
// receives this interface from create_native_window and reaches its window through nothing else.
// The window implements it privately, so toolkit and application code cannot fake platform input.
class native_window_events {
public:
    // Translated input (event_type codes and their payloads), focus_gained/focus_lost of the window,
    // resize of the client area (new size packed w low, h high), mouse_leave when the pointer leaves.
    virtual void process_event(const event_type& type, const unsigned long long& data) = 0;
    // Repaint the dirty rectangle (client coordinates) now, through the window's drawer.
    virtual void paint(const ivec4& dirty) = 0;
    // A timer started with native_window::start_timer elapsed.
    virtual void process_native_timer(uint32_t native_id) = 0;
    // The pointer entered or left the window.
    virtual void set_mouse_inside(bool inside) = 0;
    // The user asked to close the window (its close box).
    virtual void process_close() = 0;

protected:
    ~native_window_events() = default;
};

} // namespace nimbit::ui
