// The controller's frame capture against the simulated host's renderer: what is rendered (item,
// time, depth, resolution), what reaches the clipboard, the save dialogs and the capture folder, pixel
// for pixel, and that every host object the capture takes is given back.

#include "gallery/capture_store.h"
#include "host_session.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/offscreen/offscreen_clipboard.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <thread>

namespace {

using enum PopupRequest;
constexpr PopupRequest NoDelivery{4};

// How many channels of image (red, green, blue, alpha) differ from the host's pattern (alpha, red,
// green, blue), optionally through the view transform (colours inverted, alpha kept); -1 without an
// image. 8-bit frames convert exactly, deeper ones within rounding.
int Mismatches(nimbit::ui::bitmap image, AEGP_WorldType type, A_Time time, bool viewTransform = false) {
    if (!image.is_loaded())
        return -1;
    const double max = type == AEGP_WorldType_8 ? 255 : type == AEGP_WorldType_16 ? 32768 : 1;
    const nimbit::ui::bitmap_data data = image.lock();
    int mismatches = 0;
    for (int i = 0; i < data.size.x * data.size.y * 4; ++i) {
        const int x = i / 4 % data.size.x, y = i / 4 / data.size.x, c = i % 4;
        double argb[4];
        hostsim::PatternPixel(type, x, y, time, argb);
        const double expected = (viewTransform && c < 3 ? max - argb[c + 1] : argb[(c + 1) % 4]) / max * 255;
        const int got = data.bits[static_cast<size_t>(y) * data.pitch + static_cast<size_t>(x * 4 + c)];
        mismatches += std::labs(got - std::lround(expected)) > (type != AEGP_WorldType_8);
    }
    image.unlock(data);
    return mismatches;
}

// The image in a file, or on the clipboard without one.
nimbit::ui::bitmap Load(const nimbit::file_path* path = nullptr) {
    nimbit::ui::bitmap image;
    path != nullptr ? image.load_image(*path) : image.load_image_from_clipboard();
    return image;
}

// A controller with a popup window on a small composition (24 x 6, at 2 s), fresh dialog answers and
// an empty clipboard. Whatever a test does, every host object must be back when it ends.
struct FrameCapture : ::testing::Test {
    ControllerSession session;
    hostsim::SimHost& host = session.Start();
    hostsim::Item& comp = *host.ActiveItem();
    nimbit::ui::offscreen_file_browser& dialogs = nimbit::ui::offscreen_file_browser::instance();
    const std::string folder = (session.folder / "Captures").to_string();
    EffectsPopup& controller = session.Controller();

    void SetUp() override {
        comp.width = 24, comp.height = 6, comp.time = A_Time{48, 24};
        SelectOnly(host, ""); // the composition's own time
        RecordingWindow::Install();
        controller.IdleHook(); // the window, and the settings it reads
        controller.Preferences().captureFolder = folder;
        dialogs.reset();
        nimbit::ui::get_offscreen_clipboard().clear();
    }
    void TearDown() override {
        RecordingWindow::Uninstall();
        EXPECT_EQ(host.liveRenderOptions + host.liveFrames + host.liveWorlds + host.liveProfiles, 0);
        EXPECT_EQ(host.liveMemHandles + host.Outstanding(), 0);
    }

    // A capture, and for the folder the wait until it is written.
    void Capture(PopupRequest code) {
        controller.CustomEvent(static_cast<uint32_t>(code));
        controller.FinishCaptures();
    }
};

TEST_F(FrameCapture, DeliversEachModeAtTheProjectsDepthThroughTheViewTransform) {
    const nimbit::file_path jpg = session.folder / "frame.jpg", png = session.folder / "frame.png";
    // clang-format off
    for (const auto& [code, depth, type, view, dialog] : std::initializer_list<std::tuple<PopupRequest, AEGP_ProjBitDepth, AEGP_WorldType, bool, std::string>>{
        {NoDelivery,         AEGP_ProjBitDepth_8,  AEGP_WorldType_8,  false, ""}, // first: the clipboard is empty
        {CaptureToClipboard, AEGP_ProjBitDepth_16, AEGP_WorldType_16, false, ""},
        {CaptureToClipboard, AEGP_ProjBitDepth_32, AEGP_WorldType_32, false, ""},
        {CaptureToClipboard, AEGP_ProjBitDepth_16, AEGP_WorldType_16, true,  ""}, // alpha kept
        {CaptureToJpg,       AEGP_ProjBitDepth_16, AEGP_WorldType_16, false, "Save to JPG|JPG files (*.jpg)|*.jpg"},
        {CaptureToPng,       AEGP_ProjBitDepth_8,  AEGP_WorldType_8,  false, "Save to PNG|PNG files (*.png)|*.png"},
        {CaptureToFolder,    AEGP_ProjBitDepth_32, AEGP_WorldType_32, false, ""}}) { // last: the folder holds only its capture
        // clang-format on
        SCOPED_TRACE(testing::Message() << int(code) << " at " << depth << (view ? ", viewed" : ""));
        host.GetModel().projects[0]->bitDepth = depth, comp.viewColorTransform = view;
        dialogs.reset();
        dialogs.answer({code == CaptureToJpg ? jpg : png});
        Capture(code);
        EXPECT_EQ(host.lastRender.type, type);
        std::string shown; // title and filter of each dialog shown
        for (const nimbit::ui::dialog_request& r : dialogs.requests())
            shown += r.title + "|" + r.filters.at(0).label + "|" + r.filters.back().pattern;
        EXPECT_EQ(shown, dialog);
        const std::vector<ListedCapture> captures = CaptureStore::ListCaptures(folder);
        ASSERT_EQ(captures.size(), code == CaptureToFolder ? 1u : 0u);
        auto* file = code == CaptureToPng ? &png : code == CaptureToFolder ? &captures[0].path : nullptr;
        if (code == CaptureToJpg) // lossy: only the size is the frame's
            EXPECT_EQ(Load(&jpg).get_size(), (nimbit::_vec2<int>{24, 6}));
        else // the clipboard's image when nothing is saved; none for no delivery
            EXPECT_EQ(Mismatches(Load(file), type, comp.time, view), code == NoDelivery ? -1 : 0);
        EXPECT_TRUE(captures.empty() || captures[0].path.leaf(true).starts_with("Shot_Main_"));
    }
}

// A folder capture returns before its file is written; the gallery hears of it on the idle tick after
// the file is whole, and a controller going away first still writes it.
TEST_F(FrameCapture, FolderCapturesAreAnnouncedOnceWholeAndOutliveTheController) {
    int wholeWhenTold = 0;
    RecordingWindow::onRefreshGallery = [&] {
        const std::vector<ListedCapture> captures = CaptureStore::ListCaptures(folder);
        wholeWhenTold +=
            captures.size() == 1 && Mismatches(Load(&captures[0].path), AEGP_WorldType_8, comp.time) == 0;
    };
    controller.CustomEvent(static_cast<uint32_t>(CaptureToFolder));
    EXPECT_EQ(RecordingWindow::galleryRefreshes, 0); // not from inside the capture
    while (controller.CapturesPending())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    controller.IdleHook();
    controller.IdleHook(); // told once per capture
    EXPECT_EQ(std::pair(RecordingWindow::galleryRefreshes, wholeWhenTold), std::pair(1, 1));

    std::filesystem::remove_all(folder);
    controller.CustomEvent(static_cast<uint32_t>(CaptureToFolder));
    session.controller.reset();
    const std::vector<ListedCapture> captures = CaptureStore::ListCaptures(folder);
    ASSERT_EQ(captures.size(), 1u);
    EXPECT_EQ(Mismatches(Load(&captures[0].path), AEGP_WorldType_8, comp.time), 0);
}

TEST_F(FrameCapture, RendersTheLayersTimeAtTheViewersOrFullResolutionStretchedToThePixelAspect) {
    LayerNamed(host, "Title")->time = A_Time{72, 24};
    comp.downsample = 2;
    // Times in 24ths of a second.
    // clang-format off
    for (const auto& [layer, full, width, aspect, time, size] :
         std::initializer_list<std::tuple<const char*, bool, A_long, A_Ratio, A_long, nimbit::_vec2<int>>>{
             {"Title", false, 24, {1, 1}, 72, {12, 3}},  // the layer's current time, in composition time
             {"", true, 960, {2, 1}, 48, {1920, 6}},     // no layer: the composition's own
             {"", true, 720, {10, 11}, 48, {654, 6}}}) { // 654.5 truncated
        // clang-format on
        SelectOnly(host, layer);
        controller.Preferences().fullResolutionScreenshots = full;
        comp.width = width, comp.pixelAspect = aspect;
        Capture(CaptureToClipboard);
        EXPECT_EQ(host.lastRender.time.value * 24, time * A_long(host.lastRender.time.scale)) << width;
        EXPECT_EQ(Load().get_size(), size) << width;
    }
}

TEST_F(FrameCapture, WithoutACompositionOrWithACancelledDialogNothingIsDelivered) {
    Capture(CaptureToJpg); // no answers: both dialogs are cancelled
    Capture(CaptureToPng);
    EXPECT_EQ(dialogs.requests().size(), 2u);
    for (const std::string& name : tree(session.folder.path()))
        EXPECT_FALSE(name.ends_with(".png") || name.ends_with(".jpg")) << name;
    for (int32_t active : {0, 1}) { // nothing open; footage open
        host.GetModel().projects[0]->activeItem = active;
        host.lastRender = {};
        for (PopupRequest code : {CaptureToClipboard, CaptureToJpg, CaptureToPng, CaptureToFolder})
            Capture(code);
        EXPECT_TRUE(host.lastRender.item == nullptr && dialogs.requests().size() == 2 && !Load().is_loaded());
    }
}

// A host whose project suite is missing: the capture still finds the open composition, and the
// depth comes from the script engine.
TEST_F(FrameCapture, WithoutAProjectTakesTheDepthFromTheScriptAnswer) {
    static decltype(SPBasicSuite::AcquireSuite) hostAcquire = nullptr;
    SPBasicSuite basic = *host.Basic();
    hostAcquire = std::exchange(basic.AcquireSuite, [](const char* name, int version, const void** suite) {
        return std::string_view(name) == "AEGP Proj Suite" ? SPErr(1) : hostAcquire(name, version, suite);
    });
    EffectsPopup noProject(&basic, 7, AeVersionCC2018);
    host.GetModel().projects[0]->bitDepth = AEGP_ProjBitDepth_16; // not asked: its suite is missing
    host.GetModel().bitsPerChannel = "8";
    noProject.CustomEvent(static_cast<uint32_t>(CaptureToClipboard));
    EXPECT_EQ(host.lastRender.type, AEGP_WorldType_8);
}

TEST_F(FrameCapture, ColorProfileNameIsTheDescriptionInUtf8) {
    // Characters of two and three bytes, and one beyond 16 bits (a surrogate pair).
    const std::string description = host.GetModel().workingSpaceProfile = "\u00C9cran \u2013 \U0001D53Eamut";
    AEGP_ColorProfileP profile = nullptr;
    hostsim::colorSettingsSuite3.AEGP_GetNewWorkingSpaceColorProfile(7, reinterpret_cast<AEGP_CompH>(&comp),
                                                                     &profile);
    EXPECT_EQ(controller.GetColorProfileName(profile), description);
    hostsim::colorSettingsSuite3.AEGP_DisposeColorProfile(profile);
    EXPECT_EQ(controller.GetColorProfileName(nullptr), "");
}

} // namespace
