#include "gallery/capture_store.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "popup/effects_popup_window.h"
#include "popup/preferences_data.h"
#include "tests/foundation/temp_folder.h"
#include "tests/support/offscreen_test.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

// The popup's side of a capture: the flash, the request to the controller, the clipboard image.
class PopupCaptureTest : public OffscreenTest {
protected:
    void SetUp() override {
        OffscreenTest::SetUp();
        ::setenv("QUILLO_USER_DATA_DIR", (tmp / "user").to_string().c_str(), 1);
        prefs.captureFolder = (tmp / "Capture").to_string();
        popup = std::make_unique<EffectsPopupWindow>(prefs);
        requests.watch(*popup, "", {event_type::custom});
    }
    void TearDown() override {
        popup.reset();
        ::unsetenv("QUILLO_USER_DATA_DIR");
        OffscreenTest::TearDown();
    }
    std::vector<std::string> Captures() const {
        std::vector<std::string> names;
        for (const ListedCapture& c : CaptureStore::ListCaptures(prefs.captureFolder))
            names.push_back(c.path.leaf(true));
        return names;
    }

    temp_folder tmp;
    PreferencesData prefs;
    std::unique_ptr<EffectsPopupWindow> popup;
    event_recorder requests;
};

// The file name a capture gets from its named parts, the time left out.
bool NamedFor(const std::string& name, const std::string& prefix) {
    return name.rfind(prefix, 0) == 0 && name.size() == prefix.size() + 23; // time and ".png"
}

} // namespace

// The screenshot button and the clipboard: the chord cannot reopen the popup during a capture, the
// flash lets the pointer through and fades out, and clipboard images become captures named for their
// source (a paste for the moment alone).
TEST_F(PopupCaptureTest, ScreenshotExportAndClipboardCaptures) {
    popup->Show("Intro", "Comp 1", "Layer", PopupCommand{PopupCommand::Show});
    const size_t timers = offscreen::running_timers();
    bool shownDuringCapture = true;
    event_recorder controller;
    event_manager::instance().add_event(popup.get(), &controller, event_type::custom, [&](const event_info&) {
        popup->hide();
        popup->Show("P", "C", "L", PopupCommand{PopupCommand::Show}); // the chord, while the host renders
        shownDuringCapture = popup->IsShown();
    });
    generic_button& button = popup->GetToolButton(EffectsPopupWindow::ScreenshotButton);
    button.press();
    EXPECT_EQ(requests.data(), (std::vector<uint64_t>{3}));
    EXPECT_FALSE(shownDuringCapture);
    EXPECT_TRUE(Captures().empty()); // the host writes the frame; the popup wrote nothing
    const ivec4 at = button.get_rect();
    EXPECT_EQ(popup->get_widget_at_pos({at.x + 4, at.y + 4}), &button);
    offscreen::advance_ms(1100);
    EXPECT_EQ(std::pair(popup->GetFlash(), offscreen::running_timers()), std::pair(0.0f, timers));
    event_manager::instance().remove_events(&controller);
    popup->Show("", "", "", PopupCommand{PopupCommand::Export});
    EXPECT_EQ(requests.data(), (std::vector<uint64_t>{3, 2}));

    popup->Show("Intro", "Comp 1", "", PopupCommand{PopupCommand::Show});
    popup->TakeScreenshot(true); // nothing on the clipboard: nothing written
    EXPECT_TRUE(Captures().empty());
    bitmap image;
    ASSERT_TRUE(image.create({5, 3}, image_alpha::alpha) && image.copy_to_clipboard());
    popup->TakeScreenshot(true);
    popup->Paste();
    std::vector<std::string> names = Captures();
    ASSERT_EQ(names.size(), 2u);
    std::sort(names.begin(), names.end()); // digits sort before letters
    EXPECT_TRUE(NamedFor(names[0], ""));
    EXPECT_TRUE(NamedFor(names[1], "Intro_Comp 1_"));
}
