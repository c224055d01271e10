#pragma once

#include "nimbit/ui/drop_down_box.h"

struct UIColors;

// The drop-down of the plug-in's settings: flat panels instead of the toolkit's gradients, the theme's
// arrow, and the theme's colours.
class EffectsDropDown : public nimbit::ui::drop_down_box {
public:
    EffectsDropDown();
    ~EffectsDropDown() override;

    void SwitchTheme(UIColors const* colours);
};
