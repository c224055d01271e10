#include "nimbit/ui/offscreen/image_codecs.h"

namespace nimbit::ui::offscreen {

bool size_allowed(long long width, long long height, unsigned long long max_pixels) {
    return width > 0 && height > 0 && width <= 0x7fffffff && height <= 0x7fffffff &&
           static_cast<unsigned long long>(width) * static_cast<unsigned long long>(height) <= max_pixels;
}

bool decode_image(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    if (!bytes || size < 4)
        return false;
    if (bytes[0] == 0x89 && bytes[1] == 'P')
        return decode_png(bytes, size, max_pixels, out);
    if (bytes[0] == 0xFF && bytes[1] == 0xD8)
        return decode_jpeg(bytes, size, max_pixels, out);
    return false;
}

} // namespace nimbit::ui::offscreen
