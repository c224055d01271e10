#pragma once

#include "nimbit/ui/native_bitmap.h"

#include <vector>

// The AppKit bitmap. The pixels live in memory as straight (not premultiplied) RGBA, which is what
// the toolkit reads and writes; NSBitmapImageRep decodes them and makes the clipboard's TIFF, and a
// premultiplied NSBitmapImageRep copy is made on demand for drawing (and dropped whenever the pixels change).

#ifdef __OBJC__
@class NSBitmapImageRep;
#else
struct objc_object;
using NSBitmapImageRep = objc_object;
#endif

namespace nimbit::ui::cocoa {

class cocoa_bitmap final : public native_bitmap {
public:
    cocoa_bitmap() = default;
    ~cocoa_bitmap() override;
    cocoa_bitmap(const cocoa_bitmap&) = delete;
    cocoa_bitmap& operator=(const cocoa_bitmap&) = delete;

    bool create(_vec2<int> size, bool alpha) override;
    std::unique_ptr<native_bitmap> clone() const override;
    _vec2<int> get_size() const override { return size; }
    bool has_alpha() const override { return alpha; }
    bool decode(const unsigned char* bytes, size_t length) override;
    unsigned char* lock_pixels(unsigned& pitch) override;
    void unlock_pixels() override { drop_drawable(); }
    const unsigned char* read_pixels(unsigned& pitch) const override;
    bool resize(_vec2<int> size, bool resample) override;

    // Any image format AppKit reads (the clipboard carries TIFF); false and unchanged on failure.
    bool decode_any(const unsigned char* bytes, size_t length);
    // TIFF, the clipboard's image format; empty for an empty image.
    std::vector<unsigned char> encode_tiff() const;
    // The image for drawing: premultiplied, owned by the bitmap; nil for an empty image.
    NSBitmapImageRep* drawable() const;

private:
    void drop_drawable() const;
    bool adopt_rep(NSBitmapImageRep* rep);

    _vec2<int> size;
    bool alpha = true;
    std::vector<unsigned char> pixels; // size.x * 4 bytes a row
    mutable NSBitmapImageRep* cached = nullptr;
};

} // namespace nimbit::ui::cocoa
