#include "nimbit/ui/native_popup_menu.h"

#include "nimbit/ui/win32/native_window.h"
#include "nimbit/utils/wide_string_win32.h"

// Popup menus are system menus built afresh for each show from the toolkit's items. Every item's
// command is its id + 1, which is what show returns (0 being "dismissed").

namespace nimbit::ui {

namespace {

HMENU build_menu(std::span<const menu_item> items) {
    HMENU menu = CreatePopupMenu();
    if (!menu)
        return nullptr;
    for (const menu_item& item : items) {
        if (item.separator) {
            AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
            continue;
        }
        UINT flags =
            MF_STRING | (item.enabled ? MF_ENABLED : MF_GRAYED) | (item.checked ? MF_CHECKED : MF_UNCHECKED);
        UINT_PTR command = UINT_PTR(item.id) + 1;
        if (!item.submenu.empty()) {
            if (HMENU sub = build_menu(item.submenu)) {
                flags |= MF_POPUP;
                command = reinterpret_cast<UINT_PTR>(sub); // owned by the menu from here on
            }
        }
        AppendMenuW(menu, flags, command, widen(item.text).c_str());
    }
    return menu;
}

class win32_popup_menu final : public native_popup_menu {
public:
    uint32_t show(const native_window& in, _vec2<int> position, std::span<const menu_item> items,
                  uint32_t max_height) override {
        (void)max_height; // the system scrolls a menu taller than the screen by itself
        const auto* owner = dynamic_cast<const win32::win32_window*>(&in);
        const HWND hwnd = owner ? owner->get_hwnd() : nullptr;
        if (items.empty() || !hwnd)
            return 0;
        HMENU menu = build_menu(items);
        if (!menu)
            return 0;
        POINT at{position.x, position.y};
        ClientToScreen(hwnd, &at);
        // The menu closes on a click elsewhere only when its window is in the foreground.
        SetForegroundWindow(hwnd);
        const BOOL chosen = TrackPopupMenuEx(
            menu, TPM_RETURNCMD | TPM_NONOTIFY | TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RIGHTBUTTON, at.x, at.y,
            hwnd, nullptr);
        PostMessageW(hwnd, WM_NULL, 0, 0);
        DestroyMenu(menu);
        return chosen > 0 ? static_cast<uint32_t>(chosen) : 0;
    }
};

} // namespace

std::unique_ptr<native_popup_menu> create_native_popup_menu() {
    return std::make_unique<win32_popup_menu>();
}

} // namespace nimbit::ui
