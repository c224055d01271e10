#pragma once

#include "nimbit/ui/scroll_bar.h"

struct UIColors;
namespace nimbit::ui {
class drawer;
}

// The list's scroll bar: a slim thumb on a flat track, without arrow buttons, in the theme's colours.
class EffectsScrollBar : public nimbit::ui::scroll_bar {
public:
    EffectsScrollBar();
    ~EffectsScrollBar() override;

    void SwitchTheme(UIColors const* colours);

private:
    void Draw(const nimbit::ui::event_info&);
    void draw_background(nimbit::ui::drawer& d);
    void draw_bar(nimbit::ui::drawer& d);

    nimbit::vec4 track{0.125f, 0.125f, 0.125f, 1};
    nimbit::vec4 thumb{0.294f, 0.294f, 0.294f, 1};
};
