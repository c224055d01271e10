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
    EXPECT_EQ(second.front().id, -3);
    EXPECT_EQ(second.back().id, -4);
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
    EXPECT_EQ(catalogue.back().name, "Spin");
    EXPECT_EQ(catalogue.front().name, "Glow");
    // Every preset's id leads to its own path.
    for (const EffectData& e : catalogue) {
        ASSERT_LT(e.id, 0);
        const std::string& path = controller.PresetPaths().at(static_cast<size_t>(-e.id - 1));
        EXPECT_EQ(nimbit::file_path(path).leaf(false), e.name);
    }
}

TEST(Catalogue, MissingPresetFoldersGiveNoEntries) {
    HostSession session;
    session.model.hostPresets.clear();
    session.model.userPresets.clear();
    session.model.installFolder = "Applications/Nowhere";
    hostsim::SimHost& host = session.Start();
    nimbit::remove_dir(nimbit::file_path(host.HostPresetsFolder()));
    nimbit::remove_dir(nimbit::file_path(host.UserPresetsFolder()));
    EffectsPopup controller(host.Basic(), 7, AeVersionCC2018);
    const auto catalogue = controller.CollectEffectList();
    // The installed effects only; the empty-category effect has no preset file to stand for it now.
    EXPECT_EQ(catalogue.size(), 7u);
    EXPECT_TRUE(controller.PresetPaths().empty());
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

} // namespace
