#pragma once

#include "gallery/gallery_buttons.h"
#include "gallery/gallery_info_popup.h"
#include "gallery/gallery_preview.h"
#include "gallery/gallery_thumbnail.h"
#include "gallery/gallery_thumbnail_drag.h"
#include "gallery/thumbnail_loader.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/generic_panel.h"
#include "nimbit/ui/scroll_bar.h"
#include "nimbit/ui/split_panel.h"
#include "nimbit/ui/window.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

struct PreferencesData;
struct UIColors;

// The gallery: the captures of the capture folder as a grid of tiles, newest first, beside a preview
// of the first selected ones, under a row of tool buttons. Pictures are made off the main thread by
// the window's loader; only tiles near the view keep theirs.
class GalleryPopupWindow : public nimbit::ui::window {
public:
    static constexpr int TileWidth = 160;
    static constexpr int TileHeight = 90; // 16:9
    static constexpr int TileGap = 8;
    static constexpr int ToolRowHeight = 34;
    static constexpr int ScrollBarWidth = 14;
    // Tiles that keep their pictures: the view plus a screen above and below, at most this many.
    static constexpr size_t MaxKeptImages = 150;
    static constexpr uint32_t PollTimer = 1;
    static constexpr uint32_t PollInterval = 15; // ms, while the loader works
    // Context menu item ids.
    enum MenuItem : uint32_t { CopyItem = 1, SavePngItem, SaveJpgItem, DeleteItem, RevealItem };

    // cacheFile: the thumbnail cache (by default the user data folder's "Tarvelo/effects_cache").
    GalleryPopupWindow(const UIColors* colours, PreferencesData& prefs, nimbit::file_path cacheFile = {},
                       uint32_t workers = 0);
    ~GalleryPopupWindow() override;

    // Shows the window in the given theme, listing what the capture folder holds now.
    void Show(const UIColors* colours);
    // Lists the capture folder again: tiles of unchanged captures keep their pictures.
    void RefreshList();
    // A theme switch.
    void SetColors(const UIColors* colours);
    // Empties the thumbnail cache; the tiles keep the pictures they show.
    void ClearCache();

    // A click on a tile, with the modifiers held now: alone; Shift: from the anchor to it; Option: toggled.
    void SetSelected(GalleryThumbnail* tile);
    void SelectAll();
    // Scrolls the grid the least that brings rect (in the grid's coordinates) into view.
    void ScrollTo(const nimbit::ivec4& rect);
    // The tool buttons' counters follow the selection.
    void update_count();
    // format: 0 either (by the name chosen), 1 PNG, 2 JPG.
    void Save(const std::vector<GalleryThumbnail*>& tiles, int format);
    // Asks, then removes the files and their tiles.
    void Delete(const std::vector<GalleryThumbnail*>& tiles);
    // Picks up what the loader finished (the poll timer calls this).
    void Poll();

    // --- state, for tests ---
    const std::vector<std::unique_ptr<GalleryThumbnail>>& GetTiles() const { return tiles; }
    const std::vector<GalleryThumbnail*>& GetSelection() const { return selection; }
    GalleryThumbnail* GetAnchor() const { return anchor; }
    GalleryThumbnail* GetFocusTile() const { return focusTile; }
    GalleryPreview& GetPreview() { return preview; }
    nimbit::ui::scroll_bar& GetScrollBar() { return scrollBar; }
    nimbit::ui::split_panel& GetSplit() { return split; }
    nimbit::ui::widget& GetGridView() { return gridView; }
    ThumbnailLoader& GetLoader() { return loader; }
    GalleryInfoPopup* GetInfoPopup() const { return info.get(); }
    GalleryButton& GetToolButton(int code) { return *toolButtons[static_cast<size_t>(code)]; }
    SwapButton& GetSwapButton() { return swapButton; }
    const UIColors* GetColors() const { return colours; }
    size_t GetColumns() const { return columns; }
    // Tiles holding a picture now.
    size_t CountImages() const;
    // The index range [first, last) of the tiles in view.
    std::pair<size_t, size_t> ViewRange() const;

private:
    void Build();
    void Layout();
    void LayoutGrid();
    void LayoutPreview();
    // After a scroll, resize or new list: drops pictures far from the view and asks for the missing.
    void UpdateView();
    std::pair<size_t, size_t> KeptRange() const;
    void IssueRequests();
    void SelectionChanged();
    void SelectOnly(GalleryThumbnail* tile);
    GalleryThumbnail* TileAt(nimbit::ivec2 clientPoint) const;
    GalleryThumbnail* Find(const nimbit::file_path& path) const;
    std::vector<nimbit::file_path> SelectedPaths() const;
    void RemoveTiles(const std::vector<nimbit::file_path>& removed);
    void ShowContextMenu(const nimbit::file_path& under);
    void WantFull(const nimbit::file_path& path);

    void OnKeyDown(const nimbit::ui::event_info& e);
    void OnMouseDown(const nimbit::ui::event_info& e);
    void OnMouseMove(const nimbit::ui::event_info& e);
    void OnTileEvent(const nimbit::ui::event_info& e);
    void OnToolButton(const nimbit::ui::event_info& e);

    const UIColors* colours;
    PreferencesData& prefs;
    ThumbnailLoader loader;
    // Full pictures wanted (the preview's, a copy's), asked before any thumbnail.
    std::vector<nimbit::file_path> fullWanted;
    nimbit::file_path copyWanted;

    nimbit::ui::generic_panel toolRow;
    std::unique_ptr<GalleryButton> toolButtons[3];
    SwapButton swapButton;
    nimbit::ui::split_panel split;
    nimbit::ui::generic_panel gridView;
    nimbit::ui::widget gridContent;
    nimbit::ui::scroll_bar scrollBar;
    GalleryPreview preview;
    std::unique_ptr<GalleryInfoPopup> info;

    // Declared after the panels that hold them: they go first.
    std::vector<std::unique_ptr<GalleryThumbnail>> tiles;
    std::unordered_map<std::string, GalleryThumbnail*> byPath;
    // Captures whose thumbnail the loader has made since they were listed (so it sits in the cache).
    std::unordered_map<std::string, int64_t> madeOnce;
    std::vector<GalleryThumbnail*> selection;
    GalleryThumbnail* anchor = nullptr;
    GalleryThumbnail* focusTile = nullptr;
    GalleryThumbnailDrag drag;
    GalleryThumbnail* pressedSelected = nullptr; // pressed while selected, no drag yet
    size_t columns = 1;
};
