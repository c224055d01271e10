// The gallery's preview grid, its titles and zoom buttons, the gallery's tool buttons and the info
// popup, on the offscreen backend.
#include "gallery/gallery_buttons.h"
#include "gallery/gallery_info_popup.h"
#include "gallery/gallery_preview.h"
#include "nimbit/graphics/rgba_image.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/ui_colors.h"
#include "tests/support/draw_snapshot.h"
#include "tests/support/offscreen_test.h"

#include <tuple>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

bitmap Picture(int w, int h) {
    graphics::rgba_image pixels;
    pixels.size = {w, h};
    pixels.pixels.assign(static_cast<size_t>(w) * h * 4, 200);
    bitmap b;
    b.load_pixels(pixels);
    return b;
}

std::vector<file_path> Paths(size_t n) {
    std::vector<file_path> out;
    for (size_t i = 0; i < n; ++i)
        out.push_back("/captures/Shot " + std::to_string(i + 1) + ".png");
    return out;
}

// The texts among the calls.
std::vector<std::string> Texts(const std::vector<draw_call>& calls) {
    std::vector<std::string> out;
    for (const draw_call& c : calls)
        if (c.op == "draw_text" || c.op == "draw_clipped_text")
            out.push_back(c.text);
    return out;
}

// A 1000x600 preview filling a borderless window, asking for pictures into `wanted`.
struct PreviewTest : OffscreenTest {
    void SetUp() override {
        OffscreenTest::SetUp();
        host.create("gallery", {0, 0, 1000, 600}, window_style_borderless);
        host.show();
        preview.create(host.get_root(), {0, 0, 1000, 600});
        preview.onWantImages = [this](const std::vector<file_path>& paths) {
            wanted.push_back(paths);
        };
    }
    void ShowPictures(const std::vector<ivec2>& sizes) {
        const std::vector<file_path> paths = Paths(sizes.size());
        preview.SetImages(paths);
        for (size_t i = 0; i < sizes.size(); ++i)
            preview.SetImage(paths[i], Picture(sizes[i].x, sizes[i].y));
    }
    std::tuple<float, ivec2> View(size_t i) {
        return {preview.GetPanel(i).get_zoom(), preview.GetPanel(i).get_offset()};
    }
    std::tuple<float, ivec2> Fit(size_t i) { return {preview.GetFitZoom(i), preview.GetFitOffset(i)}; }
    bool ShowsFullFace(size_t i) {
        return preview.GetZoomButton(i).get_theme().get<image_stream>(theme_keys::button_back_image) ==
               colours.galleryPreviewFull;
    }

    std::vector<UIColors> themes = BuildColorThemes();
    UIColors& colours = themes[0];
    window host;
    GalleryPreview preview{&colours};
    std::vector<std::vector<file_path>> wanted;
};

TEST_F(PreviewTest, GridFollowsCountAndOrientationAndFillsRowsFromTheTop) {
    // clang-format off
    const struct { size_t given; int orientation; uint32_t columns, rows, width, height; ivec4 last; } cases[] = {
        {1, 1, 1, 1, 1000, 600, {0, 0, 1000, 600}},
        {2, 0, 1, 2, 1000, 299, {0, 301, 1000, 299}},
        {2, 1, 2, 1, 499, 600, {501, 0, 499, 600}},
        {3, 0, 2, 2, 499, 299, {0, 301, 499, 299}},
        {3, 1, 2, 2, 499, 299, {0, 301, 499, 299}},
        {4, 0, 2, 2, 499, 299, {501, 301, 499, 299}},
        {5, 1, 2, 2, 499, 299, {501, 301, 499, 299}},
    };
    // clang-format on
    for (const auto& c : cases) { // last: the last shown cell
        SCOPED_TRACE(std::to_string(c.given) + " given, orientation " + std::to_string(c.orientation));
        if (preview.GetOrientation() != c.orientation)
            preview.ToggleOrientation();
        wanted.clear();
        preview.SetImages(Paths(c.given));
        const size_t shown = std::min<size_t>(c.given, 4);
        EXPECT_EQ(std::tuple(preview.GetColumns(), preview.GetRows(), preview.GetCellWidth(),
                             preview.GetCellHeight()),
                  std::tuple(c.columns, c.rows, c.width, c.height));
        ASSERT_EQ(preview.GetCount(), shown);
        EXPECT_EQ(preview.GetPanel(shown - 1).get_rect(), c.last);
        EXPECT_EQ(wanted, (std::vector<std::vector<file_path>>{Paths(shown)}));
    }

    // Flipping relays what is shown: two stacked captures go side by side.
    preview.SetImages(Paths(2));
    preview.ToggleOrientation();
    EXPECT_EQ(preview.GetPanel(1).get_rect(), (ivec4{0, 301, 1000, 299}));

    // Nothing selected clears the preview and asks for nothing; without a listener nothing is asked.
    wanted.clear();
    preview.SetImages({});
    EXPECT_TRUE(preview.GetCount() == 0 && preview.get_children().empty());
    preview.onWantImages = nullptr;
    preview.SetImages(Paths(2));
    EXPECT_TRUE(wanted.empty());
}

TEST_F(PreviewTest, FitIsTheLargestCentredZoomThatShowsTheWholePicture) {
    // One capture fills the 1000x600 preview. Smaller pictures are enlarged too: there is no cap at 1.0.
    // clang-format off
    const struct { ivec2 picture; float zoom; ivec2 offset; } cases[] = {
        {{2000, 600}, 0.5f, {0, 150}},   // wider than the cell
        {{250, 100}, 4.0f, {0, 100}},    // small: enlarged until its width fills the cell
        {{1, 1}, image_panel::max_zoom, {468, 268}}, // tiny: as large as the panel zooms, centred
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.picture.x) + "x" + std::to_string(c.picture.y));
        ShowPictures({c.picture});
        EXPECT_EQ(Fit(0), std::tuple(c.zoom, c.offset));
        EXPECT_EQ(View(0), Fit(0));
    }

    // A picture of a capture no longer shown is dropped; one that could not be decoded leaves its
    // cell empty, without a fit or a size. GetPath knows the very bitmap a panel shows, not a lookalike.
    ShowPictures({{40, 30}, {0, 0}});
    preview.SetImage("/captures/elsewhere.png", Picture(10, 10));
    EXPECT_EQ(
        std::tuple(preview.GetPanel(1).has_image(), preview.GetFitZoom(1), preview.GetTitle(1).GetSizeText()),
        std::tuple(false, 0.0f, std::string()));
    EXPECT_EQ(preview.GetPath(preview.GetPanel(0).get_image()), Paths(1)[0]);
    EXPECT_TRUE(preview.GetPath(Picture(40, 30)).empty());
}

TEST_F(PreviewTest, ZoomButtonsToggleTheirOwnPictureAndToggleZoomMovesAllTogether) {
    ShowPictures({{200, 120}, {499, 200}, {100, 100}});
    EXPECT_EQ(View(1), std::tuple(1.0f, ivec2{0, 49})); // this one fits at exactly 1.0

    // A click on the first cell's top-right button: that picture alone goes one to one, and back.
    offscreen::click(host, {499 - 10, 10});
    EXPECT_EQ(View(0), std::tuple(1.0f, ivec2{0, 0}));
    EXPECT_TRUE(!ShowsFullFace(0) && View(2) == Fit(2));
    offscreen::click(host, {499 - 10, 10});
    EXPECT_EQ(View(0), Fit(0));
    EXPECT_TRUE(ShowsFullFace(0));

    // A picture fitting at 1.0 stays as it is whichever way it is toggled.
    preview.GetZoomButton(1).press();
    EXPECT_EQ(View(1), Fit(1));

    // Mixed: one at 1.0, the others at their fit; all go to 1.0, then all back.
    preview.GetZoomButton(2).press();
    preview.ToggleZoom();
    for (size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(View(i) == std::tuple(1.0f, ivec2{0, 0}) && !ShowsFullFace(i)) << i;
    preview.ToggleZoom();
    for (size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(View(i) == Fit(i) && ShowsFullFace(i) == (i != 1)) << i;

    // The wheel zooms a picture away from 1.0: its button offers one to one again.
    preview.GetZoomButton(0).press();
    offscreen::wheel(host, {200, 200}, 40);
    EXPECT_TRUE(ShowsFullFace(0));
}

TEST_F(PreviewTest, ResizeRefitsPicturesShowingTheirFitAndKeepsThoseAtOneToOne) {
    ShowPictures({{400, 240}, {400, 240}});
    preview.GetZoomButton(1).press();
    preview.set_rect({0, 0, 500, 600});
    EXPECT_FLOAT_EQ(preview.GetFitZoom(0), 299.0f / 240.0f);
    EXPECT_EQ(preview.GetFitOffset(0), (ivec2{1, 0}));
    EXPECT_EQ(View(0), Fit(0));
    EXPECT_EQ(View(1), std::tuple(1.0f, ivec2{0, 0}));
    // The zoom button keeps to the cell's top-right corner.
    EXPECT_EQ(preview.GetZoomButton(0).get_rect(), (ivec4{476, 4, 20, 20}));
}

TEST_F(PreviewTest, TitlesNameTheCaptureWithItsSizeAndDropTheSizeWhenNarrow) {
    const std::vector<file_path> paths{"/captures/Comp 1 2026-11-23 at 10.15.00.png", "/captures/b.jpg"};
    preview.SetImages(paths);
    EXPECT_EQ(Texts(painted(host)),
              (std::vector<std::string>{"Comp 1 2026-11-23 at 10.15.00", "b"})); // not decoded
    preview.SetImage(paths[0], Picture(384, 216));
    preview.SetImage(paths[1], Picture(38, 21));
    EXPECT_EQ(Texts(painted(host)),
              (std::vector<std::string>{"Comp 1 2026-11-23 at 10.15.00", "384 x 216", "b", "38 x 21"}));

    // A 240-pixel cell has room for the name only.
    preview.set_rect({0, 0, 240, 600});
    EXPECT_EQ(Texts(painted(host)),
              (std::vector<std::string>{"Comp 1 2026-11-23 at 10.15.00", "b", "38 x 21"}));

    preview.ToggleTitleVisibility();
    EXPECT_TRUE(Texts(painted(host)).empty());
    preview.SetImages(paths); // new cells keep the choice
    EXPECT_TRUE(Texts(painted(host)).empty());
    preview.ToggleTitleVisibility();
    EXPECT_EQ(Texts(painted(host)).size(), 2u);
}

TEST_F(PreviewTest, TwoByTwoPicture) {
    ShowPictures({{1600, 900}, {300, 600}, {200, 150}, {499, 299}});
    preview.GetZoomButton(2).press(); // at 1.0, top left
    snapshot::picture p;
    p.calls(painted(host));
    EXPECT_TRUE(p.matches("gallery_preview"));
}

TEST_F(PreviewTest, GalleryButtonWritesItsCountBesideItsIconAndTheInfoPopupPaintsAtOnce) {
    window bar;
    bar.create("bar", {0, 0, 200, 40}, window_style_borderless);
    GalleryButton save(&themes[0], &UIColors::gallerySaveIcon),
        png(&themes[0], &UIColors::gallerySaveIcon, "PNG");
    save.create(bar.get_root(), {0, 0, 60, 28});
    png.create(bar.get_root(), {100, 0, 90, 28});
    // Nothing to act on: the caption alone.
    EXPECT_EQ(Texts(painted(bar)), std::vector<std::string>{"PNG"});
    png.set_counter(3);
    EXPECT_EQ(Texts(painted(bar)), std::vector<std::string>{"PNG 3"});
    png.show(false);
    save.set_counter(12);
    // The count follows the icon; a theme switch repaints the plate.
    const auto drawn = [&](std::string_view op) {
        for (const draw_call& c : painted(bar))
            if (c.op == op)
                return c;
        return draw_call{};
    };
    EXPECT_EQ(drawn("draw_clipped_text").text, "12");
    EXPECT_EQ(drawn("draw_rect").color, themes[0].windowBack);
    save.SetColors(&themes[1]);
    EXPECT_EQ(drawn("draw_rect").color, themes[1].windowBack);

    // The caller blocks right after ShowText: the line must be painted by then, over the gallery's
    // middle, without taking the focus.
    GalleryInfoPopup info(&host, &colours);
    info.ShowText("Saving images...");
    const ivec4 at = info.get_rect();
    EXPECT_EQ((ivec2{at.x + at.w / 2, at.y + at.h / 2}), (ivec2{500, 300}));
    offscreen::offscreen_window& native = offscreen::native_of(info);
    EXPECT_EQ(native.get_dirty(), ivec4{});
    EXPECT_EQ(Texts(native.get_canvas().calls()), std::vector<std::string>{"Saving images..."});
    EXPECT_TRUE(info.is_shown() && host.has_focus());
    info.HideText();
    EXPECT_FALSE(info.is_shown());
}

} // namespace
