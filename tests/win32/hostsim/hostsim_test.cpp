// The simulated host on Windows: plug-ins found as *.aex files by their PiPL resources, loaded
// through the entry point the PiPL names, driven through their hooks, and the main window whose
// menu bar the plug-in applies effects through.

#include "host/host_platform.h"
#include "hostsim/plugin_bundle.h"
#include "hostsim/sim_host.h"
#include "hostsim/sim_platform.h"
#include "tests/foundation/temp_folder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using hostsim::U8Path;

const std::string Plugins = TEST_PLUGINS_DIR;

// A Plug-ins folder of the test's own: each file copied to its place below it.
std::string MakePluginsFolder(std::initializer_list<std::pair<std::string, std::string>> files) {
    const std::string folder = hostsim::NewTemporaryFolder("hostsim-test") + "/Plug-ins";
    for (const auto& [source, target] : files) {
        fs::create_directories(U8Path(folder + "/" + target).parent_path());
        fs::copy_file(U8Path(source), U8Path(folder + "/" + target));
    }
    return folder;
}

TEST(Pipl, ReadBackFromTheDllsResources) {
    hostsim::PluginBundle plugin;
    std::string error;
    ASSERT_TRUE(hostsim::ReadPluginBundle(Plugins + "/test_plugin.aex", plugin, error)) << error;
    EXPECT_EQ(std::tuple(plugin.pipl.kind, plugin.pipl.name, plugin.pipl.category, plugin.pipl.version,
                         plugin.code),
              std::tuple("AEgx", "Test Plug-in", "General Plugin", 1u << 19 | 2u << 15 | 3u << 11 | 3u << 9,
                         Plugins + "/test_plugin.aex"));
    EXPECT_EQ(plugin.pipl.entryPoints, (std::map<std::string, std::string>{{"8664", "TestMain"}}));
}

TEST(Pipl, DamagedOrMissingIsRefusedWithTheReason) {
    const std::string good = read_text(nimbit::file_path(TEST_PIPL));
    ASSERT_GT(good.size(), 40u);
    std::string wrongKind = good, unterminated = good, badVersion = good;
    wrongKind.replace(wrongKind.find("xgEA"), 4, "pgEA"); // reversed, as Windows stores codes
    unterminated.replace(good.size() - 4, 4, "xxxx");     // the entry point's C string, padding and all
    badVersion[2] = 7;
    // clang-format off
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {"cut in its header",      good.substr(0, 9),               "shorter than its header"},
        {"cut in a property",      good.substr(0, 20),              "truncated at property 1"},
        {"cut in a value",         good.substr(0, good.size() - 12), "runs past the end"},
        {"of another version",     badVersion,                      "unknown version 7"},
        {"of another kind",        wrongKind,                       "kind 'AEgp'"},
        {"with no C string",       unterminated,                    "'8664' is malformed"},
    };
    // clang-format on
    for (const auto& [what, data, reason] : cases) {
        SCOPED_TRACE(what);
        hostsim::Pipl pipl;
        std::string error;
        EXPECT_FALSE(hostsim::ParsePipl(data, pipl, error) && hostsim::CheckPluginPipl(pipl, error));
        EXPECT_NE(error.find(reason), std::string::npos) << error;
    }
}

// Every *.aex below the folder, in subfolders too (one with a non-ASCII name), in path order; the
// others passed over with the reason.
TEST(Pipl, ScanFindsEveryUsableAexBelowThePlugInsFolder) {
    const std::string folder = MakePluginsFolder({{Plugins + "/test_plugin.aex", "Effekte Übersicht/b.AEX"},
                                                  {Plugins + "/test_plugin.aex", "a.aex"},
                                                  {Plugins + "/test_plugin_nopipl.aex", "c/nopipl.aex"},
                                                  {Plugins + "/test_plugin.aex", "c/ignored.dll"}});
    std::ofstream(U8Path(folder + "/fake.aex")) << "not a DLL";
    std::vector<std::string> skipped;
    const std::vector<hostsim::PluginBundle> found = hostsim::ScanPlugins(folder, skipped);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].bundle, folder + "/Effekte Übersicht/b.AEX");
    EXPECT_EQ(found[1].bundle, folder + "/a.aex");
    ASSERT_EQ(skipped.size(), 2u);
    EXPECT_EQ(skipped[0], folder + "/c/nopipl.aex: no PiPL resource");
    EXPECT_EQ(skipped[1].rfind(folder + "/fake.aex: not a readable DLL", 0), 0u) << skipped[1];
}

// A session over the sample project with the test plug-in loaded and started.
struct Session {
    hostsim::SimHost host{hostsim::LoadModelFile(QUILLO_SAMPLE_PROJECT),
                          hostsim::NewTemporaryFolder("hostsim-test")};
    explicit Session(const std::string& plugin = Plugins + "/test_plugin.aex") {
        host.Materialize();
        EXPECT_TRUE(host.LoadPlugins(MakePluginsFolder({{plugin, "plugin.aex"}}))) << host.loadError;
    }
};

// Loaded through the PiPL's entry point, the plug-in is handed the main window through the utility
// suite. That window's menu bar mirrors the host's main menu, and the plug-in's own Windows platform
// code (host/host_platform_win32.cpp) applies effects through it: an enabled effect's item applies it
// to the selected layer, as on the Mac; a disabled category is there, greyed, and chooses nothing.
// Then the hooks run, and the plug-in's every suite is released.
TEST(Host, LoadsThroughThePiplsEntryPointAppliesThroughTheMenuBarAndCallsTheHooks) {
    Session s;
    EXPECT_EQ(s.host.ScriptInitialize(), "execute");
    ASSERT_EQ(s.host.StartPlugin(), A_Err_NONE);
    EXPECT_EQ(s.host.idleHooks.size(), 1u);
    EXPECT_EQ(s.host.deathHooks.size(), 1u);
    std::vector<TaggedData> args{hostsim::ScriptString("window")};
    TaggedData handed{};
    EXPECT_EQ(s.host.ScriptExecute(args, handed), 0);
    EXPECT_EQ(handed.data.intval, static_cast<int32_t>(reinterpret_cast<intptr_t>(s.host.MainWindow())));

    const HMENU bar = GetMenu(static_cast<HWND>(s.host.MainWindow()));
    ASSERT_EQ(GetMenuItemCount(bar), static_cast<int>(s.host.MainMenu().submenu.size()));
    // Every category is there (Obsolete greyed: the platform code would choose from it otherwise).
    EXPECT_EQ(GetMenuItemCount(GetSubMenu(bar, 5)),
              static_cast<int>(s.host.MainMenu().submenu[5]->submenu.size()));
    HostPlatform::SetMainWindow(s.host.MainWindow());
    for (const auto& [category, name, applied] :
         {std::tuple{"Blur & Sharpen", "Gaussian Blur", true}, std::tuple{"Obsolete", "Basic 3D", false},
          std::tuple{"Audio", "Bass & Treble", true}}) {
        SCOPED_TRACE(name);
        const int sent = s.host.menuActionsSent;
        EXPECT_EQ(HostPlatform::ChooseEffectMenuItem(category, name), applied);
        EXPECT_EQ(s.host.menuActionsSent, sent + applied);
        EXPECT_EQ(s.host.FindEffect(s.host.ActiveLayer()->effects.back())->name == name, applied);
    }
    for (bool active : {false, true, false}) {
        s.host.GetModel().active = active;
        s.host.ApplyActivity();
        EXPECT_EQ(HostPlatform::IsHostActive(), active);
    }
    // The host's executable where the build put it, as the platform code reads it.
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    EXPECT_TRUE(fs::equivalent(U8Path(s.host.ExecutablePath()), fs::path(self)));
    EXPECT_EQ(HostPlatform::ExecutablePath(), s.host.ExecutablePath());
    EXPECT_EQ(HostPlatform::ExecutablePath().find('\\'), std::string::npos);
    EXPECT_TRUE(fs::is_directory(U8Path(s.host.HostPresetsFolder() + "/Behaviors")));

    s.host.RunIdle(3);
    s.host.RunDeath();
    EXPECT_EQ(s.host.scripts, (std::vector<std::string>{"idle", "idle", "idle", "death"}));
    EXPECT_EQ(s.host.Outstanding(), 0);
}

#ifdef QUILLO_AEX
// How many names and how many entries a loaded module's export directory holds (more entries than
// names: some are exported by ordinal only).
std::pair<DWORD, DWORD> ExportCounts(HMODULE module) {
    const auto* base = reinterpret_cast<const BYTE*>(module);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const IMAGE_DATA_DIRECTORY& entry = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (entry.VirtualAddress == 0)
        return {0, 0};
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + entry.VirtualAddress);
    return {exports->NumberOfNames, exports->NumberOfFunctions};
}

// Quillo.aex itself: the six exports and nothing else; found by its PiPL and started through the x64
// entry point that names, asking for the main window; its first idle ticks create the popup and
// collect the catalogue (every installed effect's name read once), and everything it acquired is
// released when it dies (which its hooks, registered by PluginMain alone, make so; how many there
// are, and the script functions it names, are the POSIX plug-in tests' part).
TEST(Quillo, LoadsThroughItsPiplCollectsTheCatalogueAndShutsDownCleanly) {
    Session s(QUILLO_AEX);
    const HMODULE loaded = GetModuleHandleW(L"plugin.aex");
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(ExportCounts(loaded), (std::pair<DWORD, DWORD>{6, 6}));
    for (const char* name :
         {"ESFreeMem", "ESGetVersion", "ESInitialize", "ESTerminate", "PluginMain", "execute"})
        EXPECT_NE(GetProcAddress(loaded, name), nullptr) << name;
    ASSERT_EQ(s.host.StartPlugin(), A_Err_NONE);
    EXPECT_GT(s.host.acquired["AEGP Utility Suite/11"], 0); // for the main window
    s.host.RunIdle(3);
    EXPECT_EQ(s.host.effectNamesRead, static_cast<int>(s.host.GetModel().effects.size()));
    s.host.RunDeath();
    s.host.ScriptTerminate();
    EXPECT_EQ(s.host.Outstanding(), 0);
}
#endif

} // namespace
