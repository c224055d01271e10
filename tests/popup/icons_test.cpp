// The compiled-in icons: every image decodes, its strip splits into equal frames and the state
// frames differ; and the toolbar icon lines of the status script, whose exact text is what the
// host's script panel evaluates.
#include "assets/icons.h"
#include "nimbit/ui/bitmap.h"
#include "popup/toolbar_icon_script.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

TEST(EmbeddedIcons, PngStripsOfWholePointFramesThatAreDistinctAndNotEmpty) {
    std::set<std::string> names;
    for (unsigned long i = 0; i < quillo::embedded_image_count; ++i) {
        const quillo::embedded_image& image = *quillo::embedded_images[i].image;
        SCOPED_TRACE(quillo::embedded_images[i].name);
        EXPECT_TRUE(names.insert(quillo::embedded_images[i].name).second) << "listed twice";
        const int frames = image.frames;
        const float scale = image.scale;
        ASSERT_TRUE(frames >= 1 && frames <= 4 && scale >= 1.0f) << frames << " frames at " << scale;
        nimbit::ui::bitmap bitmap;
        ASSERT_TRUE(bitmap.load_image(image.data, image.size)) << "cannot decode it";
        const nimbit::ui::bitmap_data pixels = bitmap.lock();
        const int width = pixels.size.x, height = pixels.size.y;
        EXPECT_EQ(width % frames, 0) << "width " << width << " for " << frames << " frames";
        // A frame must cover whole points, or the drawn icon lands between pixels and blurs.
        EXPECT_EQ(width / frames / scale, std::floor(width / frames / scale));
        EXPECT_EQ(height / scale, std::floor(height / scale));
        const int fw = width / frames;
        // Pixel (x, y) of frame f, 8 bits per channel.
        auto at = [&](int f, int x, int y) {
            return pixels.bits + static_cast<std::size_t>(y) * pixels.pitch + (f * fw + x) * 4;
        };
        for (int f = 0; f < frames; ++f) {
            long covered = 0;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < fw; ++x)
                    covered += at(f, x, y)[3] != 0;
            EXPECT_GT(static_cast<double>(covered) / (fw * height), 0.01) << "frame " << f << " is blank";
            for (int g = f + 1; g < frames; ++g) {
                bool same = true;
                for (int y = 0; y < height && same; ++y)
                    same = std::memcmp(at(f, 0, y), at(g, 0, y), static_cast<std::size_t>(fw) * 4) == 0;
                EXPECT_FALSE(same) << "frames " << f << " and " << g;
            }
        }
        bitmap.unlock(pixels);
    }
}

// The toolbar's icons in the order of its buttons, which the panel's script follows.
const quillo::embedded_image* const ToolbarOrder[] = {&ScreenshotIconDark, &ExportIconDark, &GalleryIconDark,
                                                      &PrefIconDark,       &LogoIconDark,   &NewsIcon};

TEST(StatusScript, LinesAreLowerCaseEscapedSmallIconsInToolbarOrder) {
    std::istringstream in(BuildToolbarIconLines());
    std::string line;
    for (size_t i = 0; i < std::size(ToolbarOrder); ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(std::getline(in, line));
        std::string expected = "var button" + std::to_string(i) + "Hex = \"";
        // The icon as the panel shows it: an eighth of its pixel size, PNG-encoded.
        nimbit::ui::bitmap image;
        ASSERT_TRUE(image.load_image(ToolbarOrder[i]->data, ToolbarOrder[i]->size, 1.0f));
        ASSERT_TRUE(image.set_size({image.get_size().x / 8, image.get_size().y / 8}, true));
        for (unsigned char byte : image.save_image_stream(nimbit::ui::image_format::png)) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", byte);
            expected += hex;
        }
        EXPECT_EQ(line, expected + "\";");
    }
    EXPECT_FALSE(std::getline(in, line));
}

} // namespace
