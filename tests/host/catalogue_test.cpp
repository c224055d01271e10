// The catalogue the controller collects from the simulated host, and applying its entries.
#include "host_session.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// "id name / category", with " *" for a preset.
std::vector<std::string> Rows(const std::vector<EffectData>& catalogue) {
    std::vector<std::string> rows;
    for (const EffectData& e : catalogue)
        rows.push_back(std::to_string(e.id) + " " + e.name + " / " + e.category + (e.is_preset ? " *" : ""));
    return rows;
}

TEST(Catalogue, OrderAndFilteringRules) {
    ControllerSession s;
    s.model.hostPresets = {"Behaviors/WIGGLE-Position.ffx"};
    EffectsPopup& controller = s.Controller();
    const hostsim::SimHost& host = *s.host;
    const std::vector<std::string> expected = {
        "-1 WIGGLE-Position / Animation Preset *", // host presets first
        "1 Gaussian Blur / Blur & Sharpen", "2 Box Blur / Blur & Sharpen", "3 Glow / Stylize",
        "4 Mosaic / Stylize",
        "6 Lower Case Obsolete / _obsolete", // "_Obsolete" is dropped, "_obsolete" is an ordinary category
        // an empty-category effect named like a preset file (in any case) is dropped; one without stays
        "8 Orphan Preset / Animation Preset *",
        "-2 Glow / Animation Preset *", // user presets last
    };
    EXPECT_EQ(Rows(s.catalogue), expected);
    EXPECT_EQ(s.catalogue.front().search_name, "wiggle-position"); // effects' are checked with the names
    EXPECT_EQ(controller.PresetPaths(),
              (std::vector<std::string>{host.HostPresetsFolder() + "/Behaviors/WIGGLE-Position.ffx",
                                        host.UserPresetsFolder() + "/Glow.ffx"}));
    EXPECT_EQ(controller.GetAEPresetsPath().to_string(), host.HostPresetsFolder());
    // A second collection adds its presets to the path list, with ids that lead to them.
    const auto second = controller.CollectEffectList();
    ASSERT_EQ(controller.PresetPaths().size(), 4u);
    EXPECT_EQ(controller.PresetPaths()[2], controller.PresetPaths()[0]);
    EXPECT_EQ(std::pair(second.front().id, second.back().id), std::pair(-3, -4));
    EXPECT_EQ(host.Outstanding(), 0);
}

TEST(Catalogue, PresetFilesExtensionCaseAndDuplicateNames) {
    ControllerSession s;
    s.model.effects.clear();
    // clang-format off
    s.model.hostPresets = {"Glow.FFX", "Glow.Ffx", "Glow.ffx", "notes.txt", "A/Fade.ffx", "B/Fade.ffx",
                           "A/Deep/Deeper/Spin.ffx"};
    // clang-format on
    s.model.userPresets.clear();
    EffectsPopup& controller = s.Controller();
    const auto& catalogue = s.catalogue;
    std::vector<std::string> names;
    for (const EffectData& e : catalogue)
        names.push_back(e.name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"Fade", "Fade", "Glow", "Spin"}));
    // Breadth-first: the top folder's file comes before anything in sub-folders, the deepest last.
    EXPECT_EQ(catalogue.front().name + catalogue.back().name, "GlowSpin");
    // Every preset's id leads to its own path.
    for (const EffectData& e : catalogue) {
        ASSERT_LT(e.id, 0);
        const std::string& path = controller.PresetPaths().at(static_cast<size_t>(-e.id - 1));
        EXPECT_EQ(nimbit::file_path(path).leaf(false), e.name);
    }
}

TEST(Catalogue, MissingPresetFoldersGiveNoEntries) {
    ControllerSession s;
    s.model.hostPresets.clear();
    s.model.userPresets.clear();
    s.model.installFolder = "Applications/Nowhere";
    hostsim::SimHost& host = s.Start();
    nimbit::remove_dir(nimbit::file_path(host.HostPresetsFolder()));
    nimbit::remove_dir(nimbit::file_path(host.UserPresetsFolder()));
    // The installed effects only; the empty-category effect has no preset file to stand for it now.
    EXPECT_TRUE(s.Controller().PresetPaths().empty() && s.catalogue.size() == 7u);
}

TEST(Catalogue, UserPresetFolderFollowsTheHostVersion) {
    HostSession session;
    session.model.userPresetsFolder = "After Effects CC 2015";
    hostsim::SimHost& host = session.Start();
    auto userPresets = [&](AeVersion version) {
        EffectsPopup controller(host.Basic(), 7, version);
        const auto catalogue = controller.CollectEffectList();
        return std::count_if(catalogue.begin(), catalogue.end(),
                             [](const EffectData& e) { return e.is_preset && e.id < -1; });
    };
    EXPECT_EQ(userPresets(AeVersionFromApi(113, 5)), 1);
    EXPECT_EQ(userPresets(AeVersionFromApi(113, 4)), 0); // that host's folder is "... CC 2014"
    EXPECT_EQ(userPresets(AeVersionOther), 0);
}

TEST(Catalogue, NewerHostFindsNoUserPresetsWithTheUsualBundle) {
    ControllerSession s;
    s.model.installFolder = "Applications/Adobe After Effects 2020";
    s.model.bundle = "Adobe After Effects 2020.app";
    s.model.userPresetsFolder = "After Effects 2020";
    EffectsPopup& controller = s.Controller(AeVersionFromApi(116, 0));
    EXPECT_EQ(controller.Version(), AeVersionOther);
    // The bundle's Contents folder is taken for the bundle: "Contents" without its first six letters.
    EXPECT_EQ(controller.GetUserPresetsPath().to_string(),
              s.host->Root() + "/Documents/Adobe/ts/User Presets");
    EXPECT_EQ(s.catalogue.back().name, "Orphan Preset");
}

TEST(Catalogue, NamesComeFromMacRomanAndAreCutToTheHostBuffer) {
    ControllerSession s;
    s.model.effects = {{1, "Caf\xC3\xA9 Glow \xE2\x80\x94 Soft", "Stylize", ""},
                       {2, std::string(60, 'x'), "Stylize", ""},
                       {3, "Short", std::string(40, 'c'), ""}};
    s.Controller();
    const auto& catalogue = s.catalogue;
    ASSERT_GE(catalogue.size(), 4u);
    EXPECT_EQ(catalogue[1].name, "Caf\xC3\xA9 Glow \xE2\x80\x94 Soft");
    EXPECT_EQ(catalogue[1].search_name, "caf\xC3\xA9 glow \xE2\x80\x94 soft");
    EXPECT_EQ(catalogue[2].name, std::string(AEGP_MAX_EFFECT_NAME_SIZE - 1, 'x'));
    EXPECT_EQ(catalogue[3].category, std::string(AEGP_MAX_EFFECT_CATEGORY_NAME_SIZE - 1, 'c'));
}

TEST(ApplyEffect, TakesTheEffectMenuWhenItWorksAndTheSuiteForAnEntryInNoMenu) {
    ControllerSession s;
    EffectData glow = s.Entry("Glow");
    glow.name = "GLOW"; // menu titles compare without case
    glow.category = "stylize";
    s.Apply(glow);
    const hostsim::Layer* title = LayerNamed(*s.host, "Title");
    EXPECT_EQ(title->effects, (std::vector<AEGP_InstalledEffectKey>{3}));
    EXPECT_EQ(std::pair(s.host->menuActionsSent, s.host->suiteApplications), std::pair(1, 0));
    // The choice is used once: later ticks apply nothing more.
    s.Controller().IdleHook();
    EXPECT_TRUE(title->effects.size() == 1u && s.host->Outstanding() == 0);
    // Stale preset ids are dropped; an empty-category effect, listed as a preset, is in no menu.
    for (int32_t id : {-3, -1000, INT32_MIN})
        s.Apply(EffectData{id, "Gone", "gone", "Animation Preset", true});
    EXPECT_EQ(s.host->suiteApplications, 0);
    s.Apply(s.Entry("Orphan Preset", true));
    EXPECT_EQ(title->effects, (std::vector<AEGP_InstalledEffectKey>{3, 8}));
    EXPECT_TRUE(s.host->scripts.empty() && s.host->suiteApplications == 1);

    // The host cuts categories to 31 bytes; the menu shows them whole.
    ControllerSession cut;
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
        ControllerSession s;
        hostsim::SimHost& host = s.Start();
        EffectData glow = s.Entry("Glow");
        edit(host.GetModel());
        host.BuildMenu();
        s.Apply(glow);
        EXPECT_EQ(LayerNamed(host, "Title")->effects, (std::vector<AEGP_InstalledEffectKey>{3}));
        EXPECT_EQ(host.suiteApplications, 1);
        EXPECT_EQ(host.liveEffectRefs + host.Outstanding(),
                  0); // the handle the host returned was disposed of
    }
}

// Without an effect layer nothing is applied; presets run the host's script, with forward slashes.
TEST(ApplyEffect, NothingWithoutAnEffectLayerAndPresetsRunTheHostScriptWithForwardSlashes) {
    ControllerSession s;
    s.model.hostPresets = {"Behaviors/Wiggle-position.ffx", "Odd\\Name.ffx"};
    hostsim::SimHost& host = s.Start();
    for (const char* selection : {"", "Camera 1", "Key Light"}) {
        SCOPED_TRACE(selection);
        SelectOnly(host, selection);
        s.Apply(s.Entry("Glow"));
        SelectOnly(host, "Title"); // a layer selected later does not receive the dropped choice
        s.Controller().IdleHook();
        for (auto& layer : host.ActiveItem()->layers)
            EXPECT_TRUE(layer->effects.empty()) << layer->name;
        EXPECT_EQ(host.menuActionsSent, 0);
    }
    s.Apply(s.Entry("Wiggle-position", true));
    s.Apply(s.Entry("Odd\\Name", true));
    const std::string apply = "app.project.activeItem.applyPreset(new File(\"" + host.HostPresetsFolder();
    EXPECT_EQ(host.scripts, (std::vector<std::string>{apply + "/Behaviors/Wiggle-position.ffx\"));",
                                                      apply + "/Odd/Name.ffx\"));"}));
    EXPECT_EQ(LayerNamed(host, "Title")->presets.size(), 2u);
    EXPECT_EQ(host.menuActionsSent + host.suiteApplications + host.liveMemHandles, 0);
}

} // namespace
