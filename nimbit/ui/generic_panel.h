#pragma once

#include "nimbit/ui/widget.h"

namespace nimbit::ui {

class drawer;

// A plain panel: fills itself with "default_back_color" (set it with set_background).
class generic_panel : public widget {
public:
    generic_panel();
    ~generic_panel() override;

private:
    void draw(drawer& d, const ivec4& area);
};

} // namespace nimbit::ui
