#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/generic_panel.h"
#include "nimbit/ui/widget.h"
#include "popup/parts/effects_scroll_bar.h"
#include "preferences/preferences_effect_drag.h"
#include "preferences/preferences_effect_slot.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

struct EffectAlias;
struct UIColors;

// One of the preferences window's lists: a header line of column titles over one row per entry and a
// "New" row, scrolling when they do not fit. Rows reorder by dragging; everything else a row offers
// is the window's, reached through onSlotEvent and onNewEvent. The list is edited in place: whoever
// changes it calls Refresh.
class PreferencesEffectsScrollPanel : public nimbit::ui::widget {
public:
    static constexpr int HeaderHeight = 24;
    static constexpr int ScrollBarWidth = 14;
    // How far the pointer moves with the button down before a press becomes a drag.
    static constexpr int DragThreshold = 4;

    PreferencesEffectsScrollPanel(PreferencesListKind kind, std::vector<EffectAlias>& list);
    ~PreferencesEffectsScrollPanel() override;

    void SwitchTheme(const UIColors* colours);
    // Rebuilds the rows from the list, keeping the scroll position where the list still reaches it.
    void Refresh();

    // A left click on a row raises event_type::pressed, a right click event_type::mouse_up; the data
    // is the window client point of the pointer (pack_pair(x, y)). The handlers may change the list
    // and call Refresh.
    std::function<void(PreferencesEffectSlot*, nimbit::ui::event_type, uint64_t)> onSlotEvent;
    // A left click on the "New" row: event_type::pressed and the client point, as above.
    std::function<void(PreferencesEffectNew*, nimbit::ui::event_type, uint64_t)> onNewEvent;

    const std::vector<std::unique_ptr<PreferencesEffectSlot>>& GetSlots() const { return slots; }
    PreferencesEffectNew& GetNewRow() { return newRow; }
    PreferencesListKind GetKind() const { return kind; }
    EffectsScrollBar& GetScrollBar() { return scrollBar; }
    bool IsDragging() const { return dragging; }
    // Where the dragged row would land: before the row of that index (the row count: after the last).
    size_t GetDropGap() const { return dropGap; }

private:
    friend class PreferencesEffectSlot;
    friend class PreferencesEffectNew;

    void Build(const nimbit::ui::event_info&);
    void Layout();
    void Draw(const nimbit::ui::event_info&);
    // Input of the rows; both may end in a Refresh that destroys the row.
    void RowInput(PreferencesEffectSlot& row, const nimbit::ui::event_info& e);
    void NewRowInput(PreferencesEffectNew& row, const nimbit::ui::event_info& e);
    void UpdateDrag();
    // Ends a press or drag, releasing the pointer held by `row`.
    void EndPress(PreferencesEffectSlot& row);
    size_t GapUnderPointer();
    // Moves the entry at `from` to the gap before index `gap` (list.size(): the end).
    void MoveEntry(size_t from, size_t gap);
    uint64_t ClientPoint() const;

    PreferencesListKind kind;
    std::vector<EffectAlias>& list;
    const UIColors* colours;
    int listWidth = 0;

    nimbit::ui::widget view;    // the rows' window below the header
    nimbit::ui::widget content; // the rows, moved by the scroll bar
    nimbit::ui::generic_panel marker;
    EffectsScrollBar scrollBar;
    PreferencesEffectDrag dragImage;
    PreferencesEffectNew newRow{*this};
    std::vector<std::unique_ptr<PreferencesEffectSlot>> slots;

    std::optional<size_t> pressed; // the row a left press started on
    nimbit::ivec2 pressPoint;      // screen
    nimbit::ivec2 grabOffset;      // the pointer inside the pressed row
    bool dragging = false;
    size_t dropGap = 0;
};
