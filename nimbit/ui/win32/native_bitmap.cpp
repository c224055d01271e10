#include "nimbit/ui/win32/native_bitmap.h"

#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/image_resample.h"

#include <algorithm>

namespace nimbit::ui {

std::unique_ptr<native_bitmap> create_native_bitmap() {
    return std::make_unique<win32::win32_bitmap>();
}

namespace win32 {

win32_bitmap::~win32_bitmap() = default;

void win32_bitmap::drop_drawable() const {
    cached.reset();
    premultiplied.clear();
    premultiplied.shrink_to_fit();
}

bool win32_bitmap::create(_vec2<int> size, bool alpha) {
    if (!graphics::size_allowed(size.x, size.y, max_pixels))
        return false;
    drop_drawable();
    image.size = size;
    image.alpha = alpha;
    image.pixels.assign(size_t(size.x) * size_t(size.y) * 4, 0);
    if (!alpha)
        for (size_t i = 3; i < image.pixels.size(); i += 4)
            image.pixels[i] = 255;
    return true;
}

std::unique_ptr<native_bitmap> win32_bitmap::clone() const {
    return std::make_unique<win32_bitmap>(image);
}

bool win32_bitmap::decode(const unsigned char* bytes, size_t size) {
    graphics::rgba_image decoded;
    if (!bytes || !graphics::decode_image(bytes, size, max_pixels, decoded))
        return false;
    drop_drawable();
    image = std::move(decoded);
    return true;
}

unsigned char* win32_bitmap::lock_pixels(unsigned& pitch) {
    drop_drawable();
    pitch = image.pitch();
    return image.pixels.empty() ? nullptr : image.pixels.data();
}

const unsigned char* win32_bitmap::read_pixels(unsigned& pitch) const {
    pitch = image.pitch();
    return image.pixels.empty() ? nullptr : image.pixels.data();
}

bool win32_bitmap::resize(_vec2<int> size, bool resample) {
    if (!graphics::size_allowed(size.x, size.y, max_pixels))
        return false;
    if (size == image.size)
        return true;
    drop_drawable();
    if (resample && !image.empty()) {
        image = graphics::resample(image, size);
        return true;
    }
    image = graphics::recanvas(image, size);
    return true;
}

Gdiplus::Bitmap* win32_bitmap::drawable() const {
    if (cached || image.empty() || !start_gdiplus())
        return cached.get();
    const size_t count = size_t(image.size.x) * size_t(image.size.y);
    premultiplied.resize(count * 4);
    const unsigned char* in = image.pixels.data();
    unsigned char* out = premultiplied.data();
    for (size_t i = 0; i < count; ++i, in += 4, out += 4) {
        const unsigned a = in[3];
        out[0] = static_cast<unsigned char>((in[2] * a + 127) / 255);
        out[1] = static_cast<unsigned char>((in[1] * a + 127) / 255);
        out[2] = static_cast<unsigned char>((in[0] * a + 127) / 255);
        out[3] = static_cast<unsigned char>(a);
    }
    cached = std::make_unique<Gdiplus::Bitmap>(image.size.x, image.size.y, image.size.x * 4,
                                               PixelFormat32bppPARGB, premultiplied.data());
    if (cached->GetLastStatus() != Gdiplus::Ok)
        drop_drawable();
    return cached.get();
}

} // namespace win32
} // namespace nimbit::ui
