#pragma once

#include "nimbit/ui/widget.h"

namespace nimbit::ui {

// A plain panel: fills itself with "default_back_color" (set it with set_background).
class generic_panel : public widget {
public:
    generic_panel();
    ~generic_panel() override;

private:
    void draw(const event_info&);
};

} // namespace nimbit::ui
