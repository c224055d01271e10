#include "nimbit/ui/offscreen/offscreen_clipboard.h"

#include "nimbit/ui/offscreen/offscreen_bitmap.h"

#include <algorithm>

namespace nimbit::ui {

offscreen_clipboard& get_offscreen_clipboard() {
    static offscreen_clipboard instance;
    return instance;
}

native_clipboard& get_native_clipboard() {
    return get_offscreen_clipboard();
}

bool offscreen_clipboard::set_text(std::string_view utf8) {
    text = std::string(utf8);
    image.reset();
    ++changes;
    return true;
}

std::string offscreen_clipboard::get_text() const {
    return text.value_or(std::string());
}

// Any backend's bitmap can be copied: the pixels are read through the common interface.
bool offscreen_clipboard::set_image(const native_bitmap& source) {
    unsigned pitch = 0;
    const unsigned char* pixels = source.read_pixels(pitch);
    const _vec2<int> size = source.get_size();
    if (!pixels || size.x <= 0 || size.y <= 0 || pitch < unsigned(size.x) * 4u)
        return false;
    offscreen::rgba_image copy;
    copy.size = size;
    copy.alpha = source.has_alpha();
    copy.pixels.resize(size_t(size.x) * size_t(size.y) * 4);
    for (int y = 0; y < size.y; ++y)
        std::copy_n(pixels + size_t(y) * pitch, size_t(size.x) * 4, &copy.pixels[size_t(y) * copy.pitch()]);
    image = std::move(copy);
    text.reset();
    ++changes;
    return true;
}

std::unique_ptr<native_bitmap> offscreen_clipboard::get_image() const {
    if (!image)
        return nullptr;
    return std::make_unique<offscreen_bitmap>(*image);
}

void offscreen_clipboard::clear() {
    text.reset();
    image.reset();
    ++changes;
}

} // namespace nimbit::ui
