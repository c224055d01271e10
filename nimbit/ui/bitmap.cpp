#include "nimbit/ui/bitmap.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/write_file_atomic.h"
#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/graphics/rgba_image.h"
#include "nimbit/ui/image_stream.h"
#include "nimbit/ui/native_bitmap.h"
#include "nimbit/ui/native_clipboard.h"
#include "nimbit/utils/assert.h"

#include <cstring>

namespace nimbit::ui {

bitmap::bitmap() = default;
bitmap::~bitmap() = default;
bitmap::bitmap(bitmap&&) noexcept = default;
bitmap& bitmap::operator=(bitmap&&) noexcept = default;

bool bitmap::adopt(std::unique_ptr<native_bitmap> image, float new_scale) {
    native = std::move(image);
    size = native->get_size();
    scale = new_scale > 0 ? new_scale : 1.0f;
    loaded = true;
    locked = false;
    return true;
}

bool bitmap::create(_vec2<int> new_size, image_alpha alpha) {
    auto image = create_native_bitmap();
    if (!image || !image->create(new_size, alpha == image_alpha::alpha))
        return false;
    return adopt(std::move(image), 1.0f);
}

bitmap bitmap::clone() const {
    bitmap copy;
    if (loaded)
        copy.adopt(native->clone(), scale);
    return copy;
}

_vec2<int> bitmap::get_size() const {
    if (scale == 1.0f)
        return size;
    return {static_cast<int>(size.x / scale), static_cast<int>(size.y / scale)};
}

bool bitmap::load_image(const file_path& path, float load_scale) {
    std::vector<unsigned char> bytes;
    return read_file(path, bytes) && load_image(bytes.data(), bytes.size(), load_scale);
}

bool bitmap::load_image(const unsigned char* bytes, unsigned long byte_count, float load_scale) {
    if (!bytes || byte_count == 0)
        return false;
    auto image = create_native_bitmap();
    if (!image || !image->decode(bytes, byte_count))
        return false;
    return adopt(std::move(image), load_scale);
}

bool bitmap::load_pixels(const graphics::rgba_image& image) {
    if (image.empty() || image.pixels.size() < size_t(image.pitch()) * size_t(image.size.y))
        return false;
    bitmap made;
    if (!made.create(image.size, image.alpha ? image_alpha::alpha : image_alpha::no_alpha))
        return false;
    const bitmap_data data = made.lock();
    if (data.bits) {
        for (int y = 0; y < image.size.y; ++y)
            std::memcpy(data.bits + size_t(y) * data.pitch, image.pixels.data() + size_t(y) * image.pitch(),
                        image.pitch());
    }
    made.unlock(data);
    if (!data.bits)
        return false;
    *this = std::move(made);
    return true;
}

bool bitmap::load_image(const image_stream& stream) {
    return load_image(stream.data, stream.size, stream.scale());
}

bool bitmap::load_image_from_clipboard() {
    auto image = get_native_clipboard().get_image();
    if (!image || image->get_size().x <= 0 || image->get_size().y <= 0)
        return false;
    return adopt(std::move(image), 1.0f);
}

bool bitmap::copy_to_clipboard() const {
    return loaded && get_native_clipboard().set_image(*native);
}

std::vector<unsigned char> bitmap::save_image_stream(image_format format) const {
    if (!loaded || (format != image_format::png && format != image_format::jpg))
        return {};
    // Encoded here rather than by the platform, so that every platform saves as fast; always with
    // alpha, since resizing may have padded the picture with transparent pixels.
    unsigned pitch = 0;
    const unsigned char* pixels = native->read_pixels(pitch);
    const _vec2<int> pixel_size = native->get_size();
    const graphics::rgba_view view{pixels, pixel_size.x, pixel_size.y, pitch};
    return format == image_format::png ? graphics::encode_png(view) : graphics::encode_jpg(view);
}

bool bitmap::save_image(const file_path& path, image_format format) const {
    const std::vector<unsigned char> bytes = save_image_stream(format);
    return !bytes.empty() && write_file_atomic(path, bytes.data(), bytes.size());
}

bitmap_data bitmap::lock() {
    const bool isLocked = locked;
    NIMBIT_ASSERT(isLocked == false);
    const bool isLoaded = loaded;
    NIMBIT_ASSERT(isLoaded);
    locked = true;
    bitmap_data data;
    data.bits = native->lock_pixels(data.pitch);
    data.size = size;
    data.byte_count = static_cast<size_t>(data.pitch) * static_cast<size_t>(size.y);
    return data;
}

void bitmap::unlock(const bitmap_data& data) {
    const bool isLocked = locked;
    NIMBIT_ASSERT(isLocked == true);
    NIMBIT_ASSERT(data.bits == nullptr || data.size == size);
    native->unlock_pixels();
    locked = false;
}

bool bitmap::set_size(_vec2<int> new_size, bool resample) {
    if (!loaded || locked || !native->resize(new_size, resample))
        return false;
    size = native->get_size();
    return true;
}

void bitmap::unload() {
    const bool isLocked = locked;
    NIMBIT_ASSERT(isLocked == false);
    native.reset();
    size = {};
    loaded = false;
    scale = 1.0f;
}

} // namespace nimbit::ui
