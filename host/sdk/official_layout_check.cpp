// Compiled only when the build points at the host's published SDK headers: checks at compile time
// that our declarations put every suite member and record field this program uses at the offset
// the host's headers give, and that every table has the host's size (so no member is missing).

#include <cstddef>
#include <cstdint>

#include "AEConfig.h"
#include "AE_GeneralPlug.h" // brings the older suite generations too
#include "SPBasic.h"

namespace ours {
#include "host/sdk/ae_suites.h"
} // namespace ours

#define QUILLO_SAME_SIZE(type) static_assert(sizeof(::type) == sizeof(ours::type), "size of " #type)
#define QUILLO_SAME_OFFSET(type, member)                                                                     \
    static_assert(offsetof(::type, member) == offsetof(ours::type, member), "offset of " #type "::" #member)

QUILLO_SAME_SIZE(A_Time);
QUILLO_SAME_SIZE(A_Ratio);
QUILLO_SAME_SIZE(PF_EffectWorld);
QUILLO_SAME_OFFSET(PF_EffectWorld, data);
QUILLO_SAME_OFFSET(PF_EffectWorld, rowbytes);
QUILLO_SAME_OFFSET(PF_EffectWorld, width);
QUILLO_SAME_OFFSET(PF_EffectWorld, height);

QUILLO_SAME_SIZE(SPBasicSuite);
QUILLO_SAME_OFFSET(SPBasicSuite, AcquireSuite);
QUILLO_SAME_OFFSET(SPBasicSuite, ReleaseSuite);

QUILLO_SAME_SIZE(AEGP_UtilitySuite5);
QUILLO_SAME_OFFSET(AEGP_UtilitySuite5, AEGP_GetSuppressInteractiveUI);
QUILLO_SAME_SIZE(AEGP_UtilitySuite4);
QUILLO_SAME_OFFSET(AEGP_UtilitySuite4, AEGP_ExecuteScript);
QUILLO_SAME_OFFSET(AEGP_UtilitySuite4, AEGP_StartUndoGroup);
QUILLO_SAME_OFFSET(AEGP_UtilitySuite4, AEGP_EndUndoGroup);

QUILLO_SAME_SIZE(AEGP_RegisterSuite5);
QUILLO_SAME_OFFSET(AEGP_RegisterSuite5, AEGP_RegisterIdleHook);
QUILLO_SAME_OFFSET(AEGP_RegisterSuite5, AEGP_RegisterDeathHook);

QUILLO_SAME_SIZE(AEGP_EffectSuite3);
QUILLO_SAME_OFFSET(AEGP_EffectSuite3, AEGP_GetNumInstalledEffects);
QUILLO_SAME_OFFSET(AEGP_EffectSuite3, AEGP_GetNextInstalledEffect);
QUILLO_SAME_OFFSET(AEGP_EffectSuite3, AEGP_GetEffectName);
QUILLO_SAME_OFFSET(AEGP_EffectSuite3, AEGP_GetEffectCategory);
QUILLO_SAME_OFFSET(AEGP_EffectSuite3, AEGP_ApplyEffect);
QUILLO_SAME_OFFSET(AEGP_EffectSuite3, AEGP_DisposeEffect);
QUILLO_SAME_SIZE(AEGP_EffectSuite2);
QUILLO_SAME_OFFSET(AEGP_EffectSuite2, AEGP_GetLayerNumEffects);

QUILLO_SAME_SIZE(AEGP_LayerSuite8);
QUILLO_SAME_OFFSET(AEGP_LayerSuite8, AEGP_GetActiveLayer);
QUILLO_SAME_OFFSET(AEGP_LayerSuite8, AEGP_GetLayerObjectType);
QUILLO_SAME_SIZE(AEGP_LayerSuite5);
QUILLO_SAME_OFFSET(AEGP_LayerSuite5, AEGP_GetLayerSourceItem);
QUILLO_SAME_OFFSET(AEGP_LayerSuite5, AEGP_GetLayerParentComp);
QUILLO_SAME_OFFSET(AEGP_LayerSuite5, AEGP_GetLayerCurrentTime);
QUILLO_SAME_SIZE(AEGP_LayerSuite1);
QUILLO_SAME_OFFSET(AEGP_LayerSuite1, AEGP_GetLayerName);

QUILLO_SAME_SIZE(AEGP_ItemSuite6);
QUILLO_SAME_OFFSET(AEGP_ItemSuite6, AEGP_GetActiveItem);
QUILLO_SAME_OFFSET(AEGP_ItemSuite6, AEGP_GetItemType);
QUILLO_SAME_OFFSET(AEGP_ItemSuite6, AEGP_GetItemName);
QUILLO_SAME_OFFSET(AEGP_ItemSuite6, AEGP_GetItemCurrentTime);
QUILLO_SAME_SIZE(AEGP_ItemSuite8);
QUILLO_SAME_OFFSET(AEGP_ItemSuite8, AEGP_GetItemPixelAspectRatio);
QUILLO_SAME_OFFSET(AEGP_ItemSuite8, AEGP_GetItemMRUView);

QUILLO_SAME_SIZE(AEGP_CompSuite7);
QUILLO_SAME_OFFSET(AEGP_CompSuite7, AEGP_GetCompFromItem);
QUILLO_SAME_OFFSET(AEGP_CompSuite7, AEGP_GetItemFromComp);
QUILLO_SAME_SIZE(AEGP_CompSuite4);
QUILLO_SAME_OFFSET(AEGP_CompSuite4, AEGP_GetItemFromComp);

QUILLO_SAME_SIZE(AEGP_ProjSuite5);
QUILLO_SAME_OFFSET(AEGP_ProjSuite5, AEGP_GetNumProjects);
QUILLO_SAME_OFFSET(AEGP_ProjSuite5, AEGP_GetProjectByIndex);
QUILLO_SAME_OFFSET(AEGP_ProjSuite5, AEGP_GetProjectName);
QUILLO_SAME_OFFSET(AEGP_ProjSuite5, AEGP_GetProjectBitDepth);

QUILLO_SAME_SIZE(AEGP_MemorySuite1);
QUILLO_SAME_OFFSET(AEGP_MemorySuite1, AEGP_NewMemHandle);
QUILLO_SAME_OFFSET(AEGP_MemorySuite1, AEGP_FreeMemHandle);
QUILLO_SAME_OFFSET(AEGP_MemorySuite1, AEGP_LockMemHandle);
QUILLO_SAME_OFFSET(AEGP_MemorySuite1, AEGP_UnlockMemHandle);
QUILLO_SAME_OFFSET(AEGP_MemorySuite1, AEGP_GetMemHandleSize);

QUILLO_SAME_SIZE(AEGP_RenderOptionsSuite3);
QUILLO_SAME_OFFSET(AEGP_RenderOptionsSuite3, AEGP_NewFromItem);
QUILLO_SAME_OFFSET(AEGP_RenderOptionsSuite3, AEGP_SetTime);
QUILLO_SAME_OFFSET(AEGP_RenderOptionsSuite3, AEGP_SetWorldType);
QUILLO_SAME_OFFSET(AEGP_RenderOptionsSuite3, AEGP_SetDownsampleFactor);
QUILLO_SAME_OFFSET(AEGP_RenderOptionsSuite3, AEGP_Dispose);
QUILLO_SAME_SIZE(AEGP_RenderSuite3);
QUILLO_SAME_OFFSET(AEGP_RenderSuite3, AEGP_RenderAndCheckoutFrame);
QUILLO_SAME_OFFSET(AEGP_RenderSuite3, AEGP_CheckinFrame);
QUILLO_SAME_OFFSET(AEGP_RenderSuite3, AEGP_GetReceiptWorld);
QUILLO_SAME_SIZE(AEGP_WorldSuite3);
QUILLO_SAME_OFFSET(AEGP_WorldSuite3, AEGP_New);
QUILLO_SAME_OFFSET(AEGP_WorldSuite3, AEGP_Dispose);
QUILLO_SAME_OFFSET(AEGP_WorldSuite3, AEGP_GetRowBytes);
QUILLO_SAME_OFFSET(AEGP_WorldSuite3, AEGP_GetBaseAddr8);
QUILLO_SAME_OFFSET(AEGP_WorldSuite3, AEGP_GetBaseAddr16);
QUILLO_SAME_OFFSET(AEGP_WorldSuite3, AEGP_GetBaseAddr32);
QUILLO_SAME_OFFSET(AEGP_WorldSuite3, AEGP_FillOutPFEffectWorld);
QUILLO_SAME_SIZE(AEGP_ColorSettingsSuite2);
QUILLO_SAME_OFFSET(AEGP_ColorSettingsSuite2, AEGP_DoesViewHaveColorSpaceXform);
QUILLO_SAME_OFFSET(AEGP_ColorSettingsSuite2, AEGP_XformWorkingToViewColorSpace);
QUILLO_SAME_OFFSET(AEGP_ColorSettingsSuite2, AEGP_GetNewWorkingSpaceColorProfile);
QUILLO_SAME_OFFSET(AEGP_ColorSettingsSuite2, AEGP_GetNewColorProfileDescription);
QUILLO_SAME_OFFSET(AEGP_ColorSettingsSuite2, AEGP_DisposeColorProfile);
