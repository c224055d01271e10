#pragma once

#include "nimbit/ui/widget.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nimbit::ui {
class drawer;
}

struct EffectAlias;
struct UIColors;

// Theme keys of the shortcuts bar and its buttons beyond the toolkit's own (nimbit/ui/theme_keys.h).
namespace shortcuts_bar_keys {
inline constexpr std::string_view button_font_color_numbers = "button_font_color_numbers";
inline constexpr std::string_view button_back_color_hover = "button_back_color_hover";
inline constexpr std::string_view other_border_color = "other_border_color";
inline constexpr std::string_view separator_line_color = "separator_line_color";
} // namespace shortcuts_bar_keys

// One numbered shortcut button: the slot's label with its number in the corner. A left click raises
// pressed on the button with the slot number (1 to 9) as data.
class EffectsShorcutButton : public nimbit::ui::widget {
public:
    static constexpr int Width = 43;
    static constexpr int Height = 34;

    explicit EffectsShorcutButton(unsigned long number);
    ~EffectsShorcutButton() override;

    unsigned long GetNumber() const { return number; }
    void SetLabel(std::string const& text);
    const std::string& GetLabel() const { return label; }
    bool IsHovered() const { return hovered; }
    bool IsPressed() const { return pressed; }

private:
    void Draw(nimbit::ui::drawer& d, const nimbit::ivec4& area);
    void OnMouse(const nimbit::ui::event_info&);

    unsigned long number;
    std::string label;
    bool hovered = false;
    bool pressed = false;
};

// The bar of numbered shortcut buttons shown while the search text is empty. A button's click is
// raised again on the bar as pressed with the slot number as data.
class EffectsShortcutsBar : public nimbit::ui::widget {
public:
    static constexpr int Height = 36;
    static constexpr int ButtonPitch = 44;

    EffectsShortcutsBar();
    ~EffectsShortcutsBar() override;

    // One button per occupied slot, at the slot's position, so an empty slot leaves a gap.
    void UpdateList(std::vector<EffectAlias> const& shortcuts, UIColors const* colours);
    const std::vector<std::unique_ptr<EffectsShorcutButton>>& GetButtons() const { return buttons; }

private:
    void Draw(nimbit::ui::drawer& d, const nimbit::ivec4& area);

    std::vector<std::unique_ptr<EffectsShorcutButton>> buttons;
};
