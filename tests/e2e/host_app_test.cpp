// The simulated host on screen, driven as an artist drives it: real X input through xdotool,
// results read from the application's session record.

#include "host_app_session.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

using e2e::ActiveLayer;
using e2e::HostAppSession;
using nlohmann::json;

const char* const MainWindow = "Simulated Host - Launch Teaser.aep";

std::vector<std::string> EffectNames(const json& layer) {
    return layer.is_object() ? layer["effects"].get<std::vector<std::string>>() : std::vector<std::string>{};
}

// Chooses an Effect menu item by clicking through the menus. A click can be lost while the machine
// is loaded (the press arrives before the menu tracks); the walk is repeated only when the host
// saw no menu action at all, so that a slow first choice is never doubled.
bool ChooseFromMenu(const HostAppSession& session, const std::vector<int>& path) {
    const int before = session.Record().value("menuActionsSent", 0);
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (session.ClickMenuPath(path) &&
            session.WaitForRecord([&](const json& r) { return r.value("menuActionsSent", 0) > before; }, 3.0))
            return true;
    }
    return false;
}

TEST(HostApp, ShowsTheProjectRegistersTheHooksAndRunsTheIdleRoutine) {
    HostAppSession session;
    ASSERT_TRUE(session.Started());
    ASSERT_TRUE(session.WaitForWindow(MainWindow)) << session.Log();
    ASSERT_TRUE(session.WaitForRecord([](const json& r) { return r.contains("compositions"); }));
    const json record = session.Record();
    EXPECT_EQ(record["project"], "Launch Teaser.aep");
    EXPECT_EQ(record["idleHooks"], 1);
    EXPECT_EQ(record["deathHooks"], 1);
    EXPECT_EQ(record["deathHooksRun"], 0);
    EXPECT_TRUE(record["active"].get<bool>()) << "the host should be frontmost after launch";
    EXPECT_EQ(EffectNames(ActiveLayer(record, "Headline")), (std::vector<std::string>{"Drop Shadow"}));
    EXPECT_TRUE(ActiveLayer(record, "Headline")["selected"].get<bool>());
    // The idle routine keeps calling the plug-in while the window is up.
    EXPECT_TRUE(session.WaitForIdleTicks(32));
}

TEST(HostApp, EffectMenuItemAppliesOnceToTheSelectedLayer) {
    HostAppSession session;
    ASSERT_TRUE(session.Started());
    ASSERT_TRUE(session.WaitForWindow(MainWindow)) << session.Log();
    const std::vector<int> boxBlur = e2e::EffectMenuPath(QUILLO_SAMPLE_PROJECT, "Blur & Sharpen", "Box Blur");
    ASSERT_EQ(boxBlur.size(), 3u);
    ASSERT_EQ(boxBlur[0], 5) << "the Effect menu is the main menu's sixth item";
    ASSERT_TRUE(ChooseFromMenu(session, boxBlur));
    ASSERT_TRUE(session.WaitForRecord([](const json& r) {
        return EffectNames(ActiveLayer(r, "Headline")).size() == 2;
    })) << session.Record().dump(1);
    // A few idle ticks later it is still there once: the menu applies, nothing else does.
    ASSERT_TRUE(session.WaitForIdleTicks(32));
    json record = session.Record();
    EXPECT_EQ(EffectNames(ActiveLayer(record, "Headline")),
              (std::vector<std::string>{"Drop Shadow", "Box Blur"}));
    EXPECT_EQ(EffectNames(ActiveLayer(record, "city_aerial.mov")),
              (std::vector<std::string>{"Lumetri Color", "Gaussian Blur"}));
    EXPECT_EQ(record["menuActionsSent"], 1);
    EXPECT_EQ(record["suiteApplications"], 0);

    // The item goes to whichever layer is selected now.
    session.Control("select city_aerial.mov");
    ASSERT_TRUE(session.WaitForRecord(
        [](const json& r) { return ActiveLayer(r, "city_aerial.mov").value("selected", false); }));
    ASSERT_TRUE(ChooseFromMenu(session, e2e::EffectMenuPath(QUILLO_SAMPLE_PROJECT, "Stylize", "Glow")));
    ASSERT_TRUE(session.WaitForRecord(
        [](const json& r) { return EffectNames(ActiveLayer(r, "city_aerial.mov")).size() == 3; }));
    record = session.Record();
    EXPECT_EQ(EffectNames(ActiveLayer(record, "city_aerial.mov")).back(), "Glow");
    EXPECT_EQ(EffectNames(ActiveLayer(record, "Headline")).size(), 2u);
    EXPECT_EQ(record["menuActionsSent"], 2);
}

TEST(HostApp, ScriptConsoleCallsExecuteAndShowsTheTaggedResult) {
    HostAppSession session;
    ASSERT_TRUE(session.Started());
    e2e::WindowGeometry window;
    ASSERT_TRUE(session.WaitForWindow(MainWindow, &window)) << session.Log();
    // The console's field runs along the window, 140 points above its bottom edge.
    ASSERT_TRUE(session.ClickAt(window.x + window.width / 2, window.y + window.height - 151));
    const std::vector<std::string> words = {"news",       "preferences", "requeststatus", "Shortcut",
                                            "shortcut 3", "preferences", "hello"};
    for (const std::string& word : words)
        ASSERT_TRUE(session.TypeLine(word));
    ASSERT_TRUE(session.WaitForRecord([&](const json& r) { return r["console"].size() == words.size(); }))
        << session.Record().dump(1);
    const json console = session.Record()["console"];
    for (const json& call : console)
        EXPECT_EQ(call["status"], 0) << call["word"];
    EXPECT_EQ(console[0]["word"], "news");
    // The popup's news count: -1 until its check has answered (it polls once a second).
    EXPECT_TRUE(console[0]["result"] == "integer -1" || console[0]["result"] == "integer 0") << console[0];
    EXPECT_EQ(console[1]["result"], "integer 0");
    const std::string status = console[2]["result"];
    EXPECT_EQ(status.rfind("script\nvar shortcutValue = 0;\n", 0), 0u) << status.substr(0, 80);
    EXPECT_EQ(console[3]["result"], "integer -1") << "words are case-sensitive";
    EXPECT_EQ(console[4]["word"], "shortcut");
    EXPECT_EQ(console[4]["result"], "undefined");
    EXPECT_EQ(console[5]["result"], "integer 3") << "the console's number reaches the settings";
    EXPECT_EQ(console[6]["result"], "integer -1");

    // Nothing listens at the news address: once the check has failed the count reads 0, nothing new.
    size_t calls = words.size();
    std::string news;
    for (int attempt = 0; attempt < 40 && news != "integer 0"; ++attempt) {
        session.Control("console news");
        ++calls;
        ASSERT_TRUE(session.WaitForRecord([&](const json& r) { return r["console"].size() == calls; }));
        news = session.Record()["console"].back()["result"];
        if (news == "integer -1")
            session.WaitForIdleTicks(4);
    }
    EXPECT_EQ(news, "integer 0");
}

TEST(HostApp, QuittingRunsTheDeathHookOnceAndReleasesEverySuite) {
    {
        HostAppSession session;
        ASSERT_TRUE(session.Started());
        ASSERT_TRUE(session.WaitForWindow(MainWindow)) << session.Log();
        // The application menu's Quit, its only item here.
        ASSERT_TRUE(session.ClickMenuPath({0, 0}));
        EXPECT_EQ(session.WaitForExit(), 0) << session.Log();
        const json record = session.Record();
        EXPECT_EQ(record["deathHooksRun"], 1);
        EXPECT_EQ(record["suitesOutstanding"], 0);
    }
    {
        // A termination request (how the run script ends a session) quits the same way.
        HostAppSession session;
        ASSERT_TRUE(session.Started());
        ASSERT_TRUE(session.WaitForWindow(MainWindow)) << session.Log();
        session.Signal(SIGTERM);
        EXPECT_EQ(session.WaitForExit(), 0) << session.Log();
        EXPECT_EQ(session.Record()["deathHooksRun"], 1);
    }
}

} // namespace
