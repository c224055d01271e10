// TEMPORARY: a stand-in for the loader until its real code lands; just enough for the window's
// tests. Delete this file when merging it.
#include "gallery/thumbnail_loader.h"
#include "nimbit/ui/offscreen/image_codecs.h"
#include "tests/foundation/temp_folder.h"

#include <map>
#include <utility>

using namespace nimbit;
using namespace nimbit::ui;

namespace {
graphics::rgba_image Decode(const file_path& path) {
    graphics::rgba_image out;
    const std::vector<unsigned char> bytes = read_bytes(path);
    offscreen::decode_image(bytes.data(), bytes.size(), 1u << 26, out);
    return out;
}
std::map<std::string, std::pair<int64_t, graphics::rgba_image>>& Cache() {
    static std::map<std::string, std::pair<int64_t, graphics::rgba_image>> cache;
    return cache;
}
} // namespace

struct ThumbnailLoader::State {
    std::string prefix;
    std::vector<GalleryImageRequest> queue;
    std::vector<GalleryLoadedImage> ready;
};
ThumbnailLoader::ThumbnailLoader(file_path cacheFile, uint32_t) : state(std::make_unique<State>()) {
    state->prefix = cacheFile.to_string() + "|";
}
ThumbnailLoader::~ThumbnailLoader() = default;
void ThumbnailLoader::Request(std::vector<GalleryImageRequest> wanted) {
    state->queue = std::move(wanted);
}
std::vector<GalleryLoadedImage> ThumbnailLoader::TakeReady() {
    return std::exchange(state->ready, {});
}
bool ThumbnailLoader::CachedThumbnail(const file_path& path, int64_t stamp, graphics::rgba_image& out) {
    auto it = Cache().find(state->prefix + path.to_string());
    if (it == Cache().end() || it->second.first != stamp)
        return false;
    out = it->second.second;
    return true;
}
bool ThumbnailLoader::Busy() const {
    return !state->queue.empty();
}
void ThumbnailLoader::Wait() {
    for (GalleryImageRequest& r : std::exchange(state->queue, {})) {
        GalleryLoadedImage done{r.path, r.stamp, r.kind, {}};
        if (r.kind == GalleryImageKind::Full) {
            done.image = Decode(r.path);
        } else if (!CachedThumbnail(r.path, r.stamp, done.image)) {
            done.image = MakeThumbnail(r.path);
            if (!done.image.empty())
                Cache()[state->prefix + r.path.to_string()] = {r.stamp, done.image};
        }
        state->ready.push_back(std::move(done));
    }
}
void ThumbnailLoader::ClearCache() {
    Cache().clear();
}
graphics::rgba_image ThumbnailLoader::MakeThumbnail(const file_path& capture) {
    const graphics::rgba_image whole = Decode(capture);
    if (whole.empty())
        return {};
    return offscreen::resample(whole, {ThumbnailWidth, whole.size.y * ThumbnailWidth / whole.size.x});
}
