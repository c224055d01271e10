#pragma once

#include "nimbit/graphics/vec.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace nimbit {
class file_path;
namespace graphics {
struct rgba_image;
}
} // namespace nimbit

namespace nimbit::ui {

class native_bitmap;
struct image_stream;

enum class image_format : int { png = 1, jpg = 2 };
enum class image_alpha : int { no_alpha = 0, alpha = 1 };

// The pixels of a locked bitmap: 32 bits per pixel, bytes red, green, blue, alpha.
struct bitmap_data {
    unsigned bits_per_pixel = 32;
    unsigned pitch = 0;
    size_t byte_count = 0;
    unsigned char* bits = nullptr;
    _vec2<int> size;
};

// An in-memory image over a platform bitmap. Loading reads PNG or JPG; a damaged or unreadable
// source returns false and leaves the bitmap as it was. The scale given at load time says how many
// pixels make one point: get_size reports points, locking reports pixels.
class bitmap {
public:
    bitmap();
    ~bitmap();
    bitmap(bitmap&&) noexcept;
    bitmap& operator=(bitmap&&) noexcept;
    bitmap(const bitmap&) = delete;
    bitmap& operator=(const bitmap&) = delete;

    bool create(_vec2<int> size, image_alpha alpha);
    bitmap clone() const;

    _vec2<int> get_size() const;
    float get_scale() const { return scale; }
    bool is_loaded() const { return loaded; }
    bool is_locked() const { return locked; }

    bool load_image(const file_path& path, float scale = 1.0f);
    bool load_image(const unsigned char* bytes, unsigned long size, float scale = 1.0f);
    bool load_image(const image_stream& stream);
    // A copy of decoded pixels (made on any thread; the bitmap itself on the UI thread). False, and
    // the bitmap unchanged, for an empty image.
    bool load_pixels(const graphics::rgba_image& image);
    // False, and the bitmap unchanged, when the clipboard holds no image.
    bool load_image_from_clipboard();
    // Puts a copy of the image on the clipboard.
    bool copy_to_clipboard() const;

    // Written atomically (a temporary file beside the target, then renamed). False for an unknown
    // format, an empty bitmap or a write failure; nothing is left behind then.
    bool save_image(const file_path& path, image_format format) const;
    // The encoded bytes; empty for an unknown format or an empty bitmap.
    std::vector<unsigned char> save_image_stream(image_format format) const;

    bitmap_data lock();
    void unlock(const bitmap_data& data);

    // Resizes the pixels: resample scales the picture, otherwise it is cut or padded.
    bool set_size(_vec2<int> size, bool resample);
    void unload();

    // The platform image, null while nothing is loaded.
    const native_bitmap* get_native() const { return native.get(); }

private:
    bool adopt(std::unique_ptr<native_bitmap> image, float scale);

    std::unique_ptr<native_bitmap> native;
    _vec2<int> size;
    bool loaded = false;
    bool locked = false;
    float scale = 1.0f;
};

} // namespace nimbit::ui
