#include "host/host_platform.h"
#include "host/menu_title.h"
#include "host/native_application.h"

// The host's menu and activity through the loading process's table (host/native_application.h),
// for the command-line build of the plug-in.

namespace {

// A table with a gap is treated as no table: nothing here may call through a null pointer.
const NativeApplication* Application() {
    const NativeApplication* app = FindNativeApplication();
    if (app == nullptr || !app->is_active || !app->main_menu || !app->menu_item_count || !app->menu_item_at ||
        !app->item_title || !app->item_enabled || !app->item_submenu || !app->item_send_action)
        return nullptr;
    return app;
}

NativeMenuItem* FindItem(const NativeApplication& app, NativeMenu* menu, std::string_view title,
                         bool category) {
    const int index = HostPlatform::FindMenuTitle(
        app.menu_item_count(menu),
        [&](int i) -> std::string_view {
            NativeMenuItem* item = app.menu_item_at(menu, i);
            const char* text = item != nullptr ? app.item_title(item) : nullptr;
            return text != nullptr ? text : "";
        },
        title, category);
    return index >= 0 ? app.menu_item_at(menu, index) : nullptr;
}

} // namespace

namespace HostPlatform {

bool IsHostActive() {
    const NativeApplication* app = Application();
    return app != nullptr && app->is_active() != 0;
}

bool ChooseEffectMenuItem(std::string_view category, std::string_view name) {
    const NativeApplication* app = Application();
    if (app == nullptr)
        return false;
    NativeMenu* mainMenu = app->main_menu();
    if (mainMenu == nullptr || app->menu_item_count(mainMenu) < 6)
        return false;
    NativeMenuItem* effectItem = app->menu_item_at(mainMenu, 5);
    NativeMenu* effectMenu = effectItem != nullptr ? app->item_submenu(effectItem) : nullptr;
    if (effectMenu == nullptr)
        return false;
    NativeMenuItem* categoryItem = FindItem(*app, effectMenu, category, true);
    if (categoryItem == nullptr || !app->item_enabled(categoryItem))
        return false;
    NativeMenu* categoryMenu = app->item_submenu(categoryItem);
    if (categoryMenu == nullptr)
        return false;
    NativeMenuItem* effect = FindItem(*app, categoryMenu, name, false);
    if (effect == nullptr)
        return false;
    app->item_send_action(effect);
    return true;
}

} // namespace HostPlatform
