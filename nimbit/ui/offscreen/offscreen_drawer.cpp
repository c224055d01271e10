#include "nimbit/ui/offscreen/offscreen_drawer.h"

#include "nimbit/ui/native_bitmap.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace nimbit::ui {

// One laid-out code point.
struct offscreen_glyph {
    int width = 0;
    int height = 0;
    bool space = false;
    bool newline = false;
};

namespace {

using glyph = offscreen_glyph;

struct line {
    int width = 0;
    int height = 0;
};

// Byte length of the UTF-8 sequence at `i`; a damaged sequence counts as one byte, so any input
// walks forward and never past its end.
size_t sequence_length(std::string_view text, size_t i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    size_t n = lead < 0x80           ? 1
               : (lead >> 5) == 0x6  ? 2
               : (lead >> 4) == 0xE  ? 3
               : (lead >> 3) == 0x1E ? 4
                                     : 1;
    if (i + n > text.size())
        return 1;
    for (size_t k = 1; k < n; ++k)
        if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80)
            return 1;
    return n;
}

} // namespace

int offscreen_drawer::char_width(float font_size) {
    return std::max(1, static_cast<int>(std::lround(font_size * 0.5f)));
}

int offscreen_drawer::line_height(float font_size) {
    return std::max(1, static_cast<int>(std::lround(font_size * 1.25f)));
}

namespace {

// Metric of one font size, worked out once per size rather than once per code point.
struct size_metric {
    float size = -1.0f;
    int width = 0;
    int height = 0;
    const size_metric& of(float s) {
        if (s != size) {
            size = s;
            width = offscreen_drawer::char_width(s);
            height = offscreen_drawer::line_height(s);
        }
        return *this;
    }
};

// Shapes into `out`, which keeps its capacity between calls: measuring is done for every text drawn,
// so it allocates nothing once the buffer has grown to the longest text.
void shape(std::string_view text, float font_size, const std::vector<text_full_format>& runs,
           std::vector<glyph>& out) {
    out.clear();
    size_metric base, run_metric;
    base.of(font_size);
    unsigned index = 0;
    for (size_t i = 0; i < text.size(); i += sequence_length(text, i), ++index) {
        const size_metric* m = &base;
        for (const text_full_format& run : runs)
            if (index >= run.start && index < run.end)
                m = &run_metric.of(run.size);
        glyph g;
        g.newline = text[i] == '\n';
        g.space = text[i] == ' ';
        g.width = g.newline ? 0 : m->width;
        g.height = m->height;
        out.push_back(g);
    }
}

// Greedy wrapping: a line breaks after its last space once the next character would pass the
// width limit, or before that character when the line has no space. Trailing spaces do not count.
// Each line is handed to `visit` in order; the walk stops when `visit` returns false.
template <typename Visit>
void layout(const std::vector<glyph>& glyphs, int width_limit, int empty_height, Visit&& visit) {
    bool going = true;
    auto close = [&](size_t begin, size_t end) {
        if (!going)
            return;
        line l;
        size_t last = end;
        while (last > begin && glyphs[last - 1].space)
            --last;
        for (size_t k = begin; k < end; ++k)
            l.height = std::max(l.height, glyphs[k].height);
        for (size_t k = begin; k < last; ++k)
            l.width += glyphs[k].width;
        if (l.height == 0)
            l.height = empty_height;
        going = visit(l);
    };
    size_t start = 0;
    long width = 0;
    size_t last_space = SIZE_MAX;
    for (size_t i = 0; i < glyphs.size() && going; ++i) {
        const glyph& g = glyphs[i];
        if (g.newline) {
            close(start, i);
            start = i + 1;
            width = 0;
            last_space = SIZE_MAX;
            continue;
        }
        if (width_limit > 0 && !g.space && i > start && width + g.width > width_limit) {
            const size_t cut = last_space != SIZE_MAX ? last_space + 1 : i;
            close(start, cut);
            start = cut;
            width = 0;
            for (size_t k = start; k < i; ++k)
                width += glyphs[k].width;
            last_space = SIZE_MAX;
        }
        width += g.width;
        if (g.space)
            last_space = i;
    }
    close(start, glyphs.size());
}

} // namespace

offscreen_drawer::offscreen_drawer(_vec2<int> size) : size(size) {}

offscreen_drawer::~offscreen_drawer() = default;

draw_call offscreen_drawer::expand(const entry& e) const {
    draw_call c;
    c.op = e.op;
    c.rect = e.rect;
    c.color = e.color;
    c.value = e.value;
    c.mode_1 = e.mode_1;
    c.mode_2 = e.mode_2;
    c.layout = e.layout;
    if (e.text_size > 0)
        c.text.assign(text_log, e.text_begin, e.text_size);
    if (e.pass != no_index) {
        c.origin = pass_log[e.pass].origin;
        c.clip = pass_log[e.pass].clip;
    }
    if (e.extra != no_index) {
        const extra& x = extras[e.extra];
        c.source = x.source;
        c.points = x.points;
        c.path = x.path;
        c.color_2 = x.color_2;
        c.image_size = x.image_size;
    }
    return c;
}

const std::vector<draw_call>& offscreen_drawer::calls() const {
    // Expanded on demand, and only what was recorded since the last request.
    for (size_t i = expanded.size(); i < recorded.size(); ++i)
        expanded.push_back(expand(recorded[i]));
    return expanded;
}

std::vector<draw_call> offscreen_drawer::calls_named(std::string_view op) const {
    std::vector<draw_call> out;
    for (const entry& e : recorded)
        if (e.op == op)
            out.push_back(expand(e));
    return out;
}

void offscreen_drawer::clear_calls() {
    recorded.clear();
    expanded.clear();
    text_log.clear();
    extras.clear();
    pass_log.clear();
    // Passes still open keep being reported for the calls that follow.
    for (pass& p : passes) {
        p.log_index = static_cast<uint32_t>(pass_log.size());
        pass_log.push_back({p.origin, p.clip});
    }
}

offscreen_drawer::entry& offscreen_drawer::record(std::string_view op) {
    entry& e = recorded.emplace_back();
    e.op = op;
    if (!passes.empty())
        e.pass = passes.back().log_index;
    return e;
}

offscreen_drawer::extra& offscreen_drawer::more(entry& e) {
    if (e.extra == no_index) {
        e.extra = static_cast<uint32_t>(extras.size());
        extras.emplace_back();
    }
    return extras[e.extra];
}

void offscreen_drawer::keep_text(entry& e, std::string_view text) {
    e.text_begin = text_log.size();
    e.text_size = text.size();
    text_log.append(text);
}

void offscreen_drawer::resize(_vec2<int> new_size) {
    size = new_size;
    record("resize").rect = {0, 0, new_size.x, new_size.y};
}

void offscreen_drawer::start_draw(_vec2<int> origin, const ivec4& clip) {
    passes.push_back({origin, clip, static_cast<uint32_t>(pass_log.size())});
    pass_log.push_back({origin, clip});
    record("start_draw");
}

void offscreen_drawer::end_draw() {
    if (passes.empty())
        return;
    record("end_draw");
    passes.pop_back();
}

offscreen_drawer::entry& offscreen_drawer::record_modes(std::string_view op, int mode_1, int mode_2) {
    entry& c = record(op);
    c.mode_1 = mode_1;
    c.mode_2 = mode_2;
    return c;
}

offscreen_drawer::entry& offscreen_drawer::record_pen(std::string_view op) {
    entry& c = record(op);
    c.color = current.pen;
    c.value = current.pen_width;
    return c;
}

offscreen_drawer::entry& offscreen_drawer::record_gradient(std::string_view op, const ivec4& bounds,
                                                           const vec4& from, const vec4& to, orientation o) {
    entry& c = record(op);
    c.rect = bounds;
    c.color = from;
    more(c).color_2 = to;
    c.mode_1 = static_cast<int>(o);
    return c;
}

void offscreen_drawer::set_brush_color(const vec4& color) {
    current.brush = color;
    record("set_brush_color").color = color;
}

void offscreen_drawer::set_pen_color(const vec4& color, float width) {
    current.pen = color;
    current.pen_width = width;
    record_pen("set_pen_color");
}

void offscreen_drawer::set_pen_style(pen_style style, draw_aliasing aliasing) {
    current.pen_kind = style;
    current.aliasing = aliasing;
    record_modes("set_pen_style", static_cast<int>(style), static_cast<int>(aliasing));
}

void offscreen_drawer::set_text_color(const vec4& color) {
    current.text_color = color;
    record("set_text_color").color = color;
}

void offscreen_drawer::set_text_font(std::string_view name, float font_size, font_weight weight,
                                     font_style style, bool underline) {
    current.font_name = std::string(name);
    current.font_size = font_size;
    current.weight = weight;
    current.style = style;
    current.underline = underline;
    entry& c = record_modes("set_text_font", static_cast<int>(weight), static_cast<int>(style));
    keep_text(c, current.font_name);
    c.value = font_size;
}

void offscreen_drawer::set_text_format(text_align align, text_valign valign) {
    current.align = align;
    current.valign = valign;
    record_modes("set_text_format", static_cast<int>(align), static_cast<int>(valign));
}

void offscreen_drawer::set_image_extend(image_extend horizontal, image_extend vertical) {
    current.extend_h = horizontal;
    current.extend_v = vertical;
    record_modes("set_image_extend", static_cast<int>(horizontal), static_cast<int>(vertical));
}

void offscreen_drawer::draw_rect(const ivec4& rect) {
    entry& c = record("draw_rect");
    c.rect = rect;
    c.color = current.brush;
}

void offscreen_drawer::draw_rect(const ivec4& rect, const native_bitmap& image) {
    entry& c = record_modes("draw_rect_image", static_cast<int>(current.extend_h),
                            static_cast<int>(current.extend_v));
    c.rect = rect;
    more(c).image_size = image.get_size();
}

void offscreen_drawer::draw_rect_gradient(const ivec4& rect, const vec4& from, const vec4& to,
                                          orientation o) {
    record_gradient("draw_rect_gradient", rect, from, to, o);
}

void offscreen_drawer::draw_rect_border(const ivec4& rect) {
    record_pen("draw_rect_border").rect = rect;
}

void offscreen_drawer::draw_line(_vec2<int> from, _vec2<int> to) {
    more(record_pen("draw_line")).points = {from, to};
}

void offscreen_drawer::draw_circle(_vec2<int> centre, float radius) {
    entry& c = record("draw_circle");
    more(c).points = {centre};
    c.value = radius;
    c.color = current.brush;
}

void offscreen_drawer::draw_circle_border(_vec2<int> centre, float radius) {
    entry& c = record("draw_circle_border");
    more(c).points = {centre};
    c.value = radius;
    c.color = current.pen;
}

void offscreen_drawer::draw_geometry(const std::vector<_vec2<int>>& points) {
    entry& c = record("draw_geometry");
    more(c).points = points;
    c.color = current.brush;
}

void offscreen_drawer::draw_geometry_border(const std::vector<_vec2<int>>& points, bool closed) {
    entry& c = record_pen("draw_geometry_border");
    more(c).points = points;
    c.mode_1 = closed;
}

void offscreen_drawer::draw_geometry_gradient(const ivec4& bounds, const std::vector<_vec2<int>>& points,
                                              const vec4& from, const vec4& to, orientation o) {
    more(record_gradient("draw_geometry_gradient", bounds, from, to, o)).points = points;
}

void offscreen_drawer::draw_geometry_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                              const vec4& from, const vec4& to, orientation o) {
    more(record_gradient("draw_geometry_gradient", bounds, from, to, o)).path = path;
}

void offscreen_drawer::draw_bezier(const std::vector<bezier_segment>& path, bool closed) {
    entry& c = record_pen("draw_bezier");
    more(c).path = path;
    c.mode_1 = closed;
}

void offscreen_drawer::draw_bezier_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                            const vec4& from, const vec4& to, orientation o) {
    more(record_gradient("draw_bezier_gradient", bounds, from, to, o)).path = path;
}

void offscreen_drawer::clear(const vec4& color) {
    record("clear").color = color;
}

void offscreen_drawer::draw_image(const ivec4& target, const native_bitmap& image, const ivec4& source,
                                  bool keep_aspect) {
    entry& c = record("draw_image");
    c.rect = target;
    more(c).source = source;
    more(c).image_size = image.get_size();
    c.mode_1 = keep_aspect;
}

_vec2<int> offscreen_drawer::calc_text_size(std::string_view text, _vec2<int> limit,
                                            const std::vector<text_full_format>& runs) {
    // The usual label: one font, plain ASCII on one line that fits. Every character has the same
    // advance, so the size follows from the length without laying anything out.
    if (runs.empty()) {
        const int advance = char_width(current.font_size);
        bool plain = true;
        size_t trailing = 0;
        for (const char ch : text) {
            if (static_cast<unsigned char>(ch) >= 0x80 || ch == '\n') {
                plain = false;
                break;
            }
            trailing = ch == ' ' ? trailing + 1 : 0;
        }
        const long full = static_cast<long>(text.size()) * advance;
        if (plain && (limit.x <= 0 || full <= limit.x))
            return {static_cast<int>(static_cast<long>(text.size() - trailing) * advance),
                    line_height(current.font_size)};
    }
    shape(text, current.font_size, runs, glyphs);
    _vec2<int> out;
    layout(glyphs, std::max(0, limit.x), line_height(current.font_size), [&](const line& l) {
        if (limit.y > 0 && out.y + l.height > limit.y && out.y > 0)
            return false; // lines below the limit are not shown
        out.x = std::max(out.x, l.width);
        out.y += l.height;
        return true;
    });
    return out;
}

std::vector<int> offscreen_drawer::calc_char_offsets(std::string_view text) {
    std::vector<int> out;
    int x = 0;
    shape(text, current.font_size, {}, glyphs);
    for (const glyph& g : glyphs) {
        out.push_back(x);
        x += g.width;
    }
    out.push_back(x);
    return out;
}

namespace {

// Where the text box lands in rect, after the placement rules of text_align and text_valign.
ivec4 place_text(const ivec4& rect, _vec2<int> text, text_align align, text_valign valign) {
    ivec4 box{rect.x + 1, rect.y, text.x, text.y};
    if (align == text_align::center)
        box.x += (rect.w - text.x) / 2;
    else if (align == text_align::right)
        box.x += rect.w - text.x;
    if (valign == text_valign::center)
        box.y = rect.y - 2 + (rect.h + 2 - text.y) / 2;
    else if (valign == text_valign::bottom)
        box.y = rect.y + 2 + (rect.h - text.y);
    return box;
}

} // namespace

offscreen_drawer::entry& offscreen_drawer::record_text(std::string_view op, const ivec4& rect,
                                                       std::string_view text,
                                                       const std::vector<text_full_format>& runs) {
    const _vec2<int> text_size = calc_text_size(text, {rect.w, rect.h}, runs);
    entry& c = record_modes(op, static_cast<int>(current.align), static_cast<int>(current.valign));
    c.rect = rect;
    keep_text(c, text);
    c.color = current.text_color;
    c.value = current.font_size;
    c.layout = place_text(rect, text_size, current.align, current.valign);
    return c;
}

void offscreen_drawer::draw_text(const ivec4& rect, std::string_view text,
                                 const std::vector<text_full_format>& runs) {
    record_text("draw_text", rect, text, runs);
}

void offscreen_drawer::draw_clipped_text(const ivec4& rect, const ivec4& clip, std::string_view text,
                                         const std::vector<text_full_format>& runs) {
    more(record_text("draw_clipped_text", rect, text, runs)).source = clip;
}

void offscreen_drawer::draw_shadow(const ivec4& rect, _vec2<int> offset, unsigned shadow_size) {
    entry& c = record("draw_shadow");
    c.rect = rect;
    more(c).points = {offset};
    c.value = static_cast<float>(shadow_size);
}

} // namespace nimbit::ui
