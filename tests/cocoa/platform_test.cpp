// What only the AppKit backend does, on a real window server: a modal session ended by the input it
// dispatches, the showcase driven by real input and the pasteboard, font lookup, dialog filters and
// the desktop opener.

#include "display_session.h"
#include "tests/foundation/temp_folder.h"
#include "tests/support/backend_conformance.h"

#include "nimbit/ui/cocoa/file_filters.h"
#include "nimbit/ui/cocoa/font_lookup.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/native_file_shell.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/showcase_controls.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace backend_test;
using namespace cocoa_test;
using nimbit::ivec4;

// Ended by input that the session itself dispatches (a click, as a question's OK ends it): it returns
// its code and the window that had the keyboard has it back. (A question ended by its keys, and asked
// again, is in the e2e gallery scene.)
TEST(CocoaModal, EndedByAClickItDispatchesGivesTheKeyboardBack) {
    probe_window owner({40, 40, 160, 90});
    owner.w.show();
    ASSERT_TRUE(wait_for([&] { return owner.w.has_focus(); }));
    probe_window asked({260, 240, 160, 90});
    nimbit::ui::event_manager::instance().add_event(
        &asked.root, &asked, nimbit::ui::event_type::mouse_up,
        [&](const nimbit::ui::event_info&) { asked.w.end_modal(5); });
    xdotool_later("sleep 0.5 mousemove 300 270 mousedown 1 sleep 0.1 mouseup 1");
    EXPECT_EQ(asked.w.show_modal(), 5);
    EXPECT_FALSE(asked.w.is_shown());
    EXPECT_TRUE(wait_for([&] { return owner.w.has_focus(); }));
}

TEST(CocoaShowcase, IsStyledOnScreenAndTakesPointerKeysAndThePasteboard) {
    nimbit::ui::window w;
    w.create("Showcase", {80, 60, nimbit::ui::showcase_size.x, nimbit::ui::showcase_size.y},
             nimbit::ui::window_style_borderless);
    std::unique_ptr<nimbit::ui::showcase> show_case = nimbit::ui::build_showcase(w);
    nimbit::ui::input_box& search = show_case->controls().search;
    w.show();
    ASSERT_TRUE(wait_for([&] { return w.has_focus(); }));
    // Painted, and styled, once the search field's dark background is on screen.
    const point corner = search.calc_absolute_pos();
    ASSERT_TRUE(wait_for([&] {
        return looks(shown(w), corner.x + 4, corner.y + 4, {0.071f, 0.071f, 0.075f, 1}, 0.05f);
    }));

    // The input box takes typing and selection; Command (Alt on Linux) + C copies through the real
    // pasteboard.
    ASSERT_TRUE(click(w, {corner.x + search.get_rect().w / 2, corner.y + search.get_rect().h / 2}, 0));
    ASSERT_TRUE(wait_for([&] { return search.get_inside().has_focus(); }));
    ASSERT_TRUE(xdotool("key End"));
    ASSERT_TRUE(type(w, "Xy"));
    ASSERT_TRUE(wait_for([&] { return search.get_text() == "Gaussian BlurXy"; })) << search.get_text();
    ASSERT_TRUE(xdotool("key --delay 30 shift+Left shift+Left"));
    ASSERT_TRUE(wait_for([&] { return search.get_selected_text() == "Xy"; })) << search.get_selected_text();
    nimbit::ui::get_native_clipboard().set_text("before");
    ASSERT_TRUE(xdotool("keydown alt"));
    ASSERT_TRUE(wait_for([] { return nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command); }));
    ASSERT_TRUE(xdotool("key c"));
    ASSERT_TRUE(wait_for([] { return nimbit::ui::get_native_clipboard().get_text() == "Xy"; }));
    ASSERT_TRUE(xdotool("keyup alt"));
}

TEST(CocoaPlatform, FontsFiltersAndTheDesktopOpener) {
    EXPECT_FALSE(nimbit::ui::cocoa::installed_font_family("").empty());
    // Dialog filters accept both cases.
    const auto types = nimbit::ui::cocoa::allowed_file_types({{"PNG files (*.png)", "*.png"},
                                                              {"JPG", "*.jpg"},
                                                              {"again", "*.PNG"},
                                                              {"all", "*.*"},
                                                              {"short", "*"}});
    EXPECT_EQ(types, (std::vector<std::string>{"png", "PNG", "jpg", "JPG"}));

    // Links and folders go to the desktop opener: a stand-in on the PATH logs what it is handed.
    temp_folder dir;
    const nimbit::file_path log = dir / "opened.txt", opener = dir / "xdg-open";
    ASSERT_TRUE(write_text(opener, "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + log.to_string() + "'\n"));
    std::filesystem::permissions(native_path(opener), std::filesystem::perms::owner_all);
    const std::string old_path = std::getenv("PATH") ? std::getenv("PATH") : "";
    set_env("PATH", dir.path().to_string() + ":" + old_path);
    const std::string link = "https://example.com/a b?x=1&y='2'";
    EXPECT_TRUE(nimbit::file_shell::open_link(link));
    EXPECT_TRUE(nimbit::file_shell::show_in_explorer(nimbit::file_path("/tmp/some folder/pic.png"), true));
    EXPECT_FALSE(nimbit::file_shell::open_link(""));
    // Both arrive, in either order, and nothing else.
    EXPECT_TRUE(wait_for([&] { return read_text(log).size() == link.size() + 18; })) << read_text(log);
    EXPECT_NE(read_text(log).find(link + "\n"), std::string::npos) << read_text(log);
    EXPECT_NE(read_text(log).find("/tmp/some folder\n"), std::string::npos) << read_text(log);
    set_env("PATH", old_path);
}
