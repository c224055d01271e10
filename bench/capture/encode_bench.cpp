// Encoding a 3840x2160 frame: the shared fast PNG and JPG encoders beside libpng at its default
// settings (what a plain encoder does), all on the same picture in the same run.
#include "bench/support/capture_frame.h"
#include "bench/support/libpng_reference.h"
#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using bench_frames::Height;
using bench_frames::Width;

const std::vector<unsigned char>& Frame() {
    static const std::vector<unsigned char> frame = bench_frames::Frame(0);
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
