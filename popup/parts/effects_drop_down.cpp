#include "popup/parts/effects_drop_down.h"

#include "nimbit/ui/theme_keys.h"
#include "popup/ui_colors.h"

using namespace nimbit;
using namespace nimbit::ui;

EffectsDropDown::EffectsDropDown() {
    set_name("EffectsDropDown");
    nimbit::ui::theme& t = get_theme();
    t.set(theme_keys::dropdown_gradient_text, false);
    t.set(theme_keys::dropdown_gradient_button, false);
    t.set(theme_keys::dropdown_font_name, std::string("Arial"));
}

EffectsDropDown::~EffectsDropDown() = default;

void EffectsDropDown::SwitchTheme(UIColors const* colours) {
    if (colours == nullptr)
        return;
    nimbit::ui::theme& t = get_theme();
    SetThemeColors(t, *colours,
                   {{theme_keys::dropdown_text_part_color, &UIColors::dropDownBack},
                    {theme_keys::dropdown_text_part_color_hover, &UIColors::dropDownBackHover},
                    {theme_keys::dropdown_button_part_color, &UIColors::dropDownBack},
                    {theme_keys::dropdown_button_part_color_hover, &UIColors::dropDownBackHover},
                    {theme_keys::dropdown_font_color, &UIColors::dropDownFont},
                    {theme_keys::dropdown_border_color_normal, &UIColors::borderColor},
                    {theme_keys::dropdown_border_color_hover, &UIColors::buttonBorderHover},
                    {theme_keys::dropdown_border_color_focus, &UIColors::buttonBorderFocus}});
    t.set(theme_keys::dropdown_button_image, colours->dropDownArrow);
}
