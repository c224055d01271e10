#include "display_session.h"
#include "tests/support/bitmap_sample.h"

#include "nimbit/graphics/png_encoder.h"
#include "nimbit/ui/cocoa/file_filters.h"
#include "nimbit/ui/cocoa/font_lookup.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/native_drawer.h"
#include "nimbit/ui/native_file_shell.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

using namespace bitmap_sample;
using namespace cocoa_test;
using nimbit::ivec4;
using nimbit::vec4;

namespace {

// A window whose root paints with a callback, for looking at drawing on screen.
struct canvas_window {
    nimbit::ui::window w;
    nimbit::ui::widget root;
    std::function<void(nimbit::ui::drawer&)> paint;
    explicit canvas_window(std::function<void(nimbit::ui::drawer&)> p, ivec4 frame = {300, 300, 200, 120})
        : paint(std::move(p)) {
        w.create("canvas", frame, nimbit::ui::window_style_borderless);
        root.create(w.get_root(), {0, 0, frame.w, frame.h});
        nimbit::ui::event_manager::instance().add_event(
            &root, this, nimbit::ui::event_type::draw,
            [this](const nimbit::ui::event_info&) { paint(w.get_drawer()); });
        w.show();
    }
    screen_image wait_painted(const std::function<bool(const screen_image&)>& done) {
        screen_image shot;
        wait_for([&] {
            shot = capture_screen(w.get_client_rect());
            return done(shot);
        });
        return shot;
    }
};

} // namespace

TEST(CocoaBitmap, DecodeResizeAndPasteboardKeepThePixelsAndDamageFailsCleanly) {
    // A PNG from the shared encoder decodes to every pixel.
    const auto original = sample();
    unsigned original_pitch = 0;
    const unsigned char* original_pixels = original->read_pixels(original_pitch);
    const std::vector<unsigned char> png =
        nimbit::graphics::encode_png({original_pixels, 40, 30, original_pitch});
    ASSERT_FALSE(png.empty());
    auto back = nimbit::ui::create_native_bitmap();
    ASSERT_TRUE(back->decode(png.data(), png.size()));
    ASSERT_EQ(back->get_size(), original->get_size());
    EXPECT_TRUE(back->has_alpha());
    EXPECT_EQ(max_difference(*original, *back), 0);

    // Damaged input fails and leaves the image as it was.
    auto b = sample();
    const std::vector<std::vector<unsigned char>> bad = {
        {},
        std::vector<unsigned char>(png.begin(), png.begin() + static_cast<long>(png.size() / 2)),
        [&] {
            auto v = png;
            for (size_t i = 40; i < v.size(); i += 7)
                v[i] ^= 0x5A;
            return v;
        }(),
    };
    for (const auto& bytes : bad) {
        EXPECT_FALSE(b->decode(bytes.data(), bytes.size()));
        EXPECT_EQ(b->get_size(), (nimbit::_vec2<int>{40, 30}));
    }
    EXPECT_FALSE(b->create({0, 10}, true));
    EXPECT_FALSE(b->create({70000, 70000}, true));

    // Resizing cuts or scales.
    b = sample();
    ASSERT_TRUE(b->resize({20, 10}, false));
    unsigned pitch = 0;
    EXPECT_EQ(b->read_pixels(pitch)[(2 * pitch) + 3 * 4 + 1], 255); // the green pixel kept its place
    auto s = sample();
    ASSERT_TRUE(s->resize({80, 60}, true));
    EXPECT_GT(s->read_pixels(pitch)[50 * pitch + 40 * 4 + 2], 150); // scaled: still blue at the bottom

    // Text and images go through the pasteboard.
    auto& clip = nimbit::ui::get_native_clipboard();
    ASSERT_TRUE(clip.set_text("Ümlaut ✓ line\nnext"));
    EXPECT_EQ(clip.get_text(), "Ümlaut ✓ line\nnext");

    const auto image = sample();
    ASSERT_TRUE(clip.set_image(*image));
    EXPECT_TRUE(clip.has_image());
    EXPECT_FALSE(clip.has_text()); // setting one replaces the other
    back = clip.get_image();
    ASSERT_NE(back, nullptr);
    ASSERT_EQ(back->get_size(), image->get_size());
    EXPECT_LE(max_difference(*image, *back), 1);

    ASSERT_TRUE(clip.set_text(""));
    EXPECT_EQ(clip.get_image(), nullptr);
}

TEST(CocoaDrawer, ImagesLandUprightAndClippedAndTextIsMeasuredPlacedAndKeptInItsRectangle) {
    const auto image = sample(false);
    canvas_window pictures([&](nimbit::ui::drawer& d) {
        d.clear({0, 0, 0, 1});
        d.get_native().draw_image({10, 10, 40, 30}, *image, {}, false);
        // Only the top half, stretched to 40 x 30.
        d.get_native().draw_image({100, 10, 40, 30}, *image, {0, 0, 40, 15}, false);
    });
    const vec4 red{230 / 255.f, 10 / 255.f, 10 / 255.f, 1}, blue{20 / 255.f, 10 / 255.f, 220 / 255.f, 1};
    const screen_image drawn = pictures.wait_painted(
        [&](const screen_image& s) { return color_distance(s.pixel(20, 15), red) < 0.05f; });
    EXPECT_LT(color_distance(drawn.pixel(20, 15), red), 0.05f);
    EXPECT_LT(color_distance(drawn.pixel(20, 35), blue), 0.05f);
    EXPECT_LT(color_distance(drawn.pixel(110, 35), red), 0.05f);
    pictures.w.hide();

    const ivec4 box{10, 10, 150, 60};
    auto setup = [](nimbit::ui::drawer& d) {
        d.set_text_font("Arial", 16);
        d.set_text_color({1, 1, 1, 1});
    };
    // A text drawn in a rectangle of exactly its measured size stays on one line (below the rest).
    const char* const measured = "ii MMMMMMM";
    ivec4 exact;
    canvas_window c(
        [&](nimbit::ui::drawer& d) {
            d.clear({0, 0, 0, 1});
            setup(d);
            d.set_text_format(nimbit::ui::text_align::left, nimbit::ui::text_valign::top);
            d.draw_text(box, "Top line of a long text that cannot fit in this small box at all, no way");
            const nimbit::_vec2<int> size = d.calc_text_size(measured);
            exact = {10, 125, size.x, size.y};
            d.draw_text(exact, measured);
        },
        {300, 300, 200, 150});
    // Measuring needs no drawing pass.
    nimbit::ui::drawer& d = c.w.get_drawer();
    setup(d);
    const nimbit::_vec2<int> wide = d.calc_text_size("MMMMMM");
    const nimbit::_vec2<int> wrapped = d.calc_text_size("MMMMMM MMMMMM MMMMMM", {60, 0});
    const std::vector<int> offsets = d.calc_char_offsets("aé✓b");
    EXPECT_GT(wrapped.y, wide.y * 2); // wraps at the spaces
    ASSERT_EQ(offsets.size(), 5u);    // four code points and the end
    EXPECT_EQ(offsets[0], 0);
    for (size_t i = 1; i < offsets.size(); ++i)
        EXPECT_GT(offsets[i], offsets[i - 1]);

    auto ink = [](const screen_image& s, ivec4 r) {
        int n = 0;
        for (int y = r.y; y < r.y + r.h; ++y)
            for (int x = r.x; x < r.x + r.w; ++x)
                n += s.pixel(x, y).x > 0.5f;
        return n;
    };
    const screen_image shot = c.wait_painted([&](const screen_image& s) { return ink(s, box) > 50; });
    EXPECT_GT(ink(shot, {box.x, box.y, box.w, 20}), 50); // set at the top
    // Nothing below the rectangle (beyond the descent allowance).
    EXPECT_EQ(ink(shot, {0, box.y + box.h + 3, 200, 120 - box.y - box.h - 3}), 0);
    // The wide word is on the first line, not wrapped away below it.
    EXPECT_GT(ink(shot, {exact.x + exact.w / 2, exact.y, exact.w / 2, exact.h}), 20) << exact.w;
}

TEST(CocoaPlatform, FontsFiltersAndTheDesktopOpener) {
    EXPECT_FALSE(nimbit::ui::cocoa::installed_font_family("").empty());
    // Dialog filters accept both cases.
    const auto types = nimbit::ui::cocoa::allowed_file_types({{"PNG files (*.png)", "*.png"},
                                                              {"JPG", "*.jpg"},
                                                              {"again", "*.PNG"},
                                                              {"all", "*.*"},
                                                              {"short", "*"}});
    EXPECT_EQ(types, (std::vector<std::string>{"png", "PNG", "jpg", "JPG"}));

    // Links and folders go to the desktop opener: a stand-in on the PATH logs what it is handed.
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("opener" + std::to_string(getpid()));
    const std::string log = (dir / "opened.txt").string();
    std::filesystem::create_directories(dir);
    std::ofstream(dir / "xdg-open") << "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" << log << "'\n";
    std::filesystem::permissions(dir / "xdg-open", std::filesystem::perms::owner_all);
    const std::string old_path = std::getenv("PATH") ? std::getenv("PATH") : "";
    setenv("PATH", (dir.string() + ":" + old_path).c_str(), 1);
    const std::string link = "https://example.com/a b?x=1&y='2'";
    EXPECT_TRUE(nimbit::file_shell::open_link(link));
    EXPECT_TRUE(nimbit::file_shell::show_in_explorer(nimbit::file_path("/tmp/some folder/pic.png"), true));
    EXPECT_FALSE(nimbit::file_shell::open_link(""));
    // Both arrive, in either order, and nothing else.
    auto text = [&] {
        std::ostringstream all;
        all << std::ifstream(log).rdbuf();
        return all.str();
    };
    EXPECT_TRUE(wait_for([&] { return text().size() == link.size() + 18; })) << text();
    EXPECT_NE(text().find(link + "\n"), std::string::npos) << text();
    EXPECT_NE(text().find("/tmp/some folder\n"), std::string::npos) << text();
    setenv("PATH", old_path.c_str(), 1);
    std::filesystem::remove_all(dir);
}
