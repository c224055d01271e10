// The installable plug-in. Its PiPL resources are read back by a reader of this test's own, written
// from the published layouts (the Mac's resource fork, the PiPL property list), so that a fault in
// the generator is not hidden by the same fault in the host's reader. Then the bundle as built, the
// simulated host passing over bad bundles, and the install script.

#include "../foundation/temp_folder.h"
#include "hostsim/plugin_bundle.h"
#include "hostsim/sim_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path BuiltBundle = fs::path(QUILLO_PLUGINS_DIR) / "Quillo.plugin";

std::string Slurp(const fs::path& path) {
    return read_text(nimbit::file_path(path.string()));
}

void Spill(const fs::path& path, const std::string& bytes) {
    ASSERT_TRUE(write_text(nimbit::file_path(path.string()), bytes)) << path;
}

// Numbers and four-character codes in either byte order. A code is stored as a number, so it reads
// reversed from little-endian data.
struct Bytes {
    std::string_view s;
    bool little = false;
    uint32_t At(size_t at, size_t width) const {
        uint32_t v = 0;
        for (size_t i = 0; i < width; ++i)
            v = v << 8 | static_cast<uint8_t>(s.at(at + (little ? width - 1 - i : i)));
        return v;
    }
    uint32_t U16(size_t at) const { return At(at, 2); }
    uint32_t U32(size_t at) const { return At(at, 4); }
    std::string Code(size_t at) const {
        std::string code(s.substr(at, 4));
        if (little)
            std::reverse(code.begin(), code.end());
        return code;
    }
};

struct Property {
    std::string vendor, key;
    uint32_t id = 0, length = 0;
    std::string value; // the stated length's bytes
    bool operator==(const Property&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Property& p) {
    return out << p.vendor << "/" << p.key << " id " << p.id << " length " << p.length << " \"" << p.value
               << "\"";
}

// The property list from `at` (version, count, properties); each value is padded with zeros to four
// bytes and the list fills the data exactly.
std::vector<Property> Properties(Bytes b, size_t at) {
    EXPECT_EQ(b.U32(at), 0u) << "PiPL version";
    const uint32_t count = b.U32(at + 4);
    at += 8;
    std::vector<Property> out;
    for (uint32_t i = 0; i < count && at + 16 <= b.s.size(); ++i) {
        Property p{b.Code(at), b.Code(at + 4), b.U32(at + 8), b.U32(at + 12), {}};
        const size_t padded = (p.length + 3u) / 4 * 4;
        p.value = std::string(b.s.substr(at + 16, p.length));
        EXPECT_EQ(b.s.substr(at + 16 + p.length, padded - p.length), std::string(padded - p.length, '\0'))
            << p.key;
        at += 16 + padded;
        out.push_back(std::move(p));
    }
    EXPECT_EQ(at, b.s.size());
    return out;
}

// The build's version as the host reads it: major << 19 | minor << 15 | bug << 11, released (3 << 9).
uint32_t PackedVersion() {
    unsigned major = 0, minor = 0, bug = 0;
    std::sscanf(QUILLO_VERSION, "%u.%u.%u", &major, &minor, &bug);
    return major << 19 | minor << 15 | bug << 11 | 3u << 9;
}

std::string NumberBytes(uint32_t v, bool little) {
    std::string out(4, '\0');
    for (int i = 0; i < 4; ++i)
        out[little ? i : 3 - i] = static_cast<char>(v >> (8 * i));
    return out;
}

TEST(Pipl, ResourcesHoldEveryPropertyInEachPlatformsLayout) {
    const std::string file = Slurp(fs::path(QUILLO_PIPL_DIR) / "Quillo.rsrc");
    const Bytes b{file};
    const uint32_t dataOffset = b.U32(0), mapOffset = b.U32(4), dataLength = b.U32(8), mapLength = b.U32(12);
    EXPECT_EQ(dataOffset, 256u); // the header, then bytes reserved for the system
    EXPECT_EQ(mapOffset, dataOffset + dataLength);
    ASSERT_EQ(mapOffset + mapLength, file.size());
    EXPECT_EQ(file.substr(mapOffset, 16), file.substr(0, 16)); // the map starts with a copy of the header
    const size_t typeList = mapOffset + b.U16(mapOffset + 24);
    EXPECT_EQ(b.U16(typeList), 0u); // counts are stored less one: one type
    EXPECT_EQ(b.Code(typeList + 2), "PiPL");
    EXPECT_EQ(b.U16(typeList + 6), 0u); // one resource of it
    const size_t reference = typeList + b.U16(typeList + 8);
    EXPECT_EQ(b.U16(reference), 16000u);                          // its ID
    EXPECT_EQ(b.U16(reference + 2), 0xffffu);                     // no name
    EXPECT_EQ(mapOffset + b.U16(mapOffset + 26), reference + 12); // the (empty) name list follows
    const size_t at = dataOffset + (b.U32(reference + 4) & 0xffffff);
    const uint32_t length = b.U32(at);
    ASSERT_LE(at + 4 + length, mapOffset);
    // The Mac's strings are Pascal strings whose stated length leaves out the padding.
    const std::vector<Property> mac{
        {"8BIM", "kind", 0, 4, "AEgx"},
        {"8BIM", "name", 0, 7, "\x06Quillo"},
        {"8BIM", "catg", 0, 15, "\x0eGeneral Plugin"},
        {"8BIM", "vers", 0, 4, NumberBytes(PackedVersion(), false)},
        {"8BIM", "mi64", 0, 11, "\x0aPluginMain"},
        {"8BIM", "ma64", 0, 11, "\x0aPluginMain"},
    };
    EXPECT_EQ(Properties(Bytes{std::string_view(file).substr(at + 4, length)}, 0), mac);

    // Windows: the same little-endian after a version word; here the stated lengths include the
    // padding, and the entry point is a C string.
    const std::string data = Slurp(fs::path(QUILLO_PIPL_DIR) / "Quillo.pipl");
    const Bytes w{data, true};
    EXPECT_EQ(w.U16(0), 1u);
    const std::vector<Property> windows{
        {"8BIM", "kind", 0, 4, "xgEA"},
        {"8BIM", "name", 0, 8, std::string("\x06Quillo\0", 8)},
        {"8BIM", "catg", 0, 16, std::string("\x0eGeneral Plugin\0", 16)},
        {"8BIM", "vers", 0, 4, NumberBytes(PackedVersion(), true)},
        {"8BIM", "8664", 0, 12, std::string("PluginMain\0\0", 12)},
    };
    EXPECT_EQ(Properties(w, 2), windows);
}

TEST(Bundle, HasTheHostsLayoutAndKeys) {
    // The code itself is checked by the host loading it below.
    EXPECT_EQ(Slurp(BuiltBundle / "Contents/PkgInfo"), "eFKTFXTC");
    EXPECT_EQ(Slurp(BuiltBundle / "Contents/Resources/Quillo.rsrc"),
              Slurp(fs::path(QUILLO_PIPL_DIR) / "Quillo.rsrc"));
    const std::string plist = Slurp(BuiltBundle / "Contents/Info.plist");
    const std::pair<std::string, std::string> keys[] = {
        {"CFBundlePackageType", "eFKT"},     {"CFBundleSignature", "FXTC"},
        {"CFBundleExecutable", "Quillo"},    {"CFBundleShortVersionString", QUILLO_VERSION},
        {"CFBundleVersion", QUILLO_VERSION},
    };
    for (const auto& [key, value] : keys)
        EXPECT_NE(plist.find("<key>" + key + "</key>\n\t<string>" + value + "</string>"), std::string::npos)
            << key;
}

// ---- Plug-ins folders with bundles made from the built one.

std::string PiplJson(const std::string& kind, const std::string& name, const std::string& entry) {
    const std::string entries =
        entry.empty() ? "" : R"("macIntel64": ")" + entry + R"(", "macArm64": ")" + entry + "\"";
    return R"({"resourceId": 16000, "kind": ")" + kind + R"(", "name": ")" + name +
           R"(", "category": "General Plugin", "entryPoints": {)" + entries + "}}";
}

// A copy of the built bundle at path; with json, its resource file made from that description.
void MakeBundle(const fs::path& path, const std::string& json = {}) {
    fs::create_directories(path.parent_path());
    fs::copy(BuiltBundle, path, fs::copy_options::recursive);
    if (json.empty())
        return;
    const fs::path description = path.parent_path() / (path.stem().string() + ".json");
    Spill(description, json);
    const std::string command = "python3 '" QUILLO_SOURCE_DIR "/host/pipl/make_pipl.py' --json '" +
                                description.string() + "' --version " QUILLO_VERSION " --rsrc '" +
                                (path / "Contents/Resources/Quillo.rsrc").string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

TEST(PluginScan, PassesOverBadBundlesWithTheReason) {
    // A bundle of another kind is in the host's scene below.
    struct Case {
        const char* what;
        std::string json;
        std::function<void(std::string& fork)> spoil; // the resource file's bytes
        const char* remove;                           // a file below Contents
        const char* reason;
    };
    // clang-format off
    const Case cases[] = {
        {"no entry point", PiplJson("AEgx", "Quillo", ""), nullptr, nullptr, "no entry point for this processor"},
        {"resource file cut in its header", "", [](std::string& fork) { fork.resize(10); }, nullptr, "shorter than its header"},
        {"resource file cut in its data", "", [](std::string& fork) { fork.resize(300); }, nullptr, "truncated"},
        // Byte 259 is the low byte of the resource's stated length.
        {"PiPL shorter than its properties", "", [](std::string& fork) { fork[259] -= 20; }, nullptr, "PiPL truncated"},
        {"no resource file", "", nullptr, "Resources/Quillo.rsrc", "no PiPL resource"},
        {"no code", "", nullptr, "MacOS/Quillo", "no code"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        temp_folder plugins;
        const fs::path bundle = fs::path(plugins.path().to_string()) / "Effects/Quillo.plugin";
        const fs::path rsrc = bundle / "Contents/Resources/Quillo.rsrc";
        MakeBundle(bundle, c.json);
        if (c.spoil) {
            std::string fork = Slurp(rsrc);
            c.spoil(fork);
            Spill(rsrc, fork);
        }
        if (c.remove)
            fs::remove(bundle / "Contents" / c.remove);
        std::vector<std::string> skipped;
        EXPECT_TRUE(hostsim::ScanPlugins(plugins.path().to_string(), skipped).empty());
        ASSERT_EQ(skipped.size(), 1u);
        EXPECT_EQ(skipped[0].rfind(bundle.string() + ": ", 0), 0u) << skipped[0];
        EXPECT_NE(skipped[0].find(c.reason), std::string::npos) << skipped[0];
    }
}

// ---- The install script.

int Install(const std::string& arguments, const std::string& environment = {}) {
    const std::string command = environment + " bash '" QUILLO_SOURCE_DIR "/scripts/install.sh' " +
                                arguments + " --bundle '" + BuiltBundle.string() + "' >/dev/null 2>&1";
    return std::system(command.c_str());
}

TEST(InstallScript, InstallsIntoTheSimulatedHostWhichFindsAndLoadsItAmongOtherBundles) {
    temp_folder disk;
    hostsim::SimHost host(hostsim::LoadModelFile(QUILLO_SAMPLE_PROJECT), disk.path().to_string());
    host.Materialize();
    const fs::path installation = disk.path().to_string() + "/" + host.GetModel().installFolder;
    const fs::path panel = fs::path(disk.path().to_string()) / "Quillo.jsx";
    Spill(panel, "// panel\n");
    const fs::path installedPanel = installation / "Scripts/ScriptUI Panels/Quillo.jsx";
    ASSERT_EQ(Install("--into '" + installation.string() + "' --panel '" + panel.string() + "'"), 0);
    EXPECT_EQ(Slurp(installedPanel), "// panel\n");

    // Made out of path order. Bad/ holds one bundle the scan passes over and one whose PiPL names an
    // entry point the code does not have.
    const fs::path plugins = host.PluginsFolder();
    MakeBundle(plugins / "Zed/Other.plugin", PiplJson("AEgx", "Other", "PluginMain"));
    MakeBundle(plugins / "Bad/Kind.plugin", PiplJson("eFKT", "Quillo", "PluginMain"));
    MakeBundle(plugins / "Bad/Entry.plugin", PiplJson("AEgx", "Quillo", "QuilloMain"));
    std::vector<std::string> skipped;
    const std::vector<hostsim::PluginBundle> found = hostsim::ScanPlugins(plugins.string(), skipped);
    EXPECT_EQ(skipped, std::vector<std::string>{(plugins / "Bad/Kind.plugin").string() +
                                                ": PiPL kind 'eFKT' is not a host plug-in's"});
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0].bundle, (plugins / "Bad/Entry.plugin").string());
    EXPECT_EQ(found[1].code, (plugins / "Quillo.plugin/Contents/MacOS/Quillo").string());
    EXPECT_EQ(found[2].pipl.name, "Other");
    EXPECT_EQ(found[2].pipl.category, "General Plugin");
    EXPECT_EQ(found[2].pipl.version, PackedVersion());

    // No loadable plug-in: refused with every reason.
    EXPECT_FALSE(host.LoadPlugins((plugins / "Bad").string()));
    EXPECT_NE(host.loadError.find("Entry.plugin: missing QuilloMain"), std::string::npos) << host.loadError;
    EXPECT_NE(host.loadError.find("Kind.plugin: PiPL kind 'eFKT'"), std::string::npos) << host.loadError;
    EXPECT_TRUE(host.loadedBundle.empty());

    ASSERT_TRUE(host.LoadPlugins(plugins.string())) << host.loadError;
    EXPECT_EQ(host.loadedBundle, (plugins / "Quillo.plugin").string()); // running it is the host tests' part

    ASSERT_EQ(Install("--uninstall --into '" + installation.string() + "'"), 0);
    EXPECT_FALSE(fs::exists(plugins / "Quillo.plugin"));
    EXPECT_FALSE(fs::exists(installedPanel));
    EXPECT_TRUE(fs::is_directory(plugins)); // the host's own folders stay
}

TEST(InstallScript, ChoosesInstallationsByVersion) {
    temp_folder applications;
    const fs::path apps = applications.path().to_string();
    const std::string environment = "QUILLO_HOST_PREFIX='" + (apps / "Host ").string() + "'";
    for (const char* version : {"2024", "2025"})
        fs::create_directories(apps / ("Host " + std::string(version)));
    auto installed = [&](const char* version) {
        return fs::exists(apps / ("Host " + std::string(version)) /
                          "Plug-ins/Quillo.plugin/Contents/MacOS/Quillo");
    };
    ASSERT_EQ(Install("--version 2025", environment), 0);
    EXPECT_TRUE(installed("2025"));
    EXPECT_FALSE(installed("2024"));
    ASSERT_EQ(Install("", environment), 0);
    EXPECT_TRUE(installed("2024"));
    ASSERT_EQ(Install("--uninstall", environment), 0);
    EXPECT_FALSE(installed("2024") || installed("2025"));
    // Nothing to install into: an unknown version, a missing folder.
    EXPECT_NE(Install("--version 2023", environment), 0);
    EXPECT_NE(Install("--into '" + (apps / "missing").string() + "'"), 0);
}

} // namespace
