// A plug-in for the Windows host tests: its entry point (named by its PiPL, not PluginMain)
// registers an idle and a death hook, each of which leaves a script in the host's record, and asks
// for the main window; its script function answers which main window it was handed.

#include "host/sdk/ae_suites.h"
#include "host/sdk/script_object.h"

#include <windows.h>

#define TEST_EXPORT extern "C" __declspec(dllexport)

namespace {

SPBasicSuite* basic = nullptr;
HWND mainWindow = nullptr;
AEGP_PluginID plugin = 0;

void Record(const char* script) {
    const void* suite = nullptr;
    if (basic->AcquireSuite("AEGP Utility Suite", 11, &suite) != 0)
        return;
    // Neither the answer nor an error is wanted: no handles to free.
    static_cast<const AEGP_UtilitySuite5*>(suite)->AEGP_ExecuteScript(plugin, script, 1, nullptr, nullptr);
    basic->ReleaseSuite("AEGP Utility Suite", 11);
}

A_Err Idle(AEGP_GlobalRefcon, AEGP_IdleRefcon, A_long*) {
    Record("idle");
    return A_Err_NONE;
}

A_Err Death(AEGP_GlobalRefcon, AEGP_DeathRefcon) {
    Record("death");
    return A_Err_NONE;
}

} // namespace

TEST_EXPORT A_Err TestMain(SPBasicSuite* host, A_long, A_long, AEGP_PluginID id, AEGP_GlobalRefcon*) {
    basic = host;
    plugin = id;
    const void* suite = nullptr;
    if (basic->AcquireSuite("AEGP Register Suite", 6, &suite) != 0)
        return A_Err_GENERIC;
    const auto* registration = static_cast<const AEGP_RegisterSuite5*>(suite);
    registration->AEGP_RegisterIdleHook(id, Idle, nullptr);
    registration->AEGP_RegisterDeathHook(id, Death, nullptr);
    basic->ReleaseSuite("AEGP Register Suite", 6);
    if (basic->AcquireSuite("AEGP Utility Suite", 11, &suite) == 0) {
        static_cast<const AEGP_UtilitySuite5*>(suite)->AEGP_GetMainHWND(&mainWindow);
        basic->ReleaseSuite("AEGP Utility Suite", 11);
    }
    return A_Err_NONE;
}

TEST_EXPORT char* ESInitialize() {
    return const_cast<char*>("execute");
}

TEST_EXPORT long ESGetVersion() {
    return 1;
}

TEST_EXPORT void ESFreeMem(void*) {}

TEST_EXPORT void ESTerminate() {}

// execute("window"): the main window the host handed out (window handles carry 32 bits).
TEST_EXPORT long execute(TaggedData* args, long count, TaggedData* result) {
    result->type = kTypeInteger;
    if (count < 1 || args[0].type != kTypeString || lstrcmpA(args[0].data.string, "window") != 0)
        return 1;
    result->data.intval = static_cast<int32_t>(reinterpret_cast<intptr_t>(mainWindow));
    return 0;
}
