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

} // namespace
