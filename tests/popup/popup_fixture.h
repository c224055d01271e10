#pragma once

#include "host/effect_data.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"
#include "popup/effect_alias.h"
#include "popup/effects_popup_window.h"
#include "popup/preferences_data.h"
#include "tests/search/fixture_catalogue.h"
#include "tests/support/data_folders.h"
#include "tests/support/offscreen_test.h"

#include <memory>

// An event as the platform delivers it to a window; the one place the tests reach the window's seam.
inline void Deliver(nimbit::ui::window& w, nimbit::ui::event_type type, uint64_t data) {
    nimbit::ui::offscreen::events_of(w).process_event(type, data);
}

// The popup over a small catalogue, in a private settings folder, on the offscreen backend; `applied`
// records the entries it hands out with its apply event.
class PopupTest : public OffscreenTest, protected private_data_folders {
protected:
    // Counts calls of the seams that later pieces fill in.
    struct Window : EffectsPopupWindow {
        using EffectsPopupWindow::EffectsPopupWindow;
        std::vector<int> calls; // 0 gallery, 1 screenshot, 2 export, 3 preferences
        void OpenGallery() override { calls.push_back(0); }
        void TakeScreenshot(bool) override { calls.push_back(1); }
        void ExportScreenshot() override { calls.push_back(2); }
        void OpenPreferences() override { calls.push_back(3); }
    };

    void SetUp() override {
        OffscreenTest::SetUp();
        // The first as a catalogue made elsewhere arrives: without its search names.
        catalogue = {EffectData{1, "Gaussian Blur", "gaussian blur", "Blur & Sharpen", false},
                     MakeEffect(2, "Fast Box Blur", "Blur & Sharpen"),
                     MakeEffect(3, "Directional Blur", "Blur & Sharpen"),
                     MakeEffect(4, "Glow"),
                     MakeEffect(5, "Curves", "Color Correction"),
                     MakePreset(-1, "Blur In"),
                     MakePreset(-2, "Glow Pulse")};
        popup = std::make_unique<Window>(prefs);
        popup->SetEffectData(catalogue);
        applied.watch(*popup, "", {nimbit::ui::event_type::pressed});
    }
    void TearDown() override {
        popup.reset();
        OffscreenTest::TearDown();
    }

    // The entry of the popup's catalogue with this display name.
    const EffectData* Named(std::string_view name) const {
        for (const EffectData& e : popup->GetCatalogue())
            if (e.name == name)
                return &e;
        return nullptr;
    }
    void SetSlot(size_t slot, std::string_view name, std::string label) {
        popup->GetShortcuts()[slot] = EffectAlias{std::move(label), Named(name), nullptr};
    }
    // The names of the entries applied since the last call.
    std::vector<std::string> Applied() {
        std::vector<std::string> names;
        for (uint64_t data : applied.data())
            names.push_back(nimbit::ui::pointer_payload<const EffectData>(data)->name);
        applied.entries.clear();
        return names;
    }

    // Opens the popup the way the idle hook does; a composition name turns screenshot mode on and a
    // layer name search mode.
    void Open(std::string_view comp = "Comp 1", std::string_view layer = "Layer 1") {
        popup->Show("Project", comp, layer, PopupCommand{PopupCommand::Show});
    }
    static uint32_t Command(EffectsPopupWindow& w, uint32_t kind) {
        return w.Show(std::string_view(), std::string_view(), std::string_view(), PopupCommand{kind});
    }
    void Event(nimbit::ui::event_type type, uint64_t data) { Deliver(*popup, type, data); }
    void Search(std::string_view text) { popup->GetSearchField().set_text(text, true); }
    // A key as the platform delivers it to the search field (key_down to the focused widget).
    void InputKey(unsigned long long code) {
        popup->GetSearchField().focus(nimbit::ui::focus_cause::keyboard);
        Event(nimbit::ui::event_type::key_down, code);
    }
    std::vector<std::string> RowNames() const {
        std::vector<std::string> names;
        for (const auto& row : popup->GetRows())
            names.push_back(row->GetEffect()->name);
        return names;
    }
    std::string SelectedName() const {
        return popup->GetSelected() != nullptr ? popup->GetSelected()->GetEffect()->name : std::string();
    }

    PreferencesData prefs;
    std::vector<EffectData> catalogue;
    std::unique_ptr<Window> popup;
    event_recorder applied;
};

using Names = std::vector<std::string>;
