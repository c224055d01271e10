#include "preferences/preferences_window.h"

#include "host/effect_data.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "popup/effect_alias.h"
#include "popup/effects_popup_window.h"
#include "popup/parts/effects_message_popup.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"
#include "popup/ui_colors.h"
#include "popup/usage_record.h"
#include "preferences/preferences_alias_popup.h"
#include "preferences/preferences_edit_effect_popup.h"
#include "preferences/preferences_effects_scroll_panel.h"
#include "preferences/preferences_shortcut_popup.h"
#include "tests/search/fixture_catalogue.h"
#include "tests/support/data_folders.h"
#include "tests/support/widget_fixture.h"

#include <algorithm>
#include <functional>
#include <set>

using Items = std::vector<std::pair<uint32_t, std::string>>;
using K = PreferencesListKind;
using W = PreferencesWindow;

namespace {

// The window over the popup's record and lists, in a private data folder. Modal windows (pickers,
// editors, questions, notices) are answered in turn by `answers`, or closed.
struct PreferencesWindowTest : OffscreenTest, private_data_folders {
    PreferencesData prefs;
    // clang-format off
    std::vector<EffectData> catalogue{{1, "Glow", "glow", "Stylize", false}, {2, "Gaussian Blur", "gaussian blur", "Blur", false},
                                      {3, "Tint", "tint", "Color", false}, {-1, "Blur In", "blur in", "Preset", true}};
    // clang-format on
    std::unique_ptr<EffectsPopupWindow> popup;
    std::unique_ptr<PreferencesWindow> window;
    offscreen_file_browser& dialogs = offscreen_file_browser::instance();
    std::vector<std::function<void(nimbit::ui::window&)>> answers;
    lines modalTitles;

    void SetUp() override {
        OffscreenTest::SetUp();
        prefs.captureFolder = (root / "shots").to_string();
        popup = std::make_unique<EffectsPopupWindow>(prefs);
        popup->SetEffectData(catalogue);
        const std::vector<EffectData>& c = popup->GetCatalogue();
        popup->GetShortcuts() = {{"Glo", &c[0], nullptr}}; // the window shows all nine slots
        popup->GetAliases() = {{"glow", &c[0], nullptr}, {"gb", &c[1], &c[3]}};
        popup->GetBlacklist() = {{"tint", &c[2], nullptr}};
        offscreen::offscreen_window::set_modal_driver([this](nimbit::ui::window& w) {
            modalTitles.push_back(offscreen::native_of(w).get_title());
            if (answers.empty())
                return w.end_modal(0);
            auto answer = std::move(answers.front());
            answers.erase(answers.begin());
            answer(w);
        });
        Open();
    }
    void TearDown() override {
        window.reset(), popup.reset();
        OffscreenTest::TearDown();
    }
    void Open() {
        window = std::make_unique<W>(*popup, popup->GetThemes(), prefs, popup->GetBlacklist(),
                                     popup->GetAliases(), popup->GetShortcuts(), popup->GetCatalogue());
    }
    // A right click on the row as its panel reports it, the menu answered with id (or dismissed);
    // returns the items shown.
    Items Menu(K kind, size_t index, std::optional<uint32_t> id) {
        offscreen::push_menu_answer(id);
        PreferencesEffectsScrollPanel& panel = window->GetPanel(kind);
        panel.onSlotEvent(panel.GetSlots().at(index).get(), event_type::mouse_up, pack_pair(40, 200));
        Items items;
        for (const menu_item& item : offscreen::shown_menus().back().items)
            items.emplace_back(item.id, item.text);
        return items;
    }
    // What the controls show: theme, shortcut, save location, check boxes; and the theme in use.
    std::string Controls() const {
        W& w = *window;
        return w.GetThemeDropDown().get_selected_text() + "|" + w.GetShortcutDropDown().get_selected_text() +
               "|" + w.GetSaveLocationButton().get_text() +
               (w.GetFullResolutionBox().is_selected() ? "|on" : "|off") +
               (w.GetRecentFirstBox().is_selected() ? "|recent" : "") +
               (w.GetColors() == &popup->GetThemes()[0] ? "|dark" : "|light");
    }
    void Answer(std::function<void(nimbit::ui::window&)> answer) { answers.push_back(std::move(answer)); }
    // The next picker chooses the first entry its search finds for text.
    void Pick(std::string text) {
        Answer([text](nimbit::ui::window& w) {
            dynamic_cast<PreferencesEditEffectPopup&>(w).GetSearchField().set_text(text, true);
            send(w, event_type::key_down, event_key::return_key);
        });
    }
    // The next alias popup, which must start with `was`, is confirmed with text.
    void Type(std::string text, std::string was = {}) {
        Answer([text, was](nimbit::ui::window& w) {
            auto& editor = dynamic_cast<PreferencesAliasPopup&>(w);
            EXPECT_EQ(editor.GetField().get_text(), was);
            editor.GetField().set_text(text, true);
            editor.GetConfirmButton().press();
        });
    }
    // A list as "alias/effect/override" entries.
    static std::string Lines(const std::vector<EffectAlias>& list) {
        std::string text;
        for (const EffectAlias& e : list)
            text += (text.empty() ? "" : ", ") + e.alias + "/" + (e.effect ? e.effect->name : "") + "/" +
                    (e.override ? e.override->name : "");
        return text;
    }
};

TEST_F(PreferencesWindowTest, RowMenusOfferWhatEachEntryAllowsAndEditTheListsThroughThePickers) {
    // clang-format off
    const struct { const char* what; K kind; size_t row; Items items; } cases[] = {
        {"filled slot",         K::Shortcuts, 0, {{1, "Glow"}, {2, ""}, {3, "Edit Label"}, {4, "Clear"}}},
        {"empty slot",          K::Shortcuts, 4, {{1, "Empty Slot"}, {2, ""}, {3, "New Shortcut"}, {4, "Clear"}}},
        {"plain favorite",      K::Favorites, 0, {{1, "Glow"}, {2, ""}, {3, "Remove Favorite"}, {5, "Add Alias"}}},
        {"alias and override",  K::Favorites, 1, {{1, "Gaussian Blur"}, {2, ""}, {3, "Remove Favorite"},
                                                  {6, "Edit Alias"}, {4, "Clear Alias"}, {7, "Clear Override"}}},
        {"blacklisted",         K::Blacklist, 0, {{1, "Tint"}, {2, ""}, {3, "Remove"}}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(Menu(c.kind, c.row, std::nullopt), c.items);
    }

    // Menu items and New rows go through the pickers and the alias popup into the right list entry.
    // The titles below are every modal shown: the dismissed menus above opened none.
    Pick("tint");
    Menu(K::Shortcuts, 0, W::EntryItem); // the slot keeps its label
    Pick("glow");
    Menu(K::Shortcuts, 4, W::EditLabelItem); // "New Shortcut"
    Pick("blur in");
    Menu(K::Favorites, 0, W::EntryItem);
    for (K kind : {K::Shortcuts, K::Favorites, K::Blacklist}) {
        Pick("tint");
        PreferencesEffectsScrollPanel& panel = window->GetPanel(kind);
        panel.onNewEvent(&panel.GetNewRow(), event_type::pressed, 0);
    }
    Type("  Gx ", "Tin");
    Menu(K::Shortcuts, 1, W::EditLabelItem);
    Type("Shine");
    Menu(K::Favorites, 2, W::AddAliasItem);
    Answer([](nimbit::ui::window& w) { dynamic_cast<PreferencesAliasPopup&>(w).GetCancelButton().press(); });
    Menu(K::Favorites, 1, W::EditAliasItem);
    EXPECT_EQ(modalTitles,
              (lines{"Set Shortcut", "Set Shortcut", "Set Override", "Add New Effect", "Add New Effect",
                     "Add New Effect", "Edit Label", "Add Alias", "Edit Alias"}));
    EXPECT_EQ(Lines(popup->GetShortcuts()), "Glo/Tint/, Gx/Tint/, //, //, Glo/Glow/, //, //, //, //");
    EXPECT_EQ(Lines(popup->GetAliases()), "glow/Glow/Blur In, gb/Gaussian Blur/Blur In, shine/Tint/");
    EXPECT_EQ(Lines(popup->GetBlacklist()), "tint/Tint/"); // there already

    Menu(K::Favorites, 1, W::ClearAliasItem); // back to the search name
    Menu(K::Favorites, 1, W::ClearOverrideItem);
    Menu(K::Favorites, 0, W::RemoveFavoriteItem);
    EXPECT_EQ(Lines(popup->GetAliases()), "gaussian blur/Gaussian Blur/, shine/Tint/");
    EXPECT_EQ(window->GetPanel(K::Favorites).GetSlots().size(), 2u);
}

// "Custom" runs the key editor (a cancel goes back to the previous choice); the save location comes
// from a folder dialog; "Reset Settings" asks, then starts the record afresh but for the news time.
// The controls follow the record throughout.
TEST_F(PreferencesWindowTest, CustomShortcutSaveLocationAndResetKeepRecordAndControlsInStep) {
    prefs.theme = UIColorTheme::Light, prefs.fullResolutionScreenshots = true, prefs.newsTime = 1234;
    Open();
    window->GetRecentFirstBox().toggle();
    const file_path usage = popup->GetSettingsFolder().append(UsageFileName);
    ASSERT_TRUE(write_text(usage, "3 1700000000 e Glow\n"));
    EffectsDropDown& drop = window->GetShortcutDropDown();
    drop.select_item(2);
    Answer([this](nimbit::ui::window& w) { // over the window's middle, a third of the way down
        const nimbit::ivec4 mine = window->get_rect(), editor = w.get_rect();
        EXPECT_EQ(std::pair(editor.x * 2 + editor.w, editor.y - mine.y),
                  std::pair(mine.x * 2 + mine.w, (mine.h - editor.h) / 3));
        dynamic_cast<PreferencesShortcutPopup&>(w).GetCancelButton().press();
    });
    drop.select_item(4);
    EXPECT_TRUE(prefs.shortcutChoice == 2 && drop.get_selected_id() == 2 && prefs.customKeyName.empty());
    Answer([](nimbit::ui::window& w) {
        auto& editor = dynamic_cast<PreferencesShortcutPopup&>(w);
        editor.GetCtrl().set_selected(true);
        editor.GetKeys().select_item(0);
        editor.GetConfirmButton().press();
    });
    drop.select_item(4);
    // The save location: chosen in a folder dialog, shown with the path as its tooltip.
    const std::string start = prefs.captureFolder, chosen = (root / "elsewhere").to_string();
    for (const std::string& answer : {std::string(), chosen}) {
        dialogs.answer({file_path(answer)});
        window->GetSaveLocationButton().press();
        const dialog_request& asked = dialogs.requests().back();
        EXPECT_TRUE(asked.what == dialog_request::kind::folder && asked.title == "Select Folder" &&
                    asked.start_folder.to_string() == start);
        const std::string now = answer.empty() ? start : chosen; // a cancel changes nothing
        EXPECT_TRUE(prefs.captureFolder == now && window->GetSaveLocationTooltip() == now &&
                    window->GetSaveLocationButton().get_text() == now);
    }
    const std::vector<unsigned char> before = EncodePreferences(prefs);
    for (bool confirm : {false, true})
        Answer([confirm](nimbit::ui::window& w) {
            auto& question = dynamic_cast<EffectsMessagePopup&>(w);
            (confirm ? question.GetConfirmButton() : question.GetCancelButton()).press();
        });
    window->GetResetButton().press();
    const std::string shown =
        "Light|Custom: " + prefs.GenerateShortcutText() + "|" + chosen + "|on|recent|light";
    EXPECT_TRUE(EncodePreferences(prefs) == before && Controls() == shown &&
                std::filesystem::exists(usage.to_string()));
    window->GetResetButton().press();
    EXPECT_EQ(modalTitles.back(), "Reset Settings");
    PreferencesData fresh;
    fresh.newsTime = 1234;
    EXPECT_TRUE(EncodePreferences(prefs) == EncodePreferences(fresh));
    EXPECT_EQ(Controls(), "Dark|Ctrl + Space|" + fresh.captureFolder + "|off|dark");
    EXPECT_FALSE(std::filesystem::exists(usage.to_string())) << "the usage record goes with the settings";
}

TEST_F(PreferencesWindowTest, ImportReplacesTheRecordAndTheListsAndTheControlsFollow) {
    prefs.theme = UIColorTheme::Light, prefs.fullResolutionScreenshots = true, prefs.shortcutChoice = 3;
    Open();
    const std::string shown = Controls();
    const std::vector<unsigned char> record = EncodePreferences(prefs);
    const std::string lists = Lines(popup->GetAliases()) + Lines(popup->GetBlacklist());
    dialogs.answer({root / "mine.kvs"});
    Answer([this](nimbit::ui::window& w) { // the notice's inside stands over the window's middle
        const nimbit::ivec4 mine = window->get_rect(), notice = w.get_rect();
        EXPECT_LE(std::abs(notice.x * 2 + MessagePopupSize.x - mine.x * 2 - mine.w), 1);
        EXPECT_LE(std::abs(notice.y * 2 + MessagePopupSize.y - mine.y * 2 - mine.h), 1);
        w.end_modal(1);
    });
    window->GetExportButton().press();
    window->GetThemeDropDown().select_item(0); // another state, then the file back
    window->GetShortcutDropDown().select_item(0);
    window->GetFullResolutionBox().toggle();
    popup->GetAliases().clear(), popup->GetBlacklist().clear();
    window->GetPanel(K::Favorites).Refresh();
    dialogs.answer({root / "mine.kvs"});
    window->GetImportButton().press();
    EXPECT_EQ(modalTitles, (lines{"Export Successful", "Import Successful"}));
    EXPECT_TRUE(EncodePreferences(prefs) == record && Controls() == shown);
    EXPECT_EQ(Lines(popup->GetAliases()) + Lines(popup->GetBlacklist()), lists);
}

// The popup runs the window over its own record and lists; Escape closes it; the theme chosen (at
// once in the window) and the lists are then put in effect in the popup, and saved.
TEST_F(PreferencesWindowTest, PopupRunsTheWindowThenAppliesWhatChangedAndSaves) {
    window.reset();
    popup->Show(std::string_view("P"), {}, std::string_view("L"), PopupCommand{PopupCommand::Show});
    ASSERT_TRUE(popup->GetShortcutsBar().is_visible(false));
    Answer([&](nimbit::ui::window& w) {
        auto& shown = dynamic_cast<W&>(w);
        shown.GetThemeDropDown().select_item(1);
        EXPECT_TRUE(prefs.theme == UIColorTheme::Light && shown.GetColors() == &popup->GetThemes()[1]);
        offscreen::push_menu_answer(W::ClearSlotItem);
        shown.ShowShortcutsActions(shown.GetPanel(K::Shortcuts).GetSlots()[0].get(), event_type::mouse_up, 0);
        send(w, event_type::key_down, event_key::escape);
    });
    popup->Show(std::string_view("P"), {}, std::string_view("L"), PopupCommand{PopupCommand::Preferences});
    EXPECT_EQ(modalTitles, lines{"Preferences"}); // Escape ended the loop
    EXPECT_EQ(popup->GetColors(), &popup->GetThemes()[1]);
    EXPECT_FALSE(popup->GetShortcutsBar().is_visible(false)); // its only shortcut was cleared
    PreferencesData saved;
    ASSERT_TRUE(LoadPreferences(saved, UserSettingsFolder()));
    EXPECT_EQ(saved.theme, UIColorTheme::Light);
}

// The preferences window's list panels and its modal editors on the offscreen backend: what the rows
// show, what the pointer does to them, and the editors driven through their own event handlers.

constexpr int Top = 10, Row = PreferencesEffectSlot::Height;
constexpr int FirstRow = Top + PreferencesEffectsScrollPanel::HeaderHeight;

struct ListsTest : OffscreenTest {
    void SetUp() override {
        OffscreenTest::SetUp();
        host.create("lists", {0, 0, 400, 400});
        host.show();
    }
    // A panel over `entries`, recording what its rows raise as "row:type:x,y" (New: "new:...").
    PreferencesEffectsScrollPanel& Open(K kind, std::vector<EffectAlias> entries, int height = 300) {
        list = std::move(entries);
        panel = std::make_unique<PreferencesEffectsScrollPanel>(kind, list);
        panel->onSlotEvent = [this](PreferencesEffectSlot* s, event_type t, uint64_t at) {
            Record(std::to_string(s->GetIndex()), t, at);
        };
        panel->onNewEvent = [this](PreferencesEffectNew*, event_type t, uint64_t at) {
            Record("new", t, at);
        };
        panel->create(host.get_root(), {10, Top, 300, height});
        panel->show(true);
        return *panel;
    }
    void Record(const std::string& what, event_type t, uint64_t at) {
        events.push_back(what + ":" + std::to_string(static_cast<int>(t)) + ":" +
                         std::to_string(pair_low(at)) + "," + std::to_string(pair_high(at)));
    }
    std::string Painted() {
        std::string texts;
        for (const draw_call& c : painted(host))
            if (c.op == "draw_text")
                texts += (texts.empty() ? "" : "|") + c.text;
        return texts;
    }
    std::string Order() const {
        std::string names;
        for (const EffectAlias& e : list)
            names += e.effect != nullptr ? e.effect->name : "-";
        return names;
    }

    window host;
    EffectData a = MakeEffect(0, "A"), b = MakeEffect(0, "B"), c = MakeEffect(0, "C"), d = MakeEffect(0, "D");
    EffectData blur = MakeEffect(0, "Gaussian Blur"), glow = MakeEffect(0, "Glow");
    std::vector<EffectAlias> list;
    std::unique_ptr<PreferencesEffectsScrollPanel> panel;
    lines events;
};

TEST_F(ListsTest, RowsShowTheColumnsOfTheirListUnderItsTitles) {
    const std::string emptySlots =
        "|3|Empty Slot|4|Empty Slot|5|Empty Slot|6|Empty Slot|7|Empty Slot|8|Empty Slot|9|Empty Slot";
    // Too short a shortcuts list still shows the nine slots; an alias shows only when it is not the
    // search name.
    // clang-format off
    const struct { K kind; std::vector<EffectAlias> entries; std::string texts; } cases[] = {
        {K::Shortcuts, {{"Gau", &blur}, {}}, "Name|Label|1|Gaussian Blur|Gau|2|Empty Slot" + emptySlots + "|New +"},
        {K::Favorites, {{"gaussian blur", &blur}, {"gl", &glow, &blur}},
                       "Name|Override|Alias|Gaussian Blur|Glow|Gaussian Blur|gl|New Override +"},
        {K::Blacklist, {{"glow", &glow}}, "Name|Glow|New Alias +"},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.kind));
        Open(c.kind, c.entries);
        EXPECT_EQ(Painted(), c.texts);
        std::vector<ivec4> titles; // each title ends before the next column starts
        for (const draw_call& t : painted(host))
            if (t.op == "draw_text" && t.origin == ivec2{10, Top})
                titles.push_back(t.rect);
        for (size_t i = 1; i < titles.size(); ++i)
            EXPECT_LT(titles[i - 1].x + titles[i - 1].w, titles[i].x);
    }
    EXPECT_EQ(list.size(), 1u); // only the shortcuts list was padded, to nine
}

TEST_F(ListsTest, DraggingARowMovesItsEntryToTheGapUnderThePointer) {
    enum Finish { Release, Escape, Outside };
    // clang-format off
    const struct { size_t from, gap; Finish finish; std::string order; } cases[] = {
        {1, 0, Release, "BACD"}, {1, 1, Release, "ABCD"}, {1, 2, Release, "ABCD"}, {1, 3, Release, "ACBD"},
        {1, 4, Release, "ACDB"}, {0, 4, Release, "BCDA"}, {3, 0, Release, "DABC"}, {3, 4, Release, "ABCD"},
        {0, 3, Escape, "ABCD"},  {0, 3, Outside, "ABCD"},
    };
    // clang-format on
    for (const auto& k : cases) {
        SCOPED_TRACE(std::to_string(k.from) + " to " + std::to_string(k.gap));
        Open(K::Favorites, {{"a", &a}, {"b", &b}, {"c", &c}, {"d", &d}});
        const int x = 50, y = FirstRow + static_cast<int>(k.gap) * Row - 8; // nearer that gap than others
        offscreen::press_mouse(host, {x, FirstRow + static_cast<int>(k.from) * Row + Row / 2});
        offscreen::move_mouse(host, {x, y});
        ASSERT_TRUE(panel->IsDragging());
        EXPECT_EQ(panel->GetDropGap(), k.gap);
        int imageTop = -1; // the row's image keeps the pointer where the row was pressed
        for (const draw_call& c : painted(host))
            if (c.op == "draw_rect_border" && c.origin.x == 10)
                imageTop = c.origin.y;
        EXPECT_EQ(imageTop, y - Row / 2);
        if (k.finish == Escape)
            send(host, event_type::key_down, 27);
        offscreen::release_mouse(host, k.finish == Outside ? ivec2{x, 380} : ivec2{x, y});
        EXPECT_EQ(Order(), k.order);
        EXPECT_FALSE(panel->IsDragging());
    }
    EXPECT_TRUE(events.empty()); // no drag counted as a click

    // A shortcut slot moves among the nine.
    Open(K::Shortcuts, {{"A", &a}, {"B", &b}});
    offscreen::press_mouse(host, {50, FirstRow + 5});
    offscreen::move_mouse(host, {50, FirstRow + 9 * Row});
    offscreen::release_mouse(host, {50, FirstRow + 9 * Row});
    EXPECT_EQ(Order(), "B-------A");
}

TEST_F(ListsTest, ClicksReachTheWindowWithTheirClientPoint) {
    Open(K::Blacklist, {{"a", &a}, {"b", &b}});
    // The window edits the list in its handler: the clicked row goes while it is still handling input.
    panel->onSlotEvent = [this](PreferencesEffectSlot* s, event_type t, uint64_t at) {
        Record(std::to_string(s->GetIndex()), t, at);
        list.erase(list.begin());
        panel->Refresh();
    };
    offscreen::press_mouse(host, {40, FirstRow + 3});
    offscreen::move_mouse(host, {43, FirstRow + 6}); // within the threshold: still a click
    offscreen::release_mouse(host, {43, FirstRow + 6});
    offscreen::click(host, {60, FirstRow + 5}, 2);
    offscreen::click(host, {70, FirstRow + 5}); // the New row, now first
    EXPECT_EQ(events, (lines{"0:38:43,40", "0:1:60,39", "new:38:70,39"}));
    EXPECT_EQ(Painted(), "Name|New Alias +"); // both rows gone from the list
}

TEST_F(ListsTest, RefreshKeepsTheScrollPositionTheListStillReaches) {
    std::vector<EffectAlias> many(12, EffectAlias{"a", &a});
    EffectsScrollBar& bar = Open(K::Favorites, many, 24 + 5 * Row).GetScrollBar();
    EXPECT_EQ(bar.get_max_scroll(), 8 * Row); // 12 rows and New in a view of 5
    offscreen::wheel(host, {50, FirstRow + 5}, -3);
    const int scrolled = bar.get_value();
    EXPECT_GT(scrolled, 0);
    list.push_back({"b", &b});
    panel->Refresh();
    EXPECT_EQ(std::pair(panel->GetSlots().size(), bar.get_value()), std::pair(size_t{13}, scrolled));
    list.resize(2);
    panel->Refresh();
    EXPECT_TRUE(bar.get_value() == 0 && !bar.is_visible(false));
}

struct EditorsTest : OffscreenTest {
    using Step = std::function<void(window&)>;
    // Runs one step per turn of the modal loop; past the last one the loop ends with -1.
    static void Script(std::vector<Step> steps) {
        offscreen::offscreen_window::set_modal_driver([steps, turn = size_t{0}](window& w) mutable {
            turn < steps.size() ? steps[turn++](w) : w.end_modal(-1);
        });
    }
    // Keys with a character, as the platform sends them ("\r" Return, "\x1b" Escape).
    static Step Typing(std::string text) {
        return [text](window& w) {
            for (char c : text)
                offscreen::type_key(w, 0, static_cast<char16_t>(c));
        };
    }
    // Keys without one (arrows), which only go down.
    static Step Pressing(uint64_t key) {
        return [key](window& w) {
            send(w, event_type::key_down, key);
        };
    }

    UIColors colours = BuildColorThemes()[0];
};

struct PickerTest : EditorsTest {
    PickerTest() {
        for (int i = 0; i < 3000; ++i)
            catalogue.push_back({10 + i, "Filler " + std::to_string(i), "filler " + std::to_string(i), {}});
    }
    std::vector<EffectData> catalogue{{1, "Gaussian Blur", "gaussian blur", "Blur"},
                                      {-1, "Blur Sweep", "blur sweep", "Preset", true},
                                      {2, "Fast Box Blur", "fast box blur", "Blur"},
                                      {3, "Glow", "glow", "Stylize"}};
};

TEST_F(PickerTest, TypingNarrowsTheListAndReturnChoosesTheSelectedRow) {
    PreferencesEditEffectPopup picker(nullptr, {40, 40}, &colours, "Set Override", catalogue);
    lines names;
    size_t movedTo = 0;
    auto afterKeystroke = [&](window&) {
        movedTo = picker.GetSelection();
        for (const SearchEntry& e : picker.GetResults().entries)
            names.push_back(e.effect->name);
    };
    Script({Typing("bl"), Pressing(event_key::down), Typing("u"), afterKeystroke, Pressing(event_key::down),
            Typing("\r")});
    ASSERT_TRUE(picker.Run());
    EXPECT_EQ(movedTo, 0u); // a keystroke selects the first row again
    // Effects before presets, as the popup lists them.
    EXPECT_EQ(names, (lines{"Gaussian Blur", "Fast Box Blur", "Blur Sweep"}));
    EXPECT_EQ(picker.GetResult().effect, &catalogue[2]);

    Script({Typing("glow"), Typing("\x1b")});
    EXPECT_FALSE(picker.Run());
    EXPECT_EQ(picker.GetResult().effect, nullptr) << "Escape chooses nothing";
}

TEST_F(PickerTest, OnlyTheRowsInViewPaintAndTheViewFollowsTheSelectionAndTheWheel) {
    PreferencesEditEffectPopup picker(nullptr, {0, 0}, &colours, "Add New Effect", catalogue);
    picker.show();
    const size_t last = picker.RowsInView().second;
    EXPECT_LT(last, 20u);
    EXPECT_EQ(std::ranges::count_if(painted(picker),
                                    [](const draw_call& c) { return c.text.starts_with("Filler"); }),
              static_cast<ptrdiff_t>(last - 3)); // three named effects lead the list

    // Up from the first row wraps to the last (every entry is listed) and Down back to the first,
    // each scrolled into view.
    Pressing(event_key::up)(picker);
    EXPECT_EQ(std::pair(picker.GetSelection(), picker.RowsInView().second),
              std::pair(catalogue.size() - 1, catalogue.size()));
    Pressing(event_key::down)(picker);
    EXPECT_EQ(picker.RowsInView().first, 0u);

    // A click chooses the row under the pointer, wherever the list is scrolled to.
    picker.GetSearchField().set_text("filler 1", true);
    const ivec4 field = picker.GetSearchField().get_rect();
    const ivec2 inList{field.x + 20, field.y + field.h + 15};
    offscreen::wheel(picker, inList, -3);
    const size_t top = picker.RowsInView().first;
    ASSERT_GT(top, 0u);
    const ivec2 nextRow = inList + ivec2{0, PreferencesEditEffectPopup::RowHeight};
    std::string shown; // and that row is the one painted under the pointer
    for (const draw_call& c : painted(picker))
        if (c.op == "draw_text" && c.rect.contains(nextRow - c.origin))
            shown = c.text;
    EXPECT_EQ(shown, picker.GetResults().entries[top + 1].effect->name);
    Script({[&](window& w) { offscreen::click(w, nextRow); }, Typing("\x1b")});
    ASSERT_TRUE(picker.Run());
    EXPECT_EQ(picker.GetResult().effect, picker.GetResults().entries[top + 1].effect);
}

TEST_F(EditorsTest, AliasPopupReturnsTheTrimmedTextAndTheShortcutPopupAppliesTheChoiceFromTheRecord) {
    PreferencesAliasPopup popup(nullptr, {0, 0}, &colours, "Edit Label", "old");
    Script({Typing("  Soft Glow "), Typing("\r")});
    ASSERT_TRUE(popup.Run());
    EXPECT_EQ(popup.GetAlias(), "Soft Glow"); // the text was selected: typing replaced it

    Script({Typing("x"), Typing("\x1b")});
    EXPECT_FALSE(popup.Run());

    // The shortcut popup starts from the record and applies the choice.
    PreferencesData prefs;
    prefs.customCtrl = prefs.customShift = prefs.customCmd = 1;
    prefs.customKeyCode = 40; // K
    PreferencesShortcutPopup keys(nullptr, {0, 0}, &colours, prefs);
    EXPECT_TRUE(keys.GetCtrl().is_selected() && !keys.GetOpt().is_selected() &&
                keys.GetShift().is_selected() && keys.GetKeys().get_selected_text() == "K");

    Script({[&](window&) {
        keys.GetCtrl().toggle();
        keys.GetOpt().toggle();
        keys.GetKeys().select_item(keys.GetKeys().find_item(122)); // F1
        keys.GetConfirmButton().press();
    }});
    ASSERT_TRUE(keys.Run());
    keys.Apply(prefs);
    EXPECT_EQ(std::tuple(prefs.customCtrl, prefs.customOpt, prefs.customShift, prefs.customCmd,
                         prefs.customKeyCode, prefs.customKeyName),
              std::tuple(0, 1, 1, 0, 122, std::string("F1")));

    // Every key offered has a code and a name of its own, also where the backend names none (the
    // offscreen one has no Home or Page Up).
    std::set<int> codes;
    std::set<std::string> names{""};
    for (const ShortcutKeyChoice& k : ShortcutKeyChoices())
        EXPECT_TRUE(codes.insert(k.code).second && names.insert(k.name).second) << k.code << " " << k.name;

    // Without a key OK does not confirm.
    PreferencesShortcutPopup unset(nullptr, {0, 0}, &colours, PreferencesData{});
    Script({[&](window&) { unset.GetConfirmButton().press(); }, Pressing(event_key::escape)});
    EXPECT_FALSE(unset.Run());
}

} // namespace
