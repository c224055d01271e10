// The simulated host that the plug-in is tested against. Its renderer behaves as the host's does (sizes,
// padded rows, depth-checked accessors, balanced objects), and its suites refuse handles that name
// nothing, so that a plug-in fault shows as an error in a test instead of a read through a stray pointer.

#include "host/aegp_suite_handler.h"
#include "host_session.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(SimulatedRenderer, RendersThePatternAtTheViewResolution) {
    HostSession session;
    hostsim::SimHost& host = session.Start();
    hostsim::Item& comp = *host.ActiveItem();
    comp.width = 64;
    comp.height = 20;
    comp.downsample = 2;
    {
        AEGP_SuiteHandler suites(host.Basic());
        AEGP_ItemH item = reinterpret_cast<AEGP_ItemH>(&comp);
        AEGP_RenderOptionsH options = nullptr;
        ASSERT_EQ(suites.RenderOptionsSuite3()->AEGP_NewFromItem(7, item, &options), A_Err_NONE);
        suites.RenderOptionsSuite3()->AEGP_SetTime(options, A_Time{48, 24});
        suites.RenderOptionsSuite3()->AEGP_SetWorldType(options, AEGP_WorldType_16);
        AEGP_FrameReceiptH receipt = nullptr;
        ASSERT_EQ(suites.RenderSuite3()->AEGP_RenderAndCheckoutFrame(options, nullptr, nullptr, &receipt),
                  A_Err_NONE);
        AEGP_WorldH world = nullptr;
        suites.RenderSuite3()->AEGP_GetReceiptWorld(receipt, &world);
        PF_EffectWorld described{};
        suites.WorldSuite3()->AEGP_FillOutPFEffectWorld(world, &described);
        EXPECT_EQ(described.width, 32); // the composition's half resolution
        EXPECT_EQ(described.height, 10);
        EXPECT_GT(described.rowbytes, 32 * 8);
        PF_Pixel8* wrongDepth = nullptr;
        EXPECT_NE(suites.WorldSuite3()->AEGP_GetBaseAddr8(world, &wrongDepth), A_Err_NONE);

        PF_Pixel16 pixel;
        std::memcpy(&pixel, reinterpret_cast<const uint8_t*>(described.data) + 3 * described.rowbytes + 5 * 8,
                    8);
        double expected[4];
        hostsim::PatternPixel(AEGP_WorldType_16, 5, 3, A_Time{48, 24}, expected);
        EXPECT_EQ((std::vector<double>{double(pixel.alpha), double(pixel.red), double(pixel.green),
                                       double(pixel.blue)}),
                  (std::vector<double>(expected, expected + 4)));

        suites.RenderSuite3()->AEGP_CheckinFrame(receipt);
        suites.RenderOptionsSuite3()->AEGP_Dispose(options);
    }
    EXPECT_EQ(host.lastRender.type, AEGP_WorldType_16);
    EXPECT_EQ(host.lastRender.time.value, 48);
    EXPECT_EQ(host.liveRenderOptions + host.liveFrames + host.liveWorlds, 0);
    EXPECT_EQ(host.Outstanding(), 0);
}

TEST(SimulatedSuites, RefuseUnknownHandlesAndLeaveTheAnswerUntouched) {
    HostSession session;
    hostsim::SimHost& host = session.Start();
    {
        AEGP_SuiteHandler suites(host.Basic());
        int stray = 0; // an address the host never handed out
        const auto layer = reinterpret_cast<AEGP_LayerH>(&stray);
        const auto item = reinterpret_cast<AEGP_ItemH>(&stray);
        const auto project = reinterpret_cast<AEGP_ProjectH>(&stray);

        A_long count = -1, width = -1, height = -1;
        A_char name[AEGP_MAX_ITEM_NAME_SIZE] = "kept";
        AEGP_ObjectType type = AEGP_ObjectType_NONE;
        void* pointer = &stray;
        AEGP_WorldH world = nullptr;
        const A_Err answers[] = {
            suites.EffectSuite3()->AEGP_GetLayerNumEffects(layer, &count),
            suites.EffectSuite3()->AEGP_GetEffectName(0x7fff, name),
            suites.LayerSuite5()->AEGP_GetLayerName(nullptr, name, name),
            suites.ItemSuite10()->AEGP_GetItemName(item, name),
            suites.ProjSuite8()->AEGP_GetProjectName(project, name),
            suites.LayerSuite14()->AEGP_GetLayerObjectType(layer, &type),
            suites.ItemSuite13()->AEGP_GetItemDimensions(nullptr, &width, &height),
            suites.MemorySuite1()->AEGP_LockMemHandle(nullptr, &pointer),
            suites.RenderSuite3()->AEGP_GetReceiptWorld(nullptr, &world),
            // Giving back nothing is refused and counts nothing out.
            suites.EffectSuite3()->AEGP_DisposeEffect(nullptr),
            suites.MemorySuite1()->AEGP_FreeMemHandle(nullptr),
            suites.RenderOptionsSuite3()->AEGP_Dispose(nullptr),
            suites.WorldSuite3()->AEGP_Dispose(nullptr),
            suites.ColorSettingsSuite3()->AEGP_DisposeColorProfile(nullptr),
        };
        for (size_t i = 0; i < std::size(answers); ++i)
            EXPECT_EQ(answers[i], A_Err_PARAMETER) << i;
        EXPECT_EQ(count + width + height, -3);
        EXPECT_STREQ(name, "kept");
        EXPECT_EQ(type, AEGP_ObjectType_NONE);
        EXPECT_EQ(pointer, &stray);
    }
    EXPECT_EQ(host.liveMemHandles + host.liveEffectRefs + host.liveRenderOptions + host.liveWorlds +
                  host.liveProfiles,
              0);
}

} // namespace
