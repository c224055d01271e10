#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/clipboard.h"
#include "nimbit/ui/image_stream.h"
#include "nimbit/ui/offscreen/offscreen_clipboard.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

struct rgba {
    unsigned char r, g, b, a;
};

// A bitmap whose pixel (x, y) is fill(x, y).
template <typename F> bitmap make(_vec2<int> size, image_alpha alpha, F fill) {
    bitmap b;
    EXPECT_TRUE(b.create(size, alpha));
    bitmap_data d = b.lock();
    for (int y = 0; y < size.y; ++y)
        for (int x = 0; x < size.x; ++x) {
            const rgba p = fill(x, y);
            unsigned char* q = d.bits + size_t(y) * d.pitch + size_t(x) * 4;
            q[0] = p.r, q[1] = p.g, q[2] = p.b, q[3] = p.a;
        }
    b.unlock(d);
    return b;
}

std::vector<unsigned char> pixels_of(bitmap& b) {
    bitmap_data d = b.lock();
    std::vector<unsigned char> out(d.bits, d.bits + d.byte_count);
    b.unlock(d);
    return out;
}

rgba pixel(bitmap& b, int x, int y) { // at scale 1 a row is four bytes per pixel
    const std::vector<unsigned char> v = pixels_of(b);
    const size_t i = (size_t(y) * size_t(b.get_size().x) + size_t(x)) * 4;
    return {v[i], v[i + 1], v[i + 2], v[i + 3]};
}

rgba grey(int v) {
    return {static_cast<unsigned char>(v), static_cast<unsigned char>(v), static_cast<unsigned char>(v), 255};
}

rgba pattern(int x, int y) {
    return {static_cast<unsigned char>(x * 40), static_cast<unsigned char>(y * 90),
            static_cast<unsigned char>(255 - x * 20), static_cast<unsigned char>(60 + x * 30 + y)};
}

} // namespace

TEST(BitmapDeathTest, LockGivesThirtyTwoBitRowsKeepsWritesAndMisuseStops) {
    bitmap b = make({5, 3}, image_alpha::alpha, pattern);
    bitmap_data d = b.lock();
    EXPECT_EQ(std::tuple(d.bits_per_pixel, d.pitch, d.byte_count, d.size, b.is_locked()),
              std::tuple(32u, 20u, 60u, _vec2<int>{5, 3}, true));
    b.unlock(d);
    EXPECT_FALSE(b.is_locked());
    bitmap opaque; // without alpha a new bitmap is opaque
    ASSERT_TRUE(opaque.create({2, 2}, image_alpha::no_alpha));
    EXPECT_EQ(pixel(opaque, 1, 1).a, 255);
    // Locking twice, unlocking what is not locked, or locking nothing stops.
    d = b.lock();
    EXPECT_DEATH(b.lock(), "isLocked == false");
    b.unlock(d);
    EXPECT_DEATH(b.unlock(d), "isLocked == true");
    bitmap empty;
    EXPECT_DEATH(empty.lock(), "isLoaded");
}

// PNG keeps every byte; JPG is close and opaque.
TEST(Bitmap, StreamsRoundTripAndCarryTheirScale) {
    bitmap b = make({24, 16}, image_alpha::alpha, [](int x, int y) {
        return rgba{static_cast<unsigned char>(x * 10), static_cast<unsigned char>(y * 15),
                    static_cast<unsigned char>(128 - x), static_cast<unsigned char>(100 + x * 5 + y)};
    });
    for (auto [format, tolerance] : {std::pair{image_format::png, 0}, {image_format::jpg, 6}}) {
        const std::vector<unsigned char> bytes = b.save_image_stream(format);
        bitmap back;
        ASSERT_TRUE(back.load_image(bytes.data(), bytes.size()));
        ASSERT_EQ(back.get_size(), (_vec2<int>{24, 16}));
        int worst = 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 24; ++x) {
                const rgba p = pixel(back, x, y), q = pixel(b, x, y);
                worst = std::max({worst, std::abs(p.r - q.r), std::abs(p.g - q.g), std::abs(p.b - q.b),
                                  std::abs(p.a - (tolerance ? 255 : q.a))});
            }
        EXPECT_LE(worst, tolerance) << "format " << int(format);
    }
    // A stream carries its scale: the size is in points, locking reports pixels.
    const auto wide = make({8, 4}, image_alpha::alpha, pattern).save_image_stream(image_format::png);
    bitmap back;
    ASSERT_TRUE(back.load_image(image_stream(wide.data(), static_cast<uint32_t>(wide.size()), 3, 4.0f)));
    bitmap_data d = back.lock();
    back.unlock(d);
    EXPECT_EQ(std::tuple(back.get_scale(), back.get_size(), d.size),
              std::tuple(4.0f, _vec2<int>{2, 1}, _vec2<int>{8, 4}));
}

TEST(Bitmap, SavesAtomicallyAndLoadsFromFiles) {
    const auto dir = std::filesystem::path(::testing::TempDir()) / "quillo_bitmap_files";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    bitmap b = make({4, 4}, image_alpha::alpha, pattern);
    const file_path png((dir / "a.png").string());
    ASSERT_TRUE(b.save_image(png, image_format::png));
    ASSERT_TRUE(b.save_image(png, image_format::png)) << "replacing an existing file";
    EXPECT_EQ(std::filesystem::directory_iterator(dir)->path().filename(), "a.png");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 1) << "no temporary left";
    bitmap back;
    ASSERT_TRUE(back.load_image(png, 2.0f));
    EXPECT_EQ(back.get_size(), (_vec2<int>{2, 2})) << "size in points at scale 2";
    EXPECT_EQ(pixels_of(back), pixels_of(b));

    EXPECT_FALSE(b.save_image(file_path((dir / "missing" / "b.png").string()), image_format::png));
    EXPECT_FALSE(back.load_image(file_path((dir / "none.png").string())));
    EXPECT_FALSE(back.load_image(file_path(dir.string()))) << "a folder is not an image";
    EXPECT_TRUE(back.is_loaded()) << "a failed load keeps the image";
    // Unknown formats and empty bitmaps give nothing and leave no file.
    EXPECT_TRUE(b.save_image_stream(static_cast<image_format>(3)).empty() &&
                b.save_image_stream(static_cast<image_format>(0)).empty() &&
                bitmap().save_image_stream(image_format::png).empty());
    EXPECT_FALSE(b.save_image(file_path((dir / "x.img").string()), static_cast<image_format>(7)));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 1);
    std::filesystem::remove_all(dir);
}

TEST(Bitmap, DamagedBytesFailAndKeepTheImage) {
    bitmap source = make({9, 6}, image_alpha::alpha, pattern);
    bitmap keeper = make({1, 1}, image_alpha::alpha, pattern);
    const std::vector<unsigned char> before = pixels_of(keeper);
    for (image_format format : {image_format::png, image_format::jpg}) {
        const std::vector<unsigned char> good = source.save_image_stream(format);
        // Every truncation fails.
        for (size_t n = 0; n < good.size(); n += (n < 64 ? 1 : 7))
            EXPECT_FALSE(keeper.load_image(good.data(), n)) << "format " << int(format) << " cut at " << n;
        // Flipped bytes must never crash. In PNG's header (signature and IHDR, 33 bytes) and from
        // the pixel data on they must be caught; a damaged ancillary chunk may pass, as it changes no pixel.
        const size_t idat = std::string(good.begin(), good.end()).find("IDAT") - 4;
        for (size_t i = 0; i < good.size(); ++i) {
            std::vector<unsigned char> bad = good;
            bad[i] ^= 0x5A;
            const bool vital = format == image_format::png && (i < 33 || i >= idat);
            EXPECT_FALSE(bitmap().load_image(bad.data(), bad.size()) && vital) << "byte " << i;
        }
    }
    const unsigned char junk[] = "not an image at all";
    EXPECT_FALSE(keeper.load_image(junk, sizeof junk));
    EXPECT_FALSE(keeper.load_image(nullptr, 10));
    EXPECT_FALSE(keeper.load_image(image_stream{}));
    EXPECT_EQ(keeper.get_size(), (_vec2<int>{1, 1}));
    EXPECT_EQ(pixels_of(keeper), before);
}

// Shrinking averages, growing interpolates between pixel centres and keeps the ends, a transparent
// neighbour lends no colour (only transparency), and uneven ratios keep the mean of a flat image.
TEST(Bitmap, SetSizeResamplesOrCutsAndPads) {
    bitmap checker = make({2, 2}, image_alpha::alpha, [](int x, int y) { return grey((x + y) % 2 * 255); });
    bitmap ramp = make({2, 1}, image_alpha::alpha, [](int x, int) { return grey(x * 255); });
    bitmap edge = make({2, 1}, image_alpha::alpha, [](int x, int) {
        return x ? rgba{0, 255, 0, 0} : rgba{255, 0, 0, 255};
    });
    bitmap flat = make({7, 5}, image_alpha::alpha, [](int, int) { return rgba{10, 20, 30, 255}; });
    ASSERT_TRUE(checker.set_size({1, 1}, true) && ramp.set_size({4, 1}, true) &&
                edge.set_size({1, 1}, true) && flat.set_size({3, 2}, true));
    EXPECT_NEAR(pixel(checker, 0, 0).r, 128, 1);
    EXPECT_EQ(pixel(checker, 0, 0).a, 255);
    EXPECT_EQ((std::vector<int>{pixel(ramp, 0, 0).r, pixel(ramp, 1, 0).r, pixel(ramp, 2, 0).r,
                                pixel(ramp, 3, 0).r}),
              (std::vector<int>{0, 64, 191, 255}));
    const rgba e = pixel(edge, 0, 0);
    EXPECT_EQ(e.r * 1000 + e.g, 255000) << "red, no green";
    EXPECT_NEAR(e.a, 128, 1);
    EXPECT_EQ(std::tuple(pixel(flat, 2, 1).r, pixel(flat, 2, 1).b, pixel(flat, 2, 1).a),
              std::tuple(10, 30, 255));

    // Without resampling the image is cut or padded with transparency; bad sizes change nothing.
    bitmap b = make({3, 3}, image_alpha::alpha, pattern);
    ASSERT_TRUE(b.set_size({5, 2}, false));
    EXPECT_FALSE(b.set_size({0, 4}, true) || b.set_size({100000, 100000}, true) ||
                 bitmap().set_size({2, 2}, true));
    EXPECT_EQ(b.get_size(), (_vec2<int>{5, 2}));
    EXPECT_EQ(std::tuple(pixel(b, 2, 1).r, pixel(b, 2, 1).a, pixel(b, 4, 0).a),
              std::tuple(pattern(2, 1).r, pattern(2, 1).a, 0));
    // A clone is independent, and unloading empties.
    bitmap a = b.clone();
    bitmap_data d = a.lock();
    d.bits[0] = 7;
    a.unlock(d);
    EXPECT_EQ(pixel(b, 0, 0).r * 10 + pixel(a, 0, 0).r, 7);
    a.unload();
    EXPECT_FALSE(a.is_loaded() || bitmap().clone().is_loaded() || a.get_native());
    EXPECT_EQ(a.get_size(), (_vec2<int>{0, 0}));
}

TEST(Bitmap, ClipboardHoldsOneImageOrText) {
    offscreen_clipboard& clip = get_offscreen_clipboard();
    clip.clear();
    bitmap b;
    EXPECT_FALSE(b.load_image_from_clipboard() || b.is_loaded() || bitmap().copy_to_clipboard());
    bitmap source = make({3, 3}, image_alpha::alpha, pattern);
    ASSERT_TRUE(source.copy_to_clipboard());
    EXPECT_TRUE(clip.has_image() && !clipboard::has_text());
    ASSERT_TRUE(b.load_image_from_clipboard());
    EXPECT_EQ(pixels_of(b), pixels_of(source));
    const unsigned changes = clip.change_count();
    EXPECT_TRUE(clipboard::set_text("h\xC3\xA9llo"));
    EXPECT_EQ(std::tuple(clip.change_count(), clipboard::has_image(), clipboard::get_text()),
              std::tuple(changes + 1, false, std::string("h\xC3\xA9llo")))
        << "one or the other";
    EXPECT_FALSE(b.load_image_from_clipboard());
    EXPECT_EQ(pixels_of(b), pixels_of(source)) << "a failed load keeps the image";
    clip.clear();
}
