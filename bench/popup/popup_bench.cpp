// A keystroke in the popup's search field, through to the rebuilt rows painted (offscreen), over a
// large installation: the host's first-party effects and 5,000 presets. And the popup shown and
// hidden many times with a search each, watching resident memory.
#include "nimbit/ui/offscreen/offscreen_drawer.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "popup/effects_popup_window.h"
#include "popup/preferences_data.h"
#include "tests/foundation/temp_folder.h"
#include "tests/search/fixture_catalogue.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <unistd.h>

namespace {

using namespace nimbit::ui;

std::vector<EffectData> LargeCatalogue() {
    std::vector<EffectData> catalogue;
    FixtureEffects fixture = LoadFixtureEffects(true);
    const char* words[] = {"Blur",  "Fade", "Slide", "Glow",   "Type", "Wipe", "Bounce", "Zoom", "Shake",
                           "Light", "Text", "Title", "Reveal", "Soft", "In",   "Out",    "Pop"};
    std::mt19937 rng(7);
    int presetId = -1;
    for (int i = 0; i < 5000; ++i)
        catalogue.push_back(MakePreset(presetId--, std::string(words[rng() % std::size(words)]) + " " +
                                                       words[rng() % std::size(words)] + " " +
                                                       std::to_string(i)));
    for (EffectData& effect : fixture.effects)
        catalogue.push_back(std::move(effect));
    return catalogue;
}

struct Bench {
    temp_folder folder;
    PreferencesData prefs;
    std::unique_ptr<EffectsPopupWindow> popup;
    size_t catalogueSize = 0;

    Bench() {
        ::setenv("QUILLO_USER_DATA_DIR", (folder / "user").to_string().c_str(), 1);
        ::setenv("QUILLO_COMMON_DATA_DIR", (folder / "common").to_string().c_str(), 1);
        ::setenv("QUILLO_DOCS_DIR", (folder / "docs").to_string().c_str(), 1);
        popup = std::make_unique<EffectsPopupWindow>(prefs);
        const std::vector<EffectData> catalogue = LargeCatalogue();
        catalogueSize = catalogue.size();
        popup->SetEffectData(catalogue);
        popup->Show(std::string_view("Project"), std::string_view("Comp"), std::string_view("Layer"),
                    PopupCommand{PopupCommand::Show});
        popup->GetSearchField().focus(focus_cause::keyboard);
        Paint();
    }
    // The offscreen drawer keeps a record of every call for tests; dropped here so that the record
    // does not count as the popup's memory.
    void Paint() {
        offscreen::native_of(*popup).paint_pending();
        offscreen::native_of(*popup).get_canvas().clear_calls();
    }
};

Bench& Shared() {
    static Bench bench;
    return bench;
}

// The text before the keystroke, and the character typed.
void BM_Keystroke(benchmark::State& state, const char* before, char16_t typed) {
    Bench& b = Shared();
    for (auto _ : state) {
        state.PauseTiming();
        b.popup->GetSearchField().set_text(before, true);
        b.Paint();
        state.ResumeTiming();
        offscreen::events_of(*b.popup).process_event(event_type::key_char, typed);
        b.Paint();
    }
    state.counters["rows"] = static_cast<double>(b.popup->GetRows().size());
    state.counters["catalogue"] = static_cast<double>(b.catalogueSize);
}

BENCHMARK_CAPTURE(BM_Keystroke, a, "", u'a')->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Keystroke, gaussian, "gaussia", u'n')->Unit(benchmark::kMillisecond);

long ResidentKiB() {
    long pages = 0, resident = 0;
    if (std::FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(f);
    }
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

void BM_ShowHideCycles(benchmark::State& state) {
    Bench& b = Shared();
    const char* texts[] = {"blur", "gaussian", "glow", "zzz"};
    auto cycle = [&](int i) {
        b.popup->Show(std::string_view("Project"), std::string_view("Comp"), std::string_view("Layer"),
                      PopupCommand{PopupCommand::Show});
        b.popup->GetSearchField().set_text(texts[i % 4], true);
        b.Paint();
        b.popup->hide();
    };
    for (int i = 0; i < 200; ++i) // warm up caches and allocator pools
        cycle(i);
    const long before = ResidentKiB();
    for (auto _ : state) {
        for (int i = 0; i < 10000; ++i)
            cycle(i);
    }
    state.counters["rss_before_KiB"] = static_cast<double>(before);
    state.counters["rss_growth_KiB"] = static_cast<double>(ResidentKiB() - before);
}

BENCHMARK(BM_ShowHideCycles)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char** argv) {
    std::printf("catalogue: %zu entries\n", Shared().catalogueSize);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    Shared().popup.reset();
    return 0;
}
