// The popup's frame capture: the current frame of the composition being worked on, rendered at the
// project's depth, shown as the viewer shows it, converted to 8 bits and delivered one way.

#include "gallery/capture_store.h"
#include "gallery/capture_writer.h"
#include "host/aegp_suite_handler.h"
#include "host/effects_popup.h"
#include "host/popup_window.h"
#include "nimbit/graphics/pixel.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/native_file_browser.h"
#include "nimbit/ui/wide_text.h"
#include "nimbit/utils/timer.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace {

// How a project depth is rendered: bytes per channel (also the pixel_buffer layout), bytes per
// pixel and the host's world type.
struct DepthClass {
    unsigned bytesPerChannel;
    unsigned bytesPerPixel;
    AEGP_WorldType worldType;
};

DepthClass DepthClassOf(int projectDepth) {
    switch (projectDepth) {
    case AEGP_ProjBitDepth_8:
        return {1, 4, AEGP_WorldType_8};
    case AEGP_ProjBitDepth_16:
        return {2, 8, AEGP_WorldType_16};
    default:
        return {4, 16, AEGP_WorldType_32};
    }
}

// What a capture borrows from the host. Released when it goes, whichever way the capture ends.
class HostFrame {
public:
    explicit HostFrame(AEGP_SuiteHandler& suites) : suites(suites) {}
    ~HostFrame() { Release(); }
    HostFrame(const HostFrame&) = delete;
    HostFrame& operator=(const HostFrame&) = delete;

    void Release() {
        if (viewWorld != nullptr) {
            if (AEGP_WorldSuite3* worlds = suites.WorldSuite3())
                worlds->AEGP_Dispose(viewWorld);
            viewWorld = nullptr;
        }
        if (receipt != nullptr) {
            if (AEGP_RenderSuite3* render = suites.RenderSuite3())
                render->AEGP_CheckinFrame(receipt);
            receipt = nullptr;
        }
        if (options != nullptr) {
            if (AEGP_RenderOptionsSuite3* renderOptions = suites.RenderOptionsSuite3())
                renderOptions->AEGP_Dispose(options);
            options = nullptr;
        }
    }

    AEGP_RenderOptionsH options = nullptr;
    AEGP_FrameReceiptH receipt = nullptr;
    AEGP_WorldH viewWorld = nullptr; // ours: the frame in the viewer's colours

private:
    AEGP_SuiteHandler& suites;
};

// Where a world's pixels are and how they are laid out.
struct Pixels {
    unsigned char* data = nullptr;
    A_long width = 0, height = 0;
    size_t rowBytes = 0;
};

Pixels Describe(AEGP_WorldSuite3& worlds, AEGP_WorldH world) {
    PF_EffectWorld described{};
    worlds.AEGP_FillOutPFEffectWorld(world, &described);
    Pixels pixels;
    pixels.data = reinterpret_cast<unsigned char*>(described.data);
    pixels.width = described.width;
    pixels.height = described.height;
    pixels.rowBytes = described.rowbytes > 0 ? static_cast<size_t>(described.rowbytes) : 0;
    return pixels;
}

// The rendered frame through the view's colour transform, into a world of our own; null when there
// is no transform or no world to be had (the frame is then shown as rendered). The transform need
// not keep alpha, so the rendered alpha is copied back.
AEGP_WorldH TransformToView(AEGP_SuiteHandler& suites, AEGP_PluginID pluginId, AEGP_CompH comp,
                            AEGP_ItemH item, AEGP_WorldH rendered, const Pixels& source,
                            const DepthClass& depth) {
    AEGP_ItemSuite8* items = suites.ItemSuite13();
    AEGP_ColorSettingsSuite2* colors = suites.ColorSettingsSuite3();
    AEGP_WorldSuite3* worlds = suites.WorldSuite3();
    if (items == nullptr || colors == nullptr || worlds == nullptr)
        return nullptr;
    AEGP_ItemViewP view = nullptr;
    items->AEGP_GetItemMRUView(item, &view);
    if (view == nullptr)
        return nullptr;
    A_Boolean hasTransform = 0;
    colors->AEGP_DoesViewHaveColorSpaceXform(view, &hasTransform);
    if (!hasTransform)
        return nullptr;

    AEGP_ColorProfileP profile = nullptr;
    colors->AEGP_GetNewWorkingSpaceColorProfile(pluginId, comp, &profile);
    AEGP_WorldH world = nullptr;
    worlds->AEGP_New(pluginId, depth.worldType, source.width, source.height, &world);
    const Pixels target = world != nullptr ? Describe(*worlds, world) : Pixels{};
    const bool usable =
        target.data != nullptr && target.width == source.width && target.height == source.height;
    if (usable) {
        const size_t rowCopy = std::min(source.rowBytes, target.rowBytes);
        for (A_long y = 0; y < source.height; ++y)
            std::memcpy(target.data + y * target.rowBytes, source.data + y * source.rowBytes, rowCopy);
        colors->AEGP_XformWorkingToViewColorSpace(view, rendered, world);
    }
    if (profile != nullptr)
        colors->AEGP_DisposeColorProfile(profile);
    if (!usable) {
        if (world != nullptr)
            worlds->AEGP_Dispose(world);
        return nullptr;
    }
    // Alpha is each pixel's first channel.
    for (A_long y = 0; y < source.height; ++y) {
        const unsigned char* from = source.data + y * source.rowBytes;
        unsigned char* to = target.data + y * target.rowBytes;
        for (A_long x = 0; x < source.width; ++x)
            std::memcpy(to + x * depth.bytesPerPixel, from + x * depth.bytesPerPixel, depth.bytesPerChannel);
    }
    return world;
}

// A bitmap of the frame in 8 bits: the host's alpha, red, green, blue become the bitmap's red,
// green, blue, alpha in the same pass, straight from the host's rows.
bool MakeBitmap(const Pixels& frame, const DepthClass& depth, nimbit::ui::bitmap& image) {
    if (!image.create({frame.width, frame.height}, nimbit::ui::image_alpha::alpha))
        return false;
    nimbit::ui::bitmap_data locked = image.lock();
    const bool converted =
        locked.bits != nullptr &&
        nimbit::graphics::convert_argb_to_rgba8(
            frame.data, {frame.width, frame.height}, static_cast<unsigned>(frame.rowBytes),
            static_cast<nimbit::graphics::buffer_type>(depth.bytesPerChannel), locked.bits, locked.pitch);
    image.unlock(locked);
    return converted;
}

struct SaveDialog {
    const char* title;
    nimbit::file_browser::file_filter filter;
    nimbit::ui::image_format format;
};

void SaveThroughDialog(const nimbit::ui::bitmap& image, const SaveDialog& dialog) {
    const std::vector<nimbit::file_path> chosen = nimbit::file_browser::file_dialog(
        nullptr, nimbit::file_browser::dialog_type::save, dialog.title, {dialog.filter}, false, "");
    if (!chosen.empty())
        image.save_image(chosen.front(), dialog.format);
}

} // namespace

void EffectsPopup::CaptureFrame(uint32_t code) {
    AEGP_ProjectH project = GetCurrentProject();
    AEGP_LayerH layer = GetActiveLayer();

    AEGP_SuiteHandler suites(basic);
    AEGP_CompH comp = nullptr;
    if (layer != nullptr) {
        if (AEGP_LayerSuite5* layers = suites.LayerSuite11())
            layers->AEGP_GetLayerParentComp(layer, &comp);
    } else {
        comp = GetActiveComp();
    }
    if (comp == nullptr)
        return; // nothing is open to capture

    AEGP_CompSuite7* comps = suites.CompSuite15();
    AEGP_ItemSuite6* items = suites.ItemSuite10();
    AEGP_RenderOptionsSuite3* renderOptions = suites.RenderOptionsSuite3();
    AEGP_RenderSuite3* render = suites.RenderSuite3();
    AEGP_WorldSuite3* worlds = suites.WorldSuite3();
    if (comps == nullptr || items == nullptr || renderOptions == nullptr || render == nullptr ||
        worlds == nullptr)
        return;
    AEGP_ItemH item = nullptr;
    comps->AEGP_GetItemFromComp(comp, &item);
    if (item == nullptr)
        return;

    // The moment the artist is looking at: the layer's current time in composition time, which is
    // what the composition renders at.
    A_Time time{0, 1};
    if (layer != nullptr) {
        if (AEGP_LayerSuite5* layers = suites.LayerSuite11())
            layers->AEGP_GetLayerCurrentTime(layer, AEGP_LTimeMode_CompTime, &time);
    } else {
        items->AEGP_GetItemCurrentTime(item, &time);
    }
    const DepthClass depth = DepthClassOf(GetProjectBitDepth());

    HostFrame frame(suites);
    renderOptions->AEGP_NewFromItem(pluginId, item, &frame.options);
    if (frame.options == nullptr)
        return;
    renderOptions->AEGP_SetTime(frame.options, time);
    renderOptions->AEGP_SetWorldType(frame.options, depth.worldType);
    if (prefs.fullResolutionScreenshots)
        renderOptions->AEGP_SetDownsampleFactor(frame.options, 1, 1);

    render->AEGP_RenderAndCheckoutFrame(frame.options, nullptr, nullptr, &frame.receipt);
    if (frame.receipt == nullptr)
        return;
    AEGP_WorldH rendered = nullptr;
    render->AEGP_GetReceiptWorld(frame.receipt, &rendered);
    if (rendered == nullptr)
        return;
    Pixels pixels = Describe(*worlds, rendered);
    if (pixels.data == nullptr || pixels.width <= 0 || pixels.height <= 0 ||
        pixels.rowBytes < static_cast<size_t>(pixels.width) * depth.bytesPerPixel)
        return;

    frame.viewWorld = TransformToView(suites, pluginId, comp, item, rendered, pixels, depth);
    if (frame.viewWorld != nullptr)
        pixels = Describe(*worlds, frame.viewWorld);

    nimbit::ui::bitmap image;
    const bool converted = MakeBitmap(pixels, depth, image);
    const A_long width = pixels.width, height = pixels.height;
    // The host's memory goes back before any encoding or dialog: the artist may leave one open for
    // long.
    frame.Release();
    if (!converted)
        return;
    // Non-square pixels are shown stretched; the capture looks as the viewer does.
    A_Ratio aspect{1, 1};
    items->AEGP_GetItemPixelAspectRatio(item, &aspect);
    if (aspect.den != 0) {
        const float shownWidth = static_cast<float>(width) * aspect.num / aspect.den;
        // Bounded first: a float out of int's range has no defined conversion.
        if (shownWidth >= 1.0f && shownWidth < 2147483648.0f && static_cast<int>(shownWidth) != width)
            image.set_size({static_cast<int>(shownWidth), height}, true);
    }

    switch (static_cast<PopupRequest>(code)) {
    case PopupRequest::CaptureToClipboard:
        image.copy_to_clipboard();
        break;
    case PopupRequest::CaptureToJpg:
        SaveThroughDialog(image,
                          {"Save to JPG", {"JPG files (*.jpg)", "*.jpg"}, nimbit::ui::image_format::jpg});
        break;
    case PopupRequest::CaptureToPng:
        SaveThroughDialog(image,
                          {"Save to PNG", {"PNG files (*.png)", "*.png"}, nimbit::ui::image_format::png});
        break;
    case PopupRequest::CaptureToFolder:
        // Named for the moment of capture; encoded and written by the writer, and the gallery told
        // on a later idle tick, once the file is whole.
        captureWriter->Write(std::move(image),
                             CaptureStore::CapturePath(prefs.captureFolder, GetProjName(project),
                                                       GetCompName(comp),
                                                       nimbit::timer::get_formated_time(true)));
        break;
    default:
        break; // rendered and converted, delivered nowhere
    }
}

std::string EffectsPopup::GetColorProfileName(AEGP_ColorProfileP profile) {
    if (profile == nullptr)
        return std::string();
    AEGP_SuiteHandler suites(basic);
    AEGP_ColorSettingsSuite2* colors = suites.ColorSettingsSuite3();
    AEGP_MemorySuite1* memory = suites.MemorySuite1();
    if (colors == nullptr || memory == nullptr)
        return std::string();
    AEGP_MemHandle description = nullptr;
    colors->AEGP_GetNewColorProfileDescription(pluginId, profile, &description);
    if (description == nullptr)
        return std::string();
    AEGP_MemSize size = 0;
    memory->AEGP_GetMemHandleSize(description, &size);
    void* locked = nullptr;
    memory->AEGP_LockMemHandle(description, &locked);
    std::string name;
    if (locked != nullptr) {
        // Bounded by the handle's size as well as by the terminator.
        const auto* units = static_cast<const A_UTF16Char*>(locked);
        const size_t count = size / sizeof(A_UTF16Char);
        for (size_t i = 0; i < count && units[i] != 0; ++i) {
            char32_t c = units[i];
            if (c >= 0xD800 && c < 0xDC00 && i + 1 < count && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000)
                c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00u);
            else if (c >= 0xD800 && c < 0xE000)
                c = 0xFFFD; // a lone surrogate
            nimbit::ui::append_utf8(name, c);
        }
    }
    memory->AEGP_UnlockMemHandle(description);
    memory->AEGP_FreeMemHandle(description);
    return name;
}
