#include "gallery/gallery_info_popup.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/ui_colors.h"

#include <algorithm>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr float FontSize = 13.0f;
constexpr int PaddingX = 24, PaddingY = 14;
constexpr int MinWidth = 200;

} // namespace

GalleryInfoPopup::GalleryInfoPopup(window* parent, const UIColors* colours)
    : colours(colours), parentWindow(parent) {
    create("", {0, 0, MinWidth, 2 * PaddingY}, window_style_borderless | window_style_floating, parent);
    event_manager::instance().add_event(&get_root(), this, event_type::draw, [this](const event_info&) {
        const ivec4 r = get_root().get_rect();
        Draw(get_drawer(), {0, 0, r.w, r.h});
    });
}

GalleryInfoPopup::~GalleryInfoPopup() = default;

void GalleryInfoPopup::ShowText(const std::string& next) {
    text = next;
    drawer& d = get_drawer();
    d.set_text_font("tahoma", FontSize);
    const ivec2 size = d.calc_text_size(text);
    const int w = std::max(MinWidth, size.x + 2 * PaddingX), h = size.y + 2 * PaddingY;
    ivec4 over = get_rect();
    if (parentWindow != nullptr && parentWindow->is_created())
        over = parentWindow->get_client_rect();
    set_rect({over.x + (over.w - w) / 2, over.y + (over.h - h) / 2, w, h});
    // The caller blocks right after this: paint now, the event loop will not run until it is done.
    show_no_focus();
    get_root().update(true);
}

void GalleryInfoPopup::HideText() {
    hide();
}

void GalleryInfoPopup::Draw(drawer& d, const ivec4& area) {
    const vec4 back = colours != nullptr
                          ? colours->messageBack
                          : get_root().get_theme().get<vec4>(theme_keys::message_popup_back_color);
    const vec4 font = colours != nullptr ? colours->messageFont : vec4{1, 1, 1, 1};
    d.set_brush_color(back);
    d.draw_rect(area);
    if (colours != nullptr) {
        d.set_pen_color(colours->borderColor, 1.0f);
        d.draw_rect_border(area);
    }
    d.set_text_font("tahoma", FontSize);
    d.set_text_color(font);
    d.set_text_format(text_align::center, text_valign::center);
    d.draw_text(area, text);
}
