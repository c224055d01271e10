#pragma once

#include "nimbit/ui/cocoa/native_drawer.h"
#include "nimbit/ui/event_type.h"
#include "nimbit/ui/native_window.h"
#include "nimbit/ui/native_window_events.h"

#include <unordered_map>

// The AppKit platform window: a NativeWindow (NSWindow subclass) whose content is a flipped
// NativeView, with a NativeWindowDelegate for focus, resize and close. The view and the delegate
// translate AppKit events into toolkit events and hand them to the owning window through
// native_window_events; widget timers and the window's own timers are NSTimers on the current run loop.

#ifdef __OBJC__
@class NativeWindow;
@class NativeView;
@class NativeWindowDelegate;
@class NSTimer;
@class NSView;
#else
struct objc_object;
using NativeWindow = objc_object;
using NativeView = objc_object;
using NativeWindowDelegate = objc_object;
using NSTimer = objc_object;
using NSView = objc_object;
#endif

namespace nimbit::ui {
namespace cocoa {

class cocoa_window final : public native_window {
public:
    explicit cocoa_window(native_window_events& owner);
    ~cocoa_window() override;

    void create(std::string_view title, const ivec4& frame, uint32_t style, native_window* parent) override;
    void show(bool visible, bool focus) override;
    bool is_shown() const override;
    bool has_focus() const override;
    void set_to_front() override;
    void set_opacity(float opacity) override;
    float get_dpi() const override;
    void set_rect(const ivec4& frame) override;
    ivec4 get_rect() const override;
    ivec4 get_client_rect() const override;
    void set_min_size(_vec2<int> size) override;
    void set_max_size(_vec2<int> size) override;
    void maximize() override;
    void restore() override;
    bool is_maximized() const override { return maximized; }
    ivec4 get_screen_rect() const override;
    void invalidate(const ivec4& client_rect) override;
    void flush() override;
    native_drawer& get_drawer() override { return drawer; }
    void capture_mouse() override { capturing = true; }
    void release_mouse() override { capturing = false; }
    void run_modal(bool fill_screen) override;
    void end_modal() override;
    bool is_modal() const override { return modalSession != nullptr && !modalEnding; }
    void start_timer(uint32_t native_id, float seconds, bool repeat) override;
    void stop_timer(uint32_t native_id) override;
    bool begin_file_drag(const std::vector<std::string>& paths, const native_bitmap* image,
                         _vec2<int> client_point) override;

    // --- from the Objective-C side ---
    native_window_events& get_owner() const { return owner; }
    void dispatch(event_type type, unsigned long long data);
    void paint_rect(const ivec4& client_rect);
    void timer_fired(uint32_t native_id);
    // The close box was pressed.
    void close_requested();
    bool is_capturing() const { return capturing; }
    NativeWindow* get_ns_window() const { return ns_window; }
    NativeView* get_view() const { return view; }
    // The view as an NSView, for code that only knows AppKit's classes.
    NSView* get_content_view() const;

private:
    void stop_all_timers();

    native_window_events& owner;
    cocoa_drawer drawer;
    NativeWindow* ns_window = nullptr;
    NativeView* view = nullptr;
    NativeWindowDelegate* delegate = nullptr;
    struct running_timer {
        NSTimer* timer;
        bool repeat;
    };
    std::unordered_map<uint32_t, running_timer> timers;
    void* modalSession = nullptr; // the running NSModalSession
    // end_modal was asked: the loop ends the session once the event being dispatched is done.
    bool modalEnding = false;
    ivec4 restored_frame;
    bool maximized = false;
    bool capturing = false;
};

} // namespace cocoa
} // namespace nimbit::ui
