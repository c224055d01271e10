#include "widget_fixture.h"

#include "nimbit/ui/ime.h"
#include "nimbit/ui/input_box.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/theme_keys.h"

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
    EXPECT_EQ(box.get_text(), "hello");
    EXPECT_EQ(in().get_caret(), 4);
    EXPECT_EQ(changed.count(), 5u);
    EXPECT_EQ(chars.data(), (std::vector<uint64_t>{'h', 'e', 'l', 'o', 'l'}));
    EXPECT_TRUE(agent.last == event_agent::program && char_agent.last == event_agent::program);
    // Characters beyond the basic plane arrive in two halves; a lone half is dropped.
    box.set_text("");
    type(u"a\U0001F600b");
    EXPECT_EQ(box.get_text(), "a\xF0\x9F\x98\x80"
                              "b");
    EXPECT_EQ(in().get_caret(), 3);
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
    auto at = [&] {
        return std::pair(in().get_caret(), in().get_selection());
    };
    key_with(shift_key, event_key::left, 2);
    EXPECT_EQ(at(), std::pair(5, 2));
    EXPECT_EQ(box.get_selected_text(), "fg");
    key_with(shift_key, event_key::home); // from 0 to the old far end of the selection
    EXPECT_EQ(at(), std::pair(0, 7));
    key_with(shift_key, event_key::right); // shrinks it from the left
    EXPECT_EQ(box.get_selected_text(), "bcdefg");
    key(event_key::right); // a plain arrow clears it
    EXPECT_EQ(at(), std::pair(2, 0));
    key_with(shift_key, event_key::end); // to the end, leftwards of the caret
    EXPECT_EQ(at(), std::pair(7, -5));
    EXPECT_EQ(box.get_selected_text(), "cdefg");
    key_with(shift_key, event_key::end); // at the end already: kept with Shift, dropped without
    EXPECT_EQ(at(), std::pair(7, -5));
    key(event_key::end);
    EXPECT_EQ(at(), std::pair(7, 0));

    // Deleting backward, forward and over a selection.
    box.set_text("abcdef");
    type(u"\x7f"); // delete backward at the end
    EXPECT_EQ(box.get_text(), "abcde");
    key(event_key::home);
    type(u"\x7f"); // nothing before the caret
    EXPECT_EQ(box.get_text(), "abcde");
    key(event_key::forward_delete);
    EXPECT_EQ(box.get_text(), "bcde");
    key(event_key::end);
    key(event_key::forward_delete); // nothing after the caret
    EXPECT_EQ(box.get_text(), "bcde");
    // Typing over a selection replaces it; the caret lands behind the new character.
    key_with(shift_key, event_key::left, 2);
    type(u"X");
    EXPECT_EQ(box.get_text(), "bcX");
    EXPECT_EQ(in().get_caret(), 3);
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
    int redone = 0;
    while (in().load_next_state())
        ++redone;
    EXPECT_EQ(redone, 19);
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
    EXPECT_EQ(box.get_text(), "abcdefghijklmnopqrst");
    EXPECT_EQ(in().get_caret(), 20);
    // Undo raises no value_changed and stops at the first state.
    box.set_text("start");
    type(u"!");
    event_recorder changed(box, event_type::value_changed);
    EXPECT_TRUE(in().load_previous_state());
    EXPECT_EQ(box.get_text(), "start");
    EXPECT_FALSE(in().load_previous_state());
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
    EXPECT_EQ(box.get_text(), "one a\nbc") << "carriage returns dropped, line feeds kept";
    EXPECT_EQ(in().get_caret(), 8);
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
    const auto texts = [&] {
        std::vector<std::string> out;
        for (const auto& c : repaint())
            if (c.op == "draw_clipped_text")
                out.push_back(c.text);
        return out;
    }();
    ASSERT_FALSE(texts.empty());
    for (const auto& t : texts)
        EXPECT_EQ(t, "\u25CF\u25CF") << "only dots are painted";
}

TEST_F(InputBoxTest, EscapeEmptiesTheFieldAndMovesTheFocusReturnRaisesPressed) {
    event_recorder changed(box, event_type::value_changed), pressed(box, event_type::pressed),
        cancelled(box, event_type::cancelled);
    agent_of agent(box, event_type::pressed);
    type(u"abc\r");
    EXPECT_EQ(pressed.count(), 1u);
    EXPECT_EQ(agent.last, event_agent::program);
    EXPECT_EQ(box.get_text(), "abc");
    const size_t edits = changed.count();
    type(u"\x1b");
    EXPECT_EQ(cancelled.count(), 1u);
    EXPECT_EQ(box.get_text(), "abc") << "the cancel character only reports";
    key(event_key::escape);
    EXPECT_EQ(box.get_text(), "");
    EXPECT_EQ(changed.count(), edits + 1);
    EXPECT_EQ(win.get_focus(), &win.get_root());
    EXPECT_FALSE(in().is_active());
}

TEST_F(InputBoxTest, RightClickMenuEnablesItemsBySelectionAndPasswordAndRunsTheChoice) {
    auto item_enabled = [](const offscreen::shown_menu& m, uint32_t id) {
        for (const auto& i : m.items)
            if (i.id == id)
                return i.enabled;
        ADD_FAILURE() << "no item " << id;
        return false;
    };
    box.set_text("word");
    offscreen::push_menu_answer(std::nullopt);
    offscreen::click(win, at_char(1), 2);
    ASSERT_EQ(offscreen::shown_menus().size(), 1u);
    const auto& plain = offscreen::shown_menus()[0];
    ASSERT_EQ(plain.items.size(), 6u);
    EXPECT_EQ(plain.items[0].text, "Cut");
    EXPECT_TRUE(plain.items[4].separator);
    EXPECT_EQ(plain.items[4].id, 6u);
    EXPECT_EQ(plain.items[5].text, "Select All");
    auto enabled = [&](const offscreen::shown_menu& m) {
        std::vector<bool> out;
        for (uint32_t id : {panel::menu_cut, panel::menu_copy, panel::menu_delete, panel::menu_paste,
                            panel::menu_select_all})
            out.push_back(item_enabled(m, id));
        return out;
    };
    EXPECT_EQ(enabled(plain), (std::vector<bool>{false, false, false, true, true}));

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
    offscreen::click(win, {text_x + 2 * char_w + 2, text_y}); // left part of 'c'
    EXPECT_EQ(in().get_caret(), 2);
    offscreen::click(win, {text_x + 2 * char_w + 4, text_y}); // right part of 'c'
    EXPECT_EQ(in().get_caret(), 3);
    offscreen::click(win, {text_x + 150, text_y}); // beyond the text
    EXPECT_EQ(in().get_caret(), 8);

    // Dragging from 'b' to 'f' selects "bcde", and the capture keeps working outside the field.
    offscreen::press_mouse(win, at_char(1));
    EXPECT_EQ(mouse::get_captured_widget(), &in());
    offscreen::move_mouse(win, at_char(5));
    EXPECT_EQ(box.get_selected_text(), "bcde");
    offscreen::move_mouse(win, {0, 200}); // far left, outside the box
    EXPECT_EQ(in().get_caret(), 0);
    EXPECT_EQ(box.get_selected_text(), "a");
    offscreen::release_mouse(win, {0, 200});
    EXPECT_EQ(mouse::get_captured_widget(), nullptr);
    EXPECT_FALSE(in().is_dragging());
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
    EXPECT_FALSE(in().is_dragging());
    EXPECT_EQ(mouse::get_captured_widget(), nullptr);
}

TEST_F(InputBoxTest, CaretBlinksOnlyWhileFocused) {
    ASSERT_TRUE(in().is_caret_visible());
    offscreen::advance_ms(panel::blink_interval_ms);
    EXPECT_FALSE(in().is_caret_visible());
    offscreen::advance_ms(panel::blink_interval_ms);
    EXPECT_TRUE(in().is_caret_visible());
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
    EXPECT_GT(in().get_scroll(), 0);
    EXPECT_GE(in().get_caret_x(), 0);
    EXPECT_LT(in().get_caret_x(), inner);
    key(event_key::home);
    EXPECT_EQ(in().get_scroll(), 0);
    EXPECT_EQ(in().get_caret_x(), 0);
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
    EXPECT_EQ(in().get_selection(), 0);
    EXPECT_EQ(in().get_caret(), 1);
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
