// The suites the simulated host hands out, by name and version, and the basic suite through which
// the plug-in acquires and releases them (each counted on the current host).

#include "hostsim/sim_host.h"
#include "hostsim/sim_render.h"
#include "hostsim/sim_suites.h"
#include "hostsim/suite_calls.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace hostsim {

namespace {

std::string SuiteKey(const char* name, int version) {
    return std::string(name) + "/" + std::to_string(version);
}

// ---- The suite tables. Members the plug-in never calls stay null, so an unexpected call fails
// loudly in a test instead of answering something invented.

template <typename Suite> Suite UtilitySuite() {
    Suite s{};
    s.AEGP_GetSuppressInteractiveUI = GetSuppressInteractiveUI;
    s.AEGP_ExecuteScript = ExecuteScript;
    s.AEGP_GetMainHWND = GetMainHWND;
    return s;
}
AEGP_UtilitySuite5 utility11 = UtilitySuite<AEGP_UtilitySuite5>();
AEGP_UtilitySuite4 utility10 = UtilitySuite<AEGP_UtilitySuite4>();
AEGP_RegisterSuite5 register6 = [] {
    AEGP_RegisterSuite5 s{};
    s.AEGP_RegisterCommandHook = RegisterCommandHook;
    s.AEGP_RegisterIdleHook = RegisterIdleHook;
    s.AEGP_RegisterDeathHook = RegisterDeathHook;
    return s;
}();
template <typename Suite> Suite EffectSuite() {
    Suite s{};
    s.AEGP_GetLayerNumEffects = GetLayerNumEffects;
    s.AEGP_DisposeEffect = DisposeEffect;
    s.AEGP_ApplyEffect = ApplyEffect;
    s.AEGP_GetNumInstalledEffects = GetNumInstalledEffects;
    s.AEGP_GetNextInstalledEffect = GetNextInstalledEffect;
    s.AEGP_GetEffectName = GetEffectName;
    s.AEGP_GetEffectMatchName = GetEffectMatchName;
    s.AEGP_GetEffectCategory = GetEffectCategory;
    return s;
}
AEGP_EffectSuite3 effect3 = EffectSuite<AEGP_EffectSuite3>();
AEGP_EffectSuite2 effect2 = EffectSuite<AEGP_EffectSuite2>();
template <typename Suite> Suite LayerSuite() {
    Suite s{};
    s.AEGP_GetActiveLayer = GetActiveLayer;
    s.AEGP_GetLayerSourceItem = GetLayerSourceItem;
    s.AEGP_GetLayerParentComp = GetLayerParentComp;
    s.AEGP_GetLayerCurrentTime = GetLayerCurrentTime;
    s.AEGP_GetLayerObjectType = GetLayerObjectType;
    return s;
}
// The older layer suites also answer a layer's name, into fixed buffers.
template <typename Suite> Suite OldLayerSuite() {
    Suite s = LayerSuite<Suite>();
    s.AEGP_GetLayerName = GetLayerNameOld;
    return s;
}
AEGP_LayerSuite8 layer14 = LayerSuite<AEGP_LayerSuite8>();
AEGP_LayerSuite5 layer11 = OldLayerSuite<AEGP_LayerSuite5>();
AEGP_LayerSuite1 layer5 = OldLayerSuite<AEGP_LayerSuite1>();
template <typename Suite> Suite ItemSuite() {
    Suite s{};
    s.AEGP_GetActiveItem = GetActiveItem;
    s.AEGP_GetItemType = GetItemType;
    s.AEGP_GetItemCurrentTime = GetItemCurrentTime;
    s.AEGP_GetItemDimensions = GetItemDimensions;
    s.AEGP_GetItemPixelAspectRatio = GetItemPixelAspectRatio;
    return s;
}
AEGP_ItemSuite6 item10 = [] {
    AEGP_ItemSuite6 s = ItemSuite<AEGP_ItemSuite6>();
    s.AEGP_GetItemName = GetItemNameOld;
    return s;
}();
AEGP_ItemSuite8 item13 = [] {
    AEGP_ItemSuite8 s = ItemSuite<AEGP_ItemSuite8>();
    s.AEGP_GetItemMRUView = GetItemMRUView;
    return s;
}();
template <typename Suite> Suite CompSuite() {
    Suite s{};
    s.AEGP_GetCompFromItem = GetCompFromItem;
    s.AEGP_GetItemFromComp = GetItemFromComp;
    return s;
}
AEGP_CompSuite7 comp15 = CompSuite<AEGP_CompSuite7>();
AEGP_CompSuite4 comp9 = CompSuite<AEGP_CompSuite4>();
AEGP_ProjSuite5 proj8 = [] {
    AEGP_ProjSuite5 s{};
    s.AEGP_GetNumProjects = GetNumProjects;
    s.AEGP_GetProjectByIndex = GetProjectByIndex;
    s.AEGP_GetProjectName = GetProjectName;
    s.AEGP_GetProjectBitDepth = GetProjectBitDepth;
    return s;
}();
AEGP_MemorySuite1 memory1 = [] {
    AEGP_MemorySuite1 s{};
    s.AEGP_NewMemHandle = NewMemHandle;
    s.AEGP_FreeMemHandle = FreeMemHandle;
    s.AEGP_LockMemHandle = LockMemHandle;
    s.AEGP_UnlockMemHandle = UnlockMemHandle;
    s.AEGP_GetMemHandleSize = GetMemHandleSize;
    return s;
}();

struct SuiteEntry {
    const char* name;
    int version;
    const void* table;
};

const SuiteEntry suiteTable[] = {
    {"AEGP Utility Suite", 11, &utility11},
    {"AEGP Utility Suite", 10, &utility10},
    {"AEGP Register Suite", 6, &register6},
    {"AEGP Effect Suite", 3, &effect3},
    {"AEGP Effect Suite", 2, &effect2},
    {"AEGP Layer Suite", 14, &layer14},
    {"AEGP Layer Suite", 11, &layer11},
    {"AEGP Layer Suite", 5, &layer5},
    {"AEGP Item Suite", 10, &item10},
    {"AEGP Item Suite", 13, &item13},
    {"AEGP Comp Suite", 15, &comp15},
    {"AEGP Comp Suite", 9, &comp9},
    {"AEGP Proj Suite", 8, &proj8},
    {"AEGP Memory Suite", 1, &memory1},
    {"AEGP Render Options Suite", 3, &renderOptionsSuite3},
    {"AEGP Render Suite", 3, &renderSuite3},
    {"AEGP World Suite", 3, &worldSuite3},
    {"PF Color Settings Suite", 3, &colorSettingsSuite3},
};

constexpr SPErr SuiteNotFound = 0x21734E66; // any non-zero code is a refusal

SPErr AcquireSuite(const char* name, int version, const void** suite) {
    SimHost& host = Host();
    for (const SuiteEntry& entry : suiteTable) {
        if (name != nullptr && entry.version == version && std::strcmp(entry.name, name) == 0) {
            ++host.acquired[SuiteKey(name, version)];
            *suite = entry.table;
            return 0;
        }
    }
    ++host.refusedAcquires;
    return SuiteNotFound;
}

SPErr ReleaseSuite(const char* name, int version) {
    ++Host().released[SuiteKey(name != nullptr ? name : "", version)];
    return 0;
}

SPBoolean IsEqual(const char* a, const char* b) {
    return a != nullptr && b != nullptr && std::strcmp(a, b) == 0;
}

SPErr AllocateBlock(size_t size, void** block) {
    *block = std::malloc(size);
    return *block != nullptr ? 0 : SuiteNotFound;
}

SPErr FreeBlock(void* block) {
    std::free(block);
    return 0;
}

SPErr ReallocateBlock(void* block, size_t size, void** newBlock) {
    *newBlock = std::realloc(block, size);
    return *newBlock != nullptr ? 0 : SuiteNotFound;
}

SPErr Undefined() {
    return SuiteNotFound;
}

} // namespace

SPBasicSuite BasicSuite() {
    return SPBasicSuite{AcquireSuite, ReleaseSuite,    IsEqual,  AllocateBlock,
                        FreeBlock,    ReallocateBlock, Undefined};
}

} // namespace hostsim
