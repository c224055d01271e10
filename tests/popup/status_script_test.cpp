// The toolbar icon lines of the status script: the exact text checked here is what the host's script
// panel evaluates.
#include "assets/icons.h"
#include "nimbit/ui/bitmap.h"
#include "popup/toolbar_icon_script.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace {

// The toolbar's icons in the order of its buttons, which the panel's script follows.
const quillo::embedded_image* const ToolbarOrder[] = {&ScreenshotIconDark, &ExportIconDark, &GalleryIconDark,
                                                      &PrefIconDark,       &LogoIconDark,   &NewsIcon};

// The icon as the panel shows it: an eighth of its pixel size, PNG-encoded.
std::vector<unsigned char> SmallPng(const quillo::embedded_image& icon) {
    nimbit::ui::bitmap image;
    EXPECT_TRUE(image.load_image(icon.data, icon.size, 1.0f));
    const nimbit::_vec2<int> full = image.get_size();
    EXPECT_TRUE(image.set_size({full.x / 8, full.y / 8}, true));
    return image.save_image_stream(nimbit::ui::image_format::png);
}

TEST(StatusScript, LinesAreLowerCaseEscapedSmallIconsInToolbarOrder) {
    std::istringstream in(BuildToolbarIconLines());
    std::string line;
    for (size_t i = 0; i < std::size(ToolbarOrder); ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(std::getline(in, line));
        std::string expected = "var button" + std::to_string(i) + "Hex = \"";
        for (unsigned char byte : SmallPng(*ToolbarOrder[i])) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", byte);
            expected += hex;
        }
        EXPECT_EQ(line, expected + "\";");
    }
    EXPECT_FALSE(std::getline(in, line));
}

} // namespace
