#include "gallery/thumbnail_loader.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/image_resample.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/utils/mapped_cache.h"
#include "nimbit/utils/thread_pool.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

using nimbit::_vec2;
using nimbit::file_path;
using nimbit::graphics::rgba_image;

namespace {

// Far above any screen capture; keeps a damaged header from asking for gigabytes.
constexpr unsigned long long MaxPixels = 16384ull * 16384ull;
constexpr size_t StampBytes = 8;

bool SameRequest(const GalleryImageRequest& a, const GalleryImageRequest& b) {
    return a.kind == b.kind && a.stamp == b.stamp && a.path == b.path;
}

void PutStamp(int64_t stamp, unsigned char* to) {
    const auto bits = static_cast<uint64_t>(stamp);
    for (size_t i = 0; i < StampBytes; ++i)
        to[i] = static_cast<unsigned char>(bits >> (8 * i));
}

int64_t GetStamp(const unsigned char* from) {
    uint64_t bits = 0;
    for (size_t i = 0; i < StampBytes; ++i)
        bits |= uint64_t(from[i]) << (8 * i);
    return static_cast<int64_t>(bits);
}

_vec2<int> ThumbnailSize(_vec2<int> capture) {
    const int width = ThumbnailLoader::ThumbnailWidth;
    // A strip thinner than one row in 512 still gets one row, so that it shows at all.
    const long long height = static_cast<long long>(capture.y) * width / capture.x;
    return {width, static_cast<int>(std::max(1ll, height))};
}

// decoded: the worker's own, kept between captures so that its memory is reused.
rgba_image Thumbnail(const file_path& capture, rgba_image& decoded) {
    std::vector<unsigned char> bytes;
    _vec2<int> size;
    // A JPG may come decoded at a reduced size; the thumbnail's height follows the full size.
    if (!nimbit::read_file(capture, bytes) ||
        !nimbit::graphics::decode_image(bytes.data(), bytes.size(), MaxPixels, decoded,
                                        ThumbnailLoader::ThumbnailWidth, &size))
        return {};
    bytes = {};
    return nimbit::graphics::resample(decoded, ThumbnailSize(size));
}

} // namespace

struct ThumbnailLoader::State {
    std::mutex mutex;
    std::condition_variable wake;    // work queued, or stopping
    std::condition_variable settled; // a job finished
    std::deque<GalleryImageRequest> queue;
    std::vector<GalleryImageRequest> underWay;
    std::vector<GalleryLoadedImage> ready;
    bool stopping = false;
    bool hasCache = false;
    nimbit::mapped_cache cache;
    std::vector<std::thread> workers;

    bool Cached(const file_path& path, int64_t stamp, rgba_image& out) {
        std::vector<unsigned char> value;
        if (!hasCache || !cache.read_data(path.to_string(), value) || value.size() <= StampBytes ||
            GetStamp(value.data()) != stamp)
            return false;
        rgba_image image;
        if (!nimbit::graphics::decode_png(value.data() + StampBytes, value.size() - StampBytes, MaxPixels,
                                          image) ||
            image.size.x != ThumbnailWidth)
            return false;
        out = std::move(image);
        return true;
    }

    rgba_image MakeAndStore(const file_path& path, int64_t stamp, rgba_image& decoded) {
        rgba_image image = Thumbnail(path, decoded);
        if (image.empty() || !hasCache)
            return image;
        const std::vector<unsigned char> png =
            nimbit::graphics::encode_png({image.pixels.data(), image.size.x, image.size.y, image.pitch()});
        if (png.empty())
            return image;
        std::vector<unsigned char> value(StampBytes + png.size());
        PutStamp(stamp, value.data());
        std::copy(png.begin(), png.end(), value.begin() + StampBytes);
        cache.set_data(path.to_string(), value.data(), value.size());
        return image;
    }

    rgba_image Make(const GalleryImageRequest& request, rgba_image& decoded) {
        if (request.kind == GalleryImageKind::Full) {
            std::vector<unsigned char> bytes;
            rgba_image image;
            if (nimbit::read_file(request.path, bytes))
                nimbit::graphics::decode_image(bytes.data(), bytes.size(), MaxPixels, image);
            return image;
        }
        rgba_image image;
        if (Cached(request.path, request.stamp, image))
            return image;
        return MakeAndStore(request.path, request.stamp, decoded);
    }

    void Work() {
        rgba_image decoded;
        std::unique_lock lock(mutex);
        for (;;) {
            if (queue.empty())
                decoded = {}; // a whole capture's memory is kept only while there is more to do
            wake.wait(lock, [&] { return stopping || !queue.empty(); });
            if (stopping)
                return;
            GalleryImageRequest request = std::move(queue.front());
            queue.pop_front();
            underWay.push_back(request);
            lock.unlock();
            GalleryLoadedImage done{request.path, request.stamp, request.kind, {}};
            try {
                nimbit::thread_scope_guard scope;
                done.image = Make(request, decoded);
            } catch (...) {
                // Out of memory or worse: the tile stays, with an empty image.
                done.image = {};
                decoded = {};
            }
            lock.lock();
            underWay.erase(std::find_if(underWay.begin(), underWay.end(), [&](const GalleryImageRequest& r) {
                return SameRequest(r, request);
            }));
            ready.push_back(std::move(done));
            settled.notify_all();
        }
    }
};

ThumbnailLoader::ThumbnailLoader(file_path cacheFile, uint32_t workers) : state(std::make_unique<State>()) {
    if (!cacheFile.empty()) {
        nimbit::make_dir(cacheFile.stem()); // the cache does not make its folder
        state->cache.load(cacheFile, false);
        state->hasCache = true;
    }
    const uint32_t count = workers ? workers : std::max(1u, std::thread::hardware_concurrency());
    for (uint32_t i = 0; i < count; ++i)
        state->workers.emplace_back([s = state.get()] { s->Work(); });
}

ThumbnailLoader::~ThumbnailLoader() {
    {
        std::lock_guard lock(state->mutex);
        state->stopping = true;
        state->queue.clear();
    }
    state->wake.notify_all();
    for (std::thread& worker : state->workers)
        worker.join();
}

void ThumbnailLoader::Request(std::vector<GalleryImageRequest> wanted) {
    {
        std::lock_guard lock(state->mutex);
        state->queue.clear();
        const auto known = [&](const GalleryImageRequest& r) {
            const auto same = [&](const auto& other) {
                return SameRequest(r, other);
            };
            return std::any_of(state->underWay.begin(), state->underWay.end(), same) ||
                   std::any_of(state->queue.begin(), state->queue.end(), same) ||
                   std::any_of(state->ready.begin(), state->ready.end(), [&](const GalleryLoadedImage& done) {
                       return r.kind == done.kind && r.stamp == done.stamp && r.path == done.path;
                   });
        };
        for (GalleryImageRequest& request : wanted)
            if (!known(request))
                state->queue.push_back(std::move(request));
    }
    state->wake.notify_all();
}

std::vector<GalleryLoadedImage> ThumbnailLoader::TakeReady() {
    std::lock_guard lock(state->mutex);
    return std::exchange(state->ready, {});
}

bool ThumbnailLoader::CachedThumbnail(const file_path& path, int64_t stamp, rgba_image& out) {
    try {
        return state->Cached(path, stamp, out);
    } catch (...) {
        return false;
    }
}

bool ThumbnailLoader::Busy() const {
    std::lock_guard lock(state->mutex);
    return !state->queue.empty() || !state->underWay.empty();
}

void ThumbnailLoader::Wait() {
    std::unique_lock lock(state->mutex);
    state->settled.wait(lock, [&] { return state->queue.empty() && state->underWay.empty(); });
}

void ThumbnailLoader::ClearCache() {
    if (state->hasCache)
        state->cache.clear(false);
}

rgba_image ThumbnailLoader::MakeThumbnail(const file_path& capture) {
    try {
        std::vector<unsigned char> bytes;
        rgba_image decoded;
        if (!nimbit::read_file(capture, bytes) ||
            !nimbit::graphics::decode_image(bytes.data(), bytes.size(), MaxPixels, decoded))
            return {};
        return nimbit::graphics::resample(decoded, ThumbnailSize(decoded.size));
    } catch (...) {
        return {};
    }
}
