#pragma once

#include "host/sdk/host_sdk.h"

// Acquires host suites on first use and releases every one it acquired when it goes out of scope.
// Handlers are short-lived: each host call site builds one on the stack.
//
// Accessors are named by the version passed to AcquireSuite, which is not the number in the name
// of the table type (see host/sdk/ae_suites.h). A suite the host cannot supply yields null.
class AEGP_SuiteHandler {
public:
    explicit AEGP_SuiteHandler(SPBasicSuite* basic);
    ~AEGP_SuiteHandler();
    AEGP_SuiteHandler(const AEGP_SuiteHandler&) = delete;
    AEGP_SuiteHandler& operator=(const AEGP_SuiteHandler&) = delete;

    AEGP_UtilitySuite5* UtilitySuite11();
    AEGP_UtilitySuite4* UtilitySuite10();
    AEGP_RegisterSuite5* RegisterSuite6();
    AEGP_EffectSuite3* EffectSuite3();
    AEGP_EffectSuite2* EffectSuite2();
    AEGP_LayerSuite8* LayerSuite14();
    AEGP_LayerSuite5* LayerSuite11();
    AEGP_LayerSuite1* LayerSuite5();
    AEGP_ItemSuite6* ItemSuite10();
    AEGP_ItemSuite8* ItemSuite13();
    AEGP_CompSuite7* CompSuite15();
    AEGP_CompSuite4* CompSuite9();
    AEGP_ProjSuite5* ProjSuite8();
    AEGP_MemorySuite1* MemorySuite1();
    AEGP_RenderOptionsSuite3* RenderOptionsSuite3();
    AEGP_RenderSuite3* RenderSuite3();
    AEGP_WorldSuite3* WorldSuite3();
    AEGP_ColorSettingsSuite2* ColorSettingsSuite3();

    void ReleaseAllSuites();
    void ReleaseSuite(const char* name, int version);
    // Called when the host refuses a suite. Deliberately silent: every suite used here exists in
    // every supported host, and an error dialog from inside the artist's session helps no one.
    void MissingSuiteError() const {}

    enum Suite : int {
        Utility11,
        Utility10,
        Register6,
        Effect3,
        Effect2,
        Layer14,
        Layer11,
        Layer5,
        Item10,
        Item13,
        Comp15,
        Comp9,
        Proj8,
        Memory1,
        RenderOptions3,
        Render3,
        World3,
        ColorSettings3,
        SuiteCount
    };
    struct SuiteName {
        const char* name;
        int version;
    };
    // The name and version of every suite this handler can acquire.
    static const SuiteName names[SuiteCount];

private:
    const void* Acquire(Suite suite);

    SPBasicSuite* basic;
    const void* suites[SuiteCount] = {};
};
