#pragma once

#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/image_resample.h"
#include "nimbit/graphics/rgba_image.h"
#include "nimbit/graphics/vec.h"

// The offscreen backend's pixel store and the codecs and filters that work on it. Internal to the
// backend (and its tests). The decoders and the filters are the foundation's.

namespace nimbit::ui::offscreen {

using graphics::decode_image;
using graphics::decode_jpeg;
using graphics::decode_png;
using graphics::recanvas;
using graphics::resample;
using graphics::rgba_image;
using graphics::size_allowed;

} // namespace nimbit::ui::offscreen
