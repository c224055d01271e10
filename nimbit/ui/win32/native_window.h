#pragma once

#include "nimbit/ui/event_type.h"
#include "nimbit/ui/native_window.h"
#include "nimbit/ui/native_window_events.h"
#include "nimbit/ui/win32/native_drawer.h"

#include <memory>
#include <unordered_map>

// The Win32 platform window: one window class for the module, a window procedure that translates
// messages into toolkit events for the owning window (through native_window_events) and catches
// everything, so that nothing throws into the system. Timers are window timers under their native id;
// a modal session is a nested message loop.

namespace nimbit::ui::win32 {

class win32_window final : public native_window {
public:
    explicit win32_window(native_window_events& owner);
    ~win32_window() override;

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
    void capture_mouse() override;
    void release_mouse() override;
    void run_modal(bool fill_screen) override;
    void end_modal() override;
    bool is_modal() const override { return modal && !modal_ending; }
    void start_timer(uint32_t native_id, float seconds, bool repeat) override;
    void stop_timer(uint32_t native_id) override;

    HWND get_hwnd() const { return hwnd; }
    // The back buffer as the last paint left it.
    const win32_drawer& get_win32_drawer() const { return drawer; }

    // The window procedure's work; `alive` turns false when the window is destroyed meanwhile.
    LRESULT handle(UINT message, WPARAM wparam, LPARAM lparam);
    // Called as the window is being made, before CreateWindowExW returns.
    void adopt(HWND h) { hwnd = h; }

private:
    // Sends an event; false when the handler destroyed this window.
    bool dispatch(event_type type, unsigned long long data);
    bool dispatch_mouse(event_type type, unsigned long long data, POINT screen);
    bool key_down(WPARAM wparam, LPARAM lparam);
    void paint();
    _vec2<int> frame_for_client(_vec2<int> client) const;

    native_window_events& owner;
    win32_drawer drawer;
    HWND hwnd = nullptr;
    DWORD style_bits = 0, ex_style_bits = 0;
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
    std::unordered_map<uint32_t, bool> timers; // id -> repeats
    _vec2<int> min_client, max_client;
    bool modal = false, modal_ending = false;
    ivec4 restored_frame;
    bool maximized = false;
    bool created = false; // CreateWindowExW returned: size changes are the owner's news from now on
    bool tracking_leave = false;
    wchar_t pending_high_surrogate = 0;
};

} // namespace nimbit::ui::win32
