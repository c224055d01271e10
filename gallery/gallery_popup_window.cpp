#include "gallery/gallery_popup_window.h"

#include "gallery/capture_store.h"
#include "nimbit/filesystem/known_folders.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/native_file_browser.h"
#include "nimbit/ui/popup_menu.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/parts/effects_message_popup.h"
#include "popup/preferences_data.h"
#include "popup/ui_colors.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr ivec2 StartSize{1100, 720};
constexpr int RowStep = GalleryPopupWindow::TileHeight + GalleryPopupWindow::TileGap;
constexpr int ColumnStep = GalleryPopupWindow::TileWidth + GalleryPopupWindow::TileGap;
constexpr int ButtonWidth = 86, ButtonHeight = 26, SwapSize = 26;

file_path DefaultCacheFile() {
    return get_user_data_path().append(file_path("Tarvelo")).append(file_path("effects_cache"));
}

} // namespace

GalleryPopupWindow::GalleryPopupWindow(const UIColors* colours, PreferencesData& prefs, file_path cacheFile,
                                       uint32_t workers)
    : colours(colours), prefs(prefs),
      loader(cacheFile.empty() ? DefaultCacheFile() : std::move(cacheFile), workers), swapButton(colours),
      split(split_type::side_by_side), scrollBar(scroll_type::vertical, false), preview(colours) {
    toolButtons[0] = std::make_unique<GalleryButton>(colours, &UIColors::gallerySaveIcon);
    toolButtons[1] = std::make_unique<GalleryButton>(colours, &UIColors::gallerySaveIcon, "PNG");
    toolButtons[2] = std::make_unique<GalleryButton>(colours, &UIColors::gallerySaveIcon, "JPG");
    create("Quillo Image Gallery", {0, 0, StartSize.x, StartSize.y},
           window_style_titled | window_style_resizable, nullptr);
    Build();
}

GalleryPopupWindow::~GalleryPopupWindow() {
    // The tiles go before the panels; the loader's workers are joined last, by its own destructor.
    gridContent.remove_all_children();
    tiles.clear();
}

void GalleryPopupWindow::Build() {
    widget& root = get_root();
    const ivec4 area = root.get_rect();
    toolRow.create(root, {0, 0, area.w, ToolRowHeight});
    toolRow.show(true);
    static constexpr const char* tips[3] = {"Save", "Save to PNG", "Save to JPG"};
    for (size_t i = 0; i < 3; ++i) {
        toolButtons[i]->create(toolRow,
                               {8 + static_cast<int>(i) * (ButtonWidth + 6), 4, ButtonWidth, ButtonHeight});
        toolButtons[i]->show(true);
        toolButtons[i]->add_tooltip(tips[i]);
    }
    swapButton.create(toolRow, {area.w - SwapSize - 8, 4, SwapSize, SwapSize});
    swapButton.show(true);
    swapButton.add_tooltip("Swap the preview's orientation");

    split.create(root, {0, ToolRowHeight, area.w, std::max(0, area.h - ToolRowHeight)});
    split.show(true);
    split.set_minimum_size(TileWidth + 2 * TileGap + ScrollBarWidth, 200);
    split.set_split_bar(0.5f);
    gridView.create(split.get_panel_a(), {0, 0, 0, 0});
    gridView.show(true);
    gridContent.create(gridView, {0, 0, 0, 0});
    gridContent.show(true);
    scrollBar.create(split.get_panel_a(), {0, 0, ScrollBarWidth, 0});
    scrollBar.show(true);
    scrollBar.set_scroll_panel(&gridContent);
    scrollBar.add_wheel_area(gridView);
    scrollBar.set_step(RowStep);
    preview.create(split.get_panel_b(), {0, 0, 0, 0});
    preview.show(true);
    preview.onWantImages = [this](const std::vector<file_path>& paths) {
        for (const file_path& p : paths)
            WantFull(p);
        IssueRequests();
    };

    auto& ev = event_manager::instance();
    ev.add_event(&root, this, event_type::resize, [this](const event_info&) { Layout(); });
    ev.add_event(&split.get_panel_a(), this, event_type::resize, [this](const event_info&) {
        LayoutGrid();
        UpdateView();
    });
    ev.add_event(&split.get_panel_b(), this, event_type::resize,
                 [this](const event_info&) { LayoutPreview(); });
    ev.add_event(&scrollBar, this, event_type::value_changed, [this](const event_info&) { UpdateView(); });
    ev.add_event(&root, this, event_type::timer, [this](const event_info& e) {
        if (e.data == PollTimer)
            Poll();
    });
    ev.add_event(this, this, event_type::key_down, &GalleryPopupWindow::OnKeyDown);
    ev.add_event(this, this, event_type::mouse_down, &GalleryPopupWindow::OnMouseDown);
    ev.add_event(this, this, event_type::mouse_move, &GalleryPopupWindow::OnMouseMove);
    ev.add_event(this, this, event_type::mouse_up, [this](const event_info&) {
        if (pressedSelected != nullptr && drag.GetTile() == pressedSelected)
            SelectOnly(pressedSelected);
        pressedSelected = nullptr;
        drag.Release();
    });
    for (auto& button : toolButtons)
        ev.add_event(button.get(), this, event_type::pressed, &GalleryPopupWindow::OnToolButton);
    ev.add_event(&swapButton, this, event_type::pressed,
                 [this](const event_info&) { preview.ToggleOrientation(); });

    SetColors(colours);
    Layout();
}

void GalleryPopupWindow::SetColors(const UIColors* c) {
    colours = c;
    if (colours == nullptr)
        return;
    get_root().set_background(colours->windowBack);
    toolRow.set_background(colours->windowBack);
    gridView.set_background(colours->windowBack);
    nimbit::ui::theme& bar = scrollBar.get_theme();
    bar.set(theme_keys::scroll_back_color, colours->scrollTrack);
    bar.set(theme_keys::scroll_bar_back_color, colours->scrollThumb);
    for (auto& button : toolButtons)
        button->SetColors(colours);
    swapButton.SetColors(colours);
    preview.SetColors(colours);
    for (auto& tile : tiles)
        tile->SetColors(colours);
    // The info popup keeps the colours it was made with: the next save makes a new one.
    info.reset();
    get_root().update(false);
}

// --- layout ------------------------------------------------------------------------------------------

void GalleryPopupWindow::Layout() {
    const ivec4 area = get_root().get_rect();
    toolRow.set_rect({0, 0, area.w, ToolRowHeight});
    swapButton.set_rect({area.w - SwapSize - 8, 4, SwapSize, SwapSize});
    split.set_rect({0, ToolRowHeight, area.w, std::max(0, area.h - ToolRowHeight)});
    // The split placed its panes while it was made, before their resize events were listened to.
    LayoutPreview();
    LayoutGrid();
    UpdateView();
}

void GalleryPopupWindow::LayoutPreview() {
    const ivec4 pane = split.get_panel_b().get_rect();
    preview.set_rect({0, 0, pane.w, pane.h});
}

void GalleryPopupWindow::LayoutGrid() {
    const ivec4 pane = split.get_panel_a().get_rect();
    const int viewWidth = std::max(0, pane.w - ScrollBarWidth);
    gridView.set_rect({0, 0, viewWidth, pane.h});
    scrollBar.set_rect({viewWidth, 0, ScrollBarWidth, pane.h});
    columns = static_cast<size_t>(std::max(1, (viewWidth - TileGap) / ColumnStep));
    const size_t rows = (tiles.size() + columns - 1) / columns;
    const int contentHeight = TileGap + static_cast<int>(rows) * RowStep;
    gridContent.set_rect({0, gridContent.get_rect().y, viewWidth, contentHeight});
    for (size_t i = 0; i < tiles.size(); ++i) {
        const ivec4 place{TileGap + static_cast<int>(i % columns) * ColumnStep,
                          TileGap + static_cast<int>(i / columns) * RowStep, TileWidth, TileHeight};
        // Thousands of tiles: only the ones that move are told.
        if (tiles[i]->get_rect() != place)
            tiles[i]->set_rect(place);
    }
    scrollBar.update_bar();
}

std::pair<size_t, size_t> GalleryPopupWindow::ViewRange() const {
    if (tiles.empty())
        return {0, 0};
    const int top = scrollBar.get_value();
    const int height = gridView.get_rect().h;
    // Row r spans [TileGap + r * RowStep, that + TileHeight): a row whose gap alone shows is not in view.
    const size_t firstRow = static_cast<size_t>(std::max(0, top) / RowStep);
    const size_t lastRow = static_cast<size_t>(std::max(0, top + height - TileGap - 1) / RowStep);
    const size_t first = std::min(tiles.size(), firstRow * columns);
    const size_t last = std::min(tiles.size(), (lastRow + 1) * columns);
    return {first, std::max(first, last)};
}

std::pair<size_t, size_t> GalleryPopupWindow::KeptRange() const {
    const auto [first, last] = ViewRange();
    const size_t screen = (static_cast<size_t>(gridView.get_rect().h / RowStep) + 1) * columns;
    const size_t above = std::min(first, screen), below = std::min(tiles.size() - last, screen);
    // The view always keeps its pictures; the cap shares what is left between above and below.
    const size_t spare = MaxKeptImages > last - first ? MaxKeptImages - (last - first) : 0;
    size_t up = std::min(above, spare / 2);
    const size_t down = std::min(below, spare - up);
    up = std::min(above, spare - down);
    return {first - up, last + down};
}

size_t GalleryPopupWindow::CountImages() const {
    return static_cast<size_t>(
        std::count_if(tiles.begin(), tiles.end(), [](const auto& t) { return t->GetImage().is_loaded(); }));
}

// --- pictures ----------------------------------------------------------------------------------------

void GalleryPopupWindow::UpdateView() {
    const auto [keepFirst, keepLast] = KeptRange();
    for (size_t i = 0; i < tiles.size(); ++i)
        if ((i < keepFirst || i >= keepLast) && tiles[i]->HasArrived())
            tiles[i]->DropImage();
    IssueRequests();
}

void GalleryPopupWindow::WantFull(const file_path& path) {
    if (std::find(fullWanted.begin(), fullWanted.end(), path) == fullWanted.end())
        fullWanted.push_back(path);
}

void GalleryPopupWindow::IssueRequests() {
    std::vector<GalleryImageRequest> wanted;
    for (const file_path& p : fullWanted) {
        const GalleryThumbnail* tile = Find(p);
        wanted.push_back({p, tile != nullptr ? tile->GetStamp() : 0, GalleryImageKind::Full});
    }
    const auto [first, last] = ViewRange();
    // A pair, not a structured binding: lambdas cannot capture those before C++20 in every compiler.
    const std::pair<size_t, size_t> keep = KeptRange();
    // Near the view a tile without its picture needs it; further away only a thumbnail not made yet
    // is asked for, so that the cache is warm when the user scrolls there.
    auto consider = [&](size_t i) {
        const GalleryThumbnail& tile = *tiles[i];
        const bool kept = i >= keep.first && i < keep.second;
        if (kept ? tile.HasArrived() : madeOnce.contains(tile.GetPath().to_string()))
            return;
        wanted.push_back({tile.GetPath(), tile.GetStamp(), GalleryImageKind::Thumbnail});
    };
    for (size_t i = first; i < last; ++i)
        consider(i);
    for (size_t d = 1; d <= std::max(first, tiles.size() - last); ++d) {
        if (last + d - 1 < tiles.size())
            consider(last + d - 1);
        if (d <= first)
            consider(first - d);
    }
    const bool any = !wanted.empty();
    loader.Request(std::move(wanted));
    if (any && !get_root().has_timer(PollTimer))
        get_root().add_timer(PollTimer, PollInterval);
}

void GalleryPopupWindow::Poll() {
    // Read before taking: what finishes in between is taken on the next tick.
    const bool busy = loader.Busy();
    const auto [keepFirst, keepLast] = KeptRange();
    for (GalleryLoadedImage& done : loader.TakeReady()) {
        if (done.kind == GalleryImageKind::Full) {
            std::erase(fullWanted, done.path);
            bitmap picture;
            picture.load_pixels(done.image);
            if (done.path == copyWanted) {
                copyWanted = file_path();
                if (picture.is_loaded())
                    picture.copy_to_clipboard();
            }
            preview.SetImage(done.path, std::move(picture));
            continue;
        }
        GalleryThumbnail* tile = Find(done.path);
        if (tile == nullptr || tile->GetStamp() != done.stamp)
            continue;
        madeOnce[done.path.to_string()] = done.stamp;
        if (tile->GetIndex() < keepFirst || tile->GetIndex() >= keepLast || tile->HasArrived())
            continue;
        bitmap picture;
        picture.load_pixels(done.image);
        tile->SetImage(std::move(picture));
    }
    if (!busy)
        get_root().remove_timer(PollTimer);
}

// --- the list ----------------------------------------------------------------------------------------

void GalleryPopupWindow::Show(const UIColors* c) {
    if (c != colours)
        SetColors(c);
    const bool first = !is_shown() && tiles.empty();
    RefreshList();
    if (first)
        center_window();
    show();
}

void GalleryPopupWindow::RefreshList() {
    const std::vector<ListedCapture> listed = CaptureStore::ListCaptures(prefs.captureFolder);
    std::unordered_map<std::string, std::unique_ptr<GalleryThumbnail>> old;
    for (auto& tile : tiles)
        old.emplace(tile->GetPath().to_string(), std::move(tile));
    tiles.clear();
    byPath.clear();
    std::vector<GalleryThumbnail*> created;
    for (const ListedCapture& capture : listed) {
        std::string key = capture.path.to_string();
        auto it = old.find(key);
        if (it != old.end()) {
            if (it->second->GetStamp() != capture.time)
                madeOnce.erase(key);
            it->second->SetStamp(capture.time);
            tiles.push_back(std::move(it->second));
            old.erase(it);
        } else {
            tiles.push_back(std::make_unique<GalleryThumbnail>(colours, capture.path, capture.time));
            created.push_back(tiles.back().get());
        }
        tiles.back()->SetIndex(tiles.size() - 1);
        byPath.emplace(std::move(key), tiles.back().get());
    }
    // What is left was removed from the folder.
    std::vector<file_path> gone;
    for (auto& [key, tile] : old)
        gone.push_back(tile->GetPath());
    for (auto& [key, tile] : old) {
        tiles.push_back(std::move(tile));
        byPath.emplace(key, tiles.back().get());
    }
    RemoveTiles(gone);

    for (GalleryThumbnail* tile : created) {
        const size_t i = tile->GetIndex();
        tile->create(gridContent, {TileGap + static_cast<int>(i % columns) * ColumnStep,
                                   TileGap + static_cast<int>(i / columns) * RowStep, TileWidth, TileHeight});
        tile->show(true);
        event_manager::instance().add_event(tile, this, event_type::custom, &GalleryPopupWindow::OnTileEvent);
    }
    LayoutGrid();
    // A warm cache paints the first screen at once: small decodes, on this thread, for the view only.
    const auto [first, last] = ViewRange();
    for (size_t i = first; i < last; ++i) {
        GalleryThumbnail& tile = *tiles[i];
        graphics::rgba_image cached;
        if (tile.HasArrived() || !loader.CachedThumbnail(tile.GetPath(), tile.GetStamp(), cached))
            continue;
        bitmap picture;
        picture.load_pixels(cached);
        tile.SetImage(std::move(picture));
        madeOnce[tile.GetPath().to_string()] = tile.GetStamp();
    }
    UpdateView();
}

void GalleryPopupWindow::RemoveTiles(const std::vector<file_path>& removed) {
    if (removed.empty())
        return;
    std::unordered_set<const GalleryThumbnail*> doomed;
    for (const file_path& p : removed)
        if (GalleryThumbnail* tile = Find(p))
            doomed.insert(tile);
    if (doomed.empty())
        return;
    const size_t selectedBefore = selection.size();
    std::erase_if(selection, [&](GalleryThumbnail* t) { return doomed.contains(t); });
    if (doomed.contains(anchor))
        anchor = nullptr;
    if (doomed.contains(focusTile))
        focusTile = nullptr;
    if (doomed.contains(drag.GetTile()))
        drag.Release();
    if (doomed.contains(pressedSelected))
        pressedSelected = nullptr;
    for (const file_path& p : removed) {
        byPath.erase(p.to_string());
        madeOnce.erase(p.to_string());
    }
    std::erase_if(tiles,
                  [&](const std::unique_ptr<GalleryThumbnail>& t) { return doomed.contains(t.get()); });
    for (size_t i = 0; i < tiles.size(); ++i)
        tiles[i]->SetIndex(i);
    LayoutGrid();
    UpdateView();
    if (selection.size() != selectedBefore)
        SelectionChanged();
}

GalleryThumbnail* GalleryPopupWindow::Find(const file_path& path) const {
    auto it = byPath.find(path.to_string());
    return it == byPath.end() ? nullptr : it->second;
}

std::vector<file_path> GalleryPopupWindow::SelectedPaths() const {
    std::vector<file_path> paths;
    for (const GalleryThumbnail* tile : selection)
        paths.push_back(tile->GetPath());
    return paths;
}

// --- selection ---------------------------------------------------------------------------------------

void GalleryPopupWindow::SetSelected(GalleryThumbnail* tile) {
    if (tile == nullptr)
        return;
    const bool option = keyboard::is_key_down(keyboard::option);
    const bool shift = keyboard::is_key_down(keyboard::shift);
    if (shift && !option && anchor != nullptr) {
        for (GalleryThumbnail* t : selection)
            t->SetSelected(false);
        selection.clear();
        const size_t from = std::min(anchor->GetIndex(), tile->GetIndex());
        const size_t to = std::max(anchor->GetIndex(), tile->GetIndex());
        for (size_t i = from; i <= to; ++i) {
            tiles[i]->SetSelected(true);
            selection.push_back(tiles[i].get());
        }
    } else if (option) {
        if (tile->IsSelected()) {
            std::erase(selection, tile);
            tile->SetSelected(false);
        } else {
            tile->SetSelected(true);
            selection.push_back(tile);
        }
        anchor = tile;
    } else {
        SelectOnly(tile);
        return;
    }
    focusTile = tile;
    SelectionChanged();
}

void GalleryPopupWindow::SelectOnly(GalleryThumbnail* tile) {
    for (GalleryThumbnail* t : selection)
        t->SetSelected(false);
    selection = {tile};
    tile->SetSelected(true);
    anchor = focusTile = tile;
    SelectionChanged();
}

void GalleryPopupWindow::SelectAll() {
    selection.clear();
    for (auto& tile : tiles) {
        tile->SetSelected(true);
        selection.push_back(tile.get());
    }
    SelectionChanged();
}

void GalleryPopupWindow::update_count() {
    for (auto& button : toolButtons)
        button->set_counter(static_cast<uint32_t>(selection.size()));
}

void GalleryPopupWindow::SelectionChanged() {
    update_count();
    // The preview asks again for what it keeps showing; a copy still waits for its picture.
    fullWanted.clear();
    if (!copyWanted.empty())
        fullWanted.push_back(copyWanted);
    std::vector<file_path> shown;
    for (size_t i = 0; i < selection.size() && i < GalleryPreview::MaxImages; ++i)
        shown.push_back(selection[i]->GetPath());
    preview.SetImages(shown);
    IssueRequests();
    if (is_shown())
        flush_updates();
}

void GalleryPopupWindow::ClearCache() {
    loader.ClearCache();
    madeOnce.clear();
}

void GalleryPopupWindow::ScrollTo(const ivec4& rect) {
    scrollBar.reveal(rect.y - TileGap, rect.h + 2 * TileGap, gridView.get_rect().h);
}

// --- commands ----------------------------------------------------------------------------------------

void GalleryPopupWindow::Save(const std::vector<GalleryThumbnail*>& chosen, int format) {
    if (chosen.empty())
        return;
    const auto kind = static_cast<CaptureExport>(std::clamp(format, 0, 2));
    if (chosen.size() == 1) {
        CaptureStore::ExportCapture(chosen.front()->GetPath(), kind, this);
        return;
    }
    std::vector<file_path> paths;
    for (const GalleryThumbnail* tile : chosen)
        paths.push_back(tile->GetPath());
    const file_path folder = file_browser::folder_select_dialog(this, "Select Folder");
    if (folder.empty())
        return;
    if (!info)
        info = std::make_unique<GalleryInfoPopup>(this, colours);
    info->ShowText("Saving images...");
    CaptureStore::ExportCapturesTo(paths, kind, folder);
    info->HideText();
}

void GalleryPopupWindow::Delete(const std::vector<GalleryThumbnail*>& chosen) {
    if (chosen.empty())
        return;
    std::vector<file_path> paths;
    for (const GalleryThumbnail* tile : chosen)
        paths.push_back(tile->GetPath());
    const std::vector<file_path> removed =
        CaptureStore::DeleteCaptures(paths, [this](const std::string& title, const std::string& question) {
            const ivec4 frame = get_rect();
            const ivec2 at{frame.x + (frame.w - MessagePopupSize.x) / 2,
                           frame.y + (frame.h - MessagePopupSize.y) / 2};
            EffectsMessagePopup ask(this, at, colours, MessagePopupTexts{title, question});
            return ask.Run() == 1;
        });
    RemoveTiles(removed);
}

void GalleryPopupWindow::ShowContextMenu(const file_path& under) {
    popup_menu menu;
    menu.add_item(CopyItem, "Copy to Clipboard");
    menu.add_item(SavePngItem, "Save to PNG");
    menu.add_item(SaveJpgItem, "Save to JPG");
    menu.add_item(DeleteItem, "Delete");
    menu.add_item(RevealItem, "Reveal in Finder");
    switch (menu.show(*this, mouse::get_position(&get_root()), false)) {
    case CopyItem:
        copyWanted = under;
        WantFull(under);
        IssueRequests();
        break;
    case SavePngItem:
        Save(selection, 1);
        break;
    case SaveJpgItem:
        Save(selection, 2);
        break;
    case DeleteItem:
        Delete(selection);
        break;
    case RevealItem:
        CaptureStore::RevealCapture(under);
        break;
    default:
        break;
    }
}

// --- input -------------------------------------------------------------------------------------------

GalleryThumbnail* GalleryPopupWindow::TileAt(ivec2 clientPoint) const {
    for (widget* w = get_widget_at_pos(clientPoint); w != nullptr; w = w->get_parent())
        if (auto* tile = dynamic_cast<GalleryThumbnail*>(w))
            return tile;
    return nullptr;
}

void GalleryPopupWindow::OnMouseDown(const event_info& e) {
    const ivec2 point = mouse::get_position(&get_root());
    const bool right = e.data == static_cast<uint64_t>(mouse::button::right);
    if (GalleryThumbnail* tile = TileAt(point)) {
        if (right) {
            if (!tile->IsSelected())
                SelectOnly(tile);
            ShowContextMenu(tile->GetPath());
        } else if (e.data == static_cast<uint64_t>(mouse::button::left)) {
            // A plain press on a selected tile may start dragging the whole selection: it is narrowed
            // to the tile only when the button comes up without a drag.
            const bool plain =
                !keyboard::is_key_down(keyboard::shift) && !keyboard::is_key_down(keyboard::option);
            pressedSelected = plain && tile->IsSelected() ? tile : nullptr;
            if (pressedSelected == nullptr)
                SetSelected(tile);
            drag.Press(*tile, point);
        }
        return;
    }
    if (!right)
        return;
    const std::vector<file_path> shown = preview.GetImages();
    for (size_t i = 0; i < preview.GetCount() && i < shown.size(); ++i) {
        image_panel& panel = preview.GetPanel(i);
        const ivec2 p = mouse::get_position(&panel);
        const ivec4& r = panel.get_rect();
        if (panel.is_visible(true) && p.x >= 0 && p.y >= 0 && p.x < r.w && p.y < r.h) {
            ShowContextMenu(shown[i]);
            return;
        }
    }
}

void GalleryPopupWindow::OnMouseMove(const event_info&) {
    GalleryThumbnail* tile = drag.GetTile();
    if (tile == nullptr)
        return;
    const std::vector<file_path> paths = tile->IsSelected() ? SelectedPaths() : std::vector<file_path>{};
    drag.Move(*this, mouse::get_position(&get_root()), paths);
}

void GalleryPopupWindow::OnTileEvent(const event_info& e) {
    auto* tile = dynamic_cast<GalleryThumbnail*>(e.sender);
    if (tile == nullptr)
        return;
    // The press that made this event is a click, not the start of a drag; its release may never reach
    // this window, since the question or dialog it opens runs a modal session of its own.
    pressedSelected = nullptr;
    drag.Release();
    if (!tile->IsSelected())
        SelectOnly(tile);
    if (e.data == GalleryThumbnail::CornerCode)
        Delete(selection);
    else if (e.data == GalleryThumbnail::OpenCode)
        Save(selection, 0);
}

void GalleryPopupWindow::OnToolButton(const event_info& e) {
    for (int code = 0; code < 3; ++code)
        if (e.sender == toolButtons[code].get())
            Save(selection, code);
}

void GalleryPopupWindow::OnKeyDown(const event_info& e) {
    switch (e.data) {
    case event_key::escape:
        hide();
        return;
    case event_key::up:
    case event_key::down: {
        if (tiles.empty())
            return;
        size_t index = 0;
        if (focusTile != nullptr) {
            index = focusTile->GetIndex();
            if (e.data == event_key::up)
                index = index == 0 ? 0 : index - 1;
            else
                index = std::min(index + 1, tiles.size() - 1);
        }
        SetSelected(tiles[index].get());
        ScrollTo(tiles[index]->get_rect());
        return;
    }
    case event_key::forward_delete:
        Delete(selection);
        return;
    case 'A':
        if (keyboard::is_key_down(keyboard::option))
            SelectAll();
        else
            preview.ToggleOrientation();
        return;
    case 'I':
        preview.ToggleTitleVisibility();
        return;
    case 'Z':
        preview.ToggleZoom();
        return;
    default:
        return;
    }
}
