#pragma once

#include "nimbit/graphics/vec.h"

#include <cstdint>

namespace nimbit::ui {

class widget;

enum class cursor : uint32_t {
    arrow = 0,
    ibeam = 1,
    hand = 2,
    resize_horizontal = 3,
    resize_vertical = 4,
    wait = 5
};

// The pointer. One widget in the process may hold the capture: while it does, mouse_up and mouse_move
// go to it alone, and it releases the capture in its own mouse_up handler.
class mouse {
public:
    enum class button : uint32_t { left = 0, other = 1, right = 2 };

    // Relative to the widget's top-left corner, or to the screen when `w` is null.
    static _vec2<int> get_position(const widget* w);
    static void capture_widget(widget& w);
    static void release_widget(widget& widgetToRelease);
    static widget* get_captured_widget();
    static bool is_button_down(const button& b);
    static void set_cursor(cursor c);
    // The screen resolution, read from the platform once per process.
    static float get_dpi();

    // A destroyed widget must not stay captured.
    static void forget_widget(const widget* w);
};

} // namespace nimbit::ui
