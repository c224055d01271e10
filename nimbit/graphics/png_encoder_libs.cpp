#include "nimbit/graphics/png_encoder.h"

#include <libdeflate.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace nimbit::graphics {

namespace {

constexpr unsigned char Signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr size_t MaxChunk = 0x7FFFFFFF; // chunk lengths are 31-bit
constexpr unsigned char FilterSub = 1;  // each byte minus the same channel of the pixel to its left

void put_be32(unsigned char* at, uint32_t v) {
    at[0] = static_cast<unsigned char>(v >> 24);
    at[1] = static_cast<unsigned char>(v >> 16);
    at[2] = static_cast<unsigned char>(v >> 8);
    at[3] = static_cast<unsigned char>(v);
}

// Appends one chunk: length, type, data, and the CRC of type and data.
void put_chunk(std::vector<unsigned char>& out, const char (&type)[5], const unsigned char* data,
               size_t size) {
    const size_t start = out.size();
    out.resize(start + 12 + size);
    unsigned char* at = out.data() + start;
    put_be32(at, static_cast<uint32_t>(size));
    std::memcpy(at + 4, type, 4);
    if (size != 0)
        std::memcpy(at + 8, data, size);
    put_be32(at + 8 + size, libdeflate_crc32(0, at + 4, size + 4));
}

// The Sub filter: a frame's neighbouring pixels are alike, so the differences are small numbers
// that deflate well, and the filter needs no second row.
void filter_row(const unsigned char* in, unsigned char* out, int width) {
    *out++ = FilterSub;
    std::memcpy(out, in, 4);
    int x = 4;
#if defined(__SSE2__)
    for (; x + 16 <= width * 4; x += 16) {
        const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x));
        const __m128i left = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x - 4));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), _mm_sub_epi8(here, left));
    }
#endif
    for (; x < width * 4; ++x)
        out[x] = static_cast<unsigned char>(in[x] - in[x - 4]);
}

struct compressor_free {
    void operator()(libdeflate_compressor* c) const { libdeflate_free_compressor(c); }
};

} // namespace

std::vector<unsigned char> encode_png(const rgba_view& image) {
    if (image.pixels == nullptr || image.width <= 0 || image.height <= 0 ||
        image.pitch < static_cast<size_t>(image.width) * 4)
        return {};
    const size_t row_bytes = 1 + static_cast<size_t>(image.width) * 4;
    try {
        // Both big buffers are left uninitialised: every filtered byte is written, and of the
        // compressor's bound only the part it fills is ever touched (and paged in).
        const size_t filtered_size = row_bytes * static_cast<size_t>(image.height);
        std::unique_ptr<unsigned char[]> filtered(new unsigned char[filtered_size]);
        for (int y = 0; y < image.height; ++y)
            filter_row(image.pixels + static_cast<size_t>(y) * image.pitch, filtered.get() + y * row_bytes,
                       image.width);

        const std::unique_ptr<libdeflate_compressor, compressor_free> compressor(
            libdeflate_alloc_compressor(1));
        if (!compressor)
            return {};
        const size_t bound = libdeflate_zlib_compress_bound(compressor.get(), filtered_size);
        std::unique_ptr<unsigned char[]> deflated(new unsigned char[bound]);
        const size_t deflated_size =
            libdeflate_zlib_compress(compressor.get(), filtered.get(), filtered_size, deflated.get(), bound);
        if (deflated_size == 0 || deflated_size > MaxChunk)
            return {};
        filtered.reset(); // the two big buffers need not live together with the output

        unsigned char header[13];
        put_be32(header, static_cast<uint32_t>(image.width));
        put_be32(header + 4, static_cast<uint32_t>(image.height));
        header[8] = 8;                            // bits per channel
        header[9] = 6;                            // colour type: RGBA
        header[10] = header[11] = header[12] = 0; // deflate, adaptive filtering, no interlace

        std::vector<unsigned char> png;
        png.reserve(sizeof Signature + 25 + 12 + deflated_size + 12);
        png.insert(png.end(), Signature, Signature + sizeof Signature);
        put_chunk(png, "IHDR", header, sizeof header);
        put_chunk(png, "IDAT", deflated.get(), deflated_size);
        put_chunk(png, "IEND", nullptr, 0);
        return png;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

} // namespace nimbit::graphics
