#pragma once

#include <cstdint>

namespace nimbit::ui {

// An image compiled into the program: PNG bytes that live for the whole process, the number of
// frames the drawing control expects side by side in the picture (4 for the screenshot icon, 3 for
// toolbar icons, 2 for the check box, 1 for a single image) and the scale the picture was drawn at
// (handed to bitmap::load_image). Sixteen bytes so that a theme value can hold it directly; the
// scale is kept in hundredths.
struct image_stream {
    const unsigned char* data = nullptr;
    uint32_t size = 0;
    uint16_t frames = 1;
    uint16_t scale_percent = 100;

    constexpr image_stream() = default;
    constexpr image_stream(const unsigned char* data, uint32_t size, int frames, float scale)
        : data(data), size(size), frames(static_cast<uint16_t>(frames)),
          scale_percent(static_cast<uint16_t>(scale * 100.0f + 0.5f)) {}

    constexpr float scale() const { return static_cast<float>(scale_percent) / 100.0f; }
    constexpr bool empty() const { return data == nullptr || size == 0; }

    friend constexpr bool operator==(const image_stream&, const image_stream&) = default;
};

} // namespace nimbit::ui
