// CollectEffectList over the host's full first-party effect list (313 effects) and 5,000 animation
// presets in 200 folders, served by the simulated host. Target: 30 ms.

#include "host/effects_popup.h"
#include "hostsim/sim_host.h"
#include "nimbit/filesystem/file_operations.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

struct Fixture {
    Fixture() {
        char pattern[] = "/tmp/quillo-bench-XXXXXX";
        root = mkdtemp(pattern) != nullptr ? pattern : "/tmp/quillo-bench";
        hostsim::Model model;
        model.effects = hostsim::LoadEffectsTable(QUILLO_HOST_EFFECTS);
        if (model.effects.empty()) {
            std::fprintf(stderr, "cannot read %s\n", QUILLO_HOST_EFFECTS);
            std::exit(1);
        }
        for (int folder = 0; folder < 200; ++folder) {
            for (int preset = 0; preset < 25; ++preset) {
                model.hostPresets.push_back("Category " + std::to_string(folder / 20) + "/Set " +
                                            std::to_string(folder) + "/Preset " + std::to_string(preset) +
                                            ".ffx");
            }
        }
        effectCount = model.effects.size();
        host = std::make_unique<hostsim::SimHost>(std::move(model), root);
        host->Materialize();
    }
    ~Fixture() {
        host.reset();
        nimbit::remove_dir(nimbit::file_path(root));
    }
    std::string root;
    size_t effectCount = 0;
    std::unique_ptr<hostsim::SimHost> host;
};

void BM_CollectEffectList(benchmark::State& state) {
    static Fixture fixture;
    size_t entries = 0;
    for (auto _ : state) {
        // A fresh controller each time, so that the preset path list does not grow across runs.
        state.PauseTiming();
        auto controller = std::make_unique<EffectsPopup>(fixture.host->Basic(), 7, AeVersionCC2018);
        state.ResumeTiming();
        std::vector<EffectData> catalogue = controller->CollectEffectList();
        entries = catalogue.size();
        benchmark::DoNotOptimize(catalogue.data());
        state.PauseTiming();
        controller.reset();
        fixture.host->idleHooks.clear();
        fixture.host->deathHooks.clear();
        state.ResumeTiming();
    }
    state.counters["effects"] = static_cast<double>(fixture.effectCount);
    state.counters["entries"] = static_cast<double>(entries);
}
BENCHMARK(BM_CollectEffectList)->Unit(benchmark::kMillisecond);

} // namespace
