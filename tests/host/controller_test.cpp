#include "host/popup_window.h"
#include "host_session.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

// Stands in for the popup window: records what the controller asks of it.
struct RecordingWindow : PopupWindow {
    struct Call {
        std::string project, comp, layer;
        uint32_t kind;
    };
    static inline std::vector<Call> calls;
    static inline int windowsMade = 0, filesWritten = 0, windowsDestroyed = 0;
    static inline std::vector<size_t> catalogueSizes;
    static inline uint32_t newsCount = 12;
    bool shown = false;

    ~RecordingWindow() override { ++windowsDestroyed; }
    uint32_t Show(const std::string& project, const std::string& comp, const std::string& layer,
                  PopupCommand command) override {
        calls.push_back({project, comp, layer, command.kind});
        return command.kind == PopupCommand::NewsCount ? newsCount : NoCommandResult;
    }
    void Hide() override { shown = false; }
    bool IsShown() const override { return shown; }
    void WriteFile() override { ++filesWritten; }
    void SetEffectData(const std::vector<EffectData>& catalogue) override {
        catalogueSizes.push_back(catalogue.size());
    }

    static std::unique_ptr<PopupWindow> Make(PreferencesData&, EffectsPopup&) {
        ++windowsMade;
        return std::make_unique<RecordingWindow>();
    }
    static void Reset() {
        calls.clear();
        catalogueSizes.clear();
        windowsMade = filesWritten = windowsDestroyed = 0;
    }
};

// A started session with a controller on it.
struct ControllerTest : ::testing::Test {
    HostSession session;
    hostsim::SimHost& host = session.Start();
    EffectsPopup c{host.Basic(), 7, AeVersionCC2018};
};

struct WindowedController : ControllerTest {
    void SetUp() override {
        RecordingWindow::Reset();
        SetPopupWindowFactory(&RecordingWindow::Make);
    }
    void TearDown() override { SetPopupWindowFactory(nullptr); }
};

TEST(Controller, RegistersIdleThenDeathHookUnlessUiIsSuppressed) {
    HostSession session;
    hostsim::SimHost& host = session.Start();
    {
        EffectsPopup controller(host.Basic(), 7, AeVersionCC2018);
        EXPECT_EQ(host.idleHooks.size(), 1u);
        EXPECT_EQ(host.deathHooks.size(), 1u);
        EXPECT_EQ(host.commandHooks, 0);
    }
    host.GetModel().suppressInteractiveUI = true;
    EffectsPopup inert(host.Basic(), 7, AeVersionCC2018);
    EXPECT_EQ(host.idleHooks.size(), 1u);
    EXPECT_EQ(host.deathHooks.size(), 1u);
    EXPECT_EQ(host.acquired["AEGP Register Suite/6"], 1);
    EXPECT_EQ(host.Outstanding(), 0);
}

TEST_F(ControllerTest, WithoutAWindowCommandsAnswerAllOnes) {
    c.IdleHook(); // no window factory: nothing to create
    EXPECT_FALSE(c.HasPopupWindow());
    for (uint32_t kind = 0; kind <= 8; ++kind)
        EXPECT_EQ(c.Execute(PopupCommand{kind}), NoCommandResult);
    c.DeathHook(); // nothing to save, nothing to fail
    EXPECT_FALSE(nimbit::file_stats(session.folder / "Library/Application Support/Tarvelo").exists);
}

TEST_F(ControllerTest, HostNames) {
    hostsim::Project& project = *host.GetModel().projects[0];
    auto projectName = [&](const std::string& name) {
        project.name = name;
        return c.GetProjName(c.GetCurrentProject());
    };
    EXPECT_EQ(projectName("Shot.aep"), "Shot");
    EXPECT_EQ(projectName("Shot.AEP"), "Shot");
    EXPECT_EQ(projectName("Shot.v2"), "Shot.v2");
    EXPECT_EQ(projectName("shot.v2.aep"), "shot.v2");
    EXPECT_EQ(projectName(".aep"), "");
    EXPECT_EQ(projectName(""), "Unknown");
    EXPECT_EQ(projectName("Caf\xC3\xA9.aep"), "Caf\xC3\xA9");
    EXPECT_EQ(c.GetProjName(nullptr), "");

    EXPECT_EQ(c.GetCompName(c.GetActiveComp()), "Main");
    EXPECT_EQ(c.GetLayerName(c.GetActiveLayer()), "Title");
    SelectOnly(host, "");
    host.ActiveItem()->layers[1]->selected = true;
    EXPECT_EQ(c.GetLayerName(c.GetActiveLayer()), "plate.mov"); // no name of its own: the source's
    host.ActiveItem()->layers[1]->sourceItem = 0;
    EXPECT_EQ(c.GetLayerName(c.GetActiveLayer()), "Unknown");
    EXPECT_EQ(c.GetLayerName(nullptr), "");
    EXPECT_EQ(c.GetCompName(nullptr), "");

    // Lights and cameras are no active layer.
    for (auto [name, isLayer] : {std::pair{"Title", true},
                                 {"Burst", true},
                                 {"Camera 1", false},
                                 {"Key Light", false},
                                 {"", false}}) {
        SelectOnly(host, name);
        EXPECT_EQ(c.GetActiveLayer() != nullptr, isLayer) << name;
    }
    host.GetModel().projects[0]->activeItem = 1; // footage is not a composition
    EXPECT_EQ(c.GetActiveComp(), nullptr);
    EXPECT_EQ(c.GetActiveLayer(), nullptr);
    EXPECT_EQ(host.Outstanding(), 0);
}

TEST_F(ControllerTest, ProjectBitDepth) {
    EXPECT_EQ(c.GetProjectBitDepth(), 1);
    host.GetModel().projects.clear(); // no project: the script engine answers
    for (auto [answer, depth] : {std::pair{"32", 2}, {"16", 1}, {"8", 0}, {"", 2}, {"8 bits", 2}}) {
        host.GetModel().bitsPerChannel = answer;
        EXPECT_EQ(c.GetProjectBitDepth(), depth) << answer;
    }
    EXPECT_EQ(host.liveMemHandles, 0);
    EXPECT_EQ(host.Outstanding(), 0);
}

TEST_F(WindowedController, FirstIdleTickCreatesTheWindowWithTheCatalogue) {
    c.IdleHook();
    c.IdleHook();
    EXPECT_EQ(RecordingWindow::windowsMade, 1);
    EXPECT_EQ(RecordingWindow::catalogueSizes, (std::vector<size_t>{8}));
    EXPECT_TRUE(nimbit::file_stats(session.folder / "Library/Application Support/Tarvelo").exists);

    c.CustomEvent(5); // the popup asks for a fresh catalogue
    EXPECT_EQ(RecordingWindow::catalogueSizes, (std::vector<size_t>{8, 8}));
    EXPECT_EQ(c.PresetPaths().size(), 4u);
    c.CustomEvent(0); // a capture request is not a catalogue refresh
    EXPECT_EQ(RecordingWindow::catalogueSizes.size(), 2u);

    c.DeathHook();
    EXPECT_EQ(RecordingWindow::filesWritten, 1);
    EXPECT_EQ(RecordingWindow::windowsDestroyed, 1);
    EXPECT_FALSE(c.HasPopupWindow());
    EXPECT_EQ(host.Outstanding(), 0);
}

TEST_F(WindowedController, ExecuteHandsTheHostNamesToTheWindow) {
    c.IdleHook();
    EXPECT_EQ(c.Execute(PopupCommand{PopupCommand::NewsCount}), 12u);
    SelectOnly(host, "Camera 1");
    host.GetModel().projects[0]->name = "";
    EXPECT_EQ(c.Execute(PopupCommand{PopupCommand::Show}), NoCommandResult);
    ASSERT_EQ(RecordingWindow::calls.size(), 2u);
    EXPECT_EQ(RecordingWindow::calls[0].project, "Shot");
    EXPECT_EQ(RecordingWindow::calls[0].comp, "Main");
    EXPECT_EQ(RecordingWindow::calls[0].layer, "Title");
    EXPECT_EQ(RecordingWindow::calls[1].project, "Unknown");
    EXPECT_EQ(RecordingWindow::calls[1].layer, ""); // a camera is no active layer
}

TEST(Controller, VersionMapping) {
    const std::tuple<A_long, A_long, AeVersion> cases[] = {
        {115, 0, AeVersionCC2018}, {114, 9, AeVersionCC2017}, {113, 5, AeVersionCC2015},
        {113, 4, AeVersionCC2014}, {112, 0, AeVersionCC},     {116, 0, AeVersionOther},
        {110, 0, AeVersionOther}, // never CS6 or CS5
    };
    for (auto [major, minor, version] : cases)
        EXPECT_EQ(AeVersionFromApi(major, minor), version) << major << "." << minor;
    EXPECT_TRUE(IsExcludedHostApi(111));
    EXPECT_TRUE(IsExcludedHostApi(17));
    EXPECT_FALSE(IsExcludedHostApi(116));
}

} // namespace
