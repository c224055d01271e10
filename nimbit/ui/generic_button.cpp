#include "nimbit/ui/generic_button.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/image_frames.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

#include <algorithm>

namespace nimbit::ui {

generic_button::generic_button() {
    set_name("Button");
    set_tab_stop(true);
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &generic_button::draw);
    ev.add_event(this, this, event_type::theme_changed, &generic_button::on_theme);
    ev.add_event(this, this, event_type::create, &generic_button::on_theme);
    for (event_type t : {event_type::mouse_enter, event_type::mouse_leave, event_type::mouse_down,
                         event_type::mouse_dbl_click, event_type::mouse_up, event_type::mouse_move})
        ev.add_event(this, this, t, &generic_button::on_mouse);
    ev.add_event(this, this, event_type::key_down, &generic_button::on_key);
    ev.add_event(this, this, event_type::focus_gained, [this](const event_info&) { update(false); });
    ev.add_event(this, this, event_type::focus_lost, [this](const event_info&) { update(false); });
}

generic_button::~generic_button() {
    release_capture(*this);
}

void generic_button::set_text(std::string_view utf8) {
    text = utf8;
    update(false);
}

void generic_button::set_toggled(bool on) {
    toggled = on;
    update(false);
}

void generic_button::force_hover(bool on) {
    forced_hover = on;
    update(false);
}

void generic_button::press() {
    if (toggle_mode)
        toggled = !toggled;
    update(false);
    event_manager::instance().fire_event(this, event_type::pressed, toggled ? 1 : 0);
}

void generic_button::on_theme(const event_info&) {
    image_frames = std::max(1, load_theme_image(image, get_theme(), theme_keys::button_back_image));
    update(false);
}

void generic_button::on_mouse(const event_info& e) {
    if (e.type == event_type::mouse_dbl_click) {
        // The release that ends a double click is never delivered: the second click counts now.
        press();
        return;
    }
    if (clicks.on_mouse(*this, e))
        press();
}

void generic_button::on_key(const event_info& e) {
    if (e.data == 13 || e.data == ' ')
        press();
}

void generic_button::draw(drawer& d, const ivec4& area) {
    const nimbit::ui::theme& t = get_theme();
    const bool hover = is_hovered();

    d.set_brush_color(t.get<vec4>(toggled ? theme_keys::button_color_toggle
                                  : hover ? theme_keys::button_color_hover
                                          : theme_keys::button_color_normal));
    d.draw_rect(area);

    if (image.is_loaded()) {
        const int frame = std::min(clicks.pushed && hover ? 2 : hover ? 1 : 0, image_frames - 1);
        const _vec2<int> size = frame_size(image, image_frames);
        const ivec4 source = frame_source(image, image_frames, frame);
        if (t.get<bool>(theme_keys::button_back_image_strech))
            d.draw_image(area, image, source, false);
        else
            d.draw_image({(area.w - size.x) / 2, (area.h - size.y) / 2, size.x, size.y}, image, source,
                         false);
    }

    if (!text.empty()) {
        set_theme_font(d, t, "button_");
        d.set_text_color(t.get<vec4>(clicks.pushed && hover ? theme_keys::button_font_color_pressed
                                     : hover                ? theme_keys::button_font_color_hover
                                                            : theme_keys::button_font_color));
        d.set_text_format(text_align::center, text_valign::center);
        d.draw_clipped_text(area, area, text);
    }

    d.set_pen_color(border_color(t, "button_", has_focus(), hover), 1.0f);
    d.draw_rect_border(area);
}

} // namespace nimbit::ui
