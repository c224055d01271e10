#pragma once

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/widget.h"

#include <vector>

namespace nimbit::ui {

class drawer;

enum class scroll_type : int { vertical = 0, horizontal = 1 };

// Scrolls one panel by moving it inside its parent: the panel's top (or left) edge runs from 0 down
// to -(how far the panel overflows its parent). The bar follows the sizes of the panel and of its
// parent. The value is how far the panel is scrolled (0 .. get_max_scroll()); every change raises
// value_changed on the bar with the value as data.
//
// The bar is a track with a thumb, and with draw_buttons an arrow button at each end.
class scroll_bar : public widget {
public:
    scroll_bar(scroll_type type, bool draw_buttons);
    ~scroll_bar() override;

    void set_scroll_panel(widget* panel);
    widget* get_scroll_panel() const { return panel; }
    // The wheel bubbles up from the widget under the pointer through its parents, and the bar is
    // usually the panel's sibling, not its ancestor: wheel turns that reach `area` (typically the
    // view the panel scrolls in) scroll this bar as well. Lasts until the bar or the area goes.
    void add_wheel_area(widget& area);

    // Scroll amounts other than exact ones are rounded down to whole steps.
    void set_step(int pixels);
    int get_step() const { return step; }
    // Moves the panel by `amount` pixels (positive shows what lies before), clamped to the ends.
    void scroll(int amount, bool exact);
    // Scrolls by whole steps (positive towards the end).
    void change_scroll(int steps);
    void set_value(int value);
    void change_value(int delta);
    // Scrolls the least that brings the span [top, top + height) into a view `visible` pixels tall
    // (the span's top wins when it is taller than the view).
    void reveal(int top, int height, int visible);
    int get_value() const { return value; }
    int get_max_scroll() const { return overflow; }
    // Re-reads the sizes, clamps the value and repaints.
    void update_bar();

    // Parts, in the bar's coordinates.
    ivec4 track_rect() const;
    ivec4 thumb_rect() const;
    ivec4 button_rect(bool at_end) const;

private:
    void draw(drawer& d, const ivec4& area);
    void on_mouse(const event_info&);
    void on_wheel(const event_info&);
    void on_theme(const event_info&);
    void detach_panel();
    void apply_value(int new_value);
    int panel_length() const;
    int view_length() const;
    int along(_vec2<int> p) const { return type == scroll_type::vertical ? p.y : p.x; }

    scroll_type type;
    bool draw_buttons;
    widget* panel = nullptr;
    std::vector<uint32_t> panel_events;
    int step = 1;
    int overflow = 0;
    int value = 0;
    bool dragging = false;
    int drag_offset = 0;
    int pressed_part = 0; // 0 none, 1 start button, 2 end button, 3 track, 4 thumb
    int min_thumb = 20;
    bitmap arrow;
};

} // namespace nimbit::ui
