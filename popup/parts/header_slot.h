#pragma once

#include "nimbit/ui/generic_panel.h"

#include <string>
#include <string_view>

// A group title in the popup's list: "Effects", "Presets" or "No Matches".
class HeaderSlot : public nimbit::ui::generic_panel {
public:
    static constexpr int Width = 100;
    static constexpr int Height = 20;

    HeaderSlot(std::string_view const& text, nimbit::vec4 const& colour);
    ~HeaderSlot() override;

    void SetTextColor(nimbit::vec4 const& colour);
    const std::string& GetText() const { return text; }
    const nimbit::vec4& GetBackColor() const { return backColor; }
    const nimbit::vec4& GetTextColor() const { return textColor; }

private:
    void Draw(const nimbit::ui::event_info&);

    std::string text;
    nimbit::vec4 backColor;
    nimbit::vec4 textColor{1, 1, 1, 1};
};
