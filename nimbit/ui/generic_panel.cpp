#include "nimbit/ui/generic_panel.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

namespace nimbit::ui {

generic_panel::generic_panel() {
    set_name("Panel");
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &generic_panel::draw);
    ev.add_event(this, this, event_type::theme_changed, [this](const event_info&) { update(false); });
}

generic_panel::~generic_panel() = default;

void generic_panel::draw(drawer& d, const ivec4&) {
    d.set_brush_color(get_theme().get<vec4>(theme_keys::default_back_color));
    d.draw_rect({0, 0, get_rect().w, get_rect().h});
}

} // namespace nimbit::ui
