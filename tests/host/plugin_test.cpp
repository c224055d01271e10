// The plug-in as the host sees it: the shared library, loaded by the simulated host.

#include "host_session.h"
#include "nimbit/filesystem/file_operations.h"
#include "popup/effect_alias.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <set>

namespace {

// A session with its own copy of the plug-in's bundle in the host's Plug-ins folder, so that every
// test starts from a freshly loaded plug-in (the loader would otherwise hand back the instance an
// earlier test started).
struct PluginSession : HostSession {
    explicit PluginSession(const std::string& json = SmallProject) : HostSession(json) {}
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

int64_t Payload(const TaggedData& value) {
    int64_t bits = 0;
    std::memcpy(&bits, &value.data, sizeof bits);
    return bits;
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

TEST(ScriptBridge, ExecuteChecksItsArgumentsAndTheStatusScriptReadsTheSettingsFile) {
    PluginSession s;
    hostsim::SimHost& host = s.Load(); // not started: no controller, and no settings file
    ExpectStatus(s, 0);
    host.ScriptFreeMem(nullptr);

    // The exported execute checks its arguments and runs the word; the words are the controller tests' part.
    host.StartPlugin();
    TaggedData result{};
    result.type = 99;
    for (const std::vector<TaggedData>& bad :
         {std::vector<TaggedData>{},
          {hostsim::ScriptInteger(1)},
          {hostsim::ScriptString("shortcut"), hostsim::ScriptInteger(1), hostsim::ScriptInteger(2)}})
        EXPECT_EQ(s.Execute(bad, result), 20);
    EXPECT_EQ(result.type, 99);
    EXPECT_EQ(s.Execute({hostsim::ScriptString(nullptr)}, result), 0);
    EXPECT_EQ(Payload(result), -1);
    PreferencesData stored;
    stored.shortcutChoice = 3;
    ASSERT_TRUE(SavePreferences(stored, {}, {}, {}, s.folder / "Library/Application Support/Tarvelo", false));
    ExpectStatus(s, 3);

    // A damaged file reads as no file.
    write_text(s.folder / "Library/Application Support/Tarvelo/effects_settings", "garbage");
    ExpectStatus(s, 0);
    EXPECT_EQ(host.Outstanding(), 0);
}

TEST(Plugin, FirstIdleTickCreatesThePopupAndDeathSavesItsListsAfterASecondStart) {
    PluginSession s;
    hostsim::SimHost& host = s.Load();
    host.StartPlugin();
    host.StartPlugin(); // a second start replaces the controller: both hooks reach the current one
    EXPECT_EQ(host.idleHooks.size(), 2u);
    const nimbit::file_path folder = s.folder / "Library/Application Support/Tarvelo";
    EXPECT_FALSE(nimbit::file_stats(folder).exists);
    host.RunIdle(3);
    // The new popup writes the settings of a first run, but not the lists.
    EXPECT_TRUE(nimbit::file_stats(folder.append(nimbit::file_path("effects_settings"))).exists);
    EXPECT_FALSE(nimbit::file_stats(folder.append(nimbit::file_path("effects_search.txt"))).exists);
    host.RunDeath();
    EXPECT_TRUE(nimbit::file_stats(folder.append(nimbit::file_path("effects_search.txt"))).exists);
    EXPECT_EQ(host.Outstanding(), 0);
}

} // namespace
