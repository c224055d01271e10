// The plug-in's platform seam over AppKit inside the on-screen host: the Effect-menu walk goes
// through the application's real main menu, as on the Mac.

#include "host_app_session.h"

#include "host/host_platform.h"
#include "hostsim/app/appkit_host.h"
#include "hostsim/sim_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace {

int CountOf(const hostsim::Layer& layer, AEGP_InstalledEffectKey key) {
    return static_cast<int>(std::count(layer.effects.begin(), layer.effects.end(), key));
}

AEGP_InstalledEffectKey KeyOf(hostsim::SimHost& host, const std::string& name) {
    for (const hostsim::Effect& effect : host.GetModel().effects) {
        if (effect.name == name)
            return effect.key;
    }
    return 0;
}

TEST(AppKitSeam, PluginWalksTheRealMainMenu) {
    e2e::VirtualDisplay display;
    ASSERT_FALSE(display.name.empty());
    const std::string root =
        std::filesystem::temp_directory_path() / ("quillo-seam-" + std::to_string(getpid()));
    std::filesystem::create_directories(root + "/home");
    setenv("DISPLAY", display.name.c_str(), 1);
    setenv("HOME", (root + "/home").c_str(), 1); // the toolkit's defaults stay out of the real home

    hostsim::SimHost host(hostsim::LoadModelFile(QUILLO_SAMPLE_PROJECT), root + "/disk");
    ASSERT_TRUE(StartAppKitApplication());
    InstallHostMainMenu(host);

    hostsim::Layer* headline = host.ActiveLayer();
    ASSERT_NE(headline, nullptr);
    const AEGP_InstalledEffectKey boxBlur = KeyOf(host, "Box Blur");
    const AEGP_InstalledEffectKey basic3d = KeyOf(host, "Basic 3D");
    ASSERT_NE(boxBlur, 0);
    ASSERT_NE(basic3d, 0);

    // Titles compare without regard to case; the item's action reaches the host once.
    EXPECT_TRUE(HostPlatform::ChooseEffectMenuItem("blur & SHARPEN", "box blur"));
    EXPECT_EQ(CountOf(*headline, boxBlur), 1);
    EXPECT_EQ(host.menuActionsSent, 1);

    // A disabled category, an unknown category or item: not taken, nothing sent.
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Obsolete", "Basic 3D"));
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Blurs", "Box Blur"));
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Blur & Sharpen", "Box Blur 2"));
    EXPECT_EQ(CountOf(*headline, basic3d), 0);
    EXPECT_EQ(host.menuActionsSent, 1);

    // The executable is the simulated installation's, as the host reports it.
    EXPECT_EQ(HostPlatform::ExecutablePath(), host.ExecutablePath());

    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
}

} // namespace
