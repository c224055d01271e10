#pragma once

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/widget.h"

#include <string>
#include <string_view>

namespace nimbit::ui {

// The look of the box: square with a tick, or round with a dot.
enum class check_box_type : int { square = 0, round = 1 };

// A check box with a text at its right. With a bound bool (set_pointer) the bool is the state:
// clicks write it and painting reads it, so code that changes the bool is seen at the next repaint.
// A click or Space flips the state and raises value_changed (data: 1 checked, 0 not).
class check_box : public widget {
public:
    check_box();
    ~check_box() override;

    void set_selected(bool on, bool notify = false);
    bool is_selected() const { return bound ? *bound : selected; }
    // Null unbinds (the box keeps the bool's last value).
    void set_pointer(bool* value);
    void set_text(std::string_view utf8);
    const std::string& get_text() const { return text; }
    // box_size: the side of the box in pixels (at least 6; clamped to the height).
    void set_type(check_box_type type, int box_size);
    void toggle();

    // The box's rectangle inside the control.
    ivec4 box_rect() const;

private:
    void draw(drawer& d, const ivec4& area);
    void on_theme(const event_info&);
    void on_mouse(const event_info&);

    std::string text;
    bool selected = false;
    bool* bound = nullptr;
    click_state clicks;
    check_box_type type = check_box_type::square;
    int box_size = 14;
    bitmap image;
    int image_frames = 2;
};

} // namespace nimbit::ui
