#include "nimbit/ui/cocoa/native_drawer.h"

#import <AppKit/AppKit.h>

#include "nimbit/ui/cocoa/cocoa_util.h"
#include "nimbit/ui/cocoa/font_lookup.h"
#include "nimbit/ui/cocoa/native_bitmap.h"
#include "nimbit/utils/assert.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

namespace nimbit::ui::cocoa {

namespace {

#ifdef GNUSTEP
// GNUstep's string drawing has no last-line truncation; the drawing rectangle still clips.
constexpr NSStringDrawingOptions layout_options = NSStringDrawingUsesLineFragmentOrigin;
#else
constexpr NSStringDrawingOptions layout_options =
    NSStringDrawingUsesLineFragmentOrigin | NSStringDrawingTruncatesLastVisibleLine;
#endif

constexpr CGFloat unlimited = 1.0e7;

struct font_key {
    std::string name;
    float size;
    font_weight weight;
    font_style style;
    friend auto operator<=>(const font_key &, const font_key &) = default;
};

// Fonts are looked up once per name, size and face; the cache lives as long as the process.
NSFont *find_font(const std::string &name, float size, font_weight weight, font_style style) {
    static std::map<font_key, NSFont *> fonts;
    size = std::clamp(size, 1.0f, 1000.0f);
    const font_key key{name, size, weight, style};
    if (auto it = fonts.find(key); it != fonts.end())
        return it->second;
    NSString *family = to_ns_string(installed_font_family(name));
    NSFontTraitMask traits = 0;
    if (style == font_style::italic)
        traits |= NSItalicFontMask;
    if (weight == font_weight::bold)
        traits |= NSBoldFontMask;
    // AppKit weights run 0..15 with 5 the regular one.
    const int appkit_weight = weight == font_weight::regular ? 5 : weight == font_weight::bold ? 9 : 3;
    NSFontManager *manager = [NSFontManager sharedFontManager];
    NSFont *font = [manager fontWithFamily:family traits:traits weight:appkit_weight size:size];
    if (font == nil)
        font = [manager fontWithFamily:family traits:0 weight:5 size:size];
    if (font == nil)
        font = [NSFont fontWithName:family size:size];
    if (font == nil)
        font = [NSFont systemFontOfSize:size];
    [font retain];
    fonts.emplace(key, font);
    return font;
}

// Code point index -> UTF-16 index, for a string given in UTF-8 (one more entry for the end).
std::vector<NSUInteger> utf16_positions(std::string_view utf8) {
    std::vector<NSUInteger> positions;
    positions.reserve(utf8.size() + 1);
    NSUInteger unit = 0;
    for (size_t i = 0; i < utf8.size();) {
        const unsigned char c = static_cast<unsigned char>(utf8[i]);
        positions.push_back(unit);
        const size_t length = c < 0x80           ? 1
                              : (c >> 5) == 0x6  ? 2
                              : (c >> 4) == 0xE  ? 3
                              : (c >> 3) == 0x1E ? 4
                                                 : 1;
        unit += length == 4 ? 2 : 1;
        i += length;
    }
    positions.push_back(unit);
    return positions;
}

NSBezierPath *polygon(const std::vector<_vec2<int>> &points, bool closed) {
    NSBezierPath *path = [NSBezierPath bezierPath];
    for (size_t i = 0; i < points.size(); ++i) {
        const NSPoint p = NSMakePoint(points[i].x, points[i].y);
        if (i == 0)
            [path moveToPoint:p];
        else
            [path lineToPoint:p];
    }
    if (closed && points.size() > 2)
        [path closePath];
    return path;
}

NSBezierPath *curves(const std::vector<bezier_segment> &segments, bool closed) {
    NSBezierPath *path = [NSBezierPath bezierPath];
    for (size_t i = 0; i < segments.size(); ++i) {
        const bezier_segment &s = segments[i];
        if (i == 0 || !(segments[i - 1].end == s.start))
            [path moveToPoint:NSMakePoint(s.start.x, s.start.y)];
        [path curveToPoint:NSMakePoint(s.end.x, s.end.y)
             controlPoint1:NSMakePoint(s.control_1.x, s.control_1.y)
             controlPoint2:NSMakePoint(s.control_2.x, s.control_2.y)];
    }
    if (closed && !segments.empty())
        [path closePath];
    return path;
}

NSRect ns_rect(const ivec4 &r) { return NSMakeRect(r.x, r.y, r.w, r.h); }

} // namespace

struct cocoa_drawer::objc_state {
    NSColor *brush = nil;
    NSColor *pen = nil;
    NSColor *text = nil;
    NSFont *font = nil;
    NSMutableParagraphStyle *paragraph = nil;
    NSDictionary *attributes = nil; // rebuilt lazily after a text setting changed

    static void replace(NSColor *&slot, const vec4 &c) {
        NSColor *fresh = [to_ns_color(c) retain];
        [slot release];
        slot = fresh;
    }
};

cocoa_drawer::cocoa_drawer() : objc(std::make_unique<objc_state>()) {
    objc->brush = [[NSColor blackColor] retain];
    objc->pen = [[NSColor blackColor] retain];
    objc->text = [[NSColor blackColor] retain];
    objc->font = find_font("tahoma", 12.0f, font_weight::regular, font_style::normal);
    objc->paragraph = [[NSMutableParagraphStyle alloc] init];
    [objc->paragraph setLineBreakMode:NSLineBreakByWordWrapping];
}

cocoa_drawer::~cocoa_drawer() {
    [objc->brush release];
    [objc->pen release];
    [objc->text release];
    [objc->paragraph release];
    [objc->attributes release];
}

void cocoa_drawer::begin_paint(double) {
    painting = true;
    origins.clear();
}

void cocoa_drawer::end_paint() {
    while (!origins.empty())
        end_draw();
    painting = false;
}

void cocoa_drawer::resize(_vec2<int>) { NIMBIT_ASSERT(false && "Not implemented."); }

void cocoa_drawer::start_draw(_vec2<int> origin, const ivec4 &clip) {
    if (!painting)
        return;
    const _vec2<int> previous = origins.empty() ? _vec2<int>{} : origins.back();
    [NSGraphicsContext saveGraphicsState];
    NSAffineTransform *move = [NSAffineTransform transform];
    [move translateXBy:origin.x - previous.x yBy:origin.y - previous.y];
    [move concat];
    NSRectClip(NSMakeRect(clip.x - origin.x, clip.y - origin.y, clip.w, clip.h));
    origins.push_back(origin);
}

void cocoa_drawer::end_draw() {
    if (!painting || origins.empty())
        return;
    [NSGraphicsContext restoreGraphicsState];
    origins.pop_back();
}

// --- state ---------------------------------------------------------------------------------------

void cocoa_drawer::set_brush_color(const vec4 &color) { objc_state::replace(objc->brush, color); }

void cocoa_drawer::set_pen_color(const vec4 &color, float width) {
    objc_state::replace(objc->pen, color);
    pen_width = std::max(width, 0.0f);
}

void cocoa_drawer::set_pen_style(pen_style style, draw_aliasing aliasing) {
    pen_kind = style;
    if (painting)
        [[NSGraphicsContext currentContext] setShouldAntialias:aliasing == draw_aliasing::antialiased];
}

void cocoa_drawer::set_text_color(const vec4 &color) {
    objc_state::replace(objc->text, color);
    [objc->attributes release];
    objc->attributes = nil;
}

void cocoa_drawer::set_text_font(std::string_view name, float size, font_weight weight, font_style style,
                                 bool with_underline) {
    objc->font = find_font(std::string(name), size, weight, style);
    underline = with_underline;
    [objc->attributes release];
    objc->attributes = nil;
}

void cocoa_drawer::set_text_format(text_align new_align, text_valign new_valign) {
    align = new_align;
    valign = new_valign;
    [objc->paragraph setAlignment:align == text_align::center  ? NSCenterTextAlignment
                                  : align == text_align::right ? NSRightTextAlignment
                                                               : NSLeftTextAlignment];
    [objc->attributes release];
    objc->attributes = nil;
}

void cocoa_drawer::set_image_extend(image_extend, image_extend) {
    NIMBIT_ASSERT(false && "Not implemented.");
}

// --- shapes -----------------------------------------------------------------------------------------

namespace {
void stroke(NSBezierPath *path, NSColor *pen, float width, pen_style kind) {
    if (width <= 0)
        return;
    [path setLineWidth:width];
    if (kind != pen_style::solid) {
        const CGFloat dash[] = {kind == pen_style::dash ? 4.0 * width : width, 2.0 * width};
        [path setLineDash:dash count:2 phase:0];
    }
    [pen set];
    [path stroke];
}

void fill_gradient(NSBezierPath *path, const vec4 &from, const vec4 &to, orientation o) {
    NSGradient *gradient = [[NSGradient alloc] initWithStartingColor:to_ns_color(from)
                                                         endingColor:to_ns_color(to)];
    [gradient drawInBezierPath:path angle:o == orientation::horizontal ? 0 : 90];
    [gradient release];
}
} // namespace

void cocoa_drawer::draw_rect(const ivec4 &rect) {
    if (!painting || rect.w <= 0 || rect.h <= 0)
        return;
    [objc->brush set];
    NSRectFillUsingOperation(ns_rect(rect), NSCompositeSourceOver);
}

void cocoa_drawer::draw_rect(const ivec4 &rect, const native_bitmap &image) {
    draw_image(rect, image, {}, false);
}

void cocoa_drawer::draw_rect_gradient(const ivec4 &rect, const vec4 &from, const vec4 &to, orientation o) {
    if (!painting || rect.w <= 0 || rect.h <= 0)
        return;
    NSGradient *gradient = [[NSGradient alloc] initWithStartingColor:to_ns_color(from)
                                                         endingColor:to_ns_color(to)];
    [gradient drawInRect:ns_rect(rect) angle:o == orientation::horizontal ? 0 : 90];
    [gradient release];
}

void cocoa_drawer::draw_rect_border(const ivec4 &rect) {
    if (!painting || rect.w <= 0 || rect.h <= 0)
        return;
    // The frame lies inside the rectangle: the path runs half a pen width in from the edge.
    const CGFloat half = pen_width / 2;
    NSBezierPath *path = [NSBezierPath bezierPathWithRect:NSInsetRect(ns_rect(rect), half, half)];
    stroke(path, objc->pen, pen_width, pen_kind);
}

void cocoa_drawer::draw_line(_vec2<int> from, _vec2<int> to) {
    if (!painting)
        return;
    // Pixel centres, so that a one-pixel line covers one row of pixels rather than two halves.
    NSBezierPath *path = [NSBezierPath bezierPath];
    [path moveToPoint:NSMakePoint(from.x + 0.5, from.y + 0.5)];
    [path lineToPoint:NSMakePoint(to.x + 0.5, to.y + 0.5)];
    stroke(path, objc->pen, pen_width, pen_kind);
}

void cocoa_drawer::draw_circle(_vec2<int> c, float radius) {
    if (!painting || radius <= 0)
        return;
    [objc->brush set];
    [[NSBezierPath bezierPathWithOvalInRect:NSMakeRect(c.x - radius, c.y - radius, 2 * radius, 2 * radius)]
        fill];
}

void cocoa_drawer::draw_circle_border(_vec2<int> c, float radius) {
    if (!painting || radius <= 0)
        return;
    stroke([NSBezierPath
               bezierPathWithOvalInRect:NSMakeRect(c.x - radius, c.y - radius, 2 * radius, 2 * radius)],
           objc -> pen, pen_width, pen_kind);
}

void cocoa_drawer::draw_geometry(const std::vector<_vec2<int>> &points) {
    if (!painting || points.size() < 3)
        return;
    [objc->brush set];
    [polygon(points, true) fill];
}

void cocoa_drawer::draw_geometry_border(const std::vector<_vec2<int>> &points, bool closed) {
    if (!painting || points.size() < 2)
        return;
    stroke(polygon(points, closed), objc->pen, pen_width, pen_kind);
}

void cocoa_drawer::draw_geometry_gradient(const ivec4 &, const std::vector<_vec2<int>> &points,
                                          const vec4 &from, const vec4 &to, orientation o) {
    if (!painting || points.size() < 3)
        return;
    fill_gradient(polygon(points, true), from, to, o);
}

void cocoa_drawer::draw_geometry_gradient(const ivec4 &, const std::vector<bezier_segment> &path,
                                          const vec4 &from, const vec4 &to, orientation o) {
    if (!painting || path.empty())
        return;
    fill_gradient(curves(path, true), from, to, o);
}

void cocoa_drawer::draw_bezier(const std::vector<bezier_segment> &path, bool closed) {
    if (!painting || path.empty())
        return;
    stroke(curves(path, closed), objc->pen, pen_width, pen_kind);
}

void cocoa_drawer::draw_bezier_gradient(const ivec4 &, const std::vector<bezier_segment> &path,
                                        const vec4 &from, const vec4 &to, orientation o) {
    if (!painting || path.empty())
        return;
    fill_gradient(curves(path, true), from, to, o);
}

void cocoa_drawer::clear(const vec4 &color) {
    if (!painting)
        return;
    [to_ns_color(color) set];
    NSRectFillUsingOperation(NSMakeRect(-unlimited / 2, -unlimited / 2, unlimited, unlimited),
                             NSCompositeCopy);
}

// --- images -----------------------------------------------------------------------------------------

void cocoa_drawer::draw_image(const ivec4 &target, const native_bitmap &image, const ivec4 &source,
                              bool keep_aspect) {
    if (!painting || target.w <= 0 || target.h <= 0)
        return;
    const auto *bitmap = dynamic_cast<const cocoa_bitmap *>(&image);
    NSBitmapImageRep *rep = bitmap ? bitmap->drawable() : nil;
    if (rep == nil)
        return;
    const _vec2<int> size = image.get_size();
    ivec4 from = source == ivec4{} ? ivec4{0, 0, size.x, size.y} : source;
    // Clamp the source to the image: a rectangle beyond it draws only what exists.
    const int left = std::clamp(from.x, 0, size.x), top = std::clamp(from.y, 0, size.y);
    const int right = std::clamp(from.x + from.w, 0, size.x), bottom = std::clamp(from.y + from.h, 0, size.y);
    if (right <= left || bottom <= top)
        return;
    from = {left, top, right - left, bottom - top};
    NSRect to = ns_rect(target);
    if (keep_aspect) {
        const double scale = std::min(double(target.w) / from.w, double(target.h) / from.h);
        const double w = from.w * scale, h = from.h * scale;
        to = NSMakeRect(target.x + (target.w - w) / 2, target.y + (target.h - h) / 2, w, h);
    }
    // Image coordinates start at the bottom row.
    const NSRect from_rect = NSMakeRect(from.x, size.y - from.y - from.h, from.w, from.h);
    [rep drawInRect:to
              fromRect:from_rect
             operation:NSCompositeSourceOver
              fraction:1.0
        respectFlipped:YES
                 hints:nil];
}

// --- text ---------------------------------------------------------------------------------------------

namespace {

// The text with the drawer's attributes, and each run's font and underline on its range.
NSAttributedString *attributed(std::string_view text, NSDictionary *base,
                               const std::vector<text_full_format> &runs, NSFont *base_font) {
    NSString *s = to_ns_string(text);
    if (runs.empty())
        return [[[NSAttributedString alloc] initWithString:s attributes:base] autorelease];
    NSMutableAttributedString *m = [[[NSMutableAttributedString alloc] initWithString:s
                                                                           attributes:base] autorelease];
    const std::vector<NSUInteger> at = utf16_positions(text);
    const unsigned points = static_cast<unsigned>(at.size() - 1);
    for (const text_full_format &run : runs) {
        const unsigned start = std::min(run.start, points), end = std::min(std::max(run.end, start), points);
        if (end <= start)
            continue;
        NSFont *font =
            run.font_name.empty() ? base_font : find_font(run.font_name, run.size, run.weight, run.style);
        const NSRange range = NSMakeRange(at[start], at[end] - at[start]);
        [m addAttribute:NSFontAttributeName value:font range:range];
        [m addAttribute:NSUnderlineStyleAttributeName
                  value:[NSNumber numberWithInt:run.underline ? NSUnderlineStyleSingle : NSUnderlineStyleNone]
                  range:range];
    }
    return m;
}

} // namespace

static NSDictionary *text_attributes(NSFont *font, NSColor *color, NSParagraphStyle *paragraph,
                                     bool underline) {
    return [[NSDictionary alloc]
        initWithObjectsAndKeys:font, NSFontAttributeName, color, NSForegroundColorAttributeName, paragraph,
                               NSParagraphStyleAttributeName,
                               [NSNumber
                                   numberWithInt:underline ? NSUnderlineStyleSingle : NSUnderlineStyleNone],
                               NSUnderlineStyleAttributeName, nil];
}

void cocoa_drawer::draw_text(const ivec4 &rect, std::string_view text,
                             const std::vector<text_full_format> &runs) {
    if (!painting || text.empty() || rect.w <= 1 || rect.h <= 0)
        return;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    if (objc->attributes == nil)
        objc->attributes = text_attributes(objc->font, objc->text, objc->paragraph, underline);
    NSAttributedString *s = attributed(text, objc->attributes, runs, objc->font);
    // The text box starts one pixel right of the rectangle's edge but keeps its whole width: a text
    // in a rectangle of its measured size must not wrap (its last pixel column is clipped instead).
    const CGFloat width = rect.w;
    const CGFloat height =
        std::ceil([s boundingRectWithSize:NSMakeSize(width, unlimited) options:layout_options].size.height);
    CGFloat top = rect.y;
    if (runs.empty()) {
        if (valign == text_valign::center)
            top = rect.y - 2 + std::floor((rect.h + 2 - height) / 2);
        else if (valign == text_valign::bottom)
            top = rect.y + 2 + (rect.h - height);
    }
    // Text that does not fit starts at the top and is cut at the bottom edge.
    if (height > rect.h)
        top = rect.y;
    const CGFloat visible = std::min<CGFloat>(height, rect.y + rect.h - top);
    [NSGraphicsContext saveGraphicsState];
    NSRectClip(NSMakeRect(rect.x, rect.y - 2, rect.w, rect.h + 4));
    [s drawWithRect:NSMakeRect(rect.x + 1, top, width, std::max<CGFloat>(visible, 1)) options:layout_options];
    [NSGraphicsContext restoreGraphicsState];
    [pool release];
}

void cocoa_drawer::draw_clipped_text(const ivec4 &rect, const ivec4 &clip, std::string_view text,
                                     const std::vector<text_full_format> &runs) {
    if (!painting || clip.w <= 0 || clip.h <= 0)
        return;
    [NSGraphicsContext saveGraphicsState];
    NSRectClip(ns_rect(clip));
    draw_text(rect, text, runs);
    [NSGraphicsContext restoreGraphicsState];
}

_vec2<int> cocoa_drawer::calc_text_size(std::string_view text, _vec2<int> limit,
                                        const std::vector<text_full_format> &runs) {
    if (text.empty())
        return {};
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    if (objc->attributes == nil)
        objc->attributes = text_attributes(objc->font, objc->text, objc->paragraph, underline);
    NSAttributedString *s = attributed(text, objc->attributes, runs, objc->font);
    const NSSize bounds = NSMakeSize(limit.x > 0 ? limit.x : unlimited, limit.y > 0 ? limit.y : unlimited);
    const NSRect r = [s boundingRectWithSize:bounds options:layout_options];
    const _vec2<int> size{static_cast<int>(std::ceil(r.size.width)),
                          static_cast<int>(std::ceil(r.size.height))};
    [pool release];
    return size;
}

std::vector<int> cocoa_drawer::calc_char_offsets(std::string_view text) {
    std::vector<int> offsets;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSString *s = to_ns_string(text);
    const std::vector<NSUInteger> at = utf16_positions(text);
    NSDictionary *attributes = [NSDictionary dictionaryWithObject:objc->font forKey:NSFontAttributeName];
    offsets.reserve(at.size());
    offsets.push_back(0);
    const NSUInteger length = [s length];
    for (size_t i = 1; i < at.size(); ++i) {
        const NSUInteger end = std::min(at[i], length);
        const NSSize size = [[s substringToIndex:end] sizeWithAttributes:attributes];
        offsets.push_back(static_cast<int>(std::lround(size.width)));
    }
    [pool release];
    return offsets;
}

void cocoa_drawer::draw_shadow(const ivec4 &, _vec2<int>, unsigned) {
    NIMBIT_ASSERT(false && "Not implemented.");
}

} // namespace nimbit::ui::cocoa
