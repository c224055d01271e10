#pragma once

#include "nimbit/graphics/vec.h"

namespace nimbit::ui {

class bitmap;

// Control images hold their states as frames side by side (normal, hover, pressed; off, on).
// The size of one frame in points, and its source rectangle in pixels; zero for an empty bitmap.
_vec2<int> frame_size(const bitmap& image, int frames);
ivec4 frame_source(const bitmap& image, int frames, int frame);

} // namespace nimbit::ui
