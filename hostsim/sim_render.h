#pragma once

// The simulated host's renderer: render options, rendered frames, image worlds and the colour
// settings of the composition viewer. Frames are synthetic: a pattern that lets a test tell every
// pixel, channel and row apart.

#include "host/sdk/ae_suites.h"

#include <cstdint>
#include <vector>

namespace hostsim {

struct Item;

struct SimWorld {
    AEGP_WorldType type = AEGP_WorldType_8;
    A_long width = 0, height = 0;
    A_u_long rowBytes = 0; // padded beyond width * pixel size, as host worlds may be
    std::vector<uint8_t> pixels;
};

// Bytes per pixel of a world type (4 channels of 1, 2 or 4 bytes).
int PixelBytes(AEGP_WorldType type);

// The pattern pixel (x, y) of a frame rendered at time, channels alpha, red, green, blue, each in
// the world type's range (8 bits: 0..255, 16 bits: 0..32768, float: 0..1) and returned as doubles.
void PatternPixel(AEGP_WorldType type, A_long x, A_long y, const A_Time& time, double out[4]);

// What the last render was asked for.
struct RenderRequest {
    const Item* item = nullptr;
    A_Time time{0, 1};
    AEGP_WorldType type = AEGP_WorldType_NONE;
    A_short downsampleX = 1, downsampleY = 1;
};

extern AEGP_RenderOptionsSuite3 renderOptionsSuite3;
extern AEGP_RenderSuite3 renderSuite3;
extern AEGP_WorldSuite3 worldSuite3;
extern AEGP_ColorSettingsSuite2 colorSettingsSuite3;
A_Err GetItemMRUView(AEGP_ItemH item, AEGP_ItemViewP* view);

} // namespace hostsim
