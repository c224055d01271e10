#include "widget_fixture.h"

#include "nimbit/ui/ime.h"
#include "nimbit/ui/input_box.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/theme_keys.h"

#include <map>
#include <tuple>

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
    panel& in() { return box.get_inside(); }
    // The text with the caret and the selection, so one check covers an edit.
    std::tuple<std::string, int, int> state() {
        return {box.get_text(), in().get_caret(), in().get_selection()};
    }
    using S = std::tuple<std::string, int, int>;
    _vec2<int> at_char(int index) { return {text_x + index * char_w, text_y}; }

    input_box box;
};

TEST_F(InputBoxTest, TypingInsertsAtTheCaretAndRaisesEventsOnTheBox) {
    event_recorder changed(box, event_type::value_changed), chars(box, event_type::key_char);
    agent_of agent(box, event_type::value_changed), char_agent(box, event_type::key_char);
    ASSERT_TRUE(in().is_active());
    type(u"helo");
    key(event_key::left);
    type(u"l");
    EXPECT_EQ(state(), S("hello", 4, 0));
    EXPECT_EQ(changed.count(), 5u);
    EXPECT_EQ(chars.data(), (std::vector<uint64_t>{'h', 'e', 'l', 'o', 'l'}));
    EXPECT_TRUE(agent.last == event_agent::program && char_agent.last == event_agent::program);
    // Characters beyond the basic plane arrive in two halves; a lone half is dropped.
    box.set_text("");
    type(u"a\U0001F600b");
    EXPECT_EQ(state(), S("a\xF0\x9F\x98\x80"
                         "b",
                         3, 0));
    type(std::u16string(1, char16_t(0xDC00)));
    EXPECT_EQ(in().get_wide_text().size(), 3u);
    // insert_text drops carriage returns and keeps its agent.
    in().insert_text(L"x\ry", true, true, event_agent::user);
    EXPECT_EQ(box.get_selected_text(), "xy");
    EXPECT_EQ(agent.last, event_agent::user);
}

TEST_F(InputBoxTest, ShiftArrowsHomeAndEndFollowTheSelectionSignAndDeletesTakeIt) {
    box.set_text("abcdefg");
    // The caret starts at the end; Shift+Left twice selects "fg" to the right of the caret.
    key_with(shift_key, event_key::left, 2);
    EXPECT_EQ(state(), S("abcdefg", 5, 2));
    EXPECT_EQ(box.get_selected_text(), "fg");
    key_with(shift_key, event_key::home); // from 0 to the old far end of the selection
    EXPECT_EQ(state(), S("abcdefg", 0, 7));
    key_with(shift_key, event_key::right); // shrinks it from the left
    EXPECT_EQ(box.get_selected_text(), "bcdefg");
    key(event_key::right); // a plain arrow clears it
    EXPECT_EQ(state(), S("abcdefg", 2, 0));
    key_with(shift_key, event_key::end); // to the end, leftwards of the caret
    EXPECT_EQ(state(), S("abcdefg", 7, -5));
    EXPECT_EQ(box.get_selected_text(), "cdefg");
    key_with(shift_key, event_key::end); // at the end already: kept with Shift, dropped without
    EXPECT_EQ(state(), S("abcdefg", 7, -5));
    key(event_key::end);
    EXPECT_EQ(state(), S("abcdefg", 7, 0));

    // Deleting backward and forward, with nothing before or after the caret.
    box.set_text("abcdef");
    type(u"\x7f");
    key(event_key::home);
    type(u"\x7f");
    key(event_key::forward_delete);
    EXPECT_EQ(state(), S("bcde", 0, 0));
    key(event_key::end);
    key(event_key::forward_delete);
    EXPECT_EQ(state(), S("bcde", 4, 0));
    // Typing over a selection replaces it; the caret lands behind the new character.
    key_with(shift_key, event_key::left, 2);
    type(u"X");
    EXPECT_EQ(state(), S("bcX", 3, 0));
    // Forward delete and delete backward both take a selection whichever way it runs.
    key_with(shift_key, event_key::home);
    key(event_key::forward_delete);
    EXPECT_EQ(box.get_text(), "");
}

TEST_F(InputBoxTest, ControlCharactersTabCommandShortcutsAndForeignKeys) {
    event_recorder chars(box, event_type::key_char);
    type(u"ab");
    offscreen::set_key_down(control_key, true);
    type(u"c");
    offscreen::set_key_down(control_key, false);
    type(u"\t");
    EXPECT_EQ(box.get_text(), "ab");
    EXPECT_EQ(chars.count(), 3u) << "tab is reported, a character typed with Control is not";
    key_with(command_key, 'A');
    EXPECT_EQ(box.get_selected_text(), "ab");
    // Keys the field does not use reach the box.
    event_recorder downs(box, event_type::key_down);
    key(63232); // Up: the application's
    EXPECT_EQ(downs.data(), std::vector<uint64_t>{63232});
}

TEST_F(InputBoxTest, UndoKeepsTheLastTwentyStatesAndRedoIsClearedByAnEdit) {
    const std::u16string letters = u"abcdefghijklmnopqrstu"; // 21 edits
    type(letters);
    ASSERT_EQ(box.get_text(), "abcdefghijklmnopqrstu");
    int undone = 0;
    while (in().load_previous_state())
        ++undone;
    EXPECT_EQ(undone, 19);
    EXPECT_EQ(box.get_text(), "ab") << "the oldest state the ring still holds";
    // Redo walks forward again, to the newest state and no further.
    while (in().load_next_state())
        --undone;
    EXPECT_EQ(undone, 0);
    EXPECT_EQ(box.get_text(), "abcdefghijklmnopqrstu");

    // Command+Z and Command+Shift+Z; an edit after an undo drops the redo states.
    key_with(command_key, 'Z', 2);
    EXPECT_EQ(box.get_text(), "abcdefghijklmnopqrs");
    offscreen::set_key_down(shift_key, true);
    key_with(command_key, 'Z');
    offscreen::set_key_down(shift_key, false);
    EXPECT_EQ(box.get_text(), "abcdefghijklmnopqrst");
    type(u"!");
    EXPECT_FALSE(in().load_next_state());
    EXPECT_EQ(box.get_text(), "abcdefghijklmnopqrst!");
    ASSERT_TRUE(in().load_previous_state());
    EXPECT_EQ(state(), S("abcdefghijklmnopqrst", 20, 0));
    // Undo raises no value_changed and stops at the first state.
    box.set_text("start");
    type(u"!");
    event_recorder changed(box, event_type::value_changed);
    EXPECT_TRUE(in().load_previous_state() && !in().load_previous_state());
    EXPECT_EQ(box.get_text(), "start");
    EXPECT_EQ(changed.count(), 0u);
}

TEST_F(InputBoxTest, ClipboardCopyCutPasteAndCarriageReturns) {
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
}

TEST_F(InputBoxTest, PasswordModeHidesTheTextAndRefusesCopyAndCut) {
    auto& clip = get_offscreen_clipboard();
    box.set_type_password(true);
    type(u"pw");
    key_with(command_key, 'A');
    const unsigned before = clip.change_count();
    key_with(command_key, 'C');
    key_with(command_key, 'X');
    EXPECT_EQ(clip.change_count(), before);
    EXPECT_EQ(box.get_text(), "pw");
    EXPECT_GT(count_painted([](const draw_call& c) { return c.op == "draw_clipped_text"; }), 0);
    EXPECT_EQ(count_painted(
                  [](const draw_call& c) { return c.op == "draw_clipped_text" && c.text != "\u25CF\u25CF"; }),
              0)
        << "only dots are painted";
}

TEST_F(InputBoxTest, EscapeEmptiesTheFieldAndMovesTheFocusReturnRaisesPressed) {
    event_recorder changed(box, event_type::value_changed), pressed(box, event_type::pressed),
        cancelled(box, event_type::cancelled);
    agent_of agent(box, event_type::pressed);
    type(u"abc\r");
    EXPECT_EQ(std::tuple(pressed.count(), agent.last), std::tuple(size_t{1}, event_agent::program));
    const size_t edits = changed.count();
    type(u"\x1b");
    EXPECT_EQ(cancelled.count(), 1u);
    EXPECT_EQ(box.get_text(), "abc") << "neither Return nor the cancel character edits";
    key(event_key::escape);
    EXPECT_EQ(std::tuple(box.get_text(), changed.count()), std::tuple(std::string(), edits + 1));
    EXPECT_TRUE(win.get_focus() == &win.get_root() && !in().is_active());
}

TEST_F(InputBoxTest, RightClickMenuEnablesItemsBySelectionAndPasswordAndRunsTheChoice) {
    // Cut, copy, delete, paste, select all.
    auto enabled = [](const offscreen::shown_menu& m) {
        std::map<uint32_t, bool> on;
        for (const auto& i : m.items)
            on[i.id] = i.enabled && !i.separator;
        return std::vector<bool>{on[panel::menu_cut], on[panel::menu_copy], on[panel::menu_delete],
                                 on[panel::menu_paste], on[panel::menu_select_all]};
    };
    box.set_text("word");
    offscreen::push_menu_answer(std::nullopt);
    offscreen::click(win, at_char(1), 2);
    ASSERT_EQ(offscreen::shown_menus().size(), 1u);
    EXPECT_EQ(offscreen::shown_menus()[0].items.size(), 6u);
    EXPECT_EQ(enabled(offscreen::shown_menus()[0]), (std::vector<bool>{false, false, false, true, true}));

    // Select All through the menu, then Delete through it.
    offscreen::push_menu_answer(panel::menu_select_all);
    offscreen::click(win, at_char(1), 2);
    EXPECT_EQ(box.get_selected_text(), "word");
    offscreen::push_menu_answer(panel::menu_delete);
    offscreen::click(win, at_char(1), 2);
    EXPECT_EQ(enabled(offscreen::shown_menus()[2]), (std::vector<bool>{true, true, true, true, true}));
    EXPECT_EQ(box.get_text(), "");

    // In password mode a selection enables Delete but not Cut or Copy.
    box.set_type_password(true);
    box.set_text("secret");
    box.select_whole_text();
    offscreen::push_menu_answer(std::nullopt);
    offscreen::click(win, at_char(1), 2);
    EXPECT_EQ(enabled(offscreen::shown_menus().back()), (std::vector<bool>{false, false, true, true, true}));
    EXPECT_EQ(offscreen::get_cursor(), static_cast<uint32_t>(cursor::ibeam));
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
    EXPECT_EQ(mouse::get_captured_widget(), &in());
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

TEST_F(InputBoxTest, CaretBlinksOnlyWhileFocused) {
    std::vector<bool> visible{in().is_caret_visible()};
    for (int i = 0; i < 2; ++i) {
        offscreen::advance_ms(panel::blink_interval_ms);
        visible.push_back(in().is_caret_visible());
    }
    EXPECT_EQ(visible, (std::vector<bool>{true, false, true}));
    auto caret_lines = [&] {
        return count_painted([](const draw_call& c) { return c.op == "draw_line"; });
    };
    EXPECT_EQ(caret_lines(), 1);
    win.get_root().focus();
    EXPECT_FALSE(in().is_caret_visible());
    offscreen::advance_ms(panel::blink_interval_ms * 3);
    EXPECT_FALSE(in().is_caret_visible());
    EXPECT_EQ(caret_lines(), 0);
}

TEST_F(InputBoxTest, TheCaretStaysInsideTheBoxWhenTheTextIsLonger) {
    const int inner = in().get_rect().w;
    type(std::u16string(60, u'x')); // 360 pixels of text in a 192-pixel panel
    EXPECT_TRUE(in().get_scroll() > 0 && in().get_caret_x() >= 0 && in().get_caret_x() < inner);
    key(event_key::home);
    EXPECT_EQ(std::tuple(in().get_scroll(), in().get_caret_x()), std::tuple(0, 0));
    key(event_key::end);
    EXPECT_LT(in().get_caret_x(), inner);
    // Deleting from the end pulls the text back so no blank shows at the right.
    for (int i = 0; i < 40; ++i)
        type(u"\x7f");
    EXPECT_EQ(in().get_scroll(), 0);
    // The painted text starts left of the panel by the scroll, clipped to the panel.
    type(std::u16string(60, u'y'));
    for (const auto& c : repaint())
        if (c.op == "draw_clipped_text" && c.text.size() > 10) {
            EXPECT_EQ(c.rect.x, -in().get_scroll());
            EXPECT_EQ(c.source, (ivec4{0, 0, inner, in().get_rect().h}));
        }
}

TEST_F(InputBoxTest, MaximumCharactersAndDefaultText) {
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
    const vec4 grey = box.get_theme().get<vec4>(theme_keys::input_font_default_text_color);
    EXPECT_GT(count_painted([&](const draw_call& c) { return c.text == "Search" && c.color == grey; }), 0)
        << "the default text in its colour";
    type(u"q");
    EXPECT_EQ(count_painted([](const draw_call& c) { return c.text == "Search"; }), 0);
}

TEST_F(InputBoxTest, SelectOnFocusAndApplyOnFocusLoss) {
    box.set_text("keep");
    box.select_on_focus(true);
    box.apply_on_focus_loss(true);
    event_recorder pressed(box, event_type::pressed);
    win.get_root().focus();
    EXPECT_EQ(pressed.count(), 1u);
    box.focus(focus_cause::keyboard);
    EXPECT_EQ(box.get_selected_text(), "keep");
    // Clicking into the field from elsewhere selects everything too; the next click places the caret.
    win.get_root().focus();
    offscreen::click(win, at_char(1));
    EXPECT_EQ(box.get_selected_text(), "keep");
    offscreen::click(win, at_char(1));
    EXPECT_EQ(state(), S("keep", 1, 0));
}

TEST_F(InputBoxTest, CompositionIsDrawnWithTheInputMethodColours) {
    type(u"ab");
    ime::set_composition("\xE3\x81\x8B\xE3\x81\xAA", 1, {0, 2});
    send(event_type::input_ime);
    const vec4 block = box.get_theme().get<vec4>(theme_keys::input_ime_block_color);
    const vec4 cursor = box.get_theme().get<vec4>(theme_keys::input_ime_cursor_color);
    EXPECT_GT(count_painted([&](const draw_call& c) {
                  return c.op == "draw_rect" && c.color == block && c.rect.x == 2 * char_w;
              }),
              0);
    EXPECT_GT(count_painted([&](const draw_call& c) { return c.op == "draw_line" && c.color == cursor; }), 0);
    ime::end_composition();
}

TEST_F(InputBoxTest, ThemeChangesReachTheTextAndTheLayout) {
    type(u"abc");
    box.get_theme().set(theme_keys::input_font_size, 20.0f); // 10 pixels a character
    EXPECT_EQ(in().get_caret_x(), 30);
    box.get_theme().set(theme_keys::input_inside_margins, _vec2<int>{8, 3});
    EXPECT_EQ(in().get_rect(), (ivec4{8, 3, 184, 20}));
    box.get_theme().set(theme_keys::input_font_color, vec4{0, 1, 0, 1});
    EXPECT_GT(count_painted([](const draw_call& c) {
                  return c.op == "draw_clipped_text" && c.text == "abc" && c.color == vec4{0, 1, 0, 1};
              }),
              0);
}

} // namespace
