// Figures for style look-ups (every paint reads several) and for the image work behind the gallery's
// thumbnails: decoding a capture, shrinking it, encoding the thumbnail.

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/widget_themes.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using namespace nimbit;
using namespace nimbit::ui;

void BM_ThemeLookupThroughLinkToDefault(benchmark::State& state) {
    theme t;
    t.link("label_font_color", "tooltip_font_color");
    for (auto _ : state)
        benchmark::DoNotOptimize(t.get<vec4>("label_font_color"));
}
BENCHMARK(BM_ThemeLookupThroughLinkToDefault);

bitmap make_picture(_vec2<int> size) {
    bitmap b;
    b.create(size, image_alpha::alpha);
    bitmap_data d = b.lock();
    for (size_t i = 0; i < d.byte_count; ++i)
        d.bits[i] = static_cast<unsigned char>((i * 2654435761u) >> 13);
    b.unlock(d);
    return b;
}

void BM_DecodePng1280x720(benchmark::State& state) {
    const std::vector<unsigned char> png = make_picture({1280, 720}).save_image_stream(image_format::png);
    for (auto _ : state) {
        bitmap b;
        benchmark::DoNotOptimize(b.load_image(png.data(), png.size()));
    }
}
BENCHMARK(BM_DecodePng1280x720)->Unit(benchmark::kMillisecond);

void BM_ShrinkTo160x90(benchmark::State& state) {
    const bitmap source = make_picture({1280, 720});
    for (auto _ : state) {
        bitmap b = source.clone();
        benchmark::DoNotOptimize(b.set_size({160, 90}, true));
    }
}
BENCHMARK(BM_ShrinkTo160x90)->Unit(benchmark::kMillisecond);

void BM_EncodeJpg160x90(benchmark::State& state) {
    const bitmap thumb = make_picture({160, 90});
    for (auto _ : state)
        benchmark::DoNotOptimize(thumb.save_image_stream(image_format::jpg));
}
BENCHMARK(BM_EncodeJpg160x90)->Unit(benchmark::kMicrosecond);

} // namespace
