// Decoding a 3840x2160 PNG capture (as the capture writer makes them): the foundation's decoder
// beside libpng's simplified reader at its defaults, on the same file in the same run.
#include "bench/support/capture_frame.h"
#include "bench/support/libpng_reference.h"
#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/png_encoder.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using bench_frames::Height;
using bench_frames::Width;

const std::vector<unsigned char>& Capture() {
    static const std::vector<unsigned char> png = bench_frames::FramePng(0);
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
