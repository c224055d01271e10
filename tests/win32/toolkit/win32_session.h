#pragma once

// What the Win32 backend tests share: running the message loop until a condition holds, the
// platform window under a toolkit window, and a widget that paints one colour and records its input.

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/win32/native_window.h"
#include "nimbit/ui/window.h"

#include <chrono>
#include <functional>
#include <vector>

namespace win32_test {

// Handles messages for a while (to let windows settle, never to wait for a result).
inline void pump(double seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    do {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
        Sleep(1);
    } while (std::chrono::steady_clock::now() < end);
}

// Handles messages until done() holds or the time is up.
inline bool wait_for(const std::function<bool()>& done, double timeout_seconds = 5.0) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeout_seconds);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        pump(0.005);
    }
    return true;
}

inline nimbit::ui::win32::win32_window& native(nimbit::ui::window& w) {
    return dynamic_cast<nimbit::ui::win32::win32_window&>(w.get_native());
}

// A widget in one colour that records the input events it receives (type, data).
struct probe_widget : nimbit::ui::widget {
    explicit probe_widget(nimbit::vec4 color) : color(color) {}
    template <class Parent> void create(Parent& parent, const nimbit::ivec4& rect) {
        widget::create(parent, rect);
        using nimbit::ui::event_type;
        auto& events = nimbit::ui::event_manager::instance();
        for (event_type t : {event_type::mouse_up, event_type::mouse_down, event_type::mouse_dbl_click,
                             event_type::mouse_wheel, event_type::key_down, event_type::key_down_raw,
                             event_type::key_up, event_type::key_char, event_type::timer})
            events.add_event(this, this, t, [this](const nimbit::ui::event_info& e) {
                seen.push_back({e.type, e.data});
            });
        events.add_event(this, this, event_type::draw, [this](const nimbit::ui::event_info&) {
            get_window()->get_drawer().set_brush_color(color);
            get_window()->get_drawer().draw_rect({0, 0, get_rect().w, get_rect().h});
        });
    }
    std::vector<uint64_t> data_of(nimbit::ui::event_type type) const {
        std::vector<uint64_t> out;
        for (const auto& [t, d] : seen)
            if (t == type)
                out.push_back(d);
        return out;
    }
    nimbit::vec4 color;
    std::vector<std::pair<nimbit::ui::event_type, uint64_t>> seen;
};

} // namespace win32_test
