// The thumbnail cache's two hot paths with a realistic fill: 1,000 values of 64 KiB present.
#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/mapped_cache.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int entries = 1000;
constexpr size_t value_size = 64 * 1024;

std::string name_of(int i) {
    return "/Users/artist/Documents/Tarvelo/Quillo/Capture/shot " + std::to_string(i) + ".png";
}

// A cache filled once per benchmark, in a folder of its own that is removed afterwards.
class filled_cache {
public:
    filled_cache() : value(value_size) {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/mapped_cache_bench.XXXXXX";
        if (!::mkdtemp(pattern.data()))
            std::abort();
        folder = pattern;
        for (size_t i = 0; i < value.size(); ++i)
            value[i] = static_cast<unsigned char>(i * 13);
        cache.load(nimbit::file_path(folder + "/effects_cache"), false);
        for (int i = 0; i < entries; ++i)
            cache.set_data(name_of(i), value.data(), value.size());
    }
    ~filled_cache() {
        cache.close();
        std::filesystem::remove_all(folder);
    }

    nimbit::mapped_cache cache;
    std::vector<unsigned char> value;
    std::string folder;
};

// Reads through a hit: every page (the cost the cache's mapping causes) or every byte (what a
// decoder adds on top).
void hit(benchmark::State& state, uint64_t stride) {
    filled_cache filled;
    std::vector<std::string> names;
    for (int i = 0; i < entries; ++i)
        names.push_back(name_of(i));
    size_t next = 0;
    for (auto _ : state) {
        const nimbit::cache_value v = filled.cache.get_data(names[next]);
        next = (next + 389) % entries; // a stride that visits every entry
        uint64_t sum = 0;
        for (uint64_t i = 0; i + 8 <= v.size; i += stride) {
            uint64_t word;
            std::memcpy(&word, v.data + i, 8);
            sum += word;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * value_size);
}

void CacheHit(benchmark::State& state) {
    hit(state, 4096);
}
BENCHMARK(CacheHit)->Unit(benchmark::kMicrosecond);

void CacheHitReadAll(benchmark::State& state) {
    hit(state, 8);
}
BENCHMARK(CacheHitReadAll)->Unit(benchmark::kMicrosecond);

// The floor for a hit whose bytes are all used: one copy of a value already in memory.
void CopyReference(benchmark::State& state) {
    std::vector<unsigned char> from(value_size, 7), to(value_size);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), value_size);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * value_size);
}
BENCHMARK(CopyReference)->Unit(benchmark::kMicrosecond);

// What every operation pays before it looks anything up: the object's mutex, the lock shared
// between processes and the check that nobody changed the files.
void CacheMiss(benchmark::State& state) {
    filled_cache filled;
    for (auto _ : state)
        benchmark::DoNotOptimize(filled.cache.get_data("/not/stored.png"));
}
BENCHMARK(CacheMiss)->Unit(benchmark::kMicrosecond);

// A hit right after another object on the same files (another host, say) stored a value: the
// header is read again before the lookup.
void CacheHitAfterAnotherStore(benchmark::State& state) {
    filled_cache filled;
    nimbit::mapped_cache other;
    other.load(nimbit::file_path(filled.folder + "/effects_cache"), false);
    size_t next = 0;
    for (auto _ : state) {
        other.set_data(name_of(static_cast<int>(next)), filled.value.data(), 1000);
        benchmark::DoNotOptimize(filled.cache.get_data(name_of(static_cast<int>(next + 1) % entries)));
        next = (next + 389) % entries;
    }
}
BENCHMARK(CacheHitAfterAnotherStore)->Unit(benchmark::kMicrosecond);

void CacheStore(benchmark::State& state) {
    filled_cache filled;
    std::vector<std::string> names;
    for (int i = 0; i < entries; ++i)
        names.push_back(name_of(i));
    size_t next = 0;
    for (auto _ : state) {
        // Replacing a present value: the old one is dropped and its range found again by first fit.
        const bool stored = filled.cache.set_data(names[next], filled.value.data(), filled.value.size());
        benchmark::DoNotOptimize(stored);
        next = (next + 389) % entries;
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * value_size);
}
BENCHMARK(CacheStore)->Unit(benchmark::kMicrosecond);

} // namespace
