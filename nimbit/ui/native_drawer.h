#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/draw_types.h"

#include <string_view>
#include <vector>

// The platform side of drawing. A backend implements native_drawer for each window; the window
// opens one drawing pass per widget (start_draw with the widget's origin in window coordinates and,
// as clip, the part of the dirty rectangle that lies inside the widget and all its ancestors) and
// the widget paints in its own coordinates through a drawer, which forwards here. Passes nest: a
// child's pass opens inside its parent's, with a clip inside the parent's. Colours are r, g, b, a
// in 0..1. The state set by the set_* calls persists between calls and passes until changed.
//
// Text: the paragraph wraps at word boundaries inside the rectangle's width and the last visible
// line is truncated. text_align and text_valign place it (see text_style.h); the box starts one
// pixel right of the rectangle's left edge. With runs, each run sets its own font on its range.

namespace nimbit::ui {

class native_bitmap;

class native_drawer {
public:
    virtual ~native_drawer() = default;

    // A window drawer follows the window's client size.
    virtual void resize(_vec2<int> size) = 0;
    virtual void start_draw(_vec2<int> origin, const ivec4& clip) = 0;
    virtual void end_draw() = 0;

    virtual void set_brush_color(const vec4& color) = 0;
    virtual void set_pen_color(const vec4& color, float width) = 0;
    virtual void set_pen_style(pen_style style, draw_aliasing aliasing) = 0;
    virtual void set_text_color(const vec4& color) = 0;
    virtual void set_text_font(std::string_view name, float size, font_weight weight, font_style style,
                               bool underline) = 0;
    virtual void set_text_format(text_align align, text_valign valign) = 0;
    virtual void set_image_extend(image_extend horizontal, image_extend vertical) = 0;

    virtual void draw_rect(const ivec4& rect) = 0;
    virtual void draw_rect(const ivec4& rect, const native_bitmap& image) = 0;
    virtual void draw_rect_gradient(const ivec4& rect, const vec4& from, const vec4& to, orientation o) = 0;
    virtual void draw_rect_border(const ivec4& rect) = 0;
    virtual void draw_line(_vec2<int> from, _vec2<int> to) = 0;
    virtual void draw_circle(_vec2<int> centre, float radius) = 0;
    virtual void draw_circle_border(_vec2<int> centre, float radius) = 0;
    virtual void draw_geometry(const std::vector<_vec2<int>>& points) = 0;
    virtual void draw_geometry_border(const std::vector<_vec2<int>>& points, bool closed) = 0;
    virtual void draw_geometry_gradient(const ivec4& bounds, const std::vector<_vec2<int>>& points,
                                        const vec4& from, const vec4& to, orientation o) = 0;
    virtual void draw_geometry_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                        const vec4& from, const vec4& to, orientation o) = 0;
    // Strokes the path with the pen; closed joins the last end to the first start.
    virtual void draw_bezier(const std::vector<bezier_segment>& path, bool closed) = 0;
    virtual void draw_bezier_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                      const vec4& from, const vec4& to, orientation o) = 0;
    virtual void clear(const vec4& color) = 0;

    // source is in the image's pixels; an all-zero source means the whole image. keep_aspect fits the
    // image inside target without distortion, otherwise it is stretched to fill it.
    virtual void draw_image(const ivec4& target, const native_bitmap& image, const ivec4& source,
                            bool keep_aspect) = 0;

    virtual void draw_text(const ivec4& rect, std::string_view text,
                           const std::vector<text_full_format>& runs) = 0;
    // Lays the text out in rect but paints only what falls inside clip.
    virtual void draw_clipped_text(const ivec4& rect, const ivec4& clip, std::string_view text,
                                   const std::vector<text_full_format>& runs) = 0;
    // The size of the laid-out text; a limit of 0 in a direction means unlimited.
    virtual _vec2<int> calc_text_size(std::string_view text, _vec2<int> limit,
                                      const std::vector<text_full_format>& runs) = 0;
    // The x of the left edge of every code point of the text in the current font, followed by the
    // x of the end of the text (so one more entry than code points).
    virtual std::vector<int> calc_char_offsets(std::string_view text) = 0;

    virtual void draw_shadow(const ivec4& rect, _vec2<int> offset, unsigned size) = 0;
};

} // namespace nimbit::ui
