#include "gallery/capture_store.h"
#include "gallery/capture_writer.h"

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "popup/effects_popup_window.h"
#include "popup/preferences_data.h"
#include "tests/support/data_folders.h"
#include "tests/support/offscreen_test.h"

#include <chrono>
#include <thread>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

class CaptureStoreTest : public OffscreenTest, protected private_data_folders {
protected:
    // A picture of its own width, so that each file can be told apart.
    static bitmap Picture(int width = 6) {
        bitmap image;
        image.create({width, 3}, image_alpha::alpha);
        return image;
    }
    // Whether path holds the whole picture of that width.
    static bool Whole(const file_path& path, int width) {
        bitmap back;
        return back.load_image(path) && back.get_size() == (ivec2{width, 3});
    }
    file_path Capture(const std::string& name, int64_t modified) {
        const file_path path = root / name.c_str();
        EXPECT_TRUE(Picture().save_image(path, image_format::png) &&
                    set_file_dates(path, modified, modified));
        return path;
    }
    std::vector<std::string> Listed(const file_path& folder) const {
        std::vector<std::string> names;
        for (const ListedCapture& c : CaptureStore::ListCaptures(folder.to_string()))
            names.push_back(c.path.leaf(true) + "@" + std::to_string(c.time));
        return names;
    }
    // JPG files start with a start-of-image marker; ours are otherwise PNG.
    static bool IsJpg(const file_path& path) { return read_text(path).rfind("\xFF\xD8\xFF", 0) == 0; }

    offscreen_file_browser& dialogs = offscreen_file_browser::instance();
};

// Whether a listed capture is named for its parts: the prefix, then the time and ".png".
bool NamedFor(const std::string& listed, const std::string& prefix) {
    return listed.rfind(prefix, 0) == 0 && listed.find('@') == prefix.size() + 23;
}

} // namespace

TEST_F(CaptureStoreTest, NamesLeaveOutEmptyPartsSavingCreatesTheFolderAndListingsHoldPngAndJpgNewestFirst) {
    const char* const cases[][3] = {
        {"", "", "2018-03-07_14.05.09"},
        {"Intro", "", "Intro_2018-03-07_14.05.09"},
        {"", "Comp 1", "Comp 1_2018-03-07_14.05.09"},
        {"a/b", "c", "a/b_c_2018-03-07_14.05.09"}, // nothing escaped
    };
    for (const auto& c : cases)
        EXPECT_EQ(CaptureStore::CaptureName(c[0], c[1], "2018-03-07_14.05.09"), c[2]);

    // Saved under such a name (the popup scene checks it whole) in a folder made for it.
    const file_path folder = root / "deep/er/Capture";
    const file_path saved = CaptureStore::SaveCapture(Picture(), folder.to_string(), "Intro", "Comp 1");
    EXPECT_TRUE(saved.stem() == folder && Whole(saved, 6));
    // A second capture in the same second never replaces the first.
    const file_path second = CaptureStore::FreeCapturePath(saved);
    EXPECT_EQ(second.leaf(true), saved.leaf(false) + " 2.png");
    ASSERT_TRUE(write_text(second, "x"));
    EXPECT_EQ(CaptureStore::FreeCapturePath(saved).leaf(true), saved.leaf(false) + " 3.png");
    ASSERT_TRUE(write_text(root / "blocked", "a file where the folder should be"));
    EXPECT_TRUE(CaptureStore::SaveCapture(Picture(), (root / "blocked").to_string(), "", "").empty());

    // Listed: PNG and JPG in any case, newest first. Deleting them, its question and confirmation, is
    // the gallery tests' part; its window asks nothing for an empty selection, and neither does the store.
    Capture("a.PNG", 100);
    Capture("b.Jpg", 300);
    Capture("c.png", 200);
    for (const char* other : {"c.jpeg", "d.bmp", "e.pn", "png"})
        ASSERT_TRUE(write_text(root / other, "x"));
    ASSERT_TRUE(make_dir(root / "folder.png"));
    EXPECT_EQ(Listed(root.path()), (std::vector<std::string>{"b.Jpg@300", "c.png@200", "a.PNG@100"}));
    EXPECT_TRUE(Listed(root / "missing").empty());
    const auto unasked = [](const std::string&, const std::string&) {
        ADD_FAILURE() << "asked to delete nothing";
        return true;
    };
    EXPECT_TRUE(CaptureStore::DeleteCaptures({}, unasked).empty());
}

// One capture through the dialog of its kind, in the format it names; several into a chosen folder,
// each under its stem, an unreadable one skipped; cancelled dialogs write nothing.
TEST_F(CaptureStoreTest, ExportsOneThroughTheDialogOfItsKindAndSeveralIntoAFolder) {
    const file_path capture = Capture("Intro_2018.png", 1);
    // clang-format off
    const struct { CaptureExport kind; const char *title, *proposed, *chosen; bool jpg; } cases[] = {
        {CaptureExport::Png, "Save to PNG", "Intro_2018.png", "out1.png", false},
        {CaptureExport::Jpg, "Save to JPG", "Intro_2018.jpg", "out2.jpg", true},
        {CaptureExport::Either, "Save to File", "Intro_2018.png", "out3.JPG", true},
        {CaptureExport::Either, "Save to File", "Intro_2018.png", "out4.tga", false},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.chosen);
        dialogs.answer({root / c.chosen});
        EXPECT_TRUE(CaptureStore::ExportCapture(capture, c.kind, nullptr));
        const dialog_request& shown = dialogs.requests().back();
        EXPECT_EQ(std::tie(shown.title, shown.default_name), std::tie(c.title, c.proposed));
        EXPECT_EQ(shown.filters.size(), c.kind == CaptureExport::Either ? 2u : 1u);
        EXPECT_EQ(IsJpg(root / c.chosen), c.jpg);
    }
    dialogs.answer({}); // cancelled
    EXPECT_FALSE(CaptureStore::ExportCapture(capture, CaptureExport::Png, nullptr));

    std::vector<file_path> captures;
    for (int i = 0; i < 7; ++i)
        captures.push_back(Capture("shot" + std::to_string(i) + ".png", i));
    captures.push_back(root / "gone.png"); // unreadable: skipped, the others still written
    ASSERT_TRUE(make_dir(root / "out"));
    dialogs.answer({root / "out"});
    EXPECT_EQ(CaptureStore::ExportCaptures(captures, CaptureExport::Jpg, nullptr), 7u);
    EXPECT_TRUE(tree(root / "out").size() == 7u && IsJpg(root / "out/shot6.jpg"));
}

// More captures than the writer's queue holds, one of them into a folder that cannot be made: the
// others are written in order into a folder created for them, and each is listed only once it is
// whole. (That destruction finishes the queue is checked through the controller, in the host tests.)
TEST_F(CaptureStoreTest, WriterListsEachCaptureOnceItIsWholeAndDropsFailuresSilently) {
    ASSERT_TRUE(write_text(root / "blocked", "a file where the folder should be"));
    CaptureWriter writer;
    std::vector<file_path> queued;
    for (int width = 1; width <= 6; ++width) {
        const file_path path = (width == 4 ? root / "blocked" : root / "new/Capture")
                                   .append(file_path(std::to_string(width) + ".png"));
        writer.Write(Picture(width), path);
        if (width != 4)
            queued.push_back(path);
    }
    std::vector<file_path> listed;
    for (bool busy = true; busy;) {
        busy = writer.Busy(); // read first: once idle, the next take has every capture
        for (const file_path& path : writer.TakeWritten()) {
            EXPECT_TRUE(Whole(path, std::stoi(path.leaf(false)))) << path.to_string();
            listed.push_back(path);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    writer.Flush();
    EXPECT_TRUE(writer.TakeWritten().empty() && listed == queued);
}

// The popup's side of a capture: the chord cannot reopen it while the controller captures, the flash
// lets the pointer through and fades out, and clipboard images become captures named for their
// source (a paste for the moment alone).
TEST_F(CaptureStoreTest, PopupAsksTheControllerFlashesAndSavesClipboardImages) {
    PreferencesData prefs;
    prefs.captureFolder = (root / "Capture").to_string();
    EffectsPopupWindow popup(prefs);
    event_recorder requests(popup, event_type::custom);
    const auto show = [&](std::string project, std::string comp, std::string layer, PopupCommand::Kind kind) {
        popup.Show(project, comp, layer, PopupCommand{kind});
    };
    show("Intro", "Comp 1", "Layer", PopupCommand::Show);
    const size_t timers = offscreen::running_timers();
    bool shownDuringCapture = true;
    event_recorder controller;
    event_manager::instance().add_event(&popup, &controller, event_type::custom, [&](const event_info&) {
        popup.hide();
        show("P", "C", "L", PopupCommand::Show); // the chord, while the host renders
        shownDuringCapture = popup.IsShown();
    });
    generic_button& button = popup.GetToolButton(EffectsPopupWindow::ScreenshotButton);
    button.press();
    EXPECT_TRUE(requests.data() == std::vector<uint64_t>{3} && !shownDuringCapture);
    const ivec4 at = button.get_rect();
    EXPECT_EQ(popup.get_widget_at_pos({at.x + 4, at.y + 4}), &button);
    offscreen::advance_ms(1100);
    EXPECT_EQ(std::pair(popup.GetFlash(), offscreen::running_timers()), std::pair(0.0f, timers));
    event_manager::instance().remove_events(&controller);
    show("", "", "", PopupCommand::Export);
    EXPECT_EQ(requests.data(), (std::vector<uint64_t>{3, 2}));

    show("Intro", "Comp 1", "", PopupCommand::Show);
    popup.TakeScreenshot(true); // nothing on the clipboard
    ASSERT_TRUE(Picture().copy_to_clipboard());
    popup.TakeScreenshot(true);
    popup.Paste();
    // The host writes the frames: the popup, only the clipboard's image, once, and the paste.
    std::vector<std::string> names = Listed(root / "Capture");
    ASSERT_EQ(names.size(), 2u);
    std::sort(names.begin(), names.end()); // digits sort before letters
    EXPECT_TRUE(NamedFor(names[0], "") && NamedFor(names[1], "Intro_Comp 1_"))
        << names[0] << ", " << names[1];
}
