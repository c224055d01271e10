#pragma once

#include "nimbit/filesystem/file_path.h"
#include "nimbit/graphics/vec.h"

#include <vector>

namespace nimbit::ui {
class window;
}
class GalleryThumbnail;

// Drags captures out of the gallery as files, where the platform allows it: a left press on a tile
// arms the drag, and a pointer move of more than Threshold pixels with the button still down hands
// the paths and the tile's picture to the platform's drag session.
class GalleryThumbnailDrag {
public:
    static constexpr int Threshold = 4;

    void Press(GalleryThumbnail& tile, nimbit::ivec2 clientPoint);
    // With the button still down past the threshold, starts dragging paths (the tile's own when
    // empty); true when the platform took the drag. Disarms once it tried.
    bool Move(nimbit::ui::window& w, nimbit::ivec2 clientPoint, bool buttonDown,
              const std::vector<nimbit::file_path>& paths);
    void Release() { tile = nullptr; }
    GalleryThumbnail* GetTile() const { return tile; }

private:
    GalleryThumbnail* tile = nullptr;
    nimbit::ivec2 start;
};
