// The popup window: opening layouts, placement, keys, applying, the list, resizing and themes.
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget_themes.h"
#include "popup/preferences_file.h"
#include "popup/user_lists.h"
#include "tests/popup/popup_fixture.h"

#include <algorithm>
#include <tuple>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

using W = EffectsPopupWindow;

TEST_F(PopupTest, OpeningLayoutsInEachMode) {
    const struct {
        const char *comp, *layer;
        bool search, capture;
    } cases[] = {{"Comp 1", "Layer 1", true, true},
                 {"", "", false, false},
                 {"Comp 1", "", false, true}}; // capture works, search does not
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.comp) + "/" + c.layer);
        Open(c.comp, c.layer);
        EXPECT_EQ(std::tuple(popup->IsSearchMode(), popup->IsScreenshotMode(),
                             popup->GetSearchField().is_visible(false)),
                  std::tuple(c.search, c.capture, c.search));
        std::vector<int> enabled;
        for (int b = 0; b < 5; ++b)
            enabled.push_back(popup->GetToolButton(static_cast<W::ToolButton>(b)).is_enabled());
        EXPECT_EQ(enabled,
                  (std::vector<int>{c.capture, 1, c.capture, 1, 1})); // screenshot, gallery, export, ...
        EXPECT_FALSE(popup->GetShortcutsBar().is_visible(false));
        popup->hide();
    }
}

TEST_F(PopupTest, ShortcutsShowInSearchModeAndDigitsAndButtonsApplyTheirSlotOrItsOverride) {
    Open();
    const int bare = popup->get_rect().h;
    SetSlot(1, "Glow", "Glo");
    SetSlot(4, "Curves", "Cur");
    Open();
    EXPECT_TRUE(popup->GetShortcutsBar().is_visible(false) && popup->get_rect().h == bare + 35);
    const auto& buttons = popup->GetShortcutsBar().GetButtons();
    ASSERT_EQ(buttons.size(), 2u);
    EXPECT_EQ(buttons[0]->GetNumber(), 2ul) << "numbered for its slot";

    Search("glow");
    EXPECT_TRUE(!popup->GetShortcutsBar().is_visible(false) && popup->GetListFrame().get_rect().y == bare);
    Search("");
    EXPECT_TRUE(popup->GetShortcutsBar().is_visible(false));
    Open("", "");
    EXPECT_FALSE(popup->GetShortcutsBar().is_visible(false));

    // Digits pick occupied slots; an override is applied in place of its entry.
    Open();
    Event(event_type::key_char, '7'); // slot 7 is empty: nothing, and still shown
    EXPECT_TRUE(popup->is_shown());
    Event(event_type::key_char, '2');
    EXPECT_TRUE(Applied() == Names{"Glow"} && !popup->is_shown());

    Open(); // inside a search a digit is text
    offscreen::advance_ms(250);
    Search("cc");
    Event(event_type::key_char, '2');
    EXPECT_EQ(Applied(), Names{});

    Open(); // the shortcut buttons apply their slot
    const ivec2 at = popup->GetShortcutsBar().GetButtons()[0]->calc_absolute_pos();
    offscreen::click(*popup, {at.x + 10, at.y + 10});
    EXPECT_EQ(Applied(), (Names{"Glow"}));

    Open("", ""); // outside search mode any other character hides
    Event(event_type::key_char, 'x');
    EXPECT_FALSE(popup->is_shown());

    // An override is applied in place of its entry, from the list and from a slot.
    popup->GetAliases().push_back({"soft", Named("Gaussian Blur"), Named("Fast Box Blur")});
    Open();
    Search("soft");
    EXPECT_EQ(SelectedName(), "Gaussian Blur");
    popup->ApplySelectedEffect();
    SetSlot(0, "Gaussian Blur", "Gau");
    Open("", "");
    Event(event_type::key_char, '1');
    EXPECT_EQ(Applied(), (Names{"Fast Box Blur", "Fast Box Blur"}));
}

TEST_F(PopupTest, FocusCentresOnThePointerStaysOnScreenAndLosingItHides) {
    offscreen::set_pointer({600, 500});
    Open();
    const ivec4 r = popup->get_rect();
    EXPECT_EQ(r.position(), (ivec2{600 - r.w / 2, 500 - r.h}));

    popup->hide();
    offscreen::set_pointer({10, 30}); // the popup would reach over the menu bar and the left edge
    Open();
    const ivec4 screen = offscreen::get_screen_rect();
    EXPECT_TRUE(popup->get_rect().x >= screen.x && popup->get_rect().y >= screen.y);

    // The keyboard reaches the search field a quarter of a second after the window appears.
    const bool early = popup->GetSearchField().get_inside().has_focus();
    offscreen::advance_ms(250);
    EXPECT_EQ(std::tuple(early, popup->GetSearchField().get_inside().has_focus()), std::tuple(false, true));

    // Losing the focus hides; reopening empties the search.
    Search("blur");
    EXPECT_FALSE(popup->GetRows().empty());
    Event(event_type::focus_lost, 0);
    EXPECT_FALSE(popup->is_shown());
    Open();
    EXPECT_TRUE(popup->GetSearchField().get_text().empty() && popup->GetRows().empty());
}

TEST_F(PopupTest, SearchBuildsRowsUnderTheirHeadersHighlightsThemAndKeysMoveTheSelection) {
    Open();
    Search("blur");
    // Names containing the text, in catalogue order, effects before presets.
    EXPECT_EQ(RowNames(), (Names{"Gaussian Blur", "Fast Box Blur", "Directional Blur", "Blur In"}));
    ASSERT_TRUE(popup->GetEffectsHeader() && popup->GetPresetsHeader());
    EXPECT_EQ(SelectedName(), "Gaussian Blur");

    Search("zzz");
    EXPECT_TRUE(popup->GetRows().empty() && popup->GetSelected() == nullptr); // its header is in the pictures

    Search("gausian"); // mistyped: near misses under a header of their own
    EXPECT_EQ(std::tuple(popup->GetEffectsHeader()->GetText(), SelectedName()),
              std::tuple("Did you mean", "Gaussian Blur"));

    Search("pulse"); // presets alone still open under "Effects"
    EXPECT_EQ(std::tuple(popup->GetEffectsHeader()->GetText(), popup->GetPresetsHeader()->get_rect().y,
                         SelectedName()),
              std::tuple("Effects", 20, "Glow Pulse"));

    // The row the keys selected is lit without the pointer; entering a row with the pointer selects it.
    Search("glow");
    const auto& rows = popup->GetRows();
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0]->BackgroundColor(), EffectHighlightColor); // selected, not hovered
    const ivec2 at = rows[1]->calc_absolute_pos();
    offscreen::move_mouse(*popup, {at.x + 50, at.y + 5});
    EXPECT_TRUE(SelectedName() == "Glow Pulse" && !rows[0]->IsSelected());

    // Arrows wrap and Tab jumps between effects and presets.
    Search("");
    InputKey(event_key::down); // no rows: nothing to do
    EXPECT_EQ(popup->GetSelected(), nullptr);
    Search("blur");
    const std::pair<unsigned long long, const char*> steps[] = {
        {event_key::up, "Blur In"},         {event_key::down, "Gaussian Blur"},
        {event_key::down, "Fast Box Blur"}, {event_key::down, "Directional Blur"},
        {event_key::down, "Blur In"},       {event_key::tab, "Gaussian Blur"},
        {event_key::tab, "Blur In"},        {'A', "Blur In"}, // any other key keeps the selection
    };
    for (const auto& [key, name] : steps) {
        InputKey(key);
        EXPECT_EQ(SelectedName(), name) << key;
    }
    popup->SetSelected(nullptr); // with no selection, a key selects the first row
    InputKey(event_key::up);
    EXPECT_EQ(SelectedName(), "Gaussian Blur");
    Search("gaussian"); // no presets: Tab stays
    InputKey(event_key::tab);
    EXPECT_EQ(SelectedName(), "Gaussian Blur");
}

TEST_F(PopupTest, TheListGrowsToTheMaximumThenScrollsTheSelectionIntoViewAndFollowsTheWheel) {
    Open();
    const int w = popup->get_rect().w, top = popup->get_rect().h;
    Search("glow");
    EXPECT_FALSE(popup->GetScrollBar().is_visible(false));

    std::vector<EffectData> many;
    for (int i = 0; i < 30; ++i)
        many.push_back(Effect(i + 1, "Blur " + std::to_string(100 + i), "Blur & Sharpen"));
    for (int i = 0; i < 5; ++i)
        many.push_back(Preset(-(i + 1), "Blur Preset " + std::to_string(i)));
    popup->SetEffectData(many);
    Search("blur");
    ASSERT_EQ(popup->GetRows().size(), 35u);
    const int visible = W::MaxListHeight;
    EXPECT_TRUE(popup->GetScrollBar().is_visible(false));
    EXPECT_EQ(popup->GetListFrame().get_rect(), (ivec4{1, top, w - 20, visible}));
    EXPECT_EQ(popup->GetScrollBar().get_rect(), (ivec4{w - 18, top, 16, visible}));
    EXPECT_EQ(popup->get_rect().h, top + visible + 1);

    // Row 13 is the first whose bottom (20 + 13 * 30 + 30 = 440) passes the 420 visible pixels.
    auto& bar = popup->GetScrollBar();
    for (int i = 0; i < 12; ++i)
        InputKey(event_key::down);
    EXPECT_EQ(bar.get_value(), 0);
    InputKey(event_key::down);
    EXPECT_EQ(bar.get_value(), 20 + 13 * 30 + 30 - visible);
    InputKey(event_key::tab); // the first preset sits under both headers
    EXPECT_EQ(bar.get_value(), 20 + 30 * 30 + 20 + 30 - visible);
    InputKey(event_key::tab); // back to the first row, above the view: the view starts at it
    EXPECT_EQ(bar.get_value(), 20);
    InputKey(event_key::up); // wraps to the last, at the very end
    EXPECT_EQ(bar.get_value(), bar.get_max_scroll());

    // The wheel over a row scrolls the list.
    bar.set_value(0);
    offscreen::wheel(*popup, popup->GetRows()[2]->calc_absolute_pos() + ivec2{40, 10}, -1.0);
    EXPECT_GT(bar.get_value(), 0);
}

TEST_F(PopupTest, ReturnAndClicksApplyTheRowsEntryAndHideEscapeDoesNot) {
    Open();
    Search("gauss");
    InputKey(event_key::return_key);
    Event(event_type::key_char, 13);
    EXPECT_TRUE(Applied() == Names{"Gaussian Blur"} && !popup->is_shown());

    Open();
    Search("blur");
    const ivec2 at = popup->GetRows()[3]->calc_absolute_pos() + ivec2{60, 10};
    offscreen::click(*popup, at, 2); // the right button opens the menu instead
    EXPECT_EQ(Applied(), Names{});
    offscreen::click(*popup, at);
    EXPECT_EQ(Applied(), (Names{"Blur In"}));

    // With no selection Return only hides.
    Open();
    Search("zzz");
    popup->ApplySelectedEffect();
    EXPECT_FALSE(popup->is_shown());

    // Escape empties the search and closes without applying, as the platform delivers it: the key
    // press to the focused field, then the cancel command; outside search mode as well.
    for (const bool withSelection : {false, true}) {
        Open();
        Search("blur");
        if (withSelection)
            InputKey(event_key::down);
        InputKey(27);
        EXPECT_TRUE(popup->GetSearchField().get_text().empty() && popup->GetRows().empty());
        Event(event_type::key_char, 27);
        EXPECT_FALSE(popup->is_shown());
    }
    Open("Comp 1", "");
    Event(event_type::key_char, 27);
    EXPECT_TRUE(!popup->is_shown() && Applied().empty());
}

TEST_F(PopupTest, FirstRunWritesTheSettingsAloneKeysAndCommandsReachTheirToolsAndNewsIsPolledUntilKnown) {
    const file_path folder = root / "user/Tarvelo";
    EXPECT_TRUE(SettingsFileExists(folder) &&
                !file_stats(folder.append(file_path("effects_search.txt"))).exists);

    Open();
    Event(event_type::key_down, event_key::f5);
    offscreen::set_key_down(56, true);
    Event(event_type::key_down, event_key::f5); // with Shift: capture
    offscreen::set_key_down(56, false);
    EXPECT_EQ(popup->calls, (std::vector<int>{0, 1}));
    Event(event_type::key_down, 'A'); // search mode keeps the window for typing
    const bool keptForTyping = popup->is_shown();
    Open("", "");
    for (unsigned long long modifier : {18ull, 55ull, 56ull})
        Event(event_type::key_down, modifier);
    const bool keptForModifiers = popup->is_shown();
    Event(event_type::key_down, 'A');
    EXPECT_EQ(std::tuple(keptForTyping, keptForModifiers, popup->is_shown()), std::tuple(true, true, false));

    // Each command from the host reaches its tool, and answers nothing but the news count.
    popup->calls.clear();
    for (uint32_t kind :
         std::initializer_list<uint32_t>{PopupCommand::Gallery, PopupCommand::Screenshot,
                                         PopupCommand::Export, PopupCommand::Preferences, 99u})
        EXPECT_EQ(Command(*popup, kind), NoCommandResult) << kind;
    EXPECT_EQ(popup->calls, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_TRUE(Command(*popup, PopupCommand::NewsCount) == 0xFFFFFFFFu && !popup->is_shown()); // not known

    prefs.shortcutChoice = 3;
    Command(*popup, PopupCommand::SaveSettings);
    PreferencesData read;
    ASSERT_TRUE(LoadPreferences(read, folder));
    EXPECT_TRUE(read.shortcutChoice == 3 &&
                file_stats(folder.append(file_path("effects_shortcuts.txt"))).exists);

    // The news count is polled until known, and the logo acknowledges it.
    int32_t answer = -1;
    int polls = 0;
    Window withNews(prefs, [&] {
        ++polls;
        return answer;
    });
    offscreen::advance_ms(2000);
    EXPECT_TRUE(polls == 2 && !withNews.GetNewsBadge().is_visible(false));
    answer = 1; // a single item shows the badge too
    offscreen::advance_ms(1000);
    EXPECT_TRUE(withNews.GetNewsCount() == 1 && withNews.GetNewsBadge().is_visible(false));
    EXPECT_EQ(Command(withNews, PopupCommand::NewsCount), 1u);
    offscreen::advance_ms(5000);
    EXPECT_EQ(polls, 3); // the timer stopped

    withNews.GetNewsBadge().press(); // the badge leads to the product page: it goes, the time is saved
    EXPECT_FALSE(withNews.GetNewsBadge().is_visible(false));
    read.newsTime = 0;
    ASSERT_TRUE(LoadPreferences(read, root / "user/Tarvelo"));
    EXPECT_EQ(read.newsTime, prefs.newsTime);
}

TEST_F(PopupTest, SwitchThemeAppliesOnceUnlessForced) {
    ASSERT_EQ(popup->GetThemes().size(), 2u);
    const UIColors &dark = popup->GetThemes()[0], &light = popup->GetThemes()[1];
    auto back = [&] {
        return popup->get_root().get_theme().get<vec4>(theme_keys::default_back_color);
    };
    EXPECT_TRUE(popup->GetColors() == &dark && back() == dark.windowBack);
    popup->SwitchTheme(UIColorTheme::Light, false);
    EXPECT_TRUE(popup->GetColors() == &light && back() == light.windowBack);

    // Already current: nothing is pushed again unless forced.
    theme::plugin_map.erase(theme_keys::tooltip_back_color);
    popup->SwitchTheme(UIColorTheme::Light, false);
    const size_t unforced = theme::plugin_map.count(theme_keys::tooltip_back_color);
    popup->SwitchTheme(UIColorTheme::Light, true);
    EXPECT_EQ(std::tuple(unforced, theme::plugin_map.count(theme_keys::tooltip_back_color)),
              std::tuple(0ul, 1ul));

    Open();
    Search("glow");
    popup->SwitchTheme(static_cast<UIColorTheme>(7), false); // unknown: the first theme
    EXPECT_TRUE(popup->GetColors() == &dark && popup->GetRows()[1]->BackgroundColor() == dark.listBack);
}

TEST_F(PopupTest, ListActionsSaveAndRefreshAndShortcutChoicesHideEvenWhenRefused) {
    const file_path shortcutsFile = (root / "user/Tarvelo").append(file_path("effects_shortcuts.txt"));
    // Refused: all nine slots full, or a replacement of an empty slot. The popup hides, writes nothing.
    for (size_t i = 0; i < ShortcutSlotCount; ++i)
        SetSlot(i, "Glow", "G" + std::to_string(i));
    Open();
    popup->AddToShortcuts(Named("Curves"));
    EXPECT_FALSE(popup->is_shown());
    EXPECT_TRUE(
        std::ranges::all_of(popup->GetShortcuts(), [&](auto& a) { return a.effect == Named("Glow"); }));
    popup->GetShortcuts()[4] = EffectAlias{};
    Open();
    popup->ReplaceToShortcuts(Named("Curves"), 4);
    EXPECT_FALSE(popup->is_shown());
    EXPECT_TRUE(popup->GetShortcuts()[4].effect == nullptr && !file_stats(shortcutsFile).exists);
    for (size_t i = 0; i < ShortcutSlotCount; ++i)
        popup->GetShortcuts()[i] = EffectAlias{};

    Open();
    Search("glow");
    // Blacklisting from a row's own menu rebuilds the list under the row that asked.
    const ivec2 at = popup->GetRows()[0]->calc_absolute_pos();
    offscreen::push_menu_answer(EffectSlot::BlacklistId);
    offscreen::click(*popup, {at.x + 60, at.y + 10}, 2);
    EXPECT_EQ(RowNames(), (Names{"Glow Pulse"}));
    popup->AddToShortcuts(Named("Curves"));
    EXPECT_TRUE(!popup->is_shown() && popup->GetShortcuts()[0].alias == "Cur");
    Open();
    popup->ReplaceToShortcuts(Named("Glow Pulse"), 0);
    EXPECT_TRUE(!popup->is_shown() && popup->GetShortcuts()[0].effect == Named("Glow Pulse"));

    // The files now hold the lists; a new popup reads them back.
    PreferencesData other;
    Window again(other);
    again.SetEffectData(catalogue);
    ASSERT_EQ(again.GetBlacklist().size(), 1u);
    EXPECT_EQ(again.GetBlacklist()[0].effect->name + "/" + again.GetShortcuts()[0].alias, "Glow/Glo");
}

} // namespace

TEST_F(PopupTest, AppliedEntriesAreRecordedReadBackAndRiseOnlyWhileTheSettingIsOn) {
    const nimbit::file_path file = popup->GetSettingsFolder().append("effects_usage.txt");
    for (int i = 0; i < 2; ++i) {
        Open();
        Search("directional");
        popup->ApplySelectedEffect();
    }
    EXPECT_TRUE(read_text(file).starts_with("2 ") && read_text(file).ends_with(" e Directional Blur\n"));
    Open();
    Search("blur");
    EXPECT_EQ(RowNames().front(), "Gaussian Blur") << "off: nothing moves";
    prefs.recentFirst = true;
    Search("blu");
    EXPECT_EQ(RowNames().front(), "Directional Blur");

    Window next(prefs); // a new session reads the record
    next.SetEffectData(catalogue);
    next.GetSearchField().set_text("blur", true);
    EXPECT_EQ(next.GetRows().front()->GetEffect()->name, "Directional Blur");
    next.ForgetUsage();
    EXPECT_FALSE(nimbit::file_stats(file).exists);
    next.GetSearchField().set_text("blu", true);
    EXPECT_EQ(next.GetRows().front()->GetEffect()->name, "Gaussian Blur");
}
