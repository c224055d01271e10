#pragma once

#include "nimbit/graphics/rgba_image.h"
#include "nimbit/graphics/vec.h"

#include <cstddef>
#include <vector>

// The offscreen backend's pixel store and the codecs and filters that work on it. Internal to the
// backend (and its tests and fuzz target).

namespace nimbit::ui::offscreen {

using graphics::rgba_image;

// True when a width and height are positive and their product stays within the cap.
bool size_allowed(long long width, long long height, unsigned long long max_pixels);

// Decoders fail (false, `out` untouched) on damaged or truncated data and on images above
// max_pixels; they never read outside the given bytes.
bool decode_png(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out);
bool decode_jpeg(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out);
// By signature; false for anything that is neither PNG nor JPG.
bool decode_image(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out);

// Scales the picture to the new size: an area average along an axis that shrinks, linear
// interpolation along one that grows. Colours are weighted by alpha so that transparent pixels do
// not bleed their colour into the result.
rgba_image resample(const rgba_image& image, _vec2<int> size);
// The picture at the top-left corner of a new size, cut or padded with transparent pixels.
rgba_image recanvas(const rgba_image& image, _vec2<int> size);

} // namespace nimbit::ui::offscreen
