#include "gallery/gallery_popup_window.h"

#include "gallery/gallery_buttons.h"
#include "gallery/gallery_info_popup.h"
#include "gallery/gallery_preview.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/graphics/rgba_image.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "nimbit/ui/offscreen/offscreen_file_shell.h"
#include "popup/effects_popup_window.h"
#include "popup/preferences_data.h"
#include "popup/ui_colors.h"
#include "tests/support/data_folders.h"
#include "tests/support/draw_snapshot.h"
#include "tests/support/widget_fixture.h"

namespace {

constexpr int ShiftKey = virtual_key::left_shift, OptionKey = virtual_key::option;

class GalleryWindowTest : public OffscreenTest, protected private_data_folders {
protected:
    void SetUp() override {
        OffscreenTest::SetUp();
        make_dir(root / "captures");
        prefs.captureFolder = (root / "captures").to_string();
    }
    void TearDown() override {
        gallery.reset();
        OffscreenTest::TearDown();
    }

    // A w x h picture whose file time is `time`; later times list first.
    file_path Capture(const std::string& name, int64_t time, int w = 32, int h = 18) {
        std::vector<unsigned char> pixels(static_cast<size_t>(w * h * 4), 200);
        const file_path path = root / ("captures/" + name).c_str();
        const auto png = graphics::encode_png({pixels.data(), w, h, static_cast<size_t>(w) * 4});
        EXPECT_TRUE(write_bytes(path, png) && set_file_dates(path, time, time));
        return path;
    }
    void Captures(int count) {
        for (int i = 0; i < count; ++i)
            Capture(std::string("c").append(std::to_string(i)).append(".png"), 1000 + i);
    }
    GalleryPopupWindow& Open() {
        gallery = std::make_unique<GalleryPopupWindow>(&themes[0], prefs, root / "cache", 2);
        gallery->Show(gallery->GetColors());
        return *gallery;
    }
    // Everything asked for is made and handed to the tiles.
    void Settle() {
        gallery->GetLoader().Wait();
        gallery->Poll();
    }
    GalleryThumbnail& Tile(size_t i) { return *gallery->GetTiles()[i]; }
    ivec2 Centre(const widget& w) {
        return w.calc_absolute_pos() + ivec2{w.get_rect().w / 2, w.get_rect().h / 2};
    }
    // With `keys` held: a click on tile i (button 0 when key is unset) or the key `key`.
    void Press(std::initializer_list<int> keys, std::optional<size_t> tile, uint32_t key) {
        for (int k : keys)
            offscreen::set_key_down(k, true);
        if (tile)
            offscreen::click(*gallery, Centre(Tile(*tile)), key);
        else
            send(*gallery, event_type::key_down, key);
        for (int k : keys)
            offscreen::set_key_down(k, false);
    }
    void Click(size_t i, std::initializer_list<int> keys = {}, uint32_t button = 0) {
        Press(keys, i, button);
    }
    void Key(uint32_t key, std::initializer_list<int> keys = {}) { Press(keys, std::nullopt, key); }
    std::vector<size_t> Selected() const {
        std::vector<size_t> out;
        for (const GalleryThumbnail* t : gallery->GetSelection())
            out.push_back(t->GetIndex());
        return out;
    }
    // Answers the next modal popups with `answer`, writing down each one's title and texts.
    void AnswerPopups(int answer) {
        offscreen::offscreen_window::set_modal_driver([this, answer](window& w) {
            std::string said = offscreen::native_of(w).get_title();
            for (const draw_call& c : painted(w))
                if (c.op == "draw_text")
                    said += "|" + c.text;
            asked.push_back(said);
            w.end_modal(answer);
        });
    }

    std::vector<UIColors> themes = BuildColorThemes();
    PreferencesData prefs;
    std::unique_ptr<GalleryPopupWindow> gallery;
    lines asked;
    offscreen_file_browser& dialogs = offscreen_file_browser::instance();
};

TEST_F(GalleryWindowTest, ClicksSelectByModifierThePreviewShowsTheFirstFourAndKeysDriveBoth) {
    Captures(6);
    Open();
    // clang-format off
    const struct { size_t tile; std::initializer_list<int> keys; std::vector<size_t> selected; size_t anchor; }
    steps[] = {
        {2, {},                    {2},          2},
        {4, {ShiftKey},            {2, 3, 4},    2},
        {0, {ShiftKey},            {0, 1, 2},    2}, // the anchor stays
        {5, {OptionKey},           {0, 1, 2, 5}, 5},
        {1, {OptionKey},           {0, 2, 5},    1}, // toggled off, still the anchor
        {3, {ShiftKey},            {1, 2, 3},    1},
        {5, {ShiftKey, OptionKey}, {1, 2, 3, 5}, 5}, // Option wins over Shift
        {0, {},                    {0},          0},
    };
    // clang-format on
    for (const auto& s : steps) {
        Click(s.tile, s.keys);
        SCOPED_TRACE(s.tile);
        EXPECT_EQ(std::tuple(Selected(), gallery->GetAnchor(), gallery->GetToolButton(1).get_counter()),
                  std::tuple(s.selected, &Tile(s.anchor), s.selected.size()));
        std::vector<file_path> shown;
        for (size_t i = 0; i < s.selected.size() && i < 4; ++i)
            shown.push_back(Tile(s.selected[i]).GetPath());
        EXPECT_EQ(gallery->GetPreview().GetImages(), shown);
        for (size_t i = 0; i < 6; ++i)
            EXPECT_EQ(Tile(i).IsSelected(), std::count(s.selected.begin(), s.selected.end(), i) == 1);
    }

    // Keys move the selection and drive the preview.
    Click(1);
    Settle();
    GalleryPreview& preview = gallery->GetPreview();
    ASSERT_GT(preview.GetFitZoom(0), 0.0f) << "the whole picture reached the preview";
    // From the first open, without a resize: the preview fills its pane, the picture its cell.
    const ivec4 pane = gallery->GetSplit().get_panel_b().get_rect();
    EXPECT_EQ(preview.get_rect(), (ivec4{0, 0, pane.w, pane.h}));
    EXPECT_EQ(preview.GetCellWidth(), static_cast<uint32_t>(pane.w));

    Key(event_key::down);
    EXPECT_EQ(Selected(), (std::vector<size_t>{2}));
    for (int i = 0; i < 3; ++i)
        Key(event_key::up); // stays on the first
    EXPECT_EQ(Selected(), (std::vector<size_t>{0}));
    Key('A', {OptionKey});
    EXPECT_EQ(Selected(), (std::vector<size_t>{0, 1, 2, 3, 4, 5}));

    const int orientation = preview.GetOrientation();
    Key('A');
    EXPECT_NE(preview.GetOrientation(), orientation);
    gallery->GetSwapButton().press();
    EXPECT_EQ(preview.GetOrientation(), orientation);
    const bool titles = preview.TitlesVisible();
    Key('I');
    EXPECT_NE(preview.TitlesVisible(), titles);

    Click(1);
    Settle();
    Key('Z');
    EXPECT_EQ(preview.GetPanel(0).get_zoom(), 1.0f);
    Key('Z');
    EXPECT_EQ(preview.GetPanel(0).get_zoom(), preview.GetFitZoom(0));

    Key(event_key::escape);
    EXPECT_FALSE(gallery->is_shown());
}

TEST_F(GalleryWindowTest, DeleteAsksTheExactQuestionAndRemovesOnlyOnConfirmation) {
    Captures(5);
    Open();
    // One declined, then three confirmed in the same window.
    for (const auto& [count, answer, question] :
         {std::tuple(1u, 0, "this image"), std::tuple(3u, 1, "these 3 images")}) {
        Click(1);
        Click(count, {ShiftKey});
        const std::vector<file_path> chosen = {Tile(1).GetPath(), Tile(count).GetPath()};
        asked.clear();
        AnswerPopups(answer);
        Key(event_key::forward_delete);
        EXPECT_EQ(asked, lines{"Delete?|Are you sure you want to delete " + std::string(question) + "?"});
        for (const file_path& p : chosen)
            EXPECT_EQ(file_stats(p).exists, answer == 0);
        EXPECT_EQ(std::pair(gallery->GetTiles().size(), gallery->GetSelection().size()),
                  (std::pair<size_t, size_t>(answer == 1 ? 5 - count : 5, answer == 1 ? 0 : count)));
    }
}

TEST_F(GalleryWindowTest, TileEventsSelectTheTileThenDeleteOrSaveAndTheContextMenuActsOnIt) {
    Captures(3);
    Open();
    AnswerPopups(0);
    Click(0);
    event_manager::instance().fire_event(&Tile(1), event_type::custom, GalleryThumbnail::CornerCode);
    EXPECT_EQ(Selected(), (std::vector<size_t>{1})) << "an unselected tile is selected alone first";
    EXPECT_EQ(asked.size(), 1u);
    event_manager::instance().fire_event(&Tile(2), event_type::custom, GalleryThumbnail::OpenCode);
    EXPECT_EQ(Selected(), (std::vector<size_t>{2}));
    ASSERT_EQ(dialogs.requests().size(), 1u);
    EXPECT_EQ(dialogs.requests()[0].title, "Save to File"); // the either-format dialog

    // The corner button shows only while the pointer is over its tile, and asks to delete.
    GalleryThumbnail& first = Tile(0);
    EXPECT_FALSE(first.GetCornerButton().is_visible(false));
    offscreen::move_mouse(*gallery, Centre(first));
    ASSERT_TRUE(first.GetCornerButton().is_visible(false));
    offscreen::click(*gallery, Centre(first.GetCornerButton()));
    EXPECT_EQ(asked.size(), 2u);
    offscreen::move_mouse(*gallery, Centre(Tile(2)));
    EXPECT_FALSE(first.GetCornerButton().is_visible(false));
    EXPECT_TRUE(offscreen::file_drags().empty()) << "a declined delete leaves no drag armed";

    offscreen::double_click(*gallery, Centre(Tile(1)));
    EXPECT_EQ(dialogs.requests().size(), 2u);

    // The context menu copies, reveals and saves.
    offscreen::push_menu_answer(GalleryPopupWindow::CopyItem);
    Click(1, {}, 2);
    ASSERT_EQ(offscreen::shown_menus().size(), 1u);
    EXPECT_EQ(Selected(), (std::vector<size_t>{1}));
    EXPECT_FALSE(get_offscreen_clipboard().has_image()) << "copied once decoded, off this thread";
    Settle();
    EXPECT_TRUE(get_offscreen_clipboard().has_image());

    offscreen::push_menu_answer(GalleryPopupWindow::RevealItem);
    Click(0, {}, 2);
    ASSERT_EQ(offscreen_file_shell::instance().calls().size(), 1u);
    EXPECT_EQ(offscreen_file_shell::instance().calls()[0].path, Tile(0).GetPath());

    offscreen::push_menu_answer(GalleryPopupWindow::SaveJpgItem);
    Click(0, {}, 2);
    EXPECT_EQ(dialogs.requests().back().title, "Save to JPG");

    // On the preview too, up to its first column.
    offscreen::push_menu_answer(GalleryPopupWindow::RevealItem);
    offscreen::click(*gallery, gallery->GetPreview().GetPanel(0).calc_absolute_pos() + ivec2{0, 5}, 2);
    EXPECT_EQ(offscreen_file_shell::instance().calls().size(), 2u);
}

TEST_F(GalleryWindowTest, SeveralTilesAreDraggedToThePlatformAndSavedWhileTheInfoShows) {
    Captures(3);
    Open();
    Click(0);
    Click(1, {ShiftKey});
    const ivec2 from = Centre(Tile(1));
    offscreen::press_mouse(*gallery, from);
    offscreen::move_mouse(*gallery, from + ivec2{2, 2});
    EXPECT_TRUE(offscreen::file_drags().empty()) << "a small move is still a click";
    offscreen::move_mouse(*gallery, from + ivec2{30, 0});
    ASSERT_EQ(offscreen::file_drags().size(), 1u);
    EXPECT_EQ(offscreen::file_drags()[0].paths,
              (lines{Tile(0).GetPath().to_string(), Tile(1).GetPath().to_string()}));
    offscreen::release_mouse(*gallery, from + ivec2{30, 0});
    EXPECT_EQ(Selected(), (std::vector<size_t>{0, 1})) << "a drag keeps the selection";
    Click(1);
    EXPECT_EQ(Selected(), (std::vector<size_t>{1})) << "a plain click without a drag narrows it";

    Key('A', {OptionKey});
    dialogs.answer({}); // cancelled: nothing written, nothing shown
    gallery->GetToolButton(2).press();
    EXPECT_EQ(gallery->GetInfoPopup(), nullptr);

    make_dir(root / "out");
    dialogs.answer({root / "out"});
    gallery->GetToolButton(1).press();
    EXPECT_EQ(dialogs.requests().back().title, "Select Folder");
    EXPECT_EQ(tree(root / "out"), (lines{"c0.png", "c1.png", "c2.png"}));
    ASSERT_NE(gallery->GetInfoPopup(), nullptr);
    EXPECT_EQ(offscreen::native_of(*gallery->GetInfoPopup()).get_canvas().calls_named("draw_text").at(0).text,
              "Saving images...");
}

TEST_F(GalleryWindowTest, PlaceholdersFillInAndAnUndecodableCaptureKeepsAnEmptyTile) {
    Capture("wide.png", 300, 40, 10);
    Capture("tall.png", 200, 30, 17);
    ASSERT_TRUE(write_text(root / "captures/broken.png", "not a picture"));
    set_file_dates(root / "captures/broken.png", 100, 100);
    Open();
    ASSERT_EQ(gallery->GetTiles().size(), 3u);
    EXPECT_EQ(Tile(0).GetPath().leaf(true), "wide.png") << "newest first";
    for (size_t i = 0; i < 3; ++i)
        EXPECT_FALSE(Tile(i).HasArrived()) << "a cold cache starts with placeholders";

    gallery->GetLoader().Wait();
    offscreen::advance_ms(GalleryPopupWindow::PollInterval); // the window's timer picks them up
    EXPECT_FALSE(gallery->get_root().has_timer(GalleryPopupWindow::PollTimer)) << "idle: polling stops";
    EXPECT_EQ(Tile(0).GetImage().get_size(), (ivec2{512, 128}));
    EXPECT_EQ(Tile(1).GetImage().get_size(), (ivec2{512, 290})); // 17 * 512 / 30, truncated
    EXPECT_TRUE(Tile(2).HasArrived() && !Tile(2).GetImage().is_loaded());

    // A second window over the same cache paints its first screen straight from it.
    gallery.reset();
    Open();
    EXPECT_EQ(Tile(1).GetImage().get_size(), (ivec2{512, 290}));
}

TEST_F(GalleryWindowTest, AChangedCaptureGetsANewThumbnailAndOthersKeepTheirs) {
    const file_path first = Capture("a.png", 100, 40, 10);
    Capture("b.png", 50, 40, 20);
    Open();
    gallery->GetLoader().Wait(); // pictures of the old a.png are made but not taken yet
    Capture("a.png", 400, 40, 40);
    gallery->RefreshList();
    GalleryThumbnail *a = &Tile(0), *b = &Tile(1);
    Settle();
    EXPECT_EQ(std::pair(a->GetImage().get_size(), b->GetImage().get_size()),
              std::pair(ivec2{512, 512}, ivec2{512, 256})); // the stale picture is not shown

    Capture("a.png", 500, 40, 10);
    gallery->RefreshList();
    ASSERT_TRUE(&Tile(0) == a && &Tile(1) == b);
    EXPECT_TRUE(!a->HasArrived() && b->GetImage().is_loaded()) << "a changed capture drops its picture";
    Settle();
    EXPECT_EQ(a->GetImage().get_size(), (ivec2{512, 128}));

    remove_file(first);
    gallery->RefreshList();
    EXPECT_EQ(gallery->GetTiles().size(), 1u);
}

TEST_F(GalleryWindowTest, PicturesFarFromTheViewAreDroppedAndTheViewRangeHoldsTheTilesThatShow) {
    Captures(90);
    Open();
    Settle();
    const auto [first, last] = gallery->ViewRange();
    ASSERT_EQ(first, 0u);
    ASSERT_GT(last, 6u);
    EXPECT_TRUE(Tile(0).GetImage().is_loaded());
    graphics::rgba_image warm; // far tiles are not kept but their thumbnails are made, the last too
    EXPECT_TRUE(gallery->GetLoader().CachedThumbnail(Tile(89).GetPath(), Tile(89).GetStamp(), warm));
    EXPECT_LE(gallery->CountImages(), GalleryPopupWindow::MaxKeptImages);

    scroll_bar& bar = gallery->GetScrollBar();
    for (const bool bottom : {true, false}) { // down to the end, and back to the top
        bar.set_value(bottom ? bar.get_max_scroll() : 0);
        Settle();
        EXPECT_TRUE(Tile(bottom ? 89 : 0).GetImage().is_loaded() && !Tile(bottom ? 0 : 89).HasArrived());
        EXPECT_LE(gallery->CountImages(), GalleryPopupWindow::MaxKeptImages);
    }

    // The view's range decides what is asked for first and when a screen counts as painted: it holds
    // exactly the tiles that show, also when only a row's gap shows at the top or bottom edge.
    const int step = GalleryPopupWindow::TileHeight + GalleryPopupWindow::TileGap;
    const int height = gallery->GetGridView().get_rect().h;
    for (const int top : {0, 1, step - 1, step, step + GalleryPopupWindow::TileGap, 3 * step - 2,
                          5 * step - height + GalleryPopupWindow::TileGap,
                          5 * step - height + GalleryPopupWindow::TileGap + 1, bar.get_max_scroll()}) {
        bar.set_value(top);
        const int value = bar.get_value();
        const auto shows = [&](size_t i) {
            const ivec4& r = Tile(i).get_rect();
            return r.y < value + height && r.y + r.h > value;
        };
        const auto [first, last] = gallery->ViewRange();
        ASSERT_LT(first, last) << top;
        for (size_t i = first; i < last; ++i)
            EXPECT_TRUE(shows(i)) << "scrolled to " << value << ", tile " << i;
        EXPECT_FALSE(first > 0 && shows(first - 1)) << "scrolled to " << value;
        EXPECT_FALSE(last < gallery->GetTiles().size() && shows(last)) << "scrolled to " << value;
    }
}

TEST_F(GalleryWindowTest, ThePopupMakesTheGalleryOnceAndRefreshesItWhileShown) {
    Captures(2);
    EffectsPopupWindow popup(prefs);
    popup.OpenGallery();
    GalleryPopupWindow* made = popup.GetGallery();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetColors(), popup.GetColors());
    GalleryThumbnail* tile = made->GetTiles()[0].get();
    made->SetSelected(tile);

    Capture("new.png", 5000);
    popup.RefreshGallery();
    EXPECT_EQ(made->GetTiles().size(), 3u);
    made->hide();
    Capture("newer.png", 6000);
    popup.RefreshGallery();
    EXPECT_EQ(made->GetTiles().size(), 3u) << "a hidden gallery is left alone";

    popup.OpenGallery();
    EXPECT_TRUE(popup.GetGallery() == made && made->is_shown()) << "the same gallery, not a new one";
    EXPECT_TRUE(made->GetTiles().size() == 4u && made->GetTiles()[2].get() == tile &&
                made->GetSelection().size() == 1u);

    popup.SwitchTheme(UIColorTheme::Light, false);
    EXPECT_EQ(made->GetColors(), &popup.GetThemes()[static_cast<size_t>(UIColorTheme::Light)]);
}

// The gallery's preview grid, its titles and zoom buttons, the gallery's tool buttons and the info
// popup, on the offscreen backend.

// A blank w x h picture; none (not decoded) when a side is 0.
bitmap Picture(int w, int h) {
    bitmap b;
    b.create({w, h}, image_alpha::alpha);
    return b;
}

std::vector<file_path> Paths(size_t n) {
    std::vector<file_path> out;
    for (size_t i = 0; i < n; ++i)
        out.push_back("/captures/Shot " + std::to_string(i + 1) + ".png");
    return out;
}

// The texts among the calls.
lines Texts(const std::vector<draw_call>& calls) {
    lines out;
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

TEST_F(PreviewTest, FitIsTheLargestCentredZoomThatShowsTheWholePictureAndAResizeRefits) {
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

    // A resize refits the pictures showing their fit and keeps those at one to one; the zoom button
    // keeps to the cell's top-right corner.
    ShowPictures({{400, 240}, {400, 240}});
    preview.GetZoomButton(1).press();
    preview.set_rect({0, 0, 500, 600});
    EXPECT_FLOAT_EQ(preview.GetFitZoom(0), 299.0f / 240.0f);
    EXPECT_EQ(std::tuple(View(0), preview.GetFitOffset(0), View(1), preview.GetZoomButton(0).get_rect()),
              std::tuple(Fit(0), ivec2{1, 0}, std::tuple(1.0f, ivec2{0, 0}), ivec4{476, 4, 20, 20}));
}

TEST_F(PreviewTest, ZoomButtonsToggleTheirOwnPictureAndToggleZoomMovesAllTogether) {
    ShowPictures({{200, 120}, {499, 200}, {100, 100}});
    EXPECT_EQ(View(1), std::tuple(1.0f, ivec2{0, 49})); // this one fits at exactly 1.0

    // A click on the first cell's top-right button: that picture alone goes one to one, and back.
    offscreen::click(host, {499 - 10, 10});
    EXPECT_EQ(View(0), std::tuple(1.0f, ivec2{0, 0}));
    EXPECT_TRUE(!ShowsFullFace(0) && View(2) == Fit(2));
    offscreen::click(host, {499 - 10, 10});
    EXPECT_TRUE(View(0) == Fit(0) && ShowsFullFace(0));

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

TEST_F(PreviewTest, TitlesNameTheCaptureWithItsSizeAndDropTheSizeWhenNarrow) {
    const std::vector<file_path> paths{"/captures/Comp 1 2026-11-23 at 10.15.00.png", "/captures/b.jpg"};
    preview.SetImages(paths);
    EXPECT_EQ(Texts(painted(host)), (lines{"Comp 1 2026-11-23 at 10.15.00", "b"})); // not decoded
    preview.SetImage(paths[0], Picture(384, 216));
    preview.SetImage(paths[1], Picture(38, 21));
    EXPECT_EQ(Texts(painted(host)), (lines{"Comp 1 2026-11-23 at 10.15.00", "384 x 216", "b", "38 x 21"}));

    // A 240-pixel cell has room for the name only.
    preview.set_rect({0, 0, 240, 600});
    EXPECT_EQ(Texts(painted(host)), (lines{"Comp 1 2026-11-23 at 10.15.00", "b", "38 x 21"}));

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
    TestWindow bar({0, 0, 200, 40});
    GalleryButton save(&themes[0], &UIColors::gallerySaveIcon),
        png(&themes[0], &UIColors::gallerySaveIcon, "PNG");
    save.create(bar.get_root(), {0, 0, 60, 28});
    png.create(bar.get_root(), {100, 0, 90, 28});
    // Nothing to act on: the caption alone.
    EXPECT_EQ(Texts(painted(bar)), lines{"PNG"});
    png.set_counter(3);
    EXPECT_EQ(Texts(painted(bar)), lines{"PNG 3"});
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
    EXPECT_EQ(Texts(native.get_canvas().calls()), lines{"Saving images..."});
    EXPECT_TRUE(info.is_shown() && host.has_focus());
    info.HideText();
    EXPECT_FALSE(info.is_shown());
}

} // namespace
