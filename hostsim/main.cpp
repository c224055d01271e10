// The simulated host's command-line driver: loads the plug-in into a simulated session and shows
// what it does.
//
//   hostsim [--project file.json] [--root folder] [--plugins folder] [--idle ticks]
//           [--execute word [number]]...
//
// The session starts the plug-in with the project's API version, runs the idle ticks, runs each
// script command in order, then shuts the plug-in down and reports whether every suite it
// acquired was released.

#include "hostsim/sim_host.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

namespace {

struct ScriptCall {
    std::string word;
    bool hasNumber = false;
    int number = 0;
};

int Usage() {
    std::fprintf(stderr, "usage: hostsim [--project file.json] [--root folder] [--plugins folder] "
                         "[--idle ticks] [--execute word [number]]...\n");
    return 2;
}

void PrintResult(const std::string& word, long status, const TaggedData& result, hostsim::SimHost& host) {
    std::printf("execute(\"%s\") -> %ld, ", word.c_str(), status);
    switch (result.type) {
    case kTypeUndefined:
        std::printf("undefined\n");
        break;
    case kTypeInteger:
        std::printf("integer %d\n", result.data.intval);
        break;
    case kTypeScript:
        std::printf("script:\n%s", result.data.string);
        host.ScriptFreeMem(result.data.string);
        break;
    default:
        std::printf("type %d\n", result.type);
        break;
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> argv8 = hostsim::CommandLineArguments(argc, argv);
    argc = static_cast<int>(argv8.size());
    std::string project = QUILLO_SAMPLE_PROJECT;
    std::string plugins = QUILLO_PLUGINS_DIR;
    std::string root;
    int idleTicks = 3;
    std::vector<ScriptCall> calls;
    for (int i = 1; i < argc; ++i) {
        const std::string& arg = argv8[i];
        auto value = [&]() -> const char* {
            return i + 1 < argc ? argv8[++i].c_str() : nullptr;
        };
        const char* v = nullptr;
        if (arg == "--project" && (v = value()))
            project = v;
        else if (arg == "--plugins" && (v = value()))
            plugins = v;
        else if (arg == "--root" && (v = value()))
            root = v;
        else if (arg == "--idle" && (v = value()))
            idleTicks = std::atoi(v);
        else if (arg == "--execute" && (v = value())) {
            ScriptCall call{v};
            if (i + 1 < argc && argv8[i + 1][0] != '-') {
                call.hasNumber = true;
                call.number = std::atoi(argv8[++i].c_str());
            }
            calls.push_back(call);
        } else
            return Usage();
    }
    if (root.empty() && (root = hostsim::NewTemporaryFolder("hostsim")).empty())
        return 1;

    try {
        hostsim::SimHost host(hostsim::LoadModelFile(project), root);
        host.Materialize();
        std::printf("project %s, %zu installed effects, files under %s\n", project.c_str(),
                    host.GetModel().effects.size(), root.c_str());
        const bool loaded = host.LoadPlugins(plugins);
        for (const std::string& reason : host.skippedPlugins)
            std::fprintf(stderr, "skipped %s\n", reason.c_str());
        if (!loaded) {
            std::fprintf(stderr, "%s\n", host.loadError.c_str());
            return 1;
        }
        std::printf("plug-in %s\n", host.loadedBundle.c_str());
        std::printf("script functions: %s (version %ld)\n", host.ScriptInitialize().c_str(),
                    host.ScriptVersion());
        const A_Err started = host.StartPlugin();
        std::printf("PluginMain(%d, %d) -> %d; idle hooks %zu, death hooks %zu, menu commands %d\n",
                    host.GetModel().apiMajor, host.GetModel().apiMinor, started, host.idleHooks.size(),
                    host.deathHooks.size(), host.commandHooks);
        host.RunIdle(idleTicks);
        for (const ScriptCall& call : calls) {
            std::vector<TaggedData> args{hostsim::ScriptString(call.word.c_str())};
            if (call.hasNumber)
                args.push_back(hostsim::ScriptInteger(call.number));
            TaggedData result{};
            const long status = host.ScriptExecute(args, result);
            PrintResult(call.word, status, result, host);
        }
        host.RunDeath();
        host.ScriptTerminate();
        std::printf("scripts run by the plug-in: %zu; suites outstanding: %d\n", host.scripts.size(),
                    host.Outstanding());
        return host.Outstanding() == 0 ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "hostsim: %s\n", e.what());
        return 1;
    }
}
