#pragma once

#include "nimbit/ui/generic_panel.h"
#include "nimbit/ui/input_box.h"
#include "nimbit/ui/window.h"
#include "popup/effect_alias.h"
#include "popup/effect_search.h"
#include "popup/parts/effects_scroll_bar.h"

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

struct EffectData;
struct UIColors;

// The chosen catalogue entry.
struct EffectSearchResult {
    const EffectData* effect = nullptr;
};

// Picks one catalogue entry: a search field over the matching entries, found as the popup finds
// them but with no blacklist or aliases in the way. Up and Down move the selection, Return or a
// click on a row chooses, Escape gives up. The list paints only the rows in view, so the whole
// catalogue (thousands of entries) scrolls without a widget per row.
class PreferencesEditEffectPopup : public nimbit::ui::window {
public:
    static constexpr int RowHeight = 26;

    PreferencesEditEffectPopup(nimbit::ui::window* parent, nimbit::ivec2 position, const UIColors* colours,
                               std::string_view title, const std::vector<EffectData>& catalogue);
    ~PreferencesEditEffectPopup() override;

    // Runs the modal loop; true when an entry was chosen.
    bool Run();
    EffectSearchResult GetResult() const;

    nimbit::ui::input_box& GetSearchField() { return searchField; }
    const SearchResults& GetResults() const { return results; }
    // Index into GetResults().entries of the selected row.
    size_t GetSelection() const { return selected; }
    // The entries whose rows lie in the list's view: [first, last).
    std::pair<size_t, size_t> RowsInView() const;

private:
    void SearchChanged();
    void KeyDown(const nimbit::ui::event_info& e);
    void Select(size_t index);
    void Choose(size_t index);
    void DrawRows(const nimbit::ui::event_info&);
    void Mouse(const nimbit::ui::event_info& e);

    const std::vector<EffectData>& catalogue;
    const UIColors& colours;
    const std::vector<EffectAlias> noEntries; // the search's blacklist and aliases: none
    EffectSearch search;
    SearchResults results;
    size_t selected = 0;
    size_t pressedRow = SIZE_MAX;
    const EffectData* chosen = nullptr;

    nimbit::ui::input_box searchField;
    nimbit::ui::generic_panel listFrame;
    nimbit::ui::widget listContent;
    EffectsScrollBar scrollBar;
};
