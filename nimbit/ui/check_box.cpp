#include "nimbit/ui/check_box.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/image_frames.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

#include <algorithm>

namespace nimbit::ui {

check_box::check_box() {
    set_name("CheckBox");
    set_tab_stop(true);
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &check_box::draw);
    ev.add_event(this, this, event_type::theme_changed, &check_box::on_theme);
    ev.add_event(this, this, event_type::create, &check_box::on_theme);
    for (event_type t : {event_type::mouse_enter, event_type::mouse_leave, event_type::mouse_down,
                         event_type::mouse_up, event_type::mouse_move})
        ev.add_event(this, this, t, &check_box::on_mouse);
    // The release that ends a double click is never delivered: the second click counts now.
    ev.add_event(this, this, event_type::mouse_dbl_click, [this](const event_info&) { toggle(); });
    ev.add_event(this, this, event_type::key_down, [this](const event_info& e) {
        if (e.data == ' ')
            toggle();
    });
    ev.add_event(this, this, event_type::focus_gained, [this](const event_info&) { update(false); });
    ev.add_event(this, this, event_type::focus_lost, [this](const event_info&) { update(false); });
}

check_box::~check_box() {
    release_capture(*this);
}

void check_box::set_selected(bool on, bool notify) {
    selected = on;
    if (bound)
        *bound = on;
    update(false);
    if (notify)
        event_manager::instance().fire_event(this, event_type::value_changed, on ? 1 : 0);
}

void check_box::set_pointer(bool* value) {
    if (bound && !value)
        selected = *bound;
    bound = value;
    if (bound)
        selected = *bound;
    update(false);
}

void check_box::toggle() {
    set_selected(!is_selected(), true);
}

void check_box::set_text(std::string_view utf8) {
    text = utf8;
    update(false);
}

void check_box::set_type(check_box_type new_type, int size) {
    type = new_type;
    box_size = std::max(6, size);
    update(false);
}

ivec4 check_box::box_rect() const {
    const int side = std::min(box_size, std::max(0, get_rect().h));
    return {0, (get_rect().h - side) / 2, side, side};
}

void check_box::on_theme(const event_info&) {
    if (const int frames = load_theme_image(image, get_theme(), theme_keys::checkbox_image))
        image_frames = frames;
    update(false);
}

void check_box::on_mouse(const event_info& e) {
    if (clicks.on_mouse(*this, e))
        toggle();
}

void check_box::draw(drawer& d, const ivec4&) {
    const nimbit::ui::theme& t = get_theme();
    const ivec4 box = box_rect();
    const bool on = is_selected();
    const vec4 mark = t.get<vec4>(theme_keys::checkbox_font_color);

    if (image.is_loaded()) {
        const _vec2<int> size = frame_size(image, image_frames);
        d.draw_image({box.x + (box.w - size.x) / 2, box.y + (box.h - size.y) / 2, size.x, size.y}, image,
                     frame_source(image, image_frames, on ? 1 : 0), false);
    } else {
        const vec4 border = border_color(t, "checkbox_", has_focus(), clicks.hovered);
        const float border_width = t.get<float>(theme_keys::checkbox_border_width);
        const _vec2<int> centre{box.x + box.w / 2, box.y + box.h / 2};
        d.set_brush_color(t.get<vec4>(theme_keys::checkbox_back_color));
        d.set_pen_color(border, border_width);
        if (type == check_box_type::round) {
            d.draw_circle(centre, static_cast<float>(box.w) / 2.0f);
            d.draw_circle_border(centre, static_cast<float>(box.w) / 2.0f);
            if (on) {
                d.set_brush_color(mark);
                d.draw_circle(centre, static_cast<float>(box.w) / 4.0f);
            }
        } else {
            d.draw_rect(box);
            d.draw_rect_border(box);
            if (on) {
                // A tick from the left middle down to the bottom third and up to the top right.
                d.set_pen_color(mark, 2.0f);
                d.draw_geometry_border({{box.x + box.w / 4, box.y + box.h / 2},
                                        {box.x + box.w * 5 / 12, box.y + box.h * 3 / 4},
                                        {box.x + box.w * 3 / 4, box.y + box.h / 4}},
                                       false);
            }
        }
    }

    if (!text.empty()) {
        set_theme_font(d, t, "checkbox_");
        d.set_text_color(mark);
        d.set_text_format(text_align::left, text_valign::center);
        const int x = box.x + box.w + 6;
        const ivec4 area{x, 0, std::max(0, get_rect().w - x), get_rect().h};
        d.draw_clipped_text(area, area, text);
    }
}

} // namespace nimbit::ui
