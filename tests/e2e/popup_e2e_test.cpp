// The search popup inside the simulated host on screen: the chord read from the X server's key
// state, the popup's own window, typing and keys sent as X events, and the results read from the
// host's session record (the effects on each layer, the menu actions, the scripts it ran).

#include "host_app_session.h"

#include "nimbit/filesystem/file_path.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using e2e::ActiveLayer;
using e2e::HostAppSession;
using e2e::SessionOptions;
using nlohmann::json;

const char* const MainWindow = "Simulated Host - Launch Teaser.aep";
const char* const Popup = "Effects Popup";

// Where the simulated disk keeps the plug-in's files: the user's own folder, and the machine-wide
// one whose files seed a user who has none.
std::string UserFolder(const std::string& disk) {
    return disk + "/Library/Application Support/Tarvelo";
}
std::string CommonFolder(const std::string& disk) {
    return disk + "/Library/Common/Tarvelo";
}

void WriteText(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteSettings(const std::string& folder, const PreferencesData& prefs) {
    const std::vector<unsigned char> bytes = EncodePreferences(prefs);
    WriteText(folder + "/" + std::string(SettingsFileName), std::string(bytes.begin(), bytes.end()));
}

std::vector<std::string> Effects(const json& record, const std::string& layer = "Headline") {
    const json l = ActiveLayer(record, layer);
    return l.is_object() ? l["effects"].get<std::vector<std::string>>() : std::vector<std::string>{};
}

std::vector<std::string> Presets(const json& record, const std::string& layer = "Headline") {
    const json l = ActiveLayer(record, layer);
    return l.is_object() ? l["presets"].get<std::vector<std::string>>() : std::vector<std::string>{};
}

bool PopupShown(const json& record) {
    for (const json& w : record["windows"]) {
        if (w.value("title", "") == Popup)
            return true;
    }
    return false;
}

// Starts the host and waits until its window is up, it is active and the plug-in's first idle tick
// has set the popup up (a few ticks of the 30 ms routine).
void WaitUntilReady(const HostAppSession& session) {
    ASSERT_TRUE(session.Started());
    ASSERT_TRUE(session.WaitForWindow(MainWindow)) << session.Log();
    ASSERT_TRUE(session.WaitForRecord([](const json& r) { return r.value("active", false); }))
        << session.Log();
    ASSERT_TRUE(session.WaitForIdleTicks(2));
}

// Plays the chord and waits for the popup to appear.
bool OpenPopup(const HostAppSession& session, const std::vector<std::string>& chord = {"ctrl", "space"}) {
    return session.Chord(chord) && session.WaitForRecord(PopupShown, 5.0);
}

bool WaitPopupHidden(const HostAppSession& session) {
    return session.WaitForRecord([](const json& r) { return !PopupShown(r); }, 5.0);
}

// After a key that applies, the popup hides and the next idle tick applies: waits for the layer's
// effect count to reach count.
bool WaitForEffects(const HostAppSession& session, size_t count) {
    return session.WaitForRecord([count](const json& r) { return Effects(r).size() >= count; }, 5.0);
}

// The sample project with one more user preset, whose name matches "blur".
std::string ProjectWithBlurPreset() {
    std::ifstream in(QUILLO_SAMPLE_PROJECT);
    json model = json::parse(in);
    model["presets"]["user"].push_back("Looks/Dream Blur.ffx");
    const std::string path = testing::TempDir() + "/quillo-e2e-blur-project.json";
    std::ofstream(path) << model.dump(1);
    return path;
}

TEST(PopupOnScreen, ChordOpensAtThePointerOnlyWhileTheHostIsActiveAndEscapeClicksOrTheChordClose) {
    HostAppSession session;
    WaitUntilReady(session);

    // Another application in front: the chord is seen but nothing opens.
    session.Control("deactivate");
    ASSERT_TRUE(session.WaitForRecord([](const json& r) { return !r.value("active", true); }));
    ASSERT_TRUE(session.Chord({"ctrl", "space"}));
    ASSERT_TRUE(session.WaitForIdleTicks(12)); // well after the chord's release
    EXPECT_FALSE(PopupShown(session.Record()));

    session.Control("activate");
    ASSERT_TRUE(session.WaitForRecord([](const json& r) { return r.value("active", false); }));
    ASSERT_TRUE(session.Xdotool({"mousemove", "700", "520"}).empty());
    ASSERT_TRUE(OpenPopup(session)) << session.Log();
    // Centred on the pointer, its bottom edge at the pointer.
    EXPECT_TRUE(session.WaitForRecord([](const json& r) {
        for (const json& w : r["windows"]) {
            if (w.value("title", "") == Popup)
                return std::abs(w.value("x", 0) + w.value("width", 0) / 2 - 700) <= 1 &&
                       std::abs(w.value("y", 0) + w.value("height", 0) - 520) <= 1;
        }
        return false;
    })) << session.WindowInRecord(Popup).dump();
    const json popup = session.WindowInRecord(Popup);
    EXPECT_EQ(popup.value("width", 0), 397) << "search mode: a layer is selected";
    EXPECT_TRUE(popup.value("key", false)) << "the popup takes the keyboard";

    // The chord again hides it.
    ASSERT_TRUE(session.Chord({"ctrl", "space"}));
    EXPECT_TRUE(WaitPopupHidden(session));

    // Escape empties the search and closes, even with a row selected.
    ASSERT_TRUE(OpenPopup(session));
    ASSERT_TRUE(session.Type("glow"));
    ASSERT_TRUE(session.Keys({"Down", "Escape"}));
    EXPECT_TRUE(WaitPopupHidden(session));

    // A click elsewhere (on the host's window, away from the popup) closes it.
    ASSERT_TRUE(OpenPopup(session));
    e2e::WindowGeometry host;
    ASSERT_TRUE(session.WaitForWindow(MainWindow, &host));
    ASSERT_TRUE(session.ClickAt(host.x + 40, host.y + 60));
    EXPECT_TRUE(WaitPopupHidden(session));

    // Nothing of this applied anything.
    const json record = session.Record();
    EXPECT_EQ(Effects(record), (std::vector<std::string>{"Drop Shadow"}));
    EXPECT_EQ(record["menuActionsSent"], 0);
    EXPECT_EQ(record["suiteApplications"], 0);
}

TEST(PopupOnScreen, TypedSearchListsAliasesThenEffectsThenPresetsAndEachAppliesItsOwnWay) {
    SessionOptions options;
    options.project = ProjectWithBlurPreset();
    options.prepare = [](const std::string& disk) {
        WriteText(CommonFolder(disk) + "/effects_search.txt", "blurry = Glow\n");
    };
    HostAppSession session(options);
    WaitUntilReady(session);

    // The first row is the alias's effect; Return applies the selected row through the Effect menu.
    ASSERT_TRUE(OpenPopup(session)) << session.Log();
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    ASSERT_TRUE(session.Type("blur"));
    ASSERT_TRUE(session.Keys({"Return"}));
    ASSERT_TRUE(WaitPopupHidden(session));
    ASSERT_TRUE(WaitForEffects(session, 2)) << session.Record().dump(1);
    EXPECT_EQ(Effects(session.Record()), (std::vector<std::string>{"Drop Shadow", "Glow"}));

    // Down selects the second row: the first effect whose name contains the text, in the host's order.
    ASSERT_TRUE(OpenPopup(session));
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    ASSERT_TRUE(session.Type("blur"));
    ASSERT_TRUE(session.Keys({"Down", "Return"}));
    ASSERT_TRUE(WaitForEffects(session, 3));
    // Applied once: by the menu, not again by the suite.
    ASSERT_TRUE(session.WaitForIdleTicks(8));
    json record = session.Record();
    EXPECT_EQ(Effects(record), (std::vector<std::string>{"Drop Shadow", "Glow", "Bilateral Blur"}));
    EXPECT_EQ(record["menuActionsSent"], 2);
    EXPECT_EQ(record["suiteApplications"], 0);

    // Tab jumps to the first preset row, below all the effects; a preset applies through the host's
    // script.
    ASSERT_TRUE(OpenPopup(session));
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    ASSERT_TRUE(session.Type("blur"));
    ASSERT_TRUE(session.Keys({"Tab", "Return"}));
    ASSERT_TRUE(session.WaitForRecord([](const json& r) { return !Presets(r).empty(); }, 5.0))
        << session.Record().dump(1);
    record = session.Record();
    ASSERT_EQ(Presets(record).size(), 1u);
    EXPECT_NE(Presets(record)[0].find("Dream Blur.ffx"), std::string::npos) << Presets(record)[0];
    ASSERT_FALSE(record["scripts"].empty());
    EXPECT_NE(record["scripts"].back().get<std::string>().find("applyPreset"), std::string::npos);
    EXPECT_EQ(record["menuActionsSent"], 2);

    // Up from the first row wraps to the last row: the last preset.
    ASSERT_TRUE(OpenPopup(session));
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    ASSERT_TRUE(session.Type("blur"));
    ASSERT_TRUE(session.Keys({"Up", "Return"}));
    ASSERT_TRUE(session.WaitForRecord([](const json& r) { return Presets(r).size() == 2; }, 5.0));
    EXPECT_EQ(Presets(session.Record())[1], Presets(session.Record())[0]);

    // An effect of a disabled menu category still applies, through the effect suite.
    ASSERT_TRUE(OpenPopup(session));
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    ASSERT_TRUE(session.Type("lightning"));
    ASSERT_TRUE(session.Keys({"Return"}));
    ASSERT_TRUE(WaitForEffects(session, 4));
    record = session.Record();
    EXPECT_EQ(Effects(record).back(), "Lightning");
    EXPECT_EQ(record["menuActionsSent"], 2);
    EXPECT_EQ(record["suiteApplications"], 1);
}

TEST(PopupOnScreen, CustomChordNeedsExactlyItsModifiersAndDigitsApplyTheShortcutSlots) {
    SessionOptions options;
    options.prepare = [](const std::string& disk) {
        PreferencesData prefs;
        prefs.shortcutChoice = 4; // custom: Control+Shift+K
        prefs.customKeyCode = 40; // K
        prefs.customCtrl = 1;
        prefs.customShift = 1;
        WriteSettings(UserFolder(disk), prefs);
        WriteText(UserFolder(disk) + "/effects_shortcuts.txt", "Box = Box Blur\nGlow = Glow\n");
    };
    HostAppSession session(options);
    WaitUntilReady(session);

    // Neither the default chord nor the custom one with Option (Super here) as well opens it.
    ASSERT_TRUE(session.Chord({"ctrl", "space"}));
    ASSERT_TRUE(session.Chord({"ctrl", "shift", "super", "k"}));
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    EXPECT_FALSE(PopupShown(session.Record()));

    ASSERT_TRUE(OpenPopup(session, {"ctrl", "shift", "k"})) << session.Log();
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    ASSERT_TRUE(session.Keys({"2"}));
    ASSERT_TRUE(WaitPopupHidden(session));
    ASSERT_TRUE(WaitForEffects(session, 2));

    ASSERT_TRUE(OpenPopup(session, {"ctrl", "shift", "k"}));
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    ASSERT_TRUE(session.Keys({"1"}));
    ASSERT_TRUE(WaitForEffects(session, 3));

    // An empty slot does nothing: the popup stays open and nothing more is applied.
    ASSERT_TRUE(OpenPopup(session, {"ctrl", "shift", "k"}));
    ASSERT_TRUE(session.WaitForIdleTicks(12));
    ASSERT_TRUE(session.Keys({"7"}));
    ASSERT_TRUE(session.WaitForIdleTicks(8));
    EXPECT_TRUE(PopupShown(session.Record()));
    EXPECT_EQ(Effects(session.Record()), (std::vector<std::string>{"Drop Shadow", "Glow", "Box Blur"}));
}

TEST(PopupOnScreen, QuittingWritesTheDataFilesAndARestartedHostReadsThemBack) {
    char pattern[] = "/tmp/quillo-e2e-restart-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    const std::string root = pattern;
    const std::string disk = root + "/disk";
    {
        // The machine-wide files seed this user, who has none of their own yet.
        SessionOptions options;
        options.root = root;
        options.prepare = [](const std::string& d) {
            WriteText(CommonFolder(d) + "/effects_shortcuts.txt", "Glow = Glow\n");
            WriteText(CommonFolder(d) + "/effects_search.txt", "-Sharpen\nshine = Glow\n");
        };
        HostAppSession session(options);
        WaitUntilReady(session);
        ASSERT_TRUE(OpenPopup(session)) << session.Log();
        ASSERT_TRUE(session.WaitForIdleTicks(12));
        ASSERT_TRUE(session.Keys({"1"}));
        ASSERT_TRUE(WaitForEffects(session, 2));
        EXPECT_FALSE(std::filesystem::exists(UserFolder(disk) + "/effects_shortcuts.txt"));
        session.Control("quit");
        ASSERT_EQ(session.WaitForExit(), 0) << session.Log();
        EXPECT_EQ(session.Record()["deathHooksRun"], 1);
    }
    EXPECT_TRUE(std::filesystem::exists(UserFolder(disk) + "/" + std::string(SettingsFileName)));
    EXPECT_NE(ReadText(UserFolder(disk) + "/effects_shortcuts.txt").find("Glow"), std::string::npos);
    const std::string search = ReadText(UserFolder(disk) + "/effects_search.txt");
    EXPECT_NE(search.find("-Sharpen"), std::string::npos) << search;
    EXPECT_NE(search.find("shine = Glow"), std::string::npos) << search;

    // Only the user's own files are left; the restarted host must read those.
    std::filesystem::remove_all(CommonFolder(disk));
    {
        SessionOptions options;
        options.root = root;
        HostAppSession session(options);
        WaitUntilReady(session);
        ASSERT_TRUE(OpenPopup(session)) << session.Log();
        ASSERT_TRUE(session.WaitForIdleTicks(12));
        ASSERT_TRUE(session.Keys({"1"}));
        ASSERT_TRUE(WaitForEffects(session, 2)) << session.Record().dump(1);
        EXPECT_EQ(Effects(session.Record()), (std::vector<std::string>{"Drop Shadow", "Glow"}));
    }
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
}

} // namespace
