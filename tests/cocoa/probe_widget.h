#pragma once

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"
#include "tests/support/offscreen_test.h"

namespace cocoa_test {

// A widget that paints itself in one colour and records every input event it receives.
struct probe_widget : nimbit::ui::widget {
    explicit probe_widget(nimbit::vec4 color) : color(color) {}

    template <class Parent> void create(Parent& parent, const nimbit::ivec4& rect) {
        using nimbit::ui::event_type;
        widget::create(parent, rect);
        events.watch(*this, "",
                     {event_type::mouse_up, event_type::mouse_down, event_type::mouse_dbl_click,
                      event_type::mouse_wheel, event_type::key_down, event_type::key_down_raw,
                      event_type::key_up, event_type::key_char, event_type::timer});
        nimbit::ui::event_manager::instance().add_event(
            this, this, event_type::draw, [this](const nimbit::ui::event_info&) {
                get_window()->get_drawer().set_brush_color(color);
                get_window()->get_drawer().draw_rect({0, 0, get_rect().w, get_rect().h});
            });
    }
    size_t count(nimbit::ui::event_type type) const { return data_of(type).size(); }
    std::vector<uint64_t> data_of(nimbit::ui::event_type type) const {
        std::vector<uint64_t> all;
        for (const event_recorder::entry& e : events.entries)
            if (e.type == type)
                all.push_back(e.data);
        return all;
    }

    nimbit::vec4 color;
    event_recorder events;
};

} // namespace cocoa_test
