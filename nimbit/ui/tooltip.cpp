#include "nimbit/ui/tooltip.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/theme_keys.h"

#include <algorithm>

namespace nimbit::ui {

void tooltip::create_tip(window* parent) {
    create("", {0, 0, 1, 1}, window_style_borderless | window_style_floating, parent);
    event_manager::instance().add_event(&get_root(), this, event_type::draw, &tooltip::draw);
}

_vec2<int> tooltip::measure(std::string_view s, bool is_title) {
    if (s.empty())
        return {};
    const theme& t = get_root().get_theme();
    drawer& d = get_drawer();
    if (is_title)
        d.set_text_font(t.get<std::string>(theme_keys::tooltip_title_font_name),
                        t.get<float>(theme_keys::tooltip_title_font_size),
                        t.get<font_weight>(theme_keys::tooltip_title_font_weight),
                        t.get<font_style>(theme_keys::tooltip_title_font_style));
    else
        d.set_text_font(t.get<std::string>(theme_keys::tooltip_font_name),
                        t.get<float>(theme_keys::tooltip_font_size),
                        t.get<font_weight>(theme_keys::tooltip_font_weight),
                        t.get<font_style>(theme_keys::tooltip_font_style));
    return d.calc_text_size(s, {max_text_width, 0});
}

void tooltip::show(_vec2<int> screen_pos, std::string_view new_title, std::string_view new_text) {
    if (!is_created())
        create_tip(nullptr);
    title = new_title;
    text = new_text;
    title_size = measure(title, true);
    text_size = measure(text, false);
    const int gap = title.empty() || text.empty() ? 0 : padding / 2;
    const int w = std::max(title_size.x, text_size.x) + 2 * padding;
    const int h = title_size.y + gap + text_size.y + 2 * padding;
    set_rect({screen_pos.x, screen_pos.y, w, h});
    force_in_screen();
    get_root().update(false);
    show_no_focus();
}

void tooltip::draw(const event_info&) {
    const theme& t = get_root().get_theme();
    drawer& d = get_drawer();
    const ivec4 r{0, 0, get_root().get_rect().w, get_root().get_rect().h};
    d.set_brush_color(t.get<vec4>(theme_keys::tooltip_back_color));
    d.draw_rect(r);
    // An outer dark frame and an inner light one.
    d.set_pen_color(t.get<vec4>(theme_keys::tooltip_border_color_1), 1.0f);
    d.draw_rect_border(r);
    d.set_pen_color(t.get<vec4>(theme_keys::tooltip_border_color), 1.0f);
    d.draw_rect_border({1, 1, r.w - 2, r.h - 2});
    d.set_text_format(text_align::left, text_valign::top);
    int y = padding;
    if (!title.empty()) {
        d.set_text_font(t.get<std::string>(theme_keys::tooltip_title_font_name),
                        t.get<float>(theme_keys::tooltip_title_font_size),
                        t.get<font_weight>(theme_keys::tooltip_title_font_weight),
                        t.get<font_style>(theme_keys::tooltip_title_font_style));
        d.set_text_color(t.get<vec4>(theme_keys::tooltip_title_font_color));
        d.draw_text({padding, y, title_size.x + 1, title_size.y}, title);
        y += title_size.y + padding / 2;
    }
    if (!text.empty()) {
        d.set_text_font(t.get<std::string>(theme_keys::tooltip_font_name),
                        t.get<float>(theme_keys::tooltip_font_size),
                        t.get<font_weight>(theme_keys::tooltip_font_weight),
                        t.get<font_style>(theme_keys::tooltip_font_style));
        d.set_text_color(t.get<vec4>(theme_keys::tooltip_font_color));
        d.draw_text({padding, y, text_size.x + 1, text_size.y}, text);
    }
}

} // namespace nimbit::ui
