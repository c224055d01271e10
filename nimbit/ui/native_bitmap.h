#pragma once

#include "nimbit/graphics/vec.h"

#include <cstddef>
#include <memory>
#include <vector>

// The platform side of images. A native bitmap holds 32-bit pixels, four 8-bit channels in the order
// red, green, blue, alpha, not premultiplied, rows top to bottom. It decodes PNG and JPG (recognised
// by their signatures); saving encodes the pixels with the shared encoders. Damaged input fails cleanly:
// decode returns false and the bitmap stays as it was. Images above max_pixels are refused so that a tiny
// file cannot demand gigabytes.

namespace nimbit::ui {

class native_bitmap {
public:
    static constexpr unsigned long long max_pixels = 16384ull * 16384ull;

    virtual ~native_bitmap() = default;

    // A fully transparent (or opaque black without alpha) image; false for a size out of range.
    virtual bool create(_vec2<int> size, bool alpha) = 0;
    virtual std::unique_ptr<native_bitmap> clone() const = 0;
    virtual _vec2<int> get_size() const = 0;
    virtual bool has_alpha() const = 0;

    virtual bool decode(const unsigned char* bytes, size_t size) = 0;

    // The pixels for reading and writing, size.y rows of `pitch` bytes each; null for an empty
    // image. They stay valid until unlock_pixels, which makes the changes part of the image.
    virtual unsigned char* lock_pixels(unsigned& pitch) = 0;
    virtual void unlock_pixels() = 0;
    // Read-only view for drawing and encoding; null for an empty image.
    virtual const unsigned char* read_pixels(unsigned& pitch) const = 0;

    // Changes the size: resample scales the picture to it, otherwise the picture keeps its pixels
    // at the top-left corner, cut or padded with transparent pixels.
    virtual bool resize(_vec2<int> size, bool resample) = 0;
};

// Defined by the backend the program links with.
std::unique_ptr<native_bitmap> create_native_bitmap();

} // namespace nimbit::ui
