// The plug-in's only exported symbols: the host's entry point and the script engine's external-object
// functions. Everything else in the library is hidden.

#include "host/effects_popup.h"
#include "host/script_bridge.h"

#include <cstdlib>

#define QUILLO_EXPORT extern "C" __attribute__((visibility("default")))

QUILLO_EXPORT A_Err PluginMain(SPBasicSuite* basic, A_long majorVersion, A_long minorVersion,
                               AEGP_PluginID pluginId, AEGP_GlobalRefcon* /*globalRefcon*/) {
    return StartPlugin(basic, majorVersion, minorVersion, pluginId);
}

// The functions this object offers to scripts, without type signatures.
QUILLO_EXPORT char* ESInitialize() {
    static char functions[] = "execute";
    return functions;
}

QUILLO_EXPORT long ESGetVersion() {
    return 1;
}

QUILLO_EXPORT void ESTerminate() {}

QUILLO_EXPORT void ESFreeMem(void* memory) {
    std::free(memory);
}

QUILLO_EXPORT long execute(TaggedData* argv, long argc, TaggedData* result) {
    try {
        return RunScriptCommand(effectsPopup, argv, argc, result);
    } catch (...) {
        // Out of memory while building an answer: report the call as failed rather than unwinding
        // into the script engine.
        return ScriptBadArguments;
    }
}
