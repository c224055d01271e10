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
    t.set("dropdown_text_part_color", colours->dropDownBack);
    t.set("dropdown_text_part_color_hover", colours->dropDownBackHover);
    t.set("dropdown_button_part_color", colours->dropDownBack);
    t.set("dropdown_button_part_color_hover", colours->dropDownBackHover);
    t.set("dropdown_font_color", colours->dropDownFont);
    t.set("dropdown_border_color_normal", colours->borderColor);
    t.set("dropdown_border_color_hover", colours->buttonBorderHover);
    t.set("dropdown_border_color_focus", colours->buttonBorderFocus);
    t.set("dropdown_button_image", colours->dropDownArrow);
}
