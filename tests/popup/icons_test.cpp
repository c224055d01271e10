// The compiled-in icons: every image decodes, its strip splits into equal frames, the two themes
// match, the state frames differ and every frame reads against the window background.
#include "assets/icons.h"

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

struct decoded {
    std::string name;
    const quillo::embedded_image* image;
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgba; // 8 bits per channel, not premultiplied; empty when undecodable

    // Pixel (x, y) of frame f.
    const std::uint8_t* at(int f, int x, int y) const {
        return &rgba[(static_cast<std::size_t>(y) * width + f * (width / image->frames) + x) * 4];
    }
};

decoded decode(const char* name, const quillo::embedded_image& image) {
    decoded out{name, &image, 0, 0, {}};
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&png, image.data, image.size))
        return out;
    png.format = PNG_FORMAT_RGBA;
    out.width = static_cast<int>(png.width);
    out.height = static_cast<int>(png.height);
    out.rgba.resize(PNG_IMAGE_SIZE(png));
    if (!png_image_finish_read(&png, nullptr, out.rgba.data(), 0, nullptr)) {
        png_image_free(&png);
        out.rgba.clear();
    }
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

// The theme a name ends with ("Dark", "Light"), or "" for a shared image.
std::string theme_of(const std::string& name) {
    for (const char* t : {"Dark", "Light"})
        if (name.size() > std::strlen(t) &&
            name.compare(name.size() - std::strlen(t), std::string::npos, t) == 0)
            return t;
    return "";
}

// WCAG contrast of an sRGB colour over another.
double contrast(const double (&a)[3], const double (&b)[3]) {
    auto lum = [](const double(&c)[3]) {
        double sum = 0;
        const double weight[3] = {0.2126, 0.7152, 0.0722};
        for (int i = 0; i < 3; ++i)
            sum += weight[i] * (c[i] <= 0.04045 ? c[i] / 12.92 : std::pow((c[i] + 0.055) / 1.055, 2.4));
        return sum;
    };
    const double la = lum(a), lb = lum(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

TEST(EmbeddedIcons, PngStripsOfWholePointFramesThatAreDistinctNotEmptyReadableAndPairedByTheme) {
    std::map<std::string, const decoded*> byName;
    // The window backgrounds the themes are designed for (assets/README.md).
    const double dark[3] = {0x26 / 255.0, 0x26 / 255.0, 0x26 / 255.0};
    const double light[3] = {0xec / 255.0, 0xec / 255.0, 0xec / 255.0};
    for (const decoded& d : all_images()) {
        SCOPED_TRACE(d.name);
        EXPECT_TRUE(byName.emplace(d.name, &d).second) << "listed twice";
        ASSERT_FALSE(d.rgba.empty()) << "libpng cannot decode it";
        const int frames = d.image->frames;
        ASSERT_TRUE(frames >= 1 && frames <= 4) << frames;
        EXPECT_EQ(d.width % frames, 0) << "width " << d.width << " for " << frames << " frames";
        // A frame must cover whole points, or the drawn icon lands between pixels and blurs.
        const float scale = d.image->scale;
        ASSERT_GE(scale, 1.0f);
        EXPECT_EQ(d.width / frames / scale, std::floor(d.width / frames / scale));
        EXPECT_EQ(d.height / scale, std::floor(d.height / scale));
        const int fw = d.width / frames;
        std::vector<const double(*)[3]> panels;
        if (theme_of(d.name) != "Light")
            panels.push_back(&dark);
        if (theme_of(d.name) != "Dark")
            panels.push_back(&light);
        for (int f = 0; f < frames; ++f) {
            long covered = 0;
            int maxAlpha = 0;
            std::vector<double> best(panels.size(), 1.0);
            for (int y = 0; y < d.height; ++y)
                for (int x = 0; x < fw; ++x) {
                    const std::uint8_t* p = d.at(f, x, y);
                    covered += p[3] != 0;
                    maxAlpha = std::max(maxAlpha, int(p[3]));
                    const double a = p[3] / 255.0;
                    for (std::size_t i = 0; i < panels.size(); ++i) {
                        double c[3];
                        for (int k = 0; k < 3; ++k)
                            c[k] = p[k] / 255.0 * a + (*panels[i])[k] * (1 - a);
                        best[i] = std::max(best[i], contrast(c, *panels[i]));
                    }
                }
            EXPECT_GT(static_cast<double>(covered) / (fw * d.height), 0.01) << "frame " << f << " is blank";
            for (int g = f + 1; g < frames; ++g) {
                bool same = true;
                for (int y = 0; y < d.height && same; ++y)
                    same = std::memcmp(d.at(f, 0, y), d.at(g, 0, y), static_cast<std::size_t>(fw) * 4) == 0;
                EXPECT_FALSE(same) << "frames " << f << " and " << g;
            }
            // The disabled frame of a four-state button is the normal one faded, nothing opaque left.
            if (frames == 4 && f != 1 && f != 2) {
                EXPECT_TRUE(f == 0 ? maxAlpha == 255 : maxAlpha <= 0.45 * 255) << "frame " << f;
            }
            // Every active frame reads against its panel(s): 3:1 is the usual floor for icons.
            for (std::size_t i = 0; i < best.size() && f < 3; ++i)
                EXPECT_GE(best[i], 3.0) << "frame " << f << " panel " << i;
        }
    }
    int pairs = 0;
    for (const auto& [name, d] : byName) {
        const std::string theme = theme_of(name);
        if (theme.empty())
            continue;
        const std::string other =
            name.substr(0, name.size() - theme.size()) + (theme == "Dark" ? "Light" : "Dark");
        SCOPED_TRACE(name);
        ASSERT_TRUE(byName.count(other)) << "no " << other;
        const decoded* o = byName[other];
        EXPECT_EQ(std::tuple(d->width, d->height, d->image->frames, d->image->scale),
                  std::tuple(o->width, o->height, o->image->frames, o->image->scale));
        EXPECT_NE(d->rgba, o->rgba); // same layout, different colours
        ++pairs;
    }
    EXPECT_GT(pairs, 0);
}

} // namespace
