// The controller on the simulated host: its hooks, the host's names, the script words and the global
// shortcut as the idle hook polls it (keys fed to the offscreen keyboard).
#include "host/host_platform.h"
#include "host/script_bridge.h"
#include "host/shortcut_chord.h"
#include "host_session.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "popup/effect_alias.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <tuple>

#include <cstdio>
#include <set>
#include <unistd.h>

namespace {

// An integer result's whole eight bytes.
int64_t Payload(const TaggedData& value) {
    int64_t bits = 0;
    std::memcpy(&bits, &value.data, sizeof bits);
    return bits;
}

// A started session with a controller on it.
struct ControllerTest : ::testing::Test {
    HostSession session;
    hostsim::SimHost& host = session.Start();
    EffectsPopup c{host.Basic(), 7, AeVersionCC2018};
};

struct WindowedController : ControllerTest {
    void SetUp() override { RecordingWindow::Install(); }
    void TearDown() override { RecordingWindow::Uninstall(); }
};

// A started controller's hooks are the plug-in tests' part; with the UI suppressed there are none.
TEST(Controller, RegistersNoHooksWhenUiIsSuppressed) {
    HostSession session;
    hostsim::SimHost& host = session.Start();
    host.GetModel().suppressInteractiveUI = true;
    EffectsPopup inert(host.Basic(), 7, AeVersionCC2018);
    EXPECT_TRUE(host.idleHooks.empty() && host.deathHooks.empty() && host.Outstanding() == 0);
}

TEST_F(ControllerTest, WithoutAWindowCommandsAnswerAllOnes) {
    c.IdleHook(); // no window factory: nothing to create
    EXPECT_FALSE(c.HasPopupWindow());
    for (uint32_t kind = 0; kind <= 8; ++kind)
        EXPECT_EQ(c.Execute(PopupCommand{kind}), NoCommandResult);
    c.DeathHook(); // nothing to save, nothing to fail
    EXPECT_FALSE(nimbit::file_stats(session.folder / "Library/Application Support/Tarvelo").exists);
}

TEST_F(ControllerTest, HostNamesAndBitDepth) {
    hostsim::Project& project = *host.GetModel().projects[0];
    // clang-format off
    const std::pair<const char*, const char*> names[] = {{"Shot.aep", "Shot"}, {"Shot.AEP", "Shot"},
        {"Shot.v2", "Shot.v2"}, {"shot.v2.aep", "shot.v2"}, {".aep", ""}, {"", "Unknown"},
        {"Caf\xC3\xA9.aep", "Caf\xC3\xA9"}};
    // clang-format on
    for (auto [name, shown] : names) {
        project.name = name;
        EXPECT_EQ(c.GetProjName(c.GetCurrentProject()), shown) << name;
    }
    EXPECT_EQ(c.GetCompName(c.GetActiveComp()), "Main");
    EXPECT_EQ(c.GetLayerName(c.GetActiveLayer()), "Title");
    SelectOnly(host, "");
    host.ActiveItem()->layers[1]->selected = true;
    EXPECT_EQ(c.GetLayerName(c.GetActiveLayer()), "plate.mov"); // no name of its own: the source's
    host.ActiveItem()->layers[1]->sourceItem = 0;
    EXPECT_EQ(c.GetLayerName(c.GetActiveLayer()), "Unknown");
    EXPECT_EQ(c.GetProjName(nullptr) + c.GetCompName(nullptr) + c.GetLayerName(nullptr), "");

    // Lights and cameras are no active layer.
    // clang-format off
    const std::pair<const char*, bool> layers[] = {{"Title", true}, {"Burst", true}, {"Camera 1", false},
        {"Key Light", false}, {"", false}};
    // clang-format on
    for (auto [name, isLayer] : layers) {
        SelectOnly(host, name);
        EXPECT_EQ(c.GetActiveLayer() != nullptr, isLayer) << name;
    }
    EXPECT_EQ(c.GetProjectBitDepth(), 1);
    host.GetModel().projects[0]->activeItem = 1; // footage is not a composition
    EXPECT_EQ(c.GetActiveComp(), nullptr);
    EXPECT_EQ(c.GetActiveLayer(), nullptr);
    host.GetModel().projects.clear(); // no project: the script engine answers
    for (auto [answer, depth] : {std::pair{"32", 2}, {"16", 1}, {"8", 0}, {"", 2}, {"8 bits", 2}}) {
        host.GetModel().bitsPerChannel = answer;
        EXPECT_EQ(c.GetProjectBitDepth(), depth) << answer;
    }
    EXPECT_EQ(host.liveMemHandles + host.Outstanding(), 0);
}

TEST_F(WindowedController, FirstIdleTickCreatesTheWindowWithTheCatalogue) {
    c.IdleHook();
    c.IdleHook();
    EXPECT_EQ(RecordingWindow::made, 1);
    EXPECT_EQ(RecordingWindow::catalogueSizes, (std::vector<size_t>{8}));
    EXPECT_TRUE(nimbit::file_stats(session.folder / "Library/Application Support/Tarvelo").exists);

    c.CustomEvent(5); // the popup asks for a fresh catalogue
    EXPECT_EQ(RecordingWindow::catalogueSizes, (std::vector<size_t>{8, 8}));
    c.CustomEvent(0); // a capture request is not a catalogue refresh
    EXPECT_EQ(RecordingWindow::catalogueSizes.size(), 2u);

    c.DeathHook();
    EXPECT_EQ(std::pair(RecordingWindow::filesWritten, RecordingWindow::destroyed), std::pair(1, 1));
    EXPECT_FALSE(c.HasPopupWindow());
    EXPECT_EQ(host.Outstanding(), 0);
}

// Each script word reaches the window as its command, with the host's names, and answers as the
// panel expects.
TEST_F(WindowedController, ScriptWordsReachTheWindowAsTheirCommand) {
    c.IdleHook();
    constexpr uint32_t none = 99;
    using hostsim::ScriptString;
    const struct {
        std::vector<TaggedData> args;
        uint32_t kind;
        int32_t type;
        int64_t payload; // for integers
    } cases[] = {
        // clang-format off
        {{ScriptString("shortcut"), hostsim::ScriptInteger(3)}, PopupCommand::SaveSettings, kTypeUndefined, 0},
        {{ScriptString("news")}, PopupCommand::NewsCount, kTypeInteger, 12},
        {{ScriptString("screenshot")}, PopupCommand::Screenshot, kTypeUndefined, 0},
        {{ScriptString("export")}, PopupCommand::Export, kTypeUndefined, 0},
        {{ScriptString("gallery")}, PopupCommand::Gallery, kTypeUndefined, 0},
        {{ScriptString("preferences")}, PopupCommand::Preferences, kTypeInteger, 3}, // the choice
        {{ScriptString("logo")}, PopupCommand::Logo, kTypeUndefined, 0},
        {{ScriptString("requeststatus")}, none, kTypeScript, 0},
        {{ScriptString("Shortcut")}, none, kTypeInteger, -1},
        {{ScriptString("")}, none, kTypeInteger, -1},
        // clang-format on
    };
    for (const auto& t : cases) {
        SCOPED_TRACE(t.args[0].data.string);
        RecordingWindow::calls.clear();
        std::vector<TaggedData> args = t.args;
        TaggedData result{};
        EXPECT_EQ(RunScriptCommand(&c, args.data(), static_cast<long>(args.size()), &result), ScriptOk);
        EXPECT_EQ(RecordingWindow::calls.empty() ? none : RecordingWindow::calls.back().kind, t.kind);
        EXPECT_EQ(RecordingWindow::calls.size(), t.kind == none ? 0u : 1u);
        for (const auto& call : RecordingWindow::calls)
            EXPECT_EQ(call.project + "|" + call.comp + "|" + call.layer, "Shot|Main|Title");
        ASSERT_EQ(result.type, t.type);
        if (t.type == kTypeInteger) {
            EXPECT_EQ(Payload(result), t.payload); // all eight bytes: nothing stale is left for the engine
        } else if (t.type == kTypeScript) {
            EXPECT_EQ(std::string(result.data.string).rfind("var shortcutValue = ", 0), 0u);
            std::free(result.data.string);
        }
    }
    SelectOnly(host, "Camera 1"); // a camera is no active layer
    host.GetModel().projects[0]->name = "";
    EXPECT_EQ(c.Execute(PopupCommand{PopupCommand::Show}), NoCommandResult);
    EXPECT_EQ(RecordingWindow::calls.back().project + "|" + RecordingWindow::calls.back().layer, "Unknown|");
    // The choice's argument, as the engine may pass it.
    using hostsim::ScriptDouble;
    // clang-format off
    const std::pair<TaggedData, int32_t> choices[] = {{ScriptDouble(2.9), 2}, {ScriptDouble(-1.7), -1},
        {ScriptDouble(1e300), INT32_MAX}, {ScriptDouble(-1e300), INT32_MIN}, {ScriptDouble(std::nan("")), 0},
        {ScriptString("4"), 0}};
    // clang-format on
    for (auto [arg, choice] : choices) {
        TaggedData args[] = {ScriptString("shortcut"), arg}, result{};
        RunScriptCommand(&c, args, 2, &result);
        EXPECT_EQ(c.Preferences().shortcutChoice, choice);
    }
}

TEST(Controller, VersionMapping) {
    const std::tuple<A_long, A_long, AeVersion> cases[] = {
        {115, 0, AeVersionCC2018}, {114, 9, AeVersionCC2017}, {113, 5, AeVersionCC2015},
        {113, 4, AeVersionCC2014}, {112, 0, AeVersionCC},     {116, 0, AeVersionOther},
        {110, 0, AeVersionOther}, // never CS6 or CS5
    };
    for (auto [major, minor, version] : cases)
        EXPECT_EQ(AeVersionFromApi(major, minor), version) << major << "." << minor;
}

// While a host runs the chord and catalogue tests see it through the seam.
TEST(HostPlatform, WithoutAHostNeverActiveAndTheProcesssOwnExecutable) {
    HostSession().Start(); // one came and went
    EXPECT_FALSE(HostPlatform::IsHostActive());
    char self[1024] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
    EXPECT_EQ(HostPlatform::ExecutablePath(), self);
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Stylize", "Glow"));
}

using nimbit::ui::keyboard;
namespace offscreen = nimbit::ui::offscreen;
namespace key_query = nimbit::ui::key_query;
namespace vk = nimbit::ui::virtual_key;

struct ChordTest : WindowedController {
    void SetUp() override {
        WindowedController::SetUp();
        SetKeyQueries({&keyboard::is_key_down, &keyboard::was_key_pressed});
        Release();
        c.IdleHook(); // first tick: set-up
    }
    void TearDown() override {
        WindowedController::TearDown();
        SetKeyQueries({});
        Release();
    }
    // Lets go of every key and lets the press memory see it.
    static void Release() {
        offscreen::reset_input();
        for (int key : {int(keyboard::space), int(keyboard::tab), vk::j})
            keyboard::was_key_pressed(key);
    }
    // One idle tick with exactly these keys down.
    void Tick(const std::vector<int>& keys) {
        offscreen::reset_input();
        for (int k : keys)
            offscreen::set_key_down(k, true);
        c.IdleHook();
    }
    PreferencesData& Prefs() { return c.Preferences(); }
    static int Shows() {
        int shows = 0;
        for (const RecordingWindow::Call& call : RecordingWindow::calls)
            shows += call.kind == PopupCommand::Show;
        return shows;
    }
};

// The fixed choices are played through the controller below; here the custom chord's flags and an
// unknown choice.
TEST(ShortcutChordTable, CustomFlagsAndUnknownChoice) {
    const ModifierState ctrl{true, false, false, false}, shift{false, false, true, false},
        ctrlShift{true, false, true, false}, all{true, true, true, true};
    // The choice, its Control flag (Shift is always set, by any non-zero value), the modifiers held;
    // Option and Command must be up.
    const std::tuple<int, int, ModifierState, bool> cases[] = {{4, 1, ctrlShift, true},  {4, 1, ctrl, false},
                                                               {4, 1, all, false},       {4, 0, shift, true},
                                                               {4, 0, ctrlShift, false}, {5, 0, all, false}};
    for (const auto& [choice, withCtrl, held, holds] : cases) {
        PreferencesData prefs;
        prefs.shortcutChoice = choice, prefs.customCtrl = withCtrl, prefs.customShift = 7;
        prefs.customKeyCode = vk::j;
        EXPECT_EQ(ShortcutModifiersHold(prefs, held), holds) << choice << " " << withCtrl;
        EXPECT_EQ(ShortcutKey(prefs), choice == 4 ? vk::j : key_query::none) << choice;
    }
    EXPECT_FALSE(PollShortcutChord(PreferencesData{}, KeyQueries{})); // no keyboard: never
}

TEST_F(ChordTest, HeldChordOpensOnceTheNextPressClosesAndOnlyTheCurrentKeyCountsWhileTheHostIsActive) {
    for (int i = 0; i < 3; ++i)
        Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 1);
    EXPECT_EQ(RecordingWindow::hides, 0);
    Tick({vk::left_control});
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(RecordingWindow::hides, 1);
    Tick({vk::space}); // no Control: nothing
    Tick({});
    EXPECT_EQ(Shows(), 1);

    // Only the current key is queried, and only while the host is active.
    Prefs().shortcutChoice = 2; // Ctrl + Tab: Space is not looked at
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 1);
    // Space was never asked for, so its press is still new to the Space choice.
    Prefs().shortcutChoice = 0;
    host.GetModel().active = false;
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 1);
    host.GetModel().active = true;
    Tick({});
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 2);
}

TEST_F(ChordTest, RightControlServesTheControlChoicesAndExtraModifiersTheOthers) {
    // Each row from all keys up: the choice, the keys then held, the shows so far.
    // clang-format off
    const std::tuple<int, std::vector<int>, int> steps[] = {
        {0, {vk::right_control, vk::space}, 1}, {2, {vk::right_control, vk::tab}, 2},
        {1, {vk::left_control, vk::space}, 2}, // Shift + Space: Control is no Shift,
        {1, {vk::left_control, vk::left_shift, vk::space}, 3}, // but may be held as well
        {3, {vk::right_shift, vk::tab}, 4}}; // Shift + Tab
    // clang-format on
    for (const auto& [choice, keys, shows] : steps) {
        Prefs().shortcutChoice = choice;
        Tick({});
        Tick(keys);
        EXPECT_EQ(Shows(), shows) << choice;
        c.Window()->Hide();
    }
}

// The plug-in as the host sees it: the shared library, loaded by the simulated host.

// A session with its own copy of the plug-in's bundle in the host's Plug-ins folder, so that every
// test starts from a freshly loaded plug-in (the loader would otherwise hand back the instance an
// earlier test started).
struct PluginSession : HostSession {
    hostsim::SimHost& Load() {
        hostsim::SimHost& h = Start();
        const nimbit::file_path plugins(h.PluginsFolder());
        EXPECT_TRUE(nimbit::make_dir(plugins));
        EXPECT_TRUE(nimbit::copy_dir(nimbit::file_path(QUILLO_PLUGINS_DIR "/Quillo.plugin"), plugins));
        EXPECT_TRUE(h.LoadPlugins(plugins.to_string())) << h.loadError;
        return h;
    }
    // Runs execute with args; returns the status, the result in result.
    long Execute(std::vector<TaggedData> args, TaggedData& result) {
        return host->ScriptExecute(args, result);
    }
};

// The status script asked for: the shortcut line, then the toolbar icons (their text is the popup
// tests' part).
void ExpectStatus(PluginSession& s, int choice) {
    TaggedData result{};
    EXPECT_EQ(s.Execute({hostsim::ScriptString("requeststatus")}, result), 0);
    ASSERT_TRUE(result.type == kTypeScript && result.data.string != nullptr);
    const std::string text = result.data.string;
    EXPECT_EQ(text.rfind("var shortcutValue = " + std::to_string(choice) + ";\nvar button0Hex = ", 0), 0u)
        << text.substr(0, 40);
    s.host->ScriptFreeMem(result.data.string);
}

TEST(Plugin, ExportsExactlyTheEntryPoints) {
    std::FILE* pipe = popen(("nm -D --defined-only '" + std::string(QUILLO_PLUGIN_PATH) + "'").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::set<std::string> exported;
    char line[1024];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        char address[64], type[8], name[900];
        if (std::sscanf(line, "%63s %7s %899s", address, type, name) == 3)
            exported.insert(name);
    }
    ASSERT_EQ(pclose(pipe), 0);
    EXPECT_EQ(exported, (std::set<std::string>{"PluginMain", "ESInitialize", "ESGetVersion", "ESFreeMem",
                                               "ESTerminate", "execute"}));
}

// A known host version and a newer unknown one start the plug-in, the excluded ones nothing. Before
// the popup window exists the news count is the all-ones word; with no controller every word is -1.
TEST(Plugin, StartsOnUsableHostVersionsAndBalancesItsSuites) {
    for (auto [major, minor] : {std::pair<A_long, A_long>{115, 0}, {116, 3}, {111, 0}, {17, 0}}) {
        SCOPED_TRACE(major);
        const bool starts = major >= 115;
        PluginSession s;
        hostsim::SimHost& host = s.Load();
        EXPECT_EQ(host.StartPlugin(major, minor), A_Err_NONE);
        EXPECT_EQ(std::tuple(host.idleHooks.size(), host.deathHooks.size(), host.commandHooks),
                  std::tuple(starts ? 1u : 0u, starts ? 1u : 0u, 0));
        EXPECT_EQ(host.acquired.empty(), !starts);
        EXPECT_EQ(host.ScriptInitialize(), "execute");
        TaggedData result{};
        EXPECT_EQ(s.Execute({hostsim::ScriptString("news")}, result), 0);
        EXPECT_EQ(result.type, kTypeInteger);
        EXPECT_EQ(Payload(result), starts ? 4294967295 : -1);
        host.RunIdle(5);
        host.RunDeath();
        EXPECT_EQ(host.refusedAcquires + host.Outstanding(), 0);
    }
}

// The exported execute checks its arguments and runs the word (the words are the controller tests'
// part); the status script reads the settings file. A second start replaces the controller, and the
// first idle tick creates the popup, which writes the settings of a first run but not the lists;
// death saves those.
TEST(Plugin, ExecuteChecksItsArgumentsTheStatusReadsTheSettingsAndDeathSavesTheLists) {
    PluginSession s;
    hostsim::SimHost& host = s.Load(); // not started: no controller, and no settings file
    ExpectStatus(s, 0);
    host.ScriptFreeMem(nullptr);
    host.StartPlugin();
    host.StartPlugin(); // both hooks reach the current controller
    EXPECT_EQ(host.idleHooks.size(), 2u);
    TaggedData result{};
    result.type = 99;
    for (const std::vector<TaggedData>& bad :
         {std::vector<TaggedData>{},
          {hostsim::ScriptInteger(1)},
          {hostsim::ScriptString("shortcut")},
          {hostsim::ScriptString("shortcut"), hostsim::ScriptInteger(1), hostsim::ScriptInteger(2)}})
        EXPECT_EQ(s.Execute(bad, result), 20);
    EXPECT_EQ(result.type, 99);
    EXPECT_EQ(s.Execute({hostsim::ScriptString(nullptr)}, result), 0);
    EXPECT_EQ(Payload(result), -1);

    const nimbit::file_path folder = s.folder / "Library/Application Support/Tarvelo";
    const nimbit::file_path settings = folder.append("effects_settings"),
                            lists = folder.append("effects_search.txt");
    EXPECT_FALSE(nimbit::file_stats(folder).exists);
    PreferencesData stored;
    stored.shortcutChoice = 3;
    ASSERT_TRUE(SavePreferences(stored, {}, {}, {}, folder, false));
    ExpectStatus(s, 3);
    write_text(settings, "garbage"); // a damaged file reads as no file
    ExpectStatus(s, 0);
    ASSERT_TRUE(nimbit::remove_file(settings));
    host.RunIdle(3);
    EXPECT_TRUE(nimbit::file_stats(settings).exists && !nimbit::file_stats(lists).exists);
    host.RunDeath();
    EXPECT_TRUE(nimbit::file_stats(lists).exists);
    EXPECT_EQ(host.Outstanding(), 0);
}

} // namespace
