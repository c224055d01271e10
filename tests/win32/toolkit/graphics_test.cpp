// The backend's pictures under Wine: GDI+ drawing in the back buffer and on the window, the showcase
// in two colour schemes, bitmaps and the clipboard.

#include "tests/support/bitmap_sample.h"
#include "win32_session.h"

#include "nimbit/graphics/png_encoder.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget_themes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

using namespace bitmap_sample;
using namespace win32_test;
using nimbit::ivec4;
using nimbit::vec4;
using nimbit::graphics::rgba_image;

namespace {

bool looks(const rgba_image& img, int x, int y, vec4 c, float tolerance = 0.03f) {
    if (x < 0 || y < 0 || x >= img.size.x || y >= img.size.y)
        return false;
    const unsigned char* p = &img.pixels[(size_t(y) * img.size.x + x) * 4];
    return std::fabs(p[0] / 255.f - c.x) < tolerance && std::fabs(p[1] / 255.f - c.y) < tolerance &&
           std::fabs(p[2] / 255.f - c.z) < tolerance;
}

// Pixels brighter than half in a rectangle: the ink of white text on black.
int ink(const rgba_image& img, ivec4 r) {
    int n = 0;
    for (int y = std::max(r.y, 0); y < std::min(r.y + r.h, img.size.y); ++y)
        for (int x = std::max(r.x, 0); x < std::min(r.x + r.w, img.size.x); ++x)
            n += img.pixels[(size_t(y) * img.size.x + x) * 4] > 128;
    return n;
}

// What the window shows on screen at a client point, read from its device context: a 1 x 1 image.
rgba_image on_screen(HWND hwnd, int x, int y) {
    HDC dc = GetDC(hwnd);
    const COLORREF c = GetPixel(dc, x, y);
    ReleaseDC(hwnd, dc);
    return {{1, 1}, false, {GetRValue(c), GetGValue(c), GetBValue(c), 255}};
}

} // namespace

TEST(Win32Drawer, ShapesImagesAndTextLandInTheirColoursInTheBackBufferAndOnScreen) {
    nimbit::ui::window w;
    nimbit::ui::widget root;
    const auto image = sample(false);
    const char* measured = "ii MMMMMMM";
    ivec4 exact;
    w.create("canvas", {300, 300, 240, 200}, nimbit::ui::window_style_borderless);
    root.create(w.get_root(), {0, 0, 240, 200});
    nimbit::ui::event_manager::instance().add_event(
        &root, &w, nimbit::ui::event_type::draw, [&](const auto&) {
            nimbit::ui::drawer& d = w.get_drawer();
            d.clear({0, 0, 0, 1});
            d.set_brush_color({0.9f, 0.1f, 0.1f, 1});
            d.draw_rect({20, 30, 40, 20});
            d.set_pen_color({1, 1, 1, 1}, 1);
            d.draw_rect_border({70, 45, 20, 10});
            d.draw_line({200, 50}, {230, 50});
            d.get_native().draw_image({100, 10, 40, 30}, *image, {}, false);
            d.get_native().draw_image({150, 10, 40, 30}, *image, {0, 0, 40, 15},
                                      false); // the top half, stretched
            d.set_text_font("Arial", 16);
            d.set_text_color({1, 1, 1, 1});
            d.set_text_format(nimbit::ui::text_align::left, nimbit::ui::text_valign::top);
            d.draw_text({10, 60, 150, 60},
                        "Top line of a long text that cannot fit in this small box at all, no way");
            const nimbit::_vec2<int> size = d.calc_text_size(measured);
            exact = {10, 160, size.x, size.y};
            d.draw_text(exact, measured);
        });
    w.show();
    ASSERT_TRUE(wait_for([&] { return w.is_shown(); }));
    w.get_native().flush();
    const rgba_image back = native(w).get_win32_drawer().snapshot();
    const vec4 red{0.9f, 0.1f, 0.1f, 1}, black{0, 0, 0, 1}, white{1, 1, 1, 1};
    const vec4 image_red{230 / 255.f, 10 / 255.f, 10 / 255.f, 1},
        image_blue{20 / 255.f, 10 / 255.f, 220 / 255.f, 1};
    // clang-format off
    const std::tuple<int, int, vec4, float> points[] = {
        // The rectangle covers exactly (20, 30) .. (59, 49).
        {20, 30, red, 0.03f}, {59, 49, red, 0.03f}, {19, 30, black, 0.03f}, {60, 49, black, 0.03f},
        {20, 29, black, 0.03f}, {20, 50, black, 0.03f},
        // A one-pixel frame lies on the rectangle's edge pixels; a line covers one row.
        {70, 45, white, 0.03f}, {89, 54, white, 0.03f}, {89, 45, white, 0.03f}, {70, 54, white, 0.03f},
        {71, 46, black, 0.03f}, {90, 54, black, 0.03f}, {70, 55, black, 0.03f},
        {200, 50, white, 0.03f}, {229, 50, white, 0.03f}, {230, 50, black, 0.03f}, {215, 49, black, 0.03f},
        {215, 51, black, 0.03f},
        // The image, and its top half stretched over the whole rectangle.
        {110, 15, image_red, 0.05f}, {110, 35, image_blue, 0.05f}, {160, 35, image_red, 0.05f},
    };
    // clang-format on
    for (const auto& [x, y, c, tolerance] : points)
        EXPECT_TRUE(looks(back, x, y, c, tolerance)) << x << "," << y;
    // Text: set at the top, wrapped, cut at the rectangle's bottom; a text in a rectangle of its
    // measured size stays on one line.
    EXPECT_GT(ink(back, {10, 60, 150, 20}), 50);
    EXPECT_EQ(ink(back, {0, 60 + 60 + 3, 240, 160 - 123}), 0);
    EXPECT_GT(ink(back, {exact.x + exact.w / 2, exact.y, exact.w / 2, exact.h}), 20) << exact.w;
    // The screen shows the back buffer.
    EXPECT_TRUE(looks(on_screen(native(w).get_hwnd(), 30, 40), 0, 0, red));

    // Measuring needs no drawing pass: wrapping at spaces, offsets of every code point and the end,
    // a bold run wider than the regular text.
    nimbit::ui::drawer& d = w.get_drawer();
    d.set_text_font("Arial", 16);
    const nimbit::_vec2<int> wide = d.calc_text_size("MMMMMM");
    EXPECT_GT(d.calc_text_size("MMMMMM MMMMMM MMMMMM", {60, 0}).y, wide.y * 2);
    const std::vector<int> offsets = d.get_native().calc_char_offsets("aé✓b");
    ASSERT_EQ(offsets.size(), 5u);
    for (size_t i = 1; i < offsets.size(); ++i)
        EXPECT_GT(offsets[i], offsets[i - 1]);
    const nimbit::_vec2<int> plain = d.calc_text_size("bright tt");
    const nimbit::ui::text_full_format bold{
        "Arial", nimbit::ui::font_weight::bold, nimbit::ui::font_style::normal, 16, false, 0, 6};
    const nimbit::ui::text_full_format same{
        "Arial", nimbit::ui::font_weight::regular, nimbit::ui::font_style::normal, 16, false, 0, 9};
    EXPECT_GT(d.get_native().calc_text_size("bright tt", {}, {bold}).x, plain.x);
    EXPECT_EQ(d.get_native().calc_text_size("bright tt", {}, {same}), plain);
}

TEST(Win32Showcase, PaintsInBothColourSchemes) {
    std::set<std::vector<unsigned char>> pictures;
    for (const char* scheme : {"dark", "light"}) {
        if (std::string(scheme) == "light") { // the keys the showcase leaves to the theme
            using namespace nimbit::ui::theme_keys;
            const vec4 paper{0.95f, 0.95f, 0.93f, 1}, ink_color{0.1f, 0.1f, 0.12f, 1};
            for (auto key : {button_color_normal, button_color_toggle})
                nimbit::ui::theme::plugin_map.insert_or_assign(key, nimbit::ui::theme_style(paper));
            nimbit::ui::theme::plugin_map.insert_or_assign(button_font_color,
                                                           nimbit::ui::theme_style(ink_color));
        }
        nimbit::ui::window w;
        w.create("Showcase", {80, 60, nimbit::ui::showcase_size.x, nimbit::ui::showcase_size.y},
                 nimbit::ui::window_style_borderless);
        const auto show_case = nimbit::ui::build_showcase(w);
        w.show();
        ASSERT_TRUE(wait_for([&] { return w.is_shown(); }));
        w.get_native().invalidate({0, 0, nimbit::ui::showcase_size.x, nimbit::ui::showcase_size.y});
        w.get_native().flush();
        const rgba_image back = native(w).get_win32_drawer().snapshot();
        ASSERT_EQ(back.size, nimbit::ui::showcase_size);
        // Painted all over: many colours, and none of the toolkit's magenta for unstyled widgets.
        std::set<uint32_t> colours;
        int magenta = 0;
        for (size_t i = 0; i < back.pixels.size(); i += 4) {
            colours.insert(back.pixels[i] << 16 | back.pixels[i + 1] << 8 | back.pixels[i + 2]);
            magenta += back.pixels[i] == 255 && back.pixels[i + 1] == 0 && back.pixels[i + 2] == 255;
        }
        EXPECT_GT(colours.size(), 50u) << scheme;
        EXPECT_EQ(magenta, 0) << scheme;
        pictures.insert(back.pixels);
    }
    nimbit::ui::theme::plugin_map.clear();
    EXPECT_EQ(pictures.size(), 2u); // the schemes differ
}

TEST(Win32Bitmap, DecodesAndResizesAndTheClipboardKeepsTextAndImages) {
    // A PNG from the shared encoder decodes to every pixel; damage fails and changes nothing.
    const auto original = sample();
    unsigned pitch = 0;
    const std::vector<unsigned char> png =
        nimbit::graphics::encode_png({original->read_pixels(pitch), 40, 30, pitch});
    auto back = nimbit::ui::create_native_bitmap();
    ASSERT_TRUE(back->decode(png.data(), png.size()));
    EXPECT_EQ(max_difference(*original, *back), 0);
    EXPECT_FALSE(back->decode(png.data(), png.size() / 2));
    ASSERT_TRUE(back->resize({20, 10}, false)); // cut, the picture in place
    EXPECT_EQ(back->read_pixels(pitch)[2 * pitch + 3 * 4 + 1], 255);

    auto& clip = nimbit::ui::get_native_clipboard();
    ASSERT_TRUE(clip.set_text("Ümlaut ✓ line\nnext 😀"));
    EXPECT_TRUE(clip.has_text());
    EXPECT_EQ(clip.get_text(), "Ümlaut ✓ line\nnext 😀");
    ASSERT_TRUE(clip.set_image(*original));
    EXPECT_TRUE(clip.has_image());
    EXPECT_FALSE(clip.has_text()); // setting one replaces the other
    back = clip.get_image();
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(max_difference(*original, *back), 0);

    // Another program's image, as a device-independent bitmap alone, reads back too.
    ASSERT_TRUE(OpenClipboard(nullptr));
    HANDLE data = GetClipboardData(CF_DIBV5);
    ASSERT_NE(data, nullptr);
    const size_t size = GlobalSize(data);
    HGLOBAL copy = GlobalAlloc(GMEM_MOVEABLE, size);
    std::memcpy(GlobalLock(copy), GlobalLock(data), size);
    GlobalUnlock(data);
    GlobalUnlock(copy);
    EmptyClipboard();
    SetClipboardData(CF_DIBV5, copy);
    CloseClipboard();
    back = clip.get_image();
    ASSERT_NE(back, nullptr);
    EXPECT_LE(max_difference(*original, *back), 1);

    ASSERT_TRUE(clip.set_text(""));
    EXPECT_EQ(clip.get_image(), nullptr);
}
