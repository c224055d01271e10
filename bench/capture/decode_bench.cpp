// Decoding a 3840x2160 PNG capture (as the capture writer makes them): the foundation's decoder
// beside libpng's simplified reader at its defaults, on the same file in the same run.
#include "bench/support/libpng_reference.h"
#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/png_encoder.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

constexpr int Width = 3840, Height = 2160;

const std::vector<unsigned char>& Capture() {
    static const std::vector<unsigned char> png = [] {
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
        return nimbit::graphics::encode_png({pixels.data(), Width, Height, size_t(Width) * 4});
    }();
    return png;
}

void DecodePng(benchmark::State& state) {
    nimbit::graphics::rgba_image image;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            nimbit::graphics::decode_png(Capture().data(), Capture().size(), ~0ull, image));
}

void LibpngDecode(benchmark::State& state) {
    const std::vector<unsigned char>& png = Capture();
    std::vector<unsigned char> pixels;
    for (auto _ : state)
        benchmark::DoNotOptimize(libpng_default_decode(png.data(), png.size(), pixels));
}

} // namespace

BENCHMARK(DecodePng)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(LibpngDecode)->Unit(benchmark::kMillisecond)->MinTime(2.0);
