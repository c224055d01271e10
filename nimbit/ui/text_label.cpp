#include "nimbit/ui/text_label.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/text_markup.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

namespace nimbit::ui {

text_label::text_label() {
    set_name("Label");
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::draw, &text_label::draw);
    ev.add_event(this, this, event_type::theme_changed, &text_label::on_theme);
    ev.add_event(this, this, event_type::create, &text_label::on_theme);
}

text_label::~text_label() = default;

text_full_format text_label::base_format() const {
    const nimbit::ui::theme& t = get_theme();
    text_full_format f;
    f.font_name = t.get<std::string>(theme_keys::label_font_name);
    f.size = t.get<float>(theme_keys::label_font_size);
    f.weight = t.get<font_weight>(theme_keys::label_font_weight);
    f.style = t.get<font_style>(theme_keys::label_font_style);
    return f;
}

void text_label::rebuild() {
    if (html) {
        markup_text parsed = parse_markup(source, base_format());
        text = std::move(parsed.text);
        runs = std::move(parsed.runs);
    } else {
        text = source;
        runs.clear();
    }
    check_size();
    update(false);
}

void text_label::set_text(std::string_view utf8, bool fit_w, bool fit_h) {
    source = utf8;
    html = false;
    fit_width = fit_w;
    fit_height = fit_h;
    rebuild();
}

void text_label::set_html_text(std::string_view markup, bool fit_w, bool fit_h) {
    source = markup;
    html = true;
    fit_width = fit_w;
    fit_height = fit_h;
    rebuild();
}

void text_label::check_size() {
    window* w = get_window();
    if ((!fit_width && !fit_height) || !w || !w->is_created())
        return;
    drawer& d = w->get_drawer();
    const text_full_format f = base_format();
    d.set_text_font(f.font_name, f.size, f.weight, f.style);
    ivec4 r = get_rect();
    const _vec2<int> size = d.calc_text_size(text, {fit_width ? 0 : r.w, 0}, runs);
    if (fit_width)
        r.w = size.x + 2; // the text box starts a pixel in, and keep one spare at the right
    if (fit_height)
        r.h = size.y;
    if (r != get_rect())
        set_rect(r);
}

void text_label::on_theme(const event_info&) {
    rebuild();
}

void text_label::draw(const event_info&) {
    window* w = get_window();
    if (!w || text.empty())
        return;
    drawer& d = w->get_drawer();
    const nimbit::ui::theme& t = get_theme();
    const text_full_format f = base_format();
    d.set_text_font(f.font_name, f.size, f.weight, f.style);
    d.set_text_color(t.get<vec4>(theme_keys::label_font_color));
    d.set_text_format(t.get<text_align>(theme_keys::label_text_align),
                      t.get<text_valign>(theme_keys::label_text_valign));
    const ivec4 area{0, 0, get_rect().w, get_rect().h};
    d.draw_clipped_text(area, area, text, runs);
}

} // namespace nimbit::ui
