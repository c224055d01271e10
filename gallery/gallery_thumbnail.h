#pragma once

#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/widget.h"

#include <cstddef>
#include <cstdint>

struct UIColors;

// One capture in the gallery's grid: its thumbnail scaled into the tile (a plain placeholder until
// the picture arrives), a frame in the selection colour while selected, and a corner button that
// shows while the pointer is over the tile. The tile raises custom on itself: CornerCode when the
// corner button is clicked, OpenCode on a double click.
class GalleryThumbnail : public nimbit::ui::widget {
public:
    static constexpr uint64_t OpenCode = 0;
    static constexpr uint64_t CornerCode = 1;
    static constexpr int CornerSize = 18;
    // The corner button's top-left corner lies this far left of and above the tile's bottom-right one.
    static constexpr int CornerInset = 20;

    GalleryThumbnail(const UIColors* colours, nimbit::file_path path, int64_t stamp);
    ~GalleryThumbnail() override;

    void SetColors(const UIColors* colours);

    const nimbit::file_path& GetPath() const { return path; }
    int64_t GetStamp() const { return stamp; }
    // A new stamp drops the picture: it shows the capture as it was.
    void SetStamp(int64_t newStamp);

    // The picture has arrived (an empty bitmap: the capture could not be decoded).
    void SetImage(nimbit::ui::bitmap picture);
    // Back to the placeholder, to be asked for again.
    void DropImage();
    bool HasArrived() const { return arrived; }
    const nimbit::ui::bitmap& GetImage() const { return image; }

    void SetSelected(bool on);
    bool IsSelected() const { return selected; }
    // The place in the gallery's list.
    void SetIndex(size_t i) { index = i; }
    size_t GetIndex() const { return index; }

    nimbit::ui::generic_button& GetCornerButton() { return corner; }

private:
    void Draw(nimbit::ui::drawer& d, const nimbit::ivec4& area);
    void PlaceCorner();
    void StyleCorner();
    // The corner button follows the pointer over the tile, including over the button itself.
    void TrackPointer();

    const UIColors* colours;
    nimbit::file_path path;
    int64_t stamp;
    nimbit::ui::bitmap image;
    bool arrived = false;
    bool selected = false;
    bool cornerStyled = false;
    size_t index = 0;
    nimbit::ui::generic_button corner;
};
