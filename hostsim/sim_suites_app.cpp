// The simulated host's utility suite (scripts it runs for the plug-in), register suite (the plug-in's
// hooks) and memory suite.

#include "hostsim/sim_host.h"
#include "hostsim/sim_suites.h"
#include "hostsim/suite_calls.h"

#include <cstring>
#include <string>

namespace hostsim {

// ---- Utility

A_Err GetSuppressInteractiveUI(A_Boolean* suppressed) {
    *suppressed = Host().GetModel().suppressInteractiveUI ? 1 : 0;
    return A_Err_NONE;
}

// The main window's HWND on Windows; null where the host has no window of its own.
A_Err GetMainHWND(void* mainWindow) {
    if (mainWindow == nullptr)
        return A_Err_PARAMETER;
    *static_cast<void**>(mainWindow) = Host().MainWindow();
    return A_Err_NONE;
}

A_Err ExecuteScript(AEGP_PluginID, const A_char* script, const A_Boolean, AEGP_MemHandle* result,
                    AEGP_MemHandle* error) {
    SimHost& host = Host();
    const std::string text = script != nullptr ? script : "";
    host.scripts.push_back(text);
    std::string answer;
    if (text == "app.project.bitsPerChannel") {
        answer = host.GetModel().bitsPerChannel;
    } else {
        static constexpr std::string_view prefix = "app.project.activeItem.applyPreset(new File(\"";
        static constexpr std::string_view suffix = "\"));";
        if (text.size() >= prefix.size() + suffix.size() && text.compare(0, prefix.size(), prefix) == 0 &&
            text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0) {
            const std::string path = text.substr(prefix.size(), text.size() - prefix.size() - suffix.size());
            if (Item* comp = host.ActiveItem(); comp != nullptr && comp->type == AEGP_ItemType_COMP) {
                for (auto& layer : comp->layers) {
                    if (layer->selected)
                        layer->presets.push_back(path);
                }
            }
        }
    }
    if (result != nullptr) {
        *result = NewMem(answer.size() + 1);
        std::memcpy(reinterpret_cast<MemBlock*>(*result)->bytes.data(), answer.c_str(), answer.size() + 1);
    }
    if (error != nullptr)
        *error = NewMem(1);
    return A_Err_NONE;
}

// ---- Register

A_Err RegisterCommandHook(AEGP_PluginID, AEGP_HookPriority, AEGP_Command, AEGP_CommandHook,
                          AEGP_CommandRefcon) {
    ++Host().commandHooks;
    return A_Err_NONE;
}

A_Err RegisterIdleHook(AEGP_PluginID, AEGP_IdleHook hook, AEGP_IdleRefcon refcon) {
    Host().idleHooks.push_back({hook, refcon});
    return A_Err_NONE;
}

A_Err RegisterDeathHook(AEGP_PluginID, AEGP_DeathHook hook, AEGP_DeathRefcon refcon) {
    Host().deathHooks.push_back({hook, refcon});
    return A_Err_NONE;
}

// ---- Memory

namespace {

MemBlock* MemOf(AEGP_MemHandle handle) {
    return reinterpret_cast<MemBlock*>(handle);
}

} // namespace

A_Err NewMemHandle(AEGP_PluginID, const A_char*, AEGP_MemSize size, AEGP_MemFlag, AEGP_MemHandle* handle) {
    *handle = NewMem(size); // always cleared: a stricter host than the flag asks for
    return A_Err_NONE;
}

A_Err FreeMemHandle(AEGP_MemHandle handle) {
    return Dispose<MemBlock>(handle, Host().liveMemHandles);
}

A_Err LockMemHandle(AEGP_MemHandle handle, void** pointer) {
    return Answer(MemOf(handle), [&](MemBlock& block) { *pointer = block.bytes.data(); });
}

A_Err UnlockMemHandle(AEGP_MemHandle handle) {
    return handle == nullptr ? A_Err_PARAMETER : A_Err_NONE;
}

A_Err GetMemHandleSize(AEGP_MemHandle handle, AEGP_MemSize* size) {
    return Answer(MemOf(handle),
                  [&](MemBlock& block) { *size = static_cast<AEGP_MemSize>(block.bytes.size()); });
}

} // namespace hostsim
