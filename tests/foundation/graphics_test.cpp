#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/image_resample.h"
#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/pixel.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/graphics/rect.h"

#include "forged_files.h"

#include <gtest/gtest.h>
#if defined(_WIN32)
#include "temp_folder.h" // running_under_wine
#endif

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <tuple>
#include <vector>

using namespace nimbit;
using namespace nimbit::graphics;

namespace {

// The reference conversion, written independently of the library's: clamp to 0..1 (NaN to 0), scale
// in single precision, round half to even (the default rounding mode).
long reference(float v, float scale) {
    return std::lrint(static_cast<float>(std::isnan(v) ? 0.0 : v < 0 ? 0.0 : v > 1 ? 1.0 : v) * scale);
}

// Channel values that probe clamping, NaN, rounding ties and both ends of the range.
constexpr float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
const float probes[] = {0.0f, 1.0f,  0.5f,   -0.25f,        1.75f,         nan,           inf,
                        -inf, 0.25f, 0.999f, 1.0f / 255.0f, 0.5f / 255.0f, 1.5f / 255.0f, 0.5f / 32768.0f};

TEST(PixelBuffer, FloatsTo8And16BitMatchTheReferenceOnEveryPathAndImportBack) {
    // Widths with and without a remainder beyond the groups of 4 (8-bit) and 2 (16-bit) pixels.
    for (int width : {1, 2, 3, 4, 5, 7, 8, 13}) {
        const int height = 9;
        // Channels cycle through the probes, the alpha channel offset per row.
        const auto probe = [&](size_t i, size_t c) {
            return probes[(i * 4 + c + (c == 3 ? i / width : 0)) % std::size(probes)];
        };
        pixel_buffer buffer({width, height});
        for (size_t i = 0; i < buffer.size_pixels(); ++i)
            buffer[i] = {probe(i, 0), probe(i, 1), probe(i, 2), probe(i, 3)};
        const unsigned pitch8 = width * 4 + 3, pitch16 = width * 8 + 6;
        std::vector<uint8_t> out8(pitch8 * height, 0xEE), out16(pitch16 * height, 0xEE);
        buffer.export_buffer(out8.data(), {width, height}, pitch8, buffer_type::rgba8);
        buffer.export_buffer(out16.data(), {width, height}, pitch16, buffer_type::rgba16);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                for (size_t c = 0; c < 4; ++c) {
                    const float v = probe(y * width + x, c);
                    ASSERT_EQ(out8[y * pitch8 + x * 4 + c], reference(v, 255.0f))
                        << width << " " << x << "," << y << " " << v;
                    uint16_t got;
                    std::memcpy(&got, &out16[y * pitch16 + x * 8 + c * 2], 2);
                    ASSERT_EQ(got, reference(v, 32768.0f)) << width << " " << x << "," << y << " " << v;
                }
            // The padding at the end of each row is left alone.
            EXPECT_TRUE(out8[y * pitch8 + width * 4] == 0xEE && out16[y * pitch16 + width * 8] == 0xEE);
        }
        // Imported from the same padded layout and exported again, the bytes come back unchanged.
        const pixel_buffer from8(out8.data(), {width, height}, pitch8, buffer_type::rgba8);
        const pixel_buffer from16(out16.data(), {width, height}, pitch16, buffer_type::rgba16);
        std::vector<uint8_t> back8(out8.size(), 0xEE), back16(out16.size(), 0xEE);
        from8.export_buffer(back8.data(), {width, height}, pitch8, buffer_type::rgba8);
        from16.export_buffer(back16.data(), {width, height}, pitch16, buffer_type::rgba16);
        EXPECT_TRUE(back8 == out8 && back16 == out16) << width;
    }
}

// A host frame straight to 8-bit RGBA gives what a pixel buffer's import and export followed by
// moving alpha from first to last gives, on sizes that leave remainders and rows padded on both sides.
TEST(ArgbToRgba8, EqualsTheBufferRoundTripReordered) {
    struct Case {
        buffer_type type;
        int width, height;
        unsigned sourcePad, destinationPad;
    };
    // clang-format off
    const Case cases[] = {
        {buffer_type::rgba32f, 1, 1, 0, 0}, {buffer_type::rgba32f, 7, 5, 32, 3}, {buffer_type::rgba32f, 13, 70, 4, 0},
        {buffer_type::rgba16, 3, 2, 0, 0}, {buffer_type::rgba16, 9, 33, 6, 4}, {buffer_type::rgba16, 16, 3, 2, 1},
        {buffer_type::rgba8, 5, 3, 0, 0}, {buffer_type::rgba8, 11, 17, 3, 2},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << unsigned(c.type) << ": " << c.width << "x" << c.height);
        const unsigned sourcePitch = c.width * bytes_per_pixel(c.type) + c.sourcePad,
                       pitch = c.width * 4 + c.destinationPad;
        std::vector<uint8_t> source(size_t(sourcePitch) * c.height);
        for (size_t i = 0; i < source.size(); ++i) // every byte pattern, padding included
            source[i] = uint8_t(i * 37 + i / 7);
        if (c.type == buffer_type::rgba32f) // floats: the probes, out of range and NaN among them
            for (int y = 0; y < c.height; ++y)
                for (int i = 0; i < c.width * 4; ++i)
                    std::memcpy(&source[y * sourcePitch + i * 4], &probes[(y + i) % std::size(probes)], 4);

        std::vector<uint8_t> expected(size_t(pitch) * c.height, 0xEE), got = expected;
        pixel_buffer(source.data(), {c.width, c.height}, sourcePitch, c.type)
            .export_buffer(expected.data(), {c.width, c.height}, pitch, buffer_type::rgba8);
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < c.width; ++x)
                std::rotate(&expected[y * pitch + x * 4], &expected[y * pitch + x * 4 + 1],
                            &expected[y * pitch + x * 4 + 4]);
        ASSERT_TRUE(convert_argb_to_rgba8(source.data(), {c.width, c.height}, sourcePitch, c.type, got.data(),
                                          pitch));
        EXPECT_EQ(got, expected); // the destination's padding untouched too
    }
    // Rows shorter than a row of pixels, on either side: nothing written.
    std::vector<uint8_t> frame(64), out(64, 0xEE);
    EXPECT_FALSE(convert_argb_to_rgba8(frame.data(), {4, 2}, 15, buffer_type::rgba8, out.data(), 16));
    EXPECT_FALSE(convert_argb_to_rgba8(frame.data(), {4, 2}, 16, buffer_type::rgba8, out.data(), 15));
    EXPECT_EQ(out, std::vector<uint8_t>(64, 0xEE));
}

TEST(PixelBuffer, ExportsRegionsAndImportsAndExportsRefuseWhatDoesNotFit) {
    pixel_buffer buffer({10, 6});
    for (size_t i = 0; i < buffer.size_pixels(); ++i)
        buffer[i] = {static_cast<float>(i % 10) / 255.0f, static_cast<float>(i / 10) / 255.0f, 0, 1};

    // Sampling blends the four nearest pixels; positions outside take the nearest edge.
    // Inside, and between the last two columns and rows.
    for (const _vec2<float> at : {_vec2<float>{4.5f, 3.25f}, {8.5f, 4.5f}}) {
        const vec4 blend = buffer.sample_pixel(at);
        EXPECT_TRUE(std::abs(blend.x * 255 - at.x) < 1e-3 && std::abs(blend.y * 255 - at.y) < 1e-3) << at.x;
    }
    EXPECT_TRUE(buffer.sample_pixel({-5.0f, 100.0f}) == buffer[50] &&
                pixel_buffer().sample_pixel({}) == vec4{});

    // The region's first pixel (4, 3) and the last of its second row (6, 4).
    std::vector<uint8_t> out(3 * 4 * 2, 0);
    buffer.export_buffer(out.data(), {3, 2}, {4, 3}, 12, buffer_type::rgba8);
    EXPECT_EQ((std::vector<int>{out[0], out[1], out[20], out[21]}), (std::vector<int>{4, 3, 6, 4}));

    // The same region as floats goes row by row.
    std::vector<vec4> floats(6);
    buffer.export_buffer(reinterpret_cast<uint8_t*>(floats.data()), {3, 2}, {4, 3}, 48, buffer_type::rgba32f);
    EXPECT_EQ(floats[4], buffer[4 * 10 + 5]);

    const std::vector<uint8_t> untouched(4 * 10 * 6, 0x5A);
    auto refused = [&](_vec2<int> size, _vec2<int> origin, unsigned pitch, buffer_type type) {
        std::vector<uint8_t> dst = untouched;
        buffer.export_buffer(dst.data(), size, origin, pitch, type);
        return dst == untouched;
    };
    EXPECT_TRUE(refused({3, 2}, {8, 0}, 12, buffer_type::rgba8)) << "runs past the right edge";
    EXPECT_TRUE(refused({3, 2}, {0, 5}, 12, buffer_type::rgba8)) << "runs past the bottom";
    EXPECT_TRUE(refused({INT_MAX, 1}, {1, 0}, 40, buffer_type::rgba8)) << "no wrap-around";
    EXPECT_TRUE(refused({3, 2}, {0, 0}, 11, buffer_type::rgba8)) << "pitch shorter than a row";
    EXPECT_TRUE(refused({3, 2}, {0, 0}, 12, static_cast<buffer_type>(8)));
    buffer.export_buffer(nullptr, {3, 2}, {0, 0}, 12, buffer_type::rgba8); // nothing to write to

    // Bad import arguments give an empty buffer.
    const uint8_t* bytes = untouched.data();
    EXPECT_TRUE(pixel_buffer(nullptr, {2, 2}, 8, buffer_type::rgba8).empty());
    EXPECT_TRUE(pixel_buffer(bytes, {2, 2}, 7, buffer_type::rgba8).empty()) << "rows shorter than a row";
    EXPECT_TRUE(pixel_buffer(bytes, {2, 2}, 8, static_cast<buffer_type>(3)).empty());
    EXPECT_TRUE(pixel_buffer(bytes, {-2, 2}, 8, buffer_type::rgba8).empty());
    EXPECT_TRUE(pixel_buffer({INT_MAX, INT_MAX}).empty()) << "too large to allocate";
}

// Before any test starts the shared pool: a forked child would inherit its locks.
TEST(PixelBufferDeathTest, NegativeOriginStops) {
    pixel_buffer buffer({4, 4});
    uint8_t out[64];
    EXPECT_DEATH(buffer.export_buffer(out, {1, 1}, {-1, 0}, 4, buffer_type::rgba8),
                 "nimbit/graphics/pixel.cpp:.+: assertion failed: origin.x >= 0 && origin.y >= 0");
}

} // namespace

TEST(Rect, IntersectionAndUnion) {
    const ivec4 a{10, 10, 20, 20}, b{25, 5, 20, 10};
    // The last two: an empty rectangle adds nothing, one pixel is not empty.
    EXPECT_EQ((std::vector{intersection(a, b), unite(a, b), unite(a, {0, 0, 5, 5}), unite({3, 3, 0, 9}, b),
                           unite({0, 0, 1, 1}, b)}),
              (std::vector<ivec4>{{25, 10, 5, 5}, {10, 5, 35, 25}, {0, 0, 30, 30}, b, {0, 0, 45, 15}}));
}

// Pixel fidelity through the toolkit is also checked by the bitmap round trips and the decode fuzzer.
TEST(ImageEncoders, PngKeepsEveryPixelOfPaddedRowsAndJpgKeepsFullColourResolution) {
    const int width = 38, height = 5; // rows end in a part of the filter's 16-byte step
    const size_t pitch = width * 4 + 12;
    std::vector<unsigned char> bytes(pitch * height, 0xEE); // the padding must never reach a file
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * 4; ++x)
            bytes[y * pitch + x] = static_cast<unsigned char>(x * 7 + y * 31);
    const rgba_view view{bytes.data(), width, height, pitch};

    const std::vector<unsigned char> png = encode_png(view), jpg = encode_jpg(view);
    // The decoder's direct path is held to libpng's reading of every filter below.
    rgba_image image;
    ASSERT_TRUE(decode_png(png.data(), png.size(), 1 << 20, image) &&
                image.size == (_vec2<int>{width, height}));
    for (int y = 0; y < height; ++y)
        EXPECT_TRUE(std::equal(image.pixels.begin() + y * width * 4,
                               image.pixels.begin() + (y + 1) * width * 4, bytes.begin() + y * pitch))
            << "row " << y;

    // The frame header: every component sampled 1x1 (byte 0x11) means no chroma subsampling.
    const unsigned char sof[] = {0xFF, 0xC0};
    const auto frame = std::search(jpg.begin(), jpg.end(), std::begin(sof), std::end(sof));
    ASSERT_TRUE(jpg.end() - frame > 19);
#if defined(_WIN32) // Wine's encoder ignores the option and halves the chroma both ways (luma 2x2)
    const int luma = running_under_wine() ? 0x22 : 0x11;
#else
    const int luma = 0x11;
#endif
    EXPECT_EQ(std::tuple(frame[5] << 8 | frame[6], frame[7] << 8 | frame[8], frame[9], frame[11], frame[14],
                         frame[17]),
              std::tuple(height, width, 3, luma, 0x11, 0x11));

    for (const rgba_view& empty : {rgba_view{}, rgba_view{bytes.data(), 0, 4, 16},
                                   rgba_view{bytes.data(), 4, 0, 16}, rgba_view{bytes.data(), 4, 4, 15}})
        EXPECT_TRUE(encode_png(empty).empty() && encode_jpg(empty).empty());
    EXPECT_TRUE(encode_jpg({bytes.data(), 70000, 1, 280000}).empty()); // beyond JPG's sides
}

namespace {

void put_be32(unsigned char* p, unsigned long v) {
    for (int k = 0; k < 4; ++k)
        p[k] = static_cast<unsigned char>(v >> (24 - 8 * k));
}

void put_chunk(std::vector<unsigned char>& png, const char* type, const std::vector<unsigned char>& data) {
    const size_t at = png.size();
    png.resize(at + 12 + data.size());
    put_be32(&png[at], static_cast<unsigned long>(data.size()));
    std::memcpy(&png[at + 4], type, 4);
    std::copy(data.begin(), data.end(), png.begin() + long(at) + 8);
    put_be32(&png[at + 8 + data.size()], crc32(0, &png[at + 4], uInt(data.size() + 4)));
}

// A width x 5 PNG of 8-bit RGB (colour 2) or RGBA (6) whose row y uses filter y over arbitrary bytes,
// optionally saying its gamma is sRGB's.
std::vector<unsigned char> png_of_every_filter(int width, unsigned char colour, bool gamma) {
    const size_t bpp = colour == 6 ? 4 : 3;
    std::string raw;
    for (int y = 0; y < 5; ++y) {
        raw.push_back(static_cast<char>(y));
        for (size_t i = 0; i < size_t(width) * bpp; ++i)
            raw.push_back(
                static_cast<char>(i % 9 ? (i * i + size_t(y)) % 3 : i * 37)); // small steps: Paeth ties
    }
    const std::string stream = deflated(raw);
    std::vector<unsigned char> png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<unsigned char> header(13, 0);
    put_be32(&header[0], static_cast<unsigned long>(width));
    put_be32(&header[4], 5);
    header[8] = 8, header[9] = colour;
    put_chunk(png, "IHDR", header);
    if (gamma)
        put_chunk(png, "gAMA", {0, 0, 0xB1, 0x8F}); // 45455: 1 / 2.2
    put_chunk(png, "IDAT", {stream.begin(), stream.end()});
    put_chunk(png, "IEND", {});
    return png;
}

} // namespace

// Plain 8-bit files are read directly, others by libpng: both must agree, and damage must fail.
TEST(ImageCodecs, PngRowsOfEveryFilterDecodeAsLibpngDecodesThemAndDamageIsCaught) {
    for (const unsigned char colour : {2, 6}) {
        const std::vector<unsigned char> direct = png_of_every_filter(61, colour, false),
                                         through_libpng = png_of_every_filter(61, colour, true);
        rgba_image a, b;
        ASSERT_TRUE(decode_png(direct.data(), direct.size(), 1 << 20, a) &&
                    decode_png(through_libpng.data(), through_libpng.size(), 1 << 20, b));
        EXPECT_TRUE(a.size == (_vec2<int>{61, 5}) && a.pixels == b.pixels && a.alpha == (colour == 6) &&
                    b.alpha == a.alpha)
            << int(colour);
        // A flipped bit in the pixel data, or in a checksum.
        for (const size_t from_end : {30u, 14u}) {
            std::vector<unsigned char> damaged = direct;
            damaged[damaged.size() - from_end] ^= 0x10;
            EXPECT_FALSE(decode_png(damaged.data(), damaged.size(), 1 << 20, a))
                << int(colour) << " " << from_end;
        }
    }
}

TEST(ImageCodecs, ResamplingWeighsColoursByAlphaAndGrowsLinearly) {
    // Shrinking 4x1 to 2x1 averages pairs; a transparent red pixel lends no red to its opaque blue
    // neighbour, only transparency.
    rgba_image strip{{4, 1}, true, {255, 0, 0, 0, 0, 0, 255, 255, 10, 20, 30, 255, 30, 40, 50, 255}};
    EXPECT_EQ(resample(strip, {2, 1}).pixels, (std::vector<unsigned char>{0, 0, 255, 128, 20, 30, 40, 255}));
    // Growing 2x1 to 4x1 (and to two rows): the outer pixels keep their values, the inner blend.
    rgba_image pair{{2, 1}, false, {0, 0, 0, 255, 200, 100, 40, 255}};
    const rgba_image grown = resample(pair, {4, 2});
    EXPECT_EQ(
        std::vector<unsigned char>(grown.pixels.begin(), grown.pixels.begin() + 16),
        (std::vector<unsigned char>{0, 0, 0, 255, 50, 25, 10, 255, 150, 75, 30, 255, 200, 100, 40, 255}));
    EXPECT_TRUE(std::equal(grown.pixels.begin(), grown.pixels.begin() + 16, grown.pixels.begin() + 16));
    EXPECT_TRUE(resample(rgba_image{}, {3, 3}).empty());
    // A new canvas keeps the pixels at the top left and is transparent black elsewhere.
    EXPECT_EQ(recanvas(pair, {3, 2}).pixels,
              (std::vector<unsigned char>{0, 0, 0, 255, 200, 100, 40, 255, 0, 0, 0, 0,
                                          0, 0, 0, 0,   0,   0,   0,  0,   0, 0, 0, 0}));
}

#if !defined(_WIN32) // the system codecs have cases of their own in foundation_win32_test.cpp
namespace {

// The toolkit's limit on a bitmap's pixels.
constexpr unsigned long long max_pixels = 16384ull * 16384ull;

rgba_image solid(_vec2<int> size) {
    return {size, true, std::vector<unsigned char>(size_t(size.x) * size_t(size.y) * 4, 200)};
}

// Decoder input, made by the encoders that saving uses.
rgba_view view_of(const rgba_image& image) {
    return {image.pixels.data(), image.size.x, image.size.y, image.pitch()};
}

// A valid PNG whose header is rewritten to claim another size (with a correct header checksum), as
// a hostile file would.
std::vector<unsigned char> png_claiming(uint32_t width, uint32_t height) {
    std::vector<unsigned char> png = encode_png(view_of(solid({1, 1})));
    put_be32(&png[16], width);
    put_be32(&png[20], height);
    put_be32(&png[29], crc32(0, &png[12], 17));
    return png;
}

} // namespace

TEST(ImageCodecs, OversizedImplausibleOrEmptyImagesAreRefused) {
    rgba_image out;
    const std::vector<unsigned char> honest = png_claiming(1, 1);
    ASSERT_TRUE(decode_png(honest.data(), honest.size(), max_pixels, out) && out.size == (_vec2<int>{1, 1}));

    // Beyond the cap; within it, but a few bytes cannot hold so many rows: refused before any allocation.
    for (const std::vector<unsigned char>& claim : {png_claiming(20000, 20000), png_claiming(16000, 16000)})
        EXPECT_FALSE(decode_png(claim.data(), claim.size(), max_pixels, out)) << claim.size();
    // A caller's smaller cap applies to both formats.
    const std::vector<unsigned char> png = encode_png(view_of(solid({8, 8})));
    const std::vector<unsigned char> jpg = encode_jpg(view_of(solid({8, 8})));
    EXPECT_FALSE(decode_image(png.data(), png.size(), 63, out) ||
                 decode_image(jpg.data(), jpg.size(), 63, out));
    EXPECT_TRUE(decode_image(png.data(), png.size(), 64, out) &&
                decode_image(jpg.data(), jpg.size(), 64, out));
    // The size rule itself.
    EXPECT_EQ((std::vector<bool>{size_allowed(1, 1, 1), size_allowed(0, 5, 100), size_allowed(5, -1, 100),
                                 size_allowed(3000000000ll, 1, ~0ull), size_allowed(65536, 65536, max_pixels),
                                 size_allowed(16384, 16384, max_pixels)}),
              (std::vector<bool>{true, false, false, false, false, true}));
}

TEST(ImageCodecs, AReducedJpgIsTheSmallestEighthStillWideEnough) {
    struct Case {
        _vec2<int> size;
        int min_width;
        _vec2<int> decoded;
    };
    // clang-format off
    const Case cases[] = {
        {{1920, 1080}, 512, {720, 405}}, // 3/8: 2/8 would be 480 wide
        {{1000,  333}, 512, {625, 209}}, // 5/8, rounded up
        {{ 300,  200}, 512, {300, 200}}, // narrower than asked: whole
        {{ 300,  200},   0, {300, 200}},
    };
    // clang-format on
    for (const Case& c : cases) {
        const std::vector<unsigned char> jpg = encode_jpg(view_of(solid(c.size)));
        rgba_image out;
        _vec2<int> full;
        ASSERT_TRUE(decode_image(jpg.data(), jpg.size(), max_pixels, out, c.min_width, &full));
        EXPECT_EQ(std::tuple(out.size, full, out.pixels.size()),
                  std::tuple(c.decoded, c.size, size_t(c.decoded.x) * size_t(c.decoded.y) * 4))
            << c.size.x << " for " << c.min_width;
    }
}
#endif
