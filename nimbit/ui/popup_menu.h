#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/native_popup_menu.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace nimbit::ui {

class window;

// A context menu: items with ids, separators, check marks and sub-menus, shown at a point; show()
// returns the chosen id. The items live here; the platform only presents them.
class popup_menu {
public:
    // Returned by show() when the menu was dismissed.
    static constexpr uint32_t dismissed = 0xFFFFFFFFu;

    popup_menu();
    ~popup_menu();
    popup_menu(const popup_menu&) = delete;
    popup_menu& operator=(const popup_menu&) = delete;

    // position < 0 appends; a sub-menu is copied as it is now.
    void add_item(uint32_t id, std::string_view text, int position = -1, const popup_menu* submenu = nullptr);
    void add_separator(uint32_t id);
    void add_separator(uint32_t id, uint32_t position);
    void remove_item(uint32_t id);
    void remove_all_items();
    void enable_item(uint32_t id, bool enabled);
    void check_item(uint32_t id, bool checked);
    // Empty for an unknown id.
    std::string get_item_text(uint32_t id) const;
    void set_max_height(uint32_t height) { max_height = height; }
    size_t item_count() const { return items.size(); }
    const std::vector<menu_item>& get_items() const { return items; }

    // 0 at once for an empty menu; else the chosen item's id, or `dismissed`. The menu opens 10, 10
    // beyond the position (window client coordinates, or screen when position_is_screen).
    uint32_t show(const window& w, const _vec2<int>& position, bool position_is_screen) const;

private:
    void insert(menu_item item, int position);
    menu_item* find(uint32_t id);
    const menu_item* find(uint32_t id) const;

    std::vector<menu_item> items;
    std::unordered_set<uint32_t> ids;
    uint32_t max_height = 0;
    std::unique_ptr<native_popup_menu> native;
};

} // namespace nimbit::ui
