#pragma once

// The toolkit's contract with a window-system backend, checked on a real window server: the scenes in
// backend_conformance.cpp run in each backend's test binary against the driver declared here, which
// the backend's test folder implements (how events are handled, how input is sent, how a window's
// pixels are read back).

#include "nimbit/graphics/rgba_image.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/window.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace backend_test {

using point = nimbit::_vec2<int>;

// Handles events until done() holds or the time is up.
bool wait_for(const std::function<bool()>& done, double timeout_seconds = 5.0);
// Handles events for a while (to let windows settle, never to wait for a result).
void pump(double seconds);
// What w's client area shows: straight RGBA, rows top to bottom.
nimbit::graphics::rgba_image shown(nimbit::ui::window& w);
// Input at a point of w's client area. Buttons are the toolkit's: 0 left, 1 middle, 2 right.
bool click(nimbit::ui::window& w, point at, int button);
bool double_click(nimbit::ui::window& w, point at);
// Wheel notches away from the user (negative: towards).
bool wheel(nimbit::ui::window& w, point at, int notches);
// Types letters (A to Z, either case) to the focused widget.
bool type(nimbit::ui::window& w, const std::string& letters);
// The largest channel difference an image may come back from the clipboard with.
extern const int clipboard_rounding;

// Whether the pixel at (x, y) is c, channel by channel within tolerance (alpha ignored).
bool looks(const nimbit::graphics::rgba_image& img, int x, int y, nimbit::vec4 c, float tolerance = 0.03f);

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
    size_t count(nimbit::ui::event_type type) const { return data_of(type).size(); }
    nimbit::vec4 color;
    std::vector<std::pair<nimbit::ui::event_type, uint64_t>> seen;
};

// A window whose root widget fills it.
struct probe_window {
    nimbit::ui::window w;
    probe_widget root;
    explicit probe_window(nimbit::ivec4 frame, uint32_t style = nimbit::ui::window_style_titled,
                          nimbit::vec4 color = {0.2f, 0.2f, 0.2f, 1}, nimbit::ui::window* parent = nullptr)
        : root(color) {
        w.create("probe", frame, style, parent);
        root.create(w.get_root(), {0, 0, frame.w, frame.h});
    }
    // Runs action on every tick of any of the root's timers.
    void on_timer(void* owner, std::function<void()> action) {
        nimbit::ui::event_manager::instance().add_event(
            &root, owner, nimbit::ui::event_type::timer,
            [action = std::move(action)](const nimbit::ui::event_info&) { action(); });
    }
};

} // namespace backend_test
