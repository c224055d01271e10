#pragma once

// How the host finds its plug-ins: bundles (<name>.plugin/Contents/...) anywhere below a Plug-ins
// folder, each described by a PiPL resource (plug-in property list) in Contents/Resources/*.rsrc,
// the Mac's resource-fork layout. Readers here take untrusted bytes: every offset and count is
// checked against the data before it is used, and a failure is a reason, never an exception.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace hostsim {

// The resource data of every resource of one four-character type in a resource fork, in the map's
// order. Returns false and says why when the fork is malformed.
bool ReadResources(std::string_view fork, std::string_view type, std::vector<std::string_view>& out,
                   std::string& error);

struct Pipl {
    std::string kind; // four characters, 'AEgx' for a plug-in that talks to the host's AEGP suites
    std::string name, category;
    uint32_t version = 0;
    std::map<std::string, std::string> entryPoints; // by property key: "mi64", "ma64"
};

// A PiPL resource as the Mac stores it (big-endian). Properties of unknown keys or of another
// vendor are skipped.
bool ParsePipl(std::string_view data, Pipl& out, std::string& error);

// The entry point's property key for the processor this runs on: Intel 64-bit ("mi64"), ARM 64-bit
// ("ma64").
const char* PlatformEntryKey();

inline constexpr std::string_view PluginKind = "AEgx";

struct PluginBundle {
    std::string bundle; // the .plugin folder
    std::string code;   // Contents/MacOS/<CFBundleExecutable>
    Pipl pipl;
};

// Checks one bundle: its code and a PiPL of the right kind that names an entry point for this
// processor. False with the reason otherwise.
bool ReadPluginBundle(const std::string& bundle, PluginBundle& out, std::string& error);

// Every usable bundle below folder, in path order; each skipped bundle adds "<path>: <reason>" to
// skipped.
std::vector<PluginBundle> ScanPlugins(const std::string& folder, std::vector<std::string>& skipped);

} // namespace hostsim
