#include "hostsim/sim_model.h"
#include "hostsim/sim_platform.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace hostsim {

namespace {

using nlohmann::json;

template <typename T> T Get(const json& object, const char* key, T fallback) {
    auto it = object.find(key);
    return it == object.end() || it->is_null() ? fallback : it->get<T>();
}

A_Time TimeOf(const json& value) {
    if (!value.is_array() || value.size() != 2)
        throw std::runtime_error("a time is [value, scale]");
    return A_Time{value[0].get<A_long>(), value[1].get<A_u_long>()};
}

AEGP_ObjectType LayerTypeOf(const std::string& name) {
    if (name == "av")
        return AEGP_ObjectType_AV;
    if (name == "light")
        return AEGP_ObjectType_LIGHT;
    if (name == "camera")
        return AEGP_ObjectType_CAMERA;
    if (name == "text")
        return AEGP_ObjectType_TEXT;
    if (name == "shape")
        return AEGP_ObjectType_VECTOR;
    throw std::runtime_error("unknown layer type: " + name);
}

AEGP_ItemType ItemTypeOf(const std::string& name) {
    if (name == "comp")
        return AEGP_ItemType_COMP;
    if (name == "footage")
        return AEGP_ItemType_FOOTAGE;
    if (name == "folder")
        return AEGP_ItemType_FOLDER;
    throw std::runtime_error("unknown item type: " + name);
}

AEGP_InstalledEffectKey KeyOf(const Model& model, const std::string& name) {
    for (const Effect& effect : model.effects) {
        if (effect.name == name)
            return effect.key;
    }
    throw std::runtime_error("a layer names an effect that is not installed: " + name);
}

void ReadHost(const json& host, Model& model) {
    if (auto it = host.find("apiVersion"); it != host.end()) {
        model.apiMajor = it->at(0).get<int32_t>();
        model.apiMinor = it->at(1).get<int32_t>();
    }
    model.suppressInteractiveUI = Get(host, "suppressInteractiveUI", model.suppressInteractiveUI);
    model.active = Get(host, "active", model.active);
    model.installFolder = Get(host, "installFolder", model.installFolder);
    model.bundle = Get(host, "bundle", model.bundle);
    model.executable = Get(host, "executable", model.executable);
    model.userPresetsFolder = Get(host, "userPresetsFolder", model.userPresetsFolder);
    model.effectMenuIndex = Get(host, "effectMenuIndex", model.effectMenuIndex);
    model.disabledCategories = Get(host, "disabledCategories", model.disabledCategories);
    model.menuActionsApply = Get(host, "menuActionsApply", model.menuActionsApply);
    model.bitsPerChannel = Get(host, "bitsPerChannel", model.bitsPerChannel);
    model.workingSpaceProfile = Get(host, "workingSpaceProfile", model.workingSpaceProfile);
}

void ReadEffects(const json& effects, Model& model) {
    AEGP_InstalledEffectKey nextKey = 1;
    auto add = [&](Effect effect) {
        if (effect.key == 0)
            effect.key = nextKey;
        nextKey = effect.key + 1;
        if (effect.matchName.empty())
            effect.matchName = "SIM " + effect.name;
        model.effects.push_back(std::move(effect));
    };
    for (const json& entry : effects) {
        if (entry.contains("names")) { // a category and its effects
            const std::string category = entry.at("category").get<std::string>();
            // A name alone, or [name, match name] as a host in another language lists it.
            for (const json& name : entry.at("names")) {
                if (name.is_array())
                    add(Effect{0, name.at(0).get<std::string>(), category, name.at(1).get<std::string>()});
                else
                    add(Effect{0, name.get<std::string>(), category, ""});
            }
        } else {
            add(Effect{Get<AEGP_InstalledEffectKey>(entry, "key", 0), entry.at("name").get<std::string>(),
                       Get<std::string>(entry, "category", ""), Get<std::string>(entry, "matchName", "")});
        }
    }
}

std::unique_ptr<Item> ReadItem(const json& entry, const Model& model) {
    auto item = std::make_unique<Item>();
    item->id = entry.at("id").get<int32_t>();
    item->type = ItemTypeOf(Get<std::string>(entry, "type", "footage"));
    item->name = Get<std::string>(entry, "name", "");
    item->width = Get<A_long>(entry, "width", 0);
    item->height = Get<A_long>(entry, "height", 0);
    if (auto it = entry.find("pixelAspect"); it != entry.end())
        item->pixelAspect = A_Ratio{it->at(0).get<A_long>(), it->at(1).get<A_u_long>()};
    if (auto it = entry.find("time"); it != entry.end())
        item->time = TimeOf(*it);
    item->downsample = Get<A_short>(entry, "downsample", 1);
    item->viewColorTransform = Get(entry, "viewColorTransform", false);
    for (const json& l : Get(entry, "layers", json::array())) {
        auto layer = std::make_unique<Layer>();
        layer->name = Get<std::string>(l, "name", "");
        layer->type = LayerTypeOf(Get<std::string>(l, "type", "av"));
        layer->sourceItem = Get<int32_t>(l, "source", 0);
        layer->selected = Get(l, "selected", false);
        if (auto it = l.find("time"); it != l.end())
            layer->time = TimeOf(*it);
        for (const json& name : Get(l, "effects", json::array()))
            layer->effects.push_back(KeyOf(model, name.get<std::string>()));
        item->layers.push_back(std::move(layer));
    }
    return item;
}

std::unique_ptr<Project> ReadProject(const json& entry, const Model& model) {
    auto project = std::make_unique<Project>();
    project->name = Get<std::string>(entry, "name", "");
    project->path = Get<std::string>(entry, "path", "");
    const int bits = Get(entry, "bitDepth", 8);
    project->bitDepth = bits == 32   ? AEGP_ProjBitDepth_32
                        : bits == 16 ? AEGP_ProjBitDepth_16
                                     : AEGP_ProjBitDepth_8;
    project->activeItem = Get<int32_t>(entry, "activeItem", 0);
    for (const json& item : Get(entry, "items", json::array()))
        project->items.push_back(ReadItem(item, model));
    return project;
}

} // namespace

Model LoadModel(const std::string& jsonText) {
    Model model;
    try {
        const json root = json::parse(jsonText);
        if (auto it = root.find("host"); it != root.end())
            ReadHost(*it, model);
        ReadEffects(Get(root, "effects", json::array()), model);
        if (auto it = root.find("presets"); it != root.end()) {
            model.hostPresets = Get(*it, "host", model.hostPresets);
            model.userPresets = Get(*it, "user", model.userPresets);
        }
        for (const json& project : Get(root, "projects", json::array()))
            model.projects.push_back(ReadProject(project, model));
    } catch (const json::exception& e) {
        throw std::runtime_error(std::string("project file: ") + e.what());
    }
    return model;
}

Model LoadModelFile(const std::string& path) {
    std::ifstream in(U8Path(path), std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    std::ostringstream text;
    text << in.rdbuf();
    return LoadModel(text.str());
}

std::vector<Effect> LoadEffectsTable(const std::string& path) {
    std::vector<Effect> effects;
    std::ifstream in(U8Path(path));
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        const size_t first = line.find('\t');
        const size_t second = first == std::string::npos ? first : line.find('\t', first + 1);
        if (second == std::string::npos)
            continue;
        Effect effect;
        effect.key = static_cast<AEGP_InstalledEffectKey>(effects.size() + 1);
        effect.category = line.substr(0, first);
        effect.name = line.substr(first + 1, second - first - 1);
        effect.matchName = line.substr(second + 1);
        effects.push_back(std::move(effect));
    }
    return effects;
}

} // namespace hostsim
