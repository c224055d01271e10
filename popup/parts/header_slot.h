#pragma once

#include "nimbit/ui/generic_panel.h"

#include <string>

// Which group a title row in the popup's list heads; its caption and colours follow from it.
enum class HeaderKind { Effects, Presets, NoMatches, DidYouMean };

// A group title in the popup's list: "Effects", "Presets", "No Matches" or, over near misses of a
// mistyped search, "Did you mean".
class HeaderSlot : public nimbit::ui::generic_panel {
public:
    static constexpr int Width = 100;
    static constexpr int Height = 20;

    explicit HeaderSlot(HeaderKind kind);
    ~HeaderSlot() override;

    void SetColors(nimbit::vec4 const& back, nimbit::vec4 const& text);
    HeaderKind GetKind() const { return kind; }
    const std::string& GetText() const { return text; }
    const nimbit::vec4& GetBackColor() const { return backColor; }
    const nimbit::vec4& GetTextColor() const { return textColor; }

private:
    void Draw(const nimbit::ui::event_info&);

    HeaderKind kind;
    std::string text;
    nimbit::vec4 backColor;
    nimbit::vec4 textColor{1, 1, 1, 1};
};
