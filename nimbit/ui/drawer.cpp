#include "nimbit/ui/drawer.h"

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/native_bitmap.h"
#include "nimbit/ui/native_drawer.h"
#include "nimbit/utils/assert.h"

namespace nimbit::ui {

namespace {

// The platform image of a bitmap that is about to be drawn; drawing an unloaded one is a bug.
const native_bitmap& image_of(const bitmap& image) {
    const bool isLoaded = image.is_loaded();
    NIMBIT_ASSERT(isLoaded);
    const native_bitmap* imageRep = image.get_native();
    NIMBIT_ASSERT(imageRep);
    return *imageRep;
}

} // namespace

void drawer::set_brush_color(const vec4& color) {
    native.set_brush_color(color);
}
void drawer::set_pen_color(const vec4& color, float width) {
    native.set_pen_color(color, width);
}
void drawer::set_pen_style(pen_style style, draw_aliasing aliasing) {
    native.set_pen_style(style, aliasing);
}
void drawer::set_text_color(const vec4& color) {
    native.set_text_color(color);
}
void drawer::set_text_font(std::string_view name, float size, font_weight weight, font_style style,
                           bool underline) {
    native.set_text_font(name, size, weight, style, underline);
}
void drawer::set_text_format(text_align align, text_valign valign) {
    native.set_text_format(align, valign);
}
void drawer::set_image_extend(image_extend horizontal, image_extend vertical) {
    native.set_image_extend(horizontal, vertical);
}

void drawer::draw_rect(const ivec4& rect) {
    native.draw_rect(rect);
}
void drawer::draw_rect(const ivec4& rect, const bitmap& image) {
    native.draw_rect(rect, image_of(image));
}
void drawer::draw_rect_gradient(const ivec4& rect, const vec4& from, const vec4& to, orientation o) {
    native.draw_rect_gradient(rect, from, to, o);
}
void drawer::draw_rect_border(const ivec4& rect) {
    native.draw_rect_border(rect);
}
void drawer::draw_line(_vec2<int> from, _vec2<int> to) {
    native.draw_line(from, to);
}
void drawer::draw_circle(_vec2<int> centre, float radius) {
    native.draw_circle(centre, radius);
}
void drawer::draw_circle_border(_vec2<int> centre, float radius) {
    native.draw_circle_border(centre, radius);
}
void drawer::draw_geometry(const std::vector<_vec2<int>>& points) {
    native.draw_geometry(points);
}
void drawer::draw_geometry_border(const std::vector<_vec2<int>>& points, bool closed) {
    native.draw_geometry_border(points, closed);
}
void drawer::draw_geometry_gradient(const ivec4& bounds, const std::vector<_vec2<int>>& points,
                                    const vec4& from, const vec4& to, orientation o) {
    native.draw_geometry_gradient(bounds, points, from, to, o);
}
void drawer::draw_geometry_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                    const vec4& from, const vec4& to, orientation o) {
    native.draw_geometry_gradient(bounds, path, from, to, o);
}
void drawer::draw_bezier(const std::vector<bezier_segment>& path, bool closed) {
    native.draw_bezier(path, closed);
}
void drawer::draw_bezier_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                  const vec4& from, const vec4& to, orientation o) {
    native.draw_bezier_gradient(bounds, path, from, to, o);
}
void drawer::clear(const vec4& color) {
    native.clear(color);
}

// Positions alone draw the image at its size in points (pixels over the load scale).
void drawer::draw_image(_vec2<int> position, const bitmap& image) {
    const native_bitmap& rep = image_of(image);
    const _vec2<int> size = image.get_size();
    native.draw_image({position.x, position.y, size.x, size.y}, rep, {}, false);
}

void drawer::draw_image(_vec2<int> position, const bitmap& image, const ivec4& source) {
    const native_bitmap& rep = image_of(image);
    if (source.w == 0 && source.h == 0) { // the whole image, as everywhere
        draw_image(position, image);
        return;
    }
    const float scale = image.get_scale() > 0 ? image.get_scale() : 1.0f;
    const ivec4 target{position.x, position.y, static_cast<int>(source.w / scale),
                       static_cast<int>(source.h / scale)};
    native.draw_image(target, rep, source, false);
}

void drawer::draw_image(const ivec4& target, const bitmap& image, bool keep_aspect) {
    native.draw_image(target, image_of(image), {}, keep_aspect);
}

void drawer::draw_image(const ivec4& target, const bitmap& image, const ivec4& source, bool keep_aspect) {
    native.draw_image(target, image_of(image), source, keep_aspect);
}

void drawer::draw_text(const ivec4& rect, std::string_view text, const std::vector<text_full_format>& runs) {
    native.draw_text(rect, text, runs);
}
void drawer::draw_clipped_text(const ivec4& rect, const ivec4& clip, std::string_view text,
                               const std::vector<text_full_format>& runs) {
    native.draw_clipped_text(rect, clip, text, runs);
}
_vec2<int> drawer::calc_text_size(std::string_view text, _vec2<int> limit,
                                  const std::vector<text_full_format>& runs) {
    return native.calc_text_size(text, limit, runs);
}
std::vector<int> drawer::calc_char_offsets(std::string_view text) {
    return native.calc_char_offsets(text);
}

void drawer::draw_shadow(const ivec4& rect, _vec2<int> offset, unsigned size) {
    native.draw_shadow(rect, offset, size);
}

} // namespace nimbit::ui
