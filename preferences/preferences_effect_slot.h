#pragma once

#include "nimbit/ui/widget.h"

#include <cstddef>
#include <string>
#include <vector>

struct EffectAlias;
struct UIColors;
class PreferencesEffectsScrollPanel;

// Which of the user's lists a panel edits.
enum class PreferencesListKind { Shortcuts, Favorites, Blacklist };

// Left edges of a list's text columns in a row `width` wide, the entry's name first. The header's
// titles and the rows' texts share them so that they line up.
std::vector<int> PreferencesColumnStarts(PreferencesListKind kind, int width);

// One entry of a preferences list: its texts in the list's columns, lit while hovered. Presses go to
// the panel, which tells clicks from drags.
class PreferencesEffectSlot : public nimbit::ui::widget {
public:
    static constexpr int Height = 26;

    PreferencesEffectSlot(PreferencesEffectsScrollPanel& panel, std::vector<EffectAlias>& list, size_t index);
    ~PreferencesEffectSlot() override;

    size_t GetIndex() const { return index; }
    EffectAlias& GetEntry();
    PreferencesListKind GetKind() const;
    // The texts of the columns, in column order (empty where the entry has nothing to show).
    std::vector<std::string> ColumnTexts();

    void SetColours(const UIColors* colours);
    void SetHover(bool on);
    bool IsHovered() const { return hovered; }

private:
    void Draw(const nimbit::ui::event_info&);
    void Mouse(const nimbit::ui::event_info&);

    PreferencesEffectsScrollPanel& panel;
    std::vector<EffectAlias>& list;
    size_t index;
    const UIColors* colours = nullptr;
    bool hovered = false;
};

// The last row of a panel: adds an entry to the list ("New +" and its kin).
class PreferencesEffectNew : public nimbit::ui::widget {
public:
    explicit PreferencesEffectNew(PreferencesEffectsScrollPanel& panel);
    ~PreferencesEffectNew() override;

    PreferencesListKind GetKind() const;
    std::string_view GetText() const;

    void SetColours(const UIColors* colours);
    void SetHover(bool on);
    bool IsHovered() const { return hovered; }

private:
    void Draw(const nimbit::ui::event_info&);

    PreferencesEffectsScrollPanel& panel;
    const UIColors* colours = nullptr;
    bool hovered = false;
};
