#include "preferences/preferences_edit_effect_popup.h"

#include "host/effect_data.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/mouse.h"
#include "popup/ui_colors.h"
#include "preferences/preferences_alias_popup.h"

#include <algorithm>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr ivec2 PickerSize{400, 430};
constexpr int Margin = 10, FieldHeight = 26, ScrollBarWidth = 10, TextLeft = 10;

} // namespace

PreferencesEditEffectPopup::PreferencesEditEffectPopup(window* parent, ivec2 position,
                                                       const UIColors* colours, std::string_view title,
                                                       const std::vector<EffectData>& catalogue)
    : catalogue(catalogue), colours(PreferencesModalColours(colours)) {
    const UIColors& c = this->colours;
    CreatePreferencesModal(*this, title, position, PickerSize, parent, c.windowBack);
    const ivec2 inside = get_client_rect().size();
    widget& root = get_root();
    searchField.create(root, {Margin, Margin, inside.x - 2 * Margin, FieldHeight});
    StylePreferencesInput(searchField, c);
    searchField.show(true);

    const int listTop = 2 * Margin + FieldHeight;
    const ivec4 frame{Margin, listTop, inside.x - 2 * Margin, inside.y - listTop - Margin};
    listFrame.create(root, frame);
    listFrame.set_background(c.listBack);
    listFrame.show(true);
    listContent.create(listFrame, {0, 0, frame.w - ScrollBarWidth, 0});
    listContent.show(true);
    scrollBar.create(root, {frame.x + frame.w - ScrollBarWidth, frame.y, ScrollBarWidth, frame.h});
    scrollBar.set_scroll_panel(&listContent);
    scrollBar.add_wheel_area(listFrame);
    scrollBar.set_step(RowHeight);
    scrollBar.SwitchTheme(&c);
    scrollBar.show(true);

    auto& ev = event_manager::instance();
    ev.add_event(&searchField, this, event_type::value_changed,
                 [this](const event_info&) { SearchChanged(); });
    ev.add_event(&listContent, this, event_type::draw, &PreferencesEditEffectPopup::DrawRows);
    ev.add_event(&listFrame, this, event_type::draw, [this](const event_info&) {
        if (!results.no_matches)
            return;
        drawer& d = get_drawer();
        d.set_text_font("Arial", 13);
        d.set_text_format(text_align::left, text_valign::center);
        d.set_text_color(this->colours.noMatchesHeaderText);
        d.draw_text({TextLeft, 0, listFrame.get_rect().w - TextLeft, RowHeight}, "No Matches");
    });
    for (event_type t : {event_type::mouse_down, event_type::mouse_up, event_type::mouse_dbl_click})
        ev.add_event(&listContent, this, t, &PreferencesEditEffectPopup::Mouse);
    ev.add_event(this, this, event_type::key_down, &PreferencesEditEffectPopup::KeyDown);
    ev.add_event(this, this, event_type::focus_gained,
                 [this](const event_info&) { searchField.focus(focus_cause::keyboard); });
    SearchChanged();
}

PreferencesEditEffectPopup::~PreferencesEditEffectPopup() = default;

bool PreferencesEditEffectPopup::Run() {
    chosen = nullptr;
    pressedRow = SIZE_MAX;
    searchField.focus(focus_cause::keyboard);
    return show_modal() == 1 && chosen != nullptr;
}

EffectSearchResult PreferencesEditEffectPopup::GetResult() const {
    return {chosen};
}

void PreferencesEditEffectPopup::SearchChanged() {
    const std::string text = searchField.get_text();
    if (text.empty()) {
        // Every entry, effects before presets as the search orders them; it finds nothing for no text.
        results = {};
        results.entries.reserve(catalogue.size());
        for (const bool presets : {false, true})
            for (const EffectData& e : catalogue)
                if (e.is_preset == presets)
                    results.entries.push_back({&e, false});
        results.effect_count = static_cast<size_t>(std::count_if(
            catalogue.begin(), catalogue.end(), [](const EffectData& e) { return !e.is_preset; }));
    } else {
        search.Run(text, catalogue, noEntries, noEntries, results);
    }
    const int width = listContent.get_rect().w;
    listContent.set_rect({0, 0, width, static_cast<int>(results.entries.size()) * RowHeight});
    scrollBar.update_bar();
    scrollBar.set_value(0);
    selected = 0;
    pressedRow = SIZE_MAX;
    listFrame.update(false);
}

std::pair<size_t, size_t> PreferencesEditEffectPopup::RowsInView() const {
    const int top = scrollBar.get_value();
    const int bottom = top + listFrame.get_rect().h;
    const size_t first = static_cast<size_t>(std::max(top, 0) / RowHeight);
    const size_t last = static_cast<size_t>((std::max(bottom, 0) + RowHeight - 1) / RowHeight);
    return {std::min(first, results.entries.size()), std::min(last, results.entries.size())};
}

void PreferencesEditEffectPopup::Select(size_t index) {
    if (index >= results.entries.size())
        return;
    selected = index;
    scrollBar.reveal(static_cast<int>(index) * RowHeight, RowHeight, listFrame.get_rect().h);
    listFrame.update(false);
}

void PreferencesEditEffectPopup::Choose(size_t index) {
    if (index >= results.entries.size())
        return;
    chosen = results.entries[index].effect;
    end_modal(1);
}

void PreferencesEditEffectPopup::KeyDown(const event_info& e) {
    const size_t count = results.entries.size();
    switch (e.data) {
    case event_key::escape:
        end_modal(0);
        break;
    case event_key::return_key:
        Choose(selected);
        break;
    case event_key::up:
        if (count != 0)
            Select(selected == 0 ? count - 1 : selected - 1);
        break;
    case event_key::down:
        if (count != 0)
            Select(selected + 1 >= count ? 0 : selected + 1);
        break;
    default:
        break;
    }
}

void PreferencesEditEffectPopup::Mouse(const event_info& e) {
    if (e.data != static_cast<uint32_t>(mouse::button::left))
        return;
    const int y = mouse::get_position(&listContent).y;
    const size_t row = y >= 0 ? static_cast<size_t>(y / RowHeight) : results.entries.size();
    // A row is chosen on the release over the row pressed, so the release cannot reach the window
    // below once this one is gone. The release of a double click is never delivered: it counts now.
    if (e.type == event_type::mouse_down) {
        pressedRow = row;
        Select(row);
    } else if (e.type == event_type::mouse_dbl_click || row == pressedRow) {
        Choose(row);
    }
}

void PreferencesEditEffectPopup::DrawRows(const event_info&) {
    drawer& d = get_drawer();
    const int width = listContent.get_rect().w;
    const auto [first, last] = RowsInView();
    for (size_t i = first; i < last; ++i) {
        const EffectData& effect = *results.entries[i].effect;
        const ivec4 row{0, static_cast<int>(i) * RowHeight, width, RowHeight};
        const bool lit = i == selected;
        d.set_brush_color(lit ? (effect.is_preset ? PresetHighlightColor : EffectHighlightColor)
                              : colours.listBack);
        d.draw_rect(row);
        d.set_text_font("Arial", 13);
        d.set_text_format(text_align::left, text_valign::center);
        d.set_text_color(lit ? vec4{1, 1, 1, 1} : colours.rowText);
        d.draw_text({TextLeft, row.y, width / 2 + 60, RowHeight}, effect.name);
        // The category, quietly on the right: it tells entries of the same name apart.
        if (effect.category.empty())
            continue;
        d.set_text_font("Arial", 10);
        d.set_text_format(text_align::right, text_valign::center);
        d.set_text_color(lit ? vec4{1, 1, 1, 0.75f} : colours.rowSecondText);
        d.draw_text({width / 2, row.y, width / 2 - TextLeft, RowHeight}, effect.category);
    }
}
