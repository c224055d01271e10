#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/draw_types.h"

#include <string_view>
#include <vector>

namespace nimbit::ui {

class bitmap;
class native_drawer;

// The painting interface handed to every widget's draw: a thin front over the platform drawer of
// the window being painted. Coordinates are the widget's own; the window set the origin and clip.
class drawer {
public:
    explicit drawer(native_drawer& native) : native(native) {}

    void set_brush_color(const vec4& color);
    void set_pen_color(const vec4& color, float width = 1.0f);
    void set_pen_style(pen_style style, draw_aliasing aliasing = draw_aliasing::antialiased);
    void set_text_color(const vec4& color);
    void set_text_font(std::string_view name, float size, font_weight weight = font_weight::regular,
                       font_style style = font_style::normal, bool underline = false);
    void set_text_format(text_align align, text_valign valign);
    void set_image_extend(image_extend horizontal, image_extend vertical);

    // Filled with the brush.
    void draw_rect(const ivec4& rect);
    // Filled with the image, laid out by the image extend mode.
    void draw_rect(const ivec4& rect, const bitmap& image);
    void draw_rect_gradient(const ivec4& rect, const vec4& from, const vec4& to, orientation o);
    // Framed inside its bounds with the pen.
    void draw_rect_border(const ivec4& rect);
    void draw_line(_vec2<int> from, _vec2<int> to);
    void draw_circle(_vec2<int> centre, float radius);
    void draw_circle_border(_vec2<int> centre, float radius);
    void draw_geometry(const std::vector<_vec2<int>>& points);
    void draw_geometry_border(const std::vector<_vec2<int>>& points, bool closed);
    void draw_geometry_gradient(const ivec4& bounds, const std::vector<_vec2<int>>& points, const vec4& from,
                                const vec4& to, orientation o);
    void draw_geometry_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                const vec4& from, const vec4& to, orientation o);
    void draw_bezier(const std::vector<bezier_segment>& path, bool closed = false);
    void draw_bezier_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path, const vec4& from,
                              const vec4& to, orientation o);
    void clear(const vec4& color);

    // At its own size; from a source rectangle of its pixels; fitted into a target (keep_aspect) or
    // stretched over it. Drawing an image that is not loaded is a programming error.
    void draw_image(_vec2<int> position, const bitmap& image);
    void draw_image(_vec2<int> position, const bitmap& image, const ivec4& source);
    void draw_image(const ivec4& target, const bitmap& image, bool keep_aspect);
    void draw_image(const ivec4& target, const bitmap& image, const ivec4& source, bool keep_aspect);

    void draw_text(const ivec4& rect, std::string_view text, const std::vector<text_full_format>& runs = {});
    void draw_clipped_text(const ivec4& rect, const ivec4& clip, std::string_view text,
                           const std::vector<text_full_format>& runs = {});
    // Limit 0 in a direction means unlimited.
    _vec2<int> calc_text_size(std::string_view text, _vec2<int> limit = {},
                              const std::vector<text_full_format>& runs = {});
    // One x per code point (its left edge) and one more for the end of the text.
    std::vector<int> calc_char_offsets(std::string_view text);

    void draw_shadow(const ivec4& rect, _vec2<int> offset, unsigned size);

    native_drawer& get_native() const { return native; }

private:
    native_drawer& native;
};

} // namespace nimbit::ui
