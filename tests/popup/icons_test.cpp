// The compiled-in icons: every image decodes, its strip splits into equal frames, the two themes
// match, the state frames differ and every frame reads against the window background.
#include "assets/icons.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct rgba_image {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels; // RGBA, 8 bits per channel, not premultiplied
};

std::optional<rgba_image> decode(const quillo::embedded_image& image) {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&png, image.data, image.size))
        return std::nullopt;
    png.format = PNG_FORMAT_RGBA;
    rgba_image out;
    out.width = static_cast<int>(png.width);
    out.height = static_cast<int>(png.height);
    out.pixels.resize(PNG_IMAGE_SIZE(png));
    if (!png_image_finish_read(&png, nullptr, out.pixels.data(), 0, nullptr)) {
        png_image_free(&png);
        return std::nullopt;
    }
    return out;
}

struct colour {
    double r, g, b;
};

// The window backgrounds the themes are designed for (assets/README.md).
constexpr colour dark_panel{0x26 / 255.0, 0x26 / 255.0, 0x26 / 255.0};
constexpr colour light_panel{0xec / 255.0, 0xec / 255.0, 0xec / 255.0};

double linear(double c) {
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}
double luminance(colour c) {
    return 0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b);
}
double contrast(colour a, colour b) {
    double la = luminance(a), lb = luminance(b);
    if (la < lb)
        std::swap(la, lb);
    return (la + 0.05) / (lb + 0.05);
}

// A view of one frame of a decoded strip.
struct frame_view {
    const rgba_image& image;
    int index;
    int width;
    const std::uint8_t* pixel(int x, int y) const {
        return &image.pixels[(static_cast<std::size_t>(y) * image.width + index * width + x) * 4];
    }
};

std::vector<frame_view> frames_of(const rgba_image& image, int frames) {
    std::vector<frame_view> out;
    for (int i = 0; i < frames; ++i)
        out.push_back({image, i, image.width / frames});
    return out;
}

bool same_pixels(const frame_view& a, const frame_view& b) {
    for (int y = 0; y < a.image.height; ++y)
        if (std::memcmp(a.pixel(0, y), b.pixel(0, y), static_cast<std::size_t>(a.width) * 4) != 0)
            return false;
    return true;
}

double covered_fraction(const frame_view& f) {
    long covered = 0;
    for (int y = 0; y < f.image.height; ++y)
        for (int x = 0; x < f.width; ++x)
            covered += f.pixel(x, y)[3] != 0;
    return static_cast<double>(covered) / (static_cast<double>(f.width) * f.image.height);
}

int max_alpha(const frame_view& f) {
    int best = 0;
    for (int y = 0; y < f.image.height; ++y)
        for (int x = 0; x < f.width; ++x)
            best = std::max(best, static_cast<int>(f.pixel(x, y)[3]));
    return best;
}

// The strongest contrast any pixel of the frame, laid over the panel, has against the bare panel.
double best_contrast_over(const frame_view& f, colour panel) {
    double best = 1.0;
    for (int y = 0; y < f.image.height; ++y)
        for (int x = 0; x < f.width; ++x) {
            const std::uint8_t* p = f.pixel(x, y);
            double a = p[3] / 255.0;
            colour c{p[0] / 255.0 * a + panel.r * (1 - a), p[1] / 255.0 * a + panel.g * (1 - a),
                     p[2] / 255.0 * a + panel.b * (1 - a)};
            best = std::max(best, contrast(c, panel));
        }
    return best;
}

bool ends_with(std::string_view s, std::string_view tail) {
    return s.size() >= tail.size() && s.substr(s.size() - tail.size()) == tail;
}

struct decoded_entry {
    std::string name;
    const quillo::embedded_image* image;
    rgba_image pixels;
};

// Decodes every image once; a failure is reported by the test that needs the pixels.
const std::vector<decoded_entry>& decoded_images() {
    static const std::vector<decoded_entry> all = [] {
        std::vector<decoded_entry> out;
        for (unsigned long i = 0; i < quillo::embedded_image_count; ++i) {
            const auto& entry = quillo::embedded_images[i];
            if (auto pixels = decode(*entry.image))
                out.push_back({entry.name, entry.image, std::move(*pixels)});
        }
        return out;
    }();
    return all;
}

TEST(EmbeddedIcons, EveryImageIsAPngStripOfWholePointFrames) {
    ASSERT_GT(quillo::embedded_image_count, 0u);
    std::set<std::string> names;
    for (unsigned long i = 0; i < quillo::embedded_image_count; ++i) {
        const auto& entry = quillo::embedded_images[i];
        SCOPED_TRACE(entry.name);
        EXPECT_TRUE(names.insert(entry.name).second) << "listed twice";
        ASSERT_NE(entry.image->data, nullptr);
        auto image = decode(*entry.image);
        ASSERT_TRUE(image) << "libpng cannot decode it";
        const int frames = entry.image->frames;
        ASSERT_TRUE(frames >= 1 && frames <= 4) << frames;
        EXPECT_EQ(image->width % frames, 0) << "width " << image->width << " for " << frames << " frames";
        // A frame must cover whole points, or the drawn icon lands between pixels and blurs.
        const float scale = entry.image->scale;
        ASSERT_GE(scale, 1.0f);
        const double frame_points = image->width / frames / scale;
        const double height_points = image->height / scale;
        EXPECT_EQ(frame_points, std::floor(frame_points));
        EXPECT_EQ(height_points, std::floor(height_points));
    }
    EXPECT_EQ(decoded_images().size(), quillo::embedded_image_count);
}

TEST(EmbeddedIcons, ThemesComeInMatchingPairs) {
    std::map<std::string, const decoded_entry*> dark, light;
    for (const auto& e : decoded_images()) {
        if (ends_with(e.name, "Dark"))
            dark[e.name.substr(0, e.name.size() - 4)] = &e;
        else if (ends_with(e.name, "Light"))
            light[e.name.substr(0, e.name.size() - 5)] = &e;
    }
    EXPECT_FALSE(dark.empty());
    for (const auto& [base, d] : dark) {
        SCOPED_TRACE(base);
        auto it = light.find(base);
        ASSERT_NE(it, light.end()) << "no Light variant";
        const decoded_entry* l = it->second;
        EXPECT_EQ(d->pixels.width, l->pixels.width);
        EXPECT_EQ(d->pixels.height, l->pixels.height);
        EXPECT_EQ(d->image->frames, l->image->frames);
        EXPECT_EQ(d->image->scale, l->image->scale);
        // Same layout, different colours.
        EXPECT_NE(d->pixels.pixels, l->pixels.pixels);
    }
    for (const auto& [base, l] : light)
        EXPECT_TRUE(dark.count(base)) << base << " has no Dark variant";
}

TEST(EmbeddedIcons, StateFramesAreDistinctNoneIsEmptyAndEachActiveOneReads) {
    for (const auto& e : decoded_images()) {
        SCOPED_TRACE(e.name);
        auto frames = frames_of(e.pixels, e.image->frames);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            EXPECT_GT(covered_fraction(frames[i]), 0.01) << "frame " << i << " is blank";
            for (std::size_t j = i + 1; j < frames.size(); ++j)
                EXPECT_FALSE(same_pixels(frames[i], frames[j])) << "frames " << i << " and " << j;
        }
        // The disabled frame of a four-state button is the normal one faded, nothing opaque left.
        if (frames.size() == 4) {
            EXPECT_EQ(max_alpha(frames[0]), 255);
            EXPECT_LE(max_alpha(frames[3]), 0.45 * 255);
        }
        // Every active frame reads against its panel: 3:1 is the usual floor for icons and control
        // borders; the disabled frame is faint on purpose.
        std::vector<colour> panels;
        if (ends_with(e.name, "Dark"))
            panels = {dark_panel};
        else if (ends_with(e.name, "Light"))
            panels = {light_panel};
        else
            panels = {dark_panel, light_panel};
        for (std::size_t i = 0; i < frames.size() && i < 3; ++i)
            for (colour panel : panels)
                EXPECT_GE(best_contrast_over(frames[i], panel), 3.0) << "frame " << i;
    }
}

} // namespace
