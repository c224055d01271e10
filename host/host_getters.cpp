#include "host/aegp_suite_handler.h"
#include "host/effects_popup.h"
#include "nimbit/utils/string_utils.h"

#include <cstring>

namespace {

// A name the host wrote into a fixed buffer, in its legacy encoding. The length is bounded by the
// buffer even when the host left no terminator.
std::string FromHostBuffer(const char* buffer, size_t size) {
    return nimbit::macroman_to_utf8(std::string_view(buffer, strnlen(buffer, size)));
}

std::string OrUnknown(std::string name) {
    return name.empty() ? std::string("Unknown") : name;
}

} // namespace

AEGP_CompH EffectsPopup::GetActiveComp() {
    AEGP_SuiteHandler suites(basic);
    AEGP_ItemSuite6* items = suites.ItemSuite10();
    AEGP_CompSuite7* comps = suites.CompSuite15();
    if (items == nullptr || comps == nullptr)
        return nullptr;
    AEGP_ItemH item = nullptr;
    items->AEGP_GetActiveItem(&item);
    if (item == nullptr)
        return nullptr;
    AEGP_ItemType type = AEGP_ItemType_NONE;
    items->AEGP_GetItemType(item, &type);
    if (type != AEGP_ItemType_COMP)
        return nullptr;
    AEGP_CompH comp = nullptr;
    comps->AEGP_GetCompFromItem(item, &comp);
    return comp;
}

AEGP_LayerH EffectsPopup::GetActiveLayer() {
    AEGP_SuiteHandler suites(basic);
    AEGP_LayerSuite8* layers = suites.LayerSuite14();
    if (layers == nullptr)
        return nullptr;
    AEGP_LayerH layer = nullptr;
    layers->AEGP_GetActiveLayer(&layer);
    if (layer == nullptr)
        return nullptr;
    AEGP_ObjectType type = AEGP_ObjectType_NONE;
    layers->AEGP_GetLayerObjectType(layer, &type);
    // Effects go on AV (0), text (3) and shape (4) layers; lights (1) and cameras (2) take none.
    constexpr unsigned effectLayerTypes =
        (1u << AEGP_ObjectType_AV) | (1u << AEGP_ObjectType_TEXT) | (1u << AEGP_ObjectType_VECTOR);
    if (type < 0 || type >= 5 || ((effectLayerTypes >> type) & 1u) == 0)
        return nullptr;
    return layer;
}

AEGP_ProjectH EffectsPopup::GetCurrentProject() {
    AEGP_SuiteHandler suites(basic);
    AEGP_ProjectH project = nullptr;
    if (AEGP_ProjSuite5* projects = suites.ProjSuite8())
        projects->AEGP_GetProjectByIndex(0, &project);
    return project;
}

std::string EffectsPopup::GetLayerName(AEGP_LayerH layer) {
    if (layer == nullptr)
        return std::string();
    AEGP_SuiteHandler suites(basic);
    char buffer[AEGP_MAX_LAYER_NAME_SIZE] = {};
    if (AEGP_LayerSuite1* layers = suites.LayerSuite5())
        layers->AEGP_GetLayerName(layer, buffer, nullptr);
    std::string name = FromHostBuffer(buffer, sizeof buffer);
    if (!name.empty())
        return name;
    // A layer without a name of its own shows its source's name.
    AEGP_ItemH source = nullptr;
    if (AEGP_LayerSuite5* layers = suites.LayerSuite11())
        layers->AEGP_GetLayerSourceItem(layer, &source);
    if (source != nullptr) {
        char itemName[AEGP_MAX_ITEM_NAME_SIZE] = {};
        if (AEGP_ItemSuite6* items = suites.ItemSuite10())
            items->AEGP_GetItemName(source, itemName);
        name = FromHostBuffer(itemName, sizeof itemName);
    }
    return OrUnknown(std::move(name));
}

std::string EffectsPopup::GetCompName(AEGP_CompH comp) {
    if (comp == nullptr)
        return std::string();
    AEGP_SuiteHandler suites(basic);
    AEGP_ItemH item = nullptr;
    if (AEGP_CompSuite4* comps = suites.CompSuite9())
        comps->AEGP_GetItemFromComp(comp, &item);
    char buffer[AEGP_MAX_ITEM_NAME_SIZE] = {};
    if (item != nullptr) {
        if (AEGP_ItemSuite6* items = suites.ItemSuite10())
            items->AEGP_GetItemName(item, buffer);
    }
    return OrUnknown(FromHostBuffer(buffer, sizeof buffer));
}

std::string EffectsPopup::GetProjName(AEGP_ProjectH project) {
    if (project == nullptr)
        return std::string();
    AEGP_SuiteHandler suites(basic);
    char buffer[AEGP_MAX_PROJ_NAME_SIZE] = {};
    if (AEGP_ProjSuite5* projects = suites.ProjSuite8())
        projects->AEGP_GetProjectName(project, buffer);
    std::string name = FromHostBuffer(buffer, sizeof buffer);
    if (name.empty())
        return "Unknown";
    // The project file's own extension is noise in a title; any other suffix is part of the name.
    const size_t dot = name.rfind('.');
    if (dot != std::string::npos && nimbit::string_lower(std::string_view(name).substr(dot)) == ".aep")
        name.erase(dot);
    return name;
}

int EffectsPopup::GetProjectBitDepth() {
    int depth = 2;
    AEGP_SuiteHandler suites(basic);
    AEGP_ProjectH project = nullptr;
    if (AEGP_ProjSuite5* projects = suites.ProjSuite8())
        projects->AEGP_GetProjectByIndex(0, &project);
    if (project != nullptr) {
        AEGP_ProjBitDepth bits = AEGP_ProjBitDepth_32;
        suites.ProjSuite8()->AEGP_GetProjectBitDepth(project, &bits);
        return bits;
    }
    // No project to ask: ask the script engine instead.
    AEGP_MemorySuite1* memory = suites.MemorySuite1();
    AEGP_UtilitySuite4* utility = suites.UtilitySuite10();
    if (memory == nullptr || utility == nullptr)
        return depth;
    AEGP_MemHandle answer = nullptr;
    memory->AEGP_NewMemHandle(pluginId, "bpcHandle", 32, AEGP_MemFlag_CLEAR, &answer);
    if (answer == nullptr)
        return depth;
    AEGP_MemHandle result = answer;
    utility->AEGP_ExecuteScript(pluginId, "app.project.bitsPerChannel", 0, &result, nullptr);
    void* text = nullptr;
    AEGP_MemSize size = 0;
    memory->AEGP_GetMemHandleSize(result, &size);
    memory->AEGP_LockMemHandle(result, &text);
    if (text != nullptr) {
        const std::string_view value(static_cast<const char*>(text),
                                     strnlen(static_cast<const char*>(text), size));
        if (value == "32")
            depth = 2;
        else if (value == "16")
            depth = 1;
        else if (value == "8")
            depth = 0;
    }
    memory->AEGP_UnlockMemHandle(result);
    memory->AEGP_FreeMemHandle(result);
    if (result != answer)
        memory->AEGP_FreeMemHandle(answer);
    return depth;
}
