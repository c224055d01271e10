#include "nimbit/ui/offscreen/image_codecs.h"

#include <png.h>

#include <algorithm>
#include <cstring>
#include <iterator>

// PNG decoding through libpng's simplified interface: it catches libpng's errors internally (no
// longjmp crosses our frames) and releases everything with png_image_free.

namespace nimbit::ui::offscreen {

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

bool decode_png(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    if (!bytes || size < 8 || png_sig_cmp(bytes, 0, 8) != 0 || !has_end_chunk(bytes, size))
        return false;
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes, size))
        return false;
    if (!size_allowed(image.width, image.height, max_pixels) || !raw_size_plausible(bytes, size)) {
        png_image_free(&image);
        return false;
    }
    const bool alpha = (image.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    image.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> pixels(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) {
        png_image_free(&image);
        return false;
    }
    out.size = {static_cast<int>(image.width), static_cast<int>(image.height)};
    out.alpha = alpha;
    out.pixels = std::move(pixels);
    png_image_free(&image);
    return true;
}

} // namespace nimbit::ui::offscreen
