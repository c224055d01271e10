#include "nimbit/ui/win32/native_drawer.h"

#include "nimbit/ui/win32/native_bitmap.h"
#include "nimbit/utils/wide_string_win32.h"

#include <cmath>
#include <cstring>
#include <map>
#include <string>

namespace nimbit::ui::win32 {

using namespace Gdiplus;

namespace {

constexpr float unlimited = 1.0e6f;

struct font_key {
    std::string name;
    float size;
    font_weight weight;
    font_style style;
    bool underline;
    friend auto operator<=>(const font_key&, const font_key&) = default;
};

// The installed family for a name: the name itself when Windows has it, else the usual interface
// faces, else the metric-compatible faces a Wine without its own fonts finds on the system, else
// the first installed family. Null only when no font at all is installed.
const FontFamily* find_family(const std::string& name) {
    static std::map<std::string, std::unique_ptr<FontFamily>> families;
    if (auto it = families.find(name); it != families.end())
        return it->second.get();
    std::unique_ptr<FontFamily> found;
    for (const std::wstring& candidate :
         {widen(name), std::wstring(L"Segoe UI"), std::wstring(L"Tahoma"), std::wstring(L"Arial"),
          std::wstring(L"Liberation Sans"), std::wstring(L"DejaVu Sans")}) {
        if (candidate.empty())
            continue;
        auto family = std::make_unique<FontFamily>(candidate.c_str());
        if (family->GetLastStatus() == Ok && family->IsAvailable()) {
            found = std::move(family);
            break;
        }
    }
    if (!found) {
        InstalledFontCollection installed;
        FontFamily first;
        INT count = 0;
        if (installed.GetFamilyCount() > 0 && installed.GetFamilies(1, &first, &count) == Ok && count == 1)
            found.reset(first.Clone());
    }
    return families.emplace(name, std::move(found)).first->second.get();
}

// Fonts are made once per name, size and face; the cache lives as long as the process. Sizes are
// pixels, as the toolkit's are points on a 72-dpi Mac screen.
const Font* find_font(const std::string& name, float size, font_weight weight, font_style style,
                      bool underline) {
    static std::map<font_key, std::unique_ptr<Font>> fonts;
    size = std::clamp(size, 1.0f, 1000.0f);
    const font_key key{name, size, weight, style, underline};
    if (auto it = fonts.find(key); it != fonts.end())
        return it->second.get();
    // GDI+ has no light faces: light text is set in the regular one.
    INT flags = FontStyleRegular;
    if (weight == font_weight::bold)
        flags |= FontStyleBold;
    if (style == font_style::italic)
        flags |= FontStyleItalic;
    if (underline)
        flags |= FontStyleUnderline;
    const FontFamily* family = find_family(name);
    if (!family)
        return nullptr; // no fonts: text is neither drawn nor measured
    auto font = std::make_unique<Font>(family, size, flags, UnitPixel);
    if (font->GetLastStatus() != Ok)
        font = std::make_unique<Font>(family, size, FontStyleRegular, UnitPixel);
    return fonts.emplace(key, std::move(font)).first->second.get();
}

// The typographic format (no padding around the text) that both drawing and measuring use.
std::unique_ptr<StringFormat> text_format(text_align align, bool trailing_spaces) {
    std::unique_ptr<StringFormat> format(StringFormat::GenericTypographic()->Clone());
    INT flags = format->GetFormatFlags() & ~StringFormatFlagsNoClip;
    if (trailing_spaces)
        flags |= StringFormatFlagsMeasureTrailingSpaces;
    format->SetFormatFlags(flags);
    format->SetAlignment(align == text_align::center  ? StringAlignmentCenter
                         : align == text_align::right ? StringAlignmentFar
                                                      : StringAlignmentNear);
    return format;
}

// UTF-8 to UTF-16 with, for each code point, where it starts (one more entry for the end).
std::wstring utf16_with_positions(std::string_view utf8, std::vector<size_t>& positions) {
    std::wstring out = widen(utf8);
    positions.clear();
    for (size_t i = 0; i < out.size(); ++i)
        if (!(out[i] >= 0xDC00 && out[i] <= 0xDFFF && i > 0 && out[i - 1] >= 0xD800 && out[i - 1] <= 0xDBFF))
            positions.push_back(i);
    positions.push_back(out.size());
    return out;
}

RectF rect_f(const ivec4& r) {
    return RectF(REAL(r.x), REAL(r.y), REAL(r.w), REAL(r.h));
}

std::unique_ptr<GraphicsPath> polygon(const std::vector<_vec2<int>>& points, bool closed) {
    auto path = std::make_unique<GraphicsPath>();
    std::vector<PointF> at;
    at.reserve(points.size());
    for (const _vec2<int>& p : points)
        at.emplace_back(REAL(p.x), REAL(p.y));
    if (!at.empty())
        path->AddLines(at.data(), static_cast<INT>(at.size()));
    if (closed)
        path->CloseFigure();
    return path;
}

std::unique_ptr<GraphicsPath> curves(const std::vector<bezier_segment>& segments, bool closed) {
    auto path = std::make_unique<GraphicsPath>();
    for (size_t i = 0; i < segments.size(); ++i) {
        const bezier_segment& s = segments[i];
        if (i > 0 && !(segments[i - 1].end == s.start))
            path->StartFigure();
        path->AddBezier(PointF(s.start.x, s.start.y), PointF(s.control_1.x, s.control_1.y),
                        PointF(s.control_2.x, s.control_2.y), PointF(s.end.x, s.end.y));
    }
    if (closed && !segments.empty())
        path->CloseFigure();
    return path;
}

float ascent_of(const Font& font) {
    FontFamily family;
    font.GetFamily(&family);
    const INT style = font.GetStyle();
    const float em = family.GetEmHeight(style);
    return em > 0 ? font.GetSize() * family.GetCellAscent(style) / em : font.GetSize();
}

} // namespace

// --- text with runs -------------------------------------------------------------------------------
// DrawString sets one font per call, so text whose runs change the font is laid out here: pieces of
// one font, broken after spaces, placed on lines that wrap at the width; each piece is measured and
// drawn with the same typographic format as plain text.

struct win32_drawer::laid_out_text {
    struct piece {
        std::wstring text;
        const Font* font;
        float x, width, height;
    };
    struct line {
        std::vector<piece> pieces;
        float width = 0, height = 0, ascent = 0;
    };
    std::vector<line> lines;
    float width = 0, height = 0;
};

win32_drawer::laid_out_text win32_drawer::lay_out(std::string_view utf8, float width,
                                                  const std::vector<text_full_format>& runs) {
    laid_out_text out;
    std::vector<size_t> at;
    const std::wstring s = utf16_with_positions(utf8, at);
    const size_t points = at.size() - 1;
    std::vector<const Font*> fonts(s.size(), font);
    for (const text_full_format& run : runs) {
        const size_t start = std::min<size_t>(run.start, points),
                     end = std::min<size_t>(std::max(run.end, run.start), points);
        const Font* f = run.font_name.empty()
                            ? font
                            : find_font(run.font_name, run.size, run.weight, run.style, run.underline);
        if (!f)
            f = font;
        for (size_t i = at[start]; i < at[end]; ++i)
            fonts[i] = f;
    }
    Graphics& g = measurer();
    const auto format = text_format(text_align::left, true);
    auto measure = [&](const std::wstring& t, const Font* f) {
        RectF box;
        g.MeasureString(t.c_str(), static_cast<INT>(t.size()), f, PointF(0, 0), format.get(), &box);
        return box;
    };
    out.lines.emplace_back();
    // Lines are as high as plain text measures, so that a run of the base font changes nothing.
    auto finish_line = [&](laid_out_text::line& l) {
        for (const auto& p : l.pieces) {
            l.height = std::max(l.height, p.height);
            l.ascent = std::max(l.ascent, ascent_of(*p.font));
        }
        if (l.pieces.empty()) {
            l.height = measure(L"M", font).Height;
            l.ascent = ascent_of(*font);
        }
    };
    size_t i = 0;
    while (i < s.size()) {
        if (s[i] == L'\n') {
            out.lines.emplace_back();
            ++i;
            continue;
        }
        // A piece: one font, up to and including the spaces after a word.
        size_t j = i;
        while (j < s.size() && s[j] != L'\n' && fonts[j] == fonts[i] && s[j] != L' ')
            ++j;
        while (j < s.size() && s[j] == L' ' && fonts[j] == fonts[i])
            ++j;
        laid_out_text::piece p{s.substr(i, j - i), fonts[i], 0, 0, 0};
        const RectF box = measure(p.text, p.font);
        p.width = box.Width;
        p.height = box.Height;
        laid_out_text::line& l = out.lines.back();
        const bool starts_word = i == 0 || s[i - 1] == L' ';
        if (width > 0 && !l.pieces.empty() && starts_word && l.width + p.width > width) {
            out.lines.emplace_back();
        }
        laid_out_text::line& target = out.lines.back();
        p.x = target.width;
        target.width += p.width;
        target.pieces.push_back(std::move(p));
        i = j;
    }
    for (auto& l : out.lines) {
        finish_line(l);
        out.width = std::max(out.width, l.width);
        out.height += l.height;
    }
    return out;
}

// --- set-up ---------------------------------------------------------------------------------------

win32_drawer::win32_drawer() {
    start_gdiplus();
    font = find_font("tahoma", 12.0f, font_weight::regular, font_style::normal, false);
}

win32_drawer::~win32_drawer() {
    graphics.reset();
    surface.reset();
    if (dib)
        DeleteObject(dib);
}

Graphics& win32_drawer::measurer() {
    if (graphics)
        return *graphics;
    if (!measure_graphics) {
        measure_surface = std::make_unique<Bitmap>(1, 1, PixelFormat32bppPARGB);
        measure_graphics = std::make_unique<Graphics>(measure_surface.get());
        measure_graphics->SetTextRenderingHint(TextRenderingHintAntiAliasGridFit);
    }
    return *measure_graphics;
}

void win32_drawer::resize(_vec2<int> new_size) {
    new_size = {std::clamp(new_size.x, 1, 16384), std::clamp(new_size.y, 1, 16384)};
    if (dib && new_size == size)
        return;
    while (painting && !passes.empty())
        end_draw();
    graphics.reset();
    surface.reset();
    HBITMAP old = dib;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = new_size.x;
    info.bmiHeader.biHeight = -new_size.y; // top-down, as GDI+ lays rows out
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* new_bits = nullptr;
    dib = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &new_bits, nullptr, 0);
    if (!dib) {
        dib = old;
        old = nullptr;
    } else {
        // The old picture stays where it was until it is painted over.
        if (old && bits) {
            const int w = std::min(size.x, new_size.x), h = std::min(size.y, new_size.y);
            for (int y = 0; y < h; ++y)
                std::memcpy(static_cast<unsigned char*>(new_bits) + size_t(y) * new_size.x * 4,
                            static_cast<unsigned char*>(bits) + size_t(y) * size.x * 4, size_t(w) * 4);
        }
        bits = new_bits;
        size = new_size;
    }
    if (old)
        DeleteObject(old);
    if (!dib)
        return;
    surface =
        std::make_unique<Bitmap>(size.x, size.y, size.x * 4, PixelFormat32bppPARGB, static_cast<BYTE*>(bits));
    graphics = std::make_unique<Graphics>(surface.get());
    graphics->SetTextRenderingHint(TextRenderingHintAntiAliasGridFit);
    // Integer coordinates are pixel edges, as on the other platforms.
    graphics->SetPixelOffsetMode(PixelOffsetModeHalf);
    graphics->SetSmoothingMode(antialias ? SmoothingModeAntiAlias : SmoothingModeNone);
}

graphics::rgba_image win32_drawer::snapshot() const {
    graphics::rgba_image out;
    if (!bits)
        return out;
    GdiFlush();
    out.size = size;
    out.alpha = false;
    out.pixels.resize(size_t(size.x) * size.y * 4);
    const auto* in = static_cast<const unsigned char*>(bits);
    for (size_t i = 0; i < out.pixels.size(); i += 4) {
        out.pixels[i] = in[i + 2];
        out.pixels[i + 1] = in[i + 1];
        out.pixels[i + 2] = in[i];
        out.pixels[i + 3] = 255;
    }
    return out;
}

void win32_drawer::begin_paint() {
    painting = graphics != nullptr;
    passes.clear();
}

void win32_drawer::end_paint() {
    while (!passes.empty())
        end_draw();
    painting = false;
    if (graphics) {
        graphics->ResetTransform();
        graphics->ResetClip();
        graphics->Flush(FlushIntentionSync);
    }
}

void win32_drawer::apply(const pass& p) {
    graphics->ResetTransform();
    graphics->SetClip(Rect(p.clip.x, p.clip.y, p.clip.w, p.clip.h));
    graphics->TranslateTransform(REAL(p.origin.x), REAL(p.origin.y));
}

void win32_drawer::start_draw(_vec2<int> origin, const ivec4& clip) {
    if (!painting)
        return;
    passes.push_back({origin, clip});
    apply(passes.back());
}

void win32_drawer::end_draw() {
    if (!painting || passes.empty())
        return;
    passes.pop_back();
    if (!passes.empty())
        apply(passes.back());
    else {
        graphics->ResetTransform();
        graphics->ResetClip();
    }
}

// --- state ----------------------------------------------------------------------------------------

void win32_drawer::set_brush_color(const vec4& color) {
    brush = to_color(color);
}

void win32_drawer::set_pen_color(const vec4& color, float width) {
    pen = to_color(color);
    pen_width = std::max(width, 0.0f);
}

void win32_drawer::set_pen_style(pen_style style, draw_aliasing aliasing) {
    pen_kind = style;
    antialias = aliasing == draw_aliasing::antialiased;
    if (graphics)
        graphics->SetSmoothingMode(antialias ? SmoothingModeAntiAlias : SmoothingModeNone);
}

void win32_drawer::set_text_color(const vec4& color) {
    text = to_color(color);
}

void win32_drawer::set_text_font(std::string_view name, float size_px, font_weight weight, font_style style,
                                 bool with_underline) {
    font = find_font(std::string(name), size_px, weight, style, with_underline);
    underline = with_underline;
}

void win32_drawer::set_text_format(text_align new_align, text_valign new_valign) {
    align = new_align;
    valign = new_valign;
}

void win32_drawer::set_image_extend(image_extend horizontal, image_extend vertical) {
    extend_h = horizontal;
    extend_v = vertical;
}

// --- shapes -----------------------------------------------------------------------------------------

void win32_drawer::stroke(const GraphicsPath& path) {
    if (pen_width <= 0)
        return;
    Pen p(pen, pen_width);
    if (pen_kind != pen_style::solid) {
        // In pen widths, as the other platforms dash.
        const REAL dash[] = {pen_kind == pen_style::dash ? 4.0f : 1.0f, 2.0f};
        p.SetDashPattern(dash, 2);
    }
    graphics->DrawPath(&p, &path);
}

void win32_drawer::fill_gradient(const GraphicsPath& path, const ivec4& bounds, const vec4& from,
                                 const vec4& to, orientation o) {
    RectF box;
    path.GetBounds(&box);
    if (bounds.w > 0 && bounds.h > 0)
        box = rect_f(bounds);
    if (box.Width <= 0 || box.Height <= 0)
        return;
    LinearGradientBrush fill(box, to_color(from), to_color(to),
                             o == orientation::horizontal ? LinearGradientModeHorizontal
                                                          : LinearGradientModeVertical);
    // Flipped tiles: the first and last rows must not pick up the far end's colour.
    fill.SetWrapMode(WrapModeTileFlipXY);
    graphics->FillPath(&fill, &path);
}

void win32_drawer::draw_rect(const ivec4& rect) {
    if (!painting || rect.w <= 0 || rect.h <= 0)
        return;
    SolidBrush b(brush);
    graphics->FillRectangle(&b, rect.x, rect.y, rect.w, rect.h);
}

void win32_drawer::draw_rect(const ivec4& rect, const native_bitmap& image) {
    if (!painting || rect.w <= 0 || rect.h <= 0)
        return;
    const auto* bitmap = dynamic_cast<const win32_bitmap*>(&image);
    Bitmap* pixels = bitmap ? bitmap->drawable() : nullptr;
    if (pixels && extend_h == image_extend::repeat && extend_v == image_extend::repeat) {
        TextureBrush tiles(pixels, WrapModeTile);
        tiles.TranslateTransform(REAL(rect.x), REAL(rect.y));
        graphics->FillRectangle(&tiles, rect.x, rect.y, rect.w, rect.h);
        return;
    }
    draw_image(rect, image, {}, false);
}

void win32_drawer::draw_rect_gradient(const ivec4& rect, const vec4& from, const vec4& to, orientation o) {
    if (!painting || rect.w <= 0 || rect.h <= 0)
        return;
    GraphicsPath path;
    path.AddRectangle(rect_f(rect));
    fill_gradient(path, rect, from, to, o);
}

// Solid frames and straight lines are filled as rectangles rather than stroked: Wine's GDI+ strokes
// pens without the pixel offset (a line through pixel centres lands a pixel right and below, and a
// frame loses its right and bottom edges to the clip), while its fills sit where Windows puts them.
void win32_drawer::draw_rect_border(const ivec4& rect) {
    if (!painting || rect.w <= 0 || rect.h <= 0 || pen_width <= 0)
        return;
    if (pen_kind == pen_style::solid) {
        // The frame lies inside the rectangle.
        const REAL w = std::min({pen_width, rect.w / 2.0f, rect.h / 2.0f});
        SolidBrush b(pen);
        const RectF sides[] = {
            {REAL(rect.x), REAL(rect.y), REAL(rect.w), w},
            {REAL(rect.x), rect.y + rect.h - w, REAL(rect.w), w},
            {REAL(rect.x), rect.y + w, w, rect.h - 2 * w},
            {rect.x + rect.w - w, rect.y + w, w, rect.h - 2 * w},
        };
        for (const RectF& side : sides)
            if (side.Width > 0 && side.Height > 0)
                graphics->FillRectangle(&b, side);
        return;
    }
    // The frame lies inside the rectangle: the path runs half a pen width in from the edge.
    const REAL half = pen_width / 2;
    GraphicsPath path;
    path.AddRectangle(RectF(rect.x + half, rect.y + half, rect.w - pen_width, rect.h - pen_width));
    stroke(path);
}

void win32_drawer::draw_line(_vec2<int> from, _vec2<int> to) {
    if (!painting || pen_width <= 0)
        return;
    if (pen_kind == pen_style::solid && (from.x == to.x || from.y == to.y)) {
        // A row or column of pixels, as long as the line, centred on the pixels it runs through.
        SolidBrush b(pen);
        const REAL across = 0.5f - pen_width / 2;
        if (from.y == to.y)
            graphics->FillRectangle(&b, RectF(REAL(std::min(from.x, to.x)), from.y + across,
                                              REAL(std::max(std::abs(to.x - from.x), 1)), pen_width));
        else
            graphics->FillRectangle(&b, RectF(from.x + across, REAL(std::min(from.y, to.y)), pen_width,
                                              REAL(std::abs(to.y - from.y))));
        return;
    }
    // Pixel centres, so that a one-pixel line covers one row of pixels rather than two halves.
    GraphicsPath path;
    path.AddLine(from.x + 0.5f, from.y + 0.5f, to.x + 0.5f, to.y + 0.5f);
    stroke(path);
}

void win32_drawer::draw_circle(_vec2<int> c, float radius) {
    if (!painting || radius <= 0)
        return;
    SolidBrush b(brush);
    graphics->FillEllipse(&b, c.x - radius, c.y - radius, 2 * radius, 2 * radius);
}

void win32_drawer::draw_circle_border(_vec2<int> c, float radius) {
    if (!painting || radius <= 0)
        return;
    GraphicsPath path;
    path.AddEllipse(c.x - radius, c.y - radius, 2 * radius, 2 * radius);
    stroke(path);
}

void win32_drawer::draw_geometry(const std::vector<_vec2<int>>& points) {
    if (!painting || points.size() < 3)
        return;
    SolidBrush b(brush);
    graphics->FillPath(&b, polygon(points, true).get());
}

void win32_drawer::draw_geometry_border(const std::vector<_vec2<int>>& points, bool closed) {
    if (!painting || points.size() < 2)
        return;
    stroke(*polygon(points, closed));
}

void win32_drawer::draw_geometry_gradient(const ivec4& bounds, const std::vector<_vec2<int>>& points,
                                          const vec4& from, const vec4& to, orientation o) {
    if (!painting || points.size() < 3)
        return;
    fill_gradient(*polygon(points, true), bounds, from, to, o);
}

void win32_drawer::draw_geometry_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                          const vec4& from, const vec4& to, orientation o) {
    if (!painting || path.empty())
        return;
    fill_gradient(*curves(path, true), bounds, from, to, o);
}

void win32_drawer::draw_bezier(const std::vector<bezier_segment>& path, bool closed) {
    if (!painting || path.empty())
        return;
    stroke(*curves(path, closed));
}

void win32_drawer::draw_bezier_gradient(const ivec4& bounds, const std::vector<bezier_segment>& path,
                                        const vec4& from, const vec4& to, orientation o) {
    if (!painting || path.empty())
        return;
    fill_gradient(*curves(path, true), bounds, from, to, o);
}

void win32_drawer::clear(const vec4& color) {
    if (!painting)
        return;
    graphics->Clear(to_color(color)); // within the clip, replacing what was there
}

void win32_drawer::draw_shadow(const ivec4& rect, _vec2<int> offset, unsigned shadow_size) {
    if (!painting || rect.w <= 0 || rect.h <= 0 || shadow_size == 0)
        return;
    // Layers of faint black, each a pixel larger: dark under the rectangle, fading outwards.
    const int layers = static_cast<int>(std::min(shadow_size, 32u));
    const BYTE alpha = static_cast<BYTE>(std::max(4, 96 / layers));
    SolidBrush b(Color(alpha, 0, 0, 0));
    for (int i = layers; i >= 1; --i) {
        GraphicsPath path;
        path.AddRectangle(RectF(REAL(rect.x + offset.x - i), REAL(rect.y + offset.y - i),
                                REAL(rect.w + 2 * i), REAL(rect.h + 2 * i)));
        graphics->FillPath(&b, &path);
    }
}

// --- images -----------------------------------------------------------------------------------------

void win32_drawer::draw_image(const ivec4& target, const native_bitmap& image, const ivec4& source,
                              bool keep_aspect) {
    if (!painting || target.w <= 0 || target.h <= 0)
        return;
    const auto* bitmap = dynamic_cast<const win32_bitmap*>(&image);
    Bitmap* pixels = bitmap ? bitmap->drawable() : nullptr;
    if (!pixels)
        return;
    const _vec2<int> image_size = image.get_size();
    ivec4 from = source == ivec4{} ? ivec4{0, 0, image_size.x, image_size.y} : source;
    // Clamp the source to the image: a rectangle beyond it draws only what exists.
    const int left = std::clamp(from.x, 0, image_size.x), top = std::clamp(from.y, 0, image_size.y);
    const int right = std::clamp(from.x + from.w, 0, image_size.x);
    const int bottom = std::clamp(from.y + from.h, 0, image_size.y);
    if (right <= left || bottom <= top)
        return;
    from = {left, top, right - left, bottom - top};
    RectF to = rect_f(target);
    if (keep_aspect) {
        const double scale = std::min(double(target.w) / from.w, double(target.h) / from.h);
        const REAL w = REAL(from.w * scale), h = REAL(from.h * scale);
        to = RectF(target.x + (target.w - w) / 2, target.y + (target.h - h) / 2, w, h);
    }
    // Edge pixels are repeated outwards, not blended with transparency, when the image is scaled.
    ImageAttributes attributes;
    attributes.SetWrapMode(WrapModeTileFlipXY);
    graphics->DrawImage(pixels, to, REAL(from.x), REAL(from.y), REAL(from.w), REAL(from.h), UnitPixel,
                        &attributes);
}

// --- text ---------------------------------------------------------------------------------------------

void win32_drawer::draw_text(const ivec4& rect, std::string_view utf8,
                             const std::vector<text_full_format>& runs) {
    if (!painting || !font || utf8.empty() || rect.w <= 1 || rect.h <= 0)
        return;
    const std::wstring s = widen(utf8);
    const REAL width = REAL(rect.w);
    SolidBrush ink(text);
    const GraphicsState saved = graphics->Save();
    graphics->IntersectClip(Rect(rect.x, rect.y - 2, rect.w, rect.h + 4));
    if (runs.empty()) {
        const auto format = text_format(align, false);
        RectF box;
        graphics->MeasureString(s.c_str(), static_cast<INT>(s.size()), font, RectF(0, 0, width, unlimited),
                                format.get(), &box);
        const REAL height = std::ceil(box.Height);
        REAL top = REAL(rect.y);
        if (valign == text_valign::center)
            top = rect.y - 2 + std::floor((rect.h + 2 - height) / 2);
        else if (valign == text_valign::bottom)
            top = rect.y + 2 + (rect.h - height);
        // Text that does not fit starts at the top and is cut at the bottom edge, its last line ending
        // in an ellipsis.
        if (height > rect.h)
            top = REAL(rect.y);
        const REAL visible = std::max<REAL>(std::min<REAL>(height, rect.y + rect.h - top), 1);
        if (height > rect.h) {
            format->SetFormatFlags(format->GetFormatFlags() | StringFormatFlagsLineLimit);
            format->SetTrimming(StringTrimmingEllipsisWord);
        }
        graphics->DrawString(s.c_str(), static_cast<INT>(s.size()), font,
                             RectF(rect.x + 1.0f, top, width, visible), format.get(), &ink);
    } else {
        const laid_out_text laid = lay_out(utf8, width, runs);
        const auto format = text_format(text_align::left, true);
        REAL y = REAL(rect.y);
        for (const auto& line : laid.lines) {
            if (y >= rect.y + rect.h)
                break;
            const REAL shift = align == text_align::center  ? (width - line.width) / 2
                               : align == text_align::right ? width - line.width
                                                            : 0;
            for (const auto& p : line.pieces) {
                const REAL baseline_gap = line.ascent - ascent_of(*p.font);
                graphics->DrawString(p.text.c_str(), static_cast<INT>(p.text.size()), p.font,
                                     PointF(rect.x + 1.0f + shift + p.x, y + baseline_gap), format.get(),
                                     &ink);
            }
            y += line.height;
        }
    }
    graphics->Restore(saved);
}

void win32_drawer::draw_clipped_text(const ivec4& rect, const ivec4& clip, std::string_view utf8,
                                     const std::vector<text_full_format>& runs) {
    if (!painting || clip.w <= 0 || clip.h <= 0)
        return;
    const GraphicsState saved = graphics->Save();
    graphics->IntersectClip(Rect(clip.x, clip.y, clip.w, clip.h));
    draw_text(rect, utf8, runs);
    graphics->Restore(saved);
}

_vec2<int> win32_drawer::calc_text_size(std::string_view utf8, _vec2<int> limit,
                                        const std::vector<text_full_format>& runs) {
    if (!font || utf8.empty())
        return {};
    const REAL width = limit.x > 0 ? REAL(limit.x) : unlimited;
    if (!runs.empty()) {
        const laid_out_text laid = lay_out(utf8, limit.x > 0 ? width : 0, runs);
        REAL height = laid.height;
        if (limit.y > 0)
            height = std::min<REAL>(height, REAL(limit.y));
        return {static_cast<int>(std::ceil(laid.width)), static_cast<int>(std::ceil(height))};
    }
    const std::wstring s = widen(utf8);
    const auto format = text_format(text_align::left, false);
    RectF box;
    measurer().MeasureString(s.c_str(), static_cast<INT>(s.size()), font,
                             RectF(0, 0, width, limit.y > 0 ? REAL(limit.y) : unlimited), format.get(), &box);
    return {static_cast<int>(std::ceil(box.Width)), static_cast<int>(std::ceil(box.Height))};
}

std::vector<int> win32_drawer::calc_char_offsets(std::string_view utf8) {
    std::vector<size_t> at;
    const std::wstring s = utf16_with_positions(utf8, at);
    std::vector<int> offsets;
    offsets.reserve(at.size());
    offsets.push_back(0);
    if (!font) {
        offsets.resize(at.size(), 0);
        return offsets;
    }
    Graphics& g = measurer();
    const auto format = text_format(text_align::left, true);
    for (size_t i = 1; i < at.size(); ++i) {
        RectF box;
        g.MeasureString(s.c_str(), static_cast<INT>(at[i]), font, PointF(0, 0), format.get(), &box);
        offsets.push_back(std::max(offsets.back(), static_cast<int>(std::lround(box.Width))));
    }
    return offsets;
}

} // namespace nimbit::ui::win32
