// The gallery over a capture folder of 2,000 screenshots (offscreen): opening it with a cold and a
// warm thumbnail cache, listing the folder again, and scrolling. All must stay instant: nothing but
// the first screen's cache hits is decoded on this thread.
#include "gallery/gallery_popup_window.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/graphics/png_encoder.h"
#include "popup/preferences_data.h"
#include "popup/ui_colors.h"
#include "tests/foundation/temp_folder.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace nimbit;

constexpr int CaptureCount = 2000;

struct Folder {
    temp_folder tmp;
    PreferencesData prefs;
    std::vector<UIColors> themes = BuildColorThemes();
    file_path warmCache;

    Folder() {
        ::setenv("QUILLO_USER_DATA_DIR", (tmp / "user").to_string().c_str(), 1);
        make_dir(tmp / "captures");
        prefs.captureFolder = (tmp / "captures").to_string();
        std::vector<unsigned char> pixels(192 * 108 * 4);
        for (int i = 0; i < CaptureCount; ++i) {
            for (size_t p = 0; p < pixels.size(); ++p)
                pixels[p] = static_cast<unsigned char>(p * 7 + i);
            const file_path path = tmp / ("captures/capture " + std::to_string(i) + ".png").c_str();
            write_bytes(path, graphics::encode_png({pixels.data(), 192, 108, 192 * 4}));
            set_file_dates(path, 1'000'000 + i, 1'000'000 + i);
        }
        // Every thumbnail made once, into the cache the warm runs read.
        warmCache = tmp / "warm_cache";
        GalleryPopupWindow gallery(&themes[0], prefs, warmCache);
        gallery.Show(gallery.GetColors());
        gallery.GetLoader().Wait();
    }
};

Folder& Shared() {
    static Folder folder;
    return folder;
}

void BM_OpenColdCache(benchmark::State& state) {
    Folder& f = Shared();
    int run = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const file_path cache = f.tmp / ("cold_" + std::to_string(run++)).c_str();
        state.ResumeTiming();
        auto gallery = std::make_unique<GalleryPopupWindow>(&f.themes[0], f.prefs, cache);
        gallery->Show(gallery->GetColors());
        benchmark::DoNotOptimize(gallery->GetTiles().size());
        state.PauseTiming();
        gallery.reset(); // joins the loader's workers: not part of opening
        state.ResumeTiming();
    }
    state.counters["captures"] = CaptureCount;
}
BENCHMARK(BM_OpenColdCache)->Unit(benchmark::kMillisecond)->Iterations(5);

// The first screen painted from the cache at once.
void BM_OpenWarmCache(benchmark::State& state) {
    Folder& f = Shared();
    size_t painted = 0;
    for (auto _ : state) {
        auto gallery = std::make_unique<GalleryPopupWindow>(&f.themes[0], f.prefs, f.warmCache);
        gallery->Show(gallery->GetColors());
        painted = gallery->CountImages();
        state.PauseTiming();
        gallery.reset();
        state.ResumeTiming();
    }
    state.counters["first_screen_tiles"] = static_cast<double>(painted);
}
BENCHMARK(BM_OpenWarmCache)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_RefreshUnchanged(benchmark::State& state) {
    Folder& f = Shared();
    GalleryPopupWindow gallery(&f.themes[0], f.prefs, f.warmCache);
    gallery.Show(gallery.GetColors());
    for (auto _ : state)
        gallery.RefreshList();
}
BENCHMARK(BM_RefreshUnchanged)->Unit(benchmark::kMillisecond);

// One wheel step's worth of scrolling: pictures dropped and asked for, no decoding here.
void BM_ScrollStep(benchmark::State& state) {
    Folder& f = Shared();
    GalleryPopupWindow gallery(&f.themes[0], f.prefs, f.warmCache);
    gallery.Show(gallery.GetColors());
    nimbit::ui::scroll_bar& bar = gallery.GetScrollBar();
    int value = 0;
    for (auto _ : state) {
        value = (value + GalleryPopupWindow::TileHeight) % std::max(1, bar.get_max_scroll());
        bar.set_value(value);
    }
}
BENCHMARK(BM_ScrollStep)->Unit(benchmark::kMicrosecond);

} // namespace
