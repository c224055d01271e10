#include "nimbit/graphics/image_decoder.h"

#include <spng.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <vector>

// PNG decoding through libspng, which reads from memory without longjmp and measured faster than
// libpng on full-screen captures. Its critical chunks are still checked; damaged ancillary chunks
// are dropped rather than failing the picture.

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

// A file cut after its image data, or with a damaged end marker, would otherwise pass. Demand the
// end chunk, intact, near the end of the file.
bool has_end_chunk(const unsigned char* bytes, size_t size) {
    static const unsigned char iend[] = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
    const size_t window = size < 65536 ? size : 65536;
    const unsigned char* end = bytes + size;
    return std::search(end - window, end, std::begin(iend), std::end(iend)) != end;
}

struct ctx_free {
    void operator()(spng_ctx* ctx) const { spng_ctx_free(ctx); }
};

} // namespace

bool decode_png(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    static const unsigned char signature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (!bytes || size < 33 || !std::equal(std::begin(signature), std::end(signature), bytes) ||
        !has_end_chunk(bytes, size) || !raw_size_plausible(bytes, size))
        return false;
    const std::unique_ptr<spng_ctx, ctx_free> ctx(spng_ctx_new(0));
    if (!ctx || spng_set_crc_action(ctx.get(), SPNG_CRC_ERROR, SPNG_CRC_DISCARD) != 0 ||
        spng_set_png_buffer(ctx.get(), bytes, size) != 0)
        return false;
    spng_ihdr ihdr{};
    if (spng_get_ihdr(ctx.get(), &ihdr) != 0 || !size_allowed(ihdr.width, ihdr.height, max_pixels))
        return false;
    spng_trns trns{};
    const bool alpha = ihdr.color_type == SPNG_COLOR_TYPE_GRAYSCALE_ALPHA ||
                       ihdr.color_type == SPNG_COLOR_TYPE_TRUECOLOR_ALPHA ||
                       spng_get_trns(ctx.get(), &trns) == 0;
    size_t length = 0;
    if (spng_decoded_image_size(ctx.get(), SPNG_FMT_RGBA8, &length) != 0 ||
        length != size_t(ihdr.width) * size_t(ihdr.height) * 4)
        return false;
    std::vector<unsigned char> pixels(length);
    if (spng_decode_image(ctx.get(), pixels.data(), length, SPNG_FMT_RGBA8, SPNG_DECODE_TRNS) != 0)
        return false;
    out.size = {static_cast<int>(ihdr.width), static_cast<int>(ihdr.height)};
    out.alpha = alpha;
    out.pixels = std::move(pixels);
    return true;
}

} // namespace nimbit::graphics
