#include "nimbit/ui/showcase.h"

#include "nimbit/ui/showcase_controls.h"
#include "nimbit/ui/window.h"

#include <string>

namespace nimbit::ui {

namespace {

// A small PNG made on the spot: a colour ramp with a frame, so scaling and placement show.
std::vector<unsigned char> sample_picture() {
    bitmap b;
    if (!b.create({96, 64}, image_alpha::alpha))
        return {};
    bitmap_data data = b.lock();
    for (int y = 0; y < data.size.y && data.bits; ++y)
        for (int x = 0; x < data.size.x; ++x) {
            unsigned char* p = data.bits + static_cast<size_t>(y) * data.pitch + static_cast<size_t>(x) * 4;
            const bool frame = x < 2 || y < 2 || x >= data.size.x - 2 || y >= data.size.y - 2;
            p[0] = frame ? 255 : static_cast<unsigned char>(x * 255 / data.size.x);
            p[1] = frame ? 255 : static_cast<unsigned char>(y * 255 / data.size.y);
            p[2] = frame ? 255 : 160;
            p[3] = 255;
        }
    b.unlock(data);
    return b.save_image_stream(image_format::png);
}

// Keeps the widget at its distances from all four edges of its parent.
void stretch(widget& w) {
    const ivec4 r = w.get_rect();
    const _vec2<int> parent = w.get_parent()->get_size();
    w.set_anchor(anchor_type::left, r.x);
    w.set_anchor(anchor_type::top, r.y);
    w.set_anchor(anchor_type::right, parent.x - r.x - r.w);
    w.set_anchor(anchor_type::bottom, parent.y - r.y - r.h);
}

} // namespace

showcase::showcase(window& w) : parts(std::make_unique<showcase_controls>()) {
    showcase_controls& c = *parts;
    widget& root = w.get_root();
    const _vec2<int> size = root.get_size();
    const vec4 panel_color{0.114f, 0.118f, 0.133f, 1.0f};
    const vec4 field_color{0.071f, 0.071f, 0.075f, 1.0f};

    c.background.create(root, {0, 0, size.x, size.y});
    stretch(c.background);
    c.background.set_background(panel_color);

    c.column.create(c.background, {12, 12, size.x - 24, size.y - 24});
    stretch(c.column);

    c.title.create(c.column, {0, 0, 0, 24});
    c.title.set_html_text("<html><body><font size=\"16\" weight=\"bold\">Controls</font> "
                          "<font style=\"italic\">one of each</font></body></html>");
    c.column.add_span(6);

    c.search.create(c.column, {0, 0, 0, 26});
    c.search.set_background(field_color);
    c.search.set_default_text("Search effects");
    c.search.set_text("Gaussian Blur");
    c.column.add_span(6);
    c.password.create(c.column, {0, 0, 0, 26});
    c.password.set_background(field_color);
    c.password.set_type_password(true);
    c.password.set_text("secret");
    c.column.add_span(8);

    c.row.create(c.column, {0, 0, 0, 26});
    c.button.create(c.row, {0, 0, 90, 26});
    c.button.set_text("Apply");
    c.row.add_span(8);
    c.toggle.create(c.row, {0, 0, 90, 26});
    c.toggle.set_text("Favorite");
    c.toggle.set_toggle_mode(true);
    c.toggle.set_toggled(true);
    c.row.add_span(12);
    c.check.create(c.row, {0, 0, 150, 26});
    c.check.set_text("Full resolution");
    c.check.set_pointer(&c.check_value);
    c.row.add_flex();
    c.drop_down.create(c.row, {0, 0, 120, 26});
    c.drop_down.add_items("Dark|Light|-|System");
    c.drop_down.set_pointer(&c.theme_choice, false);
    c.column.add_span(10);

    const int split_height = std::max(60, c.column.get_rect().h - c.column.get_min_size());
    c.split.create(c.column, {0, 0, 0, split_height});
    c.column.set_flex(&c.split, true);
    c.split.get_panel_a().set_background(field_color);
    c.split.get_panel_b().set_background(field_color);
    c.split.set_minimum_size(80, 80);
    c.split.set_split_bar(0.5f);

    generic_panel& left = c.split.get_panel_a();
    c.image.create(left, {0, 0, left.get_rect().w, left.get_rect().h});
    stretch(c.image);
    c.image.set_background(field_color);
    const std::vector<unsigned char> png = sample_picture();
    c.image.set_image(png.data(), png.size());

    generic_panel& right = c.split.get_panel_b();
    const int bar = 14;
    c.list_view.create(right, {0, 0, right.get_rect().w - bar, right.get_rect().h});
    stretch(c.list_view);
    c.list_view.set_background(field_color);
    const int line_height = 20;
    c.list.create(c.list_view,
                  {0, 0, c.list_view.get_rect().w, line_height * static_cast<int>(c.lines.size())});
    c.list.set_anchor(anchor_type::left, 0);
    c.list.set_anchor(anchor_type::right, 0);
    c.list.set_background(field_color);
    for (size_t i = 0; i < c.lines.size(); ++i) {
        text_label& line = c.lines[i];
        line.create(c.list, {6, static_cast<int>(i) * line_height, c.list.get_rect().w - 12, line_height});
        line.set_anchor(anchor_type::left, 6);
        line.set_anchor(anchor_type::right, 6);
        line.set_text("Effect " + std::to_string(i + 1));
    }
    c.scroll.create(right, {right.get_rect().w - bar, 0, bar, right.get_rect().h});
    c.scroll.set_anchor(anchor_type::right, 0);
    c.scroll.set_anchor(anchor_type::top, 0);
    c.scroll.set_anchor(anchor_type::bottom, 0);
    c.scroll.set_step(line_height);
    c.scroll.set_scroll_panel(&c.list);
    c.scroll.add_wheel_area(c.list_view);
    c.scroll.set_value(line_height);
}

showcase::~showcase() = default;

std::unique_ptr<showcase> build_showcase(window& w) {
    return std::make_unique<showcase>(w);
}

} // namespace nimbit::ui
