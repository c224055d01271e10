#pragma once

// A frame like a captured screen, for the benches that encode, decode and list captures: 3840 x 2160,
// gradients that move with the index, a few flat panels and grain.

#include "nimbit/graphics/png_encoder.h"

#include <cstddef>
#include <vector>

namespace bench_frames {

constexpr int Width = 3840, Height = 2160;

// Like a captured frame: gradients that move from capture to capture, a few flat panels and grain.
// Grain on the first grainRows rows only: grain is what makes a PNG slow to write and large, so a
// folder of a thousand is made with a band of it.
inline std::vector<unsigned char> Frame(int index, int grainRows = Height) {
    std::vector<unsigned char> pixels(size_t(Width) * Height * 4);
    unsigned seed = 1u + unsigned(index) * 7919u;
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x) {
            unsigned grain = 0;
            if (y < grainRows) {
                seed = seed * 1103515245u + 12345u;
                grain = (seed >> 29) & 3u;
            }
            unsigned char* p = &pixels[(size_t(y) * Width + x) * 4];
            const bool panel = ((x + index * 40) / 480 + y / 270) % 3 == 0;
            p[0] = static_cast<unsigned char>(panel ? 200 - index
                                                    : (x + index * 17) * 255 / (Width + 1700) + grain);
            p[1] = static_cast<unsigned char>(panel ? 40 + index : y * 255 / Height + grain);
            p[2] = static_cast<unsigned char>((x + y + index * 9) / 24 + grain);
            p[3] = 255;
        }
    return pixels;
}

inline std::vector<unsigned char> FramePng(int index, int grainRows = Height) {
    const std::vector<unsigned char> pixels = Frame(index, grainRows);
    return nimbit::graphics::encode_png({pixels.data(), Width, Height, size_t(Width) * 4});
}

} // namespace bench_frames
