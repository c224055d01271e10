#include "nimbit/ui/popup_menu.h"

#include "nimbit/ui/window.h"
#include "nimbit/utils/assert.h"

#include <algorithm>

namespace nimbit::ui {

popup_menu::popup_menu() : native(create_native_popup_menu()) {}
popup_menu::~popup_menu() = default;

menu_item* popup_menu::find(uint32_t id) {
    auto it = std::find_if(items.begin(), items.end(), [id](const menu_item& m) { return m.id == id; });
    return it == items.end() ? nullptr : &*it;
}

const menu_item* popup_menu::find(uint32_t id) const {
    return const_cast<popup_menu*>(this)->find(id);
}

void popup_menu::insert(menu_item item, int position) {
    // Ids name items uniquely, separators included.
    const auto& menuItems = ids;
    const uint32_t id = item.id;
    NIMBIT_ASSERT(menuItems.find(id) == end(menuItems) && "menu item already exists");
    ids.insert(id);
    if (position < 0 || static_cast<size_t>(position) >= items.size())
        items.push_back(std::move(item));
    else
        items.insert(items.begin() + position, std::move(item));
}

void popup_menu::add_item(uint32_t id, std::string_view text, int position, const popup_menu* submenu) {
    menu_item item;
    item.id = id;
    item.text = text;
    if (submenu)
        item.submenu = submenu->items;
    insert(std::move(item), position);
}

void popup_menu::add_separator(uint32_t id) {
    add_separator(id, static_cast<uint32_t>(items.size()));
}

void popup_menu::add_separator(uint32_t id, uint32_t position) {
    menu_item item;
    item.id = id;
    item.separator = true;
    item.enabled = false;
    insert(std::move(item), position > items.size() ? -1 : static_cast<int>(position));
}

void popup_menu::remove_item(uint32_t id) {
    std::erase_if(items, [id](const menu_item& m) { return m.id == id; });
    ids.erase(id);
}

void popup_menu::remove_all_items() {
    items.clear();
    ids.clear();
}

void popup_menu::enable_item(uint32_t id, bool enabled) {
    if (menu_item* m = find(id))
        m->enabled = enabled;
}

void popup_menu::check_item(uint32_t id, bool checked) {
    if (menu_item* m = find(id))
        m->checked = checked;
}

std::string popup_menu::get_item_text(uint32_t id) const {
    const menu_item* m = find(id);
    return m ? m->text : std::string();
}

uint32_t popup_menu::show(const window& w, const _vec2<int>& position, bool position_is_screen) const {
    if (items.empty())
        return 0;
    _vec2<int> at = position;
    if (position_is_screen)
        at = at - w.get_client_rect().position();
    // The slot holds the chosen id + 1, 0 when nothing was chosen: minus 1 gives the id or all bits.
    const uint32_t slot = native->show(w.get_native(), at + _vec2<int>{10, 10}, items, max_height);
    return slot - 1u;
}

} // namespace nimbit::ui
