#include "hostsim/plugin_bundle.h"

#include <algorithm>

namespace hostsim {

namespace {

uint32_t Big16(std::string_view s, size_t at) {
    return static_cast<uint32_t>(static_cast<uint8_t>(s[at])) << 8 | static_cast<uint8_t>(s[at + 1]);
}

uint32_t Big32(std::string_view s, size_t at) {
    return Big16(s, at) << 16 | Big16(s, at + 2);
}

uint32_t Little32(std::string_view s, size_t at) {
    uint32_t value = 0;
    for (size_t i = 4; i-- > 0;)
        value = value << 8 | static_cast<uint8_t>(s[at + i]);
    return value;
}

bool Fail(std::string& error, std::string why) {
    error = std::move(why);
    return false;
}

// A Pascal string filling at most the property's value.
bool PascalString(std::string_view value, std::string& out) {
    if (value.empty() || static_cast<uint8_t>(value[0]) + 1u > value.size())
        return false;
    out.assign(value.substr(1, static_cast<uint8_t>(value[0])));
    return true;
}

// A C string that ends inside the property's value (the Windows resource compiler's form).
bool CString(std::string_view value, std::string& out) {
    const size_t end = value.find('\0');
    if (end == std::string_view::npos)
        return false;
    out.assign(value.substr(0, end));
    return true;
}

} // namespace

bool ReadResources(std::string_view fork, std::string_view type, std::vector<std::string_view>& out,
                   std::string& error) {
    out.clear();
    if (fork.size() < 16)
        return Fail(error, "resource file shorter than its header");
    const uint64_t dataOffset = Big32(fork, 0), mapOffset = Big32(fork, 4);
    const uint64_t dataLength = Big32(fork, 8), mapLength = Big32(fork, 12);
    if (dataOffset + dataLength > fork.size() || mapOffset + mapLength > fork.size())
        return Fail(error, "resource file truncated");
    const std::string_view data = fork.substr(dataOffset, dataLength);
    const std::string_view map = fork.substr(mapOffset, mapLength);
    if (map.size() < 28)
        return Fail(error, "resource map shorter than its header");
    const size_t typeList = Big16(map, 24);
    if (typeList + 2 > map.size())
        return Fail(error, "resource type list outside the map");
    // Counts are stored less one; all ones means none.
    const size_t types = (Big16(map, typeList) + 1) & 0xffff;
    if (typeList + 2 + types * 8 > map.size())
        return Fail(error, "resource type list truncated");
    for (size_t t = 0; t < types; ++t) {
        const size_t entry = typeList + 2 + t * 8;
        if (map.substr(entry, 4) != type)
            continue;
        const size_t count = Big16(map, entry + 4) + 1;
        const size_t references = typeList + Big16(map, entry + 6);
        if (references + count * 12 > map.size())
            return Fail(error, "resource reference list truncated");
        for (size_t r = 0; r < count; ++r) {
            const size_t at = Big32(map, references + r * 12 + 4) & 0xffffff;
            if (at + 4 > data.size() || Big32(data, at) > data.size() - at - 4)
                return Fail(error, "resource data outside the data area");
            out.push_back(data.substr(at + 4, Big32(data, at)));
        }
        break; // a type is listed once; further entries of it would only repeat the work
    }
    return true;
}

bool ParsePipl(std::string_view data, Pipl& out, std::string& error) {
    out = Pipl{};
    // The Windows form starts with a 16-bit 1 and stores numbers little-endian and four-character
    // codes reversed; the Mac's starts with its version, 0, big-endian.
    const bool windows = data.size() >= 2 && data[0] == 1 && data[1] == 0;
    if (windows)
        data.remove_prefix(2);
    const auto number = [windows](std::string_view s, size_t at) {
        return windows ? Little32(s, at) : Big32(s, at);
    };
    const auto code = [windows](std::string_view s) {
        std::string text(s);
        if (windows)
            std::reverse(text.begin(), text.end());
        return text;
    };
    if (data.size() < 8)
        return Fail(error, "PiPL shorter than its header");
    if (number(data, 0) != 0)
        return Fail(error, "PiPL of unknown version " + std::to_string(number(data, 0)));
    const uint64_t count = number(data, 4);
    size_t at = 8;
    for (uint64_t i = 0; i < count; ++i) {
        if (data.size() - at < 16)
            return Fail(error, "PiPL truncated at property " + std::to_string(i + 1));
        const std::string vendor = code(data.substr(at, 4)), key = code(data.substr(at + 4, 4));
        const uint32_t length = number(data, at + 12);
        at += 16;
        if (length > data.size() - at)
            return Fail(error, "PiPL property '" + key + "' runs past the end");
        const std::string_view value = data.substr(at, length);
        // Values are padded to four bytes; the last one's padding may be cut off.
        at += std::min<size_t>((length + 3u) & ~3u, data.size() - at);
        if (vendor != "8BIM")
            continue;
        bool ok = true;
        if (key == "kind" || key == "vers") {
            ok = length == 4;
            if (ok && key == "kind")
                out.kind = code(value);
            else if (ok)
                out.version = number(value, 0);
        } else if (key == "name")
            ok = PascalString(value, out.name);
        else if (key == "catg")
            ok = PascalString(value, out.category);
        else if (key == "mi64" || key == "ma64")
            ok = PascalString(value, out.entryPoints[key]);
        else if (key == "8664")
            ok = CString(value, out.entryPoints[key]);
        if (!ok)
            return Fail(error, "PiPL property '" + key + "' is malformed");
    }
    return true;
}

const char* PlatformEntryKey() {
#if defined(_WIN32)
    return "8664";
#elif defined(__aarch64__) || defined(__arm64__)
    return "ma64";
#else
    return "mi64";
#endif
}
bool CheckPluginPipl(const Pipl& pipl, std::string& error) {
    if (pipl.kind != PluginKind)
        return Fail(error, "PiPL kind '" + pipl.kind + "' is not a host plug-in's");
    auto entry = pipl.entryPoints.find(PlatformEntryKey());
    if (entry == pipl.entryPoints.end() || entry->second.empty())
        return Fail(error,
                    std::string("PiPL names no entry point for this processor (") + PlatformEntryKey() + ")");
    return true;
}

std::vector<PluginBundle> ScanPlugins(const std::string& folder, std::vector<std::string>& skipped) {
    std::vector<std::string> candidates = FindPluginCandidates(folder, skipped);
    std::sort(candidates.begin(), candidates.end());
    std::vector<PluginBundle> found;
    for (const std::string& candidate : candidates) {
        PluginBundle plugin;
        std::string error;
        if (ReadPluginBundle(candidate, plugin, error))
            found.push_back(std::move(plugin));
        else
            skipped.push_back(candidate + ": " + error);
    }
    return found;
}

} // namespace hostsim
