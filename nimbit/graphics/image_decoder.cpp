#include "nimbit/graphics/image_decoder.h"

#include <algorithm>
#include <iterator>

namespace nimbit::graphics {

namespace {

uint32_t read_be32(const unsigned char* p) {
    return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | uint32_t(p[3]);
}

// Deflate cannot expand data by more than about 1032 times, so a file that claims more raw pixel
// rows than its size can hold is damaged or truncated: refuse it before allocating for it.
bool raw_size_plausible(const unsigned char* bytes, size_t size) {
    if (size < 33)
        return false;
    const unsigned char* ihdr = bytes + 16; // signature (8), chunk length (4), "IHDR" (4)
    const unsigned long long width = read_be32(ihdr), height = read_be32(ihdr + 4);
    const unsigned bit_depth = ihdr[8], color_type = ihdr[9];
    unsigned channels = 1;
    switch (color_type) {
    case 2:
        channels = 3;
        break;
    case 4:
        channels = 2;
        break;
    case 6:
        channels = 4;
        break;
    default:
        channels = 1;
        break;
    }
    const unsigned long long row_bytes = (width * channels * bit_depth + 7) / 8 + 1;
    const unsigned long long raw = row_bytes * height;
    return raw <= static_cast<unsigned long long>(size) * 1100ull + 4096ull;
}

// libpng stops reading once it has the pixels, so a file cut after its image data, or with a
// damaged end marker, would pass. Demand the end chunk, intact, near the end of the file.
bool has_end_chunk(const unsigned char* bytes, size_t size) {
    static const unsigned char iend[] = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
    const size_t window = size < 65536 ? size : 65536;
    const unsigned char* end = bytes + size;
    return std::search(end - window, end, std::begin(iend), std::end(iend)) != end;
}

} // namespace

namespace detail {

bool png_structure_plausible(const unsigned char* bytes, size_t size) {
    return size >= 33 && has_end_chunk(bytes, size) && raw_size_plausible(bytes, size);
}

// A decoder may fill the rest of a cut-off JPG with grey and call it good; the end marker must be
// there, near the end (some writers append a little after it).
bool jpeg_has_end(const unsigned char* bytes, size_t size) {
    static const unsigned char eoi[] = {0xFF, 0xD9};
    const size_t window = std::min<size_t>(size, 65536);
    const unsigned char* end = bytes + size;
    return size >= 4 && std::search(end - window, end, std::begin(eoi), std::end(eoi)) != end;
}

} // namespace detail

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
