#pragma once

#include "nimbit/ui/native_window.h"
#include "nimbit/ui/native_window_events.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

// An in-memory platform window. A titled window loses a title bar of title_bar_height off the top of
// its frame, as under AppKit, so its client area is smaller than its frame; other windows have no
// decoration. Minimum and maximum sizes bound the client area (AppKit's content sizes). Painting is
// recorded by an offscreen_drawer: invalidate() collects a dirty rectangle, flush() or
// paint_pending() paints it through the owning window. Timers run on the offscreen clock. A window
// shown with focus becomes the key window; the previous key window hears focus_lost and the new one
// focus_gained.
//
// The modal loop runs until end_modal: each turn calls the modal driver when one is set (a test
// callback that feeds input, moves the clock or ends the session), otherwise fires the next timer.
// With neither able to make progress the session ends as if the window had been closed.

namespace nimbit::ui {

class window;

namespace offscreen {

class offscreen_window final : public native_window {
public:
    // The top offset GNUstep's own decoration gives a titled window (its title bar and top border).
    static constexpr int title_bar_height = 23;

    offscreen_window(window& owner, native_window_events& events);
    ~offscreen_window() override;

    void create(std::string_view title, const ivec4& frame, uint32_t style, native_window* parent) override;
    void show(bool visible, bool focus) override;
    bool is_shown() const override { return shown; }
    bool has_focus() const override;
    void set_to_front() override;
    void set_opacity(float value) override { opacity = value; }
    float get_dpi() const override;
    void set_rect(const ivec4& frame) override;
    ivec4 get_rect() const override { return frame; }
    ivec4 get_client_rect() const override;
    void set_min_size(_vec2<int> size) override;
    void set_max_size(_vec2<int> size) override;
    void maximize() override;
    void restore() override;
    bool is_maximized() const override { return maximized; }
    ivec4 get_screen_rect() const override;
    void invalidate(const ivec4& client_rect) override;
    void flush() override { paint_pending(); }
    native_drawer& get_drawer() override { return canvas; }
    void capture_mouse() override { capturing = true; }
    void release_mouse() override { capturing = false; }
    void run_modal(bool fill_screen) override;
    void end_modal() override;
    bool is_modal() const override { return session != nullptr; }
    void start_timer(uint32_t native_id, float seconds, bool repeat) override;
    void stop_timer(uint32_t native_id) override;
    bool begin_file_drag(const std::vector<std::string>& paths, const native_bitmap* image,
                         _vec2<int> client_point) override;

    // --- for tests ---
    window& get_owner() const { return owner; }
    // The owner's side of the seam, as the platform reaches it.
    native_window_events& get_events() const { return events; }
    offscreen_drawer& get_canvas() { return canvas; }
    // The merged rectangle waiting to be painted (empty when clean).
    ivec4 get_dirty() const { return dirty; }
    // Paints the dirty rectangle, if any; true when something was painted.
    bool paint_pending();
    const std::string& get_title() const { return title; }
    uint32_t get_style() const { return style; }
    float get_opacity() const { return opacity; }
    bool is_capturing() const { return capturing; }
    _vec2<int> get_min_size() const { return min_size; }
    _vec2<int> get_max_size() const { return max_size; }
    // The native timer ids running for this window.
    bool is_timer_running(uint32_t native_id) const;
    // Front-most first: the order windows were last brought to the front.
    uint64_t get_z_order() const { return z_order; }

    // Called at every turn of any modal loop; replaces the previous driver (empty clears it).
    static void set_modal_driver(std::function<void(window&)> driver);

private:
    struct modal_session {
        bool fill_screen = false;
        uint64_t turns = 0;
    };
    void become_key();
    void resign_key();
    // What the title bar takes off the top of the frame.
    int decoration_top() const;

    // Handed to the modal driver; everything the platform reports goes through `events`.
    window& owner;
    native_window_events& events;
    offscreen_drawer canvas;
    std::string title;
    uint32_t style = 0;
    ivec4 frame;
    ivec4 restored_frame;
    ivec4 dirty;
    _vec2<int> min_size;
    _vec2<int> max_size;
    float opacity = 1.0f;
    bool shown = false;
    bool maximized = false;
    bool capturing = false;
    uint64_t z_order = 0;
    std::unique_ptr<modal_session> session;
};

// A file drag as the offscreen backend takes it: written down, nothing dropped anywhere.
struct file_drag {
    const offscreen_window* from = nullptr;
    std::vector<std::string> paths;
    _vec2<int> image_size; // zero without an image
    _vec2<int> point;
};
// Every file drag begun so far, oldest first (emptied by reset_state).
const std::vector<file_drag>& file_drags();
void clear_file_drags();

// The offscreen platform window under `w` (which must be created).
offscreen_window& native_of(const window& w);
// What the platform calls on `w` (which must be created): tests and the input helpers deliver events,
// paints and timers through it, as a real backend would.
native_window_events& events_of(const window& w);

} // namespace offscreen
} // namespace nimbit::ui
