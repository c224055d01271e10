#include "nimbit/ui/image_panel.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/native_bitmap.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

#include <algorithm>
#include <cmath>

namespace nimbit::ui {

image_panel::image_panel() {
    set_name("ImagePanel");
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &image_panel::draw);
    ev.add_event(this, this, event_type::theme_changed, [this](const event_info&) { update(false); });
    ev.add_event(this, this, event_type::mouse_wheel, &image_panel::on_wheel);
    for (event_type t : {event_type::mouse_down, event_type::mouse_up, event_type::mouse_move})
        ev.add_event(this, this, t, &image_panel::on_mouse);
}

image_panel::~image_panel() {
    release_capture(*this);
}

bool image_panel::set_image(const unsigned char* bytes, unsigned long length) {
    if (!bytes || length == 0)
        return false;
    bitmap next;
    if (!next.load_image(bytes, length))
        return false;
    image = std::move(next);
    refresh();
    return true;
}

bool image_panel::set_image(const file_path& path) {
    bitmap next;
    if (!next.load_image(path))
        return false;
    image = std::move(next);
    refresh();
    return true;
}

void image_panel::set_image(bitmap next) {
    if (!next.is_loaded()) {
        clear_image();
        return;
    }
    image = std::move(next);
    refresh();
}

void image_panel::clear_image() {
    image.unload();
    update(false);
}

void image_panel::refresh() {
    if (image.is_loaded()) {
        const _vec2<int> size = image.get_size();
        const ivec4 r = get_rect();
        float fit = 1.0f;
        if (size.x > 0 && size.y > 0 && r.w > 0 && r.h > 0)
            fit = std::min({1.0f, static_cast<float>(r.w) / static_cast<float>(size.x),
                            static_cast<float>(r.h) / static_cast<float>(size.y)});
        zoom = std::clamp(fit, min_zoom, max_zoom);
        const ivec4 shown = image_rect();
        offset = {(r.w - shown.w) / 2, (r.h - shown.h) / 2};
    }
    update(false);
}

ivec4 image_panel::image_rect() const {
    if (!image.is_loaded())
        return {offset.x, offset.y, 0, 0};
    const _vec2<int> size = image.get_size();
    return {offset.x, offset.y, static_cast<int>(std::lround(size.x * zoom)),
            static_cast<int>(std::lround(size.y * zoom))};
}

void image_panel::set_zoom(float new_zoom) {
    if (!std::isfinite(new_zoom))
        return;
    zoom = std::clamp(new_zoom, min_zoom, max_zoom);
    update(false);
}

void image_panel::zoom_at(float new_zoom, _vec2<int> anchor) {
    if (!std::isfinite(new_zoom))
        return;
    new_zoom = std::clamp(new_zoom, min_zoom, max_zoom);
    // The image point under the anchor stays there.
    const double ix = (anchor.x - offset.x) / static_cast<double>(zoom);
    const double iy = (anchor.y - offset.y) / static_cast<double>(zoom);
    zoom = new_zoom;
    offset = {static_cast<int>(std::lround(anchor.x - ix * zoom)),
              static_cast<int>(std::lround(anchor.y - iy * zoom))};
    update(false);
}

void image_panel::set_offset(_vec2<int> new_offset) {
    offset = new_offset;
    update(false);
}

void image_panel::on_wheel(const event_info& e) {
    const double delta = wheel_delta(e.data);
    if (!std::isfinite(delta) || delta == 0 || !image.is_loaded())
        return;
    // One wheel line (40) zooms by a tenth.
    const double factor = std::pow(1.1, std::clamp(delta / 40.0, -20.0, 20.0));
    zoom_at(static_cast<float>(zoom * factor), mouse::get_position(this));
}

void image_panel::on_mouse(const event_info& e) {
    const _vec2<int> p = mouse::get_position(this);
    switch (e.type) {
    case event_type::mouse_down:
        if (e.data != static_cast<uint32_t>(mouse::button::left) || !image.is_loaded())
            return;
        dragging = true;
        drag_start = p;
        offset_start = offset;
        mouse::capture_widget(*this);
        mouse::set_cursor(cursor::hand);
        break;
    case event_type::mouse_move:
        if (dragging)
            set_offset(offset_start + (p - drag_start));
        break;
    case event_type::mouse_up:
        if (!dragging)
            return;
        dragging = false;
        release_capture(*this);
        mouse::set_cursor(cursor::arrow);
        break;
    default:
        break;
    }
}

void image_panel::draw(drawer& d, const ivec4& area) {
    d.set_brush_color(get_theme().get<vec4>(theme_keys::default_back_color));
    d.draw_rect(area);
    const ivec4 full = image_rect();
    const native_bitmap* rep = image.get_native();
    if (!image.is_loaded() || !rep || full.w <= 0 || full.h <= 0)
        return;
    // Painting is clipped to the dirty area only: draw just the part of the image inside the panel.
    const int left = std::max(full.x, 0), top = std::max(full.y, 0);
    const int right = std::min(full.x + full.w, area.w), bottom = std::min(full.y + full.h, area.h);
    if (right <= left || bottom <= top)
        return;
    const _vec2<int> pixels = rep->get_size();
    const double sx = pixels.x / static_cast<double>(full.w), sy = pixels.y / static_cast<double>(full.h);
    const int px0 = static_cast<int>(std::floor((left - full.x) * sx));
    const int py0 = static_cast<int>(std::floor((top - full.y) * sy));
    const int px1 = std::min(pixels.x, static_cast<int>(std::ceil((right - full.x) * sx)));
    const int py1 = std::min(pixels.y, static_cast<int>(std::ceil((bottom - full.y) * sy)));
    if (px1 <= px0 || py1 <= py0)
        return;
    d.draw_image({left, top, right - left, bottom - top}, image, {px0, py0, px1 - px0, py1 - py0}, false);
}

} // namespace nimbit::ui
