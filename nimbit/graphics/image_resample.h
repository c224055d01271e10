#pragma once

#include "nimbit/graphics/rgba_image.h"
#include "nimbit/graphics/vec.h"

namespace nimbit::graphics {

// Scales the picture to the new size in one pass over its rows: an area average along an axis that
// shrinks, linear interpolation along one that grows. Colours are weighted by alpha so that
// transparent pixels do not bleed their colour into the result. Empty for an empty picture or size.
rgba_image resample(const rgba_image& image, _vec2<int> size);

// The picture at the top-left corner of a new size, cut or padded with transparent pixels. Empty for
// an empty size.
rgba_image recanvas(const rgba_image& image, _vec2<int> size);

} // namespace nimbit::graphics
