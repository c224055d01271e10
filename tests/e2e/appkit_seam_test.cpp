// The plug-in's platform seam over AppKit inside the on-screen host: the Effect-menu walk goes
// through the application's real main menu, as on the Mac.

#include "host_app_session.h"

#include "host/host_platform.h"
#include "hostsim/app/appkit_host.h"
#include "hostsim/sim_host.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace {

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

    const hostsim::Layer* headline = host.ActiveLayer();
    ASSERT_NE(headline, nullptr);
    const size_t applied = headline->effects.size();

    // Titles compare without regard to case; the item's action reaches the host once. (Which item
    // it reaches is the walkthrough's part: a search's Return applies its effect through here.)
    EXPECT_TRUE(HostPlatform::ChooseEffectMenuItem("blur & SHARPEN", "box blur"));
    EXPECT_EQ(headline->effects.size(), applied + 1);
    EXPECT_EQ(host.menuActionsSent, 1);

    // A disabled category, an unknown category or item: not taken, nothing sent.
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Obsolete", "Basic 3D"));
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Blurs", "Box Blur"));
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Blur & Sharpen", "Box Blur 2"));
    EXPECT_EQ(headline->effects.size(), applied + 1);
    EXPECT_EQ(host.menuActionsSent, 1);

    // The executable is the simulated installation's, as the host reports it.
    EXPECT_EQ(HostPlatform::ExecutablePath(), host.ExecutablePath());

    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
}

} // namespace
