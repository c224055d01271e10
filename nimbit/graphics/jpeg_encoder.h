#pragma once

#include "nimbit/graphics/png_encoder.h"

#include <vector>

namespace nimbit::graphics {

// A baseline JPG at the highest quality with full colour resolution (no chroma subsampling); alpha
// is dropped. Empty for an empty image, one beyond the format's 65500-pixel sides, or on an encoder
// error.
std::vector<unsigned char> encode_jpg(const rgba_view& image);

} // namespace nimbit::graphics
