#pragma once

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/widget.h"

#include <string>
#include <string_view>
#include <vector>

namespace nimbit::ui {

class drawer;

// A closed list: shows the selected item; a click opens the items as a popup menu, the wheel and the
// Up and Down keys step through them (separators are skipped, the ends do not wrap), and a typed
// character selects the next item that begins with it. A change of the
// selection raises value_changed (data: the selected item's id) with the agent given to select_item.
//
// A bound int (set_pointer) follows the selection: it holds the selected item's id, or its index
// when bound by index; binding selects the item the int names.
class drop_down_box : public widget {
public:
    static constexpr uint32_t no_id = 0xFFFFFFFFu;

    drop_down_box();
    ~drop_down_box() override;

    void add_item(uint32_t id, std::string_view text);
    // Items separated by '|', numbered on from the current item count; an item "-" is a separator.
    void add_items(std::string_view text);
    void add_separator(uint32_t id);
    void remove_item(uint32_t id);
    void remove_all_items();
    void set_item_text(uint32_t id, std::string_view text);

    // False (and nothing changes) for an index out of range or a separator.
    bool select_item(int index, bool notify = true, event_agent agent = event_agent::user);
    // Selects by id, without notifying.
    bool set_selected_item(uint32_t id);
    uint32_t get_selected_id() const;
    // The selected index, -1 when none.
    int get_selected_item() const { return selected; }
    std::string get_selected_text() const;
    size_t item_count() const { return items.size(); }
    int find_item(uint32_t id) const;

    void set_pointer(int* value, bool by_id = true);

    // Moves the selection by `steps` selectable items (negative: up); true when it moved.
    bool step_selection(int steps, event_agent agent = event_agent::user);
    // Selects the first item after the selected one (wrapping) whose text begins with initial, in
    // either case; false when none does.
    bool select_by_initial(char initial);

private:
    struct item {
        uint32_t id;
        std::string text;
        bool separator;
    };

    void draw(drawer& d, const ivec4& area);
    void on_theme(const event_info&);
    void on_mouse(const event_info&);
    void on_wheel(const event_info&);
    void on_key(const event_info&);
    void open_menu();
    void write_pointer();

    std::vector<item> items;
    int selected = -1;
    int* bound = nullptr;
    bool bound_by_id = true;
    bool hovered = false;
    bitmap arrow;
};

} // namespace nimbit::ui
