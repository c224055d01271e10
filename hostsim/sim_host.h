#pragma once

// A simulated host: serves an in-memory project through the host's basic suite and AEGP suites,
// loads the plug-in library, and drives it the way the host does (entry point, idle and death hooks,
// script calls). One host is current per process; the suite functions answer for it.

#include "host/sdk/ae_suites.h"
#include "host/sdk/script_object.h"
#include "hostsim/sim_model.h"
#include "hostsim/sim_render.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace hostsim {

class SimHost {
public:
    // root is the folder that stands for the machine's disk: the host's installation, the user's
    // documents and settings are created below it by Materialize.
    SimHost(Model model, std::string root);
    ~SimHost();
    SimHost(const SimHost&) = delete;
    SimHost& operator=(const SimHost&) = delete;

    static SimHost* Current();

    // Writes the preset files and points the process's documents and settings folders into root
    // (QUILLO_DOCS_DIR, QUILLO_USER_DATA_DIR, QUILLO_COMMON_DATA_DIR).
    void Materialize();

    SPBasicSuite* Basic() { return &basic; }
    Model& GetModel() { return model; }
    const std::string& Root() const { return root; }
    std::string ExecutablePath() const;
    std::string HostPresetsFolder() const;
    std::string UserPresetsFolder() const;

    // Suite bookkeeping: acquires and releases per "name/version", refused acquires.
    std::map<std::string, int> acquired, released;
    int refusedAcquires = 0;
    int Outstanding() const;

    // Hooks the plug-in registered.
    struct IdleHookEntry {
        AEGP_IdleHook hook;
        AEGP_IdleRefcon refcon;
    };
    struct DeathHookEntry {
        AEGP_DeathHook hook;
        AEGP_DeathRefcon refcon;
    };
    std::vector<IdleHookEntry> idleHooks;
    std::vector<DeathHookEntry> deathHooks;
    int commandHooks = 0;
    void RunIdle(int ticks = 1);
    void RunDeath();

    // What the plug-in did through the host.
    std::vector<std::string> scripts;
    int menuActionsSent = 0;
    int effectNamesRead = 0; // installed effects' names asked for: one per effect per catalogue
    int suiteApplications = 0;
    int liveMemHandles = 0;
    int liveEffectRefs = 0;
    // The renderer's objects still held by the plug-in, and what it last rendered.
    int liveRenderOptions = 0, liveFrames = 0, liveWorlds = 0, liveProfiles = 0;
    int colorTransforms = 0;
    RenderRequest lastRender;

    // The host's own Plug-ins folder, in its installation.
    std::string PluginsFolder() const;
    // Loads the plug-in as the host does: the first bundle below folder (see plugin_bundle.h) whose
    // PiPL checks out and whose code has the entry point the PiPL names for this processor and the
    // script functions. Every bundle passed over is in skippedPlugins with the reason; false (and
    // why in loadError) when none is left.
    bool LoadPlugins(const std::string& folder);
    std::vector<std::string> skippedPlugins;
    std::string loadError;
    std::string loadedBundle;
    A_Err StartPlugin(A_long major, A_long minor, AEGP_PluginID pluginId = 7);
    A_Err StartPlugin() { return StartPlugin(model.apiMajor, model.apiMinor); }
    std::string ScriptInitialize();
    long ScriptVersion();
    long ScriptExecute(std::vector<TaggedData>& args, TaggedData& result);
    void ScriptFreeMem(void* memory);
    void ScriptTerminate();

    // Lookups used by the suites and by tests.
    Project* CurrentProject();
    Item* FindItem(int32_t id);
    // The item (or composition, or view: all are items here) behind a handle; null when unknown.
    Item* ItemFromHandle(const void* handle);
    // A host memory handle holding a copy of size bytes.
    AEGP_MemHandle NewMemHandle(const void* bytes, size_t size);
    Item* ActiveItem();
    Layer* ActiveLayer(); // the one selected layer of the active composition
    Item* ParentComp(const Layer* layer);
    const Effect* FindEffect(AEGP_InstalledEffectKey key) const;
    MenuItem& MainMenu() { return mainMenu; }
    // Builds the main menu from the model (and on Windows the main window's menu bar from that).
    void BuildMenu();
    // The host's main window (Windows: an HWND, hidden until a driver shows it); null elsewhere.
    void* MainWindow() const { return mainWindow; }
    // Makes the main window the foreground one or not, as the model's active says, when that
    // changed since last applied; the plug-in's entry points and the idle hooks apply it first.
    void ApplyActivity();
    // What choosing an effect's menu item does in the host: applies it to the selected layers of
    // the active composition (key 0: a menu item that applies nothing). Counted in menuActionsSent.
    void ChooseMenuEffect(AEGP_InstalledEffectKey key);

private:
    Model model;
    std::string root;
    SPBasicSuite basic;
    bool LoadCode(const std::string& path, const std::string& entryPoint, std::string& error);
    MenuItem mainMenu;
    std::string executablePath;
    void* mainWindow = nullptr;
    int appliedActive = -1;

    void* library = nullptr;
    AEGP_PluginInitFunc pluginMain = nullptr;
    char* (*esInitialize)() = nullptr;
    long (*esGetVersion)() = nullptr;
    void (*esFreeMem)(void*) = nullptr;
    void (*esTerminate)() = nullptr;
    long (*esExecute)(TaggedData*, long, TaggedData*) = nullptr;
};

// A new empty folder for a session's simulated disk, named <prefix>-<unique> in the system's
// temporary folder; empty when none can be made.
std::string NewTemporaryFolder(const std::string& prefix);
// The program's arguments in UTF-8 (on Windows read from the wide command line), argv[0] first.
std::vector<std::string> CommandLineArguments(int argc, char** argv);

// Tagged values as the script engine passes them.
TaggedData ScriptString(const char* text);
TaggedData ScriptInteger(int32_t value);
TaggedData ScriptDouble(double value);

} // namespace hostsim
