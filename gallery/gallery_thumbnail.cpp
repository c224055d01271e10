#include "gallery/gallery_thumbnail.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/ui_colors.h"

#include <utility>

using namespace nimbit;
using namespace nimbit::ui;

GalleryThumbnail::GalleryThumbnail(const UIColors* colours, file_path capture, int64_t stamp)
    : colours(colours), path(std::move(capture)), stamp(stamp) {
    set_name("GalleryThumbnail");
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &GalleryThumbnail::Draw);
    ev.add_event(this, this, event_type::create, [this](const event_info&) {
        corner.create(*this, {0, 0, CornerSize, CornerSize});
        PlaceCorner();
        corner.hide();
        SetColors(this->colours);
    });
    ev.add_event(this, this, event_type::resize, [this](const event_info&) { PlaceCorner(); });
    for (event_object* source : {static_cast<event_object*>(this), static_cast<event_object*>(&corner)})
        for (event_type t : {event_type::mouse_enter, event_type::mouse_leave, event_type::mouse_move})
            ev.add_event(source, this, t, [this](const event_info&) { TrackPointer(); });
    ev.add_event(&corner, this, event_type::pressed, [this](const event_info&) {
        event_manager::instance().fire_event(this, event_type::custom, CornerCode);
    });
    ev.add_event(this, this, event_type::mouse_dbl_click, [this](const event_info& e) {
        if (e.data == static_cast<uint64_t>(mouse::button::left))
            event_manager::instance().fire_event(this, event_type::custom, OpenCode);
    });
}

GalleryThumbnail::~GalleryThumbnail() = default;

void GalleryThumbnail::SetColors(const UIColors* c) {
    colours = c;
    cornerStyled = false;
    if (corner.is_visible(false))
        StyleCorner();
    update(false);
}

// The icon is decoded when the button first shows: thousands of tiles must not each decode it.
void GalleryThumbnail::StyleCorner() {
    if (colours == nullptr || cornerStyled)
        return;
    cornerStyled = true;
    nimbit::ui::theme& t = corner.get_theme();
    t.set(theme_keys::button_color_normal, colours->listBack);
    t.set(theme_keys::button_color_hover, colours->listBack);
    t.set(theme_keys::button_back_image, colours->galleryRemoveIcon);
}

void GalleryThumbnail::SetStamp(int64_t newStamp) {
    if (newStamp == stamp)
        return;
    stamp = newStamp;
    DropImage();
}

void GalleryThumbnail::SetImage(bitmap picture) {
    image = std::move(picture);
    arrived = true;
    update(false);
}

void GalleryThumbnail::DropImage() {
    if (!arrived && !image.is_loaded())
        return;
    image.unload();
    arrived = false;
    update(false);
}

void GalleryThumbnail::SetSelected(bool on) {
    if (on == selected)
        return;
    selected = on;
    update(false);
}

void GalleryThumbnail::PlaceCorner() {
    const ivec4& r = get_rect();
    corner.set_rect({r.w - CornerInset, r.h - CornerInset, CornerSize, CornerSize});
}

void GalleryThumbnail::TrackPointer() {
    const ivec2 p = mouse::get_position(this);
    const ivec4& r = get_rect();
    const bool over = p.x >= 0 && p.y >= 0 && p.x < r.w && p.y < r.h;
    if (over == corner.is_visible(false))
        return;
    if (over)
        StyleCorner();
    corner.show(over);
}

void GalleryThumbnail::Draw(drawer& d, const ivec4& area) {
    if (colours == nullptr)
        return;
    d.set_brush_color(colours->listBack);
    d.draw_rect(area);
    if (image.is_loaded())
        d.draw_image(area, image, true);
    if (selected) {
        d.set_pen_color(colours->inputSelection, 1.0f);
        d.draw_rect_border(area);
    }
}
