#include "gallery/gallery_thumbnail_drag.h"

#include "gallery/gallery_thumbnail.h"
#include "nimbit/ui/window.h"

#include <cstdlib>
#include <string>

using namespace nimbit;

void GalleryThumbnailDrag::Press(GalleryThumbnail& pressed, ivec2 clientPoint) {
    tile = &pressed;
    start = clientPoint;
}

bool GalleryThumbnailDrag::Move(ui::window& w, ivec2 clientPoint, const std::vector<file_path>& paths) {
    if (tile == nullptr)
        return false;
    if (std::abs(clientPoint.x - start.x) <= Threshold && std::abs(clientPoint.y - start.y) <= Threshold)
        return false;
    std::vector<std::string> files;
    for (const file_path& p : paths.empty() ? std::vector<file_path>{tile->GetPath()} : paths)
        files.push_back(p.to_string());
    const ui::bitmap& image = tile->GetImage();
    tile = nullptr;
    return w.is_created() && w.get_native().begin_file_drag(files, image.get_native(), clientPoint);
}
