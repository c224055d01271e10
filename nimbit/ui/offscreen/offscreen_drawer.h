#pragma once

#include "nimbit/ui/native_drawer.h"

#include <string>
#include <vector>

// A drawer that paints nothing and records everything: every call, with its arguments, the state it
// used and the drawing pass it happened in, so tests can read what a widget painted.
//
// Text metric (fixed so that layouts are the same on every machine): with font size s, every code
// point advances max(1, round(s * 0.5)) pixels, a line is max(1, round(s * 1.25)) pixels tall, and a
// text wraps at spaces (or mid-word when a word alone is too wide) once a line would pass the width
// limit. A "\n" starts a new line. With runs, each code point uses the size of the run that covers
// it and the line height is that of the largest size on the line.

namespace nimbit::ui {

struct offscreen_glyph;

// One recorded call. Fields that a call does not use keep their defaults.
struct draw_call {
    std::string op;                 // the call's name: "draw_rect", "set_pen_color", "draw_text", ...
    ivec4 rect;                     // rectangle argument; image target; text rectangle; gradient bounds
    ivec4 source;                   // image source rectangle; clip argument of draw_clipped_text
    std::vector<_vec2<int>> points; // line ends, circle centre, geometry points, shadow offset
    std::vector<bezier_segment> path;
    vec4 color;                 // the colour used: brush, pen, text, clear, or the gradient's first
    vec4 color_2;               // the gradient's second colour
    float value = 0;            // pen width, radius, font size
    std::string text;           // text drawn; font name for set_text_font
    int mode_1 = 0, mode_2 = 0; // enumerations: orientation, aligns, pen style, extends, closed, keep aspect
    _vec2<int> image_size;      // pixel size of the image drawn
    ivec4 layout;               // text: where the laid-out text box lands (size from the metric)
    // The drawing pass the call belongs to (window coordinates); zero outside a pass.
    _vec2<int> origin;
    ivec4 clip;
};

class offscreen_drawer final : public native_drawer {
public:
    explicit offscreen_drawer(_vec2<int> size = {});
    ~offscreen_drawer() override;

    const std::vector<draw_call>& calls() const;
    void clear_calls();
    // The calls named `op`, in order.
    std::vector<draw_call> calls_named(std::string_view op) const;
    _vec2<int> get_size() const { return size; }
    bool in_pass() const { return !passes.empty(); }

    // The fixed metric, for tests that compute expected layouts.
    static int char_width(float font_size);
    static int line_height(float font_size);

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

    // Current state, as the set_* calls left it.
    struct state {
        vec4 brush{0, 0, 0, 1};
        vec4 pen{0, 0, 0, 1};
        float pen_width = 1.0f;
        pen_style pen_kind = pen_style::solid;
        draw_aliasing aliasing = draw_aliasing::antialiased;
        vec4 text_color{0, 0, 0, 1};
        std::string font_name = "tahoma";
        float font_size = 12.0f;
        font_weight weight = font_weight::regular;
        font_style style = font_style::normal;
        bool underline = false;
        text_align align = text_align::left;
        text_valign valign = text_valign::center;
        image_extend extend_h = image_extend::none;
        image_extend extend_v = image_extend::none;
    };
    const state& get_state() const { return current; }

private:
    // The record is kept compact, since a repaint of a long list makes tens of thousands of calls:
    // names are the callers' literals, texts go to one shared buffer, a pass is logged once for all
    // its calls, and the arguments of the rarer calls live beside the record. calls() expands it.
    static constexpr uint32_t no_index = 0xFFFFFFFFu;
    struct extra {
        ivec4 source;
        std::vector<_vec2<int>> points;
        std::vector<bezier_segment> path;
        vec4 color_2;
        _vec2<int> image_size;
    };
    struct entry {
        std::string_view op;
        uint32_t pass = no_index;
        uint32_t extra = no_index;
        ivec4 rect;
        vec4 color;
        float value = 0;
        int mode_1 = 0, mode_2 = 0;
        size_t text_begin = 0, text_size = 0;
        ivec4 layout;
    };
    struct pass {
        _vec2<int> origin;
        ivec4 clip;
        uint32_t log_index = 0;
    };
    struct logged_pass {
        _vec2<int> origin;
        ivec4 clip;
    };

    entry& record(std::string_view op);
    entry& record_modes(std::string_view op, int mode_1, int mode_2);
    // Drawn with the pen: its colour and width.
    entry& record_pen(std::string_view op);
    entry& record_gradient(std::string_view op, const ivec4& bounds, const vec4& from, const vec4& to,
                           orientation o);
    // Drawn with the text state, laid out by the fixed metric.
    entry& record_text(std::string_view op, const ivec4& rect, std::string_view text,
                       const std::vector<text_full_format>& runs);
    extra& more(entry& e);
    void keep_text(entry& e, std::string_view text);
    draw_call expand(const entry& e) const;

    _vec2<int> size;
    std::vector<entry> recorded;
    std::string text_log;
    std::vector<extra> extras;
    std::vector<logged_pass> pass_log;
    mutable std::vector<draw_call> expanded;
    state current;
    std::vector<pass> passes; // drawing passes nest: a parent's pass is open while its children paint
    // Scratch for text layout, kept to save an allocation per measured text.
    std::vector<offscreen_glyph> glyphs;
};

} // namespace nimbit::ui
