// The frame capture of a UHD (3840 x 2160) 32-bit frame, timed from the moment the host's render
// returns, as host/frame_capture.cpp does it: the host's float world (rows padded) converted straight
// into the bitmap on the pool, then
//   - the capture folder: the hand-off to the writer (what the host's main thread waits for) and the
//     time until the PNG is on disk;
//   - the clipboard.
// Beside them, in the same run: the earlier path (a float copy of the frame, the 8-bit export, the
// channel reorder, the PNG written on the main thread) and libpng at its default settings encoding
// the same 8-bit frame, the reference for the encode alone.
// Run with --benchmark_counters_tabular=true; the CPU column is the whole process's.

#include "bench/support/libpng_reference.h"
#include "gallery/capture_writer.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/graphics/pixel.h"
#include "nimbit/ui/bitmap.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using nimbit::graphics::buffer_type;

constexpr int width = 3840;
constexpr int height = 2160;
constexpr unsigned hostRowBytes = width * 16 + 32; // float channels, rows padded as host worlds are

// Something like a rendered frame, alpha first: smooth gradients, a few flat shapes, a little grain.
const std::vector<unsigned char>& HostFrame() {
    static const std::vector<unsigned char> frame = [] {
        std::vector<unsigned char> bytes(size_t{hostRowBytes} * height);
        unsigned seed = 1;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                seed = seed * 1103515245u + 12345u;
                const float grain = static_cast<float>((seed >> 29) & 3u) / 255.0f;
                const bool inBlock = (x / 480 + y / 270) % 3 == 0;
                const float argb[4] = {1.0f, inBlock ? 0.8f : float(x) / width + grain,
                                       inBlock ? 0.15f : float(y) / height + grain,
                                       float((x + y) % 6000) / 6000 + grain};
                std::memcpy(bytes.data() + size_t{hostRowBytes} * y + size_t{16} * x, argb, 16);
            }
        return bytes;
    }();
    return frame;
}

nimbit::file_path Folder() {
    static const nimbit::file_path folder = [] {
        const char* base = std::getenv("TMPDIR");
        nimbit::file_path path =
            nimbit::file_path(base && *base ? base : "/tmp").append("quillo-capture-bench");
        nimbit::make_dir(path);
        return path;
    }();
    return folder;
}

// What the capture does before it delivers: the frame straight into a bitmap.
nimbit::ui::bitmap Convert() {
    nimbit::ui::bitmap image;
    image.create({width, height}, nimbit::ui::image_alpha::alpha);
    nimbit::ui::bitmap_data locked = image.lock();
    nimbit::graphics::convert_argb_to_rgba8(HostFrame().data(), {width, height}, hostRowBytes,
                                            buffer_type::rgba32f, locked.bits, locked.pitch);
    image.unlock(locked);
    return image;
}

void CaptureToFolderMainThread(benchmark::State& state) {
    HostFrame(); // made before the clock runs
    CaptureWriter writer;
    int n = 0;
    for (auto _ : state) {
        writer.Write(Convert(), Folder().append("main" + std::to_string(n++ % 2) + ".png"));
        state.PauseTiming(); // the writer's work is the next figure
        writer.Flush();
        state.ResumeTiming();
    }
}

void CaptureToFolderOnDisk(benchmark::State& state) {
    HostFrame();
    CaptureWriter writer;
    for (auto _ : state) {
        writer.Write(Convert(), Folder().append("disk.png"));
        writer.Flush();
    }
}

void CaptureToClipboard(benchmark::State& state) {
    HostFrame();
    for (auto _ : state)
        Convert().copy_to_clipboard();
}

// The earlier path, all on the main thread.
void CaptureToFolderBefore(benchmark::State& state) {
    HostFrame();
    for (auto _ : state) {
        std::vector<unsigned char> converted(size_t{width} * height * 4);
        const nimbit::graphics::pixel_buffer buffer(HostFrame().data(), {width, height}, hostRowBytes,
                                                    buffer_type::rgba32f);
        buffer.export_buffer(converted.data(), {width, height}, width * 4, buffer_type::rgba8);
        nimbit::ui::bitmap image;
        image.create({width, height}, nimbit::ui::image_alpha::alpha);
        nimbit::ui::bitmap_data locked = image.lock();
        for (int y = 0; y < height; ++y) {
            const unsigned char* from = converted.data() + size_t{width} * 4 * y;
            unsigned char* to = locked.bits + size_t{locked.pitch} * y;
            for (int x = 0; x < width; ++x, from += 4, to += 4) {
                to[0] = from[1], to[1] = from[2], to[2] = from[3], to[3] = from[0];
            }
        }
        image.unlock(locked);
        image.save_image(Folder().append("before.png"), nimbit::ui::image_format::png);
    }
}

void LibpngDefaultEncode(benchmark::State& state) {
    nimbit::ui::bitmap image = Convert();
    const nimbit::ui::bitmap_data locked = image.lock();
    size_t bytes = 0;
    for (auto _ : state)
        bytes = libpng_default_encode(locked.bits, width, height, static_cast<int>(locked.pitch));
    image.unlock(locked);
    state.counters["MB"] = double(bytes) / 1e6;
}

} // namespace

BENCHMARK(CaptureToFolderMainThread)
    ->Name("capture_3840x2160_32bit/folder_main_thread")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->MinTime(2);
BENCHMARK(CaptureToFolderOnDisk)
    ->Name("capture_3840x2160_32bit/folder_png_on_disk")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->MinTime(2);
BENCHMARK(CaptureToClipboard)
    ->Name("capture_3840x2160_32bit/clipboard")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->MinTime(2);
BENCHMARK(CaptureToFolderBefore)
    ->Name("capture_3840x2160_32bit/folder_before_all_on_main_thread")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Iterations(5);
BENCHMARK(LibpngDefaultEncode)
    ->Name("capture_3840x2160_32bit/png_libpng_default_encode_only")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Iterations(2);
