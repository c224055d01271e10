#include "hostsim/plugin_bundle.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace hostsim {

namespace {

namespace fs = std::filesystem;

// A resource file is small; anything larger is not one.
constexpr uintmax_t MaxResourceFile = 16u << 20;

uint32_t Big16(std::string_view s, size_t at) {
    return static_cast<uint32_t>(static_cast<uint8_t>(s[at])) << 8 | static_cast<uint8_t>(s[at + 1]);
}

uint32_t Big32(std::string_view s, size_t at) {
    return Big16(s, at) << 16 | Big16(s, at + 2);
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

bool ReadSmallFile(const fs::path& path, std::string& out) {
    std::error_code ec;
    const uintmax_t size = fs::file_size(path, ec);
    if (ec || size > MaxResourceFile)
        return false;
    std::ifstream in(path, std::ios::binary);
    out.resize(size);
    return in.read(out.data(), static_cast<std::streamsize>(size)).gcount() ==
           static_cast<std::streamsize>(size);
}

// CFBundleExecutable from Contents/Info.plist, or empty.
std::string BundleExecutable(const fs::path& bundle) {
    std::string plist;
    if (!ReadSmallFile(bundle / "Contents" / "Info.plist", plist))
        return {};
    const std::string key = "<key>CFBundleExecutable</key>";
    size_t at = plist.find(key);
    if (at == std::string::npos || (at = plist.find("<string>", at + key.size())) == std::string::npos)
        return {};
    at += 8;
    const size_t end = plist.find("</string>", at);
    return end == std::string::npos ? std::string() : plist.substr(at, end - at);
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
    if (data.size() < 8)
        return Fail(error, "PiPL shorter than its header");
    if (Big32(data, 0) != 0)
        return Fail(error, "PiPL of unknown version " + std::to_string(Big32(data, 0)));
    const uint64_t count = Big32(data, 4);
    size_t at = 8;
    for (uint64_t i = 0; i < count; ++i) {
        if (data.size() - at < 16)
            return Fail(error, "PiPL truncated at property " + std::to_string(i + 1));
        const std::string_view vendor = data.substr(at, 4), key = data.substr(at + 4, 4);
        const uint32_t length = Big32(data, at + 12);
        at += 16;
        if (length > data.size() - at)
            return Fail(error, "PiPL property '" + std::string(key) + "' runs past the end");
        const std::string_view value = data.substr(at, length);
        // Values are padded to four bytes; the last one's padding may be cut off.
        at += std::min<size_t>((length + 3u) & ~3u, data.size() - at);
        if (vendor != "8BIM")
            continue;
        bool ok = true;
        if (key == "kind" || key == "vers") {
            ok = length == 4;
            if (ok && key == "kind")
                out.kind = value;
            else if (ok)
                out.version = Big32(value, 0);
        } else if (key == "name")
            ok = PascalString(value, out.name);
        else if (key == "catg")
            ok = PascalString(value, out.category);
        else if (key == "mi64" || key == "ma64")
            ok = PascalString(value, out.entryPoints[std::string(key)]);
        if (!ok)
            return Fail(error, "PiPL property '" + std::string(key) + "' is malformed");
    }
    return true;
}

const char* PlatformEntryKey() {
#if defined(__aarch64__) || defined(__arm64__)
    return "ma64";
#else
    return "mi64";
#endif
}

bool ReadPluginBundle(const std::string& bundle, PluginBundle& out, std::string& error) {
    std::error_code ec;
    const fs::path contents = fs::path(bundle) / "Contents";
    std::vector<fs::path> resourceFiles;
    for (fs::directory_iterator it(contents / "Resources", ec), end; !ec && it != end; it.increment(ec)) {
        if (it->path().extension() == ".rsrc")
            resourceFiles.push_back(it->path());
    }
    std::sort(resourceFiles.begin(), resourceFiles.end());
    bool found = false;
    for (const fs::path& file : resourceFiles) {
        std::string fork;
        std::vector<std::string_view> pipls;
        if (!ReadSmallFile(file, fork))
            return Fail(error, file.filename().string() + ": cannot be read");
        if (!ReadResources(fork, "PiPL", pipls, error) ||
            (!pipls.empty() && !ParsePipl(pipls.front(), out.pipl, error))) {
            error = file.filename().string() + ": " + error;
            return false;
        }
        if ((found = !pipls.empty()))
            break;
    }
    if (!found)
        return Fail(error, "no PiPL resource");
    if (out.pipl.kind != PluginKind)
        return Fail(error, "PiPL kind '" + out.pipl.kind + "' is not a host plug-in's");
    auto entry = out.pipl.entryPoints.find(PlatformEntryKey());
    if (entry == out.pipl.entryPoints.end() || entry->second.empty())
        return Fail(error,
                    std::string("PiPL names no entry point for this processor (") + PlatformEntryKey() + ")");
    const std::string executable = BundleExecutable(bundle);
    if (executable.empty())
        return Fail(error, "Info.plist names no CFBundleExecutable");
    out.bundle = bundle;
    out.code = (contents / "MacOS" / executable).string();
    if (!fs::is_regular_file(out.code, ec))
        return Fail(error, "no code at Contents/MacOS/" + executable);
    return true;
}

std::vector<PluginBundle> ScanPlugins(const std::string& folder, std::vector<std::string>& skipped) {
    std::vector<std::string> bundles;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, ec), end;
         !ec && it != end; it.increment(ec)) {
        if (it->path().extension() == ".plugin" && it->is_directory(ec)) {
            bundles.push_back(it->path().string());
            it.disable_recursion_pending(); // a bundle's insides are its own
        }
    }
    if (ec)
        skipped.push_back(folder + ": " + ec.message());
    std::sort(bundles.begin(), bundles.end());
    std::vector<PluginBundle> found;
    for (const std::string& bundle : bundles) {
        PluginBundle plugin;
        std::string error;
        if (ReadPluginBundle(bundle, plugin, error))
            found.push_back(std::move(plugin));
        else
            skipped.push_back(bundle + ": " + error);
    }
    return found;
}

} // namespace hostsim
