#pragma once

#include "nimbit/ui/generic_panel.h"

namespace nimbit::ui {

class drawer;

// side_by_side: panel A left, B right, a vertical bar between; stacked: A above B.
enum class split_type : int { side_by_side = 0, stacked = 1 };

// Two panes with a draggable bar between them. Put content into get_panel_a() and get_panel_b().
// When the split panel is resized the bar keeps its ratio, unless a pane's size is locked, which
// then keeps its length. Each pane keeps at least its minimum length while the room allows.
// Dragging the bar raises value_changed with the bar's position as data.
class split_panel : public widget {
public:
    explicit split_panel(split_type type = split_type::side_by_side);
    ~split_panel() override;

    generic_panel& get_panel_a() { return swapped ? pane_2 : pane_1; }
    generic_panel& get_panel_b() { return swapped ? pane_1 : pane_2; }

    // The bar's position as a fraction of the room (0..1).
    void set_split_bar(float ratio);
    void set_size_panel_a(int pixels);
    void set_size_panel_b(int pixels);
    void lock_size_panel_a(bool on);
    void lock_size_panel_b(bool on);
    // A and B change places; each keeps its content and its length.
    void swap_panels();
    void set_type(split_type type);
    void set_minimum_size(int panel_a, int panel_b);
    // Pulls the bar back so that both panes keep their minimum lengths (A wins when both cannot).
    void check_minimum_size();

    // The bar's offset along the split (the length of the first pane).
    int get_split_position() const { return position; }
    int get_thickness() const { return thickness; }
    ivec4 bar_rect() const;

private:
    void draw(drawer& d, const ivec4& area);
    void on_create(const event_info&);
    void on_resize(const event_info&);
    void on_mouse(const event_info&);
    void on_theme(const event_info&);
    void place(int new_position);
    void layout();
    int length() const;
    int room() const { return std::max(0, length() - thickness); }

    split_type type;
    generic_panel pane_1; // the first (left or top) pane while not swapped
    generic_panel pane_2;
    bool swapped = false;
    int position = 0;
    float ratio = 0.5f;
    bool lock_a = false;
    bool lock_b = false;
    int size_b = 0; // B's length, kept while B is locked
    int min_a = 0;
    int min_b = 0;
    int thickness = 4;
    bool dragging = false;
    int drag_offset = 0;
};

} // namespace nimbit::ui
