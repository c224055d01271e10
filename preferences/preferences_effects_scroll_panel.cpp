#include "preferences/preferences_effects_scroll_panel.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/window.h"
#include "popup/effect_alias.h"
#include "popup/ui_colors.h"
#include "popup/user_lists.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr int RowHeight = PreferencesEffectSlot::Height;
constexpr uint64_t LeftButton = static_cast<uint64_t>(mouse::button::left);
constexpr uint64_t RightButton = static_cast<uint64_t>(mouse::button::right);
constexpr uint64_t EscapeKey = 27;

// The colours a panel paints in until the window hands it its theme.
const UIColors* DefaultColours() {
    static const std::vector<UIColors> themes = BuildColorThemes();
    return &themes.front();
}

std::vector<std::string_view> ColumnTitles(PreferencesListKind kind) {
    switch (kind) {
    case PreferencesListKind::Shortcuts:
        return {"Name", "Label"};
    case PreferencesListKind::Favorites:
        return {"Name", "Override", "Alias"};
    case PreferencesListKind::Blacklist:
        break;
    }
    return {"Name"};
}

bool Contains(const widget& w, ivec2 local) {
    return local.x >= 0 && local.y >= 0 && local.x < w.get_rect().w && local.y < w.get_rect().h;
}

} // namespace

PreferencesEffectsScrollPanel::PreferencesEffectsScrollPanel(PreferencesListKind kind,
                                                             std::vector<EffectAlias>& list)
    : kind(kind), list(list), colours(DefaultColours()) {
    set_name("PreferencesEffectsScrollPanel");
    view.set_name("PreferencesListView");
    content.set_name("PreferencesListContent");
    marker.set_name("PreferencesDropMarker");
    marker.set_mouse_transparent(true);
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::create, &PreferencesEffectsScrollPanel::Build);
    ev.add_event(this, this, event_type::draw, &PreferencesEffectsScrollPanel::Draw);
    ev.add_event(this, this, event_type::resize, [this](const event_info&) { Layout(); });
}

PreferencesEffectsScrollPanel::~PreferencesEffectsScrollPanel() {
    slots.clear(); // before the widgets they sit in
}

void PreferencesEffectsScrollPanel::Build(const event_info&) {
    const ivec4& r = get_rect();
    view.create(*this, {0, HeaderHeight, r.w, std::max(0, r.h - HeaderHeight)});
    view.show(true);
    content.create(view, {0, 0, r.w, 0});
    content.show(true);
    newRow.create(content, {0, 0, r.w, RowHeight});
    newRow.show(true);
    marker.create(content, {0, 0, r.w, 2});
    marker.hide();
    scrollBar.create(*this, {r.w - ScrollBarWidth, HeaderHeight, ScrollBarWidth, view.get_rect().h});
    scrollBar.set_scroll_panel(&content);
    scrollBar.add_wheel_area(view);
    scrollBar.set_step(RowHeight);
    dragImage.create(*this, {0, 0, r.w, RowHeight});
    dragImage.hide();
    SwitchTheme(colours);
    Refresh();
}

void PreferencesEffectsScrollPanel::SwitchTheme(const UIColors* c) {
    if (c == nullptr)
        return;
    colours = c;
    for (auto& row : slots)
        row->SetColours(c);
    newRow.SetColours(c);
    dragImage.SetColours(c);
    marker.set_background(EffectHighlightColor);
    scrollBar.SwitchTheme(c);
    update(false);
}

void PreferencesEffectsScrollPanel::Refresh() {
    if (pressed) {
        pressed.reset();
        dragging = false;
        dragImage.hide();
        marker.hide();
        if (widget* held = mouse::get_captured_widget(); held != nullptr && held->get_parent() == &content)
            mouse::release_widget(*held);
    }
    // The shortcuts list is the nine slots, however few the vector held.
    if (kind == PreferencesListKind::Shortcuts && list.size() < ShortcutSlotCount)
        list.resize(ShortcutSlotCount);
    if (!is_created())
        return;
    slots.clear();
    const size_t count = kind == PreferencesListKind::Shortcuts ? ShortcutSlotCount : list.size();
    for (size_t i = 0; i < count; ++i) {
        auto row = std::make_unique<PreferencesEffectSlot>(*this, list, i);
        row->SetColours(colours);
        row->create(content, {0, static_cast<int>(i) * RowHeight, listWidth, RowHeight});
        row->show(true);
        slots.push_back(std::move(row));
    }
    newRow.bring_to_front(); // painted after the rows, as it lies below them
    Layout();
    update(false);
}

void PreferencesEffectsScrollPanel::Layout() {
    if (!view.is_created())
        return;
    const ivec4& r = get_rect();
    const int viewHeight = std::max(0, r.h - HeaderHeight);
    const int contentHeight = static_cast<int>(slots.size() + 1) * RowHeight;
    const bool overflow = contentHeight > viewHeight;
    listWidth = std::max(0, overflow ? r.w - ScrollBarWidth : r.w);
    view.set_rect({0, HeaderHeight, listWidth, viewHeight});
    // The bar keeps the scroll value; the content keeps its place until the bar clamps it.
    content.set_rect({0, content.get_rect().y, listWidth, contentHeight});
    for (size_t i = 0; i < slots.size(); ++i)
        slots[i]->set_rect({0, static_cast<int>(i) * RowHeight, listWidth, RowHeight});
    newRow.set_rect({0, static_cast<int>(slots.size()) * RowHeight, listWidth, RowHeight});
    scrollBar.set_rect({r.w - ScrollBarWidth, HeaderHeight, ScrollBarWidth, viewHeight});
    scrollBar.show(overflow);
    scrollBar.update_bar();
}

void PreferencesEffectsScrollPanel::Draw(const event_info&) {
    window* w = get_window();
    if (w == nullptr)
        return;
    drawer& d = w->get_drawer();
    const ivec4& r = get_rect();
    d.set_brush_color(colours->listBack);
    d.draw_rect({0, 0, r.w, r.h});
    d.set_brush_color(colours->panelBack);
    d.draw_rect({0, 0, r.w, HeaderHeight});
    d.set_brush_color(colours->separatorLineColor);
    d.draw_rect({0, HeaderHeight - 1, r.w, 1});
    d.set_text_font("Arial", 12, font_weight::bold);
    d.set_text_format(text_align::left, text_valign::center);
    d.set_text_color(colours->rowSecondText);
    const std::vector<int> starts = PreferencesColumnStarts(kind, listWidth);
    const std::vector<std::string_view> titles = ColumnTitles(kind);
    for (size_t i = 0; i < titles.size(); ++i) {
        const int right = i + 1 < starts.size() ? starts[i + 1] : listWidth;
        d.draw_text({starts[i], 0, right - starts[i] - 6, HeaderHeight}, titles[i]);
    }
}

// --- input ---------------------------------------------------------------------------------------

uint64_t PreferencesEffectsScrollPanel::ClientPoint() const {
    const window* w = get_window();
    const ivec2 p = mouse::get_position(nullptr) - (w != nullptr ? w->get_client_rect().position() : ivec2{});
    return pack_pair(p.x, p.y);
}

void PreferencesEffectsScrollPanel::RowInput(PreferencesEffectSlot& row, const event_info& e) {
    switch (e.type) {
    case event_type::mouse_down:
        if (e.data != LeftButton)
            return;
        pressed = row.GetIndex();
        pressPoint = mouse::get_position(nullptr);
        grabOffset = mouse::get_position(&row);
        dragging = false;
        mouse::capture_widget(row);
        return;
    case event_type::mouse_move: {
        if (!pressed)
            return;
        const ivec2 p = mouse::get_position(nullptr);
        if (!dragging) {
            if (std::abs(p.x - pressPoint.x) <= DragThreshold &&
                std::abs(p.y - pressPoint.y) <= DragThreshold)
                return;
            dragging = true;
            dragImage.SetText(row.ColumnTexts().front());
            dragImage.show(true);
            dragImage.bring_to_front();
            marker.show(true);
            marker.bring_to_front();
        }
        UpdateDrag();
        return;
    }
    case event_type::key_down:
        if (pressed && e.data == EscapeKey)
            EndPress(row);
        return;
    case event_type::mouse_up:
        break;
    default:
        return;
    }
    if (e.data == RightButton) {
        if (!pressed && onSlotEvent)
            onSlotEvent(&row, event_type::mouse_up, ClientPoint());
        return;
    }
    if (e.data != LeftButton || !pressed)
        return;
    const size_t from = *pressed;
    const bool dropped = dragging;
    const bool inside = Contains(*this, mouse::get_position(this));
    const size_t gap = GapUnderPointer();
    EndPress(row);
    if (!dropped) {
        if (onSlotEvent)
            onSlotEvent(&row, event_type::pressed, ClientPoint());
    } else if (inside) {
        MoveEntry(from, gap);
    }
}

void PreferencesEffectsScrollPanel::NewRowInput(PreferencesEffectNew& row, const event_info& e) {
    if (e.data == LeftButton && onNewEvent)
        onNewEvent(&row, event_type::pressed, ClientPoint());
}

void PreferencesEffectsScrollPanel::UpdateDrag() {
    // Past the top or bottom of the view, the rows scroll a step per move to bring the gap in.
    const int y = mouse::get_position(&view).y;
    if (y < 0)
        scrollBar.change_scroll(-1);
    else if (y >= view.get_rect().h)
        scrollBar.change_scroll(1);
    dropGap = GapUnderPointer();
    marker.set_rect({0, std::max(0, static_cast<int>(dropGap) * RowHeight - 1), listWidth, 2});
    const ivec2 p = mouse::get_position(this) - grabOffset;
    dragImage.set_rect({p.x, p.y, listWidth, RowHeight});
    update(false);
}

void PreferencesEffectsScrollPanel::EndPress(PreferencesEffectSlot& row) {
    pressed.reset();
    dragging = false;
    dragImage.hide();
    marker.hide();
    mouse::release_widget(row);
}

size_t PreferencesEffectsScrollPanel::GapUnderPointer() {
    const int y = std::max(0, mouse::get_position(&content).y);
    return std::min<size_t>(static_cast<size_t>((y + RowHeight / 2) / RowHeight), slots.size());
}

void PreferencesEffectsScrollPanel::MoveEntry(size_t from, size_t gap) {
    if (from >= slots.size() || gap == from || gap == from + 1)
        return; // dropped where it was
    const auto at = [this](size_t i) {
        return list.begin() + static_cast<std::ptrdiff_t>(i);
    };
    if (gap > from)
        std::rotate(at(from), at(from + 1), at(gap));
    else
        std::rotate(at(gap), at(from), at(from + 1));
    Refresh();
}
