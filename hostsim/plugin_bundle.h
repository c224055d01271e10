#pragma once

// How the host finds its plug-ins, each described by a PiPL resource (plug-in property list): on the
// Mac and Linux bundles (<name>.plugin/Contents/...) anywhere below a Plug-ins folder, the PiPL in
// Contents/Resources/*.rsrc in the Mac's resource-fork layout (plugin_scan_posix.cpp); on Windows
// DLLs named *.aex, the PiPL a resource of the DLL (plugin_scan_win32.cpp). Readers here take
// untrusted bytes: every offset and count is checked against the data before it is used, and a
// failure is a reason, never an exception.

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
    std::map<std::string, std::string> entryPoints; // by property key: "mi64", "ma64", "8664"
};

// A PiPL resource as the Mac stores it (big-endian) or as Windows does (a leading 16-bit 1, then
// little-endian with four-character codes reversed). Properties of unknown keys or of another
// vendor are skipped.
bool ParsePipl(std::string_view data, Pipl& out, std::string& error);

// The entry point's property key for the platform this runs on: the Mac on Intel ("mi64") or ARM
// ("ma64"), Windows x64 ("8664").
const char* PlatformEntryKey();

inline constexpr std::string_view PluginKind = "AEgx";

// A PiPL of the right kind that names an entry point for this platform; false with the reason.
bool CheckPluginPipl(const Pipl& pipl, std::string& error);

struct PluginBundle {
    std::string bundle; // the .plugin folder; on Windows the .aex
    std::string code;   // Contents/MacOS/<CFBundleExecutable>; on Windows the .aex
    Pipl pipl;
};

// Checks one bundle (on Windows one .aex): its code and a PiPL of the right kind that names an
// entry point for this platform. False with the reason otherwise.
bool ReadPluginBundle(const std::string& bundle, PluginBundle& out, std::string& error);

// The bundles (on Windows .aex files) below folder, unchecked; a folder that cannot be listed adds
// "<folder>: <reason>" to skipped.
std::vector<std::string> FindPluginCandidates(const std::string& folder, std::vector<std::string>& skipped);

// Every usable bundle (on Windows .aex) below folder, in path order; each skipped bundle adds "<path>:
// <reason>" to skipped.
std::vector<PluginBundle> ScanPlugins(const std::string& folder, std::vector<std::string>& skipped);

} // namespace hostsim
