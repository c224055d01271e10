#pragma once

#include "nimbit/filesystem/file_path.h"
#include "nimbit/graphics/rgba_image.h"

#include <cstdint>
#include <memory>
#include <vector>

// Makes the gallery's pictures off the main thread: thumbnails (512 pixels wide, kept in the
// thumbnail cache under the capture's path with its stamp) and whole captures for the preview.
// The gallery says what it wants, most urgent first, and picks up what is finished on its own
// thread; the loader never calls into the UI.
enum class GalleryImageKind { Thumbnail = 0, Full = 1 };

struct GalleryImageRequest {
    nimbit::file_path path;
    int64_t stamp = 0; // the capture's time from the listing: a cached thumbnail with another is stale
    GalleryImageKind kind = GalleryImageKind::Thumbnail;
};

struct GalleryLoadedImage {
    nimbit::file_path path;
    int64_t stamp = 0;
    GalleryImageKind kind = GalleryImageKind::Thumbnail;
    nimbit::graphics::rgba_image image; // empty when the capture could not be read or decoded
};

class ThumbnailLoader {
public:
    static constexpr int ThumbnailWidth = 512;

    // cacheFile: the thumbnail cache's data file (empty: no cache). workers: threads of its own
    // (0: one per hardware thread).
    explicit ThumbnailLoader(nimbit::file_path cacheFile, uint32_t workers = 0);
    // Drops what is still queued and joins the workers.
    ~ThumbnailLoader();
    ThumbnailLoader(const ThumbnailLoader&) = delete;
    ThumbnailLoader& operator=(const ThumbnailLoader&) = delete;

    // Replaces the queue with wanted, the most urgent first. Work under way is finished and
    // delivered; a request equal to one under way or delivered and not taken yet is not redone.
    void Request(std::vector<GalleryImageRequest> wanted);
    // What finished since the last call, in the order it finished.
    std::vector<GalleryLoadedImage> TakeReady();
    // On the caller's thread: the cached thumbnail of path when it carries stamp. Lets the gallery
    // paint what the cache holds on its first paint.
    bool CachedThumbnail(const nimbit::file_path& path, int64_t stamp, nimbit::graphics::rgba_image& out);
    // Whether anything is queued or under way.
    bool Busy() const;
    // Returns when nothing is queued or under way (tests, benches, shutdown of a window).
    void Wait();
    // Empties the thumbnail cache (its files are deleted).
    void ClearCache();

    // One thumbnail, made the plain way on the caller's thread: decode the whole capture, scale it
    // to ThumbnailWidth wide and trunc(height * ThumbnailWidth / width) high. Empty on failure.
    static nimbit::graphics::rgba_image MakeThumbnail(const nimbit::file_path& capture);

private:
    struct State;
    std::unique_ptr<State> state;
};
