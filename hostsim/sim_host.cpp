#include "hostsim/sim_host.h"

#include "host/native_application.h"
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

std::string SuiteKey(const char* name, int version) {
    return std::string(name) + "/" + std::to_string(version);
}

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

// Copies text into a host name buffer of size bytes, cut to fit and terminated.
void CopyName(const std::string& text, char* buffer, size_t size) {
    if (buffer == nullptr || size == 0)
        return;
    const size_t n = std::min(text.size(), size - 1);
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
}

SimHost& Host() {
    return *current; // suites are only reachable while a host is current
}

// Handles are the addresses of the model's records.
Project* ProjectOf(AEGP_ProjectH handle) {
    for (auto& project : Host().GetModel().projects) {
        if (reinterpret_cast<AEGP_ProjectH>(project.get()) == handle)
            return project.get();
    }
    return nullptr;
}

Item* ItemOf(const void* handle) {
    return Host().ItemFromHandle(handle);
}

Layer* LayerOf(AEGP_LayerH handle) {
    for (auto& project : Host().GetModel().projects) {
        for (auto& item : project->items) {
            for (auto& layer : item->layers) {
                if (reinterpret_cast<AEGP_LayerH>(layer.get()) == handle)
                    return layer.get();
            }
        }
    }
    return nullptr;
}

struct MemBlock {
    std::vector<char> bytes;
};

struct EffectRef {
    Layer* layer;
    AEGP_InstalledEffectKey key;
};

AEGP_MemHandle NewMem(size_t size) {
    ++Host().liveMemHandles;
    return reinterpret_cast<AEGP_MemHandle>(new MemBlock{std::vector<char>(size, 0)});
}

// ---- Utility

A_Err GetSuppressInteractiveUI(A_Boolean* suppressed) {
    *suppressed = Host().GetModel().suppressInteractiveUI ? 1 : 0;
    return A_Err_NONE;
}

A_Err ExecuteScript(AEGP_PluginID, const A_char* script, const A_Boolean, AEGP_MemHandle* result,
                    AEGP_MemHandle* error) {
    SimHost& host = Host();
    const std::string text = script != nullptr ? script : "";
    host.scripts.push_back(text);
    std::string answer;
    if (text == "app.project.bitsPerChannel") {
        answer = host.GetModel().bitsPerChannel;
    } else {
        static constexpr std::string_view prefix = "app.project.activeItem.applyPreset(new File(\"";
        static constexpr std::string_view suffix = "\"));";
        if (text.size() >= prefix.size() + suffix.size() && text.compare(0, prefix.size(), prefix) == 0 &&
            text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0) {
            const std::string path = text.substr(prefix.size(), text.size() - prefix.size() - suffix.size());
            if (Item* comp = host.ActiveItem(); comp != nullptr && comp->type == AEGP_ItemType_COMP) {
                for (auto& layer : comp->layers) {
                    if (layer->selected)
                        layer->presets.push_back(path);
                }
            }
        }
    }
    if (result != nullptr) {
        *result = NewMem(answer.size() + 1);
        std::memcpy(reinterpret_cast<MemBlock*>(*result)->bytes.data(), answer.c_str(), answer.size() + 1);
    }
    if (error != nullptr)
        *error = NewMem(1);
    return A_Err_NONE;
}

// ---- Register

A_Err RegisterCommandHook(AEGP_PluginID, AEGP_HookPriority, AEGP_Command, AEGP_CommandHook,
                          AEGP_CommandRefcon) {
    ++Host().commandHooks;
    return A_Err_NONE;
}

A_Err RegisterIdleHook(AEGP_PluginID, AEGP_IdleHook hook, AEGP_IdleRefcon refcon) {
    Host().idleHooks.push_back({hook, refcon});
    return A_Err_NONE;
}

A_Err RegisterDeathHook(AEGP_PluginID, AEGP_DeathHook hook, AEGP_DeathRefcon refcon) {
    Host().deathHooks.push_back({hook, refcon});
    return A_Err_NONE;
}

// ---- Effect

A_Err GetLayerNumEffects(AEGP_LayerH handle, A_long* count) {
    return Answer(LayerOf(handle), [&](Layer& layer) { *count = static_cast<A_long>(layer.effects.size()); });
}

A_Err DisposeEffect(AEGP_EffectRefH effect) {
    return Dispose<EffectRef>(effect, Host().liveEffectRefs);
}

A_Err ApplyEffect(AEGP_PluginID, AEGP_LayerH handle, AEGP_InstalledEffectKey key, AEGP_EffectRefH* effect) {
    Layer* layer = LayerOf(handle);
    if (layer == nullptr || Host().FindEffect(key) == nullptr)
        return A_Err_PARAMETER;
    layer->effects.push_back(key);
    ++Host().suiteApplications;
    ++Host().liveEffectRefs;
    *effect = reinterpret_cast<AEGP_EffectRefH>(new EffectRef{layer, key});
    return A_Err_NONE;
}

A_Err GetNumInstalledEffects(A_long* count) {
    *count = static_cast<A_long>(Host().GetModel().effects.size());
    return A_Err_NONE;
}

A_Err GetNextInstalledEffect(AEGP_InstalledEffectKey key, AEGP_InstalledEffectKey* next) {
    const auto& effects = Host().GetModel().effects;
    if (key == 0) {
        *next = effects.empty() ? 0 : effects.front().key;
        return A_Err_NONE;
    }
    for (size_t i = 0; i < effects.size(); ++i) {
        if (effects[i].key == key) {
            *next = i + 1 < effects.size() ? effects[i + 1].key : 0;
            return A_Err_NONE;
        }
    }
    return A_Err_PARAMETER;
}

A_Err GetEffectName(AEGP_InstalledEffectKey key, A_char* name) {
    return Answer(Host().FindEffect(key), [&](const Effect& effect) {
        CopyName(Utf8ToMacRoman(effect.name), name, AEGP_MAX_EFFECT_NAME_SIZE);
    });
}

A_Err GetEffectMatchName(AEGP_InstalledEffectKey key, A_char* name) {
    return Answer(Host().FindEffect(key), [&](const Effect& effect) {
        CopyName(effect.matchName, name, AEGP_MAX_EFFECT_MATCH_NAME_SIZE);
    });
}

A_Err GetEffectCategory(AEGP_InstalledEffectKey key, A_char* category) {
    return Answer(Host().FindEffect(key), [&](const Effect& effect) {
        CopyName(effect.category, category, AEGP_MAX_EFFECT_CATEGORY_NAME_SIZE);
    });
}

// ---- Layer

A_Err GetActiveLayer(AEGP_LayerH* layer) {
    *layer = reinterpret_cast<AEGP_LayerH>(Host().ActiveLayer());
    return A_Err_NONE;
}

A_Err GetLayerSourceItem(AEGP_LayerH handle, AEGP_ItemH* item) {
    return Answer(LayerOf(handle), [&](Layer& layer) {
        *item = reinterpret_cast<AEGP_ItemH>(Host().FindItem(layer.sourceItem));
    });
}

A_Err GetLayerParentComp(AEGP_LayerH handle, AEGP_CompH* comp) {
    return Answer(LayerOf(handle),
                  [&](Layer& layer) { *comp = reinterpret_cast<AEGP_CompH>(Host().ParentComp(&layer)); });
}

A_Err GetLayerNameOld(AEGP_LayerH handle, A_char* layerName, A_char* sourceName) {
    return Answer(LayerOf(handle), [&](Layer& layer) {
        CopyName(Utf8ToMacRoman(layer.name), layerName, AEGP_MAX_LAYER_NAME_SIZE);
        const Item* source = Host().FindItem(layer.sourceItem);
        CopyName(source != nullptr ? Utf8ToMacRoman(source->name) : std::string(), sourceName,
                 AEGP_MAX_LAYER_NAME_SIZE);
    });
}

A_Err GetLayerCurrentTime(AEGP_LayerH handle, AEGP_LTimeMode, A_Time* time) {
    return Answer(LayerOf(handle), [&](Layer& layer) { *time = layer.time; });
}

A_Err GetLayerObjectType(AEGP_LayerH handle, AEGP_ObjectType* type) {
    return Answer(LayerOf(handle), [&](Layer& layer) { *type = layer.type; });
}

// ---- Item

A_Err GetActiveItem(AEGP_ItemH* item) {
    *item = reinterpret_cast<AEGP_ItemH>(Host().ActiveItem());
    return A_Err_NONE;
}

A_Err GetItemType(AEGP_ItemH handle, AEGP_ItemType* type) {
    return Answer(ItemOf(handle), [&](Item& item) { *type = item.type; });
}

A_Err GetItemNameOld(AEGP_ItemH handle, A_char* name) {
    return Answer(ItemOf(handle),
                  [&](Item& item) { CopyName(Utf8ToMacRoman(item.name), name, AEGP_MAX_ITEM_NAME_SIZE); });
}

A_Err GetItemCurrentTime(AEGP_ItemH handle, A_Time* time) {
    return Answer(ItemOf(handle), [&](Item& item) { *time = item.time; });
}

A_Err GetItemDimensions(AEGP_ItemH handle, A_long* width, A_long* height) {
    return Answer(ItemOf(handle), [&](Item& item) {
        *width = item.width;
        *height = item.height;
    });
}

A_Err GetItemPixelAspectRatio(AEGP_ItemH handle, A_Ratio* ratio) {
    return Answer(ItemOf(handle), [&](Item& item) { *ratio = item.pixelAspect; });
}

// ---- Comp

A_Err GetCompFromItem(AEGP_ItemH handle, AEGP_CompH* comp) {
    Item* item = ItemOf(handle);
    if (item == nullptr || item->type != AEGP_ItemType_COMP)
        return A_Err_PARAMETER;
    *comp = reinterpret_cast<AEGP_CompH>(item);
    return A_Err_NONE;
}

A_Err GetItemFromComp(AEGP_CompH comp, AEGP_ItemH* item) {
    return Answer(ItemOf(comp), [&](Item& found) { *item = reinterpret_cast<AEGP_ItemH>(&found); });
}

// ---- Project

A_Err GetNumProjects(A_long* count) {
    *count = static_cast<A_long>(Host().GetModel().projects.size());
    return A_Err_NONE;
}

A_Err GetProjectByIndex(A_long index, AEGP_ProjectH* project) {
    auto& projects = Host().GetModel().projects;
    if (index < 0 || static_cast<size_t>(index) >= projects.size())
        return A_Err_PARAMETER;
    *project = reinterpret_cast<AEGP_ProjectH>(projects[static_cast<size_t>(index)].get());
    return A_Err_NONE;
}

A_Err GetProjectName(AEGP_ProjectH handle, A_char* name) {
    return Answer(ProjectOf(handle), [&](Project& project) {
        CopyName(Utf8ToMacRoman(project.name), name, AEGP_MAX_PROJ_NAME_SIZE);
    });
}

A_Err GetProjectBitDepth(AEGP_ProjectH handle, AEGP_ProjBitDepth* depth) {
    return Answer(ProjectOf(handle), [&](Project& project) { *depth = project.bitDepth; });
}

// ---- Memory

A_Err NewMemHandle(AEGP_PluginID, const A_char*, AEGP_MemSize size, AEGP_MemFlag, AEGP_MemHandle* handle) {
    *handle = NewMem(size); // always cleared: a stricter host than the flag asks for
    return A_Err_NONE;
}

A_Err FreeMemHandle(AEGP_MemHandle handle) {
    return Dispose<MemBlock>(handle, Host().liveMemHandles);
}

MemBlock* MemOf(AEGP_MemHandle handle) {
    return reinterpret_cast<MemBlock*>(handle);
}

A_Err LockMemHandle(AEGP_MemHandle handle, void** pointer) {
    return Answer(MemOf(handle), [&](MemBlock& block) { *pointer = block.bytes.data(); });
}

A_Err UnlockMemHandle(AEGP_MemHandle handle) {
    return handle == nullptr ? A_Err_PARAMETER : A_Err_NONE;
}

A_Err GetMemHandleSize(AEGP_MemHandle handle, AEGP_MemSize* size) {
    return Answer(MemOf(handle),
                  [&](MemBlock& block) { *size = static_cast<AEGP_MemSize>(block.bytes.size()); });
}

// ---- The suite tables. Members the plug-in never calls stay null, so an unexpected call fails
// loudly in a test instead of answering something invented.

template <typename Suite> Suite UtilitySuite() {
    Suite s{};
    s.AEGP_GetSuppressInteractiveUI = GetSuppressInteractiveUI;
    s.AEGP_ExecuteScript = ExecuteScript;
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

// ---- The native application table: the main menu and activity of the current host.

int NativeIsActive() {
    return current != nullptr && current->GetModel().active ? 1 : 0;
}

const char* NativeExecutablePath() {
    static std::string path;
    if (current == nullptr)
        return nullptr;
    path = current->ExecutablePath();
    return path.c_str();
}

NativeMenu* NativeMainMenu() {
    return current != nullptr ? reinterpret_cast<NativeMenu*>(&current->MainMenu()) : nullptr;
}

int NativeItemCount(NativeMenu* menu) {
    return static_cast<int>(reinterpret_cast<MenuItem*>(menu)->submenu.size());
}

NativeMenuItem* NativeItemAt(NativeMenu* menu, int index) {
    auto& items = reinterpret_cast<MenuItem*>(menu)->submenu;
    if (index < 0 || static_cast<size_t>(index) >= items.size())
        return nullptr;
    return reinterpret_cast<NativeMenuItem*>(items[static_cast<size_t>(index)].get());
}

const char* NativeItemTitle(NativeMenuItem* item) {
    return reinterpret_cast<MenuItem*>(item)->title.c_str();
}

int NativeItemEnabled(NativeMenuItem* item) {
    return reinterpret_cast<MenuItem*>(item)->enabled ? 1 : 0;
}

NativeMenu* NativeItemSubmenu(NativeMenuItem* item) {
    auto* menuItem = reinterpret_cast<MenuItem*>(item);
    return menuItem->hasSubmenu ? reinterpret_cast<NativeMenu*>(menuItem) : nullptr;
}

void NativeSendAction(NativeMenuItem* item) {
    if (current != nullptr)
        current->ChooseMenuEffect(reinterpret_cast<MenuItem*>(item)->effectKey);
}

const NativeApplication nativeApplication = {
    NativeIsActive,  NativeExecutablePath, NativeMainMenu,    NativeItemCount,  NativeItemAt,
    NativeItemTitle, NativeItemEnabled,    NativeItemSubmenu, NativeSendAction,
};

} // namespace

SimHost::SimHost(Model model, std::string root) : model(std::move(model)), root(std::move(root)) {
    basic = SPBasicSuite{AcquireSuite, ReleaseSuite,    IsEqual,  AllocateBlock,
                         FreeBlock,    ReallocateBlock, Undefined};
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

void SimHost::ChooseMenuEffect(AEGP_InstalledEffectKey key) {
    ++menuActionsSent;
    if (key == 0 || !model.menuActionsApply)
        return;
    if (Item* comp = ActiveItem(); comp != nullptr && comp->type == AEGP_ItemType_COMP) {
        for (auto& layer : comp->layers) {
            if (layer->selected && layer->type != AEGP_ObjectType_LIGHT &&
                layer->type != AEGP_ObjectType_CAMERA)
                layer->effects.push_back(key);
        }
    }
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

void SimHost::BuildMenu() {
    mainMenu = MenuItem{};
    mainMenu.hasSubmenu = true;
    static const char* const titles[] = {"After Effects", "File", "Edit",   "Composition", "Layer",
                                         "Animation",     "View", "Window", "Help"};
    for (const char* title : titles) {
        auto item = std::make_unique<MenuItem>();
        item->title = title;
        mainMenu.submenu.push_back(std::move(item));
    }
    auto effectMenu = std::make_unique<MenuItem>();
    effectMenu->title = "Effect";
    effectMenu->hasSubmenu = true;
    for (const char* title : {"Effect Controls", "Remove All"}) {
        auto item = std::make_unique<MenuItem>();
        item->title = title;
        effectMenu->submenu.push_back(std::move(item));
    }
    for (const Effect& effect : model.effects) {
        if (effect.category.empty() || effect.category == "_Obsolete")
            continue; // the host keeps these out of its menu
        MenuItem* category = nullptr;
        for (auto& item : effectMenu->submenu) {
            if (item->hasSubmenu && item->title == effect.category)
                category = item.get();
        }
        if (category == nullptr) {
            auto item = std::make_unique<MenuItem>();
            item->title = effect.category;
            item->hasSubmenu = true;
            item->enabled = std::find(model.disabledCategories.begin(), model.disabledCategories.end(),
                                      effect.category) == model.disabledCategories.end();
            category = item.get();
            effectMenu->submenu.push_back(std::move(item));
        }
        auto item = std::make_unique<MenuItem>();
        item->title = effect.name;
        item->effectKey = effect.key;
        category->submenu.push_back(std::move(item));
    }
    const size_t index =
        std::min(static_cast<size_t>(std::max(model.effectMenuIndex, 0)), mainMenu.submenu.size());
    mainMenu.submenu.insert(mainMenu.submenu.begin() + static_cast<long>(index), std::move(effectMenu));
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

bool SimHost::LoadPlugin(const std::string& path) {
    library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        loadError = dlerror();
        return false;
    }
    auto find = [&](const char* name) {
        void* symbol = dlsym(library, name);
        if (symbol == nullptr)
            loadError += std::string(loadError.empty() ? "" : ", ") + "missing " + name;
        return symbol;
    };
    pluginMain = reinterpret_cast<AEGP_PluginInitFunc>(find("PluginMain"));
    esInitialize = reinterpret_cast<char* (*)()>(find("ESInitialize"));
    esGetVersion = reinterpret_cast<long (*)()>(find("ESGetVersion"));
    esFreeMem = reinterpret_cast<void (*)(void*)>(find("ESFreeMem"));
    esTerminate = reinterpret_cast<void (*)()>(find("ESTerminate"));
    esExecute = reinterpret_cast<long (*)(TaggedData*, long, TaggedData*)>(find("execute"));
    return loadError.empty();
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

// The table through which the command-line build of the plug-in reaches the simulated
// application's menu and activity, and either build its executable.
extern "C" __attribute__((visibility("default"))) const NativeApplication* QuilloNativeApplication() {
    return hostsim::current != nullptr ? &hostsim::nativeApplication : nullptr;
}
