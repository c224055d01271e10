#pragma once

#include "nimbit/ui/popup_menu.h"
#include "nimbit/ui/widget.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace nimbit::ui {

class drawer;

// The editing part of a single-line text field: text, caret, selection, undo ring, clipboard and the
// right-click menu. It sits inside an input_box, reads its look from the box's theme (the input_...
// keys) and raises the field's events on the box.
//
// The selection is relative to the caret: positive runs from the caret to the right, negative to the
// left, 0 is none.
class input_inside_panel : public widget {
public:
    static constexpr uint32_t blink_timer = 1;
    static constexpr uint32_t blink_interval_ms = 530;
    static constexpr uint32_t undo_capacity = 20;
    static constexpr char32_t password_char = 0x25CF;

    enum menu_id : uint32_t {
        menu_cut = 1,
        menu_copy = 2,
        menu_paste = 3,
        menu_delete = 4,
        menu_select_all = 5,
        menu_separator = 6,
    };

    // `box` receives the field's events and lends its theme.
    explicit input_inside_panel(widget& box);
    ~input_inside_panel() override;

    // Replaces the text; the undo history starts again from it. value_changed only when asked.
    void set_text(std::string_view utf8, bool notify = false);
    std::string get_text() const;
    std::string get_selected_text() const;
    const std::u32string& get_wide_text() const { return text; }

    void select_whole_text();
    // Inserts at the caret (replacing nothing: erase the selection first), dropping carriage returns
    // and whatever would pass the maximum length. With select_inserted the new text ends selected.
    void insert_text(std::u32string inserted, bool notify = true, bool select_inserted = false,
                     event_agent agent = event_agent::program);
    void erase_text(int index, int count, bool notify);
    void erase_selected_text(bool notify);
    // Copy (nothing in password mode) and paste.
    void set_clipboard();
    void get_clipboard();

    // The undo ring.
    void save_current_state();
    bool load_previous_state();
    bool load_next_state();

    void set_type_password(bool on);
    bool is_password() const { return password; }
    // 0 means no limit.
    void set_max_chars(int count);
    void set_default_text(std::string_view utf8);
    void select_on_focus(bool on) { select_focus = on; }
    // Losing the focus then confirms the field (pressed on the box) as Return would.
    void apply_on_focus_loss(bool on) { apply_focus_loss = on; }

    int get_caret() const { return caret; }
    int get_selection() const { return selection; }
    // Moves the caret (clamped) and sets the selection relative to it (clamped to the text).
    void set_caret(int index, int selection_length = 0);
    bool is_active() const { return active; }
    bool is_caret_visible() const { return caret_visible; }
    bool is_dragging() const { return dragging; }
    // How far the text is shifted left so that the caret stays in view.
    int get_scroll() const { return scroll; }
    // The caret's x in the panel's coordinates.
    int get_caret_x() const;
    const popup_menu& get_menu() const { return menu; }

    // Handlers, public so that the box and tests can route to them.
    void key_pressed(const event_info& e);
    void input_char(const event_info& e);
    void input_ime(const event_info& e);
    void mouse_pressed(const event_info& e);
    void mouse_released(const event_info& e);
    void mouse_dbl_click(const event_info& e);
    void mouse_move(const event_info& e);
    void focus_changed(const event_info& e);
    void timer(const event_info& e);
    void parent_resize(const event_info& e);
    void draw(drawer& d, const ivec4& area);

private:
    // The one path for every edit: replaces [index, index + count) by `inserted`.
    void change_text(int index, int count, std::u32string_view inserted, bool record, bool notify,
                     event_agent agent);
    void text_changed();
    void refresh_metrics();
    void update_scroll();
    void make_caret_visible();
    int char_at(int x) const;
    void run_menu();
    void apply_theme(const event_info&);
    void layout();
    const nimbit::ui::theme& style() const;
    const std::u32string& shown_text() const { return password ? display : text; }
    void raise(event_type type, event_agent agent, unsigned long long data);
    void load_state(uint32_t index);

    widget& box;
    std::u32string text;
    std::u32string display;
    std::u32string default_text;
    bool password = false;
    bool caret_visible = false;
    bool active = false;
    bool dragging = false;
    int32_t caret = 0;
    int32_t selection = 0;
    int32_t drag_anchor = 0;
    std::array<std::u32string, undo_capacity> ring;
    uint32_t ring_index = 0;
    uint32_t redo_count = 0;
    int max_chars = 0;
    bool select_focus = false;
    bool apply_focus_loss = false;
    bool keep_focus_selection = false; // the focusing click must not undo select-on-focus
    char16_t pending_high = 0;         // first half of a surrogate pair typed as two key_char events
    popup_menu menu;

    // Text metrics in the current font: one left edge per shown character and the end.
    std::vector<int> offsets;
    std::string font_name;
    float font_size = 12.0f;
    int font_weight_value = 0;
    int font_style_value = 0;
    int scroll = 0;
};

} // namespace nimbit::ui
