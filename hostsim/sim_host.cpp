#include "hostsim/sim_host.h"

#include "hostsim/plugin_bundle.h"
#include "hostsim/sim_platform.h"
#include "hostsim/sim_suites.h"
#include "hostsim/suite_calls.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace hostsim {

namespace {

SimHost* current = nullptr;

void MakeDirs(const std::string& path) {
    std::error_code ec;
    std::filesystem::create_directories(U8Path(path), ec);
}

void WriteFile(const std::string& path, const std::string& contents) {
    MakeDirs(path.substr(0, path.rfind('/')));
    std::ofstream(U8Path(path), std::ios::binary) << contents;
}

} // namespace

SimHost::SimHost(Model model, std::string root) : model(std::move(model)), root(std::move(root)) {
    basic = BasicSuite();
    executablePath = platform::HostExecutable(this->model, this->root);
    current = this;
    mainWindow = platform::CreateMainWindow(*this);
    BuildMenu();
    ApplyActivity();
}

SimHost::~SimHost() {
    platform::DestroyMainWindow(mainWindow);
    if (current == this)
        current = nullptr;
    // The plug-in library stays loaded: the host never unloads a plug-in while it runs.
}

SimHost* SimHost::Current() {
    return current;
}

std::string SimHost::ExecutablePath() const {
    return executablePath;
}

std::string SimHost::HostPresetsFolder() const {
    return platform::HostPresetsFolder(executablePath, model, root);
}

std::string SimHost::UserPresetsFolder() const {
    return root + "/Documents/Adobe/" + model.userPresetsFolder + "/User Presets";
}

void SimHost::Materialize() {
    std::error_code ec;
    if (!std::filesystem::exists(U8Path(executablePath), ec))
        WriteFile(executablePath, ""); // simulated; on Windows it is the running one
    MakeDirs(HostPresetsFolder());
    for (const std::string& preset : model.hostPresets)
        WriteFile(HostPresetsFolder() + "/" + preset, "preset\n");
    MakeDirs(UserPresetsFolder());
    for (const std::string& preset : model.userPresets)
        WriteFile(UserPresetsFolder() + "/" + preset, "preset\n");
    MakeDirs(root + "/Library/Application Support");
    MakeDirs(root + "/Library/Common");
    platform::SetEnvironment("QUILLO_DOCS_DIR", root + "/Documents");
    platform::SetEnvironment("QUILLO_USER_DATA_DIR", root + "/Library/Application Support");
    platform::SetEnvironment("QUILLO_COMMON_DATA_DIR", root + "/Library/Common");
}

int SimHost::Outstanding() const {
    int total = 0;
    for (const auto& [key, count] : acquired) {
        auto it = released.find(key);
        total += count - (it == released.end() ? 0 : it->second);
    }
    for (const auto& [key, count] : released) {
        if (acquired.find(key) == acquired.end())
            total -= count;
    }
    return total;
}

void SimHost::ApplyActivity() {
    if (appliedActive == static_cast<int>(model.active))
        return;
    appliedActive = model.active;
    platform::SetMainWindowActive(mainWindow, model.active);
}

void SimHost::RunIdle(int ticks) {
    current = this;
    ApplyActivity();
    for (int t = 0; t < ticks; ++t) {
        for (const IdleHookEntry& entry : std::vector<IdleHookEntry>(idleHooks)) {
            A_long maxSleep = 30;
            entry.hook(nullptr, entry.refcon, &maxSleep);
        }
    }
}

void SimHost::RunDeath() {
    current = this;
    for (const DeathHookEntry& entry : std::vector<DeathHookEntry>(deathHooks))
        entry.hook(nullptr, entry.refcon);
}

Project* SimHost::CurrentProject() {
    return model.projects.empty() ? nullptr : model.projects.front().get();
}

Item* SimHost::FindItem(int32_t id) {
    if (id == 0)
        return nullptr;
    for (auto& project : model.projects) {
        for (auto& item : project->items) {
            if (item->id == id)
                return item.get();
        }
    }
    return nullptr;
}

Item* SimHost::ItemFromHandle(const void* handle) {
    if (handle == nullptr)
        return nullptr;
    for (auto& project : model.projects) {
        for (auto& item : project->items) {
            if (static_cast<const void*>(item.get()) == handle)
                return item.get();
        }
    }
    return nullptr;
}

AEGP_MemHandle SimHost::NewMemHandle(const void* bytes, size_t size) {
    AEGP_MemHandle handle = NewMem(size);
    if (size > 0)
        std::memcpy(reinterpret_cast<MemBlock*>(handle)->bytes.data(), bytes, size);
    return handle;
}

Item* SimHost::ActiveItem() {
    Project* project = CurrentProject();
    return project != nullptr ? FindItem(project->activeItem) : nullptr;
}

Layer* SimHost::ActiveLayer() {
    Item* comp = ActiveItem();
    if (comp == nullptr || comp->type != AEGP_ItemType_COMP)
        return nullptr;
    Layer* selected = nullptr;
    for (auto& layer : comp->layers) {
        if (!layer->selected)
            continue;
        if (selected != nullptr)
            return nullptr; // several selected: there is no one active layer
        selected = layer.get();
    }
    return selected;
}

Item* SimHost::ParentComp(const Layer* layer) {
    for (auto& project : model.projects) {
        for (auto& item : project->items) {
            for (auto& candidate : item->layers) {
                if (candidate.get() == layer)
                    return item.get();
            }
        }
    }
    return nullptr;
}

const Effect* SimHost::FindEffect(AEGP_InstalledEffectKey key) const {
    for (const Effect& effect : model.effects) {
        if (effect.key == key)
            return &effect;
    }
    return nullptr;
}

std::string SimHost::PluginsFolder() const {
    return root + "/" + model.installFolder + "/Plug-ins";
}

bool SimHost::LoadPlugins(const std::string& folder) {
    for (const PluginBundle& plugin : ScanPlugins(folder, skippedPlugins)) {
        std::string error;
        if (LoadCode(plugin.code, plugin.pipl.entryPoints.at(PlatformEntryKey()), error)) {
            loadedBundle = plugin.bundle;
            return true;
        }
        skippedPlugins.push_back(plugin.bundle + ": " + error);
    }
    loadError = "no plug-in to load in " + folder;
    for (const std::string& reason : skippedPlugins)
        loadError += "; " + reason;
    return false;
}

bool SimHost::LoadCode(const std::string& path, const std::string& entryPoint, std::string& error) {
    void* code = platform::OpenLibrary(path, error);
    if (code == nullptr)
        return false;
    auto find = [&](const char* name) {
        void* symbol = platform::LibrarySymbol(code, name);
        if (symbol == nullptr)
            error += std::string(error.empty() ? "" : ", ") + "missing " + name;
        return symbol;
    };
    void* entry = find(entryPoint.c_str());
    void* initialize = find("ESInitialize");
    void* version = find("ESGetVersion");
    void* freeMem = find("ESFreeMem");
    void* terminate = find("ESTerminate");
    void* execute = find("execute");
    if (!error.empty()) {
        platform::CloseLibrary(code);
        return false;
    }
    library = code;
    pluginMain = reinterpret_cast<AEGP_PluginInitFunc>(entry);
    esInitialize = reinterpret_cast<char* (*)()>(initialize);
    esGetVersion = reinterpret_cast<long (*)()>(version);
    esFreeMem = reinterpret_cast<void (*)(void*)>(freeMem);
    esTerminate = reinterpret_cast<void (*)()>(terminate);
    esExecute = reinterpret_cast<long (*)(TaggedData*, long, TaggedData*)>(execute);
    return true;
}

A_Err SimHost::StartPlugin(A_long major, A_long minor, AEGP_PluginID pluginId) {
    current = this;
    ApplyActivity();
    AEGP_GlobalRefcon refcon = nullptr;
    return pluginMain(&basic, major, minor, pluginId, &refcon);
}

std::string SimHost::ScriptInitialize() {
    const char* functions = esInitialize();
    return functions != nullptr ? functions : "";
}

long SimHost::ScriptVersion() {
    return esGetVersion();
}

long SimHost::ScriptExecute(std::vector<TaggedData>& args, TaggedData& result) {
    current = this;
    ApplyActivity();
    return esExecute(args.data(), static_cast<long>(args.size()), &result);
}

void SimHost::ScriptFreeMem(void* memory) {
    esFreeMem(memory);
}

void SimHost::ScriptTerminate() {
    esTerminate();
}

TaggedData ScriptString(const char* text) {
    TaggedData value{};
    value.data.string = const_cast<char*>(text);
    value.type = kTypeString;
    return value;
}

TaggedData ScriptInteger(int32_t number) {
    TaggedData value{};
    value.data.intval = number;
    value.type = kTypeInteger;
    return value;
}

TaggedData ScriptDouble(double number) {
    TaggedData value{};
    value.data.fltval = number;
    value.type = kTypeDouble;
    return value;
}

} // namespace hostsim
