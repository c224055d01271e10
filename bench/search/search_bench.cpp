// The search runs on every keystroke in the popup. Measured here over a large installation: the
// host's first-party effects, 5,000 presets, 300 aliases and 50 blacklist entries.
#include "popup/effect_alias.h"
#include "popup/effect_search.h"
#include "popup/usage_record.h"
#include "tests/search/fixture_catalogue.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>

namespace {

struct LargeInstallation {
    std::vector<EffectData> catalogue;
    std::vector<EffectAlias> blacklist, aliases;
    size_t effectCount = 0;

    LargeInstallation() {
        FixtureEffects fixture = LoadFixtureEffects(true);
        effectCount = fixture.effects.size();
        // Preset names built from words of the kind preset packs use, so that short texts hit many.
        const char* words[] = {"Blur",  "Fade",   "Slide",  "Glow",     "Type", "Wipe",  "Bounce",
                               "Zoom",  "Shake",  "Light",  "Gradient", "Text", "Title", "Reveal",
                               "Scale", "Spin",   "Drop",   "Gaussian", "Soft", "Hard",  "In",
                               "Out",   "Random", "Smooth", "Pop"};
        std::mt19937 rng(7);
        const size_t wordCount = sizeof words / sizeof words[0];
        int presetId = -1;
        for (int i = 0; i < 2500; ++i) {
            catalogue.push_back(MakePreset(presetId--, std::string(words[rng() % wordCount]) + " " +
                                                           words[rng() % wordCount] + " " +
                                                           std::to_string(i)));
        }
        for (EffectData& effect : fixture.effects)
            catalogue.push_back(std::move(effect));
        for (int i = 0; i < 2500; ++i) {
            catalogue.push_back(MakePreset(presetId--, std::string(words[rng() % wordCount]) + " " +
                                                           words[rng() % wordCount] + " User " +
                                                           std::to_string(i)));
        }
        for (int i = 0; i < 300; ++i) {
            const EffectData& target = catalogue[rng() % catalogue.size()];
            // A third are favorites, the rest aliases of a few letters.
            aliases.push_back(
                {i % 3 == 0 ? target.search_name : target.search_name.substr(0, 2) + std::to_string(i),
                 &target, nullptr});
        }
        for (int i = 0; i < 50; ++i)
            blacklist.push_back({"", &catalogue[rng() % catalogue.size()], nullptr});
    }
};

const LargeInstallation& Installation() {
    static const LargeInstallation installation;
    return installation;
}

// fourPasses: only the four substring passes, as the search answered before it looked further.
void BM_Search(benchmark::State& state, const char* text, bool fourPasses) {
    const LargeInstallation& data = Installation();
    EffectSearch search;
    search.options.beyond_substrings = !fourPasses;
    SearchResults results;
    for (auto _ : state) {
        search.Run(text, data.catalogue, data.blacklist, data.aliases, results);
        benchmark::DoNotOptimize(results.entries.data());
    }
    state.counters["results"] = static_cast<double>(results.entries.size());
    state.counters["catalogue"] = static_cast<double>(data.catalogue.size());
}

// Every text twice, the four passes alone and then all passes. "zzz" and "xylophone quartz" find
// nothing at all, the worst case of the typo-tolerant pass.
#define SEARCH_BENCH(name, text)                                                                             \
    BENCHMARK_CAPTURE(BM_Search, name##_four, text, true)->Unit(benchmark::kMicrosecond);                    \
    BENCHMARK_CAPTURE(BM_Search, name##_all, text, false)->Unit(benchmark::kMicrosecond)
SEARCH_BENCH(a, "a");
SEARCH_BENCH(bl, "bl");
SEARCH_BENCH(blur, "blur");
SEARCH_BENCH(gaussian, "gaussian");
SEARCH_BENCH(zzz, "zzz");
SEARCH_BENCH(blur_box, "blur box");
SEARCH_BENCH(gausian_blur, "gausian blur");
SEARCH_BENCH(xylophone_quartz, "xylophone quartz");

// All passes with "recently used first" on: a full usage record (500 entries), its scores made once
// as the popup makes them, so the keystroke pays only for the reordering.
void BM_SearchRanked(benchmark::State& state, const char* text) {
    const LargeInstallation& data = Installation();
    constexpr int64_t now = 1'800'000'000;
    UsageRecord record;
    std::mt19937 rng(11);
    for (int i = 0; i < 3000; ++i)
        record.Record(data.catalogue[rng() % data.catalogue.size()], now - i * 60);
    EffectSearch search;
    search.usage = record.Scores(data.catalogue, now);
    SearchResults results;
    for (auto _ : state) {
        search.Run(text, data.catalogue, data.blacklist, data.aliases, results);
        benchmark::DoNotOptimize(results.entries.data());
    }
    state.counters["results"] = static_cast<double>(results.entries.size());
}
BENCHMARK_CAPTURE(BM_SearchRanked, a_ranked, "a")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_SearchRanked, blur_ranked, "blur")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_SearchRanked, gaussian_ranked, "gaussian")->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    const LargeInstallation& data = Installation();
    std::printf("catalogue: %zu effects + 5000 presets, %zu aliases, %zu blacklist entries\n",
                data.effectCount, data.aliases.size(), data.blacklist.size());
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
