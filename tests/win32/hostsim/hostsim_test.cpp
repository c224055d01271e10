// The simulated host on Windows: plug-ins found as *.aex files by their PiPL resources, loaded
// through the entry point the PiPL names, driven through their hooks, and the main window whose
// menu bar the plug-in applies effects through.

#include "host/host_platform.h"
#include "hostsim/plugin_bundle.h"
#include "hostsim/sim_host.h"
#include "hostsim/sim_platform.h"
#include "nimbit/utils/wide_string_win32.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;
using hostsim::U8Path;

const std::string Plugins = TEST_PLUGINS_DIR;

std::string ReadBytes(const std::string& path) {
    std::ifstream in(U8Path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

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
    EXPECT_EQ(plugin.pipl.kind, "AEgx");
    EXPECT_EQ(plugin.pipl.name, "Test Plug-in");
    EXPECT_EQ(plugin.pipl.category, "General Plugin");
    EXPECT_EQ(plugin.pipl.version, 1u << 19 | 2u << 15 | 3u << 11 | 3u << 9);
    EXPECT_EQ(plugin.pipl.entryPoints, (std::map<std::string, std::string>{{"8664", "TestMain"}}));
    EXPECT_EQ(plugin.code, Plugins + "/test_plugin.aex");
}

TEST(Pipl, DamagedOrMissingIsRefusedWithTheReason) {
    const std::string good = ReadBytes(TEST_PIPL);
    ASSERT_GT(good.size(), 40u);
    std::string wrongKind = good, unterminated = good, badVersion = good;
    wrongKind.replace(wrongKind.find("xgEA"), 4, "pgEA"); // reversed, as Windows stores codes
    unterminated.back() = 'x';                            // the entry point's C string, padding and all
    unterminated[unterminated.size() - 2] = 'x';
    unterminated[unterminated.size() - 3] = 'x';
    unterminated[unterminated.size() - 4] = 'x';
    badVersion[2] = 7;
    struct Case {
        const char* what;
        std::string data;
        const char* reason;
    };
    // clang-format off
    const Case cases[] = {
        {"cut in its header",      good.substr(0, 9),               "shorter than its header"},
        {"cut in a property",      good.substr(0, 20),              "truncated at property 1"},
        {"cut in a value",         good.substr(0, good.size() - 12), "runs past the end"},
        {"of another version",     badVersion,                      "unknown version 7"},
        {"of another kind",        wrongKind,                       "kind 'AEgp'"},
        {"with no C string",       unterminated,                    "'8664' is malformed"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        hostsim::Pipl pipl;
        std::string error;
        EXPECT_FALSE(hostsim::ParsePipl(c.data, pipl, error) && hostsim::CheckPluginPipl(pipl, error));
        EXPECT_NE(error.find(c.reason), std::string::npos) << error;
    }
}

// Every *.aex below the folder, in subfolders too (one with a non-ASCII name), in path order; the
// others passed over with the reason.
TEST(Pipl, ScanFindsEveryUsableAexBelowThePlugInsFolder) {
    const std::string fake = hostsim::NewTemporaryFolder("hostsim-test") + "/fake.aex";
    std::ofstream(U8Path(fake)) << "not a DLL";
    const std::string folder = MakePluginsFolder({{Plugins + "/test_plugin.aex", "Effekte Übersicht/b.AEX"},
                                                  {Plugins + "/test_plugin.aex", "a.aex"},
                                                  {Plugins + "/test_plugin_nopipl.aex", "c/nopipl.aex"},
                                                  {Plugins + "/test_plugin.aex", "c/ignored.dll"},
                                                  {fake, "fake.aex"}});
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
    long Execute(const char* word) {
        std::vector<TaggedData> args{hostsim::ScriptString(word)};
        TaggedData result{};
        EXPECT_EQ(host.ScriptExecute(args, result), 0) << word;
        return result.data.intval;
    }
};

TEST(Host, LoadsThroughThePiplsEntryPointAndCallsTheHooks) {
    Session s;
    EXPECT_EQ(s.host.ScriptInitialize(), "execute");
    ASSERT_EQ(s.host.StartPlugin(), A_Err_NONE);
    EXPECT_EQ(s.host.idleHooks.size(), 1u);
    EXPECT_EQ(s.host.deathHooks.size(), 1u);
    s.host.RunIdle(3);
    s.host.RunDeath();
    EXPECT_EQ(s.host.scripts, (std::vector<std::string>{"idle", "idle", "idle", "death"}));
    EXPECT_EQ(s.host.Outstanding(), 0);
    // The main window through the utility suite, and the host's executable where the build put it.
    ASSERT_NE(s.host.MainWindow(), nullptr);
    EXPECT_EQ(s.Execute("window"), static_cast<int32_t>(reinterpret_cast<intptr_t>(s.host.MainWindow())));
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    EXPECT_TRUE(fs::equivalent(U8Path(s.host.ExecutablePath()), fs::path(self)));
    EXPECT_TRUE(fs::is_directory(U8Path(s.host.HostPresetsFolder() + "/Behaviors")));
}

TEST(Host, ActivityIsTheMainWindowInTheForeground) {
    Session s;
    ASSERT_EQ(s.host.StartPlugin(), A_Err_NONE);
    for (bool active : {true, false, true}) {
        SCOPED_TRACE(active);
        s.host.GetModel().active = active;
        EXPECT_EQ(s.Execute("active"), active ? 1 : 0);
    }
}

// The menu bar's item text, '&&' read as the '&' it shows.
std::string MenuText(HMENU menu, int index) {
    wchar_t text[256] = {};
    GetMenuStringW(menu, static_cast<UINT>(index), text, 256, MF_BYPOSITION);
    const std::string shown = nimbit::narrow(text);
    std::string out;
    for (size_t i = 0; i < shown.size(); ++i) {
        if (shown.compare(i, 2, "&&") != 0)
            out += shown[i];
    }
    return out;
}

int FindItem(HMENU menu, const std::string& title) {
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        if (MenuText(menu, i) == title)
            return i;
    }
    return -1;
}

// What choosing an item of the Effect menu does: an enabled effect's item applies the effect to the
// selected layer, as on the Mac; a disabled category's item is there, greyed.
TEST(Host, TheMainWindowsMenuBarIsTheMainMenu) {
    Session s;
    const HMENU bar = GetMenu(static_cast<HWND>(s.host.MainWindow()));
    ASSERT_NE(bar, nullptr);
    ASSERT_EQ(GetMenuItemCount(bar), static_cast<int>(s.host.MainMenu().submenu.size()));
    ASSERT_EQ(MenuText(bar, 5), "Effect");
    const HMENU effects = GetSubMenu(bar, 5);
    struct Case {
        const char* category;
        const char* name;
        bool grayed;
    };
    for (const Case& c : {Case{"Blur & Sharpen", "Gaussian Blur", false}, Case{"Obsolete", "Basic 3D", true},
                          Case{"Audio", "Bass & Treble", false}}) {
        SCOPED_TRACE(c.name);
        const int category = FindItem(effects, c.category);
        ASSERT_GE(category, 0);
        EXPECT_EQ((GetMenuState(effects, category, MF_BYPOSITION) & MF_GRAYED) != 0, c.grayed);
        const HMENU items = GetSubMenu(effects, category);
        const int item = FindItem(items, c.name);
        ASSERT_GE(item, 0);
        const int sent = s.host.menuActionsSent;
        SendMessageW(static_cast<HWND>(s.host.MainWindow()), WM_COMMAND,
                     MAKEWPARAM(GetMenuItemID(items, item), 0), 0);
        EXPECT_EQ(s.host.menuActionsSent, sent + 1);
        hostsim::Layer* layer = s.host.ActiveLayer();
        ASSERT_NE(layer, nullptr);
        ASSERT_FALSE(layer->effects.empty());
        EXPECT_EQ(s.host.FindEffect(layer->effects.back())->name, c.name);
    }
}

// The plug-in's own Windows platform code (host/host_platform_win32.cpp) against the main window:
// the window the utility suite hands out, its menu bar, the foreground.
TEST(Host, ThePluginsPlatformCodeAppliesThroughTheMainWindow) {
    Session s;
    ASSERT_EQ(s.host.StartPlugin(), A_Err_NONE);
    HostPlatform::SetMainWindow(s.host.MainWindow());
    EXPECT_TRUE(HostPlatform::ChooseEffectMenuItem("blur & sharpen", "GAUSSIAN BLUR"));
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Obsolete", "Basic 3D")); // a greyed category
    EXPECT_EQ(s.host.menuActionsSent, 1);
    EXPECT_EQ(s.host.FindEffect(s.host.ActiveLayer()->effects.back())->name, "Gaussian Blur");
    EXPECT_EQ(HostPlatform::ExecutablePath(), s.host.ExecutablePath());
    for (bool active : {false, true}) {
        s.host.GetModel().active = active;
        s.host.ApplyActivity();
        EXPECT_EQ(HostPlatform::IsHostActive(), active);
    }
}

#ifdef QUILLO_AEX
// Quillo.aex itself: found by its PiPL, started, asking for the main window, and everything it
// acquired released when it dies.
TEST(Quillo, LoadsThroughItsPiplAndShutsDownCleanly) {
    Session s(QUILLO_AEX);
    EXPECT_EQ(s.host.ScriptInitialize(), "execute");
    ASSERT_EQ(s.host.StartPlugin(), A_Err_NONE);
    EXPECT_EQ(s.host.idleHooks.size(), 1u);
    EXPECT_EQ(s.host.deathHooks.size(), 1u);
    EXPECT_GT(s.host.acquired["AEGP Utility Suite/11"], 0); // for the main window
    s.host.RunDeath();
    s.host.ScriptTerminate();
    EXPECT_EQ(s.host.Outstanding(), 0);
}

// Its first idle ticks create the popup and collect the catalogue: every installed effect's name
// read once.
TEST(Quillo, CollectsTheCatalogueOnItsFirstIdleTicks) {
    Session s(QUILLO_AEX);
    ASSERT_EQ(s.host.StartPlugin(), A_Err_NONE);
    s.host.RunIdle(3);
    EXPECT_EQ(s.host.effectNamesRead, static_cast<int>(s.host.GetModel().effects.size()));
    s.host.RunDeath();
    s.host.ScriptTerminate();
    EXPECT_EQ(s.host.Outstanding(), 0);
}
#endif

} // namespace
