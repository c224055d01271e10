// The simulated host's suites refuse handles that name nothing, as the host does, so that a plug-in
// fault shows as an error in a test instead of a read through a stray pointer.

#include "host/aegp_suite_handler.h"
#include "host_session.h"

#include <gtest/gtest.h>

namespace {

TEST(SimulatedSuites, RefuseUnknownHandlesAndLeaveTheAnswerUntouched) {
    HostSession session;
    hostsim::SimHost& host = session.Start();
    {
        AEGP_SuiteHandler suites(host.Basic());
        int stray = 0; // an address the host never handed out
        const auto layer = reinterpret_cast<AEGP_LayerH>(&stray);
        const auto item = reinterpret_cast<AEGP_ItemH>(&stray);
        const auto project = reinterpret_cast<AEGP_ProjectH>(&stray);

        A_long count = -1;
        EXPECT_EQ(suites.EffectSuite3()->AEGP_GetLayerNumEffects(layer, &count), A_Err_PARAMETER);
        EXPECT_EQ(count, -1);
        A_char name[AEGP_MAX_ITEM_NAME_SIZE] = "kept";
        EXPECT_EQ(suites.EffectSuite3()->AEGP_GetEffectName(0x7fff, name), A_Err_PARAMETER);
        EXPECT_EQ(suites.LayerSuite5()->AEGP_GetLayerName(nullptr, name, name), A_Err_PARAMETER);
        EXPECT_EQ(suites.ItemSuite10()->AEGP_GetItemName(item, name), A_Err_PARAMETER);
        EXPECT_EQ(suites.ProjSuite8()->AEGP_GetProjectName(project, name), A_Err_PARAMETER);
        EXPECT_STREQ(name, "kept");
        AEGP_ObjectType type = AEGP_ObjectType_NONE;
        EXPECT_EQ(suites.LayerSuite14()->AEGP_GetLayerObjectType(layer, &type), A_Err_PARAMETER);
        EXPECT_EQ(type, AEGP_ObjectType_NONE);
        A_long width = -1, height = -1;
        EXPECT_EQ(suites.ItemSuite13()->AEGP_GetItemDimensions(nullptr, &width, &height), A_Err_PARAMETER);
        EXPECT_EQ(width + height, -2);
        void* pointer = &stray;
        EXPECT_EQ(suites.MemorySuite1()->AEGP_LockMemHandle(nullptr, &pointer), A_Err_PARAMETER);
        EXPECT_EQ(pointer, &stray);
        AEGP_WorldH world = nullptr;
        EXPECT_EQ(suites.RenderSuite3()->AEGP_GetReceiptWorld(nullptr, &world), A_Err_PARAMETER);

        // Giving back nothing is refused and counts nothing out.
        EXPECT_EQ(suites.EffectSuite3()->AEGP_DisposeEffect(nullptr), A_Err_PARAMETER);
        EXPECT_EQ(suites.MemorySuite1()->AEGP_FreeMemHandle(nullptr), A_Err_PARAMETER);
        EXPECT_EQ(suites.RenderOptionsSuite3()->AEGP_Dispose(nullptr), A_Err_PARAMETER);
        EXPECT_EQ(suites.WorldSuite3()->AEGP_Dispose(nullptr), A_Err_PARAMETER);
        EXPECT_EQ(suites.ColorSettingsSuite3()->AEGP_DisposeColorProfile(nullptr), A_Err_PARAMETER);
    }
    EXPECT_EQ(host.liveMemHandles + host.liveEffectRefs + host.liveRenderOptions + host.liveWorlds +
                  host.liveProfiles,
              0);
}

} // namespace
