#pragma once

// The reference the fast PNG encoder is measured beside: libpng at its default settings, the whole
// image encoded in memory. Returns the encoded size.

#include <png.h>

#include <cstring>
#include <vector>

inline size_t libpng_default_encode(const unsigned char* rgba, int width, int height, int row_bytes) {
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGBA;
    png_alloc_size_t length = 0;
    png_image_write_to_memory(&image, nullptr, &length, 0, rgba, row_bytes, nullptr);
    std::vector<unsigned char> out(length);
    png_image_write_to_memory(&image, out.data(), &length, 0, rgba, row_bytes, nullptr);
    return length;
}
