#pragma once

#include "nimbit/graphics/vec.h"

#include <vector>

namespace nimbit::graphics {

// Decoded pixels in memory: rows top to bottom, 4 bytes per pixel (red, green, blue, alpha, not
// premultiplied), no padding. Free of any platform image, so it can be made on any thread.
struct rgba_image {
    _vec2<int> size;
    bool alpha = true;
    std::vector<unsigned char> pixels;

    bool empty() const { return size.x <= 0 || size.y <= 0; }
    unsigned pitch() const { return static_cast<unsigned>(size.x) * 4u; }
};

} // namespace nimbit::graphics
