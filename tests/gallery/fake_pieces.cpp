// TEMPORARY: stand-ins for the loader, preview, buttons and info popup until their real code lands;
// just enough for the window's tests. Delete this file when merging them.
#include "gallery/gallery_buttons.h"
#include "gallery/gallery_info_popup.h"
#include "gallery/gallery_preview.h"
#include "gallery/thumbnail_loader.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/offscreen/image_codecs.h"
#include "tests/foundation/temp_folder.h"

#include <map>

using namespace nimbit;
using namespace nimbit::ui;

GalleryButton::GalleryButton(const UIColors* c, const image_stream UIColors::*) : colours(c) {}
GalleryButton::~GalleryButton() = default;
void GalleryButton::SetColors(const UIColors* c) {
    colours = c;
}
void GalleryButton::set_counter(uint32_t count) {
    counter = count;
}
SwapButton::SwapButton(const UIColors* c) : colours(c) {}
SwapButton::~SwapButton() = default;
void SwapButton::SetColors(const UIColors* c) {
    colours = c;
}

GalleryInfoPopup::GalleryInfoPopup(window* parent, const UIColors* c) : colours(c) {
    create("", {0, 0, 200, 40}, window_style_borderless, parent);
    event_manager::instance().add_event(&get_root(), this, event_type::draw, [this](const event_info&) {
        get_drawer().draw_text({0, 0, 200, 40}, text);
    });
}
GalleryInfoPopup::~GalleryInfoPopup() = default;
void GalleryInfoPopup::ShowText(const std::string& t) {
    text = t;
    show_no_focus();
    get_root().update(true);
}
void GalleryInfoPopup::HideText() {
    hide();
}

GalleryPreviewTitle::~GalleryPreviewTitle() = default;
GalleryPreview::GalleryPreview(const UIColors* c) : colours(c) {}
GalleryPreview::~GalleryPreview() = default;
void GalleryPreview::SetColors(const UIColors* c) {
    colours = c;
}
void GalleryPreview::SetImages(const std::vector<file_path>& paths) {
    cells.clear();
    for (size_t i = 0; i < paths.size() && i < MaxImages; ++i) {
        cells.push_back(std::make_unique<Cell>());
        cells.back()->path = paths[i];
        cells.back()->panel = std::make_unique<image_panel>();
    }
    if (onWantImages && !paths.empty())
        onWantImages(GetImages());
}
void GalleryPreview::SetImage(const file_path& path, bitmap image) {
    for (auto& c : cells)
        if (c->path == path && image.is_loaded()) {
            c->fitZoom = 2.0f;
            c->panel->set_zoom(2.0f);
        }
}
void GalleryPreview::ToggleOrientation() {
    orientation ^= 1;
}
void GalleryPreview::ToggleZoom() {
    bool any = false;
    for (auto& c : cells)
        any = any || c->panel->get_zoom() != 1.0f;
    for (auto& c : cells)
        c->panel->set_zoom(any ? 1.0f : c->fitZoom);
}
void GalleryPreview::ToggleTitleVisibility() {
    titlesVisible = !titlesVisible;
}
std::vector<file_path> GalleryPreview::GetImages() const {
    std::vector<file_path> out;
    for (auto& c : cells)
        out.push_back(c->path);
    return out;
}

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
