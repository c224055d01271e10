#pragma once

#include "nimbit/ui/input_inside_panel.h"

namespace nimbit::ui {

class drawer;

// A single-line text field: the visible frame (background, border) around an input_inside_panel that
// does the editing. Handlers for value_changed, pressed (Return), cancelled (Escape), key_char and
// key_down are registered on the box; the look is set on the box's theme (input_... keys).
class input_box : public widget {
public:
    input_box();
    ~input_box() override;

    input_inside_panel& get_inside() { return inside; }
    const input_inside_panel& get_inside() const { return inside; }

    void set_text(std::string_view utf8, bool notify = false) { inside.set_text(utf8, notify); }
    std::string get_text() const { return inside.get_text(); }
    std::string get_selected_text() const { return inside.get_selected_text(); }
    void select_whole_text() { inside.select_whole_text(); }
    void set_type_password(bool on) { inside.set_type_password(on); }
    void set_max_chars(int count) { inside.set_max_chars(count); }
    void set_default_text(std::string_view utf8) { inside.set_default_text(utf8); }
    void select_on_focus(bool on) { inside.select_on_focus(on); }
    void apply_on_focus_loss(bool on) { inside.apply_on_focus_loss(on); }

private:
    void on_create(const event_info&);
    void on_focus(const event_info&);
    void on_theme(const event_info&);
    void draw(drawer& d, const ivec4& area);

    input_inside_panel inside;
};

} // namespace nimbit::ui
