#pragma once

#include "nimbit/graphics/rgba_image.h"
#include "nimbit/graphics/vec.h"

#include <cstddef>
#include <cstdint>

// PNG and JPG decoding into plain pixels. No UI backend is involved, so any thread may decode.

namespace nimbit::graphics {

// True when a width and height are positive and their product stays within the cap.
bool size_allowed(long long width, long long height, unsigned long long max_pixels);

// Decoders fail (false, `out` emptied) on damaged or truncated data and on images above
// max_pixels; they never read outside the given bytes. The pixel memory `out` holds is reused: a
// worker decoding one large picture after another into the same image skips fresh allocations.
bool decode_png(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out);
bool decode_jpeg(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out);
// A JPG decoded straight at a reduced size (eighths of the full one): the smallest that is still at
// least min_width wide, or the full size. Much cheaper than decoding whole when the caller shrinks
// the picture anyway. The cap applies to the full size, which goes to full_size when given.
bool decode_jpeg_reduced(const unsigned char* bytes, size_t size, unsigned long long max_pixels,
                         int min_width, rgba_image& out, _vec2<int>* full_size = nullptr);
// By signature; false for anything that is neither PNG nor JPG. min_width > 0 lets a JPG come out
// reduced as with decode_jpeg_reduced; full_size gets the picture's own size either way.
bool decode_image(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out,
                  int min_width = 0, _vec2<int>* full_size = nullptr);

// Checks of the file structure made before any pixel is decoded, shared by the decoders of every
// platform.
namespace detail {
// An end chunk near the end, and no more raw pixel data claimed than the size can inflate to.
bool png_structure_plausible(const unsigned char* bytes, size_t size);
// An end marker near the end.
bool jpeg_has_end(const unsigned char* bytes, size_t size);
} // namespace detail

} // namespace nimbit::graphics
