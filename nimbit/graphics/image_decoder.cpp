#include "nimbit/graphics/image_decoder.h"

namespace nimbit::graphics {

bool size_allowed(long long width, long long height, unsigned long long max_pixels) {
    return width > 0 && height > 0 && width <= 0x7fffffff && height <= 0x7fffffff &&
           static_cast<unsigned long long>(width) * static_cast<unsigned long long>(height) <= max_pixels;
}

bool decode_image(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out,
                  int min_width, _vec2<int>* full_size) {
    if (!bytes || size < 4) {
        out = {};
        return false;
    }
    if (bytes[0] == 0x89 && bytes[1] == 'P') {
        if (!decode_png(bytes, size, max_pixels, out))
            return false;
        if (full_size)
            *full_size = out.size;
        return true;
    }
    if (bytes[0] == 0xFF && bytes[1] == 0xD8)
        return decode_jpeg_reduced(bytes, size, max_pixels, min_width, out, full_size);
    out = {};
    return false;
}

} // namespace nimbit::graphics
