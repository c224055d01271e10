#include "nimbit/ui/input_box.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

namespace nimbit::ui {

input_box::input_box() : inside(*this) {
    set_name("InputBox");
    set_tab_stop(true);
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::create, &input_box::on_create);
    ev.add_event(this, this, event_type::focus_gained, &input_box::on_focus);
    ev.add_event(this, this, event_type::theme_changed, &input_box::on_theme);
    add_paint_handler(*this, &input_box::draw);
}

input_box::~input_box() = default;

void input_box::on_create(const event_info&) {
    // The panel places itself inside the margins once it has a parent.
    inside.create(*this, {0, 0, get_rect().w, get_rect().h});
}

// A click on the frame, or Tab, lands on the box: the typing goes to the panel.
void input_box::on_focus(const event_info& e) {
    if (inside.is_created())
        inside.focus(static_cast<focus_cause>(e.data));
}

void input_box::on_theme(const event_info& e) {
    // The panel reads the box's keys: let it pick up fonts, colours and margins.
    event_manager::instance().fire_event(&inside, event_type::theme_changed, e.data);
    update(false);
}

void input_box::draw(drawer& d, const ivec4& area) {
    const nimbit::ui::theme& t = get_theme();
    d.set_brush_color(t.get<vec4>(theme_keys::default_back_color));
    d.draw_rect(area);
    d.set_pen_color(t.get<vec4>(theme_keys::input_border_color), 1.0f);
    d.draw_rect_border(area);
}

} // namespace nimbit::ui
