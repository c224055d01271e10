#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/native_popup_menu.h"

#include <optional>
#include <vector>

// Popup menus of the offscreen backend answer from a script: each show() takes the next queued
// answer (an item id, or dismissal) and records what was shown. A disabled item, a separator or an
// unknown id cannot be chosen and dismisses the menu, as it would on screen; an empty script dismisses.

namespace nimbit::ui::offscreen {

// Queues the answer of a later show(): the id to choose, or std::nullopt to dismiss.
void push_menu_answer(std::optional<uint32_t> id);
void clear_menu_answers();

struct shown_menu {
    const native_window* in = nullptr;
    _vec2<int> position; // in the window's client area
    std::vector<menu_item> items;
    uint32_t max_height = 0;
};
// Every menu shown so far, oldest first.
const std::vector<shown_menu>& shown_menus();
void clear_shown_menus();

} // namespace nimbit::ui::offscreen
