#pragma once

#include "nimbit/filesystem/file_path.h"
#include "nimbit/graphics/vec.h"

#include <vector>

namespace nimbit::ui {
class window;
}
class GalleryThumbnail;

// Drags captures out of the gallery as files, where the platform allows it: a left press on a tile
// arms the drag until the release, and a pointer move of more than Threshold pixels meanwhile hands
// the paths and the tile's picture to the platform's drag session. The button is known from the
// press and release events: GNUstep's polled button state stays up during a drag.
class GalleryThumbnailDrag {
public:
    static constexpr int Threshold = 4;

    void Press(GalleryThumbnail& tile, nimbit::ivec2 clientPoint);
    // Past the threshold, starts dragging paths (the tile's own when empty); true when the platform
    // took the drag. Disarms once it tried.
    bool Move(nimbit::ui::window& w, nimbit::ivec2 clientPoint, const std::vector<nimbit::file_path>& paths);
    void Release() { tile = nullptr; }
    GalleryThumbnail* GetTile() const { return tile; }

private:
    GalleryThumbnail* tile = nullptr;
    nimbit::ivec2 start;
};
