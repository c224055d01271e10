#include "gallery/gallery_preview.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/ui_colors.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>
#include <utility>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr int TitleHeight = 20;
constexpr int TitlePadding = 6;
constexpr float TitleFontSize = 12.0f;
constexpr int TitleSpacing = 10; // between the name and the size
constexpr int ButtonMargin = 4;  // from the zoom button to the cell's edges

vec4 WithAlpha(vec4 c, float alpha) {
    c.w = alpha;
    return c;
}

// The largest zoom at which the whole image fits the cell, and the offset that centres it there. Not
// capped at 1.0: a capture smaller than its cell is enlarged to fill it, like a larger one is reduced.
// Kept inside the panel's zoom range so that the offset centres what the panel will really draw.
std::pair<float, ivec2> Fit(ivec2 image, int cellWidth, int cellHeight) {
    if (image.x <= 0 || image.y <= 0)
        return {0.0f, {}};
    const double fit =
        std::min(static_cast<double>(cellWidth) / image.x, static_cast<double>(cellHeight) / image.y);
    const float zoom = std::clamp(static_cast<float>(fit), image_panel::min_zoom, image_panel::max_zoom);
    // Sized as image_panel::image_rect sizes what it draws.
    const int w = static_cast<int>(std::lround(image.x * zoom));
    const int h = static_cast<int>(std::lround(image.y * zoom));
    return {zoom, {(cellWidth - w) / 2, (cellHeight - h) / 2}};
}

} // namespace

GalleryPreviewTitle::GalleryPreviewTitle(const UIColors* colours, const file_path& path)
    : colours(colours), name(path.leaf(false)) {
    set_name("GalleryPreviewTitle");
    // Only a label: a drag that starts on it moves the picture beneath.
    set_mouse_transparent(true);
    add_paint_handler(*this, &GalleryPreviewTitle::Draw);
}

GalleryPreviewTitle::~GalleryPreviewTitle() = default;

void GalleryPreviewTitle::SetColors(const UIColors* next) {
    colours = next;
    update(false);
}

void GalleryPreviewTitle::SetPictureSize(ivec2 size) {
    sizeText = std::to_string(size.x) + " x " + std::to_string(size.y);
    update(false);
}

// A translucent strip as wide as the text under the name and the size; a narrow cell loses the
// size first, then clips the name.
void GalleryPreviewTitle::Draw(drawer& d, const ivec4& area) {
    if (colours == nullptr || name.empty())
        return;
    d.set_text_font("tahoma", TitleFontSize);
    d.set_text_format(text_align::left, text_valign::center);
    const int nameWidth = d.calc_text_size(name).x;
    const int sizeWidth = sizeText.empty() ? 0 : d.calc_text_size(sizeText).x;
    const bool withSize = sizeWidth > 0 && 2 * TitlePadding + nameWidth + TitleSpacing + sizeWidth <= area.w;
    const int textWidth = withSize ? nameWidth + TitleSpacing + sizeWidth : nameWidth;
    const int stripWidth = std::min(area.w, textWidth + 2 * TitlePadding);
    d.set_brush_color(WithAlpha(colours->windowBack, 0.7f));
    d.draw_rect({0, 0, stripWidth, area.h});
    const ivec4 clip{TitlePadding, 0, std::max(0, stripWidth - 2 * TitlePadding), area.h};
    d.set_text_color(colours->rowText);
    d.draw_clipped_text({TitlePadding, 0, nameWidth, area.h}, clip, name);
    if (withSize) {
        d.set_text_color(colours->rowSecondText);
        d.draw_clipped_text({TitlePadding + nameWidth + TitleSpacing, 0, sizeWidth, area.h}, clip, sizeText);
    }
}

GalleryPreview::GalleryPreview(const UIColors* colours) : colours(colours) {
    set_name("GalleryPreview");
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::resize, &GalleryPreview::OnSize);
    // The gaps between the cells show the window's colour.
    ev.add_event(this, this, event_type::draw, [this](const event_info&) {
        if (drawer* d = drawer_of(*this); d != nullptr && this->colours != nullptr) {
            d->set_brush_color(this->colours->windowBack);
            d->draw_rect(local_area(*this));
        }
    });
}

GalleryPreview::~GalleryPreview() = default;

void GalleryPreview::SetColors(const UIColors* next) {
    colours = next;
    for (auto& cell : cells) {
        StyleCell(*cell);
        cell->title->SetColors(colours);
    }
    update(false);
}

void GalleryPreview::StyleCell(Cell& cell) {
    if (colours == nullptr)
        return;
    cell.panel->get_theme().set(theme_keys::default_back_color, colours->listBack);
    UpdateFace(cell);
}

// "To one to one" while the picture shows any other zoom, "back to fit" while it is at 1.0.
void GalleryPreview::UpdateFace(Cell& cell) {
    if (colours == nullptr)
        return;
    const image_stream& face =
        cell.panel->get_zoom() == 1.0f ? colours->galleryPreviewFullMinus : colours->galleryPreviewFull;
    nimbit::ui::theme& t = cell.zoom->get_theme();
    if (t.get<image_stream>(theme_keys::button_back_image) != face)
        t.set(theme_keys::button_back_image, face);
}

void GalleryPreview::SetImages(const std::vector<file_path>& paths) {
    cells.clear();
    const size_t n = std::min(paths.size(), MaxImages);
    auto& ev = event_manager::instance();
    for (size_t i = 0; i < n; ++i) {
        auto cell = std::make_unique<Cell>();
        cell->path = paths[i];
        cell->panel = std::make_unique<image_panel>();
        cell->title = std::make_unique<GalleryPreviewTitle>(colours, paths[i]);
        cell->zoom = std::make_unique<generic_button>();
        cell->zoom->set_tab_stop(false);
        // The button floats over the picture: its face carries its own disc, the plate stays clear.
        for (std::string_view key :
             {theme_keys::button_color_normal, theme_keys::button_color_hover,
              theme_keys::button_color_toggle, theme_keys::button_border_color_normal,
              theme_keys::button_border_color_hover, theme_keys::button_border_color_focus})
            cell->zoom->get_theme().set(key, vec4{0, 0, 0, 0});
        // Children of the panel: they move with their cell and are clipped to it.
        cell->panel->create(*this, {});
        cell->title->create(*cell->panel, {});
        cell->title->show(titlesVisible);
        cell->zoom->create(*cell->panel, {});
        ev.add_event(cell->zoom.get(), this, event_type::pressed, &GalleryPreview::OnFullButton);
        // The wheel changes the zoom: the face follows (the panel has zoomed by the time this runs).
        ev.add_event(cell->panel.get(), this, event_type::mouse_wheel,
                     [this, c = cell.get()](const event_info&) { UpdateFace(*c); });
        StyleCell(*cell);
        cells.push_back(std::move(cell));
    }
    Layout();
    if (n > 0 && onWantImages)
        onWantImages(GetImages());
}

// The selection lists a capture once, so the first cell showing the path is the only one.
void GalleryPreview::SetImage(const file_path& path, bitmap image) {
    const auto found =
        std::find_if(cells.begin(), cells.end(), [&](const auto& c) { return c->path == path; });
    if (found == cells.end())
        return;
    Cell& cell = **found;
    if (!image.is_loaded()) {
        cell.panel->clear_image();
    } else {
        cell.title->SetPictureSize(image.get_size());
        cell.panel->set_image(std::move(image));
        std::tie(cell.fitZoom, cell.fitOffset) =
            Fit(cell.panel->get_image().get_size(), cell.panel->get_rect().w, cell.panel->get_rect().h);
        ShowFit(cell);
    }
    UpdateFace(cell);
}

void GalleryPreview::ShowFit(Cell& cell) {
    if (cell.fitZoom <= 0.0f)
        return;
    cell.panel->set_zoom(cell.fitZoom);
    cell.panel->set_offset(cell.fitOffset);
}

void GalleryPreview::ShowOneToOne(Cell& cell) {
    cell.panel->set_zoom(1.0f);
    cell.panel->set_offset({0, 0});
}

void GalleryPreview::ToggleOrientation() {
    orientation = orientation == 0 ? 1 : 0;
    Layout();
}

void GalleryPreview::ToggleZoom() {
    const bool anyOther =
        std::any_of(cells.begin(), cells.end(), [](const auto& c) { return c->panel->get_zoom() != 1.0f; });
    for (auto& cell : cells) {
        if (anyOther)
            ShowOneToOne(*cell);
        else
            ShowFit(*cell);
        UpdateFace(*cell);
    }
}

void GalleryPreview::ToggleTitleVisibility() {
    titlesVisible = !titlesVisible;
    for (auto& cell : cells)
        cell->title->show(titlesVisible);
}

std::vector<file_path> GalleryPreview::GetImages() const {
    std::vector<file_path> out;
    out.reserve(cells.size());
    for (const auto& cell : cells)
        out.push_back(cell->path);
    return out;
}

file_path GalleryPreview::GetPath(const bitmap& image) const {
    for (const auto& cell : cells)
        if (&cell->panel->get_image() == &image)
            return cell->path;
    return {};
}

// a = round(sqrt(n)) lines of b = ceil(n / a) cells: columns of lines in orientation 0, rows in 1.
// Cells fill rows from the top, left to right, with Gap pixels between them and none at the edges.
void GalleryPreview::Layout() {
    const auto n = static_cast<uint32_t>(cells.size());
    update(false);
    if (n == 0) {
        columns = rows = cellWidth = cellHeight = 0;
        return;
    }
    const auto a = std::max(static_cast<uint32_t>(std::sqrt(static_cast<double>(n)) + 0.5), 1u);
    const uint32_t b = (n + a - 1) / a;
    columns = orientation == 1 ? b : a;
    rows = orientation == 1 ? a : b;
    const ivec2 size = get_size();
    const auto across = [](int length, uint32_t count) {
        const int c = static_cast<int>(count);
        return static_cast<uint32_t>(std::max(0, (length - Gap * c + Gap) / c));
    };
    cellWidth = across(size.x, columns);
    cellHeight = across(size.y, rows);
    const int w = static_cast<int>(cellWidth), h = static_cast<int>(cellHeight);
    for (uint32_t i = 0; i < n; ++i) {
        Cell& cell = *cells[i];
        const int x = static_cast<int>(i % columns) * (w + Gap),
                  y = static_cast<int>(i / columns) * (h + Gap);
        cell.panel->set_rect({x, y, w, h});
        const int buttonX = std::max(0, w - ZoomButtonSize - ButtonMargin);
        cell.zoom->set_rect({buttonX, ButtonMargin, ZoomButtonSize, ZoomButtonSize});
        cell.title->set_rect({0, 0, std::max(0, buttonX - ButtonMargin), TitleHeight});
        // A picture showing its fit follows the new cell; one at 1.0 stays where the user has it.
        const bool atFit = cell.panel->get_zoom() != 1.0f;
        std::tie(cell.fitZoom, cell.fitOffset) =
            Fit(cell.panel->has_image() ? cell.panel->get_image().get_size() : ivec2{}, w, h);
        if (atFit)
            ShowFit(cell);
        UpdateFace(cell);
    }
}

void GalleryPreview::OnSize(const event_info&) {
    Layout();
}

void GalleryPreview::OnFullButton(const event_info& e) {
    for (auto& cell : cells) {
        if (cell->zoom.get() != e.sender)
            continue;
        if (cell->panel->get_zoom() != 1.0f)
            ShowOneToOne(*cell);
        else
            ShowFit(*cell);
        UpdateFace(*cell);
        return;
    }
}
