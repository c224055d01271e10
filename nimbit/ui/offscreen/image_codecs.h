#pragma once

#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/image_resample.h"
#include "nimbit/graphics/rgba_image.h"
#include "nimbit/graphics/vec.h"

// The offscreen backend's pixel store and the codecs and filters that work on it. Internal to the
// backend (and its tests). The decoders and the scaler are the foundation's.

namespace nimbit::ui::offscreen {

using graphics::decode_image;
using graphics::decode_jpeg;
using graphics::decode_png;
using graphics::resample;
using graphics::rgba_image;
using graphics::size_allowed;

// The picture at the top-left corner of a new size, cut or padded with transparent pixels.
rgba_image recanvas(const rgba_image& image, _vec2<int> size);

} // namespace nimbit::ui::offscreen
