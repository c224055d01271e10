#pragma once

#include "nimbit/graphics/rgba_image.h"
#include "nimbit/ui/native_bitmap.h"
#include "nimbit/ui/win32/win32_util.h"

#include <memory>
#include <vector>

// The Win32 bitmap. The pixels live in memory as straight RGBA (what the toolkit reads and writes),
// decoded and encoded by the foundation's codecs; a premultiplied BGRA copy wrapped in a GDI+ bitmap
// is made on demand for drawing and dropped whenever the pixels change.

namespace nimbit::ui::win32 {

class win32_bitmap final : public native_bitmap {
public:
    win32_bitmap() = default;
    explicit win32_bitmap(graphics::rgba_image image) : image(std::move(image)) {}
    ~win32_bitmap() override;
    win32_bitmap(const win32_bitmap&) = delete;
    win32_bitmap& operator=(const win32_bitmap&) = delete;

    bool create(_vec2<int> size, bool alpha) override;
    std::unique_ptr<native_bitmap> clone() const override;
    _vec2<int> get_size() const override { return image.size; }
    bool has_alpha() const override { return image.alpha; }
    bool decode(const unsigned char* bytes, size_t size) override;
    unsigned char* lock_pixels(unsigned& pitch) override;
    void unlock_pixels() override { drop_drawable(); }
    const unsigned char* read_pixels(unsigned& pitch) const override;
    bool resize(_vec2<int> size, bool resample) override;

    // The image for drawing, owned by the bitmap; null for an empty image.
    Gdiplus::Bitmap* drawable() const;

private:
    void drop_drawable() const;

    graphics::rgba_image image;
    mutable std::vector<unsigned char> premultiplied; // BGRA, the drawable's memory
    mutable std::unique_ptr<Gdiplus::Bitmap> cached;
};

} // namespace nimbit::ui::win32
