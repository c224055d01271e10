#include "popup/toolbar_icon_script.h"

#include "assets/icons.h"
#include "nimbit/ui/bitmap.h"

#include <vector>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr float ScriptIconScale = 0.125f;

// The icon at an eighth of its pixel size, PNG-encoded; empty when it cannot be decoded.
std::vector<unsigned char> SmallIcon(const quillo::embedded_image& icon) {
    bitmap image;
    if (!image.load_image(icon.data, icon.size, 1.0f))
        return {};
    const _vec2<int> size = image.get_size();
    const _vec2<int> small{static_cast<int>(static_cast<float>(size.x) * ScriptIconScale),
                           static_cast<int>(static_cast<float>(size.y) * ScriptIconScale)};
    if (small.x <= 0 || small.y <= 0 || !image.set_size(small, true))
        return {};
    return image.save_image_stream(image_format::png);
}

} // namespace

std::string BuildToolbarIconLines() {
    static constexpr char digits[] = "0123456789abcdef";
    const quillo::embedded_image* icons[] = {&ScreenshotIconDark, &ExportIconDark, &GalleryIconDark,
                                             &PrefIconDark,       &LogoIconDark,   &NewsIcon};
    std::string text;
    for (size_t i = 0; i < std::size(icons); ++i) {
        const std::vector<unsigned char> png = SmallIcon(*icons[i]);
        text += "var button" + std::to_string(i) + "Hex = \"";
        text.reserve(text.size() + png.size() * 4 + 4);
        for (unsigned char byte : png) {
            text += "\\x";
            text += digits[byte >> 4];
            text += digits[byte & 15];
        }
        text += "\";\n";
    }
    return text;
}
