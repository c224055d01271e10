#include "gallery/gallery_buttons.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/image_frames.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/ui_colors.h"

#include <algorithm>
#include <string>
#include <utility>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr float CounterFontSize = 12.0f;
constexpr int CounterGap = 4;

// The base button paints the plate and the focus ring; the icons carry their own hover and pressed
// looks, so the plate stays the window's colour in every state.
void StyleButton(generic_button& b, const UIColors& c) {
    nimbit::ui::theme& t = b.get_theme();
    t.set(theme_keys::button_color_normal, c.windowBack);
    t.set(theme_keys::button_color_hover, c.windowBack);
    t.set(theme_keys::button_color_toggle, c.windowBack);
    t.set(theme_keys::button_border_color_normal, c.windowBack);
    t.set(theme_keys::button_border_color_hover, c.windowBack);
    t.set(theme_keys::button_border_color_focus, c.buttonBorderFocus);
    t.set(theme_keys::button_font_name, "tahoma");
    t.set(theme_keys::button_font_size, CounterFontSize);
    t.set(theme_keys::button_font_color, c.buttonFontNumbers);
    t.set(theme_keys::button_font_color_hover, c.buttonFontHover);
    t.set(theme_keys::button_font_color_pressed, c.buttonFontPressed);
}

// Returns the stream's frame count, or 1 with the bitmap empty when it does not load.
int LoadIcon(bitmap& image, const image_stream& stream) {
    image.unload();
    if (stream.empty() || !image.load_image(stream))
        return 1;
    return std::max<int>(1, stream.frames);
}

// The frame for the button's state (normal, hover, pressed), at its own size inside `place`, centred.
void DrawIcon(drawer& d, const generic_button& b, const bitmap& image, int frames, const ivec4& place) {
    if (!image.is_loaded())
        return;
    const bool hover = b.is_live() && b.is_hovered();
    const int frame = std::min(hover && b.is_pushed() ? 2 : hover ? 1 : 0, frames - 1);
    const ivec2 size = frame_size(image, frames);
    d.draw_image({place.x + (place.w - size.x) / 2, place.y + (place.h - size.y) / 2, size.x, size.y}, image,
                 frame_source(image, frames, frame), false);
}

} // namespace

GalleryButton::GalleryButton(const UIColors* colours, const image_stream UIColors::*icon, std::string caption)
    : colours(nullptr), icon(icon), caption(std::move(caption)) {
    set_name("GalleryButton");
    add_paint_handler(*this, &GalleryButton::Draw);
    SetColors(colours);
}

GalleryButton::~GalleryButton() = default;

void GalleryButton::SetColors(const UIColors* next) {
    colours = next;
    if (colours == nullptr)
        return;
    StyleButton(*this, *colours);
    // Setting the theme has already asked for a repaint.
    iconFrames = LoadIcon(iconImage, icon != nullptr ? colours->*icon : image_stream{});
}

void GalleryButton::set_counter(uint32_t count) {
    if (count == counter)
        return;
    counter = count;
    update(false);
}

// The icon keeps a square at the left; the caption and the count follow it.
void GalleryButton::Draw(drawer& d, const ivec4& area) {
    const int side = std::min(area.w, area.h);
    DrawIcon(d, *this, iconImage, iconFrames, {0, 0, side, area.h});
    std::string label = caption;
    if (counter > 0)
        label += (label.empty() ? "" : " ") + std::to_string(counter);
    if (label.empty() || area.w <= side)
        return;
    const nimbit::ui::theme& t = get_theme();
    const bool hover = is_live() && is_hovered();
    set_theme_font(d, t, "button_");
    d.set_text_color(t.get<vec4>(hover && is_pushed() ? theme_keys::button_font_color_pressed
                                 : hover              ? theme_keys::button_font_color_hover
                                                      : theme_keys::button_font_color));
    d.set_text_format(text_align::left, text_valign::center);
    const ivec4 text{side + CounterGap, 0, area.w - side - CounterGap, area.h};
    d.draw_clipped_text(text, text, label);
}

SwapButton::SwapButton(const UIColors* colours) : colours(nullptr) {
    set_name("SwapButton");
    add_paint_handler(*this, &SwapButton::Draw);
    SetColors(colours);
}

SwapButton::~SwapButton() = default;

void SwapButton::SetColors(const UIColors* next) {
    colours = next;
    if (colours == nullptr)
        return;
    StyleButton(*this, *colours);
    iconFrames = LoadIcon(iconImage, colours->galleryPanelSwap);
}

void SwapButton::Draw(drawer& d, const ivec4& area) {
    DrawIcon(d, *this, iconImage, iconFrames, area);
}
