// The gallery's thumbnails for 100 full-screen PNG captures: the plain one-by-one build (decode
// whole, scale, encode, store, one capture after another on one thread) beside the loader with a
// cold cache, then a first screen of 30 from a warm cache. Also one capture's PNG decode alone.
#include "gallery/thumbnail_loader.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/utils/mapped_cache.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using namespace nimbit;

namespace {

constexpr int Width = 3840, Height = 2160, Captures = 100, FirstScreen = 30;

// Like a captured frame: gradients that move from capture to capture, a few flat panels and grain.
std::vector<unsigned char> Frame(int index) {
    std::vector<unsigned char> pixels(size_t(Width) * Height * 4);
    unsigned seed = 1u + unsigned(index) * 7919u;
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x) {
            seed = seed * 1103515245u + 12345u;
            const unsigned grain = (seed >> 29) & 3u;
            unsigned char* p = &pixels[(size_t(y) * Width + x) * 4];
            const bool panel = ((x + index * 40) / 480 + y / 270) % 3 == 0;
            p[0] = static_cast<unsigned char>(panel ? 200 - index
                                                    : (x + index * 17) * 255 / (Width + 1700) + grain);
            p[1] = static_cast<unsigned char>(panel ? 40 + index : y * 255 / Height + grain);
            p[2] = static_cast<unsigned char>((x + y + index * 9) / 24 + grain);
            p[3] = 255;
        }
    return pixels;
}

struct Folder {
    std::string root;
    std::vector<file_path> captures;

    Folder() {
        const char* base = std::getenv("TMPDIR");
        root = std::string(base && *base ? base : "/tmp") + "/quillo-gallery-bench-XXXXXX";
        if (!::mkdtemp(root.data()))
            std::abort();
        for (int i = 0; i < Captures; ++i) {
            const std::vector<unsigned char> pixels = Frame(i);
            const auto png = graphics::encode_png({pixels.data(), Width, Height, size_t(Width) * 4});
            captures.push_back(file_path(root).append(file_path("capture " + std::to_string(i) + ".png")));
            std::ofstream(captures.back().c_str(), std::ios::binary)
                .write(reinterpret_cast<const char*>(png.data()), std::streamsize(png.size()));
        }
    }
    ~Folder() { remove_dir(file_path(root)); }

    file_path Cache() const { return file_path(root).append(file_path("cache/effects_cache")); }
    std::vector<GalleryImageRequest> Wanted(int count) const {
        std::vector<GalleryImageRequest> out;
        for (int i = 0; i < count; ++i)
            out.push_back({captures[size_t(i)], 1000 + i});
        return out;
    }
};

const Folder& Made() {
    static const Folder folder;
    return folder;
}

// Time per capture (shown in seconds with a prefix) from the whole run's real time.
benchmark::Counter TimeEach() {
    return benchmark::Counter(Captures,
                              benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The whole process's CPU time, the loader's workers included, in seconds: on a machine whose
// cores are busy with other work the real time says little, this says what the work costs.
double ProcessSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

void StoreStamped(mapped_cache& cache, const file_path& path, int64_t stamp,
                  const std::vector<unsigned char>& png) {
    std::vector<unsigned char> value(8 + png.size());
    for (int i = 0; i < 8; ++i)
        value[size_t(i)] = static_cast<unsigned char>(uint64_t(stamp) >> (8 * i));
    std::copy(png.begin(), png.end(), value.begin() + 8);
    cache.set_data(path.to_string(), value.data(), value.size());
}

void OneByOne(benchmark::State& state) {
    const Folder& folder = Made();
    const double cpu = ProcessSeconds();
    for (auto _ : state) {
        mapped_cache cache;
        cache.load(folder.Cache(), false);
        cache.clear(false);
        for (int i = 0; i < Captures; ++i) {
            const graphics::rgba_image image = ThumbnailLoader::MakeThumbnail(folder.captures[size_t(i)]);
            const auto png =
                graphics::encode_png({image.pixels.data(), image.size.x, image.size.y, image.pitch()});
            StoreStamped(cache, folder.captures[size_t(i)], 1000 + i, png);
        }
    }
    state.counters["each"] = TimeEach();
    state.counters["cpu_each"] = (ProcessSeconds() - cpu) / double(state.iterations() * Captures);
}

void LoaderCold(benchmark::State& state) {
    const Folder& folder = Made();
    ThumbnailLoader loader(folder.Cache());
    size_t delivered = 0;
    double cpu = 0;
    for (auto _ : state) {
        state.PauseTiming();
        loader.ClearCache();
        const double start = ProcessSeconds();
        state.ResumeTiming();
        loader.Request(folder.Wanted(Captures));
        loader.Wait();
        delivered = loader.TakeReady().size();
        cpu += ProcessSeconds() - start;
    }
    state.counters["delivered"] = double(delivered);
    state.counters["each"] = TimeEach();
    state.counters["cpu_each"] = cpu / double(state.iterations() * Captures);
}

// Fills the cache once for the warm runs.
const Folder& Warm() {
    static const bool filled = [] {
        ThumbnailLoader loader(Made().Cache());
        loader.Request(Made().Wanted(Captures));
        loader.Wait();
        return true;
    }();
    (void)filled;
    return Made();
}

void WarmFirstScreenCached(benchmark::State& state) {
    const Folder& folder = Warm();
    ThumbnailLoader loader(folder.Cache(), 1);
    int hits = 0;
    for (auto _ : state) {
        hits = 0;
        graphics::rgba_image image;
        for (const auto& request : folder.Wanted(FirstScreen))
            hits += loader.CachedThumbnail(request.path, request.stamp, image);
    }
    state.counters["hits"] = hits;
}

void WarmFirstScreenLoader(benchmark::State& state) {
    const Folder& folder = Warm();
    ThumbnailLoader loader(folder.Cache());
    size_t delivered = 0;
    for (auto _ : state) {
        loader.Request(folder.Wanted(FirstScreen));
        loader.Wait();
        delivered = loader.TakeReady().size();
    }
    state.counters["delivered"] = double(delivered);
}

void DecodeCapturePng(benchmark::State& state) {
    std::ifstream in(Made().captures[0].c_str(), std::ios::binary);
    const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(in), {}};
    graphics::rgba_image image;
    for (auto _ : state)
        benchmark::DoNotOptimize(graphics::decode_png(bytes.data(), bytes.size(), ~0ull, image));
    state.counters["MB"] = double(bytes.size()) / 1e6;
}

} // namespace

BENCHMARK(DecodeCapturePng)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(OneByOne)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(LoaderCold)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(WarmFirstScreenCached)->Unit(benchmark::kMillisecond)->MinTime(0.5)->UseRealTime();
BENCHMARK(WarmFirstScreenLoader)->Unit(benchmark::kMillisecond)->MinTime(0.5)->UseRealTime();
