#pragma once

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"

#include <vector>

namespace cocoa_test {

// A widget that paints itself in one colour and keeps every input event it receives.
class probe_widget : public nimbit::ui::widget {
public:
    struct record {
        nimbit::ui::event_type type;
        unsigned long long data;
    };

    explicit probe_widget(nimbit::vec4 color) : color(color) {}

    void create(nimbit::ui::widget& parent, const nimbit::ivec4& rect) {
        widget::create(parent, rect);
        listen();
    }
    void create(nimbit::ui::window& w, const nimbit::ivec4& rect) {
        widget::create(w, rect);
        listen();
    }

    std::vector<record> received;
    nimbit::vec4 color;

    size_t count(nimbit::ui::event_type type) const {
        size_t n = 0;
        for (const record& r : received)
            n += r.type == type;
        return n;
    }
    std::vector<unsigned long long> data_of(nimbit::ui::event_type type) const {
        std::vector<unsigned long long> all;
        for (const record& r : received)
            if (r.type == type)
                all.push_back(r.data);
        return all;
    }

private:
    void listen() {
        using nimbit::ui::event_type;
        auto& events = nimbit::ui::event_manager::instance();
        for (event_type t :
             {event_type::mouse_up, event_type::mouse_down, event_type::mouse_dbl_click,
              event_type::mouse_wheel, event_type::mouse_enter, event_type::mouse_leave, event_type::key_down,
              event_type::key_down_raw, event_type::key_up, event_type::key_char, event_type::focus_gained,
              event_type::focus_lost, event_type::timer})
            events.add_event(this, this, t, [this](const nimbit::ui::event_info& e) {
                received.push_back({e.type, e.data});
            });
        events.add_event(this, this, event_type::draw, [this](const nimbit::ui::event_info&) {
            get_window()->get_drawer().set_brush_color(color);
            get_window()->get_drawer().draw_rect({0, 0, get_rect().w, get_rect().h});
        });
    }
};

} // namespace cocoa_test
