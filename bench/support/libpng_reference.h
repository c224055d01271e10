#pragma once

// The references the PNG codecs are measured beside: libpng at its default settings, the whole
// image encoded or decoded in memory.

#include <png.h>

#include <cstring>
#include <vector>

// Returns the encoded size.
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

// 8-bit RGBA out of a PNG in memory; false on any error.
inline bool libpng_default_decode(const unsigned char* bytes, size_t size, std::vector<unsigned char>& rgba) {
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes, size))
        return false;
    image.format = PNG_FORMAT_RGBA;
    rgba.resize(PNG_IMAGE_SIZE(image));
    const bool ok = png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr) != 0;
    png_image_free(&image);
    return ok;
}
