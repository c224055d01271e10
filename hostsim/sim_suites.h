#pragma once

// The simulated host's suite functions, by family (sim_suites_*.cpp), as the suite tables
// (sim_suite_tables.cpp) list them, and the basic suite through which the plug-in acquires those
// tables. Each function answers for the current host.

#include "host/sdk/ae_suites.h"

namespace hostsim {

// The basic suite the host hands the plug-in at its entry point.
SPBasicSuite BasicSuite();

// Utility, register and memory suites (sim_suites_app.cpp).
A_Err GetSuppressInteractiveUI(A_Boolean* suppressed);
A_Err GetMainHWND(void* mainWindow);
A_Err ExecuteScript(AEGP_PluginID, const A_char* script, const A_Boolean, AEGP_MemHandle* result,
                    AEGP_MemHandle* error);
A_Err RegisterCommandHook(AEGP_PluginID, AEGP_HookPriority, AEGP_Command, AEGP_CommandHook,
                          AEGP_CommandRefcon);
A_Err RegisterIdleHook(AEGP_PluginID, AEGP_IdleHook hook, AEGP_IdleRefcon refcon);
A_Err RegisterDeathHook(AEGP_PluginID, AEGP_DeathHook hook, AEGP_DeathRefcon refcon);
A_Err NewMemHandle(AEGP_PluginID, const A_char*, AEGP_MemSize size, AEGP_MemFlag, AEGP_MemHandle* handle);
A_Err FreeMemHandle(AEGP_MemHandle handle);
A_Err LockMemHandle(AEGP_MemHandle handle, void** pointer);
A_Err UnlockMemHandle(AEGP_MemHandle handle);
A_Err GetMemHandleSize(AEGP_MemHandle handle, AEGP_MemSize* size);

// Effect suite (sim_suites_effect.cpp).
A_Err GetLayerNumEffects(AEGP_LayerH handle, A_long* count);
A_Err DisposeEffect(AEGP_EffectRefH effect);
A_Err ApplyEffect(AEGP_PluginID, AEGP_LayerH handle, AEGP_InstalledEffectKey key, AEGP_EffectRefH* effect);
A_Err GetNumInstalledEffects(A_long* count);
A_Err GetNextInstalledEffect(AEGP_InstalledEffectKey key, AEGP_InstalledEffectKey* next);
A_Err GetEffectName(AEGP_InstalledEffectKey key, A_char* name);
A_Err GetEffectMatchName(AEGP_InstalledEffectKey key, A_char* name);
A_Err GetEffectCategory(AEGP_InstalledEffectKey key, A_char* category);

// Layer, item, comp and project suites (sim_suites_project.cpp).
A_Err GetActiveLayer(AEGP_LayerH* layer);
A_Err GetLayerSourceItem(AEGP_LayerH handle, AEGP_ItemH* item);
A_Err GetLayerParentComp(AEGP_LayerH handle, AEGP_CompH* comp);
A_Err GetLayerNameOld(AEGP_LayerH handle, A_char* layerName, A_char* sourceName);
A_Err GetLayerCurrentTime(AEGP_LayerH handle, AEGP_LTimeMode, A_Time* time);
A_Err GetLayerObjectType(AEGP_LayerH handle, AEGP_ObjectType* type);
A_Err GetActiveItem(AEGP_ItemH* item);
A_Err GetItemType(AEGP_ItemH handle, AEGP_ItemType* type);
A_Err GetItemNameOld(AEGP_ItemH handle, A_char* name);
A_Err GetItemCurrentTime(AEGP_ItemH handle, A_Time* time);
A_Err GetItemDimensions(AEGP_ItemH handle, A_long* width, A_long* height);
A_Err GetItemPixelAspectRatio(AEGP_ItemH handle, A_Ratio* ratio);
A_Err GetCompFromItem(AEGP_ItemH handle, AEGP_CompH* comp);
A_Err GetItemFromComp(AEGP_CompH comp, AEGP_ItemH* item);
A_Err GetNumProjects(A_long* count);
A_Err GetProjectByIndex(A_long index, AEGP_ProjectH* project);
A_Err GetProjectName(AEGP_ProjectH handle, A_char* name);
A_Err GetProjectBitDepth(AEGP_ProjectH handle, AEGP_ProjBitDepth* depth);

} // namespace hostsim
