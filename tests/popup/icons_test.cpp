// The compiled-in icons: every image decodes, its strip splits into equal frames and the state
// frames differ.
#include "assets/icons.h"
#include "nimbit/ui/bitmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace {

struct decoded {
    std::string name;
    const quillo::embedded_image* image;
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgba; // 8 bits per channel; empty when undecodable

    // Pixel (x, y) of frame f.
    const std::uint8_t* at(int f, int x, int y) const {
        return &rgba[(static_cast<std::size_t>(y) * width + f * (width / image->frames) + x) * 4];
    }
};

decoded decode(const char* name, const quillo::embedded_image& image) {
    decoded out{name, &image, 0, 0, {}};
    nimbit::ui::bitmap bitmap;
    if (!bitmap.load_image(image.data, image.size))
        return out;
    const nimbit::ui::bitmap_data pixels = bitmap.lock();
    out.width = pixels.size.x;
    out.height = pixels.size.y;
    for (int y = 0; y < out.height; ++y) {
        const unsigned char* row = pixels.bits + static_cast<std::size_t>(y) * pixels.pitch;
        out.rgba.insert(out.rgba.end(), row, row + out.width * 4);
    }
    bitmap.unlock(pixels);
    return out;
}

const std::vector<decoded>& all_images() {
    static const std::vector<decoded> all = [] {
        std::vector<decoded> out;
        for (unsigned long i = 0; i < quillo::embedded_image_count; ++i)
            out.push_back(decode(quillo::embedded_images[i].name, *quillo::embedded_images[i].image));
        return out;
    }();
    return all;
}

TEST(EmbeddedIcons, PngStripsOfWholePointFramesThatAreDistinctAndNotEmpty) {
    std::set<std::string> names;
    for (const decoded& d : all_images()) {
        SCOPED_TRACE(d.name);
        EXPECT_TRUE(names.insert(d.name).second) << "listed twice";
        ASSERT_FALSE(d.rgba.empty()) << "cannot decode it";
        const int frames = d.image->frames;
        ASSERT_TRUE(frames >= 1 && frames <= 4) << frames;
        EXPECT_EQ(d.width % frames, 0) << "width " << d.width << " for " << frames << " frames";
        // A frame must cover whole points, or the drawn icon lands between pixels and blurs.
        const float scale = d.image->scale;
        ASSERT_GE(scale, 1.0f);
        EXPECT_EQ(d.width / frames / scale, std::floor(d.width / frames / scale));
        EXPECT_EQ(d.height / scale, std::floor(d.height / scale));
        const int fw = d.width / frames;
        for (int f = 0; f < frames; ++f) {
            long covered = 0;
            for (int y = 0; y < d.height; ++y)
                for (int x = 0; x < fw; ++x)
                    covered += d.at(f, x, y)[3] != 0;
            EXPECT_GT(static_cast<double>(covered) / (fw * d.height), 0.01) << "frame " << f << " is blank";
            for (int g = f + 1; g < frames; ++g) {
                bool same = true;
                for (int y = 0; y < d.height && same; ++y)
                    same = std::memcmp(d.at(f, 0, y), d.at(g, 0, y), static_cast<std::size_t>(fw) * 4) == 0;
                EXPECT_FALSE(same) << "frames " << f << " and " << g;
            }
        }
    }
}

} // namespace
