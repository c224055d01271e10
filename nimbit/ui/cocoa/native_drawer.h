#pragma once

#include "nimbit/ui/native_drawer.h"

#include <memory>
#include <string>
#include <vector>

// The AppKit drawer of a window. It paints into the current graphics context while the window's
// view draws (begin_paint .. end_paint); each drawing pass saves the graphics state, moves the
// origin to the widget and clips to the dirty rectangle. Measuring works at any time.
//
// Window drawers follow their view, so resize, image tiling (set_image_extend) and drop shadows are
// not offered: they stop with an assertion.

namespace nimbit::ui::cocoa {

class cocoa_drawer final : public native_drawer {
public:
    cocoa_drawer();
    ~cocoa_drawer() override;

    void begin_paint(double view_height);
    void end_paint();
    bool is_painting() const { return painting; }

    void resize(_vec2<int> size) override;
    void start_draw(_vec2<int> origin, const ivec4& clip) override;
    void end_draw() override;

    void set_brush_color(const vec4& color) override;
    void set_pen_color(const vec4& color, float width) override;
    void set_pen_style(pen_style style, draw_aliasing aliasing) override;
    void set_text_color(const vec4& color) override;
    void set_text_font(std::string_view name, float size, font_weight weight, font_style style,
                       bool underline) override;
    void set_text_format(text_align align, text_valign valign) override;
    void set_image_extend(image_extend horizontal, image_extend vertical) override;

    void draw_rect(const ivec4& rect) override;
    void draw_rect(const ivec4& rect, const native_bitmap& image) override;
    void draw_rect_gradient(const ivec4& rect, const vec4& from, const vec4& to, orientation o) override;
    void draw_rect_border(const ivec4& rect) override;
    void draw_line(_vec2<int> from, _vec2<int> to) override;
    void draw_circle(_vec2<int> centre, float radius) override;
    void draw_circle_border(_vec2<int> centre, float radius) override;
    void draw_geometry(const std::vector<_vec2<int>>& points) override;
    void draw_geometry_border(const std::vector<_vec2<int>>& points, bool closed) override;
    void draw_geometry_gradient(const ivec4& bounds, const std::vector<_vec2<int>>& points, const vec4& from,
                                const vec4& to, orientation o) override;
    void draw_geometry_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                const vec4& from, const vec4& to, orientation o) override;
    void draw_bezier(const std::vector<bezier_segment>& path, bool closed) override;
    void draw_bezier_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path, const vec4& from,
                              const vec4& to, orientation o) override;
    void clear(const vec4& color) override;
    void draw_image(const ivec4& target, const native_bitmap& image, const ivec4& source,
                    bool keep_aspect) override;
    void draw_text(const ivec4& rect, std::string_view text,
                   const std::vector<text_full_format>& runs) override;
    void draw_clipped_text(const ivec4& rect, const ivec4& clip, std::string_view text,
                           const std::vector<text_full_format>& runs) override;
    _vec2<int> calc_text_size(std::string_view text, _vec2<int> limit,
                              const std::vector<text_full_format>& runs) override;
    std::vector<int> calc_char_offsets(std::string_view text) override;
    void draw_shadow(const ivec4& rect, _vec2<int> offset, unsigned size) override;

private:
    struct objc_state; // the AppKit objects: colours, font, text attributes
    std::unique_ptr<objc_state> objc;
    bool painting = false;
    std::vector<_vec2<int>> origins; // one per open drawing pass
    float pen_width = 1.0f;
    pen_style pen_kind = pen_style::solid;
    bool underline = false;
    text_align align = text_align::left;
    text_valign valign = text_valign::center;
};

} // namespace nimbit::ui::cocoa
