#pragma once

// A simulated host session for the host tests: a project model, a temporary folder that stands for
// the disk (installation, documents, settings), and the host serving both.

#include "../foundation/temp_folder.h"
#include "host/effects_popup.h"
#include "host/popup_window.h"
#include "hostsim/sim_host.h"
#include "nimbit/filesystem/file_stats.h"

#include <functional>
#include <memory>
#include <stdexcept>

// A small project: one composition with one layer of each kind, a handful of installed effects,
// host and user presets. Tests edit the model before the session starts.
inline const char* SmallProject = R"({
  "effects": [
    {"category": "Blur & Sharpen", "names": ["Gaussian Blur", "Box Blur"]}, {"category": "Stylize", "names": ["Glow", "Mosaic"]},
    {"category": "_Obsolete", "names": ["Old Blur"]}, {"category": "_obsolete", "names": ["Lower Case Obsolete"]},
    {"category": "", "names": ["Wiggle-position", "Orphan Preset"]}
  ],
  "presets": {"host": ["Behaviors/Wiggle-position.ffx"], "user": ["Glow.ffx"]},
  "projects": [{"name": "Shot.aep", "bitDepth": 16, "activeItem": 2, "items": [
    {"id": 1, "type": "footage", "name": "plate.mov", "width": 1920, "height": 1080},
    {"id": 2, "type": "comp", "name": "Main", "width": 1920, "height": 1080, "layers": [
      {"name": "Title", "type": "text", "selected": true}, {"name": "", "type": "av", "source": 1},
      {"name": "Burst", "type": "shape"}, {"name": "Camera 1", "type": "camera"}, {"name": "Key Light", "type": "light"}]}]}]
})";

struct HostSession {
    // Creates the host and its files; call after editing model.
    hostsim::SimHost& Start() {
        host = std::make_unique<hostsim::SimHost>(std::move(model), folder.path().to_string());
        host->Materialize();
        return *host;
    }

    temp_folder folder;
    hostsim::Model model = hostsim::LoadModel(SmallProject);
    std::unique_ptr<hostsim::SimHost> host;
};

// A session with the controller built straight on the simulated host (started on first use, so tests
// edit the model before) and its catalogue collected.
struct ControllerSession : HostSession {
    EffectsPopup& Controller(AeVersion version = AeVersionCC2018) {
        if (!controller) {
            if (!host)
                Start();
            controller = std::make_unique<EffectsPopup>(host->Basic(), 7, version);
            catalogue = controller->CollectEffectList();
        }
        return *controller;
    }
    const EffectData& Entry(const std::string& name, bool preset = false) {
        Controller();
        for (const EffectData& e : catalogue)
            if (e.name == name && e.is_preset == preset)
                return e;
        throw std::runtime_error("no entry " + name);
    }
    // Chooses entry, as the popup would, and lets one idle tick apply it.
    void Apply(const EffectData& entry) {
        Controller().ApplyEffect(&entry);
        Controller().IdleHook();
    }
    std::unique_ptr<EffectsPopup> controller;
    std::vector<EffectData> catalogue;
};

// Selects exactly the named layer of the active composition (none for "").
inline void SelectOnly(hostsim::SimHost& host, const std::string& name) {
    for (auto& layer : host.ActiveItem()->layers)
        layer->selected = !name.empty() && (layer->name == name);
}

inline hostsim::Layer* LayerNamed(hostsim::SimHost& host, const std::string& name) {
    for (auto& layer : host.ActiveItem()->layers)
        if (layer->name == name)
            return layer.get();
    return nullptr;
}

// Stands in for the popup window: records what the controller asks of it. Install() puts its factory
// in place with fresh records; Uninstall() takes it away.
struct RecordingWindow : PopupWindow {
    struct Call {
        std::string project, comp, layer;
        uint32_t kind;
    };
    static inline std::vector<Call> calls;
    static inline int made = 0, hides = 0, filesWritten = 0, destroyed = 0, galleryRefreshes = 0;
    static inline std::vector<size_t> catalogueSizes;
    static inline uint32_t newsCount = 12;
    static inline std::function<void()> onRefreshGallery; // what a test checks when the gallery is told
    bool shown = false;

    ~RecordingWindow() override { ++destroyed; }
    uint32_t Show(const std::string& project, const std::string& comp, const std::string& layer,
                  PopupCommand command) override {
        calls.push_back({project, comp, layer, command.kind});
        shown |= command.kind == PopupCommand::Show;
        return command.kind == PopupCommand::NewsCount ? newsCount : NoCommandResult;
    }
    void Hide() override {
        ++hides;
        shown = false;
    }
    bool IsShown() const override { return shown; }
    void WriteFile() override { ++filesWritten; }
    void RefreshGallery() override {
        ++galleryRefreshes;
        if (onRefreshGallery)
            onRefreshGallery();
    }
    void SetEffectData(const std::vector<EffectData>& catalogue) override {
        catalogueSizes.push_back(catalogue.size());
    }
    static std::unique_ptr<PopupWindow> Make(PreferencesData&, EffectsPopup&) {
        ++made;
        return std::make_unique<RecordingWindow>();
    }
    static void Install() {
        calls.clear();
        catalogueSizes.clear();
        made = hides = filesWritten = destroyed = galleryRefreshes = 0;
        onRefreshGallery = nullptr;
        SetPopupWindowFactory(&Make);
    }
    static void Uninstall() {
        SetPopupWindowFactory(nullptr);
        onRefreshGallery = nullptr;
    }
};
