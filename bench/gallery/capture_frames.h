#pragma once

// Full-screen captures for the gallery's benches: frames like a captured screen, their PNGs, and a
// folder of them kept under the build tree so that a rerun does not make them again.

#include "bench/support/capture_frame.h"
#include "gallery/thumbnail_loader.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/utils/mapped_cache.h"
#include "tests/foundation/temp_folder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

namespace gallery_bench {

using bench_frames::Frame;
using bench_frames::FramePng;
using bench_frames::Height;
using bench_frames::Width;

// Where generated captures are kept between runs.
inline nimbit::file_path DataFolder(const std::string& name) {
    return nimbit::file_path(std::string(QUILLO_SOURCE_DIR) + "/build/bench-data/" + name);
}

inline std::string CaptureName(int index) {
    char name[32];
    std::snprintf(name, sizeof name, "capture %04d.png", index);
    return name;
}

// The capture time of capture index: later ones list first.
inline int64_t CaptureTime(int index) {
    return 1'700'000'000 + index;
}

// count captures in folder, made where missing on every core: the first `distinct` drawn with
// grainRows rows of grain, the rest copies of those (what the gallery does with a file does not
// depend on its pixels; making a thousand UHD frames does take long). A file appears under its name
// only when whole, so an interrupted run leaves nothing half written.
inline void EnsureCaptures(const nimbit::file_path& folder, int count, int grainRows, int distinct) {
    const auto at = [&](int i, const char* suffix = "") {
        return folder.append(nimbit::file_path(CaptureName(i) + suffix));
    };
    nimbit::make_dir(folder);
    std::vector<int> missing;
    for (int i = 0; i < count; ++i)
        if (nimbit::file_stats(at(i)).size == 0)
            missing.push_back(i);
    const auto make = [&](int i) {
        const bool drawn = i < distinct;
        if (drawn ? !write_bytes(at(i, ".part"), FramePng(i, grainRows))
                  : !nimbit::copy_file(at(i % distinct), at(i, ".part")))
            std::abort();
        if (std::rename(at(i, ".part").c_str(), at(i).c_str()) != 0)
            std::abort();
    };
    const unsigned threads = std::max(1u, std::thread::hardware_concurrency());
    // missing is in order: the drawn ones first, on every core, then the copies of them.
    const auto first =
        std::partition_point(missing.begin(), missing.end(), [&](int i) { return i < distinct; });
    std::vector<std::thread> makers;
    for (unsigned t = 0; t < threads; ++t)
        makers.emplace_back([&, t] {
            for (size_t k = t; k < size_t(first - missing.begin()); k += threads)
                make(missing[k]);
        });
    for (std::thread& maker : makers)
        maker.join();
    for (auto i = first; i != missing.end(); ++i)
        make(*i);
    for (int i = 0; i < count; ++i)
        nimbit::set_file_dates(at(i), CaptureTime(i), CaptureTime(i));
}

// A thumbnail's cache entry: the stamp, little-endian, then the PNG.
inline void StoreStamped(nimbit::mapped_cache& cache, const nimbit::file_path& path, int64_t stamp,
                         const std::vector<unsigned char>& png) {
    std::vector<unsigned char> value(8 + png.size());
    for (int i = 0; i < 8; ++i)
        value[size_t(i)] = static_cast<unsigned char>(uint64_t(stamp) >> (8 * i));
    std::copy(png.begin(), png.end(), value.begin() + 8);
    cache.set_data(path.to_string(), value.data(), value.size());
}

// The plain way to the thumbnails, the reference for the loader: one capture after another on
// this thread, each decoded whole, scaled, encoded and stored, into an emptied cache.
inline void MakeOneByOne(const nimbit::file_path& cacheFile, const std::vector<nimbit::file_path>& captures,
                         const std::vector<int64_t>& stamps) {
    nimbit::make_dir(cacheFile.stem());
    nimbit::mapped_cache cache;
    cache.load(cacheFile, false);
    cache.clear(false);
    for (size_t i = 0; i < captures.size(); ++i) {
        const nimbit::graphics::rgba_image image = ThumbnailLoader::MakeThumbnail(captures[i]);
        const auto png =
            nimbit::graphics::encode_png({image.pixels.data(), image.size.x, image.size.y, image.pitch()});
        StoreStamped(cache, captures[i], stamps[i], png);
    }
}

// The process's CPU time in seconds, every thread's included.
inline double ProcessSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

// The process's resident memory now, in MB (0 when /proc cannot be read).
inline double ResidentMB() {
    std::FILE* status = std::fopen("/proc/self/status", "r");
    if (!status)
        return 0;
    char line[256];
    double kb = 0;
    while (std::fgets(line, sizeof line, status))
        if (std::sscanf(line, "VmRSS: %lf kB", &kb) == 1)
            break;
    std::fclose(status);
    return kb / 1024.0;
}

} // namespace gallery_bench
