#include "tests/support/widget_fixture.h"

#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/clipboard.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/image_stream.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"
#include "tests/foundation/temp_folder.h"

#include <cstring>

using namespace nimbit::ui::offscreen;

namespace {

struct rgba {
    unsigned char r, g, b, a;
    bool operator==(const rgba&) const = default;
};

// A bitmap whose pixel (x, y) is fill(x, y).
template <typename F> bitmap make(_vec2<int> size, image_alpha alpha, F fill) {
    bitmap b;
    EXPECT_TRUE(b.create(size, alpha));
    bitmap_data d = b.lock();
    for (int i = 0; i < size.x * size.y; ++i) { // at scale 1 the rows are packed
        const rgba p = fill(i % size.x, i / size.x);
        std::memcpy(d.bits + size_t(i) * 4, &p, 4);
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

rgba pattern(int x, int y) {
    return {static_cast<unsigned char>(x * 40), static_cast<unsigned char>(y * 90),
            static_cast<unsigned char>(255 - x * 20), static_cast<unsigned char>(60 + x * 30 + y)};
}

} // namespace

// PNG keeps every byte; JPG is close and opaque; every truncation and junk fail and keep the image
// that was loaded. Files are replaced atomically.
TEST(Bitmap, StreamsAndFilesRoundTripAndDamagedBytesFailKeepingTheImage) {
    bitmap b = make({24, 16}, image_alpha::alpha, [](int x, int y) {
        return rgba{static_cast<unsigned char>(x * 10), static_cast<unsigned char>(y * 15),
                    static_cast<unsigned char>(128 - x), static_cast<unsigned char>(100 + x * 5 + y)};
    });
    bitmap keeper = make({1, 1}, image_alpha::alpha, pattern);
    const std::vector<unsigned char> before = pixels_of(keeper);
    for (auto [format, tolerance] : {std::pair{image_format::png, 0}, {image_format::jpg, 6}}) {
        const std::vector<unsigned char> bytes = b.save_image_stream(format);
        bitmap back;
        ASSERT_TRUE(back.load_image(bytes.data(), bytes.size()));
        ASSERT_EQ(back.get_size(), (_vec2<int>{24, 16}));
        const std::vector<unsigned char> want = pixels_of(b), got = pixels_of(back);
        int worst = 0;
        for (size_t i = 0; i < got.size(); ++i)
            worst = std::max(worst, std::abs(got[i] - (i % 4 == 3 && tolerance ? 255 : want[i])));
        EXPECT_LE(worst, tolerance) << "format " << int(format);
        for (size_t n = 0; n < bytes.size(); n += (n < 64 ? 1 : 7))
            EXPECT_FALSE(keeper.load_image(bytes.data(), n)) << "format " << int(format) << " cut at " << n;
    }
    const unsigned char junk[] = "not an image at all";
    EXPECT_FALSE(keeper.load_image(junk, sizeof junk) || keeper.load_image(nullptr, 10) ||
                 keeper.load_image(image_stream{}));
    EXPECT_EQ(std::pair(keeper.get_size(), pixels_of(keeper)), std::pair(_vec2<int>{1, 1}, before));

    temp_folder tmp;
    const file_path png = tmp / "a.png";
    ASSERT_TRUE(b.save_image(png, image_format::png));
    ASSERT_TRUE(b.save_image(png, image_format::png)) << "replacing an existing file";
    bitmap back;
    ASSERT_TRUE(back.load_image(png, 2.0f));
    EXPECT_EQ(back.get_size(), (_vec2<int>{12, 8})) << "size in points at scale 2";
    EXPECT_EQ(pixels_of(back), pixels_of(b));
    EXPECT_FALSE(b.save_image(tmp / "missing/b.png", image_format::png) || back.load_image(tmp / "none.png"));
    EXPECT_TRUE(back.is_loaded()) << "a failed load keeps the image";
    // An unknown format leaves no file, and no temporary is left behind.
    EXPECT_FALSE(b.save_image(tmp / "x.img", static_cast<image_format>(7)));
    EXPECT_EQ(tree(tmp.path()), std::vector<std::string>{"a.png"});
}

// Resizing goes through the resampler (tested on its own with the graphics): shrinking averages and
// uneven ratios keep the mean of a flat image.
TEST(Bitmap, SetSizeResamplesOrCutsAndPads) {
    bitmap checker = make({2, 2}, image_alpha::alpha, [](int x, int y) {
        const unsigned char v = (x + y) % 2 * 255;
        return rgba{v, v, v, 255};
    });
    bitmap flat = make({7, 5}, image_alpha::alpha, [](int, int) { return rgba{10, 20, 30, 255}; });
    ASSERT_TRUE(checker.set_size({1, 1}, true) && flat.set_size({3, 2}, true));
    EXPECT_NEAR(pixel(checker, 0, 0).r, 128, 1);
    EXPECT_EQ(pixel(flat, 2, 1), (rgba{10, 20, 30, 255}));

    // Without resampling the image is cut or padded with transparency; bad sizes change nothing.
    bitmap b = make({3, 3}, image_alpha::alpha, pattern);
    ASSERT_TRUE(b.set_size({5, 2}, false));
    EXPECT_FALSE(b.set_size({0, 4}, true) || b.set_size({100000, 100000}, true) ||
                 bitmap().set_size({2, 2}, true));
    EXPECT_EQ(b.get_size(), (_vec2<int>{5, 2}));
    EXPECT_EQ(std::pair(pixel(b, 2, 1), pixel(b, 4, 0).a), std::pair(pattern(2, 1), uint8_t{0}));
    // A clone is independent.
    bitmap a = b.clone();
    bitmap_data d = a.lock();
    d.bits[0] = 7;
    a.unlock(d);
    EXPECT_EQ(pixel(b, 0, 0).r * 10 + pixel(a, 0, 0).r, 7);
}

TEST_F(OffscreenTest, BitmapClipboardHoldsOneImageOrText) {
    bitmap b;
    EXPECT_FALSE(b.load_image_from_clipboard() || bitmap().copy_to_clipboard());
    bitmap source = make({3, 3}, image_alpha::alpha, pattern);
    ASSERT_TRUE(source.copy_to_clipboard() && b.load_image_from_clipboard());
    EXPECT_EQ(pixels_of(b), pixels_of(source));
    EXPECT_TRUE(clipboard::set_text("text") && !clipboard::has_image() && !b.load_image_from_clipboard());
    EXPECT_EQ(pixels_of(b), pixels_of(source)) << "a failed load keeps the image";
}

// Locks give packed 32-bit rows; images are drawn at their size in points; either needs a loaded image.
TEST(BitmapDeathTest, LocksGiveThirtyTwoBitRowsImagesDrawAtTheirSizeAndBothNeedAnImage) {
    offscreen_drawer native({200, 100});
    drawer d(native);
    bitmap b, empty;
    ASSERT_TRUE(b.create({8, 6}, image_alpha::alpha));
    bitmap_data data = b.lock();
    EXPECT_EQ(std::tuple(data.bits_per_pixel, data.pitch, data.byte_count, data.size, b.is_locked()),
              std::tuple(32u, 32u, 192u, _vec2<int>{8, 6}, true));
    b.unlock(data); // lock asserts the bitmap is unlocked: every later lock checks this
    d.draw_image({3, 4}, b);
    d.draw_image({0, 0}, b, {2, 2, 4, 2});
    const auto images = native.calls_named("draw_image");
    EXPECT_EQ((std::vector{images.at(0).rect, images.at(1).rect, images.at(1).source}),
              (std::vector<ivec4>{{3, 4, 8, 6}, {0, 0, 4, 2}, {2, 2, 4, 2}}));
    EXPECT_DEATH(d.draw_image({0, 0}, empty), "isLoaded");
    EXPECT_DEATH(empty.lock(), "isLoaded");
}

TEST(OffscreenDrawer, TextMetricIsFixedAndWrapsAtSpacesThenMidWord) {
    offscreen_drawer native;
    drawer d(native);
    d.set_text_font("tahoma", 12.0f);
    EXPECT_EQ(d.calc_text_size("ab\ncdef"), (_vec2<int>{24, 30}));
    // Multi-byte characters count once; damaged bytes count one each and never overrun.
    EXPECT_EQ(d.calc_char_offsets("a\xC3\xA9\xE2\x82\xAC"), (std::vector<int>{0, 6, 12, 18}));
    EXPECT_EQ(d.calc_char_offsets("\xE2\x82"), (std::vector<int>{0, 6, 12}));
    // 5 wide, 13 tall. Only whole lines that fit show, but the first line always does.
    d.set_text_font("tahoma", 10.0f);
    // clang-format off
    const std::tuple<const char*, _vec2<int>, _vec2<int>> wraps[] = {
        {"hello world", {40, 0}, {25, 26}}, {"hello world", {55, 0}, {55, 13}}, {"abcdefghij", {20, 0}, {20, 39}},
        {"a b c d e f", {15, 0}, {15, 39}}, {"abcdefghij", {20, 30}, {20, 26}}, {"abcdefghij", {20, 5}, {20, 13}},
        {"abc", {1, 0}, {5, 39}}};
    // clang-format on
    // A run of the same size forces the full layout instead of the one-line shortcut: both agree.
    text_full_format same;
    same.size = 10.0f;
    same.end = 1000;
    for (auto [text, limit, size] : wraps) {
        EXPECT_EQ(d.calc_text_size(text, limit), size) << text << " in " << limit.x << "x" << limit.y;
        EXPECT_EQ(d.calc_text_size(text, limit, {same}), size) << text << " laid out";
    }
}
