#include "hostsim/sim_render.h"

#include "hostsim/sim_host.h"
#include "hostsim/suite_calls.h"

#include <cstring>

namespace hostsim {

namespace {

struct SimRenderOptions {
    Item* item;
    A_Time time;
    AEGP_WorldType type;
    A_short downsampleX, downsampleY;
};

struct SimFrame {
    SimWorld* world;
};

struct SimProfile {
    int unused = 0;
};

SimWorld* WorldOf(AEGP_WorldH handle) {
    return reinterpret_cast<SimWorld*>(handle);
}

SimWorld* NewWorld(AEGP_WorldType type, A_long width, A_long height) {
    auto* world = new SimWorld;
    world->type = type;
    world->width = width;
    world->height = height;
    world->rowBytes = static_cast<A_u_long>(width * PixelBytes(type) + 32);
    world->pixels.assign(static_cast<size_t>(world->rowBytes) * static_cast<size_t>(height), 0);
    ++Host().liveWorlds;
    return world;
}

void StorePixel(SimWorld& world, A_long x, A_long y, const double channels[4]) {
    uint8_t* at = world.pixels.data() + static_cast<size_t>(y) * world.rowBytes +
                  static_cast<size_t>(x) * static_cast<size_t>(PixelBytes(world.type));
    for (int c = 0; c < 4; ++c) {
        if (world.type == AEGP_WorldType_8) {
            at[c] = static_cast<uint8_t>(channels[c]);
        } else if (world.type == AEGP_WorldType_16) {
            const auto v = static_cast<uint16_t>(channels[c]);
            std::memcpy(at + 2 * c, &v, 2);
        } else {
            const auto v = static_cast<float>(channels[c]);
            std::memcpy(at + 4 * c, &v, 4);
        }
    }
}

void LoadPixel(const SimWorld& world, A_long x, A_long y, double channels[4]) {
    const uint8_t* at = world.pixels.data() + static_cast<size_t>(y) * world.rowBytes +
                        static_cast<size_t>(x) * static_cast<size_t>(PixelBytes(world.type));
    for (int c = 0; c < 4; ++c) {
        if (world.type == AEGP_WorldType_8) {
            channels[c] = at[c];
        } else if (world.type == AEGP_WorldType_16) {
            uint16_t v;
            std::memcpy(&v, at + 2 * c, 2);
            channels[c] = v;
        } else {
            float v;
            std::memcpy(&v, at + 4 * c, 4);
            channels[c] = v;
        }
    }
}

double ChannelMax(AEGP_WorldType type) {
    return type == AEGP_WorldType_8 ? 255.0 : type == AEGP_WorldType_16 ? 32768.0 : 1.0;
}

// ---- Render options

A_Err NewFromItem(AEGP_PluginID, AEGP_ItemH itemH, AEGP_RenderOptionsH* options) {
    Item* item = Host().ItemFromHandle(itemH);
    if (item == nullptr)
        return A_Err_PARAMETER;
    ++Host().liveRenderOptions;
    *options = reinterpret_cast<AEGP_RenderOptionsH>(
        new SimRenderOptions{item, item->time, AEGP_WorldType_8, item->downsample, item->downsample});
    return A_Err_NONE;
}

A_Err DisposeOptions(AEGP_RenderOptionsH options) {
    return Dispose<SimRenderOptions>(options, Host().liveRenderOptions);
}

A_Err SetTime(AEGP_RenderOptionsH options, A_Time time) {
    reinterpret_cast<SimRenderOptions*>(options)->time = time;
    return A_Err_NONE;
}

A_Err GetTime(AEGP_RenderOptionsH options, A_Time* time) {
    *time = reinterpret_cast<SimRenderOptions*>(options)->time;
    return A_Err_NONE;
}

A_Err SetWorldType(AEGP_RenderOptionsH options, AEGP_WorldType type) {
    if (type < AEGP_WorldType_8 || type > AEGP_WorldType_32)
        return A_Err_PARAMETER;
    reinterpret_cast<SimRenderOptions*>(options)->type = type;
    return A_Err_NONE;
}

A_Err GetWorldType(AEGP_RenderOptionsH options, AEGP_WorldType* type) {
    *type = reinterpret_cast<SimRenderOptions*>(options)->type;
    return A_Err_NONE;
}

A_Err SetDownsampleFactor(AEGP_RenderOptionsH options, A_short x, A_short y) {
    if (x < 1 || y < 1)
        return A_Err_PARAMETER;
    auto* o = reinterpret_cast<SimRenderOptions*>(options);
    o->downsampleX = x;
    o->downsampleY = y;
    return A_Err_NONE;
}

A_Err GetDownsampleFactor(AEGP_RenderOptionsH options, A_short* x, A_short* y) {
    const auto* o = reinterpret_cast<SimRenderOptions*>(options);
    *x = o->downsampleX;
    *y = o->downsampleY;
    return A_Err_NONE;
}

// ---- Render

A_Err RenderAndCheckoutFrame(AEGP_RenderOptionsH optionsH, AEGP_RenderSuiteCheckForCancel, AEGP_CancelRefcon,
                             AEGP_FrameReceiptH* receipt) {
    const auto* options = reinterpret_cast<SimRenderOptions*>(optionsH);
    if (options == nullptr)
        return A_Err_PARAMETER;
    SimHost& host = Host();
    host.lastRender = RenderRequest{options->item, options->time, options->type, options->downsampleX,
                                    options->downsampleY};
    const A_long width = options->item->width / options->downsampleX;
    const A_long height = options->item->height / options->downsampleY;
    SimWorld* world = NewWorld(options->type, width, height);
    for (A_long y = 0; y < height; ++y) {
        for (A_long x = 0; x < width; ++x) {
            double channels[4];
            PatternPixel(options->type, x, y, options->time, channels);
            StorePixel(*world, x, y, channels);
        }
    }
    ++host.liveFrames;
    *receipt = reinterpret_cast<AEGP_FrameReceiptH>(new SimFrame{world});
    return A_Err_NONE;
}

A_Err CheckinFrame(AEGP_FrameReceiptH receipt) {
    if (receipt == nullptr)
        return A_Err_PARAMETER;
    auto* frame = reinterpret_cast<SimFrame*>(receipt);
    delete frame->world;
    --Host().liveWorlds;
    delete frame;
    --Host().liveFrames;
    return A_Err_NONE;
}

A_Err GetReceiptWorld(AEGP_FrameReceiptH receipt, AEGP_WorldH* world) {
    return Answer(reinterpret_cast<SimFrame*>(receipt),
                  [&](SimFrame& frame) { *world = reinterpret_cast<AEGP_WorldH>(frame.world); });
}

// ---- Worlds

A_Err WorldNew(AEGP_PluginID, AEGP_WorldType type, A_long width, A_long height, AEGP_WorldH* world) {
    if (type < AEGP_WorldType_8 || type > AEGP_WorldType_32 || width < 0 || height < 0)
        return A_Err_PARAMETER;
    *world = reinterpret_cast<AEGP_WorldH>(NewWorld(type, width, height));
    return A_Err_NONE;
}

A_Err WorldDispose(AEGP_WorldH world) {
    return Dispose<SimWorld>(world, Host().liveWorlds);
}

A_Err WorldGetType(AEGP_WorldH world, AEGP_WorldType* type) {
    *type = WorldOf(world)->type;
    return A_Err_NONE;
}

A_Err WorldGetSize(AEGP_WorldH world, A_long* width, A_long* height) {
    *width = WorldOf(world)->width;
    *height = WorldOf(world)->height;
    return A_Err_NONE;
}

A_Err WorldGetRowBytes(AEGP_WorldH world, A_u_long* rowBytes) {
    *rowBytes = WorldOf(world)->rowBytes;
    return A_Err_NONE;
}

template <AEGP_WorldType Type, typename Pixel> A_Err BaseAddress(AEGP_WorldH world, Pixel** base) {
    if (WorldOf(world)->type != Type)
        return A_Err_PARAMETER; // the host refuses the accessor of another depth
    *base = reinterpret_cast<Pixel*>(WorldOf(world)->pixels.data());
    return A_Err_NONE;
}

A_Err FillOutPFEffectWorld(AEGP_WorldH handle, PF_EffectWorld* out) {
    const SimWorld* world = WorldOf(handle);
    std::memset(out, 0, sizeof *out);
    out->data = reinterpret_cast<PF_PixelPtr>(WorldOf(handle)->pixels.data());
    out->rowbytes = static_cast<A_long>(world->rowBytes);
    out->width = world->width;
    out->height = world->height;
    out->extent_hint = PF_LRect{0, 0, world->width, world->height};
    out->pix_aspect_ratio = PF_RationalScale{1, 1};
    return A_Err_NONE;
}

// ---- Colour settings

A_Err DoesViewHaveColorSpaceXform(AEGP_ItemViewP view, A_Boolean* hasTransform) {
    const Item* item = Host().ItemFromHandle(view);
    *hasTransform = item != nullptr && item->viewColorTransform ? 1 : 0;
    return A_Err_NONE;
}

// The view transform: inverts the colour channels and clears alpha (a colour transform does not
// promise to keep it).
A_Err XformWorkingToViewColorSpace(AEGP_ItemViewP, AEGP_WorldH sourceH, AEGP_WorldH destinationH) {
    const SimWorld* source = WorldOf(sourceH);
    SimWorld* destination = WorldOf(destinationH);
    if (source == nullptr || destination == nullptr || source->type != destination->type ||
        source->width != destination->width || source->height != destination->height)
        return A_Err_PARAMETER;
    ++Host().colorTransforms;
    const double max = ChannelMax(source->type);
    for (A_long y = 0; y < source->height; ++y) {
        for (A_long x = 0; x < source->width; ++x) {
            double channels[4];
            LoadPixel(*source, x, y, channels);
            const double transformed[4] = {0, max - channels[1], max - channels[2], max - channels[3]};
            StorePixel(*destination, x, y, transformed);
        }
    }
    return A_Err_NONE;
}

A_Err GetNewWorkingSpaceColorProfile(AEGP_PluginID, AEGP_CompH comp, AEGP_ColorProfileP* profile) {
    if (Host().ItemFromHandle(comp) == nullptr)
        return A_Err_PARAMETER;
    ++Host().liveProfiles;
    *profile = reinterpret_cast<AEGP_ColorProfileP>(new SimProfile);
    return A_Err_NONE;
}

A_Err GetNewColorProfileDescription(AEGP_PluginID, AEGP_ConstColorProfileP profile,
                                    AEGP_MemHandle* description) {
    if (profile == nullptr)
        return A_Err_PARAMETER;
    std::vector<A_UTF16Char> utf16 = Utf8ToUtf16(Host().GetModel().workingSpaceProfile);
    utf16.push_back(0);
    *description = Host().NewMemHandle(utf16.data(), utf16.size() * sizeof(A_UTF16Char));
    return A_Err_NONE;
}

A_Err DisposeColorProfile(AEGP_ColorProfileP profile) {
    return Dispose<SimProfile>(profile, Host().liveProfiles);
}

} // namespace

int PixelBytes(AEGP_WorldType type) {
    return type == AEGP_WorldType_8 ? 4 : type == AEGP_WorldType_16 ? 8 : 16;
}

void PatternPixel(AEGP_WorldType type, A_long x, A_long y, const A_Time& time, double out[4]) {
    const double max = ChannelMax(type);
    const auto step = [&](A_long value, int period) {
        const double fraction = static_cast<double>(value % period) / (period - 1);
        return type == AEGP_WorldType_32 ? fraction : static_cast<double>(static_cast<long>(fraction * max));
    };
    out[0] = type == AEGP_WorldType_32 ? 1.0 : max * 3 / 4; // partly transparent: alpha must survive
    out[1] = step(x, 256);
    out[2] = step(y, 256);
    out[3] =
        step(time.scale != 0 ? static_cast<A_long>(time.value / static_cast<A_long>(time.scale)) : 0, 16);
}

A_Err GetItemMRUView(AEGP_ItemH item, AEGP_ItemViewP* view) {
    if (Host().ItemFromHandle(item) == nullptr)
        return A_Err_PARAMETER;
    *view = reinterpret_cast<AEGP_ItemViewP>(item);
    return A_Err_NONE;
}

AEGP_RenderOptionsSuite3 renderOptionsSuite3 = [] {
    AEGP_RenderOptionsSuite3 s{};
    s.AEGP_NewFromItem = NewFromItem;
    s.AEGP_Dispose = DisposeOptions;
    s.AEGP_SetTime = SetTime;
    s.AEGP_GetTime = GetTime;
    s.AEGP_SetWorldType = SetWorldType;
    s.AEGP_GetWorldType = GetWorldType;
    s.AEGP_SetDownsampleFactor = SetDownsampleFactor;
    s.AEGP_GetDownsampleFactor = GetDownsampleFactor;
    return s;
}();

AEGP_RenderSuite3 renderSuite3 = [] {
    AEGP_RenderSuite3 s{};
    s.AEGP_RenderAndCheckoutFrame = RenderAndCheckoutFrame;
    s.AEGP_CheckinFrame = CheckinFrame;
    s.AEGP_GetReceiptWorld = GetReceiptWorld;
    return s;
}();

AEGP_WorldSuite3 worldSuite3 = [] {
    AEGP_WorldSuite3 s{};
    s.AEGP_New = WorldNew;
    s.AEGP_Dispose = WorldDispose;
    s.AEGP_GetType = WorldGetType;
    s.AEGP_GetSize = WorldGetSize;
    s.AEGP_GetRowBytes = WorldGetRowBytes;
    s.AEGP_GetBaseAddr8 = BaseAddress<AEGP_WorldType_8, PF_Pixel8>;
    s.AEGP_GetBaseAddr16 = BaseAddress<AEGP_WorldType_16, PF_Pixel16>;
    s.AEGP_GetBaseAddr32 = BaseAddress<AEGP_WorldType_32, PF_PixelFloat>;
    s.AEGP_FillOutPFEffectWorld = FillOutPFEffectWorld;
    return s;
}();

AEGP_ColorSettingsSuite2 colorSettingsSuite3 = [] {
    AEGP_ColorSettingsSuite2 s{};
    s.AEGP_DoesViewHaveColorSpaceXform = DoesViewHaveColorSpaceXform;
    s.AEGP_XformWorkingToViewColorSpace = XformWorkingToViewColorSpace;
    s.AEGP_GetNewWorkingSpaceColorProfile = GetNewWorkingSpaceColorProfile;
    s.AEGP_GetNewColorProfileDescription = GetNewColorProfileDescription;
    s.AEGP_DisposeColorProfile = DisposeColorProfile;
    return s;
}();

} // namespace hostsim
