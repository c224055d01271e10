#include "nimbit/graphics/pixel.h"

#include "nimbit/utils/assert.h"
#include "nimbit/utils/thread_pool.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace nimbit::graphics {

namespace {

constexpr float scale8 = 255.0f;
constexpr float scale16 = 32768.0f; // the host's 16-bit channels run from 0 to 32768

// Clamps to 0..1; NaN becomes 0.
inline float unit(float v) {
    return v > 0.0f ? (v < 1.0f ? v : 1.0f) : 0.0f;
}

// Rounds to nearest, ties to even, like the vector conversion below, so both paths agree.
inline uint8_t to8(float v) {
    return static_cast<uint8_t>(std::lrintf(unit(v) * scale8));
}
inline uint16_t to16(float v) {
    return static_cast<uint16_t>(std::lrintf(unit(v) * scale16));
}

// Converts width pixels of floats to 8-bit channels. Groups of 4 pixels become one 16-byte store;
// the remaining 0-3 pixels are converted one channel at a time. With stream set (and dst 16-byte
// aligned) the stores bypass the cache: a large frame would only evict what is there, and the
// memory traffic drops by the reads a cached store makes first.
template <bool stream> void floats_to_8(const float* src, unsigned char* dst, int width) {
    int x = 0;
#if defined(__SSE2__)
    const int aligned = width & ~3;
    const __m128 scale = _mm_set1_ps(scale8);
    // Only the top needs clamping here: the saturating packs take negative values to 0. min()
    // returns its second operand for NaN, which the conversion turns into INT_MIN and the packs
    // into 0, as unit() does.
    auto convert = [&](const float* p) {
        return _mm_cvtps_epi32(_mm_min_ps(scale, _mm_mul_ps(_mm_loadu_ps(p), scale)));
    };
    for (; x < aligned; x += 4) {
        const float* s = src + x * 4;
        const __m128i lo = _mm_packs_epi32(convert(s), convert(s + 4));
        const __m128i hi = _mm_packs_epi32(convert(s + 8), convert(s + 12));
        __m128i* out = reinterpret_cast<__m128i*>(dst + x * 4);
        if constexpr (stream)
            _mm_stream_si128(out, _mm_packus_epi16(lo, hi));
        else
            _mm_storeu_si128(out, _mm_packus_epi16(lo, hi));
    }
#endif
    for (; x < width; ++x)
        for (int c = 0; c < 4; ++c)
            dst[x * 4 + c] = to8(src[x * 4 + c]);
}

// Converts width pixels of floats to 16-bit channels, 2 pixels per 16-byte store, then the rest.
void floats_to_16(const float* src, unsigned char* dst, int width) {
    int x = 0;
#if defined(__SSE2__)
    const int aligned = width & ~1;
    const __m128 zero = _mm_setzero_ps();
    const __m128 one = _mm_set1_ps(1.0f);
    const __m128 scale = _mm_set1_ps(scale16);
    // SSE2 packs only to signed 16 bits: shift 0..32768 down by 32768, pack, and flip the top bit
    // back, which adds the 32768 again in unsigned terms.
    const __m128i bias = _mm_set1_epi32(32768);
    const __m128i flip = _mm_set1_epi16(static_cast<short>(0x8000));
    auto convert = [&](const float* p) {
        const __m128 v = _mm_mul_ps(_mm_min_ps(_mm_max_ps(_mm_loadu_ps(p), zero), one), scale);
        return _mm_sub_epi32(_mm_cvtps_epi32(v), bias);
    };
    for (; x < aligned; x += 2) {
        const float* s = src + x * 4;
        const __m128i packed = _mm_xor_si128(_mm_packs_epi32(convert(s), convert(s + 4)), flip);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x * 8), packed);
    }
#endif
    for (; x < width; ++x)
        for (int c = 0; c < 4; ++c) {
            const uint16_t v = to16(src[x * 4 + c]);
            std::memcpy(dst + (x * 4 + c) * 2, &v, 2);
        }
}

void row_from_8(const unsigned char* src, float* dst, int width) {
    constexpr float inv = 1.0f / scale8;
    for (int i = 0; i < width * 4; ++i)
        dst[i] = static_cast<float>(src[i]) * inv;
}

void row_from_16(const unsigned char* src, float* dst, int width) {
    constexpr float inv = 1.0f / scale16;
    for (int i = 0; i < width * 4; ++i) {
        uint16_t v;
        std::memcpy(&v, src + i * 2, 2);
        dst[i] = static_cast<float>(v) * inv;
    }
}

// A, R, G, B bytes to R, G, B, A: each pixel read as a little-endian word, rotated by one byte.
inline uint32_t argb_to_rgba(uint32_t v) {
    return (v >> 8) | (v << 24);
}

#if defined(__SSE2__)
inline __m128i argb_to_rgba(__m128i v) {
    return _mm_or_si128(_mm_srli_epi32(v, 8), _mm_slli_epi32(v, 24));
}
#endif

// One row of 8-bit host pixels reordered.
void argb8_row(const unsigned char* src, unsigned char* dst, int width) {
    int x = 0;
#if defined(__SSE2__)
    for (; x + 4 <= width; x += 4) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + x * 4));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x * 4), argb_to_rgba(v));
    }
#endif
    for (; x < width; ++x) {
        uint32_t v;
        std::memcpy(&v, src + x * 4, 4);
        v = argb_to_rgba(v);
        std::memcpy(dst + x * 4, &v, 4);
    }
}

// One row of 16-bit host pixels to 8 bits, reordered. The arithmetic is the import's (to a float in
// 0..1) followed by the export's, so the values are the same as through a pixel_buffer.
void argb16_row(const unsigned char* src, unsigned char* dst, int width) {
    constexpr float inv = 1.0f / scale16;
    int x = 0;
#if defined(__SSE2__)
    const __m128 scale = _mm_set1_ps(scale8);
    const __m128 inverse = _mm_set1_ps(inv);
    const __m128i zero = _mm_setzero_si128();
    auto convert = [&](__m128i words) { // 4 zero-extended channels
        const __m128 unit_value = _mm_mul_ps(_mm_cvtepi32_ps(words), inverse);
        return _mm_cvtps_epi32(_mm_min_ps(scale, _mm_mul_ps(unit_value, scale)));
    };
    for (; x + 4 <= width; x += 4) {
        const unsigned char* s = src + x * 8;
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 16));
        const __m128i lo =
            _mm_packs_epi32(convert(_mm_unpacklo_epi16(a, zero)), convert(_mm_unpackhi_epi16(a, zero)));
        const __m128i hi =
            _mm_packs_epi32(convert(_mm_unpacklo_epi16(b, zero)), convert(_mm_unpackhi_epi16(b, zero)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x * 4), argb_to_rgba(_mm_packus_epi16(lo, hi)));
    }
#endif
    for (; x < width; ++x)
        for (int c = 0; c < 4; ++c) {
            uint16_t v;
            std::memcpy(&v, src + (x * 4 + c) * 2, 2);
            dst[x * 4 + (c + 3) % 4] = to8(static_cast<float>(v) * inv);
        }
}

// One row of float host pixels to 8 bits, reordered; the export's arithmetic (floats_to_8).
void argb32f_row(const unsigned char* src, unsigned char* dst, int width) {
    int x = 0;
#if defined(__SSE2__)
    const __m128 scale = _mm_set1_ps(scale8);
    auto convert = [&](const unsigned char* p) {
        return _mm_cvtps_epi32(
            _mm_min_ps(scale, _mm_mul_ps(_mm_loadu_ps(reinterpret_cast<const float*>(p)), scale)));
    };
    for (; x + 4 <= width; x += 4) {
        const unsigned char* s = src + x * 16;
        const __m128i lo = _mm_packs_epi32(convert(s), convert(s + 16));
        const __m128i hi = _mm_packs_epi32(convert(s + 32), convert(s + 48));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x * 4), argb_to_rgba(_mm_packus_epi16(lo, hi)));
    }
#endif
    for (; x < width; ++x)
        for (int c = 0; c < 4; ++c) {
            float v;
            std::memcpy(&v, src + (x * 4 + c) * 4, 4);
            dst[x * 4 + (c + 3) % 4] = to8(v);
        }
}

bool valid_size(_vec2<int> size) {
    return size.x > 0 && size.y > 0;
}

// Runs rows(begin, end) over bands of rows on the thread pool, one parallel loop. The workers claim
// the bands as they get to them rather than each taking a fixed share, so on a busy machine a
// worker that is scheduled late does not hold up the whole frame: the others take its rows.
template <typename Rows> void for_rows(int height, const Rows& rows) {
    thread_pool& pool = thread_pool::get_instance();
    constexpr int64_t bands_per_worker = 8;
    const int64_t band = std::max<int64_t>(1, height / (int64_t{pool.get_worker_count()} * bands_per_worker));
    const auto bands = static_cast<uint32_t>((height + band - 1) / band);
    std::atomic<int64_t> next{0};
    pool.enqueue(bands, [&](const thread_worker_data&) {
        for (;;) {
            const int64_t begin = next.fetch_add(band, std::memory_order_relaxed);
            if (begin >= height)
                return;
            rows(static_cast<int>(begin), static_cast<int>(std::min<int64_t>(height, begin + band)));
        }
    });
}

inline vec4 lerp(const vec4& a, const vec4& b, float t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t, a.w + (b.w - a.w) * t};
}

} // namespace

unsigned bytes_per_pixel(buffer_type type) {
    switch (type) {
    case buffer_type::rgba8:
        return 4;
    case buffer_type::rgba16:
        return 8;
    case buffer_type::rgba32f:
        return 16;
    }
    return 0;
}

bool convert_argb_to_rgba8(const unsigned char* source, _vec2<int> size, unsigned source_row_bytes,
                           buffer_type type, unsigned char* destination, unsigned destination_row_bytes) {
    const unsigned pixel_bytes = bytes_per_pixel(type);
    if (source == nullptr || destination == nullptr || !valid_size(size) || pixel_bytes == 0 ||
        uint64_t{source_row_bytes} < uint64_t{pixel_bytes} * static_cast<uint64_t>(size.x) ||
        uint64_t{destination_row_bytes} < uint64_t{4} * static_cast<uint64_t>(size.x))
        return false;
    void (*const row)(const unsigned char*, unsigned char*, int) = type == buffer_type::rgba8 ? argb8_row
                                                                   : type == buffer_type::rgba16
                                                                       ? argb16_row
                                                                       : argb32f_row;
    for_rows(size.y, [&](int begin, int end) {
        for (int y = begin; y < end; ++y)
            row(source + static_cast<size_t>(y) * source_row_bytes,
                destination + static_cast<size_t>(y) * destination_row_bytes, size.x);
    });
    return true;
}

pixel_buffer::pixel_buffer(_vec2<int> size) {
    if (!valid_size(size))
        return;
    try {
        pixels.assign(static_cast<size_t>(size.x) * static_cast<size_t>(size.y), vec4{});
        buffer_size = size;
    } catch (const std::exception&) { // too large: bad_alloc or length_error
        pixels.clear();
    }
}

pixel_buffer::pixel_buffer(const unsigned char* data, _vec2<int> size, unsigned row_bytes, buffer_type type)
    : pixel_buffer(data != nullptr && bytes_per_pixel(type) != 0 &&
                           static_cast<uint64_t>(row_bytes) >=
                               static_cast<uint64_t>(size.x) * bytes_per_pixel(type)
                       ? size
                       : _vec2<int>{}) {
    if (pixels.empty())
        return;
    const int width = buffer_size.x;
    float* out = reinterpret_cast<float*>(pixels.data());
    for_rows(buffer_size.y, [&](int begin, int end) {
        for (int y = begin; y < end; ++y) {
            const unsigned char* src = data + static_cast<size_t>(y) * row_bytes;
            float* dst = out + static_cast<size_t>(y) * width * 4;
            switch (type) {
            case buffer_type::rgba8:
                row_from_8(src, dst, width);
                break;
            case buffer_type::rgba16:
                row_from_16(src, dst, width);
                break;
            case buffer_type::rgba32f:
                std::memcpy(dst, src, static_cast<size_t>(width) * sizeof(vec4));
                break;
            }
        }
    });
}

void pixel_buffer::export_buffer(unsigned char* destination, _vec2<int> size, unsigned row_bytes,
                                 buffer_type type) const {
    export_buffer(destination, size, {0, 0}, row_bytes, type);
}

void pixel_buffer::export_buffer(unsigned char* destination, _vec2<int> size, _vec2<int> origin,
                                 unsigned row_bytes, buffer_type type) const {
    if (pixels.empty())
        return;
    NIMBIT_ASSERT(origin.x >= 0 && origin.y >= 0);
    const unsigned pixel_bytes = bytes_per_pixel(type);
    if (destination == nullptr || !valid_size(size) || pixel_bytes == 0)
        return;
    // 64-bit sums: a huge request must not wrap around into range.
    if (int64_t{size.x} + origin.x > buffer_size.x || int64_t{size.y} + origin.y > buffer_size.y)
        return;
    if (uint64_t{row_bytes} < uint64_t{pixel_bytes} * static_cast<uint64_t>(size.x))
        return;

    const float* source = reinterpret_cast<const float*>(pixels.data());
    const size_t source_pitch = static_cast<size_t>(buffer_size.x) * 4;
    if (type == buffer_type::rgba32f && size == buffer_size && origin == _vec2<int>{0, 0} &&
        row_bytes == static_cast<size_t>(size.x) * sizeof(vec4)) {
        std::memcpy(destination, source, size_bytes());
        return;
    }
    const int width = size.x;
    // Frames larger than the caches are written around them when the rows allow aligned stores.
    const bool stream = type == buffer_type::rgba8 &&
                        uint64_t{row_bytes} * static_cast<uint64_t>(size.y) >= (8u << 20) &&
                        reinterpret_cast<uintptr_t>(destination) % 16 == 0 && row_bytes % 16 == 0;
    for_rows(size.y, [&](int begin, int end) {
        for (int y = begin; y < end; ++y) {
            const float* src =
                source + static_cast<size_t>(y + origin.y) * source_pitch + size_t(origin.x) * 4;
            unsigned char* dst = destination + static_cast<size_t>(y) * row_bytes;
            switch (type) {
            case buffer_type::rgba8:
                if (stream)
                    floats_to_8<true>(src, dst, width);
                else
                    floats_to_8<false>(src, dst, width);
                break;
            case buffer_type::rgba16:
                floats_to_16(src, dst, width);
                break;
            case buffer_type::rgba32f:
                std::memcpy(dst, src, static_cast<size_t>(width) * sizeof(vec4));
                break;
            }
        }
#if defined(__SSE2__)
        if (stream)
            _mm_sfence(); // streamed stores are ordered before the band is reported done
#endif
    });
}

vec4& pixel_buffer::operator[](size_t index) {
    NIMBIT_ASSERT(index < pixels.size());
    return pixels[index];
}

const vec4& pixel_buffer::operator[](size_t index) const {
    NIMBIT_ASSERT(index < pixels.size());
    return pixels[index];
}

vec4 pixel_buffer::sample_pixel(_vec2<float> position) const {
    if (pixels.empty())
        return {};
    // Written so that NaN lands on 0 before any conversion to an integer.
    auto clamp = [](float v, int last) {
        return v > 0.0f ? (v < static_cast<float>(last) ? v : static_cast<float>(last)) : 0.0f;
    };
    const float x = clamp(position.x, buffer_size.x - 1);
    const float y = clamp(position.y, buffer_size.y - 1);
    const int x0 = static_cast<int>(x);
    const int y0 = static_cast<int>(y);
    const int x1 = std::min(x0 + 1, buffer_size.x - 1);
    const int y1 = std::min(y0 + 1, buffer_size.y - 1);
    const float tx = x - static_cast<float>(x0);
    const float ty = y - static_cast<float>(y0);
    auto at = [&](int px, int py) -> const vec4& {
        return pixels[static_cast<size_t>(py) * buffer_size.x + px];
    };
    return lerp(lerp(at(x0, y0), at(x1, y0), tx), lerp(at(x0, y1), at(x1, y1), tx), ty);
}

pixel pixel::to_hsl(bool hue_in_degrees) const {
    const float r = x, g = y, b = z;
    const float high = std::max({r, g, b});
    const float low = std::min({r, g, b});
    const float lightness = (high + low) * 0.5f;
    float hue = 0.0f, saturation = 0.0f;
    const float range = high - low;
    if (range > 0.0f) {
        saturation = lightness > 0.5f ? range / (2.0f - high - low) : range / (high + low);
        if (high == r)
            hue = (g - b) / range + (g < b ? 6.0f : 0.0f);
        else if (high == g)
            hue = (b - r) / range + 2.0f;
        else
            hue = (r - g) / range + 4.0f;
        hue /= 6.0f;
    }
    return {hue_in_degrees ? hue * 360.0f : hue, saturation, lightness, w};
}

pixel pixel::to_rgb() const {
    const float hue = x, saturation = y, lightness = z;
    if (saturation <= 0.0f)
        return {lightness, lightness, lightness, w};
    const float q =
        lightness < 0.5f ? lightness * (1.0f + saturation) : lightness + saturation - lightness * saturation;
    const float p = 2.0f * lightness - q;
    auto channel = [&](float t) {
        t -= std::floor(t);
        if (t < 1.0f / 6.0f)
            return p + (q - p) * 6.0f * t;
        if (t < 0.5f)
            return q;
        if (t < 2.0f / 3.0f)
            return p + (q - p) * (2.0f / 3.0f - t) * 6.0f;
        return p;
    };
    return {channel(hue + 1.0f / 3.0f), channel(hue), channel(hue - 1.0f / 3.0f), w};
}

pixel pixel::rgb_to_yuv() const {
    const float luma = 0.299f * x + 0.587f * y + 0.114f * z;
    return {luma, 0.492f * (z - luma), 0.877f * (x - luma), w};
}

pixel pixel::yuv_to_rgb() const {
    const float luma = x;
    const float r = luma + z / 0.877f;
    const float b = luma + y / 0.492f;
    const float g = (luma - 0.299f * r - 0.114f * b) / 0.587f;
    return {r, g, b, w};
}

vec4 pixel::shuffle_channels(const vec4& c, order to) {
    switch (to) {
    case order::rgba:
        return c;
    case order::bgra:
        return {c.z, c.y, c.x, c.w};
    case order::argb:
        return {c.w, c.x, c.y, c.z};
    case order::abgr:
        return {c.w, c.z, c.y, c.x};
    }
    return c;
}

} // namespace nimbit::graphics
