// The simulated host's main menu: the model built from the project's effects and what choosing an
// effect's item does. The plug-in walks it through the native application table on the Mac and
// Linux (sim_native_application_posix.cpp), through the main window's menu bar on Windows.

#include "hostsim/sim_host.h"
#include "hostsim/sim_platform.h"

#include <algorithm>
#include <memory>
#include <string>

namespace hostsim {

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
    platform::SetMainWindowMenu(mainWindow, mainMenu);
}

} // namespace hostsim
