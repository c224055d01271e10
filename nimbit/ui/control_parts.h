#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/event_manager.h"

#include <string_view>

// Pieces the stock controls share: pointer tracking for clickable controls, and the theme reads
// that several of them make the same way.

namespace nimbit::ui {

class bitmap;
class drawer;
class theme;
class widget;

// Hover and press of a control clicked with the left button: a press captures the mouse, a release
// inside the control completes a click, and while pressed the hover follows the pointer.
struct click_state {
    bool hovered = false;
    bool pushed = false;

    // For mouse_enter, mouse_leave, mouse_move, mouse_down and mouse_up: repaints `self` when its
    // look changes, and returns true when a click is complete (the caller runs its action).
    bool on_mouse(widget& self, const event_info& e);
};

// Releases the mouse when `w` holds it (a control being destroyed or done with a drag).
void release_capture(widget& w);

// The drawer of the window `w` paints in, or null when it has none.
drawer* drawer_of(const widget& w);
// The widget's own rectangle at its origin.
ivec4 local_area(const widget& w);

// Makes `paint` the widget's draw handler: it runs with the drawer of the widget's window and the
// widget's own rectangle at its origin, and not at all while the widget has no window.
template <typename T> void add_paint_handler(T& w, void (T::*paint)(drawer&, const ivec4& area)) {
    event_manager::instance().add_event(&w, &w, event_type::draw, [&w, paint](const event_info&) {
        if (drawer* d = drawer_of(w))
            (w.*paint)(*d, local_area(w));
    });
}

// Loads the image stream stored under `key` into `image`, unloading what it held; returns the
// stream's frame count (at least 1), or 0 when the key holds no image that loads.
int load_theme_image(bitmap& image, const theme& t, std::string_view key);

// The colour under "<prefix>border_color_focus", "_hover" or "_normal", in that order of precedence.
vec4 border_color(const theme& t, std::string_view prefix, bool focused, bool hovered);

// Sets the text font from the keys "<prefix>font_name", "font_size", "font_weight" and "font_style".
void set_theme_font(drawer& d, const theme& t, std::string_view prefix);

} // namespace nimbit::ui
