#include "host/aegp_suite_handler.h"

#include <cstring>

const AEGP_SuiteHandler::SuiteName AEGP_SuiteHandler::names[SuiteCount] = {
    {"AEGP Utility Suite", 11}, {"AEGP Utility Suite", 10}, {"AEGP Register Suite", 6},
    {"AEGP Effect Suite", 3},   {"AEGP Effect Suite", 2},   {"AEGP Layer Suite", 14},
    {"AEGP Layer Suite", 11},   {"AEGP Layer Suite", 5},    {"AEGP Item Suite", 10},
    {"AEGP Item Suite", 13},    {"AEGP Comp Suite", 15},    {"AEGP Comp Suite", 9},
    {"AEGP Proj Suite", 8},     {"AEGP Memory Suite", 1},   {"AEGP Render Options Suite", 3},
    {"AEGP Render Suite", 3},   {"AEGP World Suite", 3},    {"PF Color Settings Suite", 3},
};

AEGP_SuiteHandler::AEGP_SuiteHandler(SPBasicSuite* basic) : basic(basic) {}

AEGP_SuiteHandler::~AEGP_SuiteHandler() {
    ReleaseAllSuites();
}

const void* AEGP_SuiteHandler::Acquire(Suite suite) {
    if (suites[suite] == nullptr && basic != nullptr) {
        const void* pointer = nullptr;
        if (basic->AcquireSuite(names[suite].name, names[suite].version, &pointer) != 0 ||
            pointer == nullptr) {
            MissingSuiteError();
            return nullptr;
        }
        suites[suite] = pointer;
    }
    return suites[suite];
}

void AEGP_SuiteHandler::ReleaseAllSuites() {
    for (int i = 0; i < SuiteCount; ++i) {
        if (suites[i] != nullptr)
            ReleaseSuite(names[i].name, names[i].version);
    }
}

void AEGP_SuiteHandler::ReleaseSuite(const char* name, int version) {
    for (int i = 0; i < SuiteCount; ++i) {
        if (suites[i] != nullptr && names[i].version == version && std::strcmp(names[i].name, name) == 0) {
            basic->ReleaseSuite(name, version);
            suites[i] = nullptr;
        }
    }
}

#define QUILLO_SUITE_ACCESSOR(Type, Accessor, Index)                                                         \
    Type* AEGP_SuiteHandler::Accessor() {                                                                    \
        return static_cast<Type*>(const_cast<void*>(Acquire(Index)));                                        \
    }

QUILLO_SUITE_ACCESSOR(AEGP_UtilitySuite5, UtilitySuite11, Utility11)
QUILLO_SUITE_ACCESSOR(AEGP_UtilitySuite4, UtilitySuite10, Utility10)
QUILLO_SUITE_ACCESSOR(AEGP_RegisterSuite5, RegisterSuite6, Register6)
QUILLO_SUITE_ACCESSOR(AEGP_EffectSuite3, EffectSuite3, Effect3)
QUILLO_SUITE_ACCESSOR(AEGP_EffectSuite2, EffectSuite2, Effect2)
QUILLO_SUITE_ACCESSOR(AEGP_LayerSuite8, LayerSuite14, Layer14)
QUILLO_SUITE_ACCESSOR(AEGP_LayerSuite5, LayerSuite11, Layer11)
QUILLO_SUITE_ACCESSOR(AEGP_LayerSuite1, LayerSuite5, Layer5)
QUILLO_SUITE_ACCESSOR(AEGP_ItemSuite6, ItemSuite10, Item10)
QUILLO_SUITE_ACCESSOR(AEGP_ItemSuite8, ItemSuite13, Item13)
QUILLO_SUITE_ACCESSOR(AEGP_CompSuite7, CompSuite15, Comp15)
QUILLO_SUITE_ACCESSOR(AEGP_CompSuite4, CompSuite9, Comp9)
QUILLO_SUITE_ACCESSOR(AEGP_ProjSuite5, ProjSuite8, Proj8)
QUILLO_SUITE_ACCESSOR(AEGP_MemorySuite1, MemorySuite1, Memory1)
QUILLO_SUITE_ACCESSOR(AEGP_RenderOptionsSuite3, RenderOptionsSuite3, RenderOptions3)
QUILLO_SUITE_ACCESSOR(AEGP_RenderSuite3, RenderSuite3, Render3)
QUILLO_SUITE_ACCESSOR(AEGP_WorldSuite3, WorldSuite3, World3)
QUILLO_SUITE_ACCESSOR(AEGP_ColorSettingsSuite2, ColorSettingsSuite3, ColorSettings3)

#undef QUILLO_SUITE_ACCESSOR
