#include "nimbit/ui/scroll_bar.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/image_frames.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"
#include "nimbit/utils/assert.h"

#include <algorithm>
#include <cmath>

namespace nimbit::ui {

scroll_bar::scroll_bar(scroll_type type, bool draw_buttons) : type(type), draw_buttons(draw_buttons) {
    set_name("ScrollBar");
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &scroll_bar::draw);
    ev.add_event(this, this, event_type::theme_changed, &scroll_bar::on_theme);
    ev.add_event(this, this, event_type::create, &scroll_bar::on_theme);
    for (event_type t :
         {event_type::mouse_down, event_type::mouse_dbl_click, event_type::mouse_up, event_type::mouse_move})
        ev.add_event(this, this, t, &scroll_bar::on_mouse);
    ev.add_event(this, this, event_type::mouse_wheel, &scroll_bar::on_wheel);
    ev.add_event(this, this, event_type::resize, [this](const event_info&) { update(false); });
}

scroll_bar::~scroll_bar() {
    detach_panel();
    release_capture(*this);
}

void scroll_bar::detach_panel() {
    for (uint32_t id : panel_events)
        event_manager::instance().remove_event(id);
    panel_events.clear();
    panel = nullptr;
}

void scroll_bar::set_scroll_panel(widget* new_panel) {
    NIMBIT_ASSERT(new_panel != this && "Scroll panel is set o it's own.");
    detach_panel();
    panel = new_panel;
    value = 0;
    if (panel) {
        auto& ev = event_manager::instance();
        const ivec4 r = panel->get_rect();
        panel->set_rect({0, 0, r.w, r.h});
        auto refresh = [this](const event_info&) {
            update_bar();
        };
        panel_events.push_back(ev.add_event(panel, this, event_type::resize, refresh));
        panel_events.push_back(ev.add_event(panel, this, event_type::parent_resize, refresh));
        // A panel destroyed before the bar must not be touched again.
        panel_events.push_back(ev.add_event(panel, this, event_type::destroy, [this](const event_info&) {
            panel_events.clear();
            panel = nullptr;
            overflow = 0;
            value = 0;
            update(false);
        }));
    }
    update_bar();
}

void scroll_bar::add_wheel_area(widget& area) {
    if (&area != this)
        event_manager::instance().add_event(&area, this, event_type::mouse_wheel, &scroll_bar::on_wheel);
}

void scroll_bar::set_step(int pixels) {
    step = std::max(1, pixels);
}

int scroll_bar::panel_length() const {
    return panel ? along(panel->get_size()) : 0;
}

int scroll_bar::view_length() const {
    const widget* parent = panel ? panel->get_parent() : nullptr;
    return parent ? along(parent->get_size()) : 0;
}

void scroll_bar::update_bar() {
    overflow = std::max(0, panel_length() - view_length());
    apply_value(value);
    update(false);
}

void scroll_bar::apply_value(int new_value) {
    new_value = std::clamp(new_value, 0, overflow);
    const bool changed = new_value != value;
    value = new_value;
    if (panel) {
        ivec4 r = panel->get_rect();
        if (type == scroll_type::vertical)
            r.y = -value;
        else
            r.x = -value;
        if (r != panel->get_rect())
            panel->set_rect(r);
    }
    update(false);
    if (changed)
        event_manager::instance().fire_event(this, event_type::value_changed, static_cast<uint32_t>(value));
}

void scroll_bar::scroll(int amount, bool exact) {
    if (!exact)
        amount -= amount % step;
    // The edge moves by the amount: a positive amount brings it back towards 0.
    const long long target = static_cast<long long>(value) - amount;
    apply_value(static_cast<int>(std::clamp<long long>(target, 0, overflow)));
}

void scroll_bar::change_scroll(int steps) {
    const long long amount = static_cast<long long>(steps) * step;
    scroll(static_cast<int>(-std::clamp<long long>(amount, -overflow - 1LL, overflow + 1LL)), true);
}

void scroll_bar::reveal(int top, int height, int visible) {
    if (top < value)
        set_value(top);
    else if (top + height > value + visible)
        set_value(std::min(top, top + height - visible));
}

void scroll_bar::set_value(int new_value) {
    apply_value(new_value);
}

void scroll_bar::change_value(int delta) {
    apply_value(static_cast<int>(std::clamp<long long>(static_cast<long long>(value) + delta, 0, overflow)));
}

// --- geometry -------------------------------------------------------------------------------------

ivec4 scroll_bar::button_rect(bool at_end) const {
    const ivec4 r = get_rect();
    if (!draw_buttons)
        return {};
    if (type == scroll_type::vertical) {
        const int side = std::min(r.w, r.h / 2);
        return {0, at_end ? r.h - side : 0, r.w, side};
    }
    const int side = std::min(r.h, r.w / 2);
    return {at_end ? r.w - side : 0, 0, side, r.h};
}

ivec4 scroll_bar::track_rect() const {
    const ivec4 r = get_rect();
    const int button = draw_buttons ? along(button_rect(false).size()) : 0;
    if (type == scroll_type::vertical)
        return {0, button, r.w, std::max(0, r.h - 2 * button)};
    return {button, 0, std::max(0, r.w - 2 * button), r.h};
}

ivec4 scroll_bar::thumb_rect() const {
    const ivec4 track = track_rect();
    const int track_length = along(track.size());
    const int total = panel_length();
    int length = track_length;
    if (total > 0 && overflow > 0)
        length = static_cast<int>(static_cast<long long>(track_length) * view_length() / total);
    length = std::clamp(length, std::min(min_thumb, track_length), track_length);
    const int room = track_length - length;
    const int offset = overflow > 0 ? static_cast<int>(static_cast<long long>(room) * value / overflow) : 0;
    if (type == scroll_type::vertical)
        return {track.x, track.y + offset, track.w, length};
    return {track.x + offset, track.y, length, track.h};
}

// --- input ----------------------------------------------------------------------------------------

void scroll_bar::on_wheel(const event_info& e) {
    const double delta = wheel_delta(e.data);
    if (!std::isfinite(delta))
        return;
    scroll(static_cast<int>(std::clamp(delta, -1e6, 1e6)), false);
}

void scroll_bar::on_mouse(const event_info& e) {
    const _vec2<int> p = mouse::get_position(this);
    switch (e.type) {
    case event_type::mouse_down:
    case event_type::mouse_dbl_click: {
        if (e.data != static_cast<uint32_t>(mouse::button::left))
            return;
        const ivec4 thumb = thumb_rect();
        if (draw_buttons && button_rect(false).contains(p)) {
            pressed_part = 1;
            scroll(step, true);
        } else if (draw_buttons && button_rect(true).contains(p)) {
            pressed_part = 2;
            scroll(-step, true);
        } else if (thumb.contains(p)) {
            pressed_part = 4;
            dragging = true;
            drag_offset = along(p) - along(thumb.position());
        } else if (track_rect().contains(p)) {
            // A page towards the pointer.
            pressed_part = 3;
            const int page = std::max(1, view_length());
            scroll(along(p) < along(thumb.position()) ? page : -page, true);
        }
        // A double click's release never arrives: only a plain press holds the mouse.
        if (e.type == event_type::mouse_down) {
            mouse::capture_widget(*this);
        } else {
            dragging = false;
            pressed_part = 0;
        }
        update(false);
        break;
    }
    case event_type::mouse_move: {
        if (!dragging)
            return;
        const ivec4 track = track_rect();
        const int room = along(track.size()) - along(thumb_rect().size());
        if (room <= 0)
            return;
        const int at = along(p) - drag_offset - along(track.position());
        apply_value(static_cast<int>(static_cast<long long>(std::clamp(at, 0, room)) * overflow / room));
        break;
    }
    case event_type::mouse_up:
        dragging = false;
        pressed_part = 0;
        release_capture(*this);
        update(false);
        break;
    default:
        break;
    }
}

void scroll_bar::on_theme(const event_info&) {
    min_thumb = std::max(1, get_theme().get<int>(theme_keys::scroll_min_size));
    load_theme_image(arrow, get_theme(), theme_keys::scroll_button_arrow_image);
    update(false);
}

// --- painting -------------------------------------------------------------------------------------

void scroll_bar::draw(drawer& d, const ivec4& area) {
    const nimbit::ui::theme& t = get_theme();
    d.set_brush_color(t.get<vec4>(theme_keys::scroll_back_color));
    d.draw_rect(area);

    const ivec4 thumb = thumb_rect();
    d.set_brush_color(t.get<vec4>(theme_keys::scroll_bar_back_color));
    d.draw_rect(thumb);
    d.set_pen_color(t.get<vec4>(theme_keys::scroll_bar_line_color), 1.0f);
    d.draw_rect_border(thumb);

    if (!draw_buttons)
        return;
    for (bool at_end : {false, true}) {
        const ivec4 b = button_rect(at_end);
        d.set_brush_color(t.get<vec4>(theme_keys::scroll_button_back_color));
        d.draw_rect(b);
        const vec4 line = t.get<vec4>(theme_keys::scroll_button_line_color);
        d.set_pen_color(line, 1.0f);
        d.draw_rect_border(b);
        if (arrow.is_loaded()) {
            const _vec2<int> size = frame_size(arrow, 1);
            d.draw_image({b.x + (b.w - size.x) / 2, b.y + (b.h - size.y) / 2, size.x, size.y}, arrow,
                         frame_source(arrow, 1, 0), false);
            continue;
        }
        // A small triangle pointing away from the track.
        const int cx = b.x + b.w / 2, cy = b.y + b.h / 2, r = std::max(2, std::min(b.w, b.h) / 5);
        std::vector<_vec2<int>> tri;
        if (type == scroll_type::vertical)
            tri = at_end ? std::vector<_vec2<int>>{{cx - r, cy - r / 2},
                                                   {cx + r, cy - r / 2},
                                                   {cx, cy + r / 2 + 1}}
                         : std::vector<_vec2<int>>{
                               {cx - r, cy + r / 2}, {cx + r, cy + r / 2}, {cx, cy - r / 2 - 1}};
        else
            tri = at_end ? std::vector<_vec2<int>>{{cx - r / 2, cy - r},
                                                   {cx - r / 2, cy + r},
                                                   {cx + r / 2 + 1, cy}}
                         : std::vector<_vec2<int>>{
                               {cx + r / 2, cy - r}, {cx + r / 2, cy + r}, {cx - r / 2 - 1, cy}};
        d.set_brush_color(line);
        d.draw_geometry(tri);
    }
}

} // namespace nimbit::ui
