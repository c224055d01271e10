#include "nimbit/ui/native_file_browser.h"
#include "nimbit/ui/native_file_shell.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "nimbit/ui/offscreen/offscreen_file_shell.h"

#include <gtest/gtest.h>

using namespace nimbit;
using namespace nimbit::ui;

TEST(OffscreenDialogs, DialogsAnswerFromTheScriptAndTheShellRecordsHandOffs) {
    offscreen_file_browser& script = offscreen_file_browser::instance();
    script.reset();
    script.answer({file_path("/tmp/a.png")});
    script.answer({}); // the second dialog is cancelled
    const std::vector<file_browser::file_filter> png{{"PNG files (*.png)", "*.png"}};

    EXPECT_EQ(file_browser::file_dialog(nullptr, file_browser::dialog_type::save, "Save to PNG", png, false,
                                        "x.png"),
              std::vector<file_path>{file_path("/tmp/a.png")});
    EXPECT_TRUE(
        file_browser::file_dialog(nullptr, file_browser::dialog_type::open, "Open", png, true, "").empty());
    EXPECT_TRUE(file_browser::folder_select_dialog(nullptr, "Select Folder").empty()) << "nothing scripted";

    ASSERT_EQ(script.requests().size(), 3u);
    const dialog_request& first = script.requests()[0];
    EXPECT_EQ(first.title, "Save to PNG");
    EXPECT_EQ(first.type, file_browser::dialog_type::save);
    EXPECT_EQ(first.default_name, "x.png");
    ASSERT_EQ(first.filters.size(), 1u);
    EXPECT_EQ(first.filters[0].pattern, "*.png");
    EXPECT_EQ(script.requests()[2].what, dialog_request::kind::folder);
    EXPECT_EQ(script.pending_answers(), 0u);

    // Single-choice dialogs return one item; a responder sees the request.
    const std::vector<file_path> two{file_path("/a"), file_path("/b")};
    script.answer(two);
    script.answer(two);
    script.answer(two);
    EXPECT_EQ(file_browser::file_dialog(nullptr, file_browser::dialog_type::open, "t", {}, true, "").size(),
              2u);
    EXPECT_EQ(file_browser::file_dialog(nullptr, file_browser::dialog_type::open, "t", {}, false, "").size(),
              1u);
    EXPECT_EQ(file_browser::folder_select_dialog(nullptr, "Select Folder"), file_path("/a"));

    script.set_responder(
        [](const dialog_request& r) { return std::vector<file_path>{file_path("/out/" + r.title)}; });
    EXPECT_EQ(file_browser::folder_select_dialog(nullptr, "pics", file_path("/start")),
              file_path("/out/pics"));
    EXPECT_EQ(script.requests().back().start_folder, file_path("/start"));
    script.reset();

    // The shell records hand-offs and answers as told.
    offscreen_file_shell& shell = offscreen_file_shell::instance();
    shell.reset();
    EXPECT_TRUE(file_shell::show_in_explorer(file_path("/c/x.png"), true));
    shell.set_result(false);
    EXPECT_FALSE(file_shell::open_link("https://example.org/news"));
    ASSERT_EQ(shell.calls().size(), 2u);
    EXPECT_EQ(shell.calls()[0].what, shell_call::kind::show_in_explorer);
    EXPECT_EQ(shell.calls()[0].path, file_path("/c/x.png"));
    EXPECT_TRUE(shell.calls()[0].select);
    EXPECT_EQ(shell.calls()[1].url, "https://example.org/news");
    shell.reset();
}
