#include "preferences/preferences_effect_drag.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/window.h"
#include "popup/ui_colors.h"

using namespace nimbit;
using namespace nimbit::ui;

PreferencesEffectDrag::PreferencesEffectDrag() {
    set_name("PreferencesEffectDrag");
    set_mouse_transparent(true);
    event_manager::instance().add_event(this, this, event_type::draw, &PreferencesEffectDrag::Draw);
}

PreferencesEffectDrag::~PreferencesEffectDrag() = default;

void PreferencesEffectDrag::SetText(std::string_view name) {
    text = name;
    update(false);
}

void PreferencesEffectDrag::SetColours(const UIColors* c) {
    colours = c;
    update(false);
}

void PreferencesEffectDrag::Draw(const event_info&) {
    window* w = get_window();
    if (w == nullptr || colours == nullptr)
        return;
    drawer& d = w->get_drawer();
    const ivec4& r = get_rect();
    d.set_brush_color(colours->buttonBackHover);
    d.draw_rect({0, 0, r.w, r.h});
    d.set_pen_color(EffectHighlightColor);
    d.draw_rect_border({0, 0, r.w, r.h});
    d.set_text_font("Arial", 13);
    d.set_text_format(text_align::left, text_valign::center);
    d.set_text_color(colours->rowText);
    d.draw_text({8, 0, r.w - 16, r.h}, text);
}
