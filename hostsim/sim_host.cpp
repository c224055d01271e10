#include "hostsim/sim_host.h"

#include "hostsim/plugin_bundle.h"
#include "hostsim/sim_suites.h"
#include "hostsim/suite_calls.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace hostsim {

namespace {

SimHost* current = nullptr;

void MakeDirs(const std::string& path) {
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0777);
        if (slash == std::string::npos)
            break;
    }
}

void WriteFile(const std::string& path, const std::string& contents) {
    MakeDirs(path.substr(0, path.rfind('/')));
    std::ofstream(path, std::ios::binary) << contents;
}

} // namespace

SimHost::SimHost(Model model, std::string root) : model(std::move(model)), root(std::move(root)) {
    basic = BasicSuite();
    executablePath = this->root + "/" + this->model.installFolder + "/" + this->model.bundle +
                     "/Contents/MacOS/" + this->model.executable;
    current = this;
    BuildMenu();
}

SimHost::~SimHost() {
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
    return root + "/" + model.installFolder + "/Presets";
}

std::string SimHost::UserPresetsFolder() const {
    return root + "/Documents/Adobe/" + model.userPresetsFolder + "/User Presets";
}

void SimHost::Materialize() {
    MakeDirs(root + "/" + model.installFolder + "/" + model.bundle + "/Contents/MacOS");
    WriteFile(executablePath, "");
    MakeDirs(HostPresetsFolder());
    for (const std::string& preset : model.hostPresets)
        WriteFile(HostPresetsFolder() + "/" + preset, "preset\n");
    MakeDirs(UserPresetsFolder());
    for (const std::string& preset : model.userPresets)
        WriteFile(UserPresetsFolder() + "/" + preset, "preset\n");
    MakeDirs(root + "/Library/Application Support");
    MakeDirs(root + "/Library/Common");
    setenv("QUILLO_DOCS_DIR", (root + "/Documents").c_str(), 1);
    setenv("QUILLO_USER_DATA_DIR", (root + "/Library/Application Support").c_str(), 1);
    setenv("QUILLO_COMMON_DATA_DIR", (root + "/Library/Common").c_str(), 1);
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

void SimHost::RunIdle(int ticks) {
    current = this;
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
    void* code = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (code == nullptr) {
        const char* why = dlerror();
        error = why != nullptr ? why : "cannot load " + path;
        return false;
    }
    auto find = [&](const char* name) {
        void* symbol = dlsym(code, name);
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
        dlclose(code);
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
