#include "hostsim/sim_record.h"

#include "hostsim/sim_host.h"
#include "hostsim/sim_platform.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace hostsim {

namespace {

const char* LayerTypeName(AEGP_ObjectType type) {
    switch (type) {
    case AEGP_ObjectType_AV:
        return "av";
    case AEGP_ObjectType_LIGHT:
        return "light";
    case AEGP_ObjectType_CAMERA:
        return "camera";
    case AEGP_ObjectType_TEXT:
        return "text";
    case AEGP_ObjectType_VECTOR:
        return "shape";
    default:
        return "other";
    }
}

std::string EffectName(SimHost& host, AEGP_InstalledEffectKey key) {
    const Effect* effect = host.FindEffect(key);
    return effect != nullptr ? effect->name : "#" + std::to_string(key);
}

// A layer without a name of its own shows its source's name, as the host's timeline does.
std::string LayerTitle(SimHost& host, const Layer& layer) {
    if (!layer.name.empty())
        return layer.name;
    const Item* source = host.FindItem(layer.sourceItem);
    return source != nullptr ? source->name : "(unnamed)";
}

std::string FileName(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

std::string DescribeResult(const TaggedData& value) {
    switch (value.type) {
    case kTypeUndefined:
        return "undefined";
    case kTypeInteger:
        return "integer " + std::to_string(value.data.intval);
    case kTypeDouble: {
        char text[64];
        std::snprintf(text, sizeof text, "double %g", value.data.fltval);
        return text;
    }
    case kTypeString:
        return std::string("string ") + (value.data.string != nullptr ? value.data.string : "");
    case kTypeScript:
        return std::string("script\n") + (value.data.string != nullptr ? value.data.string : "");
    default:
        return "type " + std::to_string(value.type);
    }
}

ConsoleCall RunConsoleLine(SimHost& host, const std::string& line) {
    const size_t space = line.find(' ');
    ConsoleCall call{line.substr(0, space), 0, {}};
    if (call.word.empty())
        return call;
    std::vector<TaggedData> args{ScriptString(call.word.c_str())};
    const std::string rest = space == std::string::npos ? std::string() : line.substr(space + 1);
    if (space != std::string::npos) {
        char* end = nullptr;
        const long number = std::strtol(rest.c_str(), &end, 10);
        args.push_back(end != rest.c_str() && *end == '\0' ? ScriptInteger(static_cast<int32_t>(number))
                                                           : ScriptString(rest.c_str()));
    }
    TaggedData result{};
    call.status = host.ScriptExecute(args, result);
    call.result = DescribeResult(result);
    if (result.type == kTypeScript || result.type == kTypeString)
        host.ScriptFreeMem(result.data.string);
    return call;
}

std::string SessionRecord(SimHost& host, const SessionState& state) {
    using nlohmann::json;
    json comps = json::array();
    const Project* project = host.CurrentProject();
    if (project != nullptr) {
        for (const auto& item : project->items) {
            if (item->type != AEGP_ItemType_COMP)
                continue;
            json layers = json::array();
            for (const auto& layer : item->layers) {
                json effects = json::array();
                for (AEGP_InstalledEffectKey key : layer->effects)
                    effects.push_back(EffectName(host, key));
                layers.push_back({{"name", LayerTitle(host, *layer)},
                                  {"type", LayerTypeName(layer->type)},
                                  {"selected", layer->selected},
                                  {"effects", effects},
                                  {"presets", layer->presets}});
            }
            comps.push_back(
                {{"name", item->name}, {"active", project->activeItem == item->id}, {"layers", layers}});
        }
    }
    json console = json::array();
    for (const ConsoleCall& call : state.console)
        console.push_back({{"word", call.word}, {"status", call.status}, {"result", call.result}});
    json keys = json::array();
    for (const KeyTiming& key : state.keys)
        keys.push_back({{"characters", key.characters},
                        {"keyCode", key.keyCode},
                        {"window", key.window},
                        {"latencyMs", key.latencyMs},
                        {"queuedMs", key.queuedMs},
                        {"pressedAtMs", key.pressedAtMs}});
    json shown = json::array();
    for (const WindowShown& w : state.shownWindows)
        shown.push_back({{"title", w.title}, {"paintedAtMs", w.paintedAtMs}});
    json windows = json::array();
    for (const VisibleWindow& w : state.windows)
        windows.push_back({{"title", w.title},
                           {"x", w.x},
                           {"y", w.y},
                           {"width", w.width},
                           {"height", w.height},
                           {"key", w.key}});
    const json record = {
        {"project", project != nullptr ? project->name : ""},
        {"compositions", comps},
        {"active", state.active},
        {"idleTicks", state.idleTicks},
        {"idleHooks", host.idleHooks.size()},
        {"deathHooks", host.deathHooks.size()},
        {"deathHooksRun", state.deathHooksRun},
        {"menuActionsSent", host.menuActionsSent},
        {"suiteApplications", host.suiteApplications},
        {"scripts", host.scripts},
        {"console", console},
        {"suitesOutstanding", host.Outstanding()},
        {"keys", keys},
        {"shownWindows", shown},
        {"windows", windows},
    };
    // Replacement characters instead of an exception for a name that is not valid UTF-8.
    return record.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string ProjectOutline(SimHost& host) {
    const Project* project = host.CurrentProject();
    if (project == nullptr)
        return "(no project)\n";
    std::string text = "Project: " + project->name + "\n";
    for (const auto& item : project->items) {
        if (item->type != AEGP_ItemType_COMP)
            continue;
        text += "\n" + std::string(project->activeItem == item->id ? "> " : "  ") +
                "Composition: " + item->name + "\n";
        for (const auto& layer : item->layers) {
            text += std::string(layer->selected ? "   * " : "     ") + LayerTitle(host, *layer) + "  [" +
                    LayerTypeName(layer->type) + "]\n";
            for (AEGP_InstalledEffectKey key : layer->effects)
                text += "         fx  " + EffectName(host, key) + "\n";
            for (const std::string& preset : layer->presets)
                text += "         ffx " + FileName(preset) + "\n";
        }
    }
    return text;
}

bool WriteFileAtomically(const std::string& path, const std::string& text) {
    const std::filesystem::path target = U8Path(path), temporary = U8Path(path + ".tmp");
    bool written;
    {
        std::ofstream file(temporary, std::ios::binary);
        written = file && file.write(text.data(), static_cast<std::streamsize>(text.size())) && file.flush();
    }
    std::error_code ec;
    if (written)
        std::filesystem::rename(temporary, target, ec);
    if (!written || ec) {
        std::filesystem::remove(temporary, ec);
        return false;
    }
    return true;
}

} // namespace hostsim
