// The gallery window (offscreen). Over 2,000 small screenshots: opening it with a cold and a warm
// thumbnail cache, listing the folder again, and scrolling, all of which must stay instant: nothing
// but the first screen's cache hits is decoded on this thread. Over full-screen captures, as the user
// sees it: 100 opened with a cold cache (shown, first screen painted, every thumbnail made, beside
// the one-by-one build) and with a warm one, and 1,000 scrolled through with the memory it takes.
#include "bench/gallery/capture_frames.h"
#include "gallery/gallery_popup_window.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "popup/preferences_data.h"
#include "popup/ui_colors.h"
#include "tests/foundation/temp_folder.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace nimbit;
using nimbit::ui::draw_call;
namespace offscreen = nimbit::ui::offscreen;

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

// --- full-screen captures ----------------------------------------------------------------------------

constexpr int FewCaptures = 100, ManyCaptures = 1000;
// Rows of grain in each of the 1,000: enough to cost a decode, little enough to write them fast.
constexpr int GrainRows = 64;
// Of the 1,000, the first ones drawn; the others are their copies.
constexpr int DistinctCaptures = 100;

using Clock = std::chrono::steady_clock;
using gallery_bench::ProcessSeconds;
using gallery_bench::ResidentMB;

double MsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct UhdFolders {
    temp_folder tmp; // user data folders, one per run: each starts with an empty cache
    file_path few = gallery_bench::DataFolder("uhd-100");
    file_path many = gallery_bench::DataFolder("uhd-1000");
    std::vector<UIColors> themes = BuildColorThemes();
    int runs = 0;

    UhdFolders() {
        gallery_bench::EnsureCaptures(few, FewCaptures, gallery_bench::Height, FewCaptures);
        gallery_bench::EnsureCaptures(many, ManyCaptures, GrainRows, DistinctCaptures);
    }
    // A user data folder of its own for the next window, so that its cache starts empty.
    file_path NewUserFolder() {
        const file_path user = tmp / ("user-" + std::to_string(runs++)).c_str();
        ::setenv("QUILLO_USER_DATA_DIR", user.to_string().c_str(), 1);
        return user;
    }
};

UhdFolders& Uhd() {
    static UhdFolders folders;
    return folders;
}

// Runs a gallery window as the host's event loop would: the poll timer ticks every PollInterval of
// real time (the loader's workers have the cores meanwhile) and what is dirty is painted after each
// tick. Notes which tiles were drawn with their thumbnail.
class Driver {
public:
    explicit Driver(GalleryPopupWindow& gallery) : gallery(gallery), native(offscreen::native_of(gallery)) {}

    void Paint() {
        native.paint_pending();
        const auto& tiles = gallery.GetTiles();
        painted.resize(tiles.size());
        const auto [first, last] = gallery.ViewRange();
        std::map<std::pair<int, int>, size_t> at;
        for (size_t i = first; i < last; ++i) {
            const ivec2 p = tiles[i]->calc_absolute_pos();
            at[{p.x, p.y}] = i;
        }
        for (const draw_call& c : native.get_canvas().calls_named("draw_image"))
            if (c.image_size.x == ThumbnailLoader::ThumbnailWidth)
                if (auto it = at.find({c.origin.x, c.origin.y}); it != at.end())
                    painted[it->second] = true;
        // The record of a thousand paints would count as the gallery's memory.
        native.get_canvas().clear_calls();
    }
    // Whether every tile in view was drawn with its thumbnail since the last Forget.
    bool ViewPainted() const {
        const auto [first, last] = gallery.ViewRange();
        for (size_t i = first; i < last; ++i)
            if (i >= painted.size() || !painted[i])
                return false;
        return last > first;
    }
    // The window stops its poll timer once the loader has nothing left to do.
    bool Idle() const { return !gallery.get_root().has_timer(GalleryPopupWindow::PollTimer); }
    void Forget() { painted.assign(painted.size(), false); }

    // Ticks until done() holds; false when it did not within limitSeconds.
    template <class Done> bool TickUntil(Done done, double limitSeconds = 120) {
        const Clock::time_point start = Clock::now();
        while (!done()) {
            if (MsSince(start) > limitSeconds * 1000)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(GalleryPopupWindow::PollInterval));
            offscreen::advance_ms(GalleryPopupWindow::PollInterval);
            Paint();
        }
        return true;
    }

private:
    GalleryPopupWindow& gallery;
    offscreen::offscreen_window& native;
    std::vector<bool> painted;
};

// The window as the popup makes it: the default cache under the user data folder, a worker per core
// unless told (workers: the benchmark's argument).
std::unique_ptr<GalleryPopupWindow> OpenGallery(PreferencesData& prefs, uint32_t workers) {
    auto gallery = std::make_unique<GalleryPopupWindow>(&Uhd().themes[0], prefs, file_path(), workers);
    gallery->Show(gallery->GetColors());
    return gallery;
}

std::vector<file_path> Listed(const file_path& folder, std::vector<int64_t>& stamps) {
    std::vector<file_path> paths;
    for (int i = 0; i < FewCaptures; ++i) {
        paths.push_back(folder.append(file_path(gallery_bench::CaptureName(i))));
        stamps.push_back(gallery_bench::CaptureTime(i));
    }
    return paths;
}

// Cold cache, 100 captures: shown, first screen painted, every thumbnail made (the iteration's time),
// and the one-by-one build of the same thumbnails right after, in the same run.
void BM_Uhd100Cold(benchmark::State& state) {
    UhdFolders& f = Uhd();
    PreferencesData prefs;
    prefs.captureFolder = f.few.to_string();
    std::vector<int64_t> stamps;
    const std::vector<file_path> captures = Listed(f.few, stamps);
    double shown = 0, firstScreen = 0, all = 0, oneByOne = 0, cpuFirst = 0, cpuAll = 0, cpuOneByOne = 0;
    size_t firstTiles = 0;
    for (auto _ : state) {
        f.NewUserFolder();
        double cpu = ProcessSeconds();
        const Clock::time_point start = Clock::now();
        std::unique_ptr<GalleryPopupWindow> gallery = OpenGallery(prefs, uint32_t(state.range(0)));
        Driver driver(*gallery);
        driver.Paint();
        shown += MsSince(start);
        if (!driver.TickUntil([&] { return driver.ViewPainted(); }))
            state.SkipWithError("the first screen was never painted");
        firstScreen += MsSince(start);
        cpuFirst += ProcessSeconds() - cpu;
        firstTiles = gallery->ViewRange().second - gallery->ViewRange().first;
        if (!driver.TickUntil([&] { return driver.Idle(); }))
            state.SkipWithError("the loader never finished");
        const double ms = MsSince(start);
        all += ms;
        cpuAll += ProcessSeconds() - cpu;
        state.SetIterationTime(ms / 1000);
        gallery.reset();

        cpu = ProcessSeconds();
        const Clock::time_point reference = Clock::now();
        gallery_bench::MakeOneByOne(f.tmp / "one-by-one/effects_cache", captures, stamps);
        oneByOne += MsSince(reference);
        cpuOneByOne += ProcessSeconds() - cpu;
    }
    const double n = double(state.iterations());
    state.counters["shown_ms"] = shown / n;
    state.counters["first_screen_ms"] = firstScreen / n;
    state.counters["first_screen_tiles"] = double(firstTiles);
    state.counters["all_ms"] = all / n;
    state.counters["one_by_one_ms"] = oneByOne / n;
    state.counters["ratio"] = all / oneByOne;
    state.counters["cpu_first_screen_ms"] = cpuFirst * 1000 / n;
    state.counters["cpu_all_ms"] = cpuAll * 1000 / n;
    state.counters["cpu_one_by_one_ms"] = cpuOneByOne * 1000 / n;
}
// 0: a worker per core, as the popup has it. 1: the loader on one core, beside the one-by-one build
// on one: what the loader's own work costs, apart from the cores other processes leave free.
BENCHMARK(BM_Uhd100Cold)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(1)->UseManualTime();

// Warm cache, 100 captures: the first screen painted.
void BM_Uhd100Warm(benchmark::State& state) {
    UhdFolders& f = Uhd();
    PreferencesData prefs;
    prefs.captureFolder = f.few.to_string();
    f.NewUserFolder();
    OpenGallery(prefs, 0)->GetLoader().Wait(); // every thumbnail made once, into the cache
    double firstScreen = 0, cpuFirst = 0;
    for (auto _ : state) {
        const double cpu = ProcessSeconds();
        const Clock::time_point start = Clock::now();
        std::unique_ptr<GalleryPopupWindow> gallery = OpenGallery(prefs, 0);
        Driver driver(*gallery);
        driver.Paint();
        if (!driver.TickUntil([&] { return driver.ViewPainted(); }))
            state.SkipWithError("the first screen was never painted");
        const double ms = MsSince(start);
        firstScreen += ms;
        cpuFirst += ProcessSeconds() - cpu;
        state.SetIterationTime(ms / 1000);
        gallery.reset();
    }
    const double n = double(state.iterations());
    state.counters["first_screen_ms"] = firstScreen / n;
    state.counters["cpu_first_screen_ms"] = cpuFirst * 1000 / n;
}
BENCHMARK(BM_Uhd100Warm)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();

// 1,000 captures, cold cache, scrolled from top to bottom a screen at a time, each screen's
// thumbnails painted before the next step: how much the process's resident memory grows.
void BM_Uhd1000Scroll(benchmark::State& state) {
    UhdFolders& f = Uhd();
    PreferencesData prefs;
    prefs.captureFolder = f.many.to_string();
    double growth = 0, peak = 0, steps = 0, cpuScroll = 0;
    for (auto _ : state) {
        f.NewUserFolder();
        ::malloc_trim(0); // what earlier runs freed must not hide this run's growth
        const double before = ResidentMB();
        const double cpu = ProcessSeconds();
        const Clock::time_point start = Clock::now();
        std::unique_ptr<GalleryPopupWindow> gallery = OpenGallery(prefs, 0);
        Driver driver(*gallery);
        driver.Paint();
        nimbit::ui::scroll_bar& bar = gallery->GetScrollBar();
        const int screen = gallery->GetGridView().get_rect().h;
        for (int value = 0;; value = std::min(value + screen, bar.get_max_scroll())) {
            bar.set_value(value);
            driver.Forget();
            driver.Paint();
            // Sampled at every tick: the peak may come while a screen's thumbnails are made.
            const auto painted = [&] {
                peak = std::max(peak, ResidentMB() - before);
                return driver.ViewPainted();
            };
            if (!driver.TickUntil(painted)) {
                state.SkipWithError("a screen was never painted");
                break;
            }
            ++steps;
            if (value >= bar.get_max_scroll())
                break;
        }
        growth = ResidentMB() - before;
        cpuScroll += ProcessSeconds() - cpu;
        state.SetIterationTime(MsSince(start) / 1000);
        gallery.reset();
    }
    const double n = double(state.iterations());
    state.counters["rss_growth_MB"] = growth;
    state.counters["rss_peak_growth_MB"] = peak;
    state.counters["steps"] = steps / n;
    state.counters["cpu_s"] = cpuScroll / n;
}
BENCHMARK(BM_Uhd1000Scroll)->Unit(benchmark::kMillisecond)->Iterations(1)->UseManualTime();

} // namespace
