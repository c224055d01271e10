#include "nimbit/ui/offscreen/offscreen_bitmap.h"

namespace nimbit::ui {

std::unique_ptr<native_bitmap> create_native_bitmap() {
    return std::make_unique<offscreen_bitmap>();
}

bool offscreen_bitmap::create(_vec2<int> size, bool alpha) {
    if (!offscreen::size_allowed(size.x, size.y, max_pixels))
        return false;
    image.size = size;
    image.alpha = alpha;
    image.pixels.assign(size_t(size.x) * size_t(size.y) * 4, 0);
    if (!alpha)
        for (size_t i = 3; i < image.pixels.size(); i += 4)
            image.pixels[i] = 255;
    return true;
}

std::unique_ptr<native_bitmap> offscreen_bitmap::clone() const {
    return std::make_unique<offscreen_bitmap>(image);
}

bool offscreen_bitmap::decode(const unsigned char* bytes, size_t size) {
    offscreen::rgba_image decoded;
    if (!offscreen::decode_image(bytes, size, max_pixels, decoded))
        return false;
    image = std::move(decoded);
    return true;
}

unsigned char* offscreen_bitmap::lock_pixels(unsigned& pitch) {
    pitch = image.pitch();
    return image.pixels.empty() ? nullptr : image.pixels.data();
}

const unsigned char* offscreen_bitmap::read_pixels(unsigned& pitch) const {
    pitch = image.pitch();
    return image.pixels.empty() ? nullptr : image.pixels.data();
}

bool offscreen_bitmap::resize(_vec2<int> size, bool resample) {
    if (!offscreen::size_allowed(size.x, size.y, max_pixels))
        return false;
    image = resample ? offscreen::resample(image, size) : offscreen::recanvas(image, size);
    return true;
}

} // namespace nimbit::ui
