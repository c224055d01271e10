// The simulated host's main menu: the model built from the project's effects, what choosing an
// effect's item does, and the table through which the plug-in walks it (host/native_application.h).

#include "host/native_application.h"
#include "hostsim/sim_host.h"

#include <algorithm>
#include <memory>
#include <string>

namespace hostsim {

namespace {

// ---- The native application table: the main menu and activity of the current host.

int NativeIsActive() {
    SimHost* host = SimHost::Current();
    return host != nullptr && host->GetModel().active ? 1 : 0;
}

const char* NativeExecutablePath() {
    static std::string path;
    SimHost* host = SimHost::Current();
    if (host == nullptr)
        return nullptr;
    path = host->ExecutablePath();
    return path.c_str();
}

NativeMenu* NativeMainMenu() {
    SimHost* host = SimHost::Current();
    return host != nullptr ? reinterpret_cast<NativeMenu*>(&host->MainMenu()) : nullptr;
}

int NativeItemCount(NativeMenu* menu) {
    return static_cast<int>(reinterpret_cast<MenuItem*>(menu)->submenu.size());
}

NativeMenuItem* NativeItemAt(NativeMenu* menu, int index) {
    auto& items = reinterpret_cast<MenuItem*>(menu)->submenu;
    if (index < 0 || static_cast<size_t>(index) >= items.size())
        return nullptr;
    return reinterpret_cast<NativeMenuItem*>(items[static_cast<size_t>(index)].get());
}

const char* NativeItemTitle(NativeMenuItem* item) {
    return reinterpret_cast<MenuItem*>(item)->title.c_str();
}

int NativeItemEnabled(NativeMenuItem* item) {
    return reinterpret_cast<MenuItem*>(item)->enabled ? 1 : 0;
}

NativeMenu* NativeItemSubmenu(NativeMenuItem* item) {
    auto* menuItem = reinterpret_cast<MenuItem*>(item);
    return menuItem->hasSubmenu ? reinterpret_cast<NativeMenu*>(menuItem) : nullptr;
}

void NativeSendAction(NativeMenuItem* item) {
    if (SimHost* host = SimHost::Current())
        host->ChooseMenuEffect(reinterpret_cast<MenuItem*>(item)->effectKey);
}

const NativeApplication nativeApplication = {
    NativeIsActive,  NativeExecutablePath, NativeMainMenu,    NativeItemCount,  NativeItemAt,
    NativeItemTitle, NativeItemEnabled,    NativeItemSubmenu, NativeSendAction,
};

} // namespace

void SimHost::ChooseMenuEffect(AEGP_InstalledEffectKey key) {
    ++menuActionsSent;
    if (key == 0 || !model.menuActionsApply)
        return;
    if (Item* comp = ActiveItem(); comp != nullptr && comp->type == AEGP_ItemType_COMP) {
        for (auto& layer : comp->layers) {
            if (layer->selected && layer->type != AEGP_ObjectType_LIGHT &&
                layer->type != AEGP_ObjectType_CAMERA)
                layer->effects.push_back(key);
        }
    }
}

void SimHost::BuildMenu() {
    mainMenu = MenuItem{};
    mainMenu.hasSubmenu = true;
    static const char* const titles[] = {"After Effects", "File", "Edit",   "Composition", "Layer",
                                         "Animation",     "View", "Window", "Help"};
    for (const char* title : titles) {
        auto item = std::make_unique<MenuItem>();
        item->title = title;
        mainMenu.submenu.push_back(std::move(item));
    }
    auto effectMenu = std::make_unique<MenuItem>();
    effectMenu->title = "Effect";
    effectMenu->hasSubmenu = true;
    for (const char* title : {"Effect Controls", "Remove All"}) {
        auto item = std::make_unique<MenuItem>();
        item->title = title;
        effectMenu->submenu.push_back(std::move(item));
    }
    for (const Effect& effect : model.effects) {
        if (effect.category.empty() || effect.category == "_Obsolete")
            continue; // the host keeps these out of its menu
        MenuItem* category = nullptr;
        for (auto& item : effectMenu->submenu) {
            if (item->hasSubmenu && item->title == effect.category)
                category = item.get();
        }
        if (category == nullptr) {
            auto item = std::make_unique<MenuItem>();
            item->title = effect.category;
            item->hasSubmenu = true;
            item->enabled = std::find(model.disabledCategories.begin(), model.disabledCategories.end(),
                                      effect.category) == model.disabledCategories.end();
            category = item.get();
            effectMenu->submenu.push_back(std::move(item));
        }
        auto item = std::make_unique<MenuItem>();
        item->title = effect.name;
        item->effectKey = effect.key;
        category->submenu.push_back(std::move(item));
    }
    const size_t index =
        std::min(static_cast<size_t>(std::max(model.effectMenuIndex, 0)), mainMenu.submenu.size());
    mainMenu.submenu.insert(mainMenu.submenu.begin() + static_cast<long>(index), std::move(effectMenu));
}

} // namespace hostsim

// The table through which the command-line build of the plug-in reaches the simulated
// application's menu and activity, and either build its executable.
extern "C" __attribute__((visibility("default"))) const NativeApplication* QuilloNativeApplication() {
    return hostsim::SimHost::Current() != nullptr ? &hostsim::nativeApplication : nullptr;
}
