#include "nimbit/ui/image_frames.h"

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/native_bitmap.h"

#include <algorithm>

namespace nimbit::ui {

_vec2<int> frame_size(const bitmap& image, int frames) {
    const _vec2<int> size = image.get_size();
    return {size.x / std::max(1, frames), size.y};
}

ivec4 frame_source(const bitmap& image, int frames, int frame) {
    const native_bitmap* rep = image.get_native();
    if (!rep)
        return {};
    frames = std::max(1, frames);
    const _vec2<int> pixels = rep->get_size();
    const int width = pixels.x / frames;
    return {std::clamp(frame, 0, frames - 1) * width, 0, width, pixels.y};
}

} // namespace nimbit::ui
