#include "nimbit/ui/offscreen/image_codecs.h"

#include <algorithm>
#include <cmath>

namespace nimbit::ui::offscreen {

namespace {

// The source pixels that make up one destination pixel along one axis, with their weights.
struct contribution {
    int first = 0;
    std::vector<float> weights;
};

std::vector<contribution> axis_weights(int from, int to) {
    std::vector<contribution> out(static_cast<size_t>(to));
    const double ratio = static_cast<double>(from) / to;
    for (int i = 0; i < to; ++i) {
        contribution& c = out[static_cast<size_t>(i)];
        if (ratio > 1.0) {
            // Shrinking: average the footprint [i * ratio, (i + 1) * ratio), partial pixels by coverage.
            const double start = i * ratio, end = start + ratio;
            c.first = static_cast<int>(std::floor(start));
            const int last = std::min(from - 1, static_cast<int>(std::ceil(end)) - 1);
            for (int s = c.first; s <= last; ++s) {
                const double cover = std::min<double>(end, s + 1) - std::max<double>(start, s);
                c.weights.push_back(static_cast<float>(cover / ratio));
            }
        } else {
            // Growing (or equal): linear between the two nearest source centres.
            const double centre = (i + 0.5) * ratio - 0.5;
            const double clamped = std::clamp(centre, 0.0, static_cast<double>(from - 1));
            c.first = static_cast<int>(std::floor(clamped));
            const float t = static_cast<float>(clamped - c.first);
            if (c.first + 1 < from && t > 0.0f)
                c.weights = {1.0f - t, t};
            else
                c.weights = {1.0f};
        }
    }
    return out;
}

unsigned char to_byte(float v) {
    return static_cast<unsigned char>(std::clamp(std::lround(v), 0l, 255l));
}

} // namespace

rgba_image resample(const rgba_image& image, _vec2<int> size) {
    rgba_image out;
    out.alpha = image.alpha;
    if (image.empty() || size.x <= 0 || size.y <= 0)
        return out;
    const int sw = image.size.x, sh = image.size.y;
    // Premultiplied float copy, then one pass per axis.
    std::vector<float> source(size_t(sw) * size_t(sh) * 4);
    for (size_t p = 0; p < size_t(sw) * size_t(sh); ++p) {
        const float a = image.pixels[p * 4 + 3] / 255.0f;
        for (int c = 0; c < 3; ++c)
            source[p * 4 + c] = image.pixels[p * 4 + size_t(c)] * a;
        source[p * 4 + 3] = image.pixels[p * 4 + 3];
    }
    const auto horizontal = axis_weights(sw, size.x);
    std::vector<float> rows(size_t(size.x) * size_t(sh) * 4, 0.0f);
    for (int y = 0; y < sh; ++y)
        for (int x = 0; x < size.x; ++x) {
            const contribution& c = horizontal[size_t(x)];
            float* d = &rows[(size_t(y) * size_t(size.x) + size_t(x)) * 4];
            for (size_t k = 0; k < c.weights.size(); ++k) {
                const float* s = &source[(size_t(y) * size_t(sw) + size_t(c.first) + k) * 4];
                for (int ch = 0; ch < 4; ++ch)
                    d[ch] += s[ch] * c.weights[k];
            }
        }
    const auto vertical = axis_weights(sh, size.y);
    out.size = size;
    out.pixels.assign(size_t(size.x) * size_t(size.y) * 4, 0);
    for (int y = 0; y < size.y; ++y) {
        const contribution& c = vertical[size_t(y)];
        for (int x = 0; x < size.x; ++x) {
            float acc[4] = {0, 0, 0, 0};
            for (size_t k = 0; k < c.weights.size(); ++k) {
                const float* s = &rows[((size_t(c.first) + k) * size_t(size.x) + size_t(x)) * 4];
                for (int ch = 0; ch < 4; ++ch)
                    acc[ch] += s[ch] * c.weights[k];
            }
            unsigned char* d = &out.pixels[(size_t(y) * size_t(size.x) + size_t(x)) * 4];
            const float a = acc[3] / 255.0f;
            for (int ch = 0; ch < 3; ++ch)
                d[ch] = a > 0.0f ? to_byte(acc[ch] / a) : 0;
            d[3] = to_byte(acc[3]);
        }
    }
    return out;
}

rgba_image recanvas(const rgba_image& image, _vec2<int> size) {
    rgba_image out;
    out.alpha = image.alpha;
    if (size.x <= 0 || size.y <= 0)
        return out;
    out.size = size;
    out.pixels.assign(size_t(size.x) * size_t(size.y) * 4, 0);
    const int w = std::min(size.x, image.size.x), h = std::min(size.y, image.size.y);
    for (int y = 0; y < h; ++y)
        std::copy_n(&image.pixels[size_t(y) * image.pitch()], size_t(w) * 4,
                    &out.pixels[size_t(y) * out.pitch()]);
    return out;
}

} // namespace nimbit::ui::offscreen
