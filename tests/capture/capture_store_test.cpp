#include "gallery/capture_store.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "nimbit/ui/offscreen/offscreen_file_shell.h"
#include "tests/foundation/temp_folder.h"
#include "tests/support/offscreen_test.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

class CaptureStoreTest : public OffscreenTest {
protected:
    // A small picture whose pixels say where they are, so a round trip can be checked.
    static bitmap Picture(int width = 6, int height = 4) {
        bitmap image;
        image.create({width, height}, image_alpha::alpha);
        bitmap_data data = image.lock();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                unsigned char* p = data.bits + y * data.pitch + x * 4;
                p[0] = static_cast<unsigned char>(40 * x), p[1] = static_cast<unsigned char>(60 * y),
                p[2] = 9, p[3] = 255;
            }
        image.unlock(data);
        return image;
    }
    file_path Capture(const char* name, int64_t modified) {
        const file_path path = tmp / name;
        EXPECT_TRUE(Picture().save_image(path, image_format::png));
        EXPECT_TRUE(set_file_dates(path, modified, modified));
        return path;
    }
    static std::string Magic(const file_path& path) { return read_text(path).substr(0, 4); }

    temp_folder tmp;
    offscreen_file_browser& dialogs = offscreen_file_browser::instance();
};

const std::string PngMagic = "\x89PNG", JpgMagic = "\xFF\xD8\xFF";

} // namespace

TEST_F(CaptureStoreTest, NamesJoinProjectCompositionAndTimeLeavingOutEmptyParts) {
    const struct {
        const char* project;
        const char* composition;
        const char* name;
    } cases[] = {
        {"", "", "2018-03-07_14.05.09"},
        {"Intro", "Comp 1", "Intro_Comp 1_2018-03-07_14.05.09"},
        {"Intro", "", "Intro_2018-03-07_14.05.09"},
        {"", "Comp 1", "Comp 1_2018-03-07_14.05.09"},
        {"a/b", "c", "a/b_c_2018-03-07_14.05.09"}, // nothing escaped
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(CaptureStore::CaptureName(c.project, c.composition, "2018-03-07_14.05.09"), c.name);
    }
    EXPECT_EQ(CaptureStore::CapturePath("/x/Capture", "P", "C", "t").to_string(), "/x/Capture/P_C_t.png");
}

TEST_F(CaptureStoreTest, SaveCreatesTheFolderWritesAPngAndFailsSilently) {
    const std::string folder = (tmp / "deep/er/Capture").to_string();
    const file_path saved = CaptureStore::SaveCapture(Picture(), folder, "Intro", "Comp 1");
    ASSERT_FALSE(saved.empty());
    EXPECT_EQ(saved.stem().to_string(), folder);
    EXPECT_EQ(saved.leaf(true).rfind("Intro_Comp 1_", 0), 0u);
    EXPECT_EQ(saved.extension(), "png");
    bitmap back;
    ASSERT_TRUE(back.load_image(saved));
    EXPECT_EQ(back.get_size(), (ivec2{6, 4}));

    // A file standing where the folder should be: nothing is written, nothing is thrown.
    ASSERT_TRUE(write_text(tmp / "blocked", "x"));
    EXPECT_TRUE(CaptureStore::SaveCapture(Picture(), (tmp / "blocked").to_string(), "", "").empty());
    EXPECT_TRUE(CaptureStore::SaveCapture(bitmap(), folder, "", "Empty").empty());
    EXPECT_EQ(CaptureStore::ListCaptures(folder).size(), 1u);
}

TEST_F(CaptureStoreTest, ListsPngAndJpgInAnyCaseNewestFirst) {
    Capture("a.PNG", 100);
    Capture("b.Jpg", 300);
    Capture("c.png", 200);
    for (const char* other : {"c.jpeg", "d.bmp", "e.pn", "png", "f.tif"})
        ASSERT_TRUE(write_text(tmp / other, "x"));
    ASSERT_TRUE(make_dir(tmp / "folder.png"));

    std::vector<std::string> listed;
    for (const ListedCapture& c : CaptureStore::ListCaptures(tmp.path().to_string()))
        listed.push_back(c.path.leaf(true) + "@" + std::to_string(c.time));
    EXPECT_EQ(listed, (std::vector<std::string>{"b.Jpg@300", "c.png@200", "a.PNG@100"}));

    EXPECT_TRUE(CaptureStore::ListCaptures((tmp / "missing").to_string()).empty());
    EXPECT_TRUE(CaptureStore::ListCaptures("").empty());
}

TEST_F(CaptureStoreTest, DeleteAsksForOneOrManyAndRemovesOnlyWhenConfirmed) {
    EXPECT_EQ(CaptureStore::DeleteQuestion(1), "Are you sure you want to delete this image?");
    EXPECT_EQ(CaptureStore::DeleteQuestion(3), "Are you sure you want to delete these 3 images?");

    const std::vector<file_path> files{Capture("1.png", 1), Capture("2.png", 2), Capture("3.png", 3)};
    std::vector<std::string> asked;
    bool confirm = false;
    const auto ask = [&](const std::string& title, const std::string& question) {
        asked.push_back(title + " " + question);
        return confirm;
    };
    EXPECT_TRUE(CaptureStore::DeleteCaptures(files, ask).empty());
    EXPECT_EQ(asked, (std::vector<std::string>{"Delete? Are you sure you want to delete these 3 images?"}));
    EXPECT_EQ(CaptureStore::ListCaptures(tmp.path().to_string()).size(), 3u);

    confirm = true;
    EXPECT_EQ(CaptureStore::DeleteCaptures({files[0], files[2], tmp / "gone.png"}, ask),
              (std::vector<file_path>{files[0], files[2]}));
    EXPECT_TRUE(CaptureStore::DeleteCaptures({}, ask).empty());
    EXPECT_EQ(asked.size(), 2u); // nothing to delete, nothing asked
    const auto left = CaptureStore::ListCaptures(tmp.path().to_string());
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].path, files[1]);
}

TEST_F(CaptureStoreTest, ExportOneUsesTheDialogOfItsKindAndTheFormatItNames) {
    const file_path capture = Capture("Intro_2018.png", 1);
    const struct {
        CaptureExport kind;
        const char* title;
        size_t filters;
        const char* proposed;
        const char* chosen;
        const std::string& magic;
    } cases[] = {
        {CaptureExport::Png, "Save to PNG", 1, "Intro_2018.png", "out1.png", PngMagic},
        {CaptureExport::Jpg, "Save to JPG", 1, "Intro_2018.jpg", "out2.jpg", JpgMagic},
        {CaptureExport::Either, "Save to File", 2, "Intro_2018.png", "out3.JPG", JpgMagic},
        {CaptureExport::Either, "Save to File", 2, "Intro_2018.png", "out4.tga", PngMagic},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.chosen);
        dialogs.answer({tmp / c.chosen});
        EXPECT_TRUE(CaptureStore::ExportCapture(capture, c.kind, nullptr));
        const dialog_request& shown = dialogs.requests().back();
        EXPECT_EQ(shown.type, file_browser::dialog_type::save);
        EXPECT_EQ(shown.title, c.title);
        EXPECT_EQ(shown.filters.size(), c.filters);
        EXPECT_EQ(shown.default_name, c.proposed);
        EXPECT_EQ(Magic(tmp / c.chosen).substr(0, c.magic.size()), c.magic);
    }
    EXPECT_EQ(dialogs.requests()[1].filters[0].label, "JPG files (*.jpg)");

    dialogs.answer({}); // cancelled
    EXPECT_FALSE(CaptureStore::ExportCapture(capture, CaptureExport::Png, nullptr));
    EXPECT_FALSE(CaptureStore::ExportCapture(tmp / "missing.png", CaptureExport::Png, nullptr));
}

TEST_F(CaptureStoreTest, ExportSeveralWritesEachUnderItsStemIntoTheChosenFolder) {
    std::vector<file_path> captures;
    for (int i = 0; i < 7; ++i)
        captures.push_back(Capture(("shot" + std::to_string(i) + ".png").c_str(), i));
    captures.push_back(tmp / "gone.png"); // unreadable: skipped, the rest still written
    ASSERT_TRUE(make_dir(tmp / "out"));

    dialogs.answer({tmp / "out"});
    EXPECT_EQ(CaptureStore::ExportCaptures(captures, CaptureExport::Jpg, nullptr), 7u);
    EXPECT_EQ(dialogs.requests().back().title, "Select Folder");
    const std::vector<std::string> written = tree(tmp / "out");
    ASSERT_EQ(written.size(), 7u);
    EXPECT_EQ(written.front(), "shot0.jpg");
    EXPECT_EQ(Magic(tmp / "out/shot6.jpg").substr(0, 3), JpgMagic);

    dialogs.answer({});
    EXPECT_EQ(CaptureStore::ExportCaptures(captures, CaptureExport::Png, nullptr), 0u);
    EXPECT_EQ(tree(tmp / "out").size(), 7u);
}

TEST_F(CaptureStoreTest, RevealSelectsTheFileInTheViewer) {
    EXPECT_TRUE(CaptureStore::RevealCapture(tmp / "a.png"));
    const auto& calls = offscreen_file_shell::instance().calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].path, tmp / "a.png");
    EXPECT_TRUE(calls[0].select);
}
