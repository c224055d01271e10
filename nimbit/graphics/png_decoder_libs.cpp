#include "nimbit/graphics/image_decoder.h"

#include <libdeflate.h>
#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>

// PNG decoding through libpng's simplified interface: it catches libpng's errors internally (no
// longjmp crosses our frames) and releases everything with png_image_free. The common case of
// captures, plain 8-bit RGB or RGBA without interlacing or colour management, is read directly:
// libdeflate inflates the pixel rows about twice as fast as the zlib inside libpng. (libspng was
// measured too, and was slower than libpng on full-screen captures.)

namespace nimbit::graphics {

namespace {

uint32_t read_be32(const unsigned char* p) {
    return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | uint32_t(p[3]);
}

struct decompressor_free {
    void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
};

unsigned char paeth(int a, int b, int c) {
    const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    return static_cast<unsigned char>(pa <= pb && pa <= pc ? a : pb <= pc ? b : c);
}

// Undoes one row's filter in place; prior is the row above, already unfiltered (zeros for the first).
bool unfilter(unsigned filter, unsigned char* row, const unsigned char* prior, size_t length, size_t bpp) {
    switch (filter) {
    case 0:
        return true;
    case 1:
        if (bpp == 4) { // a pixel at a time: four byte sums in one word, no carry between them
            uint32_t left = 0;
            for (size_t i = 0; i < length; i += 4) {
                uint32_t v;
                std::memcpy(&v, row + i, 4);
                v = ((v & 0x7f7f7f7fu) + (left & 0x7f7f7f7fu)) ^ ((v ^ left) & 0x80808080u);
                std::memcpy(row + i, &v, 4);
                left = v;
            }
            return true;
        }
        for (size_t i = bpp; i < length; ++i)
            row[i] = static_cast<unsigned char>(row[i] + row[i - bpp]);
        return true;
    case 2:
        for (size_t i = 0; i < length; ++i)
            row[i] = static_cast<unsigned char>(row[i] + prior[i]);
        return true;
    case 3:
        for (size_t i = 0; i < length; ++i)
            row[i] = static_cast<unsigned char>(row[i] + ((i >= bpp ? row[i - bpp] : 0) + prior[i]) / 2);
        return true;
    case 4:
        for (size_t i = 0; i < length; ++i)
            row[i] = static_cast<unsigned char>(
                row[i] + paeth(i >= bpp ? row[i - bpp] : 0, prior[i], i >= bpp ? prior[i - bpp] : 0));
        return true;
    default:
        return false;
    }
}

enum class direct { done, failed, not_plain };

// 8-bit RGB or RGBA, not interlaced, with nothing that would change the colours (transparency
// chunks, gamma, profiles; sRGB is what the pixels are taken as anyway): every chunk's checksum
// verified, the data inflated in one call.
direct decode_plain(const unsigned char* bytes, size_t size, rgba_image& out) {
    const unsigned char* ihdr = bytes + 16;
    const uint32_t width = read_be32(ihdr), height = read_be32(ihdr + 4);
    const unsigned depth = ihdr[8], color = ihdr[9];
    if (read_be32(bytes + 8) != 13 ||
        std::string_view(reinterpret_cast<const char*>(bytes + 12), 4) != "IHDR" || depth != 8 ||
        (color != 2 && color != 6) || ihdr[10] || ihdr[11] || ihdr[12])
        return direct::not_plain;
    std::vector<unsigned char> data;
    size_t at = 8;
    for (bool end = false; !end;) {
        if (size - at < 12)
            return direct::failed;
        const size_t length = read_be32(bytes + at);
        if (length > size - at - 12)
            return direct::failed;
        const unsigned char* type = bytes + at + 4;
        if (libdeflate_crc32(0, type, length + 4) != read_be32(type + 4 + length))
            return direct::failed;
        const std::string_view name(reinterpret_cast<const char*>(type), 4);
        if (name == "IDAT")
            data.insert(data.end(), type + 4, type + 4 + length);
        else if (name == "IEND")
            end = true;
        else if (name == "tRNS" || name == "gAMA" || name == "cHRM" || name == "iCCP" || name == "sBIT")
            return direct::not_plain;
        at += 12 + length;
    }
    // RGBA rows are unfiltered where they were inflated, then moved down over the filter bytes,
    // so that one buffer (touched once) becomes the pixels.
    const size_t bpp = color == 6 ? 4 : 3, stride = size_t(width) * bpp, raw_size = (stride + 1) * height;
    std::vector<unsigned char> raw = std::move(out.pixels);
    raw.resize(raw_size);
    const std::unique_ptr<libdeflate_decompressor, decompressor_free> inflater(
        libdeflate_alloc_decompressor());
    size_t inflated = 0;
    if (!inflater ||
        libdeflate_zlib_decompress(inflater.get(), data.data(), data.size(), raw.data(), raw_size,
                                   &inflated) != LIBDEFLATE_SUCCESS ||
        inflated != raw_size)
        return direct::failed;
    data = {};
    std::vector<unsigned char> rgb_pixels(bpp == 3 ? size_t(width) * height * 4 : 0);
    const std::vector<unsigned char> zeros(stride, 0);
    const unsigned char* prior = zeros.data();
    for (size_t y = 0; y < height; ++y) {
        unsigned char* row = raw.data() + y * (stride + 1);
        if (!unfilter(row[0], row + 1, prior, stride, bpp))
            return direct::failed;
        if (bpp == 4) {
            std::memmove(raw.data() + y * stride, row + 1, stride);
            prior = raw.data() + y * stride;
            continue;
        }
        prior = row + 1;
        unsigned char* to = rgb_pixels.data() + y * size_t(width) * 4;
        for (size_t x = 0; x < width; ++x, to += 4) {
            std::copy_n(row + 1 + x * 3, 3, to);
            to[3] = 255;
        }
    }
    if (bpp == 4)
        raw.resize(stride * height);
    else
        raw = std::move(rgb_pixels);
    out.size = {static_cast<int>(width), static_cast<int>(height)};
    out.alpha = color == 6;
    out.pixels = std::move(raw);
    return direct::done;
}

} // namespace

namespace {

bool decode_any_png(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    if (!bytes || size < 33 || png_sig_cmp(bytes, 0, 8) != 0 ||
        !detail::png_structure_plausible(bytes, size) ||
        !size_allowed(read_be32(bytes + 16), read_be32(bytes + 20), max_pixels))
        return false;
    if (const direct result = decode_plain(bytes, size, out); result != direct::not_plain)
        return result == direct::done;
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes, size))
        return false;
    if (!size_allowed(image.width, image.height, max_pixels)) {
        png_image_free(&image);
        return false;
    }
    const bool alpha = (image.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    image.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> pixels = std::move(out.pixels);
    pixels.resize(PNG_IMAGE_SIZE(image));
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

} // namespace

bool decode_png(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    if (decode_any_png(bytes, size, max_pixels, out))
        return true;
    out = {};
    return false;
}

} // namespace nimbit::graphics
