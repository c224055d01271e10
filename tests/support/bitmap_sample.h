#pragma once

// What the platform bitmap tests share: a small picture whose halves, alpha and one odd pixel show
// flips, swapped channels and lost transparency, and the worst channel difference between two.

#include "nimbit/ui/native_bitmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace bitmap_sample {

// A 40 x 30 image: red top half, translucent blue bottom half, a green pixel at (3, 2).
inline std::unique_ptr<nimbit::ui::native_bitmap> sample(bool alpha = true) {
    auto b = nimbit::ui::create_native_bitmap();
    EXPECT_TRUE(b->create({40, 30}, alpha));
    unsigned pitch = 0;
    unsigned char* p = b->lock_pixels(pitch);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            unsigned char* px = p + y * pitch + x * 4;
            const bool top = y < 15;
            px[0] = top ? 230 : 20;
            px[1] = (x == 3 && y == 2) ? 255 : 10;
            px[2] = top ? 10 : 220;
            px[3] = top || !alpha ? 255 : 128;
        }
    b->unlock_pixels();
    return b;
}

// The largest channel difference.
inline int max_difference(const nimbit::ui::native_bitmap& a, const nimbit::ui::native_bitmap& b) {
    unsigned pa = 0, pb = 0;
    const unsigned char* x = a.read_pixels(pa);
    const unsigned char* y = b.read_pixels(pb);
    int worst = 0;
    for (int row = 0; row < a.get_size().y; ++row)
        for (int i = 0; i < a.get_size().x * 4; ++i)
            worst = std::max(worst, std::abs(int(x[row * pa + i]) - int(y[row * pb + i])));
    return worst;
}

} // namespace bitmap_sample
