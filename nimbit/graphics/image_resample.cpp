#include "nimbit/graphics/image_resample.h"

#include <algorithm>
#include <cmath>

namespace nimbit::graphics {

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

// One source row scaled horizontally, colours premultiplied by alpha. The vertical pass asks for
// rows in increasing order and each is wanted by at most a few neighbouring destination rows, so
// the last two are kept.
class row_source {
public:
    row_source(const rgba_image& image, int width)
        : image(image), horizontal(axis_weights(image.size.x, width)) {
        for (auto& slot : slots)
            slot.values.resize(size_t(width) * 4);
    }

    const float* row(int y) {
        for (auto& slot : slots)
            if (slot.y == y)
                return slot.values.data();
        slot& s = slots[next];
        next ^= 1;
        s.y = y;
        const unsigned char* source = &image.pixels[size_t(y) * image.pitch()];
        float* d = s.values.data();
        for (const contribution& c : horizontal) {
            float acc[4] = {0, 0, 0, 0};
            const unsigned char* p = source + size_t(c.first) * 4;
            for (const float w : c.weights) {
                const float aw = p[3] * w, cw = aw * (1.0f / 255.0f);
                acc[0] += p[0] * cw;
                acc[1] += p[1] * cw;
                acc[2] += p[2] * cw;
                acc[3] += aw;
                p += 4;
            }
            std::copy_n(acc, 4, d);
            d += 4;
        }
        return s.values.data();
    }

private:
    struct slot {
        int y = -1;
        std::vector<float> values;
    };
    const rgba_image& image;
    const std::vector<contribution> horizontal;
    slot slots[2];
    int next = 0;
};

} // namespace

rgba_image resample(const rgba_image& image, _vec2<int> size) {
    rgba_image out;
    out.alpha = image.alpha;
    if (image.empty() || size.x <= 0 || size.y <= 0)
        return out;
    row_source rows(image, size.x);
    const auto vertical = axis_weights(image.size.y, size.y);
    out.size = size;
    out.pixels.assign(size_t(size.x) * size_t(size.y) * 4, 0);
    std::vector<float> acc(size_t(size.x) * 4);
    for (int y = 0; y < size.y; ++y) {
        const contribution& c = vertical[size_t(y)];
        std::fill(acc.begin(), acc.end(), 0.0f);
        for (size_t k = 0; k < c.weights.size(); ++k) {
            const float* s = rows.row(c.first + int(k));
            const float w = c.weights[k];
            for (size_t i = 0; i < acc.size(); ++i)
                acc[i] += s[i] * w;
        }
        unsigned char* d = &out.pixels[size_t(y) * out.pitch()];
        for (size_t i = 0; i < acc.size(); i += 4, d += 4) {
            const float a = acc[i + 3];
            const float unpremultiply = a > 0.0f ? 255.0f / a : 0.0f;
            for (size_t ch = 0; ch < 3; ++ch)
                d[ch] = to_byte(acc[i + ch] * unpremultiply);
            d[3] = to_byte(a);
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

} // namespace nimbit::graphics
