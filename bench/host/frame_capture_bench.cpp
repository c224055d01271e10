// The frame capture's conversion of a UHD (3840 x 2160) 32-bit frame: the host's float world, rows
// padded, read into a pixel buffer and exported as 8-bit pixels, as host/frame_capture.cpp does.
// The whole capture also pays for the host's render and the bitmap; this is the part that is ours.

#include "nimbit/graphics/pixel.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

constexpr int width = 3840;
constexpr int height = 2160;
constexpr unsigned hostRowBytes = width * 16 + 32; // float channels, rows padded as host worlds are

void BM_Convert32BitUhdFrameTo8Bit(benchmark::State& state) {
    std::vector<unsigned char> frame(size_t{hostRowBytes} * height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const float argb[4] = {1.0f, static_cast<float>(x % 256) / 255.0f,
                                   static_cast<float>(y % 256) / 255.0f, 0.5f};
            std::memcpy(frame.data() + size_t{hostRowBytes} * y + size_t{16} * x, argb, 16);
        }
    }
    std::vector<unsigned char> converted(size_t{width} * height * 4);
    for (auto _ : state) {
        const nimbit::graphics::pixel_buffer buffer(frame.data(), {width, height}, hostRowBytes,
                                                    nimbit::graphics::buffer_type::rgba32f);
        buffer.export_buffer(converted.data(), {width, height}, width * 4,
                             nimbit::graphics::buffer_type::rgba8);
        benchmark::DoNotOptimize(converted.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * frame.size()));
}
BENCHMARK(BM_Convert32BitUhdFrameTo8Bit)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
