// The simulated host with the search popup on screen, driven as an artist drives it: real X input
// through xdotool (the chord read from the X server's key state, typing, menus), results read from
// the application's session record (the effects on each layer, the menu actions, the scripts run).

#include "host_app_session.h"

#include "gallery/gallery_popup_window.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/bitmap.h"
#include "popup/effects_popup_window.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "preferences/preferences_effect_slot.h"
#include "preferences/preferences_effects_scroll_panel.h"
#include "preferences/preferences_window.h"
#include "tests/foundation/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <iterator>

namespace {

using e2e::HostAppSession;
using e2e::json;
using e2e::SessionOptions;
using strings = std::vector<std::string>;

const char* const MainWindow = "Simulated Host - Launch Teaser.aep";
const char* const Popup = "Effects Popup";
const char* const Preferences = "Preferences";

// Waits for a modal window of the plug-in (its place and size in found) and lets it take the
// keyboard. (The host's idle hook does not run while a modal loop of the plug-in does, so there are
// no idle ticks to wait on.)
bool WaitForModal(const HostAppSession& session, const std::string& title,
                  e2e::WindowGeometry* found = nullptr) {
    return session.WaitForWindow(title, found) && session.Xdotool({"sleep", "0.5"});
}

// The plug-in's folders on the simulated disk: the user's own, and the machine-wide one whose
// files seed a user who has none.
const std::string UserFolder = "/Library/Application Support/Tarvelo";
const std::string CommonFolder = "/Library/Common/Tarvelo";
void WriteText(const std::string& path, const std::string& text) {
    ASSERT_TRUE(nimbit::make_dir(nimbit::file_path(path).stem()) &&
                write_text(nimbit::file_path(path), text));
}

// The effects of the active composition's layer named name; empty when the layer is missing.
strings Effects(const json& record, const std::string& name = "Headline") {
    for (const json& comp : record.is_object() ? record.value("compositions", json::array()) : json::array())
        for (const json& layer : comp.value("active", false) ? comp["layers"] : json::array())
            if (layer.value("name", "") == name)
                return layer["effects"].get<strings>();
    return {};
}
// The shown window of that title; null json when there is none.
json WindowIn(const json& record, const std::string& title = Popup) {
    for (const json& w : record.value("windows", json::array()))
        if (w.value("title", "") == title)
            return w;
    return {};
}
bool Shown(const json& record, const std::string& title = Popup) {
    return WindowIn(record, title).is_object();
}

// Waits until the host's window is up, it is active and the plug-in's first idle ticks have set
// the popup up.
void WaitUntilReady(const HostAppSession& session) {
    ASSERT_TRUE(session.Started());
    ASSERT_TRUE(session.WaitForWindow(MainWindow)) << session.Log();
    ASSERT_TRUE(session.WaitForRecord([](const json& r) { return r.value("active", false); }))
        << session.Log();
    ASSERT_TRUE(session.WaitForIdleTicks(2));
}

// Plays the chord, waits for the popup to appear and for it to settle: the search field takes the
// keyboard a quarter of a second after the popup gains the focus, so letters typed sooner are lost.
bool OpenPopup(const HostAppSession& session, const strings& chord = {"ctrl", "space"}) {
    return session.Chord(chord) &&
           session.WaitForRecord([](const json& r) { return Shown(r) && WindowIn(r).value("key", false); },
                                 5.0) &&
           session.WaitForIdleTicks(12) && session.Xdotool({"sleep", "0.3"});
}
bool WaitShown(const HostAppSession& session, const std::string& title, bool shown = true) {
    return session.WaitForRecord([&](const json& r) { return Shown(r, title) == shown; }, 5.0);
}
// Opens the popup, types text, presses the keys.
bool Search(const HostAppSession& session, const std::string& text, const strings& keys,
            const strings& chord = {"ctrl", "space"}) {
    return OpenPopup(session, chord) && session.Type(text) && session.Keys(keys);
}
// Clicks the shown popup's tool button (counted from its right edge).
bool ClickToolButton(const HostAppSession& session, int button) {
    using P = EffectsPopupWindow;
    const json shown = WindowIn(session.Record());
    return session.ClickAt(shown.value("x", 0) + shown.value("width", 0) - P::ToolButtonRight[button] +
                               P::ButtonSize / 2,
                           shown.value("y", 0) + P::ToolButtonTop + P::ButtonSize / 2);
}
// After a key that applies, the popup hides and the next idle tick applies.
bool WaitForEffects(const HostAppSession& session, size_t count) {
    return session.WaitForRecord([count](const json& r) { return Effects(r).size() >= count; }, 5.0);
}
// Headline comes to hold effects (the first the project's own) and still does after idle ticks:
// each added once by the Effect menu, none by the suite (the idle routine keeps calling the plug-in).
void ExpectAppliedByMenu(const HostAppSession& session, const strings& effects, long ticks = 8) {
    ASSERT_TRUE(WaitForEffects(session, effects.size())) << session.Record().dump(1);
    ASSERT_TRUE(session.WaitForIdleTicks(ticks));
    const json record = session.Record();
    EXPECT_EQ(Effects(record), effects);
    EXPECT_EQ(record["menuActionsSent"], effects.size() - 1);
    EXPECT_EQ(record["suiteApplications"], 0);
}

// Chooses an Effect menu item by clicking through the menus. A click can be lost while the machine
// is loaded; the walk is repeated only when the host saw no menu action at all, so that a slow
// first choice is never doubled.
bool ChooseFromMenu(const HostAppSession& session, const std::vector<int>& path) {
    const int before = session.Record().value("menuActionsSent", 0);
    for (int attempt = 0; attempt < 3; ++attempt)
        if (session.ClickMenuPath(path) &&
            session.WaitForRecord([&](const json& r) { return r.value("menuActionsSent", 0) > before; }, 3.0))
            return true;
    return false;
}

const char* const Gallery = "Quillo Image Gallery";
const char* const DeleteQuestion = "Delete?";

// The names of the files in the folder, sorted; with whole, only PNG files that decode.
strings Names(const std::string& folder, bool whole = false) {
    strings names = tree(nimbit::file_path(folder), false);
    std::erase_if(names, [&](const std::string& name) {
        nimbit::ui::bitmap image;
        return whole && !(name.ends_with(".png") && image.load_image(nimbit::file_path(folder + "/" + name)));
    });
    return names;
}

// The host with the plug-in as an artist meets it: the chord shows and hides the popup, the Effect
// menu applies, the script console reaches the plug-in, each way of asking for a screenshot makes
// one, the gallery over those captures selects, asks and deletes, and Quit ends it all.
TEST(HostApp, LaunchPopupEffectMenuConsoleCapturesGalleryAndQuit) {
    HostAppSession session;
    WaitUntilReady(session);
    ASSERT_TRUE(session.Xdotool({"mousemove", "700", "520"}));
    ASSERT_TRUE(OpenPopup(session)) << session.Log();
    // Centred on the pointer, its bottom edge at the pointer.
    const json popup = WindowIn(session.Record());
    EXPECT_LE(std::abs(popup.value("x", 0) + popup.value("width", 0) / 2 - 700), 1) << popup.dump();
    EXPECT_LE(std::abs(popup.value("y", 0) + popup.value("height", 0) - 520), 1) << popup.dump();
    // The chord again hides it; Escape empties the search and closes, even with a row selected; a
    // click elsewhere (on the host's window, away from the popup) closes it.
    ASSERT_TRUE(session.Chord({"ctrl", "space"}));
    EXPECT_TRUE(WaitShown(session, Popup, false));
    ASSERT_TRUE(Search(session, "glow", {"Down", "Escape"}));
    EXPECT_TRUE(WaitShown(session, Popup, false));
    ASSERT_TRUE(OpenPopup(session));
    e2e::WindowGeometry host;
    ASSERT_TRUE(session.WaitForWindow(MainWindow, &host));
    ASSERT_TRUE(session.ClickAt(host.x + 40, host.y + 60));
    EXPECT_TRUE(WaitShown(session, Popup, false));

    // An Effect menu item applies once to the selected layer (and nothing above applied anything).
    // Effect is the main menu's sixth item; in the sample project Blur & Sharpen comes after Effect
    // Controls, Remove All, 3D Channel and Audio, and Box Blur is its second item.
    ASSERT_TRUE(ChooseFromMenu(session, {5, 4, 1}));
    ExpectAppliedByMenu(session, {"Drop Shadow", "Box Blur"}, 32);
    EXPECT_EQ(Effects(session.Record(), "city_aerial.mov"), (strings{"Lumetri Color", "Gaussian Blur"}));

    // Each way of asking for a screenshot puts the active composition's frame into the capture
    // folder (the default one, in the simulated disk's documents): the sample project's Main Comp,
    // 1920 x 1080. (Its pixels and time are the frame capture tests' part.)
    const std::string folder = session.Disk() + "/Documents/Tarvelo/Quillo/Capture";
    const auto button = [&] {
        return OpenPopup(session) && ClickToolButton(session, EffectsPopupWindow::ScreenshotButton);
    };
    const auto key = [&] {
        return OpenPopup(session) && session.Chord({"shift", "F5"});
    };
    // The script console calls execute and shows the tagged result (the words' answers are the
    // controller and plug-in tests' part). Its field runs along the window, 140 points above its
    // bottom edge.
    const auto word = [&] {
        return session.ClickAt(host.x + host.width / 2, host.y + host.height - 151) &&
               session.Type("screenshot", 15) && session.Keys({"Return"});
    };
    ASSERT_TRUE(
        session.ClickAt(host.x + 40, host.y + 60)); // out of the console's field, which starts with the keys
    for (const auto& [trigger, capture] :
         std::initializer_list<std::pair<const char*, std::function<bool()>>>{
             {"button", button}, {"Shift+F5", key}, {"console", word}}) {
        SCOPED_TRACE(trigger);
        const strings before = Names(folder, true);
        ASSERT_TRUE(capture()) << session.Log();
        // Captures may be written after the trigger returns: waited for until the new one decodes.
        strings names;
        ASSERT_TRUE(
            e2e::Poll([&] { return (names = Names(folder, true)).size() == before.size() + 1; }, 10.0))
            << session.Log();
        strings made;
        std::ranges::set_difference(names, before, std::back_inserter(made));
        ASSERT_EQ(made.size(), 1u);
        nimbit::ui::bitmap image;
        ASSERT_TRUE(image.load_image(nimbit::file_path(folder + "/" + made[0])));
        ASSERT_EQ(image.get_size(), (nimbit::_vec2<int>{1920, 1080}));
        EXPECT_TRUE(made[0].starts_with("Launch Teaser_Main Comp_")) << made[0];
        if (Shown(session.Record())) { // the next trigger starts with it closed
            ASSERT_TRUE(session.Keys({"Escape"}) && WaitShown(session, Popup, false))
                << session.Record().dump(1);
        }
    }
    const json console = session.Record()["console"];
    ASSERT_EQ(console.size(), 1u) << "the button and key skip the console";
    EXPECT_EQ(std::tuple(console[0]["word"], console[0]["status"], console[0]["result"]),
              std::tuple("screenshot", 0, "undefined"));

    // The gallery over those captures and one more: F5 from the popup opens it; a click and a Shift
    // click select a range; forward delete asks, and only a confirmation removes exactly the
    // selected files; Option+A selects what is left.
    ASSERT_TRUE(session.Xdotool({"mousemove", "560", "330"}) && key());
    ASSERT_TRUE(e2e::Poll([&] { return Names(folder, true).size() == 4; }, 10.0)) << session.Log();
    // Captures within one second share a listing time: a minute apart from here, in name order, the
    // last name newest, so that it is the first tile.
    const strings names = Names(folder, true);
    const int64_t now = std::time(nullptr);
    for (size_t i = 0; i < names.size(); ++i)
        ASSERT_TRUE(nimbit::set_file_dates(nimbit::file_path(folder + "/" + names[i]), now - 240 + 60 * i,
                                           now - 240 + 60 * i));
    ASSERT_TRUE(session.Keys({"F5"}));
    ASSERT_TRUE(WaitShown(session, Gallery)) << session.Record().dump(1);
    e2e::WindowGeometry g;
    ASSERT_TRUE(session.WaitForWindow(Gallery, &g));
    using G = GalleryPopupWindow;
    const auto tile = [&](int i) { // the centre of tile i (of the first row) on the screen
        return std::pair{g.x + G::TileGap + i * (G::TileWidth + G::TileGap) + G::TileWidth / 2,
                         g.y + G::ToolRowHeight + G::TileGap + G::TileHeight / 2};
    };
    ASSERT_GE(g.width / 2, 3 * (G::TileWidth + G::TileGap)) << "three tiles to a row";
    const auto [x0, y0] = tile(0);
    const auto [x2, y2] = tile(2);
    ASSERT_TRUE(session.ClickAt(x0, y0));
    ASSERT_TRUE(session.WaitForIdleTicks(12)); // apart enough not to be a double click
    ASSERT_TRUE(session.Xdotool({"mousemove", std::to_string(x2), std::to_string(y2), "keydown", "shift",
                                 "mousedown", "1", "sleep", "0.1", "mouseup", "1", "keyup", "shift"}));
    const auto deleteAnswering = [&](const std::string& answer) {
        return session.Keys({"Delete"}) && WaitShown(session, DeleteQuestion) && session.Keys({answer}) &&
               WaitShown(session, DeleteQuestion, false);
    };
    ASSERT_TRUE(deleteAnswering("Escape")) << session.Record().dump(1);
    EXPECT_EQ(Names(folder), names) << "nothing removed without a confirmation";
    ASSERT_TRUE(deleteAnswering("Return")) << session.Record().dump(1);
    EXPECT_TRUE(e2e::Poll([&] { return Names(folder).size() < names.size(); }, 5.0));
    EXPECT_EQ(Names(folder), strings{names.front()}) << "the three newest went";
    ASSERT_TRUE(session.Chord({"super", "a"})); // Option
    ASSERT_TRUE(deleteAnswering("Return")) << session.Record().dump(1);
    EXPECT_TRUE(e2e::Poll([&] { return Names(folder).empty(); }, 5.0));
    EXPECT_TRUE(Shown(session.Record(), Gallery));
    ASSERT_TRUE(session.Keys({"Escape"}) && WaitShown(session, Gallery, false));

    // The application menu's Quit (its only item) runs the death hook once and releases every suite.
    ASSERT_TRUE(session.ClickAt(host.x + 40, host.y + 60)); // the host's window active again
    ASSERT_TRUE(session.ClickMenuPath({0, 0}));
    EXPECT_EQ(session.WaitForExit(), 0) << session.Log();
    EXPECT_EQ(session.Record()["deathHooksRun"], 1);
    EXPECT_EQ(session.Record()["suitesOutstanding"], 0);
}

// ---- The preferences window.

// Clicks a rectangle of a window's inside: its centre, or dy below its top.
bool ClickIn(const HostAppSession& session, const e2e::WindowGeometry& w, const nimbit::ivec4& r,
             int dy = -1) {
    return session.ClickAt(w.x + r.x + r.w / 2, w.y + r.y + (dy < 0 ? r.h / 2 : dy));
}

// Opens the popup and presses its settings button; the preferences window's inside, once shown.
bool OpenPreferences(const HostAppSession& session, e2e::WindowGeometry* window) {
    return OpenPopup(session) && ClickToolButton(session, EffectsPopupWindow::SettingsButton) &&
           WaitForModal(session, Preferences, window);
}

// Chooses item `index` of a drop-down at `r`: its menu follows the held button and takes the item
// the button is released over. The menu opens at the pointer: a title row, then rows of 20 pixels.
bool ChooseFromDropDown(const HostAppSession& session, const e2e::WindowGeometry& w, const nimbit::ivec4& r,
                        int index) {
    const int x = w.x + r.x + r.w / 2, y = w.y + r.y + r.h / 2;
    if (!session.Xdotool({"mousemove", std::to_string(x), std::to_string(y), "mousedown", "1"}))
        return false;
    e2e::WindowGeometry menu;
    const bool shown = e2e::Poll(
        [&] {
            for (const e2e::WindowGeometry& m : session.VisibleWindows())
                if (m.width < r.w + 60 && m.height > 22 && std::abs(m.y - y) < 40)
                    menu = m;
            return menu.id != 0;
        },
        5.0);
    const int itemY = menu.y + 22 + 20 * index + 10;
    return session.Xdotool({"mousemove", std::to_string(menu.x + menu.width / 2), std::to_string(itemY),
                            "sleep", "0.2", "mouseup", "1"}) &&
           shown;
}

// Answers the save panel with a path typed into its name field.
bool AnswerSavePanel(const HostAppSession& session, const std::string& path) {
    return WaitForModal(session, "Save") && session.Type(path, 20) && session.Keys({"Return"});
}
// Answers the open panel with the only file of a folder: the typed folder path opens it in the
// panel's right-hand column, whose first row is then clicked (typing alone selects no file).
bool AnswerOpenPanel(const HostAppSession& session, const std::string& folder) {
    e2e::WindowGeometry panel;
    return WaitForModal(session, "Open", &panel) && session.Type(folder + "/", 20) &&
           session.Xdotool({"sleep", "0.5"}) &&
           session.ClickAt(panel.x + panel.width * 2 / 3, panel.y + 104) && session.Keys({"Return"});
}
// Closes every notice with the given titles that shows up within a few seconds; how many there were.
int DismissNotices(const HostAppSession& session, const strings& titles) {
    int seen = 0;
    for (bool more = true; more;) {
        more = false;
        for (const std::string& title : titles)
            if (WaitShown(session, title) && session.Keys({"Return"}) && WaitShown(session, title, false)) {
                ++seen;
                more = true;
            }
    }
    return seen;
}

// The user's lists and the preferences window, as an artist uses them. The digits apply shortcut
// slots; the machine-wide search file (an alias, a blocked name) seeds this user, who has none of
// their own. The gear button opens the preferences window: Light, a custom chord and a favorite
// picked from the catalogue take effect in the popup at once. Quitting writes the user's files; an
// export, imported by a second host with a data folder of its own, carries every setting and list.
TEST(HostApp, DigitsAliasesAndPreferencesWindowWhoseExportMovesEverythingToAnotherHost) {
    using Window = PreferencesWindow;
    const temp_folder folder;
    const std::string base = folder.path().to_string(), exports = base + "/exports",
                      exported = exports + "/quillo_settings.kvs";
    std::filesystem::create_directories(exports);
    const strings custom = {"ctrl", "shift", "k"};
    SessionOptions first;
    first.root = base + "/first";
    first.prepare = [](const std::string& d) {
        WriteText(d + UserFolder + "/effects_shortcuts.txt", "Box = Box Blur\nGlow = Glow\n");
        WriteText(d + CommonFolder + "/effects_search.txt", "-Sharpen\nblurry = Glow\n");
    };
    {
        HostAppSession session(first);
        WaitUntilReady(session);
        ASSERT_TRUE(session.Xdotool({"mousemove", "560", "330"}));
        // A digit applies its shortcut slot. After "blur" the first row is the alias's effect; Down
        // selects the second: the first effect whose name contains the text, in the host's order.
        const std::pair<const char*, strings> presses[] = {
            {"", {"2"}}, {"", {"1"}}, {"blur", {"Return"}}, {"blur", {"Down", "Return"}}};
        for (size_t i = 0; i < std::size(presses); ++i) {
            ASSERT_TRUE(Search(session, presses[i].first, presses[i].second)) << session.Log();
            ASSERT_TRUE(WaitForEffects(session, i + 2)) << session.Record().dump(1);
        }
        ExpectAppliedByMenu(session, {"Drop Shadow", "Glow", "Box Blur", "Glow", "Bilateral Blur"});

        e2e::WindowGeometry w;
        ASSERT_TRUE(OpenPreferences(session, &w)) << session.Log();
        ASSERT_TRUE(ChooseFromDropDown(session, w, Window::ThemeRect, 1)); // Light
        // "Custom" opens the chord's editor. Its keys: OK holds the focus; Tab walks Cancel, the
        // three modifiers, the key list (a typed letter picks its key) and back to OK.
        ASSERT_TRUE(ChooseFromDropDown(session, w, Window::ShortcutRect, Window::CustomShortcut));
        ASSERT_TRUE(WaitForModal(session, "Custom Shortcut Key"));
        ASSERT_TRUE(
            session.Keys({"Tab", "Tab", "space", "Tab", "Tab", "space", "Tab", "k", "Tab", "Return"}));
        ASSERT_TRUE(WaitShown(session, "Custom Shortcut Key", false));

        // A favorite from the picker of the Favorites list's "New" row, below the seeded alias.
        const nimbit::ivec4 favorites =
            Window::PanelRects[static_cast<size_t>(PreferencesListKind::Favorites)];
        ASSERT_TRUE(
            ClickIn(session, w, favorites,
                    PreferencesEffectsScrollPanel::HeaderHeight + PreferencesEffectSlot::Height * 3 / 2));
        ASSERT_TRUE(WaitForModal(session, "Add New Effect"));
        ASSERT_TRUE(session.Type("camera lens") && session.Keys({"Return"}));
        ASSERT_TRUE(WaitShown(session, "Add New Effect", false));

        ASSERT_TRUE(ClickIn(session, w, Window::ExportRect));
        ASSERT_TRUE(AnswerSavePanel(session, exported));
        EXPECT_EQ(DismissNotices(session, {"Export Successful"}), 1) << session.Log();
        ASSERT_TRUE(session.Keys({"Escape"}));
        ASSERT_TRUE(WaitShown(session, Preferences, false));

        // The new chord opens the popup, drawn light; the favorite comes before the catalogue's
        // names (without it "lens" finds Lens Flare first).
        ASSERT_TRUE(OpenPopup(session, custom)) << session.Log();
        const json popup = WindowIn(session.Record());
        EXPECT_GT(session.ScreenBrightness(popup.value("x", 0) + 4, popup.value("y", 0) + 4), 0.8)
            << "a pale window: the dark theme's is nearly black";
        ASSERT_TRUE(session.Type("lens") && session.Keys({"Return"}));
        ASSERT_TRUE(WaitForEffects(session, 6)) << session.Record().dump(1);
        EXPECT_EQ(Effects(session.Record()).back(), "Camera Lens Blur");

        // A termination request (how the run script ends a session) quits as Quit does.
        session.Signal(SIGTERM);
        EXPECT_EQ(session.WaitForExit(), 0) << session.Log();
        EXPECT_EQ(session.Record()["deathHooksRun"], 1);
    }
    const std::string search =
        read_text(nimbit::file_path(first.root + "/disk" + UserFolder + "/effects_search.txt"));
    EXPECT_NE(search.find("-Sharpen"), std::string::npos) << search;
    EXPECT_NE(search.find("blurry = Glow"), std::string::npos) << search;

    // A second machine: its own data folder, the default chord until the import.
    SessionOptions second;
    second.root = base + "/second";
    {
        HostAppSession session(second);
        WaitUntilReady(session);
        ASSERT_TRUE(session.Xdotool({"mousemove", "560", "330"}));
        e2e::WindowGeometry w;
        ASSERT_TRUE(OpenPreferences(session, &w)) << session.Log();
        ASSERT_TRUE(ClickIn(session, w, Window::ImportRect));
        ASSERT_TRUE(AnswerOpenPanel(session, exports));
        EXPECT_GE(DismissNotices(session, {"Import Successful", "Import Info"}), 1) << session.Log();
        ASSERT_TRUE(session.Keys({"Escape"}));
        ASSERT_TRUE(WaitShown(session, Preferences, false));
        ASSERT_TRUE(Search(session, "lens", {"Return"}, custom)) << session.Log();
        ASSERT_TRUE(WaitForEffects(session, 2)) << session.Record().dump(1);
        EXPECT_EQ(Effects(session.Record()).back(), "Camera Lens Blur");
        session.Control("quit"); // a control line ends it as Quit does
        EXPECT_EQ(session.WaitForExit(), 0) << session.Log();
    }
    // Both machines now hold the same settings (the capture folder aside) and lists.
    PreferencesData one, two;
    ASSERT_TRUE(LoadPreferences(one, nimbit::file_path(first.root + "/disk" + UserFolder)));
    ASSERT_TRUE(LoadPreferences(two, nimbit::file_path(second.root + "/disk" + UserFolder)));
    EXPECT_EQ(std::tuple(two.theme, two.shortcutChoice, two.customKeyCode, two.customCtrl, two.customShift),
              std::tuple(UIColorTheme::Light, 4, 40, 1, 1));
    EXPECT_EQ(std::tuple(one.theme, one.shortcutChoice, one.customKeyName),
              std::tuple(two.theme, two.shortcutChoice, two.customKeyName));
    for (const char* file : {"/effects_search.txt", "/effects_shortcuts.txt"})
        EXPECT_EQ(read_text(nimbit::file_path(second.root + "/disk" + UserFolder + file)),
                  read_text(nimbit::file_path(first.root + "/disk" + UserFolder + file)))
            << file;
}

// A German host: its names are localized, its match names English. "gaussian" finds the German
// entry by its match name, and Return applies it through the Effect menu under its own name.
TEST(HostApp, GermanHostAppliesTheEntryFoundByItsEnglishMatchName) {
    SessionOptions options;
    options.project = QUILLO_SAMPLE_PROJECT_DE;
    HostAppSession session(options);
    WaitUntilReady(session);
    ASSERT_TRUE(Search(session, "gaussian", {"Return"})) << session.Log();
    ExpectAppliedByMenu(session, {"Schlagschatten", "Gaußscher Weichzeichner"});
}

} // namespace
