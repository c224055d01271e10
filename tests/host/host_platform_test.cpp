#include "host/host_platform.h"
#include "host_session.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

// While a host runs the chord and catalogue tests see it through the seam.
TEST(HostPlatform, WithoutAHostNeverActiveAndTheProcesssOwnExecutable) {
    HostSession().Start(); // one came and went
    EXPECT_FALSE(HostPlatform::IsHostActive());
    char self[1024] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
    EXPECT_EQ(HostPlatform::ExecutablePath(), self);
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Stylize", "Glow"));
}

TEST(HostPlatform, EffectMenuWalk) {
    HostSession session;
    hostsim::SimHost& host = session.Start();
    EXPECT_TRUE(HostPlatform::ChooseEffectMenuItem("STYLIZE", "mosaic"));
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Stylize", "Gaussian Blur")); // another category's
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Effect Controls", "Glow"));  // an item without submenu
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("", ""));
    EXPECT_EQ(host.menuActionsSent, 1);

    // A main menu of five items has no Effect menu to walk.
    host.MainMenu().submenu.resize(5);
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Stylize", "Glow"));
    EXPECT_EQ(host.menuActionsSent, 1);
}

} // namespace
