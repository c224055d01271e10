#pragma once

#include "nimbit/ui/native_bitmap.h"
#include "nimbit/ui/offscreen/image_codecs.h"

namespace nimbit::ui {

// Real pixels in memory, PNG through libpng and JPG through libjpeg.
class offscreen_bitmap final : public native_bitmap {
public:
    offscreen_bitmap() = default;
    explicit offscreen_bitmap(offscreen::rgba_image image) : image(std::move(image)) {}

    bool create(_vec2<int> size, bool alpha) override;
    std::unique_ptr<native_bitmap> clone() const override;
    _vec2<int> get_size() const override { return image.size; }
    bool has_alpha() const override { return image.alpha; }
    bool decode(const unsigned char* bytes, size_t size) override;
    unsigned char* lock_pixels(unsigned& pitch) override;
    void unlock_pixels() override {}
    const unsigned char* read_pixels(unsigned& pitch) const override;
    bool resize(_vec2<int> size, bool resample) override;

    const offscreen::rgba_image& get_image() const { return image; }

private:
    offscreen::rgba_image image;
};

} // namespace nimbit::ui
