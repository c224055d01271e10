// The table through which the command-line build of the plug-in reaches the simulated host's main
// menu and activity (host/native_application.h).

#include "host/native_application.h"
#include "hostsim/sim_host.h"

#include <string>

namespace hostsim {

namespace {

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

} // namespace hostsim

// The table through which the command-line build of the plug-in reaches the simulated
// application's menu and activity, and either build its executable.
extern "C" __attribute__((visibility("default"))) const NativeApplication* QuilloNativeApplication() {
    return hostsim::SimHost::Current() != nullptr ? &hostsim::nativeApplication : nullptr;
}
