#include "nimbit/ui/native_bitmap.h"
#include "nimbit/ui/offscreen/image_codecs.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

using namespace nimbit;
using namespace nimbit::ui::offscreen;

namespace {

uint32_t crc32(const unsigned char* p, size_t n) {
    uint32_t c = 0xFFFFFFFFu;
    for (size_t i = 0; i < n; ++i) {
        c ^= p[i];
        for (int k = 0; k < 8; ++k)
            c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
    }
    return ~c;
}

void put_be32(unsigned char* p, uint32_t v) {
    p[0] = static_cast<unsigned char>(v >> 24);
    p[1] = static_cast<unsigned char>(v >> 16);
    p[2] = static_cast<unsigned char>(v >> 8);
    p[3] = static_cast<unsigned char>(v);
}

rgba_image solid(_vec2<int> size) {
    rgba_image img;
    img.size = size;
    img.pixels.assign(size_t(size.x) * size_t(size.y) * 4, 200);
    return img;
}

// A valid PNG whose header is rewritten to claim another size (with a correct header checksum), as
// a hostile file would.
std::vector<unsigned char> png_claiming(uint32_t width, uint32_t height) {
    std::vector<unsigned char> png = encode_png(solid({1, 1}));
    put_be32(&png[16], width);
    put_be32(&png[20], height);
    put_be32(&png[29], crc32(&png[12], 17));
    return png;
}

} // namespace

TEST(ImageCodecs, OversizedImplausibleOrEmptyImagesAreRefused) {
    rgba_image out;
    const std::vector<unsigned char> honest = png_claiming(1, 1);
    ASSERT_TRUE(decode_png(honest.data(), honest.size(), ui::native_bitmap::max_pixels, out));
    EXPECT_EQ(out.size, (_vec2<int>{1, 1}));

    // Beyond the cap.
    const std::vector<unsigned char> huge = png_claiming(20000, 20000);
    EXPECT_FALSE(decode_png(huge.data(), huge.size(), ui::native_bitmap::max_pixels, out));
    // Within the cap, but a few bytes cannot hold so many rows: refused before any allocation.
    const std::vector<unsigned char> bomb = png_claiming(16000, 16000);
    EXPECT_FALSE(decode_png(bomb.data(), bomb.size(), ui::native_bitmap::max_pixels, out));
    // A caller's smaller cap applies to both formats.
    const std::vector<unsigned char> png = encode_png(solid({8, 8}));
    const std::vector<unsigned char> jpg = encode_jpeg(solid({8, 8}));
    EXPECT_FALSE(decode_image(png.data(), png.size(), 63, out) ||
                 decode_image(jpg.data(), jpg.size(), 63, out));
    EXPECT_TRUE(decode_image(png.data(), png.size(), 64, out) &&
                decode_image(jpg.data(), jpg.size(), 64, out));
    EXPECT_FALSE(out.alpha) << "JPG has no alpha";
    EXPECT_EQ(out.size, (_vec2<int>{8, 8}));
    // The size rule itself, and empty or short images encode to nothing.
    const auto cap = ui::native_bitmap::max_pixels;
    EXPECT_EQ((std::vector<bool>{size_allowed(1, 1, 1), size_allowed(0, 5, 100), size_allowed(5, -1, 100),
                                 size_allowed(3000000000ll, 1, ~0ull), size_allowed(65536, 65536, cap),
                                 size_allowed(16384, 16384, cap)}),
              (std::vector<bool>{true, false, false, false, false, true}));
    rgba_image short_buffer = solid({4, 4});
    short_buffer.pixels.resize(10);
    EXPECT_TRUE(encode_png(rgba_image{}).empty() && encode_jpeg(rgba_image{}).empty() &&
                encode_png(short_buffer).empty() && resample(rgba_image{}, {3, 3}).empty());
    EXPECT_TRUE(encode_jpeg(solid({70000, 1})).empty()) << "JPG cannot be that wide";
}

namespace {

rgba_image decode_seed(const char* name) {
    const std::string path = std::string(QUILLO_SOURCE_DIR) + "/fuzz/corpus/image_decode_fuzzer/" + name;
    std::vector<unsigned char> bytes;
    if (FILE* f = std::fopen(path.c_str(), "rb")) {
        unsigned char chunk[4096];
        size_t n;
        while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0)
            bytes.insert(bytes.end(), chunk, chunk + n);
        std::fclose(f);
    }
    rgba_image out;
    EXPECT_TRUE(decode_image(bytes.data(), bytes.size(), ui::native_bitmap::max_pixels, out)) << name;
    return out;
}

} // namespace

// Grey without alpha, a palette with transparency and inverted CMYK all come out as RGBA.
TEST(ImageCodecs, PixelLayoutsDecodeToRgba) {
    const rgba_image grey = decode_seed("grey_3x2.png"), palette = decode_seed("palette_2x2.png"),
                     cmyk = decode_seed("cmyk_8x8.jpg");
    EXPECT_EQ(std::tuple(grey.size, grey.alpha, grey.pixels.at(6), grey.pixels.at(11)),
              std::tuple(_vec2<int>{3, 2}, false, 0x80, 255));
    EXPECT_EQ(std::tuple(palette.size, palette.alpha, palette.pixels.at(5), palette.pixels.at(7)),
              std::tuple(_vec2<int>{2, 2}, true, 255, 128));
    EXPECT_EQ(std::tuple(cmyk.size, cmyk.alpha, cmyk.pixels.at(3)), std::tuple(_vec2<int>{8, 8}, false, 255));
}
