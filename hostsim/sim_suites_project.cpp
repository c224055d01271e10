// The simulated host's layer, item, comp and project suites: the project model as the plug-in reads
// it.

#include "hostsim/sim_host.h"
#include "hostsim/sim_suites.h"
#include "hostsim/suite_calls.h"

#include <string>

namespace hostsim {

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

} // namespace hostsim
