#include "nimbit/ui/split_panel.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

#include <algorithm>
#include <cmath>

namespace nimbit::ui {

split_panel::split_panel(split_type type) : type(type) {
    set_name("SplitPanel");
    pane_1.set_name("PanelA");
    pane_2.set_name("PanelB");
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &split_panel::draw);
    ev.add_event(this, this, event_type::create, &split_panel::on_create);
    ev.add_event(this, this, event_type::resize, &split_panel::on_resize);
    ev.add_event(this, this, event_type::theme_changed, &split_panel::on_theme);
    // Anchoring changes the size without a resize event, and only after parent_resize: apply the
    // anchors first so the panes follow.
    ev.add_event(this, this, event_type::parent_resize, [this](const event_info& e) {
        if (const widget* parent = get_parent()) {
            const ivec4 before = get_rect();
            update_anchor(parent->get_size());
            if (get_rect().size() != before.size())
                on_resize(e);
        }
    });
    for (event_type t : {event_type::mouse_down, event_type::mouse_up, event_type::mouse_move,
                         event_type::mouse_enter, event_type::mouse_leave})
        ev.add_event(this, this, t, &split_panel::on_mouse);
}

split_panel::~split_panel() {
    release_capture(*this);
}

int split_panel::length() const {
    return type == split_type::side_by_side ? get_rect().w : get_rect().h;
}

void split_panel::on_create(const event_info& e) {
    on_theme(e);
    pane_1.create(*this, {});
    pane_2.create(*this, {});
    position = static_cast<int>(std::lround(room() * ratio));
    size_b = room() - position;
    layout();
}

void split_panel::on_theme(const event_info&) {
    thickness = std::max(0, get_theme().get<int>(theme_keys::splitpanel_split_thickness));
    if (pane_1.is_created())
        place(position);
    update(false);
}

void split_panel::on_resize(const event_info&) {
    if (lock_a)
        place(position);
    else if (lock_b)
        place(room() - size_b);
    else
        place(static_cast<int>(std::lround(room() * ratio)));
}

void split_panel::place(int new_position) {
    position = std::clamp(new_position, 0, room());
    check_minimum_size();
}

void split_panel::check_minimum_size() {
    const int r = room();
    position = std::clamp(position, std::min(min_a, r), std::max(0, r - min_b));
    position = std::clamp(position, std::min(min_a, r), r);
    if (!lock_b)
        size_b = r - position;
    if (!lock_a && !lock_b && r > 0)
        ratio = static_cast<float>(position) / static_cast<float>(r);
    layout();
}

void split_panel::layout() {
    if (!pane_1.is_created())
        return;
    generic_panel& a = get_panel_a();
    generic_panel& b = get_panel_b();
    const ivec4 r = get_rect();
    const int rest = std::max(0, room() - position);
    if (type == split_type::side_by_side) {
        a.set_rect({0, 0, position, r.h});
        b.set_rect({position + thickness, 0, rest, r.h});
    } else {
        a.set_rect({0, 0, r.w, position});
        b.set_rect({0, position + thickness, r.w, rest});
    }
    update(false);
}

void split_panel::set_split_bar(float new_ratio) {
    if (!std::isfinite(new_ratio))
        return;
    ratio = std::clamp(new_ratio, 0.0f, 1.0f);
    position = static_cast<int>(std::lround(room() * ratio));
    const float kept = ratio;
    check_minimum_size();
    if (position == static_cast<int>(std::lround(room() * kept)))
        ratio = kept;
}

void split_panel::set_size_panel_a(int pixels) {
    place(pixels);
}

void split_panel::set_size_panel_b(int pixels) {
    const bool was_locked = lock_b;
    lock_b = false; // let check_minimum_size record B's new length
    place(room() - std::max(0, pixels));
    lock_b = was_locked;
}

void split_panel::lock_size_panel_a(bool on) {
    lock_a = on;
    if (on)
        lock_b = false;
}

void split_panel::lock_size_panel_b(bool on) {
    lock_b = on;
    if (on) {
        lock_a = false;
        size_b = room() - position;
    }
}

void split_panel::swap_panels() {
    swapped = !swapped;
    // The panes keep their lengths: the bar moves to where B ended.
    const int old_b = room() - position;
    std::swap(lock_a, lock_b);
    std::swap(min_a, min_b);
    place(old_b);
}

void split_panel::set_type(split_type new_type) {
    if (new_type == type)
        return;
    type = new_type;
    place(static_cast<int>(std::lround(room() * ratio)));
}

void split_panel::set_minimum_size(int panel_a, int panel_b) {
    min_a = std::max(0, panel_a);
    min_b = std::max(0, panel_b);
    check_minimum_size();
}

ivec4 split_panel::bar_rect() const {
    const ivec4 r = get_rect();
    if (type == split_type::side_by_side)
        return {position, 0, thickness, r.h};
    return {0, position, r.w, thickness};
}

void split_panel::on_mouse(const event_info& e) {
    const cursor resize_cursor =
        type == split_type::side_by_side ? cursor::resize_horizontal : cursor::resize_vertical;
    const _vec2<int> p = mouse::get_position(this);
    const int at = type == split_type::side_by_side ? p.x : p.y;
    switch (e.type) {
    case event_type::mouse_enter:
        mouse::set_cursor(resize_cursor);
        break;
    case event_type::mouse_leave:
        if (!dragging)
            mouse::set_cursor(cursor::arrow);
        break;
    case event_type::mouse_down:
        if (e.data != static_cast<uint32_t>(mouse::button::left) || !bar_rect().contains(p))
            return;
        dragging = true;
        drag_offset = at - position;
        mouse::capture_widget(*this);
        break;
    case event_type::mouse_move:
        if (!dragging)
            return;
        if (const int old = position; (place(at - drag_offset), position != old))
            event_manager::instance().fire_event(this, event_type::value_changed,
                                                 static_cast<uint32_t>(position));
        break;
    case event_type::mouse_up:
        dragging = false;
        release_capture(*this);
        break;
    default:
        break;
    }
}

void split_panel::draw(drawer& d, const ivec4&) {
    const nimbit::ui::theme& t = get_theme();
    const ivec4 bar = bar_rect();
    d.set_brush_color(t.get<vec4>(theme_keys::splitpanel_back_color));
    d.draw_rect(bar);
    if (bar.w <= 0 || bar.h <= 0)
        return;
    // A line along each edge of the bar and a grip of three dots in its middle.
    const bool vertical_bar = type == split_type::side_by_side;
    d.set_pen_color(t.get<vec4>(theme_keys::splitpanel_border_color_1), 1.0f);
    if (vertical_bar)
        d.draw_line({bar.x, 0}, {bar.x, bar.h});
    else
        d.draw_line({0, bar.y}, {bar.w, bar.y});
    d.set_pen_color(t.get<vec4>(theme_keys::splitpanel_border_color_2), 1.0f);
    if (vertical_bar)
        d.draw_line({bar.x + bar.w - 1, 0}, {bar.x + bar.w - 1, bar.h});
    else
        d.draw_line({0, bar.y + bar.h - 1}, {bar.w, bar.y + bar.h - 1});
    d.set_brush_color(t.get<vec4>(theme_keys::splitpanel_mark_color));
    const _vec2<int> mid{bar.x + bar.w / 2, bar.y + bar.h / 2};
    for (int k = -1; k <= 1; ++k) {
        const _vec2<int> c =
            vertical_bar ? _vec2<int>{mid.x, mid.y + k * 5} : _vec2<int>{mid.x + k * 5, mid.y};
        d.draw_circle(c, 1.0f);
    }
}

} // namespace nimbit::ui
