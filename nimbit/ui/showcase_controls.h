#pragma once

#include "nimbit/ui/check_box.h"
#include "nimbit/ui/drop_down_box.h"
#include "nimbit/ui/flow_panel.h"
#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/generic_panel.h"
#include "nimbit/ui/image_panel.h"
#include "nimbit/ui/input_box.h"
#include "nimbit/ui/scroll_bar.h"
#include "nimbit/ui/split_panel.h"
#include "nimbit/ui/text_label.h"

#include <array>

namespace nimbit::ui {

// The controls of the showcase window, for code that wants to poke at them (tests, backends).
// Declaration order is creation order: parents before children.
struct showcase_controls {
    generic_panel background;
    flow_panel column{flow_type::vertical, false, false, true, false};
    text_label title;
    input_box search;
    input_box password;
    flow_panel row{flow_type::horizontal, false, false, false, false};
    generic_button button;
    generic_button toggle;
    check_box check;
    drop_down_box drop_down;
    split_panel split{split_type::side_by_side};
    image_panel image;
    generic_panel list_view;
    generic_panel list;
    std::array<text_label, 20> lines;
    scroll_bar scroll{scroll_type::vertical, true};
    bool check_value = true;
    int theme_choice = 1;
};

} // namespace nimbit::ui
