#include "nimbit/graphics/pixel.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

constexpr int width = 3840;
constexpr int height = 2160;
constexpr size_t bytes8 = size_t{width} * height * 4;

// A UHD float frame exported to 8 bits, the capture path's conversion. Compare with the plain copy
// of the same number of 8-bit bytes below.
void BM_ExportFloatTo8Bit(benchmark::State& state) {
    nimbit::graphics::pixel_buffer buffer({width, height});
    for (size_t i = 0; i < buffer.size_pixels(); ++i)
        buffer[i] = {static_cast<float>(i % 97) / 96.0f, 0.5f, 0.25f, 1.0f};
    std::vector<unsigned char> out(bytes8);
    for (auto _ : state) {
        buffer.export_buffer(out.data(), {width, height}, width * 4, nimbit::graphics::buffer_type::rgba8);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes8));
}
BENCHMARK(BM_ExportFloatTo8Bit)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Memcpy8BitFrame(benchmark::State& state) {
    std::vector<unsigned char> in(bytes8, 1), out(bytes8);
    for (auto _ : state) {
        std::memcpy(out.data(), in.data(), bytes8);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes8));
}
BENCHMARK(BM_Memcpy8BitFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
