#pragma once

#include "nimbit/graphics/vec.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

// The platform side of a popup menu. The toolkit keeps the items (popup_menu); the backend only
// presents them and reports the choice. Defined by the backend library (offscreen, cocoa).

namespace nimbit::ui {

class native_window;

struct menu_item {
    uint32_t id = 0;
    std::string text;
    bool separator = false;
    bool enabled = true;
    bool checked = false;
    std::vector<menu_item> submenu;
};

class native_popup_menu {
public:
    virtual ~native_popup_menu() = default;
    // Shows the items as a pop-up list (not pulled down, no automatic enabling, check marks as given)
    // at `position` in the window's client area and returns when it closes: the chosen item's id + 1,
    // or 0 when dismissed. max_height 0 means no limit.
    virtual uint32_t show(const native_window& in, _vec2<int> position, std::span<const menu_item> items,
                          uint32_t max_height) = 0;
};

std::unique_ptr<native_popup_menu> create_native_popup_menu();

} // namespace nimbit::ui
