#include "nimbit/ui/cocoa/native_bitmap.h"

#import <AppKit/AppKit.h>

#include "nimbit/utils/thread_pool.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace nimbit::ui {

std::unique_ptr<native_bitmap> create_native_bitmap() { return std::make_unique<cocoa::cocoa_bitmap>(); }

namespace cocoa {

namespace {

// Pool threads load, scale and save bitmaps, and AppKit hands out autoreleased objects there too:
// each job gets an autorelease pool of its own, or those objects would leak. Installed with the
// bitmap code, which every program that gives images to the pool links.
void *open_job_pool() { return [[NSAutoreleasePool alloc] init]; }
void close_job_pool(void *pool) { [static_cast<NSAutoreleasePool *>(pool) release]; }
const bool job_pools_installed = (set_thread_scope({open_job_pool, close_job_pool}), true);

bool size_ok(_vec2<int> s) {
    return s.x > 0 && s.y > 0 &&
           static_cast<unsigned long long>(s.x) * static_cast<unsigned long long>(s.y) <=
               native_bitmap::max_pixels;
}

bool has_signature(const unsigned char *bytes, size_t length) {
    static const unsigned char png[] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    static const unsigned char jpg[] = {0xFF, 0xD8, 0xFF};
    return (length >= sizeof png && std::memcmp(bytes, png, sizeof png) == 0) ||
           (length >= sizeof jpg && std::memcmp(bytes, jpg, sizeof jpg) == 0);
}

// A meshed 8-bit RGBA rep of the given size; premultiplied unless `straight`.
NSBitmapImageRep *new_rgba_rep(_vec2<int> s, bool straight) {
    return [[NSBitmapImageRep alloc]
        initWithBitmapDataPlanes:NULL
                      pixelsWide:s.x
                      pixelsHigh:s.y
                   bitsPerSample:8
                 samplesPerPixel:4
                        hasAlpha:YES
                        isPlanar:NO
                  colorSpaceName:NSDeviceRGBColorSpace
                    bitmapFormat:straight ? NSAlphaNonpremultipliedBitmapFormat : NSBitmapFormat(0)
                     bytesPerRow:s.x * 4
                    bitsPerPixel:32];
}

void premultiply_row(const unsigned char *in, unsigned char *out, int width) {
    for (int x = 0; x < width; ++x, in += 4, out += 4) {
        const unsigned a = in[3];
        out[0] = static_cast<unsigned char>((in[0] * a + 127) / 255);
        out[1] = static_cast<unsigned char>((in[1] * a + 127) / 255);
        out[2] = static_cast<unsigned char>((in[2] * a + 127) / 255);
        out[3] = static_cast<unsigned char>(a);
    }
}

void unpremultiply(unsigned char *p, size_t count) {
    for (size_t i = 0; i < count; ++i, p += 4) {
        const unsigned a = p[3];
        if (a == 0 || a == 255)
            continue;
        for (int c = 0; c < 3; ++c)
            p[c] = static_cast<unsigned char>(std::min(255u, (p[c] * 255u + a / 2) / a));
    }
}

// Bilinear scaling of straight RGBA pixels, weighting colours by alpha so that transparent pixels
// do not darken the edges. Done here rather than by drawing into a bitmap context, which GNUstep's
// back-end cannot do without a window server.
std::vector<unsigned char> scale_rgba(const std::vector<unsigned char> &in, _vec2<int> from, _vec2<int> to) {
    std::vector<unsigned char> out(static_cast<size_t>(to.x) * to.y * 4);
    const double sx = double(from.x) / to.x, sy = double(from.y) / to.y;
    for (int y = 0; y < to.y; ++y) {
        const double fy = std::clamp((y + 0.5) * sy - 0.5, 0.0, double(from.y - 1));
        const int y0 = static_cast<int>(fy), y1 = std::min(y0 + 1, from.y - 1);
        const double wy = fy - y0;
        for (int x = 0; x < to.x; ++x) {
            const double fx = std::clamp((x + 0.5) * sx - 0.5, 0.0, double(from.x - 1));
            const int x0 = static_cast<int>(fx), x1 = std::min(x0 + 1, from.x - 1);
            const double wx = fx - x0;
            const unsigned char *p[4] = {
                &in[(size_t(y0) * from.x + x0) * 4], &in[(size_t(y0) * from.x + x1) * 4],
                &in[(size_t(y1) * from.x + x0) * 4], &in[(size_t(y1) * from.x + x1) * 4]};
            const double w[4] = {(1 - wx) * (1 - wy), wx * (1 - wy), (1 - wx) * wy, wx * wy};
            double a = 0, c[3] = {0, 0, 0};
            for (int i = 0; i < 4; ++i) {
                const double wa = w[i] * p[i][3];
                a += wa;
                for (int k = 0; k < 3; ++k)
                    c[k] += wa * p[i][k];
            }
            unsigned char *o = &out[(size_t(y) * to.x + x) * 4];
            for (int k = 0; k < 3; ++k)
                o[k] = a > 0 ? static_cast<unsigned char>(std::lround(std::min(255.0, c[k] / a))) : 0;
            o[3] = static_cast<unsigned char>(std::lround(std::min(255.0, a)));
        }
    }
    return out;
}

// Any other layout (16-bit or float samples, planes, CMYK): one colour at a time through AppKit.
bool read_by_color(NSBitmapImageRep *rep, _vec2<int> s, std::vector<unsigned char> &out) {
    out.resize(static_cast<size_t>(s.x) * s.y * 4);
    for (int y = 0; y < s.y; ++y) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        for (int x = 0; x < s.x; ++x) {
            NSColor *c = [[rep colorAtX:x y:y] colorUsingColorSpaceName:NSDeviceRGBColorSpace];
            unsigned char *o = &out[(static_cast<size_t>(y) * s.x + x) * 4];
            if (c == nil) {
                o[0] = o[1] = o[2] = o[3] = 0;
                continue;
            }
            o[0] = static_cast<unsigned char>(
                std::lround(std::clamp([c redComponent], CGFloat(0), CGFloat(1)) * 255));
            o[1] = static_cast<unsigned char>(
                std::lround(std::clamp([c greenComponent], CGFloat(0), CGFloat(1)) * 255));
            o[2] = static_cast<unsigned char>(
                std::lround(std::clamp([c blueComponent], CGFloat(0), CGFloat(1)) * 255));
            o[3] = static_cast<unsigned char>(
                std::lround(std::clamp([c alphaComponent], CGFloat(0), CGFloat(1)) * 255));
        }
        [pool release];
    }
    return true;
}

} // namespace

cocoa_bitmap::~cocoa_bitmap() { drop_drawable(); }

void cocoa_bitmap::drop_drawable() const {
    [cached release];
    cached = nil;
}

bool cocoa_bitmap::create(_vec2<int> new_size, bool with_alpha) {
    if (!size_ok(new_size))
        return false;
    drop_drawable();
    size = new_size;
    alpha = with_alpha;
    pixels.assign(static_cast<size_t>(size.x) * size.y * 4, 0);
    if (!alpha)
        for (size_t i = 3; i < pixels.size(); i += 4)
            pixels[i] = 255;
    return true;
}

std::unique_ptr<native_bitmap> cocoa_bitmap::clone() const {
    auto copy = std::make_unique<cocoa_bitmap>();
    copy->size = size;
    copy->alpha = alpha;
    copy->pixels = pixels;
    return copy;
}

// Reads the rep's samples into straight RGBA. Meshed 8-bit reps are copied directly; anything
// else is read colour by colour.
bool cocoa_bitmap::adopt_rep(NSBitmapImageRep *rep) {
    const _vec2<int> s{static_cast<int>([rep pixelsWide]), static_cast<int>([rep pixelsHigh])};
    if (!size_ok(s))
        return false;
    const NSInteger spp = [rep samplesPerPixel];
    const NSInteger bps = [rep bitsPerSample];
    const NSUInteger format = [rep bitmapFormat];
    const bool rep_alpha = [rep hasAlpha];
    NSString *space = [rep colorSpaceName];
    const bool gray = [space isEqualToString:NSDeviceWhiteColorSpace] ||
                      [space isEqualToString:NSCalibratedWhiteColorSpace];
    const bool rgb =
        [space isEqualToString:NSDeviceRGBColorSpace] || [space isEqualToString:NSCalibratedRGBColorSpace];
    const unsigned char *data = [rep bitmapData];
    const NSInteger pitch = [rep bytesPerRow];
    const NSInteger bpp = [rep bitsPerPixel];
    const NSInteger expected_spp = (gray ? 1 : 3) + (rep_alpha ? 1 : 0);
    std::vector<unsigned char> out;
    if (data && bps == 8 && ![rep isPlanar] && (gray || rgb) && spp == expected_spp && bpp == spp * 8 &&
        !(format & (NSFloatingPointSamplesBitmapFormat | NSAlphaFirstBitmapFormat)) && pitch >= s.x * spp) {
        out.resize(static_cast<size_t>(s.x) * s.y * 4);
        for (int y = 0; y < s.y; ++y) {
            const unsigned char *in = data + static_cast<size_t>(y) * pitch;
            unsigned char *o = &out[static_cast<size_t>(y) * s.x * 4];
            for (int x = 0; x < s.x; ++x, in += spp, o += 4) {
                o[0] = in[0];
                o[1] = gray ? in[0] : in[1];
                o[2] = gray ? in[0] : in[2];
                o[3] = rep_alpha ? in[spp - 1] : 255;
            }
        }
        if (rep_alpha && !(format & NSAlphaNonpremultipliedBitmapFormat))
            unpremultiply(out.data(), static_cast<size_t>(s.x) * s.y);
    } else if (!read_by_color(rep, s, out)) {
        return false;
    }
    drop_drawable();
    size = s;
    alpha = rep_alpha;
    pixels = std::move(out);
    return true;
}

bool cocoa_bitmap::decode(const unsigned char *bytes, size_t length) {
    // PNG and JPG only: the other decoders AppKit carries are not for untrusted files.
    if (!bytes || !has_signature(bytes, length))
        return false;
    return decode_any(bytes, length);
}

bool cocoa_bitmap::decode_any(const unsigned char *bytes, size_t length) {
    if (!bytes || length == 0)
        return false;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    bool ok = false;
    @try {
        NSData *data = [NSData dataWithBytes:bytes length:length];
        NSBitmapImageRep *rep = [[NSBitmapImageRep alloc] initWithData:data];
        if (rep != nil) {
            ok = adopt_rep(rep);
            [rep release];
        }
    } @catch (NSException *e) {
        ok = false; // a damaged file raises inside the decoder
    }
    [pool release];
    return ok;
}

// A straight-alpha rep over a copy of the pixels; without alpha the fourth channel is left out.
static NSBitmapImageRep *new_export_rep(const std::vector<unsigned char> &pixels, _vec2<int> s,
                                        bool with_alpha) {
    const int spp = with_alpha ? 4 : 3;
    NSBitmapImageRep *rep = [[NSBitmapImageRep alloc]
        initWithBitmapDataPlanes:NULL
                      pixelsWide:s.x
                      pixelsHigh:s.y
                   bitsPerSample:8
                 samplesPerPixel:spp
                        hasAlpha:with_alpha ? YES : NO
                        isPlanar:NO
                  colorSpaceName:NSDeviceRGBColorSpace
                    bitmapFormat:with_alpha ? NSAlphaNonpremultipliedBitmapFormat : NSBitmapFormat(0)
                     bytesPerRow:s.x * spp
                    bitsPerPixel:spp * 8];
    if (rep == nil)
        return nil;
    unsigned char *out = [rep bitmapData];
    const unsigned char *in = pixels.data();
    for (size_t i = 0, n = static_cast<size_t>(s.x) * s.y; i < n; ++i, in += 4, out += spp)
        std::memcpy(out, in, static_cast<size_t>(spp));
    return rep;
}

std::vector<unsigned char> cocoa_bitmap::encode_tiff() const {
    std::vector<unsigned char> bytes;
    if (pixels.empty())
        return bytes;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSBitmapImageRep *rep = new_export_rep(pixels, size, alpha);
    if (rep != nil) {
        NSData *data = [rep TIFFRepresentation];
        if (data != nil) {
            const auto *p = static_cast<const unsigned char *>([data bytes]);
            bytes.assign(p, p + [data length]);
        }
        [rep release];
    }
    [pool release];
    return bytes;
}

unsigned char *cocoa_bitmap::lock_pixels(unsigned &pitch) {
    pitch = static_cast<unsigned>(size.x) * 4;
    drop_drawable();
    return pixels.empty() ? nullptr : pixels.data();
}

const unsigned char *cocoa_bitmap::read_pixels(unsigned &pitch) const {
    pitch = static_cast<unsigned>(size.x) * 4;
    return pixels.empty() ? nullptr : pixels.data();
}

NSBitmapImageRep *cocoa_bitmap::drawable() const {
    if (cached != nil || pixels.empty())
        return cached;
    cached = new_rgba_rep(size, false);
    if (cached != nil) {
        unsigned char *out = [cached bitmapData];
        const size_t pitch = static_cast<size_t>([cached bytesPerRow]);
        for (int y = 0; y < size.y; ++y)
            premultiply_row(&pixels[static_cast<size_t>(y) * size.x * 4], out + y * pitch, size.x);
    }
    return cached;
}

bool cocoa_bitmap::resize(_vec2<int> new_size, bool resample) {
    if (!size_ok(new_size))
        return false;
    if (new_size == size)
        return true;
    std::vector<unsigned char> out;
    if (resample && !pixels.empty()) {
        out = scale_rgba(pixels, size, new_size);
    } else {
        out.assign(static_cast<size_t>(new_size.x) * new_size.y * 4, 0);
        const int w = std::min(size.x, new_size.x), h = std::min(size.y, new_size.y);
        for (int y = 0; y < h; ++y)
            std::memcpy(&out[static_cast<size_t>(y) * new_size.x * 4],
                        &pixels[static_cast<size_t>(y) * size.x * 4], static_cast<size_t>(w) * 4);
    }
    drop_drawable();
    size = new_size;
    pixels = std::move(out);
    return true;
}

} // namespace cocoa
} // namespace nimbit::ui
