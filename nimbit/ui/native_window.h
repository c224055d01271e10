#pragma once

#include "nimbit/graphics/vec.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The platform window under a toolkit window: the one seam between the toolkit and a windowing system.
// A backend library (offscreen, cocoa) defines create_native_window; the core never names a backend.
//
// Calls into the backend are listed below. The backend calls back through the native_window_events
// it was created with (translated input, paint, timers, pointer inside, close).
// Rectangles are in screen coordinates (y down) unless named client; a frame includes the decoration.

namespace nimbit::ui {

class native_bitmap;
class native_drawer;
class native_window_events;
class window;

// Window style flags for window::create.
enum window_style : uint32_t {
    window_style_titled = 1u << 0,
    window_style_resizable = 1u << 1,
    window_style_borderless = 1u << 2, // popups and tooltips
    window_style_floating = 1u << 3,   // stays above ordinary windows
    window_style_no_shadow = 1u << 4,
};

class native_window {
public:
    virtual ~native_window() = default;

    virtual void create(std::string_view title, const ivec4& frame, uint32_t style,
                        native_window* parent) = 0;
    // focus: become the key window.
    virtual void show(bool visible, bool focus) = 0;
    virtual bool is_shown() const = 0;
    virtual bool has_focus() const = 0;
    virtual void set_to_front() = 0;
    virtual void set_opacity(float opacity) = 0;
    virtual float get_dpi() const = 0;

    virtual void set_rect(const ivec4& frame) = 0;
    virtual ivec4 get_rect() const = 0;
    virtual ivec4 get_client_rect() const = 0;
    virtual void set_min_size(_vec2<int> size) = 0;
    virtual void set_max_size(_vec2<int> size) = 0;
    virtual void maximize() = 0;
    virtual void restore() = 0;
    virtual bool is_maximized() const = 0;
    // The visible frame (without menu bar and dock) of the screen that holds the window.
    virtual ivec4 get_screen_rect() const = 0;

    // Marks part of the client area dirty; flush paints what is dirty now instead of later.
    virtual void invalidate(const ivec4& client_rect) = 0;
    virtual void flush() = 0;
    virtual native_drawer& get_drawer() = 0;

    virtual void capture_mouse() = 0;
    virtual void release_mouse() = 0;

    // Brings the window to the front as key window (filling the screen's visible frame with
    // fill_screen) and runs a modal session until end_modal; asserts that none is running.
    virtual void run_modal(bool fill_screen) = 0;
    // Hides the window and ends the session run_modal is in; asserts that one is running.
    virtual void end_modal() = 0;
    virtual bool is_modal() const = 0;

    // A timer calls native_window_events::process_native_timer(native_id) every `seconds`, once unless
    // `repeat`. Starting an id that runs restarts it.
    virtual void start_timer(uint32_t native_id, float seconds, bool repeat) = 0;
    virtual void stop_timer(uint32_t native_id) = 0;

    // Starts dragging files (full paths) out of the window from a client point, the image following
    // the pointer (may be null). The platform's drag session then owns the pointer until the drop.
    // False where files cannot be dragged out.
    virtual bool begin_file_drag(const std::vector<std::string>& paths, const native_bitmap* image,
                                 _vec2<int> client_point) {
        (void)paths, (void)image, (void)client_point;
        return false;
    }
};

// `events` is the owner's side of the seam; the backend calls it and holds `owner` only to hand it on.
std::unique_ptr<native_window> create_native_window(window& owner, native_window_events& events);

} // namespace nimbit::ui
