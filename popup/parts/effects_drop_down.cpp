#include "popup/parts/effects_drop_down.h"

#include "popup/ui_colors.h"

using namespace nimbit;
using namespace nimbit::ui;

EffectsDropDown::EffectsDropDown() {
    set_name("EffectsDropDown");
    nimbit::ui::theme& t = get_theme();
    t.set("dropdown_gradient_text", false);
    t.set("dropdown_gradient_button", false);
    t.set("dropdown_font_name", std::string("Arial"));
}

EffectsDropDown::~EffectsDropDown() = default;

void EffectsDropDown::SwitchTheme(UIColors const* colours) {
    if (colours == nullptr)
        return;
    nimbit::ui::theme& t = get_theme();
    SetThemeColors(t, *colours,
                   {{"dropdown_text_part_color", &UIColors::dropDownBack},
                    {"dropdown_text_part_color_hover", &UIColors::dropDownBackHover},
                    {"dropdown_button_part_color", &UIColors::dropDownBack},
                    {"dropdown_button_part_color_hover", &UIColors::dropDownBackHover},
                    {"dropdown_font_color", &UIColors::dropDownFont},
                    {"dropdown_border_color_normal", &UIColors::borderColor},
                    {"dropdown_border_color_hover", &UIColors::buttonBorderHover},
                    {"dropdown_border_color_focus", &UIColors::buttonBorderFocus}});
    t.set("dropdown_button_image", colours->dropDownArrow);
}
