#include "host_session.h"

#include <gtest/gtest.h>

namespace {

// Chooses entry, as the popup would, and lets one idle tick apply it.
struct ApplySession : ControllerSession {
    void Apply(const EffectData& entry) {
        Controller().ApplyEffect(&entry);
        Controller().IdleHook();
    }
};

TEST(ApplyEffect, TakesTheEffectMenuWhenItWorks) {
    ApplySession s;
    EffectData glow = s.Entry("Glow");
    glow.name = "GLOW"; // menu titles compare without case
    glow.category = "stylize";
    s.Apply(glow);
    const hostsim::Layer* title = LayerNamed(*s.host, "Title");
    EXPECT_EQ(title->effects, (std::vector<AEGP_InstalledEffectKey>{3}));
    EXPECT_EQ(s.host->menuActionsSent, 1);
    EXPECT_EQ(s.host->suiteApplications, 0);
    // The choice is used once: later ticks apply nothing more.
    s.Controller().IdleHook();
    EXPECT_EQ(title->effects.size(), 1u);
    EXPECT_EQ(s.host->Outstanding(), 0);

    // The host cuts categories to 31 bytes; the menu shows them whole.
    ApplySession cut;
    hostsim::SimHost& host = cut.Start();
    const std::string category = "Stilisieren und Weichzeichnen (alt)";
    for (hostsim::Effect& effect : host.GetModel().effects)
        effect.category = effect.category == "Stylize" ? category : effect.category;
    host.BuildMenu();
    glow.category = category.substr(0, 31);
    cut.Apply(glow);
    EXPECT_EQ(host.menuActionsSent, 1);
}

TEST(ApplyEffect, FallsBackToTheSuiteWhenTheMenuCannotReachIt) {
    using Edit = void (*)(hostsim::Model&);
    const std::pair<const char*, Edit> cases[] = {
        // clang-format off
        {"disabled category", [](hostsim::Model& m) { m.disabledCategories = {"Stylize"}; }},
        {"effect menu elsewhere", [](hostsim::Model& m) { m.effectMenuIndex = 6; }},
        {"menu item changes nothing", [](hostsim::Model& m) { m.menuActionsApply = false; }},
        {"category not in the menu", [](hostsim::Model& m) { m.effects[2].category = "Renamed"; }},
        // clang-format on
    };
    for (const auto& [what, edit] : cases) {
        SCOPED_TRACE(what);
        ApplySession s;
        hostsim::SimHost& host = s.Start();
        EffectData glow = s.Entry("Glow");
        edit(host.GetModel());
        host.BuildMenu();
        s.Apply(glow);
        EXPECT_EQ(LayerNamed(host, "Title")->effects, (std::vector<AEGP_InstalledEffectKey>{3}));
        EXPECT_EQ(host.suiteApplications, 1);
        EXPECT_EQ(host.liveEffectRefs, 0); // the handle the host returned was disposed of
        EXPECT_EQ(host.Outstanding(), 0);
    }
}

TEST(ApplyEffect, NothingWithoutAnEffectLayer) {
    for (const char* selection : {"", "Camera 1", "Key Light"}) {
        SCOPED_TRACE(selection);
        ApplySession s;
        hostsim::SimHost& host = s.Start();
        SelectOnly(host, selection);
        s.Apply(s.Entry("Glow"));
        SelectOnly(host, "Title"); // a layer selected later does not receive the dropped choice
        s.Controller().IdleHook();
        for (auto& layer : host.ActiveItem()->layers)
            EXPECT_TRUE(layer->effects.empty()) << layer->name;
        EXPECT_EQ(host.menuActionsSent, 0);
    }
}

TEST(ApplyEffect, PresetsRunTheHostScriptWithForwardSlashes) {
    ApplySession s;
    s.model.hostPresets = {"Behaviors/Wiggle-position.ffx", "Odd\\Name.ffx"};
    hostsim::SimHost& host = s.Start();
    s.Apply(s.Entry("Wiggle-position", true));
    s.Apply(s.Entry("Odd\\Name", true));
    const std::string apply = "app.project.activeItem.applyPreset(new File(\"" + host.HostPresetsFolder();
    EXPECT_EQ(host.scripts, (std::vector<std::string>{apply + "/Behaviors/Wiggle-position.ffx\"));",
                                                      apply + "/Odd/Name.ffx\"));"}));
    EXPECT_EQ(LayerNamed(host, "Title")->presets.size(), 2u);
    EXPECT_EQ(host.menuActionsSent, 0);
    EXPECT_EQ(host.suiteApplications, 0);
    EXPECT_EQ(host.liveMemHandles, 0);
}

TEST(ApplyEffect, StalePresetIdsAreDroppedAndAnEmptyCategoryEffectGoesThroughTheSuite) {
    ApplySession s;
    hostsim::SimHost& host = s.Start();
    for (int32_t id : {-3, -1000, INT32_MIN})
        s.Apply(EffectData{id, "Gone", "gone", "Animation Preset", true});
    EXPECT_EQ(host.suiteApplications, 0);
    s.Apply(s.Entry("Orphan Preset", true)); // is_preset, but a host effect: not in any menu
    EXPECT_EQ(LayerNamed(host, "Title")->effects, (std::vector<AEGP_InstalledEffectKey>{8}));
    EXPECT_TRUE(host.scripts.empty());
}

} // namespace
