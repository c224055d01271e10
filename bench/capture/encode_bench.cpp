// Encoding a 3840x2160 frame: the shared fast PNG and JPG encoders beside libpng at its default
// settings (what a plain encoder does), all on the same picture in the same run.
#include "bench/support/libpng_reference.h"
#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

constexpr int Width = 3840, Height = 2160;

// Something like a rendered frame: smooth gradients, a few flat shapes and a little grain.
const std::vector<unsigned char>& Frame() {
    static const std::vector<unsigned char> frame = [] {
        std::vector<unsigned char> pixels(size_t(Width) * Height * 4);
        unsigned seed = 1;
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x) {
                seed = seed * 1103515245u + 12345u;
                const unsigned grain = (seed >> 29) & 3u;
                unsigned char* p = &pixels[(size_t(y) * Width + x) * 4];
                const bool inBlock = (x / 480 + y / 270) % 3 == 0;
                p[0] = static_cast<unsigned char>(inBlock ? 200 : x * 255 / Width + grain);
                p[1] = static_cast<unsigned char>(inBlock ? 40 : y * 255 / Height + grain);
                p[2] = static_cast<unsigned char>((x + y) / 24 + grain);
                p[3] = 255;
            }
        return pixels;
    }();
    return frame;
}

nimbit::graphics::rgba_view View() {
    return {Frame().data(), Width, Height, size_t(Width) * 4};
}

void FastPng(benchmark::State& state) {
    size_t bytes = 0;
    for (auto _ : state)
        bytes = nimbit::graphics::encode_png(View()).size();
    state.counters["MB"] = double(bytes) / 1e6;
}

void LibpngDefault(benchmark::State& state) {
    size_t bytes = 0;
    for (auto _ : state)
        bytes = libpng_default_encode(Frame().data(), Width, Height, Width * 4);
    state.counters["MB"] = double(bytes) / 1e6;
}

void FastJpg(benchmark::State& state) {
    size_t bytes = 0;
    for (auto _ : state)
        bytes = nimbit::graphics::encode_jpg(View()).size();
    state.counters["MB"] = double(bytes) / 1e6;
}

} // namespace

BENCHMARK(FastPng)->Name("encode_3840x2160/png_fast")->Unit(benchmark::kMillisecond)->MinTime(1);
BENCHMARK(LibpngDefault)
    ->Name("encode_3840x2160/png_libpng_default")
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2);
BENCHMARK(FastJpg)->Name("encode_3840x2160/jpg")->Unit(benchmark::kMillisecond)->MinTime(1);
