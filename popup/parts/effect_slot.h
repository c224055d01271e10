#pragma once

#include "nimbit/ui/widget.h"
#include "popup/effect_search.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

struct EffectData;
class EffectsPopupInterface;
namespace nimbit::ui {
class drawer;
}

// One result row of the popup's list: the entry's name, highlighted when selected or hovered (red for
// a preset, blue for an effect), the parts of it the search matched in an accent colour, and a
// context menu with the user's list actions.
class EffectSlot : public nimbit::ui::widget {
public:
    static constexpr int Width = 100;
    static constexpr int Height = 30;
    static constexpr int TextLeft = 42;

    // Context menu item identifiers; the "Replace Shortcut" items run from ReplaceFirstId for slot 1.
    enum MenuId : uint32_t {
        TitleId = 1,
        SeparatorId = 2,
        FavoritesId = 3,
        BlacklistId = 4,
        CreateShortcutId = 5,
        ReplaceShortcutId = 6,
        ReplaceFirstId = 61,
    };

    EffectSlot(EffectsPopupInterface& popup, bool contextMenuAllowed);
    ~EffectSlot() override;

    void SetEffect(const EffectData* entry, bool fromUserList,
                   const std::vector<std::string>* shortcutLabels);
    const EffectData* GetEffect() const { return effect; }
    bool IsUserEntry() const { return userEntry; }
    // The byte ranges of the name that matched the search, sorted and apart.
    void SetHighlights(std::span<const ByteRange> ranges) { highlights.assign(ranges.begin(), ranges.end()); }
    const std::vector<ByteRange>& GetHighlights() const { return highlights; }
    void SetTextColor(const nimbit::vec4& normal, const nimbit::vec4& second, const nimbit::vec4& match);
    void SetSelected(bool on);
    bool IsSelected() const { return selected; }
    void SetHover(bool on);
    bool IsHovered() const { return hovered; }
    // The colour the row's background is drawn in now.
    nimbit::vec4 BackgroundColor() const;

    // The row's position among the result rows, and what a click or Return on the row does (the popup
    // applies the row's entry).
    void SetIndex(size_t position) { index = position; }
    size_t GetIndex() const { return index; }
    void SetActivate(std::function<void(const nimbit::ui::event_info&)> handler) {
        activate = std::move(handler);
    }

    // Shows the context menu at a client point of the window and carries out the choice.
    void ShowContextMenu(nimbit::ivec2 position);

private:
    void Draw(const nimbit::ui::event_info&);
    void DrawName(nimbit::ui::drawer& d, const nimbit::ivec4& rect, bool lit);
    void MouseEnter(const nimbit::ui::event_info&);
    void MouseLeave(const nimbit::ui::event_info&);
    void MouseUp(const nimbit::ui::event_info&);
    void KeyDown(const nimbit::ui::event_info&);
    void OnMenuChoice(uint32_t id);

    EffectsPopupInterface& popup;
    const EffectData* effect = nullptr;
    bool userEntry = false;
    // The popup's slot labels at the time of the search; shared by every row of that search.
    const std::vector<std::string>* shortcutLabels = nullptr;
    nimbit::vec4 textColor{1, 1, 1, 1};
    nimbit::vec4 secondColor{0.5f, 0.5f, 0.5f, 1};
    nimbit::vec4 matchColor{1, 0.85f, 0.4f, 1};
    std::vector<ByteRange> highlights;
    bool selected = false;
    bool hovered = false;
    bool contextMenuAllowed = true;
    size_t index = 0;
    std::function<void(const nimbit::ui::event_info&)> activate;
};
