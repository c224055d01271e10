#pragma once

// The host's suite tables that this program acquires, each at the exact layout the host hands out
// for the version number passed to AcquireSuite. The host names each table after the interface
// generation that introduced it, which is a different, older number than the acquire version:
//
//   "AEGP Utility Suite"        11 -> AEGP_UtilitySuite5      10 -> AEGP_UtilitySuite4
//   "AEGP Register Suite"        6 -> AEGP_RegisterSuite5
//   "AEGP Effect Suite"          3 -> AEGP_EffectSuite3        2 -> AEGP_EffectSuite2
//   "AEGP Layer Suite"          14 -> AEGP_LayerSuite8        11 -> AEGP_LayerSuite5   5 -> AEGP_LayerSuite1
//   "AEGP Item Suite"           10 -> AEGP_ItemSuite6         13 -> AEGP_ItemSuite8
//   "AEGP Comp Suite"           15 -> AEGP_CompSuite7          9 -> AEGP_CompSuite4
//   "AEGP Proj Suite"            8 -> AEGP_ProjSuite5
//   "AEGP Memory Suite"          1 -> AEGP_MemorySuite1
//   "AEGP Render Options Suite"  3 -> AEGP_RenderOptionsSuite3
//   "AEGP Render Suite"          3 -> AEGP_RenderSuite3
//   "AEGP World Suite"           3 -> AEGP_WorldSuite3
//   "PF Color Settings Suite"    3 -> AEGP_ColorSettingsSuite2
//
// Every member is declared, used or not, in the host's order: a table is read by offset.

#include "host/sdk/ae_basic.h"

#pragma pack(push, 8)

extern "C" {

// Members shared by the two Utility generations, in order.
#define QUILLO_AEGP_UTILITY_MEMBERS                                                                          \
    A_Err (*AEGP_ReportInfo)(AEGP_PluginID plugin_id, const A_char* info);                                   \
    A_Err (*AEGP_GetDriverPluginInitFuncVersion)(A_short * major, A_short * minor);                          \
    A_Err (*AEGP_GetDriverImplementationVersion)(A_short * major, A_short * minor);                          \
    A_Err (*AEGP_StartQuietErrors)(AEGP_ErrReportState * state);                                             \
    A_Err (*AEGP_EndQuietErrors)(A_Boolean report_quieted, AEGP_ErrReportState * state);                     \
    A_Err (*AEGP_GetLastErrorMessage)(A_long buffer_size, A_char * text, A_Err * error);                     \
    A_Err (*AEGP_StartUndoGroup)(const A_char* undo_name);                                                   \
    A_Err (*AEGP_EndUndoGroup)();                                                                            \
    A_Err (*AEGP_RegisterWithAEGP)(AEGP_GlobalRefcon refcon, const A_char* plugin_name,                      \
                                   AEGP_PluginID* plugin_id);                                                \
    A_Err (*AEGP_GetMainHWND)(void* main_window);                                                            \
    A_Err (*AEGP_ShowHideAllFloaters)(A_Boolean include_tool_palette);                                       \
    A_Err (*AEGP_PaintPalGetForeColor)(AEGP_ColorVal * color);                                               \
    A_Err (*AEGP_PaintPalGetBackColor)(AEGP_ColorVal * color);                                               \
    A_Err (*AEGP_PaintPalSetForeColor)(const AEGP_ColorVal* color);                                          \
    A_Err (*AEGP_PaintPalSetBackColor)(const AEGP_ColorVal* color);                                          \
    A_Err (*AEGP_CharPalGetFillColor)(A_Boolean * defined, AEGP_ColorVal * color);                           \
    A_Err (*AEGP_CharPalGetStrokeColor)(A_Boolean * defined, AEGP_ColorVal * color);                         \
    A_Err (*AEGP_CharPalSetFillColor)(const AEGP_ColorVal* color);                                           \
    A_Err (*AEGP_CharPalSetStrokeColor)(const AEGP_ColorVal* color);                                         \
    A_Err (*AEGP_CharPalIsFillColorUIFrontmost)(A_Boolean * fill_selected);                                  \
    A_Err (*AEGP_ConvertFpLongToHSFRatio)(A_FpLong number, A_Ratio * ratio);                                 \
    A_Err (*AEGP_ConvertHSFRatioToFpLong)(A_Ratio ratio, A_FpLong * number);                                 \
    A_Err (*AEGP_CauseIdleRoutinesToBeCalled)();                                                             \
    A_Err (*AEGP_GetSuppressInteractiveUI)(A_Boolean * suppressed);                                          \
    A_Err (*AEGP_WriteToOSConsole)(const A_char* text);                                                      \
    A_Err (*AEGP_WriteToDebugLog)(const A_char* subsystem, const A_char* event_type, const A_char* info);    \
    A_Err (*AEGP_IsScriptingAvailable)(A_Boolean * available);                                               \
    /* The result and error handles are optional; when given, the caller frees them. */                      \
    A_Err (*AEGP_ExecuteScript)(AEGP_PluginID plugin_id, const A_char* script,                               \
                                const A_Boolean platform_encoding, AEGP_MemHandle* result,                   \
                                AEGP_MemHandle* error);                                                      \
    A_Err (*AEGP_HostIsActivated)(A_Boolean * activated);                                                    \
    A_Err (*AEGP_GetPluginPlatformRef)(AEGP_PluginID plugin_id, void** platform_ref);

typedef struct AEGP_UtilitySuite4 {
    QUILLO_AEGP_UTILITY_MEMBERS
} AEGP_UtilitySuite4;

typedef struct AEGP_UtilitySuite5 {
    QUILLO_AEGP_UTILITY_MEMBERS
    A_Err (*AEGP_UpdateFontList)();
} AEGP_UtilitySuite5;

#undef QUILLO_AEGP_UTILITY_MEMBERS

typedef struct AEGP_RegisterSuite5 {
    A_Err (*AEGP_RegisterCommandHook)(AEGP_PluginID plugin_id, AEGP_HookPriority priority,
                                      AEGP_Command command, AEGP_CommandHook hook, AEGP_CommandRefcon refcon);
    A_Err (*AEGP_RegisterUpdateMenuHook)(AEGP_PluginID plugin_id, AEGP_UpdateMenuHook hook,
                                         AEGP_UpdateMenuRefcon refcon);
    A_Err (*AEGP_RegisterDeathHook)(AEGP_PluginID plugin_id, AEGP_DeathHook hook, AEGP_DeathRefcon refcon);
    A_Err (*AEGP_RegisterVersionHook)(AEGP_PluginID plugin_id, AEGP_VersionHook hook,
                                      AEGP_VersionRefcon refcon);
    A_Err (*AEGP_RegisterAboutStringHook)(AEGP_PluginID plugin_id, AEGP_AboutStringHook hook,
                                          AEGP_AboutStringRefcon refcon);
    A_Err (*AEGP_RegisterAboutHook)(AEGP_PluginID plugin_id, AEGP_AboutHook hook, AEGP_AboutRefcon refcon);
    A_Err (*AEGP_RegisterArtisan)(A_Version api_version, A_Version artisan_version, AEGP_PluginID plugin_id,
                                  void* refcon, const A_char* match_name, const A_char* artisan_name,
                                  PR_ArtisanEntryPoints* entry_points);
    A_Err (*AEGP_RegisterIO)(AEGP_PluginID plugin_id, AEGP_IORefcon refcon, const AEIO_ModuleInfo* info,
                             const AEIO_FunctionBlock4* functions);
    A_Err (*AEGP_RegisterIdleHook)(AEGP_PluginID plugin_id, AEGP_IdleHook hook, AEGP_IdleRefcon refcon);
    A_Err (*AEGP_RegisterTracker)(A_Version api_version, A_Version tracker_version, AEGP_PluginID plugin_id,
                                  const AEGP_GlobalRefcon refcon, const A_char* match_name,
                                  const A_char* tracker_name, const PT_TrackerEntryPoints* entry_points);
    A_Err (*AEGP_RegisterInteractiveArtisan)(A_Version api_version, A_Version artisan_version,
                                             AEGP_PluginID plugin_id, void* refcon, const A_char* match_name,
                                             const A_char* artisan_name, PR_ArtisanEntryPoints* entry_points);
    A_Err (*AEGP_RegisterPresetLocalizationString)(const A_char* english_name, const A_char* localized_name);
} AEGP_RegisterSuite5;

// The two Effect generations differ only in EffectCallGeneric, which gained a command argument.
#define QUILLO_AEGP_EFFECT_MEMBERS_HEAD                                                                      \
    A_Err (*AEGP_GetLayerNumEffects)(AEGP_LayerH layer, A_long * count);                                     \
    A_Err (*AEGP_GetLayerEffectByIndex)(AEGP_PluginID plugin_id, AEGP_LayerH layer, AEGP_EffectIndex index,  \
                                        AEGP_EffectRefH * effect);                                           \
    A_Err (*AEGP_GetInstalledKeyFromLayerEffect)(AEGP_EffectRefH effect, AEGP_InstalledEffectKey * key);     \
    A_Err (*AEGP_GetEffectParamUnionByIndex)(AEGP_PluginID plugin_id, AEGP_EffectRefH effect,                \
                                             PF_ParamIndex index, PF_ParamType * type,                       \
                                             PF_ParamDefUnion * param);                                      \
    A_Err (*AEGP_GetEffectFlags)(AEGP_EffectRefH effect, AEGP_EffectFlags * flags);                          \
    A_Err (*AEGP_SetEffectFlags)(AEGP_EffectRefH effect, AEGP_EffectFlags mask, AEGP_EffectFlags flags);     \
    A_Err (*AEGP_ReorderEffect)(AEGP_EffectRefH effect, A_long index);

#define QUILLO_AEGP_EFFECT_MEMBERS_TAIL                                                                      \
    A_Err (*AEGP_DisposeEffect)(AEGP_EffectRefH effect);                                                     \
    A_Err (*AEGP_ApplyEffect)(AEGP_PluginID plugin_id, AEGP_LayerH layer, AEGP_InstalledEffectKey key,       \
                              AEGP_EffectRefH * effect);                                                     \
    A_Err (*AEGP_DeleteLayerEffect)(AEGP_EffectRefH effect);                                                 \
    A_Err (*AEGP_GetNumInstalledEffects)(A_long * count);                                                    \
    /* Key 0 asks for the first installed effect. */                                                         \
    A_Err (*AEGP_GetNextInstalledEffect)(AEGP_InstalledEffectKey key, AEGP_InstalledEffectKey * next);       \
    /* Buffers of AEGP_MAX_EFFECT_NAME_SIZE, _MATCH_NAME_SIZE and _CATEGORY_NAME_SIZE bytes. */              \
    A_Err (*AEGP_GetEffectName)(AEGP_InstalledEffectKey key, A_char * name);                                 \
    A_Err (*AEGP_GetEffectMatchName)(AEGP_InstalledEffectKey key, A_char * match_name);                      \
    A_Err (*AEGP_GetEffectCategory)(AEGP_InstalledEffectKey key, A_char * category);                         \
    A_Err (*AEGP_DuplicateEffect)(AEGP_EffectRefH original, AEGP_EffectRefH * duplicate);

typedef struct AEGP_EffectSuite2 {
    QUILLO_AEGP_EFFECT_MEMBERS_HEAD
    A_Err (*AEGP_EffectCallGeneric)(AEGP_PluginID plugin_id, AEGP_EffectRefH effect, const A_Time* time,
                                    void* extra);
    QUILLO_AEGP_EFFECT_MEMBERS_TAIL
} AEGP_EffectSuite2;

typedef struct AEGP_EffectSuite3 {
    QUILLO_AEGP_EFFECT_MEMBERS_HEAD
    A_Err (*AEGP_EffectCallGeneric)(AEGP_PluginID plugin_id, AEGP_EffectRefH effect, const A_Time* time,
                                    PF_Cmd command, void* extra);
    QUILLO_AEGP_EFFECT_MEMBERS_TAIL
} AEGP_EffectSuite3;

#undef QUILLO_AEGP_EFFECT_MEMBERS_HEAD
#undef QUILLO_AEGP_EFFECT_MEMBERS_TAIL

// Layer generations. The oldest one lacks the source item id and layer-to-comp time members; the
// newest returns names as UTF-16 memory handles instead of fixed Mac Roman buffers.
typedef struct AEGP_LayerSuite1 {
    A_Err (*AEGP_GetCompNumLayers)(AEGP_CompH comp, A_long* count);
    A_Err (*AEGP_GetCompLayerByIndex)(AEGP_CompH comp, A_long index, AEGP_LayerH* layer);
    A_Err (*AEGP_GetActiveLayer)(AEGP_LayerH* layer);
    A_Err (*AEGP_GetLayerIndex)(AEGP_LayerH layer, A_long* index);
    A_Err (*AEGP_GetLayerSourceItem)(AEGP_LayerH layer, AEGP_ItemH* source_item);
    A_Err (*AEGP_GetLayerParentComp)(AEGP_LayerH layer, AEGP_CompH* comp);
    // Each buffer is AEGP_MAX_LAYER_NAME_SIZE bytes, either may be null.
    A_Err (*AEGP_GetLayerName)(AEGP_LayerH layer, A_char* layer_name, A_char* source_name);
    A_Err (*AEGP_GetLayerQuality)(AEGP_LayerH layer, AEGP_LayerQuality* quality);
    A_Err (*AEGP_SetLayerQuality)(AEGP_LayerH layer, AEGP_LayerQuality quality);
    A_Err (*AEGP_GetLayerFlags)(AEGP_LayerH layer, AEGP_LayerFlags* flags);
    A_Err (*AEGP_SetLayerFlag)(AEGP_LayerH layer, AEGP_LayerFlags flag, A_Boolean value);
    A_Err (*AEGP_IsLayerVideoReallyOn)(AEGP_LayerH layer, A_Boolean* on);
    A_Err (*AEGP_IsLayerAudioReallyOn)(AEGP_LayerH layer, A_Boolean* on);
    A_Err (*AEGP_GetLayerCurrentTime)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* time);
    A_Err (*AEGP_GetLayerInPoint)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* in_point);
    A_Err (*AEGP_GetLayerDuration)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* duration);
    A_Err (*AEGP_SetLayerInPointAndDuration)(AEGP_LayerH layer, AEGP_LTimeMode mode, const A_Time* in_point,
                                             const A_Time* duration);
    A_Err (*AEGP_GetLayerOffset)(AEGP_LayerH layer, A_Time* offset);
    A_Err (*AEGP_SetLayerOffset)(AEGP_LayerH layer, const A_Time* offset);
    A_Err (*AEGP_GetLayerStretch)(AEGP_LayerH layer, A_Ratio* stretch);
    A_Err (*AEGP_SetLayerStretch)(AEGP_LayerH layer, const A_Ratio* stretch);
    A_Err (*AEGP_GetLayerTransferMode)(AEGP_LayerH layer, AEGP_LayerTransferMode* mode);
    A_Err (*AEGP_SetLayerTransferMode)(AEGP_LayerH layer, const AEGP_LayerTransferMode* mode);
    A_Err (*AEGP_IsAddLayerValid)(AEGP_ItemH item, AEGP_CompH comp, A_Boolean* valid);
    A_Err (*AEGP_AddLayer)(AEGP_ItemH item, AEGP_CompH comp, AEGP_LayerH* added);
    A_Err (*AEGP_ReorderLayer)(AEGP_LayerH layer, A_long index);
    A_Err (*AEGP_GetLayerMaskedBounds)(AEGP_LayerH layer, AEGP_LTimeMode mode, const A_Time* time,
                                       A_FloatRect* bounds);
    A_Err (*AEGP_GetLayerObjectType)(AEGP_LayerH layer, AEGP_ObjectType* type);
    A_Err (*AEGP_IsLayer3D)(AEGP_LayerH layer, A_Boolean* is_3d);
    A_Err (*AEGP_IsLayer2D)(AEGP_LayerH layer, A_Boolean* is_2d);
    A_Err (*AEGP_IsVideoActive)(AEGP_LayerH layer, AEGP_LTimeMode mode, const A_Time* time,
                                A_Boolean* active);
    A_Err (*AEGP_IsLayerUsedAsTrackMatte)(AEGP_LayerH layer, A_Boolean fill_must_be_active,
                                          A_Boolean* is_matte);
    A_Err (*AEGP_DoesLayerHaveTrackMatte)(AEGP_LayerH layer, A_Boolean* has_matte);
    A_Err (*AEGP_ConvertCompToLayerTime)(AEGP_LayerH layer, const A_Time* comp_time, A_Time* layer_time);
    A_Err (*AEGP_GetLayerDancingRandValue)(AEGP_LayerH layer, const A_Time* comp_time, A_long* value);
    A_Err (*AEGP_GetLayerID)(AEGP_LayerH layer, AEGP_LayerIDVal* id);
    A_Err (*AEGP_GetLayerToWorldXform)(AEGP_LayerH layer, const A_Time* comp_time, A_Matrix4* transform);
    A_Err (*AEGP_GetLayerToWorldXformFromView)(AEGP_LayerH layer, const A_Time* view_time,
                                               const A_Time* comp_time, A_Matrix4* transform);
    A_Err (*AEGP_SetLayerName)(AEGP_LayerH layer, const A_char* name);
} AEGP_LayerSuite1;

#define QUILLO_AEGP_LAYER_MEMBERS_1_TO_6                                                                     \
    A_Err (*AEGP_GetCompNumLayers)(AEGP_CompH comp, A_long * count);                                         \
    A_Err (*AEGP_GetCompLayerByIndex)(AEGP_CompH comp, A_long index, AEGP_LayerH * layer);                   \
    A_Err (*AEGP_GetActiveLayer)(AEGP_LayerH * layer);                                                       \
    A_Err (*AEGP_GetLayerIndex)(AEGP_LayerH layer, A_long * index);                                          \
    A_Err (*AEGP_GetLayerSourceItem)(AEGP_LayerH layer, AEGP_ItemH * source_item);                           \
    A_Err (*AEGP_GetLayerSourceItemID)(AEGP_LayerH layer, A_long * source_item_id);                          \
    A_Err (*AEGP_GetLayerParentComp)(AEGP_LayerH layer, AEGP_CompH * comp);

#define QUILLO_AEGP_LAYER_MEMBERS_8_TO_40                                                                    \
    A_Err (*AEGP_GetLayerQuality)(AEGP_LayerH layer, AEGP_LayerQuality * quality);                           \
    A_Err (*AEGP_SetLayerQuality)(AEGP_LayerH layer, AEGP_LayerQuality quality);                             \
    A_Err (*AEGP_GetLayerFlags)(AEGP_LayerH layer, AEGP_LayerFlags * flags);                                 \
    A_Err (*AEGP_SetLayerFlag)(AEGP_LayerH layer, AEGP_LayerFlags flag, A_Boolean value);                    \
    A_Err (*AEGP_IsLayerVideoReallyOn)(AEGP_LayerH layer, A_Boolean * on);                                   \
    A_Err (*AEGP_IsLayerAudioReallyOn)(AEGP_LayerH layer, A_Boolean * on);                                   \
    A_Err (*AEGP_GetLayerCurrentTime)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time * time);                \
    A_Err (*AEGP_GetLayerInPoint)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time * in_point);                \
    A_Err (*AEGP_GetLayerDuration)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time * duration);               \
    A_Err (*AEGP_SetLayerInPointAndDuration)(AEGP_LayerH layer, AEGP_LTimeMode mode, const A_Time* in_point, \
                                             const A_Time* duration);                                        \
    A_Err (*AEGP_GetLayerOffset)(AEGP_LayerH layer, A_Time * offset);                                        \
    A_Err (*AEGP_SetLayerOffset)(AEGP_LayerH layer, const A_Time* offset);                                   \
    A_Err (*AEGP_GetLayerStretch)(AEGP_LayerH layer, A_Ratio * stretch);                                     \
    A_Err (*AEGP_SetLayerStretch)(AEGP_LayerH layer, const A_Ratio* stretch);                                \
    A_Err (*AEGP_GetLayerTransferMode)(AEGP_LayerH layer, AEGP_LayerTransferMode * mode);                    \
    A_Err (*AEGP_SetLayerTransferMode)(AEGP_LayerH layer, const AEGP_LayerTransferMode* mode);               \
    A_Err (*AEGP_IsAddLayerValid)(AEGP_ItemH item, AEGP_CompH comp, A_Boolean * valid);                      \
    A_Err (*AEGP_AddLayer)(AEGP_ItemH item, AEGP_CompH comp, AEGP_LayerH * added);                           \
    A_Err (*AEGP_ReorderLayer)(AEGP_LayerH layer, A_long index);                                             \
    A_Err (*AEGP_GetLayerMaskedBounds)(AEGP_LayerH layer, AEGP_LTimeMode mode, const A_Time* time,           \
                                       A_FloatRect* bounds);                                                 \
    A_Err (*AEGP_GetLayerObjectType)(AEGP_LayerH layer, AEGP_ObjectType * type);                             \
    A_Err (*AEGP_IsLayer3D)(AEGP_LayerH layer, A_Boolean * is_3d);                                           \
    A_Err (*AEGP_IsLayer2D)(AEGP_LayerH layer, A_Boolean * is_2d);                                           \
    A_Err (*AEGP_IsVideoActive)(AEGP_LayerH layer, AEGP_LTimeMode mode, const A_Time* time,                  \
                                A_Boolean* active);                                                          \
    A_Err (*AEGP_IsLayerUsedAsTrackMatte)(AEGP_LayerH layer, A_Boolean fill_must_be_active,                  \
                                          A_Boolean * is_matte);                                             \
    A_Err (*AEGP_DoesLayerHaveTrackMatte)(AEGP_LayerH layer, A_Boolean * has_matte);                         \
    A_Err (*AEGP_ConvertCompToLayerTime)(AEGP_LayerH layer, const A_Time* comp_time, A_Time* layer_time);    \
    A_Err (*AEGP_ConvertLayerToCompTime)(AEGP_LayerH layer, const A_Time* layer_time, A_Time* comp_time);    \
    A_Err (*AEGP_GetLayerDancingRandValue)(AEGP_LayerH layer, const A_Time* comp_time, A_long* value);       \
    A_Err (*AEGP_GetLayerID)(AEGP_LayerH layer, AEGP_LayerIDVal * id);                                       \
    A_Err (*AEGP_GetLayerToWorldXform)(AEGP_LayerH layer, const A_Time* comp_time, A_Matrix4* transform);    \
    A_Err (*AEGP_GetLayerToWorldXformFromView)(AEGP_LayerH layer, const A_Time* view_time,                   \
                                               const A_Time* comp_time, A_Matrix4* transform);

#define QUILLO_AEGP_LAYER_MEMBERS_42_TO_46                                                                   \
    A_Err (*AEGP_GetLayerParent)(const AEGP_LayerH layer, AEGP_LayerH* parent);                              \
    A_Err (*AEGP_SetLayerParent)(AEGP_LayerH layer, const AEGP_LayerH parent);                               \
    A_Err (*AEGP_DeleteLayer)(AEGP_LayerH layer);                                                            \
    A_Err (*AEGP_DuplicateLayer)(AEGP_LayerH original, AEGP_LayerH * duplicate);                             \
    A_Err (*AEGP_GetLayerFromLayerID)(AEGP_CompH comp, AEGP_LayerIDVal id, AEGP_LayerH * layer);

typedef struct AEGP_LayerSuite5 {
    QUILLO_AEGP_LAYER_MEMBERS_1_TO_6
    A_Err (*AEGP_GetLayerName)(AEGP_LayerH layer, A_char* layer_name, A_char* source_name);
    QUILLO_AEGP_LAYER_MEMBERS_8_TO_40
    A_Err (*AEGP_SetLayerName)(AEGP_LayerH layer, const A_char* name);
    QUILLO_AEGP_LAYER_MEMBERS_42_TO_46
} AEGP_LayerSuite5;

typedef struct AEGP_LayerSuite8 {
    QUILLO_AEGP_LAYER_MEMBERS_1_TO_6
    A_Err (*AEGP_GetLayerName)(AEGP_PluginID plugin_id, AEGP_LayerH layer, AEGP_MemHandle* layer_name,
                               AEGP_MemHandle* source_name);
    QUILLO_AEGP_LAYER_MEMBERS_8_TO_40
    A_Err (*AEGP_SetLayerName)(AEGP_LayerH layer, const A_UTF16Char* name);
    QUILLO_AEGP_LAYER_MEMBERS_42_TO_46
    A_Err (*AEGP_GetLayerLabel)(AEGP_LayerH layer, AEGP_LabelID* label);
    A_Err (*AEGP_SetLayerLabel)(AEGP_LayerH layer, AEGP_LabelID label);
    A_Err (*AEGP_GetLayerSamplingQuality)(AEGP_LayerH layer, AEGP_LayerSamplingQuality* quality);
    A_Err (*AEGP_SetLayerSamplingQuality)(AEGP_LayerH layer, AEGP_LayerSamplingQuality quality);
} AEGP_LayerSuite8;

#undef QUILLO_AEGP_LAYER_MEMBERS_1_TO_6
#undef QUILLO_AEGP_LAYER_MEMBERS_8_TO_40
#undef QUILLO_AEGP_LAYER_MEMBERS_42_TO_46

#define QUILLO_AEGP_ITEM_MEMBERS_1_TO_7                                                                      \
    A_Err (*AEGP_GetFirstProjItem)(AEGP_ProjectH project, AEGP_ItemH * item);                                \
    A_Err (*AEGP_GetNextProjItem)(AEGP_ProjectH project, AEGP_ItemH item, AEGP_ItemH * next);                \
    A_Err (*AEGP_GetActiveItem)(AEGP_ItemH * item);                                                          \
    A_Err (*AEGP_IsItemSelected)(AEGP_ItemH item, A_Boolean * selected);                                     \
    A_Err (*AEGP_SelectItem)(AEGP_ItemH item, A_Boolean select, A_Boolean deselect_others);                  \
    A_Err (*AEGP_GetItemType)(AEGP_ItemH item, AEGP_ItemType * type);                                        \
    A_Err (*AEGP_GetTypeName)(AEGP_ItemType type, A_char * name);

#define QUILLO_AEGP_ITEM_MEMBERS_10_TO_19                                                                    \
    A_Err (*AEGP_GetItemID)(AEGP_ItemH item, A_long * id);                                                   \
    A_Err (*AEGP_GetItemFlags)(AEGP_ItemH item, AEGP_ItemFlags * flags);                                     \
    A_Err (*AEGP_SetItemUseProxy)(AEGP_ItemH item, A_Boolean use_proxy);                                     \
    A_Err (*AEGP_GetItemParentFolder)(AEGP_ItemH item, AEGP_ItemH * parent_folder);                          \
    A_Err (*AEGP_SetItemParentFolder)(AEGP_ItemH item, AEGP_ItemH parent_folder);                            \
    A_Err (*AEGP_GetItemDuration)(AEGP_ItemH item, A_Time * duration);                                       \
    A_Err (*AEGP_GetItemCurrentTime)(AEGP_ItemH item, A_Time * time);                                        \
    A_Err (*AEGP_GetItemDimensions)(AEGP_ItemH item, A_long * width, A_long * height);                       \
    A_Err (*AEGP_GetItemPixelAspectRatio)(AEGP_ItemH item, A_Ratio * pixel_aspect);                          \
    A_Err (*AEGP_DeleteItem)(AEGP_ItemH item);

#define QUILLO_AEGP_ITEM_MEMBERS_21_TO_26                                                                    \
    A_Err (*AEGP_SetItemCurrentTime)(AEGP_ItemH item, const A_Time* time);                                   \
    A_Err (*AEGP_GetItemCommentLength)(AEGP_ItemH item, A_u_long * size);                                    \
    A_Err (*AEGP_GetItemComment)(AEGP_ItemH item, A_u_long size, A_char * comment);                          \
    A_Err (*AEGP_SetItemComment)(AEGP_ItemH item, const A_char* comment);                                    \
    A_Err (*AEGP_GetItemLabel)(AEGP_ItemH item, AEGP_LabelID * label);                                       \
    A_Err (*AEGP_SetItemLabel)(AEGP_ItemH item, AEGP_LabelID label);

typedef struct AEGP_ItemSuite6 {
    QUILLO_AEGP_ITEM_MEMBERS_1_TO_7
    // The buffer is AEGP_MAX_ITEM_NAME_SIZE bytes, Mac Roman.
    A_Err (*AEGP_GetItemName)(AEGP_ItemH item, A_char* name);
    A_Err (*AEGP_SetItemName)(AEGP_ItemH item, const A_char* name);
    QUILLO_AEGP_ITEM_MEMBERS_10_TO_19
    A_Err (*AEGP_CreateNewFolder)(const A_char* name, AEGP_ItemH parent_folder, AEGP_ItemH* new_folder);
    QUILLO_AEGP_ITEM_MEMBERS_21_TO_26
} AEGP_ItemSuite6;

typedef struct AEGP_ItemSuite8 {
    QUILLO_AEGP_ITEM_MEMBERS_1_TO_7
    A_Err (*AEGP_GetItemName)(AEGP_PluginID plugin_id, AEGP_ItemH item, AEGP_MemHandle* name);
    A_Err (*AEGP_SetItemName)(AEGP_ItemH item, const A_UTF16Char* name);
    QUILLO_AEGP_ITEM_MEMBERS_10_TO_19
    A_Err (*AEGP_CreateNewFolder)(const A_UTF16Char* name, AEGP_ItemH parent_folder, AEGP_ItemH* new_folder);
    QUILLO_AEGP_ITEM_MEMBERS_21_TO_26
    A_Err (*AEGP_GetItemMRUView)(AEGP_ItemH item, AEGP_ItemViewP* view);
} AEGP_ItemSuite8;

#undef QUILLO_AEGP_ITEM_MEMBERS_1_TO_7
#undef QUILLO_AEGP_ITEM_MEMBERS_10_TO_19
#undef QUILLO_AEGP_ITEM_MEMBERS_21_TO_26

typedef struct AEGP_CompSuite4 {
    A_Err (*AEGP_GetCompFromItem)(AEGP_ItemH item, AEGP_CompH* comp);
    A_Err (*AEGP_GetItemFromComp)(AEGP_CompH comp, AEGP_ItemH* item);
    A_Err (*AEGP_GetCompDownsampleFactor)(AEGP_CompH comp, AEGP_DownsampleFactor* factor);
    A_Err (*AEGP_SetCompDownsampleFactor)(AEGP_CompH comp, const AEGP_DownsampleFactor* factor);
    A_Err (*AEGP_GetCompBGColor)(AEGP_CompH comp, AEGP_ColorVal* color);
    A_Err (*AEGP_GetCompFlags)(AEGP_CompH comp, AEGP_CompFlags* flags);
    A_Err (*AEGP_GetCompFramerate)(AEGP_CompH comp, A_FpLong* fps);
    A_Err (*AEGP_SetCompFrameRate)(AEGP_CompH comp, const A_FpLong* fps);
    A_Err (*AEGP_GetCompShutterAnglePhase)(AEGP_CompH comp, A_Ratio* angle, A_Ratio* phase);
    A_Err (*AEGP_GetCompShutterFrameRange)(AEGP_CompH comp, const A_Time* comp_time, A_Time* start,
                                           A_Time* duration);
    A_Err (*AEGP_GetCompWorkAreaStart)(AEGP_CompH comp, A_Time* start);
    A_Err (*AEGP_GetCompWorkAreaDuration)(AEGP_CompH comp, A_Time* duration);
    A_Err (*AEGP_SetCompWorkAreaStartAndDuration)(AEGP_CompH comp, A_Time* start, A_Time* duration);
    A_Err (*AEGP_CreateSolidInComp)(const A_char* name, A_long width, A_long height,
                                    const AEGP_ColorVal* color, AEGP_CompH comp, const A_Time* duration,
                                    AEGP_LayerH* solid);
    A_Err (*AEGP_CreateCameraInComp)(const A_char* name, A_FloatPoint center, AEGP_CompH comp,
                                     AEGP_LayerH* camera);
    A_Err (*AEGP_CreateLightInComp)(const A_char* name, A_FloatPoint center, AEGP_CompH comp,
                                    AEGP_LayerH* light);
    A_Err (*AEGP_CreateComp)(AEGP_ItemH parent_folder, const A_char* name, A_long width, A_long height,
                             const A_Ratio* pixel_aspect, const A_Time* duration, const A_Ratio* frame_rate,
                             AEGP_CompH* comp);
    A_Err (*AEGP_GetNewCollectionFromCompSelection)(AEGP_PluginID plugin_id, AEGP_CompH comp,
                                                    AEGP_Collection2H* collection);
    A_Err (*AEGP_SetSelection)(AEGP_CompH comp, AEGP_Collection2H collection);
    A_Err (*AEGP_GetCompDisplayStartTime)(AEGP_CompH comp, A_Time* start);
    A_Err (*AEGP_SetCompDisplayStartTime)(AEGP_CompH comp, const A_Time* start);
    A_Err (*AEGP_SetCompDuration)(AEGP_CompH comp, const A_Time* duration);
    A_Err (*AEGP_CreateNullInComp)(const A_char* name, AEGP_CompH comp, const A_Time* duration,
                                   AEGP_LayerH* null_layer);
    A_Err (*AEGP_SetCompPixelAspectRatio)(AEGP_CompH comp, const A_Ratio* pixel_aspect);
    A_Err (*AEGP_CreateTextLayerInComp)(AEGP_CompH comp, AEGP_LayerH* text_layer);
    A_Err (*AEGP_SetCompDimensions)(AEGP_CompH comp, A_long width, A_long height);
    A_Err (*AEGP_DuplicateComp)(AEGP_CompH comp, AEGP_CompH* duplicate);
    A_Err (*AEGP_GetCompFrameDuration)(AEGP_CompH comp, A_Time* duration);
} AEGP_CompSuite4;

typedef struct AEGP_CompSuite7 {
    A_Err (*AEGP_GetCompFromItem)(AEGP_ItemH item, AEGP_CompH* comp);
    A_Err (*AEGP_GetItemFromComp)(AEGP_CompH comp, AEGP_ItemH* item);
    A_Err (*AEGP_GetCompDownsampleFactor)(AEGP_CompH comp, AEGP_DownsampleFactor* factor);
    A_Err (*AEGP_SetCompDownsampleFactor)(AEGP_CompH comp, const AEGP_DownsampleFactor* factor);
    A_Err (*AEGP_GetCompBGColor)(AEGP_CompH comp, AEGP_ColorVal* color);
    A_Err (*AEGP_SetCompBGColor)(AEGP_CompH comp, const AEGP_ColorVal* color);
    A_Err (*AEGP_GetCompFlags)(AEGP_CompH comp, AEGP_CompFlags* flags);
    A_Err (*AEGP_GetCompFramerate)(AEGP_CompH comp, A_FpLong* fps);
    A_Err (*AEGP_SetCompFrameRate)(AEGP_CompH comp, const A_FpLong* fps);
    A_Err (*AEGP_GetCompShutterAnglePhase)(AEGP_CompH comp, A_Ratio* angle, A_Ratio* phase);
    A_Err (*AEGP_GetCompShutterFrameRange)(AEGP_CompH comp, const A_Time* comp_time, A_Time* start,
                                           A_Time* duration);
    A_Err (*AEGP_GetCompSuggestedMotionBlurSamples)(AEGP_CompH comp, A_long* samples);
    A_Err (*AEGP_SetCompSuggestedMotionBlurSamples)(AEGP_CompH comp, A_long samples);
    A_Err (*AEGP_GetCompWorkAreaStart)(AEGP_CompH comp, A_Time* start);
    A_Err (*AEGP_GetCompWorkAreaDuration)(AEGP_CompH comp, A_Time* duration);
    A_Err (*AEGP_SetCompWorkAreaStartAndDuration)(AEGP_CompH comp, const A_Time* start,
                                                  const A_Time* duration);
    A_Err (*AEGP_CreateSolidInComp)(const A_UTF16Char* name, A_long width, A_long height,
                                    const AEGP_ColorVal* color, AEGP_CompH comp, const A_Time* duration,
                                    AEGP_LayerH* solid);
    A_Err (*AEGP_CreateCameraInComp)(const A_UTF16Char* name, A_FloatPoint center, AEGP_CompH comp,
                                     AEGP_LayerH* camera);
    A_Err (*AEGP_CreateLightInComp)(const A_UTF16Char* name, A_FloatPoint center, AEGP_CompH comp,
                                    AEGP_LayerH* light);
    A_Err (*AEGP_CreateComp)(AEGP_ItemH parent_folder, const A_UTF16Char* name, A_long width, A_long height,
                             const A_Ratio* pixel_aspect, const A_Time* duration, const A_Ratio* frame_rate,
                             AEGP_CompH* comp);
    A_Err (*AEGP_GetNewCollectionFromCompSelection)(AEGP_PluginID plugin_id, AEGP_CompH comp,
                                                    AEGP_Collection2H* collection);
    A_Err (*AEGP_SetSelection)(AEGP_CompH comp, AEGP_Collection2H collection);
    A_Err (*AEGP_GetCompDisplayStartTime)(AEGP_CompH comp, A_Time* start);
    A_Err (*AEGP_SetCompDisplayStartTime)(AEGP_CompH comp, const A_Time* start);
    A_Err (*AEGP_SetCompDuration)(AEGP_CompH comp, const A_Time* duration);
    A_Err (*AEGP_CreateNullInComp)(const A_UTF16Char* name, AEGP_CompH comp, const A_Time* duration,
                                   AEGP_LayerH* null_layer);
    A_Err (*AEGP_SetCompPixelAspectRatio)(AEGP_CompH comp, const A_Ratio* pixel_aspect);
    A_Err (*AEGP_CreateTextLayerInComp)(AEGP_CompH comp, AEGP_LayerH* text_layer);
    A_Err (*AEGP_SetCompDimensions)(AEGP_CompH comp, A_long width, A_long height);
    A_Err (*AEGP_DuplicateComp)(AEGP_CompH comp, AEGP_CompH* duplicate);
    A_Err (*AEGP_GetCompFrameDuration)(AEGP_CompH comp, A_Time* duration);
    A_Err (*AEGP_GetMostRecentlyUsedComp)(AEGP_CompH* comp);
    A_Err (*AEGP_CreateVectorLayerInComp)(AEGP_CompH comp, AEGP_LayerH* vector_layer);
    A_Err (*AEGP_GetNewCompMarkerStream)(AEGP_PluginID plugin_id, AEGP_CompH comp, AEGP_StreamRefH* stream);
} AEGP_CompSuite7;

typedef struct AEGP_ProjSuite5 {
    A_Err (*AEGP_GetNumProjects)(A_long* count);
    A_Err (*AEGP_GetProjectByIndex)(A_long index, AEGP_ProjectH* project);
    // The buffer is AEGP_MAX_PROJ_NAME_SIZE bytes, Mac Roman.
    A_Err (*AEGP_GetProjectName)(AEGP_ProjectH project, A_char* name);
    A_Err (*AEGP_GetProjectPath)(AEGP_ProjectH project, AEGP_MemHandle* utf16_path);
    A_Err (*AEGP_GetProjectRootFolder)(AEGP_ProjectH project, AEGP_ItemH* root_folder);
    A_Err (*AEGP_SaveProjectToPath)(AEGP_ProjectH project, const A_UTF16Char* path);
    A_Err (*AEGP_GetProjectTimeDisplay)(AEGP_ProjectH project, AEGP_TimeDisplay2* display);
    A_Err (*AEGP_SetProjectTimeDisplay)(AEGP_ProjectH project, const AEGP_TimeDisplay2* display);
    A_Err (*AEGP_ProjectIsDirty)(AEGP_ProjectH project, A_Boolean* dirty);
    A_Err (*AEGP_SaveProjectAs)(AEGP_ProjectH project, const A_UTF16Char* path);
    A_Err (*AEGP_NewProject)(AEGP_ProjectH* project);
    A_Err (*AEGP_OpenProjectFromPath)(const A_UTF16Char* path, AEGP_ProjectH* project);
    A_Err (*AEGP_GetProjectBitDepth)(AEGP_ProjectH project, AEGP_ProjBitDepth* depth);
    A_Err (*AEGP_SetProjectBitDepth)(AEGP_ProjectH project, AEGP_ProjBitDepth depth);
} AEGP_ProjSuite5;

typedef struct AEGP_MemorySuite1 {
    A_Err (*AEGP_NewMemHandle)(AEGP_PluginID plugin_id, const A_char* what, AEGP_MemSize size,
                               AEGP_MemFlag flags, AEGP_MemHandle* handle);
    A_Err (*AEGP_FreeMemHandle)(AEGP_MemHandle handle);
    A_Err (*AEGP_LockMemHandle)(AEGP_MemHandle handle, void** pointer);
    A_Err (*AEGP_UnlockMemHandle)(AEGP_MemHandle handle);
    A_Err (*AEGP_GetMemHandleSize)(AEGP_MemHandle handle, AEGP_MemSize* size);
    A_Err (*AEGP_ResizeMemHandle)(const A_char* what, AEGP_MemSize new_size, AEGP_MemHandle handle);
    A_Err (*AEGP_SetMemReportingOn)(A_Boolean on);
    A_Err (*AEGP_GetMemStats)(AEGP_PluginID plugin_id, A_long* count, A_long* size);
} AEGP_MemorySuite1;

typedef struct AEGP_RenderOptionsSuite3 {
    A_Err (*AEGP_NewFromItem)(AEGP_PluginID plugin_id, AEGP_ItemH item, AEGP_RenderOptionsH* options);
    A_Err (*AEGP_Duplicate)(AEGP_PluginID plugin_id, AEGP_RenderOptionsH options, AEGP_RenderOptionsH* copy);
    A_Err (*AEGP_Dispose)(AEGP_RenderOptionsH options);
    A_Err (*AEGP_SetTime)(AEGP_RenderOptionsH options, A_Time time);
    A_Err (*AEGP_GetTime)(AEGP_RenderOptionsH options, A_Time* time);
    A_Err (*AEGP_SetTimeStep)(AEGP_RenderOptionsH options, A_Time time_step);
    A_Err (*AEGP_GetTimeStep)(AEGP_RenderOptionsH options, A_Time* time_step);
    A_Err (*AEGP_SetFieldRender)(AEGP_RenderOptionsH options, PF_Field field);
    A_Err (*AEGP_GetFieldRender)(AEGP_RenderOptionsH options, PF_Field* field);
    A_Err (*AEGP_SetWorldType)(AEGP_RenderOptionsH options, AEGP_WorldType type);
    A_Err (*AEGP_GetWorldType)(AEGP_RenderOptionsH options, AEGP_WorldType* type);
    A_Err (*AEGP_SetDownsampleFactor)(AEGP_RenderOptionsH options, A_short x, A_short y);
    A_Err (*AEGP_GetDownsampleFactor)(AEGP_RenderOptionsH options, A_short* x, A_short* y);
    A_Err (*AEGP_SetRegionOfInterest)(AEGP_RenderOptionsH options, const A_LRect* region);
    A_Err (*AEGP_GetRegionOfInterest)(AEGP_RenderOptionsH options, A_LRect* region);
    A_Err (*AEGP_SetMatteMode)(AEGP_RenderOptionsH options, AEGP_MatteMode mode);
    A_Err (*AEGP_GetMatteMode)(AEGP_RenderOptionsH options, AEGP_MatteMode* mode);
    A_Err (*AEGP_SetChannelOrder)(AEGP_RenderOptionsH options, AEGP_ChannelOrder order);
    A_Err (*AEGP_GetChannelOrder)(AEGP_RenderOptionsH options, AEGP_ChannelOrder* order);
    A_Err (*AEGP_GetRenderGuideLayers)(AEGP_RenderOptionsH options, A_Boolean* will_render);
    A_Err (*AEGP_SetRenderGuideLayers)(AEGP_RenderOptionsH options, A_Boolean render);
} AEGP_RenderOptionsSuite3;

typedef struct AEGP_RenderSuite3 {
    A_Err (*AEGP_RenderAndCheckoutFrame)(AEGP_RenderOptionsH options, AEGP_RenderSuiteCheckForCancel cancel,
                                         AEGP_CancelRefcon cancel_refcon, AEGP_FrameReceiptH* receipt);
    A_Err (*AEGP_CheckinFrame)(AEGP_FrameReceiptH receipt);
    // The world stays the host's; it is valid until the frame is checked in.
    A_Err (*AEGP_GetReceiptWorld)(AEGP_FrameReceiptH receipt, AEGP_WorldH* world);
    A_Err (*AEGP_GetRenderedRegion)(AEGP_FrameReceiptH receipt, A_LRect* region);
    A_Err (*AEGP_IsRenderedFrameSufficient)(AEGP_RenderOptionsH rendered, AEGP_RenderOptionsH proposed,
                                            A_Boolean* sufficient);
    A_Err (*AEGP_RenderNewItemSoundData)(AEGP_ItemH item, const A_Time* start, const A_Time* duration,
                                         const AEGP_SoundDataFormat* format,
                                         AEGP_RenderSuiteCheckForCancel cancel,
                                         AEGP_CancelRefcon cancel_refcon, AEGP_SoundDataH* sound);
    A_Err (*AEGP_GetCurrentTimestamp)(AEGP_TimeStamp* stamp);
    A_Err (*AEGP_HasItemChangedSinceTimestamp)(AEGP_ItemH item, const A_Time* start, const A_Time* duration,
                                               const AEGP_TimeStamp* stamp, A_Boolean* changed);
    A_Err (*AEGP_IsItemWorthwhileToRender)(AEGP_RenderOptionsH options, const AEGP_TimeStamp* stamp,
                                           A_Boolean* worthwhile);
    A_Err (*AEGP_CheckinRenderedFrame)(AEGP_RenderOptionsH options, const AEGP_TimeStamp* stamp,
                                       A_u_long ticks, AEGP_PlatformWorldH image);
    A_Err (*AEGP_GetReceiptGuid)(AEGP_FrameReceiptH receipt, AEGP_MemHandle* guid);
} AEGP_RenderSuite3;

typedef struct AEGP_WorldSuite3 {
    A_Err (*AEGP_New)(AEGP_PluginID plugin_id, AEGP_WorldType type, A_long width, A_long height,
                      AEGP_WorldH* world);
    A_Err (*AEGP_Dispose)(AEGP_WorldH world);
    A_Err (*AEGP_GetType)(AEGP_WorldH world, AEGP_WorldType* type);
    A_Err (*AEGP_GetSize)(AEGP_WorldH world, A_long* width, A_long* height);
    A_Err (*AEGP_GetRowBytes)(AEGP_WorldH world, A_u_long* row_bytes);
    A_Err (*AEGP_GetBaseAddr8)(AEGP_WorldH world, PF_Pixel8** base);
    A_Err (*AEGP_GetBaseAddr16)(AEGP_WorldH world, PF_Pixel16** base);
    A_Err (*AEGP_GetBaseAddr32)(AEGP_WorldH world, PF_PixelFloat** base);
    A_Err (*AEGP_FillOutPFEffectWorld)(AEGP_WorldH world, PF_EffectWorld* effect_world);
    A_Err (*AEGP_FastBlur)(A_FpLong radius, PF_ModeFlags mode, PF_Quality quality, AEGP_WorldH world);
    A_Err (*AEGP_NewPlatformWorld)(AEGP_PluginID plugin_id, AEGP_WorldType type, A_long width, A_long height,
                                   AEGP_PlatformWorldH* world);
    A_Err (*AEGP_DisposePlatformWorld)(AEGP_PlatformWorldH world);
    A_Err (*AEGP_NewReferenceFromPlatformWorld)(AEGP_PluginID plugin_id, AEGP_PlatformWorldH platform_world,
                                                AEGP_WorldH* world);
} AEGP_WorldSuite3;

typedef struct AEGP_ColorSettingsSuite2 {
    A_Err (*AEGP_GetBlendingTables)(PR_RenderContextH render_context, PF_EffectBlendingTables* tables);
    A_Err (*AEGP_DoesViewHaveColorSpaceXform)(AEGP_ItemViewP view, A_Boolean* has_transform);
    // Source and destination have the same size; they may be the same world.
    A_Err (*AEGP_XformWorkingToViewColorSpace)(AEGP_ItemViewP view, AEGP_WorldH source,
                                               AEGP_WorldH destination);
    A_Err (*AEGP_GetNewWorkingSpaceColorProfile)(AEGP_PluginID plugin_id, AEGP_CompH comp,
                                                 AEGP_ColorProfileP* profile);
    A_Err (*AEGP_GetNewColorProfileFromICCProfile)(AEGP_PluginID plugin_id, A_long icc_size,
                                                   const void* icc_data, AEGP_ColorProfileP* profile);
    A_Err (*AEGP_GetNewICCProfileFromColorProfile)(AEGP_PluginID plugin_id, AEGP_ConstColorProfileP profile,
                                                   AEGP_MemHandle* icc_profile);
    // A zero-terminated UTF-16 string in a handle the caller frees.
    A_Err (*AEGP_GetNewColorProfileDescription)(AEGP_PluginID plugin_id, AEGP_ConstColorProfileP profile,
                                                AEGP_MemHandle* utf16_description);
    A_Err (*AEGP_DisposeColorProfile)(AEGP_ColorProfileP profile);
    A_Err (*AEGP_GetColorProfileApproximateGamma)(AEGP_ConstColorProfileP profile, A_FpShort* gamma);
    A_Err (*AEGP_IsRGBColorProfile)(AEGP_ConstColorProfileP profile, A_Boolean* is_rgb);
} AEGP_ColorSettingsSuite2;

} // extern "C"

#pragma pack(pop)
