#include "nimbit/utils/thread_pool.h"

#include <benchmark/benchmark.h>

namespace {

// The fixed cost of one parallel loop: wake every worker, run nothing, wait for all of them.
void BM_ThreadPoolEmptyDispatch(benchmark::State& state) {
    nimbit::thread_pool& pool = nimbit::thread_pool::get_instance();
    auto job = [](const nimbit::thread_worker_data& d) {
        benchmark::DoNotOptimize(d.begin);
    };
    for (auto _ : state)
        pool.enqueue(0, job);
    state.counters["workers"] = pool.get_worker_count();
}
BENCHMARK(BM_ThreadPoolEmptyDispatch)->UseRealTime();

} // namespace
