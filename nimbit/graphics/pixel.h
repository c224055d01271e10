#pragma once

#include "nimbit/graphics/vec.h"

#include <cstddef>
#include <vector>

namespace nimbit::graphics {

// The layouts pixel arrays are exchanged in, named by their bytes per channel. Every layout has four
// channels per pixel; the channel order is the caller's (host frames come as alpha, red, green,
// blue) and conversions keep it.
enum class buffer_type : unsigned {
    rgba8 = 1,   // 8-bit channels, 0..255, 4 bytes per pixel
    rgba16 = 2,  // 16-bit native-endian channels on the host's scale 0..32768, 8 bytes per pixel
    rgba32f = 4, // 32-bit floats, 0..1, 16 bytes per pixel
};

// Bytes per pixel of a layout; 0 for a value that is none of the above.
unsigned bytes_per_pixel(buffer_type type);

// Converts size.x by size.y pixels of a host frame (channels alpha, red, green, blue in layout type,
// rows source_row_bytes apart) to 8-bit red, green, blue, alpha at destination, rows
// destination_row_bytes apart: one pass, no intermediate copy, split by rows over the thread pool.
// The values are those of a pixel_buffer export. Returns false, writing nothing, for null pointers, a
// size that is not positive, rows shorter than a row of pixels or an unknown layout.
bool convert_argb_to_rgba8(const unsigned char* source, _vec2<int> size, unsigned source_row_bytes,
                           buffer_type type, unsigned char* destination, unsigned destination_row_bytes);

// A colour (four channels in 0..1) with conversions between colour models. Alpha (w) passes
// through every conversion unchanged.
struct pixel : vec4 {
    enum class order { rgba, bgra, argb, abgr };

    pixel() = default;
    pixel(const vec4& v) : vec4(v) {}
    pixel(float r, float g, float b, float a) : vec4{r, g, b, a} {}

    // RGB to hue, saturation, lightness; hue in degrees (0..360) when hue_in_degrees, else 0..1.
    pixel to_hsl(bool hue_in_degrees) const;
    // Hue (0..1), saturation, lightness back to RGB.
    pixel to_rgb() const;
    // RGB to Y (0..1), U (about ±0.436) and V (about ±0.615), BT.601 weights.
    pixel rgb_to_yuv() const;
    pixel yuv_to_rgb() const;
    // The channels of an RGBA colour rearranged into the given order.
    static vec4 shuffle_channels(const vec4& rgba, order to);
};

// A raw image held as four floats per pixel, row after row without padding. It is filled from
// and exported to the layouts above; conversions are split by rows over the process-wide thread
// pool and return when every row is done.
class pixel_buffer {
public:
    pixel_buffer() = default;
    // A buffer of the given size, every channel 0. A size that is not positive, or too large to
    // allocate, gives an empty buffer.
    explicit pixel_buffer(_vec2<int> size);
    // Converts size.x by size.y pixels of the given layout, rows row_bytes apart, from data. Bad
    // arguments (null data, rows shorter than a row of pixels, an unknown layout) give an empty buffer.
    pixel_buffer(const unsigned char* data, _vec2<int> size, unsigned row_bytes, buffer_type type);

    // Writes the size.x by size.y pixels at origin in the requested layout to destination, rows
    // row_bytes apart. Nothing is written for an empty buffer, a region that does not lie inside
    // the buffer, a row pitch shorter than a row, or an unknown layout. A negative origin is a
    // programming error.
    void export_buffer(unsigned char* destination, _vec2<int> size, unsigned row_bytes,
                       buffer_type type) const;
    void export_buffer(unsigned char* destination, _vec2<int> size, _vec2<int> origin, unsigned row_bytes,
                       buffer_type type) const;

    // Pixels by index, row-major. The index must be below size_pixels().
    vec4& operator[](size_t index);
    const vec4& operator[](size_t index) const;
    size_t size_pixels() const { return pixels.size(); }
    size_t size_bytes() const { return pixels.size() * sizeof(vec4); }
    _vec2<int> get_size() const { return buffer_size; }
    bool empty() const { return pixels.empty(); }
    const vec4* data() const { return pixels.data(); }
    vec4* data() { return pixels.data(); }

    // The colour at a position in pixel units (pixel (i, j) has its centre at (i, j)), blended
    // bilinearly from the four nearest pixels; positions outside take the nearest edge. An empty
    // buffer gives transparent black.
    vec4 sample_pixel(_vec2<float> position) const;

private:
    _vec2<int> buffer_size;
    std::vector<vec4> pixels;
};

} // namespace nimbit::graphics
