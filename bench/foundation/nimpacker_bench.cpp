#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/nimpacker.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using nimbit::file_path;

// A folder of 100 text-like files of a few kilobytes, like an exported settings folder.
struct pack_fixture {
    file_path root;
    pack_fixture() {
        std::string pattern = "/tmp/pack-bench-XXXXXX";
        if (const char* made = ::mkdtemp(pattern.data()))
            root = file_path(std::string(made));
        nimbit::make_dir(root.append("src"));
        for (int i = 0; i < 100; ++i) {
            std::string text;
            for (int line = 0; line < 60 + i; ++line)
                text += "alias" + std::to_string(line * 31 + i) + "\tGaussian Blur\tBlur & Sharpen\t" +
                        std::to_string(line) + "\n";
            const file_path file = root.append("src").append(file_path("file" + std::to_string(i) + ".txt"));
            if (std::FILE* f = std::fopen(file.c_str(), "wb")) {
                std::fwrite(text.data(), 1, text.size(), f);
                std::fclose(f);
            }
        }
    }
    ~pack_fixture() { nimbit::remove_dir(root); }
};

void BM_Pack100Files(benchmark::State& state) {
    pack_fixture fixture;
    const file_path pack = fixture.root.append("out.kvs");
    for (auto _ : state)
        if (nimbit::nimpacker::pack_files(fixture.root.append("src"), pack) != 0)
            state.SkipWithError("pack failed");
}
BENCHMARK(BM_Pack100Files)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Unpack100Files(benchmark::State& state) {
    pack_fixture fixture;
    const file_path pack = fixture.root.append("out.kvs");
    nimbit::nimpacker::pack_files(fixture.root.append("src"), pack);
    const file_path out = fixture.root.append("dst");
    // Every round unpacks into a fresh folder, as an import does.
    for (auto _ : state) {
        state.PauseTiming();
        nimbit::remove_dir(out);
        nimbit::make_dir(out);
        state.ResumeTiming();
        if (nimbit::nimpacker::unpack_files(pack, out) != 0)
            state.SkipWithError("unpack failed");
    }
}
BENCHMARK(BM_Unpack100Files)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
