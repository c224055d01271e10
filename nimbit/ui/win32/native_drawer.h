#pragma once

#include "nimbit/graphics/rgba_image.h"
#include "nimbit/ui/native_drawer.h"
#include "nimbit/ui/win32/win32_util.h"

#include <memory>
#include <vector>

// The GDI+ drawer of a window. It paints into a back buffer the size of the client area (a 32-bit
// top-down DIB section with a GDI+ bitmap over the same memory), which the window copies to the
// screen in WM_PAINT, so nothing flickers. Each drawing pass moves the origin to the widget and
// clips to its part of the dirty rectangle. Measuring works at any time, with the fonts and text
// format that drawing uses (GDI+'s typographic format, sizes in pixels).

namespace nimbit::ui::win32 {

class win32_drawer final : public native_drawer {
public:
    win32_drawer();
    ~win32_drawer() override;
    win32_drawer(const win32_drawer&) = delete;
    win32_drawer& operator=(const win32_drawer&) = delete;

    void begin_paint();
    void end_paint();
    bool is_painting() const { return painting; }
    // The back buffer for copying to the screen; null before the first resize.
    HBITMAP get_surface() const { return dib; }
    // The back buffer's pixels as straight RGBA (for tests and captures).
    graphics::rgba_image snapshot() const;

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
    struct pass {
        _vec2<int> origin;
        ivec4 clip;
    };
    struct laid_out_text;

    void apply(const pass& p);
    void fill_gradient(const Gdiplus::GraphicsPath& path, const ivec4& bounds, const vec4& from,
                       const vec4& to, orientation o);
    void stroke(const Gdiplus::GraphicsPath& path);
    Gdiplus::Graphics& measurer();
    laid_out_text lay_out(std::string_view text, float width, const std::vector<text_full_format>& runs);

    HBITMAP dib = nullptr;
    void* bits = nullptr;
    _vec2<int> size;
    std::unique_ptr<Gdiplus::Bitmap> surface;
    std::unique_ptr<Gdiplus::Graphics> graphics;
    std::unique_ptr<Gdiplus::Bitmap> measure_surface;
    std::unique_ptr<Gdiplus::Graphics> measure_graphics;
    bool painting = false;
    std::vector<pass> passes;

    Gdiplus::Color brush{255, 0, 0, 0}, pen{255, 0, 0, 0}, text{255, 0, 0, 0};
    float pen_width = 1.0f;
    pen_style pen_kind = pen_style::solid;
    bool antialias = true;
    const Gdiplus::Font* font = nullptr;
    bool underline = false;
    text_align align = text_align::left;
    text_valign valign = text_valign::center;
    image_extend extend_h = image_extend::stretch, extend_v = image_extend::stretch;
};

} // namespace nimbit::ui::win32
