// The controller's frame capture against the simulated host's renderer: what is rendered (item,
// time, depth, resolution), what reaches the clipboard, the save dialogs and the capture folder, pixel
// for pixel, and that every host object the capture takes is given back.

#include "gallery/capture_store.h"
#include "host/aegp_suite_handler.h"
#include "host_session.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/offscreen/offscreen_clipboard.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

using nimbit::file_path;
using nimbit::ui::bitmap;
using nimbit::ui::offscreen_file_browser;

constexpr uint32_t ToClipboard = static_cast<uint32_t>(PopupRequest::CaptureToClipboard);
constexpr uint32_t ToJpg = static_cast<uint32_t>(PopupRequest::CaptureToJpg);
constexpr uint32_t ToPng = static_cast<uint32_t>(PopupRequest::CaptureToPng);
constexpr uint32_t ToFolder = static_cast<uint32_t>(PopupRequest::CaptureToFolder);
constexpr uint32_t NoDelivery = 4;

AEGP_WorldType WorldTypeOf(AEGP_ProjBitDepth depth) {
    return depth == AEGP_ProjBitDepth_8    ? AEGP_WorldType_8
           : depth == AEGP_ProjBitDepth_16 ? AEGP_WorldType_16
                                           : AEGP_WorldType_32;
}

// The 8-bit red, green, blue, alpha of the frame's pixel (x, y): the pattern as the host's world
// holds it, optionally through the view transform (colours inverted, alpha kept), then scaled to 8
// bits.
void ExpectedPixel(AEGP_WorldType type, A_long x, A_long y, A_Time time, bool viewTransform, long out[4]) {
    double argb[4];
    hostsim::PatternPixel(type, x, y, time, argb);
    const double max = type == AEGP_WorldType_8 ? 255 : type == AEGP_WorldType_16 ? 32768 : 1;
    for (double& channel : argb) {
        channel = type == AEGP_WorldType_8    ? static_cast<uint8_t>(channel)
                  : type == AEGP_WorldType_16 ? static_cast<uint16_t>(channel)
                                              : static_cast<float>(channel);
    }
    for (int c = 1; c < 4 && viewTransform; ++c)
        argb[c] = max - argb[c];
    const int order[4] = {1, 2, 3, 0};
    for (int c = 0; c < 4; ++c)
        out[c] = std::lround(argb[order[c]] / max * 255);
}

// Compares every pixel of image with the pattern; 8-bit frames convert exactly, deeper ones within
// rounding.
void ExpectPattern(bitmap& image, AEGP_WorldType type, A_Time time, bool viewTransform = false) {
    ASSERT_TRUE(image.is_loaded());
    const long tolerance = type == AEGP_WorldType_8 ? 0 : 1;
    const nimbit::ui::bitmap_data data = image.lock();
    int mismatches = 0;
    for (int y = 0; y < data.size.y; ++y) {
        for (int x = 0; x < data.size.x; ++x) {
            long expected[4];
            ExpectedPixel(type, x, y, time, viewTransform, expected);
            const unsigned char* got =
                data.bits + static_cast<size_t>(y) * data.pitch + static_cast<size_t>(x) * 4;
            for (int c = 0; c < 4; ++c) {
                if (std::labs(got[c] - expected[c]) > tolerance && ++mismatches <= 3)
                    ADD_FAILURE() << "pixel " << x << "," << y << " channel " << c << ": " << int(got[c])
                                  << " instead of " << expected[c];
            }
        }
    }
    image.unlock(data);
}

bitmap Load(const file_path& path) {
    bitmap image;
    image.load_image(path);
    return image;
}

bitmap FromClipboard() {
    bitmap image;
    image.load_image_from_clipboard();
    return image;
}

// Counts the gallery refreshes a folder capture asks of the popup window.
struct GalleryWindow : RecordingWindow {
    static inline int refreshes = 0;
    void RefreshGallery() override { ++refreshes; }
    static std::unique_ptr<PopupWindow> Make(PreferencesData&, EffectsPopup&) {
        return std::make_unique<GalleryWindow>();
    }
};

// A controller on a small composition (24 x 6, at 2 s), with a popup window, fresh dialog answers
// and an empty clipboard.
struct FrameCapture : ::testing::Test {
    ControllerSession session;
    hostsim::SimHost& host = session.Start();
    hostsim::Item& comp = *host.ActiveItem();
    offscreen_file_browser& dialogs = offscreen_file_browser::instance();
    nimbit::ui::offscreen_clipboard& clipboard = nimbit::ui::get_offscreen_clipboard();
    EffectsPopup* controller = nullptr;
    std::string captureFolder;

    void SetUp() override {
        comp.width = 24;
        comp.height = 6;
        comp.time = A_Time{48, 24};
        SelectOnly(host, "");
        SetPopupWindowFactory(&GalleryWindow::Make);
        GalleryWindow::refreshes = 0;
        controller = &session.Controller();
        controller->IdleHook(); // the window, and the settings it reads
        captureFolder = (session.folder / "Captures").to_string();
        controller->Preferences().captureFolder = captureFolder;
        dialogs.reset();
        clipboard.clear();
    }
    void TearDown() override {
        SetPopupWindowFactory(nullptr);
        dialogs.reset();
        ExpectReleased();
    }

    void Capture(uint32_t code) { controller->CustomEvent(code); }
    void SetDepth(AEGP_ProjBitDepth depth) { host.GetModel().projects[0]->bitDepth = depth; }
    std::vector<ListedCapture> Captures() const { return CaptureStore::ListCaptures(captureFolder); }

    // Every render option, frame, world and profile the capture took is back with the host.
    void ExpectReleased() const {
        EXPECT_EQ(host.liveRenderOptions, 0);
        EXPECT_EQ(host.liveFrames, 0);
        EXPECT_EQ(host.liveWorlds, 0);
        EXPECT_EQ(host.liveProfiles, 0);
        EXPECT_EQ(host.liveMemHandles, 0);
        EXPECT_EQ(host.Outstanding(), 0);
    }
};

TEST_F(FrameCapture, DeliversEachModeAtEachDepth) {
    const file_path jpg = session.folder / "frame.jpg", png = session.folder / "frame.png";
    for (AEGP_ProjBitDepth depth : {AEGP_ProjBitDepth_8, AEGP_ProjBitDepth_16, AEGP_ProjBitDepth_32}) {
        SetDepth(depth);
        const AEGP_WorldType type = WorldTypeOf(depth);
        for (uint32_t code : {ToClipboard, ToJpg, ToPng, ToFolder, NoDelivery}) {
            SCOPED_TRACE(testing::Message() << "depth " << int(depth) << ", code " << code);
            dialogs.reset();
            dialogs.answer({code == ToJpg ? jpg : png});
            const unsigned clipboardChanges = clipboard.change_count();
            host.lastRender = {};

            Capture(code);

            EXPECT_EQ(host.lastRender.item, &comp);
            EXPECT_EQ(host.lastRender.type, type);
            EXPECT_EQ(clipboard.change_count(), clipboardChanges + (code == ToClipboard));
            EXPECT_EQ(Captures().size(), code == ToFolder ? 1u : 0u);
            EXPECT_EQ(GalleryWindow::refreshes, code == ToFolder ? 1 : 0);
            GalleryWindow::refreshes = 0;
            const bool dialog = code == ToJpg || code == ToPng;
            ASSERT_EQ(dialogs.requests().size(), dialog ? 1u : 0u);
            if (dialog) {
                const nimbit::ui::dialog_request& request = dialogs.requests()[0];
                EXPECT_EQ(request.type, nimbit::file_browser::dialog_type::save);
                EXPECT_EQ(request.title, code == ToJpg ? "Save to JPG" : "Save to PNG");
                ASSERT_EQ(request.filters.size(), 1u);
                EXPECT_EQ(request.filters[0].label,
                          code == ToJpg ? "JPG files (*.jpg)" : "PNG files (*.png)");
                EXPECT_EQ(request.filters[0].pattern, code == ToJpg ? "*.jpg" : "*.png");
            }
            if (code == ToClipboard) {
                bitmap image = FromClipboard();
                ExpectPattern(image, type, comp.time);
            } else if (code == ToPng) {
                bitmap image = Load(png);
                ExpectPattern(image, type, comp.time);
            } else if (code == ToJpg) {
                // Lossy: only the size is the frame's.
                EXPECT_EQ(Load(jpg).get_size(), (nimbit::_vec2<int>{24, 6}));
            } else if (code == ToFolder) {
                bitmap image = Load(Captures().front().path);
                ExpectPattern(image, type, comp.time);
                EXPECT_EQ(Captures().front().path.leaf(true).rfind("Shot_Main_", 0), 0u);
            }
            // Captures are named to the second: each one is taken away before the next.
            for (const ListedCapture& capture : Captures())
                nimbit::remove_file(capture.path);
            nimbit::remove_file(jpg);
            nimbit::remove_file(png);
            ExpectReleased();
        }
    }
}

TEST_F(FrameCapture, RendersTheLayersTimeAtTheViewersOrFullResolution) {
    LayerNamed(host, "Title")->time = A_Time{72, 24};
    comp.downsample = 2;
    struct Case {
        const char* layer;
        bool fullResolution;
        A_Time time;
        A_short downsample;
    };
    // clang-format off
    const Case cases[] = {
        {"Title",    false, {72, 24}, 2}, // the layer's current time in composition time
        {"",         false, {48, 24}, 2}, // no layer: the composition's own time
        {"Camera 1", true,  {48, 24}, 1}, // a camera is no active layer
        {"Title",    true,  {72, 24}, 1},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.layer << (c.fullResolution ? ", full" : ", viewer"));
        SelectOnly(host, c.layer);
        controller->Preferences().fullResolutionScreenshots = c.fullResolution;
        Capture(ToClipboard);
        EXPECT_EQ(host.lastRender.time.value, c.time.value);
        EXPECT_EQ(host.lastRender.time.scale, c.time.scale);
        EXPECT_EQ(host.lastRender.downsampleX, c.downsample);
        EXPECT_EQ(host.lastRender.downsampleY, c.downsample);
        bitmap image = FromClipboard();
        EXPECT_EQ(image.get_size(), (nimbit::_vec2<int>{24 / c.downsample, 6 / c.downsample}));
        ExpectPattern(image, AEGP_WorldType_16, c.time);
    }
}

TEST_F(FrameCapture, StretchesNonSquarePixelsToTheirShownWidth) {
    comp.height = 4;
    struct Case {
        A_long width;
        A_Ratio aspect;
        int shownWidth;
    };
    // clang-format off
    const Case cases[] = {
        {960, {2, 1},   1920},
        {720, {10, 11}, 654}, // 654.5 truncated
        {30,  {1, 1},   30},
        {30,  {1, 0},   30},  // no ratio: as rendered
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.width);
        comp.width = c.width;
        comp.pixelAspect = c.aspect;
        Capture(ToClipboard);
        EXPECT_EQ(FromClipboard().get_size(), (nimbit::_vec2<int>{c.shownWidth, 4}));
    }
}

TEST_F(FrameCapture, ViewTransformKeepsTheRenderedAlpha) {
    comp.viewColorTransform = true;
    for (AEGP_ProjBitDepth depth : {AEGP_ProjBitDepth_8, AEGP_ProjBitDepth_16, AEGP_ProjBitDepth_32}) {
        SCOPED_TRACE(int(depth));
        SetDepth(depth);
        const int transformsBefore = host.colorTransforms;
        Capture(ToClipboard);
        EXPECT_EQ(host.colorTransforms, transformsBefore + 1);
        bitmap image = FromClipboard();
        ExpectPattern(image, WorldTypeOf(depth), comp.time, true);
        ExpectReleased();
    }
}

TEST_F(FrameCapture, WithoutACompositionNothingIsRenderedOrDelivered) {
    for (int32_t active : {0, 1}) { // nothing open; footage open
        host.GetModel().projects[0]->activeItem = active;
        for (uint32_t code : {ToClipboard, ToJpg, ToPng, ToFolder, NoDelivery}) {
            SCOPED_TRACE(testing::Message() << "active " << active << ", code " << code);
            const unsigned clipboardChanges = clipboard.change_count();
            Capture(code);
            EXPECT_EQ(host.lastRender.item, nullptr);
            EXPECT_TRUE(dialogs.requests().empty());
            EXPECT_EQ(clipboard.change_count(), clipboardChanges);
            EXPECT_TRUE(Captures().empty());
            EXPECT_EQ(GalleryWindow::refreshes, 0);
        }
    }
}

TEST_F(FrameCapture, CancelledDialogsSaveNothing) {
    for (uint32_t code : {ToJpg, ToPng}) {
        SCOPED_TRACE(code);
        dialogs.reset(); // no answer: the dialog is cancelled
        Capture(code);
        EXPECT_EQ(dialogs.requests().size(), 1u);
        EXPECT_NE(host.lastRender.item, nullptr);
        ExpectReleased();
    }
    for (const std::string& name : tree(session.folder.path()))
        EXPECT_FALSE(name.ends_with(".png") || name.ends_with(".jpg")) << name;
}

// A host whose project suite is missing: the capture still finds the open composition, and the
// depth comes from the script engine.
SPErr (*hostAcquire)(const char*, int, const void**) = nullptr;
SPErr AcquireAllButProjects(const char* name, int version, const void** suite) {
    if (std::strcmp(name, "AEGP Proj Suite") == 0)
        return 1;
    return hostAcquire(name, version, suite);
}

TEST(FrameCaptureWithoutProject, TakesTheDepthFromTheScriptAnswer) {
    ControllerSession session;
    hostsim::SimHost& host = session.Start();
    host.ActiveItem()->width = 8;
    host.ActiveItem()->height = 2;
    SPBasicSuite basic = *host.Basic();
    hostAcquire = basic.AcquireSuite;
    basic.AcquireSuite = AcquireAllButProjects;
    EffectsPopup controller(&basic, 7, AeVersionCC2018);
    controller.Preferences().captureFolder = (session.folder / "Captures").to_string();
    struct Case {
        const char* answer;
        AEGP_WorldType type;
    };
    for (const Case& c :
         {Case{"8", AEGP_WorldType_8}, Case{"16", AEGP_WorldType_16}, Case{"32", AEGP_WorldType_32}}) {
        host.GetModel().bitsPerChannel = c.answer;
        controller.CustomEvent(ToFolder);
        EXPECT_EQ(host.lastRender.type, c.type) << c.answer;
    }
    const std::vector<ListedCapture> captures =
        CaptureStore::ListCaptures(controller.Preferences().captureFolder);
    ASSERT_FALSE(captures.empty());
    EXPECT_EQ(captures.front().path.leaf(true).rfind("Main_", 0), 0u); // no project name to give
    EXPECT_EQ(host.liveFrames + host.liveWorlds + host.liveRenderOptions + host.liveMemHandles, 0);
}

TEST(ColorProfileName, IsTheDescriptionInUtf8) {
    ControllerSession session;
    hostsim::SimHost& host = session.Start();
    EffectsPopup& controller = session.Controller();
    AEGP_SuiteHandler suites(host.Basic());
    AEGP_ColorSettingsSuite2& colors = *suites.ColorSettingsSuite3();
    // ASCII, characters of two and three bytes, one beyond 16 bits (a surrogate pair).
    for (const char* description : {"sRGB IEC61966-2.1", "\u00C9cran \u2013 HDR", "Wide \U0001D53Eamut"}) {
        host.GetModel().workingSpaceProfile = description;
        AEGP_ColorProfileP profile = nullptr;
        colors.AEGP_GetNewWorkingSpaceColorProfile(7, reinterpret_cast<AEGP_CompH>(host.ActiveItem()),
                                                   &profile);
        EXPECT_EQ(controller.GetColorProfileName(profile), description);
        colors.AEGP_DisposeColorProfile(profile);
    }
    EXPECT_EQ(controller.GetColorProfileName(nullptr), "");
    EXPECT_EQ(host.liveMemHandles, 0);
}

} // namespace
