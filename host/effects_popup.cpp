#include "host/effects_popup.h"

#include "gallery/capture_writer.h"
#include "host/aegp_suite_handler.h"
#include "host/host_platform.h"
#include "host/popup_window.h"
#include "host/shortcut_chord.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/utils/thread_pool.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"

EffectsPopup* effectsPopup = nullptr;

namespace {

PopupWindowFactory popupWindowFactory = nullptr;

// The hooks ignore their refcons: there is one controller per process.
A_Err IdleHookCallback(AEGP_GlobalRefcon, AEGP_IdleRefcon, A_long* maxSleep) {
    try {
        if (effectsPopup != nullptr) {
            effectsPopup->IdleHook();
            // A capture on its way to disk is announced within a tick or two, not a host's long nap.
            if (maxSleep != nullptr && *maxSleep > 1 && effectsPopup->CapturesPending())
                *maxSleep = 1;
        }
    } catch (...) {
        // Nothing may unwind into the host; a failed tick is retried on the next one.
    }
    return A_Err_NONE;
}

A_Err DeathHookCallback(AEGP_GlobalRefcon, AEGP_DeathRefcon) {
    try {
        if (effectsPopup != nullptr)
            effectsPopup->DeathHook();
    } catch (...) {
    }
    return A_Err_NONE;
}

} // namespace

void SetPopupWindowFactory(PopupWindowFactory factory) {
    popupWindowFactory = factory;
}

PopupWindowFactory GetPopupWindowFactory() {
    return popupWindowFactory;
}

EffectsPopup::EffectsPopup(SPBasicSuite* basic, AEGP_PluginID pluginId, AeVersion version)
    : basic(basic), pluginId(pluginId), captureWriter(std::make_unique<CaptureWriter>()), version(version) {
    AEGP_SuiteHandler suites(basic);
    A_Boolean suppressed = 0;
    AEGP_UtilitySuite5* utility = suites.UtilitySuite11();
    if (utility != nullptr)
        utility->AEGP_GetSuppressInteractiveUI(&suppressed);
    if (suppressed)
        return; // a render-only host: the controller stays inert
    // The window whose menu bar the Windows platform walks; a host may leave the function out.
    void* mainWindow = nullptr;
    if (utility != nullptr && utility->AEGP_GetMainHWND != nullptr &&
        utility->AEGP_GetMainHWND(&mainWindow) == A_Err_NONE)
        HostPlatform::SetMainWindow(mainWindow);
    if (AEGP_RegisterSuite5* reg = suites.RegisterSuite6()) {
        reg->AEGP_RegisterIdleHook(pluginId, IdleHookCallback, nullptr);
        reg->AEGP_RegisterDeathHook(pluginId, DeathHookCallback, nullptr);
    }
}

EffectsPopup::~EffectsPopup() = default;

void EffectsPopup::IdleHook() {
    if (popupWindow == nullptr)
        SetUpPopupWindow();
    if (popupWindow != nullptr && PollShortcutChord(prefs, GetKeyQueries())) {
        if (popupWindow->IsShown())
            popupWindow->Hide();
        else if (HostPlatform::IsHostActive())
            Execute(PopupCommand{PopupCommand::Show});
    }
    ApplyPendingEffect();
    AnnounceCaptures();
}

void EffectsPopup::AnnounceCaptures() {
    if (!captureWriter->TakeWritten().empty() && popupWindow != nullptr)
        popupWindow->RefreshGallery();
}

void EffectsPopup::FinishCaptures() {
    captureWriter->Flush();
    AnnounceCaptures();
}

bool EffectsPopup::CapturesPending() const {
    return captureWriter->Busy();
}

void EffectsPopup::SetUpPopupWindow() {
    if (popupWindowFactory == nullptr)
        return; // no window in this build: the controller stays windowless
    nimbit::make_dir(UserSettingsFolder());
    LoadPreferences(prefs, ChooseReadFolder(SettingsFileName));
    popupWindow.reset();
    popupWindow = popupWindowFactory(prefs, *this);
    if (popupWindow != nullptr)
        popupWindow->SetEffectData(CollectEffectList());
}

void EffectsPopup::DeathHook() {
    // The plug-in may be unloaded next: the queued captures are written and the writer's thread
    // joined (a fresh writer starts none until it is given a capture).
    captureWriter = std::make_unique<CaptureWriter>();
    if (popupWindow != nullptr) {
        popupWindow->WriteFile();
        popupWindow.reset();
    }
    // The pixel workers too: joined now, not by a static destructor while the module unloads.
    nimbit::thread_pool::stop_instance();
}

uint32_t EffectsPopup::Execute(PopupCommand command) {
    if (popupWindow == nullptr)
        return NoCommandResult;
    const std::string project = GetProjName(GetCurrentProject());
    const std::string comp = GetCompName(GetActiveComp());
    const std::string layer = GetLayerName(GetActiveLayer());
    return popupWindow->Show(project, comp, layer, command);
}

void EffectsPopup::ApplyEffect(const EffectData* entry) {
    pending = entry;
}

void EffectsPopup::CustomEvent(uint32_t code) {
    try {
        if (code == static_cast<uint32_t>(PopupRequest::CollectCatalogue)) {
            std::vector<EffectData> catalogue = CollectEffectList();
            if (popupWindow != nullptr)
                popupWindow->SetEffectData(catalogue);
        } else {
            CaptureFrame(code);
        }
    } catch (...) {
        // Called from the popup's event, inside the host's event loop: a failed request (out of
        // memory for a huge frame) is dropped rather than unwound into the host.
    }
}

void EffectsPopup::ApplyPendingEffect() {
    if (pending == nullptr)
        return;
    const EffectData entry = *pending;
    pending = nullptr; // whatever happens below, the choice is used once

    AEGP_LayerH layer = GetActiveLayer();
    if (layer == nullptr)
        return;
    AEGP_SuiteHandler suites(basic);
    AEGP_EffectSuite2* effects2 = suites.EffectSuite2();
    A_long countBefore = 0;
    if (effects2 != nullptr)
        effects2->AEGP_GetLayerNumEffects(layer, &countBefore);

    if (entry.id < 0 && entry.is_preset) {
        ApplyPreset(entry);
        return;
    }

    // The menu first: the host then records the application exactly as a menu choice.
    const bool menuTaken = HostPlatform::ChooseEffectMenuItem(entry.category, entry.name);
    A_long countAfter = countBefore;
    if (effects2 != nullptr)
        effects2->AEGP_GetLayerNumEffects(layer, &countAfter);
    if (menuTaken && countAfter != countBefore)
        return;

    if (AEGP_EffectSuite3* effects3 = suites.EffectSuite3()) {
        AEGP_EffectRefH effect = nullptr;
        effects3->AEGP_ApplyEffect(pluginId, layer, entry.id, &effect);
        if (effect != nullptr)
            effects3->AEGP_DisposeEffect(effect);
    }
}

void EffectsPopup::ApplyPreset(const EffectData& entry) {
    // id is -(index + 1); computed in 64 bits so that the most negative id cannot overflow. A stale
    // id (the preset list was collected again) applies nothing.
    const int64_t index = -static_cast<int64_t>(entry.id) - 1;
    if (index < 0 || static_cast<uint64_t>(index) >= presetPaths.size())
        return;
    std::string path = presetPaths[static_cast<size_t>(index)];
    for (char& c : path) {
        if (c == '\\')
            c = '/';
    }
    const std::string script = "app.project.activeItem.applyPreset(new File(\"" + path + "\"));";
    AEGP_SuiteHandler suites(basic);
    if (AEGP_UtilitySuite4* utility = suites.UtilitySuite10())
        utility->AEGP_ExecuteScript(pluginId, script.c_str(), 0, nullptr, nullptr);
}

A_Err StartPlugin(SPBasicSuite* basic, A_long majorVersion, A_long minorVersion, AEGP_PluginID pluginId) {
    if (IsExcludedHostApi(majorVersion))
        return A_Err_NONE;
    try {
        auto* controller = new EffectsPopup(basic, pluginId, AeVersionFromApi(majorVersion, minorVersion));
        EffectsPopup* previous = effectsPopup;
        effectsPopup = controller;
        delete previous; // a second start replaces the first controller
    } catch (...) {
        // Out of memory at start-up: the plug-in stays absent rather than taking the host down.
    }
    return A_Err_NONE;
}
