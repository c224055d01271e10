// What only the Win32 backend's pictures show, under Wine: the back buffer on the window, the
// showcase in two colour schemes, and another program's bitmap on the clipboard.

#include "tests/support/bitmap_sample.h"
#include "win32_session.h"

#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget_themes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

using namespace bitmap_sample;
using namespace backend_test;
using namespace win32_test;
using nimbit::vec4;
using nimbit::graphics::rgba_image;

// The back buffer reaches the window; a line covers its start pixel and stops before its end.
TEST(Win32Drawer, TheWindowShowsItsBackBufferAndLinesEndBeforeTheirEndPoint) {
    probe_window p({300, 300, 120, 80}, nimbit::ui::window_style_borderless, {0.9f, 0.1f, 0.1f, 1});
    nimbit::ui::event_manager::instance().add_event(&p.root, &p, nimbit::ui::event_type::draw,
                                                    [&](const auto&) {
                                                        p.w.get_drawer().set_pen_color({1, 1, 1, 1}, 1);
                                                        p.w.get_drawer().draw_line({60, 10}, {90, 10});
                                                    });
    p.w.show();
    ASSERT_TRUE(wait_for([&] { return looks(shown(p.w), 30, 40, p.root.color); }));
    const rgba_image back = shown(p.w);
    EXPECT_TRUE(looks(back, 60, 10, {1, 1, 1, 1}) && looks(back, 90, 10, p.root.color));
    HDC dc = GetDC(native(p.w).get_hwnd());
    const COLORREF c = GetPixel(dc, 30, 40);
    ReleaseDC(native(p.w).get_hwnd(), dc);
    EXPECT_TRUE(looks({{1, 1}, false, {GetRValue(c), GetGValue(c), GetBValue(c), 255}}, 0, 0, p.root.color));
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
        const rgba_image back = shown(w);
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

// Another program's image, as a device-independent bitmap alone, reads back.
TEST(Win32Clipboard, AnotherProgramsBitmapReadsBack) {
    const auto original = sample();
    auto& clip = nimbit::ui::get_native_clipboard();
    ASSERT_TRUE(clip.set_image(*original));
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
    const auto back = clip.get_image();
    ASSERT_NE(back, nullptr);
    EXPECT_LE(max_difference(*original, *back), 1);
}
