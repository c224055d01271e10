// The global shortcut as the idle hook polls it: the chord table, and opening and closing the popup
// through the controller on the simulated host, with keys fed to the offscreen keyboard.
#include "host/shortcut_chord.h"
#include "host_session.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/offscreen/offscreen_input.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

using nimbit::ui::keyboard;
namespace offscreen = nimbit::ui::offscreen;
namespace key_query = nimbit::ui::key_query;
namespace vk = nimbit::ui::virtual_key;

struct ChordTest : ::testing::Test {
    void SetUp() override {
        RecordingWindow::Install();
        SetKeyQueries({&keyboard::is_key_down, &keyboard::was_key_pressed});
        Release();
        host = &session.Start();
        controller = std::make_unique<EffectsPopup>(host->Basic(), 7, AeVersionCC2018);
        controller->IdleHook(); // first tick: set-up
    }
    void TearDown() override {
        controller.reset();
        RecordingWindow::Uninstall();
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
    void Tick(std::initializer_list<int> keys) {
        offscreen::reset_input();
        for (int k : keys)
            offscreen::set_key_down(k, true);
        controller->IdleHook();
    }
    PreferencesData& Prefs() { return controller->Preferences(); }
    static int Shows() {
        int shows = 0;
        for (const RecordingWindow::Call& c : RecordingWindow::calls)
            shows += c.kind == PopupCommand::Show;
        return shows;
    }

    HostSession session;
    hostsim::SimHost* host = nullptr;
    std::unique_ptr<EffectsPopup> controller;
};

// The fixed choices are played through the controller below; here the custom chord's flags and an
// unknown choice.
TEST(ShortcutChordTable, CustomFlagsAndUnknownChoice) {
    PreferencesData prefs;
    const ModifierState ctrl{true, false, false, false}, shift{false, false, true, false},
        ctrlShift{true, false, true, false}, all{true, true, true, true};
    prefs.shortcutChoice = 4;
    prefs.customCtrl = 1;
    prefs.customShift = 7; // any non-zero value is set
    prefs.customKeyCode = vk::j;
    EXPECT_TRUE(ShortcutModifiersHold(prefs, ctrlShift));
    EXPECT_FALSE(ShortcutModifiersHold(prefs, ctrl));
    EXPECT_FALSE(ShortcutModifiersHold(prefs, all)); // Option and Command must be up
    EXPECT_EQ(ShortcutKey(prefs), vk::j);
    prefs.customCtrl = 0;
    EXPECT_TRUE(ShortcutModifiersHold(prefs, shift));
    EXPECT_FALSE(ShortcutModifiersHold(prefs, ctrlShift));
    prefs.shortcutChoice = 5;
    EXPECT_FALSE(ShortcutModifiersHold(prefs, all));
    EXPECT_EQ(ShortcutKey(prefs), key_query::none);
    EXPECT_FALSE(PollShortcutChord(prefs, KeyQueries{})); // no keyboard: never
}

TEST_F(ChordTest, HeldChordOpensOnceAndTheNextPressCloses) {
    for (int i = 0; i < 3; ++i)
        Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 1);
    EXPECT_EQ(RecordingWindow::hides, 0);
    Tick({vk::left_control});
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(RecordingWindow::hides, 1);
    EXPECT_FALSE(controller->Window()->IsShown());
    Tick({vk::space}); // no Control: nothing
    Tick({});
    EXPECT_EQ(Shows(), 1);
}

TEST_F(ChordTest, RightControlServesTheControlChoicesAndExtraModifiersTheOthers) {
    Tick({vk::right_control, vk::space});
    controller->Window()->Hide();
    Prefs().shortcutChoice = 2;
    Tick({vk::right_control, vk::tab});
    controller->Window()->Hide();
    Prefs().shortcutChoice = 1; // Shift + Space: Control is no Shift, but may be held as well
    Tick({});
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 2);
    Tick({});
    Tick({vk::left_control, vk::left_shift, vk::space});
    controller->Window()->Hide();
    Prefs().shortcutChoice = 3; // Shift + Tab
    Tick({});
    Tick({vk::right_shift, vk::tab});
    EXPECT_EQ(Shows(), 4);
}

TEST_F(ChordTest, OnlyTheCurrentKeyIsQueriedAndOnlyWhileTheHostIsActive) {
    Prefs().shortcutChoice = 2; // Ctrl + Tab: Space is not looked at
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 0);
    // Space was never asked for, so its press is still new to the Space choice.
    Prefs().shortcutChoice = 0;
    host->GetModel().active = false;
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 0);
    host->GetModel().active = true;
    Tick({});
    Tick({vk::left_control, vk::space});
    EXPECT_EQ(Shows(), 1);
}

} // namespace
