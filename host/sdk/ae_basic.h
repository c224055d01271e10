#pragma once

// The host's basic plug-in types: scalars, time and ratio records, opaque handles, the basic suite
// through which every other suite is acquired, the hook signatures and the effect world.
// Layouts follow the host's headers: 8-byte packing, the platform's C calling convention.

#include <cstddef>
#include <cstdint>

#pragma pack(push, 8)

extern "C" {

typedef int32_t A_long;
typedef uint32_t A_u_long;
typedef int16_t A_short;
typedef uint16_t A_u_short;
typedef uint8_t A_u_char;
typedef uint8_t A_Boolean;
typedef char A_char;
typedef double A_FpLong;
typedef float A_FpShort;
typedef A_long A_Err;
typedef uint64_t A_u_longlong;
typedef A_u_short A_UTF16Char;

enum {
    A_Err_NONE = 0,
    A_Err_GENERIC = 1,
    A_Err_STRUCT = 2,
    A_Err_PARAMETER = 3,
    A_Err_ALLOC = 4,
    A_Err_MISSING_SUITE = 13
};

typedef struct {
    A_long value;
    A_u_long scale;
} A_Time;

typedef struct {
    A_long num;
    A_u_long den;
} A_Ratio;

typedef struct {
    A_FpLong x, y;
} A_FloatPoint;

typedef struct {
    A_FpLong left, top, right, bottom;
} A_FloatRect;

typedef struct {
    A_FpLong mat[4][4];
} A_Matrix4;

typedef struct {
    A_long left, top, right, bottom;
} A_LRect;

typedef struct {
    A_short majorS;
    A_short minorS;
} A_Version;

// The basic suite: the one table the host hands to the entry point.
typedef int SPErr;
typedef unsigned char SPBoolean;

typedef struct SPBasicSuite {
    SPErr (*AcquireSuite)(const char* name, int version, const void** suite);
    SPErr (*ReleaseSuite)(const char* name, int version);
    SPBoolean (*IsEqual)(const char* a, const char* b);
    SPErr (*AllocateBlock)(size_t size, void** block);
    SPErr (*FreeBlock)(void* block);
    SPErr (*ReallocateBlock)(void* block, size_t new_size, void** new_block);
    SPErr (*Undefined)(void);
} SPBasicSuite;

// Plug-in identity and opaque handles. Handles are pointers to host-owned records.
typedef A_long AEGP_PluginID;
typedef struct _AEGP_Project** AEGP_ProjectH;
typedef struct _AEGP_Item** AEGP_ItemH;
typedef struct _AEGP_Comp** AEGP_CompH;
typedef struct _AEGP_Layer** AEGP_LayerH;
typedef struct _AEGP_Effect** AEGP_EffectRefH;
typedef struct _AEGPp_Stream** AEGP_StreamRefH;
typedef struct _AEGP_Collection2** AEGP_Collection2H;
typedef struct _AEGP_SoundData** AEGP_SoundDataH;
typedef struct _AEGP_World** AEGP_WorldH;
typedef struct _AEGP_RenderOptions** AEGP_RenderOptionsH;
typedef struct _AEGP_FrameReceipt** AEGP_FrameReceiptH;
typedef struct _AEGP_PlatformWorld** AEGP_PlatformWorldH;
typedef struct _AEGP_ItemView* AEGP_ItemViewP;
typedef struct _AEGP_ColorProfile* AEGP_ColorProfileP;
typedef const struct _AEGP_ColorProfile* AEGP_ConstColorProfileP;
typedef struct _Up_OpaqueMem** AEGP_MemHandle;
typedef struct _PF_OpaqueBlendingTables* PF_EffectBlendingTables;
typedef struct _PR_RenderContext** PR_RenderContextH;

typedef struct _AEGP_TimeStamp {
    A_char a[4];
} AEGP_TimeStamp;

// Records that only appear behind pointers in the suites that this program declares.
struct PR_ArtisanEntryPoints;
struct AEIO_ModuleInfo;
struct AEIO_FunctionBlock4;
struct PT_TrackerEntryPoints;
union PF_ParamDefUnion;
struct AEGP_SoundDataFormat;
struct AEGP_TimeDisplay2;
struct AEGP_LayerTransferMode;

// Refcons: opaque per-hook pointers the host passes back unchanged.
typedef struct _AEGP_GlobalRefcon* AEGP_GlobalRefcon;
typedef struct _AEGP_CommandRefcon* AEGP_CommandRefcon;
typedef struct _AEGP_UpdateMenuRefcon* AEGP_UpdateMenuRefcon;
typedef struct _AEGP_DeathRefcon* AEGP_DeathRefcon;
typedef struct _AEGP_VersionRefcon* AEGP_VersionRefcon;
typedef struct _AEGP_AboutStringRefcon* AEGP_AboutStringRefcon;
typedef struct _AEGP_AboutRefcon* AEGP_AboutRefcon;
typedef struct _AEGP_IdleRefcon* AEGP_IdleRefcon;
typedef struct _AEGP_IORefcon* AEGP_IORefcon;
typedef struct _AEGP_CancelRefcon* AEGP_CancelRefcon;

// Scalar codes.
typedef A_char AEGP_ProjBitDepth;
typedef A_short AEGP_ItemType;
typedef A_long AEGP_ItemFlags;
typedef A_char AEGP_LabelID;
typedef A_long AEGP_CompFlags;
typedef A_long AEGP_MemFlag;
typedef A_u_long AEGP_MemSize;
typedef A_short AEGP_LayerQuality;
typedef A_short AEGP_LayerSamplingQuality;
typedef A_long AEGP_LayerFlags;
typedef A_long AEGP_ObjectType;
typedef A_short AEGP_LTimeMode;
typedef A_long AEGP_LayerIDVal;
typedef A_long AEGP_InstalledEffectKey;
typedef A_long AEGP_EffectFlags;
typedef A_long AEGP_EffectIndex;
typedef A_long AEGP_Command;
typedef A_u_long AEGP_HookPriority;
typedef A_long AEGP_WorldType;
typedef A_long AEGP_MatteMode;
typedef A_char AEGP_ChannelOrder;
typedef A_long PF_Quality;
typedef A_long PF_ModeFlags;
typedef A_long PF_Field;
typedef A_long PF_ParamType;
typedef A_long PF_Cmd;
typedef A_long PF_ParamIndex;
typedef A_long PF_WorldFlags;
#if defined(__GNUC__)
typedef A_char AEGP_WindowType; // the host's legacy enumerations are one byte with gcc-style compilers
#else
typedef A_long AEGP_WindowType;
#endif

enum {
    AEGP_ObjectType_NONE = -1,
    AEGP_ObjectType_AV,
    AEGP_ObjectType_LIGHT,
    AEGP_ObjectType_CAMERA,
    AEGP_ObjectType_TEXT,
    AEGP_ObjectType_VECTOR
};
enum {
    AEGP_ItemType_NONE,
    AEGP_ItemType_FOLDER,
    AEGP_ItemType_COMP,
    AEGP_ItemType_SOLID_defunct,
    AEGP_ItemType_FOOTAGE
};
enum { AEGP_ProjBitDepth_8 = 0, AEGP_ProjBitDepth_16, AEGP_ProjBitDepth_32 };
enum { AEGP_MemFlag_NONE = 0, AEGP_MemFlag_CLEAR = 1, AEGP_MemFlag_QUIET = 2 };
enum { AEGP_LTimeMode_LayerTime, AEGP_LTimeMode_CompTime };
enum { AEGP_WorldType_NONE, AEGP_WorldType_8, AEGP_WorldType_16, AEGP_WorldType_32 };

// Fixed name buffers: the host writes at most this many bytes, terminator included. Macros, as
// the host's headers have them, so that both sets of declarations can meet in one translation unit.
#ifndef AEGP_MAX_ITEM_NAME_SIZE
#define AEGP_MAX_ITEM_NAME_SIZE 32
#define AEGP_MAX_LAYER_NAME_SIZE 32
#define AEGP_MAX_PROJ_NAME_SIZE 48
#define AEGP_MAX_EFFECT_NAME_SIZE (31 + 17)
#define AEGP_MAX_EFFECT_MATCH_NAME_SIZE (31 + 17)
#define AEGP_MAX_EFFECT_CATEGORY_NAME_SIZE (31 + 1)
#endif

typedef struct {
    A_FpLong alphaF, redF, greenF, blueF;
} AEGP_ColorVal;

typedef struct {
    A_short xS, yS;
} AEGP_DownsampleFactor;

typedef struct {
    A_long reservedAL[12];
} AEGP_ErrReportState;

// Hooks.
typedef A_Err (*AEGP_CommandHook)(AEGP_GlobalRefcon plugin_refcon, AEGP_CommandRefcon refcon,
                                  AEGP_Command command, AEGP_HookPriority priority, A_Boolean already_handled,
                                  A_Boolean* handled);
typedef A_Err (*AEGP_UpdateMenuHook)(AEGP_GlobalRefcon plugin_refcon, AEGP_UpdateMenuRefcon refcon,
                                     AEGP_WindowType active_window);
typedef A_Err (*AEGP_DeathHook)(AEGP_GlobalRefcon plugin_refcon, AEGP_DeathRefcon refcon);
typedef A_Err (*AEGP_VersionHook)(AEGP_GlobalRefcon plugin_refcon, AEGP_VersionRefcon refcon,
                                  A_u_long* version);
typedef A_Err (*AEGP_AboutStringHook)(AEGP_GlobalRefcon plugin_refcon, AEGP_AboutStringRefcon refcon,
                                      A_char* about);
typedef A_Err (*AEGP_AboutHook)(AEGP_GlobalRefcon plugin_refcon, AEGP_AboutRefcon refcon);
// max_sleep is in 1/60 s; the host reads it back after the call.
typedef A_Err (*AEGP_IdleHook)(AEGP_GlobalRefcon plugin_refcon, AEGP_IdleRefcon refcon, A_long* max_sleep);
typedef A_Err (*AEGP_RenderSuiteCheckForCancel)(void* refcon, A_Boolean* cancel);

// The entry point's signature.
typedef A_Err(AEGP_PluginInitFuncPrototype)(struct SPBasicSuite* basic, A_long major_version,
                                            A_long minor_version, AEGP_PluginID plugin_id,
                                            AEGP_GlobalRefcon* global_refcon);
typedef AEGP_PluginInitFuncPrototype* AEGP_PluginInitFunc;

// Pixels and the effect world (an image the host owns), channels in the order alpha, red, green, blue.
typedef struct {
    A_u_char alpha, red, green, blue;
} PF_Pixel;
typedef PF_Pixel PF_Pixel8;
typedef struct {
    A_u_short alpha, red, green, blue;
} PF_Pixel16;
typedef struct {
    A_FpShort alpha, red, green, blue;
} PF_PixelFloat;
typedef PF_Pixel* PF_PixelPtr;

typedef struct {
    A_long left, top, right, bottom;
} PF_LRect;
typedef PF_LRect PF_UnionableRect;

typedef struct {
    A_long num;
    A_u_long den;
} PF_RationalScale;

typedef struct PF_LayerDef {
    void* reserved0;
    void* reserved1;
    PF_WorldFlags world_flags;
    PF_PixelPtr data;
    A_long rowbytes;
    A_long width;
    A_long height;
    PF_UnionableRect extent_hint;
    void* platform_ref;
    A_long reserved_long1;
    void* reserved_long4;
    PF_RationalScale pix_aspect_ratio;
    void* reserved_long2;
    A_long origin_x;
    A_long origin_y;
    A_long reserved_long3;
    A_long dephault;
} PF_LayerDef;
typedef PF_LayerDef PF_EffectWorld;

} // extern "C"

#pragma pack(pop)
