#pragma once

#include "host/ae_version.h"
#include "host/effect_data.h"
#include "host/popup_command.h"
#include "host/sdk/host_sdk.h"
#include "nimbit/filesystem/file_path.h"
#include "popup/preferences_data.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class CaptureWriter;
class PopupWindow;

// The one host controller: created by the entry point, alive for the whole host session. It owns
// the settings record, the popup window and the list of preset paths that catalogue ids refer to.
class EffectsPopup {
public:
    // Registers the idle and death hooks unless the host runs without interactive UI.
    EffectsPopup(SPBasicSuite* basic, AEGP_PluginID pluginId, AeVersion version);
    ~EffectsPopup();
    EffectsPopup(const EffectsPopup&) = delete;
    EffectsPopup& operator=(const EffectsPopup&) = delete;

    // Hooks. The idle hook sets the popup window up on its first tick and carries out a pending
    // application; the death hook saves the search data and destroys the windows.
    void IdleHook();
    void DeathHook();
    // Waits until the folder captures taken so far are on disk and tells the gallery of them.
    void FinishCaptures();
    // Whether a folder capture is still being written: the idle hook then asks to be called soon.
    bool CapturesPending() const;

    // Carries a command to the popup window; see PopupWindow::Show. Without a window: NoCommandResult.
    uint32_t Execute(PopupCommand command);
    // Records the entry chosen in the popup; the next idle tick applies it. entry must stay valid
    // until then (it points into the popup window's catalogue).
    void ApplyEffect(const EffectData* entry);
    // A request posted by the popup: code 5 collects the catalogue again and hands it to the window;
    // any other code is a frame capture in that mode.
    void CustomEvent(uint32_t code);

    // The catalogue: host presets, installed effects in the host's order, then user presets.
    std::vector<EffectData> CollectEffectList();
    // Appends a record for every ".ffx" file under folder (breadth-first) and its path to the preset
    // path list.
    void CollectPresets(const nimbit::file_path& folder, std::vector<EffectData>& catalogue);
    // The host's own preset folder: four levels above its executable, then "Presets".
    nimbit::file_path GetAEPresetsPath() const;
    // The user's preset folder: Documents/Adobe/<host folder>/User Presets.
    nimbit::file_path GetUserPresetsPath() const;

    // Host getters. Names are UTF-8: empty for a null handle, "Unknown" for an empty host name.
    AEGP_CompH GetActiveComp();
    // The selected layer when it is an AV, text or shape layer; null otherwise.
    AEGP_LayerH GetActiveLayer();
    AEGP_ProjectH GetCurrentProject();
    std::string GetLayerName(AEGP_LayerH layer);
    std::string GetCompName(AEGP_CompH comp);
    std::string GetProjName(AEGP_ProjectH project);
    // 0 for 8 bits per channel, 1 for 16, 2 for 32 (also when the host's answer is not understood).
    int GetProjectBitDepth();
    // A colour profile's description, UTF-8; empty for a null profile.
    std::string GetColorProfileName(AEGP_ColorProfileP profile);

    PreferencesData& Preferences() { return prefs; }
    const std::vector<std::string>& PresetPaths() const { return presetPaths; }
    AeVersion Version() const { return version; }
    bool HasPopupWindow() const { return popupWindow != nullptr; }
    PopupWindow* Window() const { return popupWindow.get(); }

private:
    void SetUpPopupWindow();
    void ApplyPendingEffect();
    void ApplyPreset(const EffectData& entry);
    // Renders the current frame and delivers it as code (a PopupRequest) asks; frame_capture.cpp.
    void CaptureFrame(uint32_t code);
    // Tells the gallery of the captures the writer has finished; on the main thread, as any UI call.
    void AnnounceCaptures();

    SPBasicSuite* basic;
    AEGP_PluginID pluginId;
    std::unique_ptr<PopupWindow> popupWindow;
    std::unique_ptr<CaptureWriter> captureWriter; // folder captures, encoded and written off this thread
    std::vector<std::string> presetPaths;
    AeVersion version;
    const EffectData* pending = nullptr;
    PreferencesData prefs;
};

// The controller of this process; written by the entry point.
extern EffectsPopup* effectsPopup;

// The entry point's work (PluginMain forwards here). Never throws; returns 0.
A_Err StartPlugin(SPBasicSuite* basic, A_long majorVersion, A_long minorVersion, AEGP_PluginID pluginId);
