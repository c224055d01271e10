#pragma once

#include <cstddef>
#include <vector>

namespace nimbit::graphics {

// Pixels to encode: height rows of width 4-byte pixels (red, green, blue, alpha, not premultiplied),
// each row starting pitch bytes after the one above.
struct rgba_view {
    const unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    size_t pitch = 0;
};

// A PNG of 8-bit RGBA, made for speed: every row gets the same cheap filter and the rows are
// deflated at the fastest level, which for rendered frames costs a few percent in size against the
// slowest settings for a fraction of the time. Empty for an empty image, when the compressed pixels
// exceed one chunk's 31-bit length, or when memory runs out.
std::vector<unsigned char> encode_png(const rgba_view& image);

} // namespace nimbit::graphics
