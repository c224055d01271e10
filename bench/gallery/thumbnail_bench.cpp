// The gallery's thumbnails for 100 full-screen PNG captures: the plain one-by-one build (decode
// whole, scale, encode, store, one capture after another on one thread) beside the loader with a
// cold cache, then a first screen of 30 from a warm cache. Also one capture's PNG decode alone.
#include "bench/gallery/capture_frames.h"
#include "gallery/thumbnail_loader.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/image_resample.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/utils/mapped_cache.h"
#include "tests/foundation/temp_folder.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using namespace nimbit;

namespace {

using gallery_bench::ProcessSeconds;

constexpr int Captures = 100, FirstScreen = 30;

struct Folder {
    temp_folder tmp;
    std::vector<file_path> captures;

    Folder() {
        const file_path made = gallery_bench::DataFolder("uhd-100");
        gallery_bench::EnsureCaptures(made, Captures, gallery_bench::Height, Captures);
        for (int i = 0; i < Captures; ++i)
            captures.push_back(made.append(file_path(gallery_bench::CaptureName(i))));
    }

    file_path Cache() const { return tmp / "cache/effects_cache"; }
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

void OneByOne(benchmark::State& state) {
    const Folder& folder = Made();
    std::vector<int64_t> stamps;
    for (const GalleryImageRequest& request : folder.Wanted(Captures))
        stamps.push_back(request.stamp);
    const double cpu = ProcessSeconds();
    for (auto _ : state)
        gallery_bench::MakeOneByOne(folder.Cache(), folder.captures, stamps);
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

// The rest of a thumbnail's making once the capture is decoded: the scale to 512 wide.
void ResampleCapture(benchmark::State& state) {
    std::ifstream in(Made().captures[0].c_str(), std::ios::binary);
    const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(in), {}};
    graphics::rgba_image image;
    graphics::decode_png(bytes.data(), bytes.size(), ~0ull, image);
    for (auto _ : state)
        benchmark::DoNotOptimize(graphics::resample(image, {ThumbnailLoader::ThumbnailWidth, 288}));
}

} // namespace

BENCHMARK(DecodeCapturePng)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(ResampleCapture)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(OneByOne)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(LoaderCold)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(WarmFirstScreenCached)->Unit(benchmark::kMillisecond)->MinTime(0.5)->UseRealTime();
BENCHMARK(WarmFirstScreenLoader)->Unit(benchmark::kMillisecond)->MinTime(0.5)->UseRealTime();
