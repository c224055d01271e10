#include "popup/parts/effects_scroll_bar.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"
#include "popup/ui_colors.h"

using namespace nimbit;
using namespace nimbit::ui;

EffectsScrollBar::EffectsScrollBar() : scroll_bar(scroll_type::vertical, false) {
    set_name("EffectsScrollBar");
    // Registered after the toolkit's own painter, so this look is what stays on screen.
    event_manager::instance().add_event(this, this, event_type::draw, &EffectsScrollBar::Draw);
}

EffectsScrollBar::~EffectsScrollBar() = default;

void EffectsScrollBar::SwitchTheme(UIColors const* colours) {
    if (colours == nullptr)
        return;
    track = colours->scrollTrack;
    thumb = colours->scrollThumb;
    nimbit::ui::theme& t = get_theme();
    t.set(theme_keys::scroll_bar_back_color, colours->scrollThumb);
    t.set(theme_keys::scroll_back_color, colours->scrollTrack);
    update(false);
}

void EffectsScrollBar::Draw(const event_info&) {
    window* w = get_window();
    if (w == nullptr)
        return;
    drawer& d = w->get_drawer();
    draw_background(d);
    draw_bar(d);
}

void EffectsScrollBar::draw_background(drawer& d) {
    d.set_brush_color(track);
    d.draw_rect({0, 0, get_rect().w, get_rect().h});
}

void EffectsScrollBar::draw_bar(drawer& d) {
    const ivec4 t = thumb_rect();
    if (t.w <= 0 || t.h <= 0)
        return;
    d.set_brush_color(thumb);
    d.draw_rect({t.x + 4, t.y + 2, t.w - 8, t.h - 4});
}
