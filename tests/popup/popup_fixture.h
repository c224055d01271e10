#pragma once

#include "host/effect_data.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/offscreen/offscreen_clipboard.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "popup/effect_alias.h"
#include "popup/effects_popup_window.h"
#include "popup/preferences_data.h"
#include "tests/foundation/temp_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

// The popup over a small catalogue, in a private settings folder, on the offscreen backend.
// Records every entry the popup hands out with its apply event.
class PopupTest : public ::testing::Test {
protected:
    // Counts calls of the seams that later pieces fill in.
    struct Window : EffectsPopupWindow {
        using EffectsPopupWindow::EffectsPopupWindow;
        int gallery = 0, screenshots = 0;
        void OpenGallery() override { ++gallery; }
        void TakeScreenshot(bool) override { ++screenshots; }
    };

    void SetUp() override {
        ::setenv("QUILLO_USER_DATA_DIR", (root / "user").to_string().c_str(), 1);
        ::setenv("QUILLO_COMMON_DATA_DIR", (root / "common").to_string().c_str(), 1);
        ::setenv("QUILLO_DOCS_DIR", (root / "docs").to_string().c_str(), 1);
        nimbit::ui::offscreen::reset_input();
        nimbit::ui::offscreen::clear_menu_answers();
        nimbit::ui::offscreen::clear_shown_menus();
        catalogue = {
            Effect(1, "Gaussian Blur", "Blur & Sharpen"),
            Effect(2, "Fast Box Blur", "Blur & Sharpen"),
            Effect(3, "Directional Blur", "Blur & Sharpen"),
            Effect(4, "Glow", "Stylize"),
            Effect(5, "Curves", "Color Correction"),
            Preset(-1, "Blur In"),
            Preset(-2, "Glow Pulse"),
        };
        popup = std::make_unique<Window>(prefs);
        popup->SetEffectData(catalogue);
        applied.clear();
        nimbit::ui::event_manager::instance().add_event(
            popup.get(), &listener, nimbit::ui::event_type::pressed, [this](const nimbit::ui::event_info& e) {
                applied.push_back(nimbit::ui::pointer_payload<const EffectData>(e.data));
            });
    }
    void TearDown() override {
        popup.reset();
        nimbit::ui::offscreen::reset_input();
        ::unsetenv("QUILLO_USER_DATA_DIR");
        ::unsetenv("QUILLO_COMMON_DATA_DIR");
        ::unsetenv("QUILLO_DOCS_DIR");
    }

    static EffectData Effect(int id, std::string name, std::string category) {
        EffectData e;
        e.id = id;
        e.search_name = Lower(name);
        e.name = std::move(name);
        e.category = std::move(category);
        return e;
    }
    static EffectData Preset(int id, std::string name) {
        EffectData e = Effect(id, std::move(name), "Animation Preset");
        e.is_preset = true;
        return e;
    }
    static std::string Lower(std::string s) {
        for (char& c : s)
            c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        return s;
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

    // Opens the popup the way the idle hook does; a composition name turns screenshot mode on and a
    // layer name search mode.
    void Open(std::string_view comp = "Comp 1", std::string_view layer = "Layer 1") {
        popup->Show("Project", comp, layer, PopupCommand{PopupCommand::Show});
    }
    static uint32_t Command(EffectsPopupWindow& w, PopupCommand command) {
        return w.Show(std::string_view(), std::string_view(), std::string_view(), command);
    }
    void Search(std::string_view text) { popup->GetSearchField().set_text(text, true); }
    // A key as the platform delivers it to the search field (key_down to the focused widget).
    void InputKey(unsigned long long code) {
        popup->GetSearchField().focus(nimbit::ui::focus_cause::keyboard);
        nimbit::ui::offscreen::events_of(*popup).process_event(nimbit::ui::event_type::key_down, code);
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

    temp_folder root;
    PreferencesData prefs;
    std::vector<EffectData> catalogue;
    std::unique_ptr<Window> popup;
    struct : nimbit::ui::event_object {
    } listener;
    std::vector<const EffectData*> applied;
};
