// Damaged PNG and JPG bytes: decoding (whole or reduced) must fail cleanly or give an image that the
// rest of the pipeline (resampling, encoding, decoding again) handles.
#include "fuzz/fuzz_support.h"
#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/image_resample.h"
#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"

using namespace nimbit;
using namespace nimbit::graphics;

FUZZ_TARGET() {
    // A smaller cap than the bitmap's keeps each run fast; the cap logic itself is the same.
    constexpr unsigned long long cap = 1u << 20;
    rgba_image image;
    if (!decode_image(in.data, in.size, cap, image))
        return;
    check(image.size.x > 0 && image.size.y > 0 &&
          image.pixels.size() == size_t(image.size.x) * size_t(image.size.y) * 4);
    if (size_t(image.size.x) * size_t(image.size.y) > 256 * 256)
        return;
    rgba_image reduced;
    if (decode_image(in.data, in.size, cap, reduced, image.size.x / 3 + 1))
        check(reduced.size.x >= image.size.x / 3 + 1 && reduced.size.x <= image.size.x);
    const rgba_image smaller = resample(image, {image.size.x / 2 + 1, image.size.y / 3 + 1});
    const rgba_image larger = resample(smaller, {smaller.size.x + 3, smaller.size.y * 2});
    const auto view_of = [](const rgba_image& i) {
        return rgba_view{i.pixels.data(), i.size.x, i.size.y, i.pitch()};
    };
    rgba_image again;
    const auto png = graphics::encode_png(view_of(larger));
    check(decode_png(png.data(), png.size(), cap, again) && again.size == larger.size &&
          again.pixels == larger.pixels);
    const auto jpg = graphics::encode_jpg(view_of(image));
    check(decode_jpeg(jpg.data(), jpg.size(), cap, again) && again.size == image.size);
}
