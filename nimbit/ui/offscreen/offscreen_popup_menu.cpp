#include "nimbit/ui/offscreen/offscreen_popup_menu.h"

#include <deque>

namespace nimbit::ui {

namespace {
std::deque<std::optional<uint32_t>>& answers() {
    static std::deque<std::optional<uint32_t>> queue;
    return queue;
}
std::vector<offscreen::shown_menu>& history() {
    static std::vector<offscreen::shown_menu> shown;
    return shown;
}

const menu_item* find_choosable(std::span<const menu_item> items, uint32_t id) {
    for (const auto& item : items) {
        if (!item.submenu.empty()) {
            if (const menu_item* inner = find_choosable(item.submenu, id))
                return inner;
            continue; // an item that opens a sub-menu is not itself chosen
        }
        if (item.id == id)
            return item.separator || !item.enabled ? nullptr : &item;
    }
    return nullptr;
}

class offscreen_popup_menu final : public native_popup_menu {
public:
    uint32_t show(const native_window& in, _vec2<int> position, std::span<const menu_item> items,
                  uint32_t max_height) override {
        history().push_back({&in, position, {items.begin(), items.end()}, max_height});
        if (answers().empty())
            return 0;
        const std::optional<uint32_t> answer = answers().front();
        answers().pop_front();
        if (!answer || !find_choosable(items, *answer))
            return 0;
        return *answer + 1u;
    }
};
} // namespace

std::unique_ptr<native_popup_menu> create_native_popup_menu() {
    return std::make_unique<offscreen_popup_menu>();
}

namespace offscreen {
void push_menu_answer(std::optional<uint32_t> id) {
    answers().push_back(id);
}
void clear_menu_answers() {
    answers().clear();
}
const std::vector<shown_menu>& shown_menus() {
    return history();
}
void clear_shown_menus() {
    history().clear();
}
} // namespace offscreen

} // namespace nimbit::ui
