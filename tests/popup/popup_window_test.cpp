// The popup window: opening layouts, placement, keys, applying, the list, resizing and themes.
#include "host/effect_data.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"
#include "nimbit/ui/widget_themes.h"
#include "popup/effect_alias.h"
#include "popup/effects_popup_window.h"
#include "popup/parts/effect_slot.h"
#include "popup/parts/effects_message_popup.h"
#include "popup/parts/effects_popup_interface.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "popup/ui_colors.h"
#include "popup/user_lists.h"
#include "tests/search/fixture_catalogue.h"
#include "tests/support/data_folders.h"
#include "tests/support/draw_snapshot.h"
#include "tests/support/widget_fixture.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>

namespace {

// The popup over a small catalogue, in a private settings folder, on the offscreen backend; `applied`
// records the entries it hands out with its apply event.
class PopupTest : public OffscreenTest, protected private_data_folders {
protected:
    // Counts calls of the seams that later pieces fill in.
    struct Window : EffectsPopupWindow {
        using EffectsPopupWindow::EffectsPopupWindow;
        std::vector<int> calls; // 0 gallery, 1 screenshot, 2 export, 3 preferences
        void OpenGallery() override { calls.push_back(0); }
        void TakeScreenshot(bool) override { calls.push_back(1); }
        void ExportScreenshot() override { calls.push_back(2); }
        void OpenPreferences() override { calls.push_back(3); }
    };

    void SetUp() override {
        OffscreenTest::SetUp();
        // The first as a catalogue made elsewhere arrives: without its search names.
        // clang-format off
        catalogue = {EffectData{1, "Gaussian Blur", "gaussian blur", "Blur & Sharpen", false},
                     MakeEffect(2, "Fast Box Blur", "Blur & Sharpen"), MakeEffect(3, "Directional Blur", "Blur & Sharpen"),
                     MakeEffect(4, "Glow"), MakeEffect(5, "Curves", "Color Correction"),
                     MakePreset(-1, "Blur In"), MakePreset(-2, "Glow Pulse")};
        // clang-format on
        popup = std::make_unique<Window>(prefs);
        popup->SetEffectData(catalogue);
        applied.watch(*popup, "", {event_type::pressed});
    }
    void TearDown() override {
        popup.reset();
        OffscreenTest::TearDown();
    }

    // The entry of the popup's catalogue with this display name.
    const EffectData* Named(std::string_view name) const {
        for (const EffectData& e : popup->GetCatalogue())
            if (e.name == name)
                return &e;
        return nullptr;
    }
    void SetSlot(size_t slot, std::string_view name, std::string label) {
        popup->GetShortcuts()[slot] = EffectAlias{std::move(label), Named(name), nullptr};
    }
    // The names of the entries applied since the last call.
    lines Applied() {
        lines names;
        for (uint64_t data : applied.data())
            names.push_back(pointer_payload<const EffectData>(data)->name);
        applied.entries.clear();
        return names;
    }

    // Opens the popup the way the idle hook does; a composition name turns screenshot mode on and a
    // layer name search mode.
    void Open(std::string_view comp = "Comp 1", std::string_view layer = "Layer 1") {
        popup->Show("Project", comp, layer, PopupCommand{PopupCommand::Show});
    }
    static uint32_t Command(EffectsPopupWindow& w, uint32_t kind) {
        return w.Show(std::string_view(), std::string_view(), std::string_view(), PopupCommand{kind});
    }
    void Event(event_type type, uint64_t data) { send(*popup, type, data); }
    void Search(std::string_view text) { popup->GetSearchField().set_text(text, true); }
    // A key as the platform delivers it to the search field (key_down to the focused widget).
    void InputKey(unsigned long long code) {
        popup->GetSearchField().focus(focus_cause::keyboard);
        Event(event_type::key_down, code);
    }
    lines RowNames() const {
        lines names;
        for (const auto& row : popup->GetRows())
            names.push_back(row->GetEffect()->name);
        return names;
    }
    std::string SelectedName() const {
        return popup->GetSelected() != nullptr ? popup->GetSelected()->GetEffect()->name : std::string();
    }

    PreferencesData prefs;
    std::vector<EffectData> catalogue;
    std::unique_ptr<Window> popup;
    event_recorder applied;
};

using W = EffectsPopupWindow;

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
    EXPECT_TRUE(Applied() == lines{"Glow"} && !popup->is_shown());

    Open(); // inside a search a digit is text
    offscreen::advance_ms(250);
    Search("cc");
    Event(event_type::key_char, '2');
    EXPECT_EQ(Applied(), lines{});

    Open(); // the shortcut buttons apply their slot
    const ivec2 at = popup->GetShortcutsBar().GetButtons()[0]->calc_absolute_pos();
    offscreen::click(*popup, {at.x + 10, at.y + 10});
    EXPECT_EQ(Applied(), (lines{"Glow"}));

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
    EXPECT_EQ(Applied(), (lines{"Fast Box Blur", "Fast Box Blur"}));
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
    Event(event_type::focus_lost, 0);
    EXPECT_FALSE(popup->is_shown());
    Open();
    EXPECT_TRUE(popup->GetSearchField().get_text().empty() && popup->GetRows().empty());
}

TEST_F(PopupTest, SearchBuildsRowsUnderTheirHeadersHighlightsThemAndKeysMoveTheSelection) {
    Open();
    Search("blur");
    // Names containing the text, in catalogue order, effects before presets.
    EXPECT_EQ(RowNames(), (lines{"Gaussian Blur", "Fast Box Blur", "Directional Blur", "Blur In"}));
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
    for (int i = 0; i < 35; ++i) // 30 effects, then 5 presets
        many.push_back(i < 30 ? MakeEffect(i + 1, "Blur " + std::to_string(100 + i), "Blur & Sharpen")
                              : MakePreset(29 - i, "Blur Preset " + std::to_string(i)));
    popup->SetEffectData(many);
    Search("blur");
    ASSERT_EQ(popup->GetRows().size(), 35u);
    const int visible = W::MaxListHeight;
    EXPECT_EQ(
        std::tuple(popup->GetScrollBar().is_visible(false), popup->GetListFrame().get_rect(),
                   popup->GetScrollBar().get_rect(), popup->get_rect().h),
        std::tuple(true, ivec4{1, top, w - 20, visible}, ivec4{w - 18, top, 16, visible}, top + visible + 1));

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
    EXPECT_TRUE(Applied() == lines{"Gaussian Blur"} && !popup->is_shown());

    Open();
    Search("blur");
    const ivec2 at = popup->GetRows()[3]->calc_absolute_pos() + ivec2{60, 10};
    offscreen::click(*popup, at, 2); // the right button opens the menu instead
    EXPECT_EQ(Applied(), lines{});
    offscreen::click(*popup, at);
    EXPECT_EQ(Applied(), (lines{"Blur In"}));

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
    EXPECT_FALSE(popup->is_shown()); // which slots refuse is the lists' tests' part
    popup->GetShortcuts()[4] = EffectAlias{};
    Open();
    popup->ReplaceToShortcuts(Named("Curves"), 4);
    EXPECT_FALSE(popup->is_shown());
    EXPECT_FALSE(file_stats(shortcutsFile).exists);
    std::ranges::fill(popup->GetShortcuts(), EffectAlias{});

    Open();
    Search("glow");
    // Blacklisting from a row's own menu rebuilds the list under the row that asked.
    const ivec2 at = popup->GetRows()[0]->calc_absolute_pos();
    offscreen::push_menu_answer(EffectSlot::BlacklistId);
    offscreen::click(*popup, {at.x + 60, at.y + 10}, 2);
    EXPECT_EQ(RowNames(), (lines{"Glow Pulse"}));
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

// The list's rows and the message popups, built without the popup window; the popup's pictures.

// Writes each call down as "what:value effect".
struct RecordingPopup : EffectsPopupInterface {
    lines calls;
    void Record(std::string what, const EffectData* e, unsigned long value) {
        calls.push_back(what + ":" + std::to_string(value) + " " + (e != nullptr ? e->name : ""));
    }
    void AddToList(const EffectData* e, bool blacklist) override { Record("list", e, blacklist); }
    void AddToShortcuts(const EffectData* e) override { Record("create", e, 0); }
    void ReplaceToShortcuts(const EffectData* e, unsigned long index) override {
        Record("replace", e, index);
    }
    void SetSelected(EffectSlot*) override { Record("select", nullptr, 0); }
};

struct SlotTest : OffscreenTest {
    void SetUp() override {
        OffscreenTest::SetUp();
        host.create("rows", {0, 0, 300, 200});
        host.show();
        slot.get_theme().set(theme_keys::default_back_color, vec4{0.1f, 0.1f, 0.1f, 1});
        slot.create(host.get_root(), {0, 0, 300, 30});
        slot.show(true);
    }
    // The items of the menu the row shows, choosing `answer`.
    std::vector<menu_item> Menu(bool userEntry, size_t labelCount, std::optional<uint32_t> answer = {}) {
        labels.clear();
        for (size_t i = 0; i < labelCount; ++i)
            labels.push_back("S" + std::to_string(i + 1));
        slot.SetEffect(&effect, userEntry, &labels);
        offscreen::push_menu_answer(answer);
        slot.ShowContextMenu({10, 10});
        return offscreen::shown_menus().back().items;
    }
    static std::vector<uint32_t> Ids(const std::vector<menu_item>& items) {
        std::vector<uint32_t> ids;
        for (const menu_item& i : items)
            ids.push_back(i.id);
        return ids;
    }

    window host;
    RecordingPopup popup;
    EffectSlot slot{popup, true};
    EffectData effect = MakeEffect(0, "Gaussian Blur");
    lines labels;
};

TEST_F(SlotTest, ContextMenuOffersWhatTheRowAndSlotsAllowAndPassesTheChoiceOn) {
    std::vector<menu_item> items = Menu(false, 0);
    EXPECT_EQ(Ids(items), (std::vector<uint32_t>{1, 2, 3, 5, 4}));
    EXPECT_TRUE(items[0].text == "Gaussian Blur" && !items[0].enabled && items[1].separator);

    // A favorite has no "Add to Favorites"; nine shortcuts leave only "Replace Shortcut".
    items = Menu(true, 9);
    EXPECT_EQ(Ids(items), (std::vector<uint32_t>{1, 2, 6, 4}));
    ASSERT_EQ(items[2].submenu.size(), 9u);
    EXPECT_EQ(std::tuple(items[2].submenu[0].id, items[2].submenu[0].text, items[2].submenu[8].id,
                         items[2].submenu[8].text),
              std::tuple(61u, "1. S1", 69u, "9. S9"));
    EXPECT_TRUE(popup.calls.empty()); // dismissed

    // Choices reach the popup.
    for (uint32_t answer : {62u, 3u, 4u, 5u, 1u}) // the second submenu item ... the title, which is inert
        Menu(false, 2, answer);
    EXPECT_EQ(popup.calls, (lines{"replace:1 Gaussian Blur", "list:0 Gaussian Blur", "list:1 Gaussian Blur",
                                  "create:0 Gaussian Blur"}));
}

TEST_F(SlotTest, PointerSelectsUnlessSelectedAndRightClickOpensTheMenuOnlyWhenAllowed) {
    slot.SetEffect(&effect, false, &labels);
    offscreen::move_mouse(host, {20, 10});
    EXPECT_TRUE(popup.calls.size() == 1u && slot.IsHovered()); // asks to be selected
    offscreen::move_mouse(host, {20, 150});
    EXPECT_FALSE(slot.IsHovered());
    slot.SetSelected(true);
    offscreen::click(host, {0, 10}, 2);
    EXPECT_EQ(std::pair(popup.calls.size(), offscreen::shown_menus().size()), std::pair(1ul, 1ul));
    EXPECT_TRUE(slot.IsHovered()); // the pointer is still over the row (its left edge): it stays lit
    offscreen::set_pointer({20, 150});
    slot.ShowContextMenu({20, 10});
    EXPECT_FALSE(slot.IsHovered()); // the pointer left while the menu was open

    EffectSlot quiet(popup, false);
    quiet.create(host.get_root(), {0, 40, 300, 30});
    quiet.show(true);
    quiet.SetEffect(&effect, false, &labels);
    offscreen::click(host, {20, 50}, 2);
    EXPECT_EQ(offscreen::shown_menus().size(), 2u);
}

// Runs are placed by characters, not bytes; a range past the name's end is cut at it.
TEST_F(SlotTest, MatchedRunsOfAWideNameLineUpAndStayWithinIt) {
    effect.name = "Gaußscher Weichzeichner"; // "ß" takes two bytes
    slot.SetEffect(&effect, false, &labels);
    slot.SetHighlights(std::vector<ByteRange>{{0, 3}, {11, 40}});
    lines runs;
    for (const draw_call& c : painted(host))
        if (c.op == "draw_text" && c.value == 14)
            runs.push_back(std::to_string(c.rect.x) + " " + c.text);
    const int w = offscreen_drawer::char_width(14);
    EXPECT_EQ(runs, (lines{std::to_string(EffectSlot::TextLeft) + " Gau",
                           std::to_string(EffectSlot::TextLeft + 3 * w) + " ßscher ",
                           std::to_string(EffectSlot::TextLeft + 10 * w) + " Weichzeichner"}));
}

struct MessageTest : OffscreenTest {
    // The title bar shows the title; the inside paints as approved: the size, the message as one
    // text and the buttons' places and labels.
    static void ExpectPicture(window& popup, const std::string& title, const std::string& name) {
        EXPECT_EQ(offscreen::native_of(popup).get_title(), title);
        snapshot::picture p;
        p.calls(painted(popup));
        EXPECT_TRUE(p.matches(name));
    }
    // What the popup's modal loop ends with when each of its turns does `turn` (0 when none ends it).
    template <typename Popup> static int Ends(Popup& popup, std::function<void(window&)> turn) {
        offscreen::offscreen_window::set_modal_driver(std::move(turn));
        return popup.Run();
    }
    static void Escape(window& w) { send(w, event_type::key_down, 27); }
    UIColors colours = BuildColorThemes()[0];
};

TEST_F(MessageTest, QuestionAndNoticeShowTheirTextsAndEndWithOneForConfirmAndZeroOtherwise) {
    window parent;
    parent.create("parent", {0, 0, 400, 300});
    EffectsMessagePopup ask(&parent, {40, 50}, &colours,
                            {.title = "Delete?",
                             .message = "Are you sure you want to delete these 3 images?",
                             .confirm = "Delete"});
    EXPECT_EQ(ask.get_rect().position(), (ivec2{40, 50}));
    ExpectPicture(ask, "Delete?", "question");
    EXPECT_EQ(std::tuple(Ends(ask, [&](window&) { ask.GetConfirmButton().press(); }),
                         Ends(ask, [&](window&) { ask.GetCancelButton().press(); }), Ends(ask, Escape)),
              std::tuple(1, 0, 0));

    // The notice: one for its button, zero for Escape.
    EffectsWarningPopup warn(
        nullptr, {0, 0}, &colours,
        {.title = "Failed to Load", .message = "Unable to import settings from the file."});
    ExpectPicture(warn, "Failed to Load", "notice");
    EXPECT_EQ(std::pair(Ends(warn, [&](window&) { warn.GetButton().press(); }), Ends(warn, Escape)),
              std::pair(1, 0));
}

// Opening in each mode; then the popup as it paints, checked against approved pictures (see
// tests/support/draw_snapshot.h): layout, colours and texts in the states an artist sees.
TEST_F(PopupTest, OpeningLayoutsInEachModeAndPictures) {
    snapshot::picture p;
    const struct {
        const char *comp, *layer;
        bool search, capture;
        const char* picture;
    } cases[] = {{"Comp 1", "Layer 1", true, true, nullptr},
                 {"", "", false, false, "no composition"},
                 {"Comp 1", "", false, true, "composition, no layer"}}; // capture works, search does not
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.comp) + "/" + c.layer);
        Open(c.comp, c.layer);
        // The modes, the search field, the shortcuts bar (no slots), then the tool buttons enabled:
        // screenshot, gallery, export, ...
        std::vector<int> shown{popup->IsSearchMode(), popup->IsScreenshotMode(),
                               popup->GetSearchField().is_visible(false),
                               popup->GetShortcutsBar().is_visible(false)};
        for (int b = 0; b < 5; ++b)
            shown.push_back(popup->GetToolButton(static_cast<W::ToolButton>(b)).is_enabled());
        EXPECT_EQ(shown, (std::vector<int>{c.search, c.capture, c.search, 0, c.capture, 1, c.capture, 1, 1}));
        if (c.picture != nullptr) {
            p.section(c.picture);
            p.place("window", popup->get_rect());
            p.calls(painted(*popup));
        }
        popup->hide();
    }

    p.section("search mode with two shortcuts");
    SetSlot(1, "Glow", "Glo");
    SetSlot(4, "Curves", "Cur");
    Open();
    p.place("window", popup->get_rect());
    p.calls(painted(*popup));

    p.section("rows for \"blur\", the second hovered");
    Search("blur");
    p.place("window", popup->get_rect());
    const ivec2 at = popup->GetRows()[1]->calc_absolute_pos();
    offscreen::move_mouse(*popup, {at.x, at.y + popup->GetRows()[1]->get_rect().h / 2}); // its left edge
    p.calls(painted(*popup));
    p.lines.push_back("selected " + SelectedName());

    p.section("no matches");
    Search("zzz");
    p.calls(painted(*popup));
    EXPECT_TRUE(p.matches("popup"));
}

} // namespace
