#include "tests/support/widget_fixture.h"

#include "nimbit/ui/input_box.h"

#include <algorithm>
#include <map>

using panel = input_inside_panel;

namespace {

// A field at (10, 10, 200, 26): with the default margins (4, 2) the text starts at client x 14 and
// every character of the 12-point font is 6 pixels wide in the offscreen metric.
class InputBoxTest : public WidgetTest {
protected:
    static constexpr int text_x = 14, text_y = 20, char_w = 6;

    void SetUp() override {
        WidgetTest::SetUp();
        box.create(win.get_root(), {10, 10, 200, 26});
        box.focus();
    }
    using S = std::tuple<std::string, int, int>;
    panel& in() { return box.get_inside(); }
    // The text with the caret and the selection, so one check covers an edit.
    S state() { return {box.get_text(), in().get_caret(), in().get_selection()}; }
    _vec2<int> at_char(int index) { return {text_x + index * char_w, text_y}; }

    input_box box;
};

TEST_F(InputBoxTest, TypingRaisesEventsOnTheBoxAndKeysTheFieldDoesNotUseReachIt) {
    event_recorder changed(box, event_type::value_changed), chars(box, event_type::key_char);
    type(u"hel");
    offscreen::set_key_down(virtual_key::left_control, true);
    type(u"c"); // a character typed with Control is neither text nor reported
    offscreen::set_key_down(virtual_key::left_control, false);
    type(u"\t"); // Tab is reported but is not text
    EXPECT_EQ(
        std::tuple(box.get_text(), changed.count(), changed.entries.back().agent, chars.entries.back().agent),
        std::tuple("hel", 3u, event_agent::program, event_agent::program));
    EXPECT_EQ(chars.data(), (std::vector<uint64_t>{'h', 'e', 'l', '\t'}));
    event_recorder downs(box, event_type::key_down);
    key(event_key::up); // the application's
    EXPECT_EQ(downs.data(), std::vector<uint64_t>{event_key::up});
    // Characters beyond the basic plane arrive in two halves; a lone half is dropped.
    box.set_text("");
    type(u"a\U0001F600b");
    EXPECT_EQ(state(), S(std::string("a\xF0\x9F\x98\x80") + 'b', 3, 0));
    type(std::u16string(1, char16_t(0xDC00)));
    EXPECT_EQ(in().get_wide_text().size(), 3u);
    type(std::u16string{0xD83D, u'c', 0xDE00}); // a high half that another character followed is forgotten
    EXPECT_EQ(in().get_wide_text().size(), 4u);
}

// Each row presses a key (with Shift or not) or types text, then checks the text, the caret and the
// selection, which counts from the caret towards its far end.
TEST_F(InputBoxTest, ArrowsHomeEndAndDeletesMoveTheCaretAndTheSelection) {
    using namespace event_key;
    const std::tuple<bool, uint32_t, std::u16string_view, S> steps[] = {
        // Shift, key, typed, after
        // clang-format off
        {false, 0, u"helo", {"helo", 4, 0}},
        {false, left, u"", {"helo", 3, 0}},
        {false, 0, u"l", {"hello", 4, 0}},            // inserted at the caret
        {true, left, u"", {"hello", 3, 1}},
        {true, left, u"", {"hello", 2, 2}},
        {true, home, u"", {"hello", 0, 4}},           // from 0 to the old far end
        {true, right, u"", {"hello", 1, 3}},          // shrinks it from the left
        {false, right, u"", {"hello", 2, 0}},         // a plain arrow clears it
        {true, end, u"", {"hello", 5, -3}},           // to the end, leftwards of the caret
        {true, end, u"", {"hello", 5, -3}},           // at the end already: kept with Shift
        {false, end, u"", {"hello", 5, 0}},           // and dropped without
        {false, 0, u"\x7f", {"hell", 4, 0}},
        {false, home, u"", {"hell", 0, 0}},
        {false, 0, u"\x7f", {"hell", 0, 0}},          // nothing before the caret
        {false, forward_delete, u"", {"ell", 0, 0}},
        {false, end, u"", {"ell", 3, 0}},
        {false, forward_delete, u"", {"ell", 3, 0}},  // nothing after it
        {true, left, u"", {"ell", 2, 1}},
        {false, 0, u"X", {"elX", 3, 0}},              // typing over a selection replaces it
        {true, home, u"", {"elX", 0, 3}},
        {false, forward_delete, u"", {"", 0, 0}},     // a delete takes the selection
        // clang-format on
    };
    for (const auto& [shift, pressed, typed, after] : steps) {
        SCOPED_TRACE(std::get<0>(after) + " " + std::to_string(std::get<1>(after)));
        if (!typed.empty())
            type(typed);
        else if (shift)
            key_with(shift_key, pressed);
        else
            key(pressed);
        EXPECT_EQ(state(), after);
    }
}

TEST_F(InputBoxTest, UndoKeepsTheLastTwentyStatesAndRedoIsClearedByAnEdit) {
    const std::u16string letters = u"abcdefghijklmnopqrstu"; // 21 edits
    type(letters);
    int undone = 0;
    while (in().load_previous_state())
        ++undone;
    EXPECT_EQ(std::tuple(undone, box.get_text()), std::tuple(19, "ab")) << "the oldest state the ring holds";
    // Redo walks forward again, to the newest state and no further.
    while (in().load_next_state())
        --undone;
    EXPECT_EQ(std::tuple(undone, box.get_text()), std::tuple(0, "abcdefghijklmnopqrstu"));

    // Command+Z and Command+Shift+Z; an edit after an undo drops the redo states.
    key_with(command_key, 'Z', 2);
    offscreen::set_key_down(shift_key, true);
    key_with(command_key, 'Z');
    offscreen::set_key_down(shift_key, false);
    type(u"!"); // after two undos and one redo
    EXPECT_TRUE(!in().load_next_state() && box.get_text() == "abcdefghijklmnopqrst!");
    ASSERT_TRUE(in().load_previous_state());
    EXPECT_EQ(state(), S("abcdefghijklmnopqrst", 20, 0));
}

TEST_F(InputBoxTest, ClipboardCopyCutPasteCarriageReturnsAndPasswords) {
    auto& clip = get_offscreen_clipboard();
    box.set_text("one two");
    key_with(shift_key, event_key::left, 3);
    key_with(command_key, 'C');
    EXPECT_EQ(clip.get_text(), "two");
    key_with(command_key, 'X');
    EXPECT_EQ(box.get_text(), "one ");
    clip.set_text("a\r\nb\rc");
    key_with(command_key, 'V');
    EXPECT_EQ(state(), S("one a\nbc", 8, 0)) << "carriage returns dropped, line feeds kept";
    // Pasting over a selection replaces it in one undo step.
    key_with(command_key, 'A');
    clip.set_text("new");
    key_with(command_key, 'V');
    EXPECT_EQ(box.get_text(), "new");
    ASSERT_TRUE(in().load_previous_state());
    EXPECT_EQ(box.get_text(), "one a\nbc");

    // Password mode refuses copy and cut.
    box.set_type_password(true);
    box.set_text("pw");
    key_with(command_key, 'A');
    const unsigned before = clip.change_count();
    key_with(command_key, 'C');
    key_with(command_key, 'X');
    // That only dots paint is in the showcase's pictures.
    EXPECT_EQ(std::tuple(clip.change_count(), box.get_text()), std::tuple(before, "pw"));
}

TEST_F(InputBoxTest, EscapeEmptiesTheFieldReturnRaisesPressedAndFocusSelectsOrApplies) {
    event_recorder changed(box, event_type::value_changed), pressed(box, event_type::pressed),
        cancelled(box, event_type::cancelled);
    type(u"abc\r");
    EXPECT_EQ(std::tuple(pressed.count(), pressed.entries.back().agent),
              std::tuple(size_t{1}, event_agent::program));
    const size_t edits = changed.count();
    type(u"\x1b");
    EXPECT_EQ(std::tuple(cancelled.count(), box.get_text()), std::tuple(1u, "abc"))
        << "neither Return nor the cancel character edits";
    key(event_key::escape);
    EXPECT_EQ(std::tuple(box.get_text(), changed.count()), std::tuple(std::string(), edits + 1));
    EXPECT_TRUE(win.get_focus() == &win.get_root() && !in().is_active());

    // Selecting on focus, and applying on focus loss.
    box.set_text("keep");
    box.select_on_focus(true);
    box.apply_on_focus_loss(true);
    box.focus();
    win.get_root().focus();
    EXPECT_EQ(pressed.count(), 2u);
    box.focus(focus_cause::keyboard);
    EXPECT_EQ(box.get_selected_text(), "keep");
    // Clicking into the field from elsewhere selects everything too; the next click places the caret.
    win.get_root().focus();
    offscreen::click(win, at_char(1));
    EXPECT_EQ(box.get_selected_text(), "keep");
    offscreen::click(win, at_char(1));
    EXPECT_EQ(state(), S("keep", 1, 0));
}

TEST_F(InputBoxTest, RightClickMenuEnablesItemsBySelectionAndPasswordAndRunsTheChoice) {
    // Cut, copy, delete, paste, select all, as a right click shows them; with no answer queued the
    // menu is dismissed.
    auto right_click = [&] {
        offscreen::click(win, at_char(1), 2);
        const auto& shown = offscreen::shown_menus();
        std::map<uint32_t, bool> on;
        for (const auto& i : shown.at(shown.size() - 1).items)
            on[i.id] = i.enabled && !i.separator;
        return std::vector<bool>{on[panel::menu_cut], on[panel::menu_copy], on[panel::menu_delete],
                                 on[panel::menu_paste], on[panel::menu_select_all]};
    };
    box.set_text("word");
    EXPECT_EQ(right_click(), (std::vector<bool>{false, false, false, true, true}));

    // With a selection everything is on, and the choice runs.
    box.select_whole_text();
    offscreen::push_menu_answer(panel::menu_delete);
    EXPECT_EQ(right_click(), (std::vector<bool>{true, true, true, true, true}));
    EXPECT_EQ(box.get_text(), "");

    // In password mode a selection enables Delete but not Cut or Copy.
    box.set_type_password(true);
    box.set_text("secret");
    box.select_whole_text();
    EXPECT_EQ(right_click(), (std::vector<bool>{false, false, true, true, true}));
}

TEST_F(InputBoxTest, MousePlacesTheCaretAtTheNearestCharacterAndDragSelectsWhenFocused) {
    box.set_text("abcdefgh");
    // The left and right parts of 'c', and beyond the text.
    std::vector<int> carets;
    for (int x : {text_x + 2 * char_w + 2, text_x + 2 * char_w + 4, text_x + 150}) {
        offscreen::click(win, {x, text_y});
        carets.push_back(in().get_caret());
    }
    EXPECT_EQ(carets, (std::vector<int>{2, 3, 8}));

    // Dragging from 'b' to 'f' selects "bcde", and the capture keeps working outside the field.
    offscreen::press_mouse(win, at_char(1));
    offscreen::move_mouse(win, at_char(5));
    EXPECT_EQ(box.get_selected_text(), "bcde");
    offscreen::move_mouse(win, {0, 200}); // far left, outside the box
    EXPECT_EQ(std::tuple(in().get_caret(), box.get_selected_text()), std::tuple(0, std::string("a")));
    offscreen::release_mouse(win, {0, 200});
    EXPECT_TRUE(mouse::get_captured_widget() == nullptr && !in().is_dragging());
    // A double click selects the word under the pointer, also the last one.
    box.set_text("one two three");
    offscreen::double_click(win, at_char(5));
    EXPECT_EQ(box.get_selected_text(), "two");
    offscreen::double_click(win, at_char(13)); // at the very end of the text
    EXPECT_EQ(box.get_selected_text(), "three");
    // Without the focus the mouse is ignored.
    win.get_root().focus();
    ASSERT_FALSE(in().is_active());
    in().mouse_pressed({&in(), event_type::mouse_down, event_state::normal, event_agent::user, 0});
    EXPECT_TRUE(mouse::get_captured_widget() == nullptr && !in().is_dragging());
}

TEST_F(InputBoxTest, TheCaretBlinksOnlyWhileFocusedAndStaysInsideTheBoxWhenTheTextIsLonger) {
    const auto blink = [&] { // whether the caret shows one interval later
        offscreen::advance_ms(panel::blink_interval_ms);
        return in().is_caret_visible();
    };
    EXPECT_EQ((std::vector{in().is_caret_visible(), blink(), blink()}), (std::vector{true, false, true}));

    const int inner = in().get_rect().w;
    type(std::u16string(60, u'x')); // 360 pixels of text in a 192-pixel panel
    EXPECT_TRUE(in().get_scroll() > 0 && in().get_caret_x() >= 0 && in().get_caret_x() < inner);
    key(event_key::home);
    EXPECT_EQ(std::tuple(in().get_scroll(), in().get_caret_x()), std::tuple(0, 0));
    key(event_key::end);
    EXPECT_LT(in().get_caret_x(), inner);
    // Deleting from the end pulls the text back so no blank shows at the right.
    type(std::u16string(40, u'\x7f'));
    EXPECT_EQ(in().get_scroll(), 0);
    win.get_root().focus();
    EXPECT_FALSE(in().is_caret_visible() || blink() || blink() || blink());
}

TEST_F(InputBoxTest, MaximumCharactersDefaultTextAndTheme) {
    box.set_max_chars(3);
    type(u"abcdef");
    EXPECT_EQ(box.get_text(), "abc");
    get_offscreen_clipboard().set_text("xyz");
    key(event_key::left);
    key_with(command_key, 'V');
    EXPECT_EQ(box.get_text(), "abc");
    key_with(shift_key, event_key::left);
    type(u"Z"); // replacing a selected character fits
    EXPECT_EQ(box.get_text(), "aZc");

    box.set_text("");
    box.set_default_text("Search");
    const auto hint_painted = [&] {
        return std::ranges::any_of(painted(win), [](const draw_call& c) { return c.text == "Search"; });
    };
    EXPECT_TRUE(hint_painted());
    type(u"q");
    EXPECT_FALSE(hint_painted());

    // Theme changes reach the text and the layout: "qbc" at 10 pixels a character.
    type(u"bc");
    box.get_theme().set(theme_keys::input_font_size, 20.0f);
    EXPECT_EQ(in().get_caret_x(), 30);
    box.get_theme().set(theme_keys::input_inside_margins, _vec2<int>{8, 3});
    EXPECT_EQ(in().get_rect(), (ivec4{8, 3, 184, 20}));
}

} // namespace
