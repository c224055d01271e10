#pragma once

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/widget.h"

#include <string>
#include <string_view>

namespace nimbit::ui {

// A push button, or a toggle button, showing a text and/or the theme's "button_back_image". The
// image holds its frames side by side: normal, hover, pressed (as many as the image declares).
// A press is reported as pressed (data: 1 when the button is toggled on after it, else 0) from a
// left click released over the button, or from Return or Space while it has the focus.
class generic_button : public widget {
public:
    generic_button();
    ~generic_button() override;

    void set_text(std::string_view utf8);
    const std::string& get_text() const { return text; }
    // A toggle button flips its toggled state on every press.
    void set_toggle_mode(bool on) { toggle_mode = on; }
    void set_toggled(bool on);
    bool is_toggled() const { return toggled; }
    // Draws the hover look whatever the pointer does (for keyboard-driven lists of buttons).
    void force_hover(bool on);
    bool is_hovered() const { return clicks.hovered || forced_hover; }
    bool is_pushed() const { return clicks.pushed; }
    // Raises pressed as a click would.
    void press();

private:
    void draw(drawer& d, const ivec4& area);
    void on_theme(const event_info&);
    void on_mouse(const event_info&);
    void on_key(const event_info&);

    std::string text;
    bool toggle_mode = false;
    bool toggled = false;
    click_state clicks;
    bool forced_hover = false;
    bitmap image;
    int image_frames = 1;
};

} // namespace nimbit::ui
