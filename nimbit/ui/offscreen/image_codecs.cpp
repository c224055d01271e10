#include "nimbit/ui/offscreen/image_codecs.h"

#include <algorithm>

namespace nimbit::ui::offscreen {

rgba_image recanvas(const rgba_image& image, _vec2<int> size) {
    rgba_image out;
    out.alpha = image.alpha;
    if (size.x <= 0 || size.y <= 0)
        return out;
    out.size = size;
    out.pixels.assign(size_t(size.x) * size_t(size.y) * 4, 0);
    const int w = std::min(size.x, image.size.x), h = std::min(size.y, image.size.y);
    for (int y = 0; y < h; ++y)
        std::copy_n(&image.pixels[size_t(y) * image.pitch()], size_t(w) * 4,
                    &out.pixels[size_t(y) * out.pitch()]);
    return out;
}

} // namespace nimbit::ui::offscreen
