// The popup window: opening layouts, placement, keys, applying, the list, resizing and themes.
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget_themes.h"
#include "popup/preferences_file.h"
#include "tests/popup/popup_fixture.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

std::vector<int> ButtonLefts(EffectsPopupWindow& w) {
    std::vector<int> lefts;
    for (int b = 0; b < 5; ++b) {
        const ivec4 r = w.GetToolButton(static_cast<EffectsPopupWindow::ToolButton>(b)).get_rect();
        EXPECT_EQ(r.y, 8);
        EXPECT_EQ(r.w, 28);
        EXPECT_EQ(r.h, 28);
        lefts.push_back(r.x);
    }
    return lefts;
}

TEST_F(PopupTest, OpeningLayoutsInBothModes) {
    Open("Comp 1", "Layer 1");
    EXPECT_TRUE(popup->is_shown());
    EXPECT_TRUE(popup->IsSearchMode());
    EXPECT_EQ(popup->get_rect().w, 397);
    EXPECT_EQ(popup->get_rect().h, 45); // empty search: no rows, no bar
    EXPECT_EQ(ButtonLefts(*popup), (std::vector<int>{188, 231, 274, 317, 360}));
    EXPECT_EQ(popup->GetNewsBadge().get_rect(), (ivec4{378, 1, 18, 18}));
    EXPECT_EQ(popup->GetSearchField().get_rect(), (ivec4{51, 8, 116, 30}));
    EXPECT_TRUE(popup->GetSearchField().is_visible(false));
    EXPECT_TRUE(popup->GetToolButton(EffectsPopupWindow::ScreenshotButton).is_enabled());
    EXPECT_TRUE(popup->GetToolButton(EffectsPopupWindow::ExportButton).is_enabled());
    EXPECT_FALSE(popup->GetShortcutsBar().is_visible(false));

    popup->hide();
    Open("", "");
    EXPECT_FALSE(popup->IsSearchMode());
    EXPECT_FALSE(popup->IsScreenshotMode());
    EXPECT_EQ(popup->get_rect().w, 218);
    EXPECT_EQ(popup->get_rect().h, 68);
    EXPECT_EQ(ButtonLefts(*popup), (std::vector<int>{9, 52, 95, 138, 181}));
    EXPECT_FALSE(popup->GetSearchField().is_visible(false));
    EXPECT_FALSE(popup->GetListFrame().is_visible(false));
    EXPECT_FALSE(popup->GetToolButton(EffectsPopupWindow::ScreenshotButton).is_enabled());
    EXPECT_FALSE(popup->GetToolButton(EffectsPopupWindow::ExportButton).is_enabled());
    EXPECT_TRUE(popup->GetToolButton(EffectsPopupWindow::GalleryButton).is_enabled());

    popup->hide();
    Open("Comp 1", ""); // a composition without a layer: capture works, search does not
    EXPECT_TRUE(popup->IsScreenshotMode());
    EXPECT_TRUE(popup->GetToolButton(EffectsPopupWindow::ScreenshotButton).is_enabled());
    EXPECT_TRUE(popup->GetToolButton(EffectsPopupWindow::ExportButton).is_enabled());
}

TEST_F(PopupTest, ShortcutsBarShowsOnlyInSearchModeWithAnOccupiedSlot) {
    SetSlot(1, "Glow", "Glo");
    SetSlot(4, "Curves", "Cur");
    Open();
    EXPECT_TRUE(popup->GetShortcutsBar().is_visible(false));
    EXPECT_EQ(popup->get_rect().h, 45 + 35);
    const auto& buttons = popup->GetShortcutsBar().GetButtons();
    ASSERT_EQ(buttons.size(), 2u);
    EXPECT_EQ(buttons[0]->GetNumber(), 2u);
    EXPECT_EQ(buttons[0]->get_rect(), (ivec4{45, 1, 43, 34})); // slot 1 stays a gap
    EXPECT_EQ(buttons[1]->get_rect().x, 4 * 44 + 1);
    EXPECT_EQ(buttons[1]->GetLabel(), "Cur");

    Search("glow");
    EXPECT_FALSE(popup->GetShortcutsBar().is_visible(false));
    EXPECT_EQ(popup->GetListFrame().get_rect().y, 45);
    Search("");
    EXPECT_TRUE(popup->GetShortcutsBar().is_visible(false));

    popup->hide();
    Open("", "");
    EXPECT_FALSE(popup->GetShortcutsBar().is_visible(false));
    EXPECT_EQ(popup->get_rect().h, 68);
}

TEST_F(PopupTest, FocusCentresOnThePointerStaysOnScreenAndLosingItHides) {
    offscreen::set_pointer({600, 500});
    Open();
    EXPECT_EQ(popup->get_rect(), (ivec4{600 - 397 / 2, 500 - 45, 397, 45}));

    popup->hide();
    offscreen::set_pointer({10, 30}); // the popup would reach over the menu bar and the left edge
    Open();
    const ivec4 screen = offscreen::get_screen_rect();
    EXPECT_GE(popup->get_rect().x, screen.x);
    EXPECT_GE(popup->get_rect().y, screen.y);

    // The keyboard reaches the search field a quarter of a second after the window appears.
    EXPECT_FALSE(popup->GetSearchField().get_inside().has_focus());
    offscreen::advance_ms(250);
    EXPECT_TRUE(popup->GetSearchField().get_inside().has_focus());

    // Losing the focus hides; reopening empties the search.
    Search("blur");
    EXPECT_FALSE(popup->GetRows().empty());
    offscreen::events_of(*popup).process_event(event_type::focus_lost, 0);
    EXPECT_FALSE(popup->is_shown());
    Open();
    EXPECT_EQ(popup->GetSearchField().get_text(), "");
    EXPECT_TRUE(popup->GetRows().empty());
}

TEST_F(PopupTest, SearchBuildsRowsUnderTheirHeadersAndHighlightsThem) {
    Open();
    Search("blur");
    // Names containing the text, in catalogue order, effects before presets.
    EXPECT_EQ(RowNames(),
              (std::vector<std::string>{"Gaussian Blur", "Fast Box Blur", "Directional Blur", "Blur In"}));
    ASSERT_NE(popup->GetEffectsHeader(), nullptr);
    ASSERT_NE(popup->GetPresetsHeader(), nullptr);
    EXPECT_EQ(popup->GetEffectsHeader()->GetText(), "Effects");
    EXPECT_EQ(popup->GetEffectsHeader()->get_rect().y, 0);
    EXPECT_EQ(popup->GetRows()[0]->get_rect().y, 20);
    EXPECT_EQ(popup->GetPresetsHeader()->get_rect().y, 20 + 3 * 30);
    EXPECT_EQ(popup->GetRows()[3]->get_rect().y, 20 + 3 * 30 + 20);
    EXPECT_EQ(SelectedName(), "Gaussian Blur");
    // Content of 160 pixels fits: one line under it, the top part above it.
    EXPECT_EQ(popup->get_rect().h, 45 + 160 + 1);

    Search("zzz");
    EXPECT_TRUE(popup->GetRows().empty());
    ASSERT_NE(popup->GetEffectsHeader(), nullptr);
    EXPECT_EQ(popup->GetEffectsHeader()->GetText(), "No Matches");
    EXPECT_EQ(popup->GetSelected(), nullptr);

    Search("pulse"); // presets alone still open under "Effects"
    EXPECT_EQ(popup->GetEffectsHeader()->GetText(), "Effects");
    EXPECT_EQ(popup->GetPresetsHeader()->get_rect().y, 20);
    EXPECT_EQ(SelectedName(), "Glow Pulse");

    // Rows highlight red for presets and blue for effects.
    Search("glow");
    const auto& rows = popup->GetRows();
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0]->BackgroundColor(), EffectHighlightColor); // selected
    EXPECT_EQ(rows[1]->BackgroundColor(), popup->GetColors()->listBack);
    rows[1]->SetHover(true);
    EXPECT_EQ(rows[1]->BackgroundColor(), PresetHighlightColor);
    // Entering a row with the pointer selects it.
    const ivec2 at = rows[1]->calc_absolute_pos();
    offscreen::move_mouse(*popup, {at.x + 50, at.y + 5});
    EXPECT_EQ(SelectedName(), "Glow Pulse");
    EXPECT_FALSE(rows[0]->IsSelected());
}

TEST_F(PopupTest, ArrowsWrapAndTabJumpsBetweenEffectsAndPresets) {
    Open();
    InputKey(event_key::down); // no rows: nothing to do
    EXPECT_EQ(popup->GetSelected(), nullptr);

    Search("blur");
    InputKey(event_key::up);
    EXPECT_EQ(SelectedName(), "Blur In");
    InputKey(event_key::down);
    EXPECT_EQ(SelectedName(), "Gaussian Blur");
    InputKey(event_key::down);
    EXPECT_EQ(SelectedName(), "Fast Box Blur");
    InputKey(event_key::tab);
    EXPECT_EQ(SelectedName(), "Blur In");
    InputKey(event_key::tab);
    EXPECT_EQ(SelectedName(), "Gaussian Blur");
    InputKey('A'); // any other key keeps the selection
    EXPECT_EQ(SelectedName(), "Gaussian Blur");

    popup->SetSelected(nullptr); // with no selection, a key selects the first row
    InputKey(event_key::up);
    EXPECT_EQ(SelectedName(), "Gaussian Blur");

    Search("gaussian"); // no presets: Tab stays
    InputKey(event_key::tab);
    EXPECT_EQ(SelectedName(), "Gaussian Blur");
}

TEST_F(PopupTest, SelectionScrollsIntoViewBelowTheHeaders) {
    std::vector<EffectData> many;
    for (int i = 0; i < 30; ++i)
        many.push_back(Effect(i + 1, "Blur " + std::to_string(100 + i), "Blur & Sharpen"));
    for (int i = 0; i < 5; ++i)
        many.push_back(Preset(-(i + 1), "Blur Preset " + std::to_string(i)));
    popup->SetEffectData(many);
    Open();
    Search("blur");
    ASSERT_EQ(popup->GetRows().size(), 35u);
    const int visible = popup->GetListFrame().get_rect().h;
    EXPECT_EQ(visible, EffectsPopupWindow::MaxListHeight);
    EXPECT_EQ(popup->GetScrollBar().get_value(), 0);

    // Row 13 is the first whose bottom (20 + 13 * 30 + 30 = 440) passes the 420 visible pixels.
    for (int i = 0; i < 12; ++i)
        InputKey(event_key::down);
    EXPECT_EQ(popup->GetScrollBar().get_value(), 0);
    InputKey(event_key::down);
    EXPECT_EQ(popup->GetScrollBar().get_value(), 20 + 13 * 30 + 30 - visible);

    // The first preset sits under both headers.
    InputKey(event_key::tab);
    EXPECT_EQ(popup->GetScrollBar().get_value(), 20 + 30 * 30 + 20 + 30 - visible);
    // Back to the first row: its top is above the view, so the view starts at it.
    InputKey(event_key::tab);
    EXPECT_EQ(popup->GetScrollBar().get_value(), 20);
    // Up from the first row wraps to the last, at the very end.
    InputKey(event_key::up);
    EXPECT_EQ(popup->GetScrollBar().get_value(), popup->GetScrollBar().get_max_scroll());
}

TEST_F(PopupTest, ResizeFollowsTheContentUpToTheMaximum) {
    Open();
    Search("glow");
    EXPECT_FALSE(popup->GetScrollBar().is_visible(false));
    EXPECT_EQ(popup->GetListFrame().get_rect(), (ivec4{1, 45, 397 - 2, 20 + 30 + 20 + 30}));
    EXPECT_EQ(popup->GetRows()[0]->get_rect().w, 397 - 2);

    std::vector<EffectData> many;
    for (int i = 0; i < 40; ++i)
        many.push_back(Effect(i + 1, "Glow " + std::to_string(i), "Stylize"));
    popup->SetEffectData(many);
    Search("glow");
    EXPECT_TRUE(popup->GetScrollBar().is_visible(false));
    EXPECT_EQ(popup->GetListFrame().get_rect(), (ivec4{1, 45, 397 - 20, EffectsPopupWindow::MaxListHeight}));
    EXPECT_EQ(popup->GetScrollBar().get_rect(), (ivec4{397 - 18, 45, 16, EffectsPopupWindow::MaxListHeight}));
    EXPECT_EQ(popup->GetRows()[0]->get_rect().w, 397 - 20);
    EXPECT_EQ(popup->get_rect().h, 45 + EffectsPopupWindow::MaxListHeight + 1);

    // The wheel over a row scrolls the list, within its range.
    const ivec2 row = popup->GetRows()[2]->calc_absolute_pos() + ivec2{40, 10};
    offscreen::wheel(*popup, row, -1.0);
    EXPECT_GT(popup->GetScrollBar().get_value(), 0);
    for (int i = 0; i < 100; ++i)
        offscreen::wheel(*popup, row, -1.0);
    EXPECT_EQ(popup->GetScrollBar().get_value(), popup->GetScrollBar().get_max_scroll());
    offscreen::wheel(*popup, row, 200.0);
    EXPECT_EQ(popup->GetScrollBar().get_value(), 0);
}

TEST_F(PopupTest, ReturnAndClicksApplyTheRowsEntryAndHideEscapeDoesNot) {
    Open();
    Search("gauss");
    InputKey(event_key::return_key);
    offscreen::events_of(*popup).process_event(event_type::key_char, 13);
    ASSERT_EQ(applied.size(), 1u);
    EXPECT_EQ(applied[0], Named("Gaussian Blur"));
    EXPECT_FALSE(popup->is_shown());

    Open();
    Search("blur");
    EffectSlot& preset = *popup->GetRows()[3];
    const ivec2 at = preset.calc_absolute_pos();
    offscreen::click(*popup, {at.x + 60, at.y + 10}, 2); // the right button opens the menu instead
    EXPECT_EQ(applied.size(), 1u);
    offscreen::click(*popup, {at.x + 60, at.y + 10});
    ASSERT_EQ(applied.size(), 2u);
    EXPECT_EQ(applied[1], Named("Blur In"));

    // Keys other than Return on a row do nothing; with no selection Return only hides.
    Open();
    Search("glow");
    event_manager::instance().fire_event(popup->GetRows()[0].get(), event_type::key_down, 'X');
    EXPECT_EQ(applied.size(), 2u);
    event_manager::instance().fire_event(popup->GetRows()[0].get(), event_type::key_down, 13);
    EXPECT_EQ(applied.size(), 3u);
    Open();
    Search("zzz");
    popup->ApplySelectedEffect();
    EXPECT_EQ(applied.size(), 3u);
    EXPECT_FALSE(popup->is_shown());

    // Escape empties the search and closes without applying, as the platform delivers it: the key press to
    // the focused field, then the cancel command.
    for (const bool withSelection : {false, true}) {
        Open();
        Search("blur");
        if (withSelection)
            InputKey(event_key::down);
        InputKey(27);
        EXPECT_EQ(popup->GetSearchField().get_text(), "");
        EXPECT_TRUE(popup->GetRows().empty());
        offscreen::events_of(*popup).process_event(event_type::key_char, 27);
        EXPECT_FALSE(popup->is_shown());
    }
    // Outside search mode as well.
    Open("Comp 1", "");
    offscreen::events_of(*popup).process_event(event_type::key_char, 27);
    EXPECT_FALSE(popup->is_shown());
    EXPECT_EQ(applied.size(), 3u);
}

TEST_F(PopupTest, DigitsPickOccupiedShortcutSlotsAndOverridesReplaceTheirEntry) {
    SetSlot(1, "Glow", "Glo");
    Open();
    offscreen::events_of(*popup).process_event(event_type::key_char,
                                               '5'); // slot 5 is empty: nothing, and still shown
    EXPECT_TRUE(applied.empty());
    EXPECT_TRUE(popup->is_shown());
    offscreen::events_of(*popup).process_event(event_type::key_char, '2');
    ASSERT_EQ(applied.size(), 1u);
    EXPECT_EQ(applied[0], Named("Glow"));
    EXPECT_FALSE(popup->is_shown());

    // Inside a search a digit is text.
    Open();
    offscreen::advance_ms(250);
    Search("cc");
    offscreen::events_of(*popup).process_event(event_type::key_char, '2');
    EXPECT_EQ(applied.size(), 1u);

    // The shortcut buttons apply their slot.
    Open();
    const auto& button = *popup->GetShortcutsBar().GetButtons()[0];
    const ivec2 at = button.calc_absolute_pos();
    offscreen::click(*popup, {at.x + 10, at.y + 10});
    ASSERT_EQ(applied.size(), 2u);
    EXPECT_EQ(applied[1], Named("Glow"));

    // Outside search mode any other character hides.
    Open("", "");
    offscreen::events_of(*popup).process_event(event_type::key_char, 'x');
    EXPECT_FALSE(popup->is_shown());

    // An override is applied in place of its entry, from the list and from a slot.
    popup->GetAliases().push_back({"soft", Named("Gaussian Blur"), Named("Fast Box Blur")});
    Open();
    Search("soft");
    EXPECT_EQ(SelectedName(), "Gaussian Blur");
    popup->ApplySelectedEffect();
    ASSERT_EQ(applied.size(), 3u);
    EXPECT_EQ(applied[2], Named("Fast Box Blur"));
    SetSlot(0, "Gaussian Blur", "Gau");
    Open("", "");
    offscreen::events_of(*popup).process_event(event_type::key_char, '1');
    ASSERT_EQ(applied.size(), 4u);
    EXPECT_EQ(applied[3], Named("Fast Box Blur"));
}

TEST_F(PopupTest, FirstRunWritesTheSettingsAloneAndWindowKeysAndCommandsReachTheirTools) {
    const file_path folder = root / "user/Tarvelo";
    EXPECT_TRUE(SettingsFileExists(folder));
    EXPECT_FALSE(file_stats(folder.append(file_path("effects_search.txt"))).exists);
    EXPECT_EQ(offscreen::native_of(*popup).get_title(), "Effects Popup");

    Open();
    offscreen::events_of(*popup).process_event(event_type::key_down, event_key::f5);
    EXPECT_EQ(popup->gallery, 1);
    offscreen::set_key_down(56, true);
    offscreen::events_of(*popup).process_event(event_type::key_down, event_key::f5);
    offscreen::set_key_down(56, false);
    EXPECT_EQ(popup->screenshots, 1);
    EXPECT_EQ(popup->gallery, 1);
    offscreen::events_of(*popup).process_event(event_type::key_down,
                                               'A'); // search mode keeps the window for typing
    EXPECT_TRUE(popup->is_shown());

    Open("", "");
    for (unsigned long long modifier : {18ull, 55ull, 56ull})
        offscreen::events_of(*popup).process_event(event_type::key_down, modifier);
    EXPECT_TRUE(popup->is_shown());
    offscreen::events_of(*popup).process_event(event_type::key_down, 'A');
    EXPECT_FALSE(popup->is_shown());

    // Commands from the host reach the same tools.
    popup->gallery = popup->screenshots = 0;
    EXPECT_EQ(Command(*popup, PopupCommand{PopupCommand::Gallery}), NoCommandResult);
    EXPECT_EQ(popup->gallery, 1);
    Command(*popup, PopupCommand{PopupCommand::Screenshot});
    EXPECT_EQ(popup->screenshots, 1);
    EXPECT_EQ(Command(*popup, PopupCommand{PopupCommand::NewsCount}), 0xFFFFFFFFu); // not known yet
    EXPECT_EQ(Command(*popup, PopupCommand{99}), NoCommandResult);
    EXPECT_FALSE(popup->is_shown());

    prefs.shortcutChoice = 3;
    Command(*popup, PopupCommand{PopupCommand::SaveSettings});
    PreferencesData read;
    ASSERT_TRUE(LoadPreferences(read, root / "user/Tarvelo"));
    EXPECT_EQ(read.shortcutChoice, 3);
    EXPECT_TRUE(file_stats((root / "user/Tarvelo").append(file_path("effects_shortcuts.txt"))).exists);
}

TEST_F(PopupTest, NewsCountIsPolledUntilKnown) {
    int32_t answer = -1;
    int polls = 0;
    Window withNews(prefs, [&] {
        ++polls;
        return answer;
    });
    offscreen::advance_ms(2000);
    EXPECT_EQ(polls, 2);
    EXPECT_FALSE(withNews.GetNewsBadge().is_visible(false));
    answer = 3;
    offscreen::advance_ms(1000);
    EXPECT_EQ(withNews.GetNewsCount(), 3);
    EXPECT_TRUE(withNews.GetNewsBadge().is_visible(false));
    EXPECT_EQ(Command(withNews, PopupCommand{PopupCommand::NewsCount}), 3u);
    offscreen::advance_ms(5000);
    EXPECT_EQ(polls, 3); // the timer stopped

    withNews.Logo(); // acknowledged: the badge goes and the time is saved
    EXPECT_FALSE(withNews.GetNewsBadge().is_visible(false));
    PreferencesData read;
    read.newsTime = 0;
    ASSERT_TRUE(LoadPreferences(read, root / "user/Tarvelo"));
    EXPECT_EQ(read.newsTime, prefs.newsTime);
}

TEST_F(PopupTest, SwitchThemeAppliesOnceUnlessForced) {
    ASSERT_EQ(popup->GetThemes().size(), 2u);
    const UIColors& dark = popup->GetThemes()[0];
    const UIColors& light = popup->GetThemes()[1];
    EXPECT_EQ(popup->GetColors(), &dark);
    EXPECT_EQ(popup->get_root().get_theme().get<vec4>(theme_keys::default_back_color), dark.windowBack);

    popup->SwitchTheme(UIColorTheme::Light, false);
    EXPECT_EQ(popup->GetColors(), &light);
    EXPECT_EQ(popup->get_root().get_theme().get<vec4>(theme_keys::default_back_color), light.windowBack);
    EXPECT_EQ(theme::plugin_map.at(theme_keys::tooltip_back_color).get<vec4>(), light.tooltipBack);
    EXPECT_EQ(popup->GetSearchField().get_theme().get<vec4>(theme_keys::input_font_color), light.inputFont);
    EXPECT_EQ(popup->GetToolButton(EffectsPopupWindow::LogoButton)
                  .get_theme()
                  .get<image_stream>(theme_keys::button_back_image),
              light.logoIcon);

    // Already current: nothing is pushed again unless forced.
    theme::plugin_map.erase(theme_keys::tooltip_back_color);
    popup->SwitchTheme(UIColorTheme::Light, false);
    EXPECT_EQ(theme::plugin_map.count(theme_keys::tooltip_back_color), 0u);
    popup->SwitchTheme(UIColorTheme::Light, true);
    EXPECT_EQ(theme::plugin_map.count(theme_keys::tooltip_back_color), 1u);

    // The window colour fills the whole popup first, under every control.
    Open();
    offscreen::offscreen_window& native = offscreen::native_of(*popup);
    popup->get_root().update(false);
    native.get_canvas().clear_calls();
    native.paint_pending();
    const std::vector<draw_call> fills = native.get_canvas().calls_named("draw_rect");
    ASSERT_FALSE(fills.empty());
    EXPECT_EQ(fills.front().color, light.windowBack);
    EXPECT_EQ(fills.front().rect,
              (ivec4{0, 0, popup->get_root().get_rect().w, popup->get_root().get_rect().h}));

    Search("glow");
    popup->SwitchTheme(static_cast<UIColorTheme>(7), false); // unknown: the first theme
    EXPECT_EQ(popup->GetColors(), &dark);
    EXPECT_EQ(popup->GetRows()[1]->BackgroundColor(), dark.listBack);
    EXPECT_EQ(popup->GetEffectsHeader()->GetTextColor(), dark.effectsHeaderText);
    EXPECT_EQ(popup->GetEffectsHeader()->GetBackColor(), dark.effectsHeaderBack);
}

TEST_F(PopupTest, ListActionsSaveAndRefresh) {
    Open();
    Search("glow");
    // Blacklisting from a row's own menu rebuilds the list under the row that asked.
    const ivec2 at = popup->GetRows()[0]->calc_absolute_pos();
    offscreen::push_menu_answer(EffectSlot::BlacklistId);
    offscreen::click(*popup, {at.x + 60, at.y + 10}, 2);
    EXPECT_EQ(RowNames(), (std::vector<std::string>{"Glow Pulse"}));
    popup->AddToShortcuts(Named("Curves"));
    EXPECT_FALSE(popup->is_shown());
    EXPECT_EQ(popup->GetShortcuts()[0].alias, "Cur");
    Open();
    popup->ReplaceToShortcuts(Named("Glow Pulse"), 0);
    EXPECT_EQ(popup->GetShortcuts()[0].effect, Named("Glow Pulse"));
    EXPECT_FALSE(popup->is_shown());

    // The files now hold the lists; a new popup reads them back.
    PreferencesData other;
    Window again(other);
    again.SetEffectData(catalogue);
    ASSERT_EQ(again.GetBlacklist().size(), 1u);
    EXPECT_EQ(again.GetBlacklist()[0].effect->name, "Glow");
    EXPECT_EQ(again.GetShortcuts()[0].alias, "Glo");
}

} // namespace
