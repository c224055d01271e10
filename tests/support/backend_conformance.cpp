// The scenes every window-system backend must pass: widgets painted in place, input reaching the
// widget under it, timers and modal sessions, drawing read back from the window, bitmaps and the
// clipboard keeping their pixels.

#include "tests/support/backend_conformance.h"
#include "tests/support/bitmap_sample.h"

#include "nimbit/graphics/png_encoder.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/native_drawer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <tuple>

using namespace backend_test;
using namespace bitmap_sample;
using nimbit::ivec4;
using nimbit::vec4;
using nimbit::graphics::rgba_image;
using nimbit::ui::event_type;
using values = std::vector<uint64_t>;

namespace {

constexpr vec4 black{0, 0, 0, 1}, white{1, 1, 1, 1}, blue{0.1f, 0.2f, 0.8f, 1}, red{0.9f, 0.1f, 0.1f, 1};
// The sample picture's two halves.
constexpr vec4 image_red{230 / 255.f, 10 / 255.f, 10 / 255.f, 1},
    image_blue{20 / 255.f, 10 / 255.f, 220 / 255.f, 1};

// Pixels brighter than half in a rectangle: the ink of white text on black.
int ink(const rgba_image& img, ivec4 r) {
    int n = 0;
    for (int y = std::max(r.y, 0); y < std::min(r.y + r.h, img.size.y); ++y)
        for (int x = std::max(r.x, 0); x < std::min(r.x + r.w, img.size.x); ++x)
            n += img.pixels[(size_t(y) * img.size.x + x) * 4] > 128;
    return n;
}

} // namespace

bool backend_test::looks(const rgba_image& img, int x, int y, vec4 c, float tolerance) {
    if (x < 0 || y < 0 || x >= img.size.x || y >= img.size.y)
        return false;
    const unsigned char* p = &img.pixels[(size_t(y) * img.size.x + x) * 4];
    return std::fabs(p[0] / 255.f - c.x) < tolerance && std::fabs(p[1] / 255.f - c.y) < tolerance &&
           std::fabs(p[2] / 255.f - c.z) < tolerance;
}

TEST(BackendWindow, PaintsWidgetsInPlaceAndRoutesPointerWheelAndKeysToThem) {
    probe_window p({100, 120, 200, 100}, nimbit::ui::window_style_borderless, blue);
    probe_widget child{red};
    child.create(p.root, {20, 30, 40, 20});
    p.w.show();
    rgba_image img;
    ASSERT_TRUE(wait_for([&] {
        img = shown(p.w);
        return looks(img, 25, 35, red) && looks(img, 5, 5, blue);
    }));
    // The child covers exactly (20, 30) .. (59, 49): y grows downwards.
    // clang-format off
    const std::tuple<int, int, vec4> points[] = {
        {20, 30, red}, {59, 49, red}, {19, 30, blue}, {60, 49, blue}, {20, 29, blue}, {20, 50, blue}, {199, 99, blue}};
    // clang-format on
    for (const auto& [x, y, color] : points)
        EXPECT_TRUE(looks(img, x, y, color)) << x << "," << y;
    ASSERT_TRUE(wait_for([&] { return p.w.has_focus(); }));

    // A double click replaces the second press and swallows the release after it.
    ASSERT_TRUE(double_click(p.w, {30, 40}));
    ASSERT_TRUE(wait_for([&] { return child.count(event_type::mouse_dbl_click) == 1; }));
    pump(0.1);
    EXPECT_EQ(child.data_of(event_type::mouse_down), values{0});
    EXPECT_EQ(child.count(event_type::mouse_up), 1u);
    pump(0.6); // past the double-click interval
    child.seen.clear();
    // Clicks go to the widget under the pointer, with the button in the data; the child ends at
    // (59, 49).
    for (auto [x, y, button, target] :
         {std::tuple{59, 49, 2, &child}, {60, 49, 1, &p.root}, {20, 29, 0, &p.root}}) {
        const size_t ups = target->count(event_type::mouse_up);
        ASSERT_TRUE(click(p.w, {x, y}, button)) << x << "," << y;
        ASSERT_TRUE(wait_for([&] { return target->count(event_type::mouse_up) > ups; })) << x << "," << y;
        EXPECT_EQ(target->data_of(event_type::mouse_up).back(), uint64_t(button)) << x << "," << y;
    }
    EXPECT_EQ(child.data_of(event_type::mouse_down), values{2});
    EXPECT_EQ(p.root.data_of(event_type::mouse_down), (values{1, 0}));

    // The wheel goes to the widget under the pointer, forty per line.
    ASSERT_TRUE(wheel(p.w, {30, 40}, 1));
    ASSERT_TRUE(wait_for([&] { return child.count(event_type::mouse_wheel) >= 1; }));
    const double up = nimbit::ui::wheel_delta(child.data_of(event_type::mouse_wheel).at(0));
    EXPECT_GT(up, 0.0);
    EXPECT_EQ(std::fmod(up, 40.0), 0.0);

    // Keys go to the focused widget as raw key, character and up: key_down carries the upper-cased
    // character, key_down_raw the virtual key code (A is 0, B is 11) with the character in the high
    // half.
    child.focus();
    child.seen.clear();
    ASSERT_TRUE(type(p.w, "aB"));
    ASSERT_TRUE(wait_for([&] { return child.count(event_type::key_char) == 2; }));
    EXPECT_EQ(child.data_of(event_type::key_char), (values{'a', 'B'}));
    EXPECT_EQ(child.data_of(event_type::key_down), (values{'A', 'B'}));
    const values raw = child.data_of(event_type::key_down_raw);
    ASSERT_GE(raw.size(), 2u);
    EXPECT_EQ(raw.front(), nimbit::ui::pack_pair(0, 'A'));
    EXPECT_EQ(raw.back(), nimbit::ui::pack_pair(11, 'B'));
    EXPECT_EQ(child.data_of(event_type::key_up).back(), 'B');

    // Names come from the keyboard layout.
    for (auto [code, name] : {std::pair{0, "A"}, {49, "Space"}, {96, "F5"}, {-5, ""}, {100000, ""}})
        EXPECT_EQ(nimbit::ui::keyboard::get_key_name(code), name) << code;
}

TEST(BackendTimers, TimersRepeatOrFireOnceMayDestroyTheirWindowAndEndModalSessions) {
    probe_window owner({40, 40, 160, 90});
    owner.w.show();
    probe_window t({200, 200, 160, 90}, nimbit::ui::window_style_titled, {0.2f, 0.2f, 0.2f, 1}, &owner.w);
    t.root.add_timer(7, 20, false);
    t.root.add_timer(8, 20, true);
    ASSERT_TRUE(wait_for([&] { return t.root.count(event_type::timer) >= 5; }));
    const values ids = t.root.data_of(event_type::timer);
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 8ull), 1);
    EXPECT_GE(std::count(ids.begin(), ids.end(), 7ull), 4);
    t.root.remove_timer(7);

    // A timer, repeating or not, may destroy its own window; nothing fires into it afterwards.
    for (bool once : {false, true}) {
        auto doomed = std::make_unique<probe_window>(ivec4{10, 10, 50, 50});
        bool gone = false;
        doomed->on_timer(&gone, [&] { doomed.reset(), gone = true; });
        doomed->root.add_timer(1, 10, once);
        ASSERT_TRUE(wait_for([&] { return gone; })) << once;
        pump(0.05);
    }

    // show_modal returns the end_modal code; other windows' timers keep running during the session.
    t.on_timer(&t, [&] {
        if (owner.root.count(event_type::timer) >= 3)
            t.w.end_modal(42);
    });
    owner.root.add_timer(1, 20, false);
    t.root.add_timer(2, 20, false);
    EXPECT_EQ(t.w.show_modal(), 42);
    EXPECT_GE(owner.root.count(event_type::timer), 3u);
    EXPECT_FALSE(t.w.is_modal());
    EXPECT_FALSE(t.w.is_shown());
    t.root.remove_timer(2);
    owner.root.remove_timer(1);
    // Closed otherwise, the session returns 0: show_modal starts again from 0.
    t.w.set_modal_code(9);
    owner.on_timer(&t, [&] { t.w.hide(); });
    owner.root.add_timer(3, 50, true);
    EXPECT_EQ(t.w.show_modal(), 0);
    EXPECT_FALSE(t.w.is_modal());
}

TEST(BackendDrawer, ShapesImagesAndTextLandInPlaceAndTextIsMeasuredAndKeptInItsRectangle) {
    nimbit::ui::window w;
    nimbit::ui::widget root;
    const auto image = sample(false);
    const char* measured = "ii MMMMMMM";
    ivec4 exact;
    w.create("canvas", {300, 300, 240, 200}, nimbit::ui::window_style_borderless);
    root.create(w.get_root(), {0, 0, 240, 200});
    nimbit::ui::event_manager::instance().add_event(&root, &w, event_type::draw, [&](const auto&) {
        nimbit::ui::drawer& d = w.get_drawer();
        d.clear(black);
        d.set_pen_color(white, 1);
        d.draw_rect_border({70, 45, 20, 10});
        d.draw_line({200, 50}, {230, 50});
        d.get_native().draw_image({100, 10, 40, 30}, *image, {}, false);
        // The top half, stretched.
        d.get_native().draw_image({150, 10, 40, 30}, *image, {0, 0, 40, 15}, false);
        d.set_text_font("Arial", 16);
        d.set_text_color(white);
        d.set_text_format(nimbit::ui::text_align::left, nimbit::ui::text_valign::top);
        d.draw_text({10, 60, 150, 60},
                    "Top line of a long text that cannot fit in this small box at all, no way");
        const nimbit::_vec2<int> size = d.calc_text_size(measured);
        exact = {10, 160, size.x, size.y};
        d.draw_text(exact, measured);
    });
    w.show();
    rgba_image img;
    ASSERT_TRUE(wait_for([&] {
        img = shown(w);
        return looks(img, 110, 15, image_red, 0.05f) && ink(img, {10, 60, 150, 20}) > 50;
    }));
    // clang-format off
    const std::tuple<int, int, vec4> points[] = {
        // A one-pixel frame lies on the rectangle's edge pixels; a line covers one row (its end pixels
        // are the backend's own).
        {70, 45, white}, {89, 54, white}, {89, 45, white}, {70, 54, white}, {71, 46, black}, {90, 54, black},
        {70, 55, black}, {201, 50, white}, {229, 50, white}, {199, 50, black}, {231, 50, black}, {215, 49, black},
        {215, 51, black},
        // The image upright, and its top half stretched over the whole rectangle.
        {110, 15, image_red}, {110, 35, image_blue}, {160, 35, image_red}};
    // clang-format on
    for (const auto& [x, y, c] : points)
        EXPECT_TRUE(looks(img, x, y, c, 0.05f)) << x << "," << y;
    // Text: set at the top, wrapped, cut at the rectangle's bottom (beyond the descent allowance); a
    // text in a rectangle of its measured size stays on one line.
    EXPECT_EQ(ink(img, {0, 60 + 60 + 3, 240, 160 - 123}), 0);
    EXPECT_GT(ink(img, {exact.x + exact.w / 2, exact.y, exact.w / 2, exact.h}), 20) << exact.w;

    // Measuring needs no drawing pass: wrapping at spaces, offsets of every code point and the end,
    // a bold run wider than the regular text.
    nimbit::ui::drawer& d = w.get_drawer();
    d.set_text_font("Arial", 16);
    const nimbit::_vec2<int> wide = d.calc_text_size("MMMMMM");
    EXPECT_GT(d.calc_text_size("MMMMMM MMMMMM MMMMMM", {60, 0}).y, wide.y * 2);
    const std::vector<int> offsets = d.calc_char_offsets("aé✓b");
    ASSERT_EQ(offsets.size(), 5u);
    EXPECT_EQ(offsets[0], 0);
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

TEST(BackendBitmap, DecodeResizeAndClipboardKeepThePixelsAndDamageFailsCleanly) {
    // A PNG from the shared encoder decodes to every pixel.
    const auto original = sample();
    unsigned pitch = 0;
    const std::vector<unsigned char> png =
        nimbit::graphics::encode_png({original->read_pixels(pitch), 40, 30, pitch});
    auto back = nimbit::ui::create_native_bitmap();
    ASSERT_TRUE(back->decode(png.data(), png.size()));
    ASSERT_EQ(back->get_size(), original->get_size());
    EXPECT_TRUE(back->has_alpha());
    EXPECT_EQ(max_difference(*original, *back), 0);

    // Damaged input fails and leaves the image as it was.
    std::vector<unsigned char> scrambled = png;
    for (size_t i = 40; i < scrambled.size(); i += 7)
        scrambled[i] ^= 0x5A;
    for (const auto& bytes :
         {std::vector<unsigned char>{},
          std::vector<unsigned char>(png.begin(), png.begin() + long(png.size() / 2)), scrambled}) {
        EXPECT_FALSE(back->decode(bytes.data(), bytes.size()));
        EXPECT_EQ(back->get_size(), (nimbit::_vec2<int>{40, 30}));
    }
    EXPECT_FALSE(back->create({0, 10}, true));
    EXPECT_FALSE(back->create({70000, 70000}, true));

    // Resizing cuts, the picture in place, or scales.
    back = sample();
    ASSERT_TRUE(back->resize({20, 10}, false));
    EXPECT_EQ(back->read_pixels(pitch)[2 * pitch + 3 * 4 + 1], 255); // the green pixel
    back = sample();
    ASSERT_TRUE(back->resize({80, 60}, true));
    EXPECT_GT(back->read_pixels(pitch)[50 * pitch + 40 * 4 + 2], 150); // still blue at the bottom

    // Text and images go through the clipboard; setting one replaces the other.
    auto& clip = nimbit::ui::get_native_clipboard();
    ASSERT_TRUE(clip.set_text("Ümlaut ✓ line\nnext 😀"));
    EXPECT_TRUE(clip.has_text());
    EXPECT_EQ(clip.get_text(), "Ümlaut ✓ line\nnext 😀");
    ASSERT_TRUE(clip.set_image(*original));
    EXPECT_TRUE(clip.has_image());
    EXPECT_FALSE(clip.has_text());
    back = clip.get_image();
    ASSERT_NE(back, nullptr);
    ASSERT_EQ(back->get_size(), original->get_size());
    EXPECT_LE(max_difference(*original, *back), clipboard_rounding);
    ASSERT_TRUE(clip.set_text(""));
    EXPECT_EQ(clip.get_image(), nullptr);
}
