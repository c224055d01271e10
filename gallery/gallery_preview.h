#pragma once

#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/image_panel.h"
#include "nimbit/ui/widget.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

struct UIColors;

// The name of a previewed capture (without extension) and its size, "W x H", in tahoma 12.
class GalleryPreviewTitle : public nimbit::ui::widget {
public:
    GalleryPreviewTitle(const UIColors* colours, const nimbit::file_path& path);
    ~GalleryPreviewTitle() override;
    void SetColors(const UIColors* colours);
    // Known once the picture is decoded; until then only the name shows.
    void SetPictureSize(nimbit::ivec2 size);
    const std::string& GetName() const { return name; }
    const std::string& GetSizeText() const { return sizeText; }

private:
    void Draw(nimbit::ui::drawer& d, const nimbit::ivec4& area);

    const UIColors* colours;
    std::string name;
    std::string sizeText;
};

// The selected captures side by side (the first four): one image panel, title and zoom button per
// capture in a grid of cells with 2-pixel gaps. Each image shows either its fit zoom (the whole
// picture in its cell, centred) or one image pixel per screen pixel.
class GalleryPreview : public nimbit::ui::widget {
public:
    static constexpr size_t MaxImages = 4;
    static constexpr int Gap = 2;
    static constexpr int ZoomButtonSize = 20;

    explicit GalleryPreview(const UIColors* colours);
    ~GalleryPreview() override;

    // A theme switch: redraws with the new colours and button faces.
    void SetColors(const UIColors* colours);
    // Lays out one cell per path (the first four) and asks for their pictures through
    // onWantImages; an empty list clears the preview.
    void SetImages(const std::vector<nimbit::file_path>& paths);
    // The decoded picture of a shown path, computing its fit; ignored for a path no longer shown.
    // An empty image (the capture could not be decoded) leaves the cell empty.
    void SetImage(const nimbit::file_path& path, nimbit::ui::bitmap image);
    // Asked by SetImages for the pictures of the new cells (the window has them decoded off the
    // main thread and hands them back through SetImage).
    std::function<void(const std::vector<nimbit::file_path>&)> onWantImages;

    void ToggleOrientation();
    // If any image is not at zoom 1.0 all go to 1.0 at offset (0, 0); otherwise all return to their fit.
    void ToggleZoom();
    void ToggleTitleVisibility();

    std::vector<nimbit::file_path> GetImages() const;
    // The path of the image whose panel shows image; empty when none does.
    nimbit::file_path GetPath(const nimbit::ui::bitmap& image) const;

    // The layout, for the window and tests.
    uint32_t GetColumns() const { return columns; }
    uint32_t GetRows() const { return rows; }
    uint32_t GetCellWidth() const { return cellWidth; }
    uint32_t GetCellHeight() const { return cellHeight; }
    int GetOrientation() const { return orientation; }
    bool TitlesVisible() const { return titlesVisible; }
    size_t GetCount() const { return cells.size(); }
    nimbit::ui::image_panel& GetPanel(size_t i) { return *cells[i]->panel; }
    GalleryPreviewTitle& GetTitle(size_t i) { return *cells[i]->title; }
    nimbit::ui::generic_button& GetZoomButton(size_t i) { return *cells[i]->zoom; }
    // The zoom and offset that fit image i into its cell (zoom 0 until its picture has arrived).
    float GetFitZoom(size_t i) const { return cells[i]->fitZoom; }
    nimbit::ivec2 GetFitOffset(size_t i) const { return cells[i]->fitOffset; }

private:
    struct Cell {
        nimbit::file_path path;
        std::unique_ptr<nimbit::ui::image_panel> panel;
        std::unique_ptr<GalleryPreviewTitle> title;
        std::unique_ptr<nimbit::ui::generic_button> zoom;
        float fitZoom = 0.0f;
        nimbit::ivec2 fitOffset;
    };

    void Layout();
    void StyleCell(Cell& cell);
    // The zoom button shows what it would do: go to 1.0, or back to the fit.
    void UpdateFace(Cell& cell);
    void ShowFit(Cell& cell);
    void ShowOneToOne(Cell& cell);
    void OnSize(const nimbit::ui::event_info& e);
    void OnFullButton(const nimbit::ui::event_info& e);

    const UIColors* colours;
    std::vector<std::unique_ptr<Cell>> cells;
    uint32_t columns = 0;
    uint32_t rows = 0;
    uint32_t cellWidth = 0;
    uint32_t cellHeight = 0;
    int orientation = 0;
    bool titlesVisible = true;
};
