#include "preferences/preferences_window.h"

#include "host/effect_data.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "popup/effects_popup_window.h"
#include "popup/parts/effects_message_popup.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"
#include "preferences/preferences_alias_popup.h"
#include "preferences/preferences_shortcut_popup.h"
#include "tests/foundation/temp_folder.h"
#include "tests/support/offscreen_test.h"

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

using namespace nimbit;
using namespace nimbit::ui;
using nimbit::ui::offscreen_file_browser;
using Items = std::vector<std::pair<uint32_t, std::string>>;

namespace {

constexpr const char* Vars[] = {"QUILLO_USER_DATA_DIR", "QUILLO_COMMON_DATA_DIR", "QUILLO_DOCS_DIR"};
using K = PreferencesListKind;
using W = PreferencesWindow;

struct PreferencesWindowTest : OffscreenTest {
    temp_folder root;
    PreferencesData prefs;
    // clang-format off
    std::vector<EffectData> catalogue{{1, "Glow", "glow", "Stylize", false}, {2, "Gaussian Blur", "gaussian blur", "Blur", false},
                                      {3, "Tint", "tint", "Color", false}, {-1, "Blur In", "blur in", "Preset", true}};
    // clang-format on
    std::unique_ptr<EffectsPopupWindow> popup;
    std::unique_ptr<PreferencesWindow> window;
    offscreen_file_browser& dialogs = offscreen_file_browser::instance();
    // What the next modal windows do when they run, in order; a window with nothing to do is closed.
    std::vector<std::function<void(nimbit::ui::window&)>> answers;
    std::vector<std::string> modalTitles;

    void SetUp() override {
        OffscreenTest::SetUp();
        for (const char* name : Vars)
            ::setenv(name, (root / name).c_str(), 1);
        prefs.captureFolder = (root / "shots").to_string();
        popup = std::make_unique<EffectsPopupWindow>(prefs);
        popup->SetEffectData(catalogue);
        const std::vector<EffectData>& c = popup->GetCatalogue();
        popup->GetShortcuts() = {{"Glo", &c[0], nullptr}}; // the window shows all nine slots
        popup->GetAliases() = {{"glow", &c[0], nullptr}, {"gb", &c[1], &c[3]}};
        popup->GetBlacklist() = {{"tint", &c[2], nullptr}};
        offscreen::offscreen_window::set_modal_driver([this](nimbit::ui::window& w) {
            modalTitles.push_back(offscreen::native_of(w).get_title());
            auto answer = answers.empty() ? [](nimbit::ui::window& w) { w.end_modal(0); } : answers.front();
            answers.erase(answers.begin(), answers.begin() + !answers.empty());
            answer(w);
        });
        Open();
    }
    void TearDown() override {
        offscreen::offscreen_window::set_modal_driver({});
        window.reset(), popup.reset();
        for (const char* name : Vars)
            ::unsetenv(name);
        OffscreenTest::TearDown();
    }
    void Open() {
        window = std::make_unique<PreferencesWindow>(*popup, popup->GetThemes(), prefs, popup->GetBlacklist(),
                                                     popup->GetAliases(), popup->GetShortcuts(),
                                                     popup->GetCatalogue());
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
    // What the controls show: theme, shortcut, save location, check box; and the theme in use.
    std::string Controls() const {
        W& w = *window;
        return w.GetThemeDropDown().get_selected_text() + "|" + w.GetShortcutDropDown().get_selected_text() +
               "|" + w.GetSaveLocationButton().get_text() +
               (w.GetFullResolutionBox().is_selected() ? "|on" : "|off") +
               (w.GetColors() == &popup->GetThemes()[0] ? "|dark" : "|light");
    }
    void Command(uint32_t kind) {
        popup->Show(std::string_view("P"), {}, std::string_view("L"), PopupCommand{kind});
    }
    void Answer(std::function<void(nimbit::ui::window&)> answer) { answers.push_back(std::move(answer)); }
    // The next picker chooses the first entry its search finds for text.
    void Pick(std::string text) {
        Answer([text](nimbit::ui::window& w) {
            dynamic_cast<PreferencesEditEffectPopup&>(w).GetSearchField().set_text(text, true);
            offscreen::events_of(w).process_event(event_type::key_down, event_key::return_key);
        });
    }
    // Confirms the custom shortcut editor with Ctrl and its first key.
    static void ChooseKey(nimbit::ui::window& w) {
        auto& editor = dynamic_cast<PreferencesShortcutPopup&>(w);
        editor.GetCtrl().set_selected(true);
        editor.GetKeys().select_item(0);
        editor.GetConfirmButton().press();
    }
    // The next alias popup is confirmed with text, after checking what it started with.
    void Type(std::string text, std::string startsWith = {}) {
        Answer([text, startsWith](nimbit::ui::window& w) {
            auto& editor = dynamic_cast<PreferencesAliasPopup&>(w);
            EXPECT_EQ(editor.GetField().get_text(), startsWith);
            editor.GetField().set_text(text, true);
            editor.GetConfirmButton().press();
        });
    }
    // A list as "alias/effect/override" lines.
    static std::vector<std::string> Lines(const std::vector<EffectAlias>& list) {
        std::vector<std::string> lines;
        for (const EffectAlias& e : list)
            lines.push_back(e.alias + "/" + (e.effect ? e.effect->name : "") + "/" +
                            (e.override ? e.override->name : ""));
        return lines;
    }
};

TEST_F(PreferencesWindowTest, RowMenusOfferWhatEachEntryAllows) {
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
    EXPECT_EQ(offscreen::shown_menus().back().position, (ivec2{50, 210})); // opens 10, 10 beyond
    EXPECT_TRUE(modalTitles.empty());                                      // dismissed menus open nothing
}

// "Custom" runs the key editor (a cancel goes back to the previous choice); "Reset Settings" asks,
// then starts the record afresh but for the news time, and the controls follow.
TEST_F(PreferencesWindowTest, CustomShortcutAndResetKeepRecordAndControlsInStep) {
    prefs.theme = UIColorTheme::Light, prefs.fullResolutionScreenshots = true, prefs.newsTime = 1234;
    Open();
    EffectsDropDown& drop = window->GetShortcutDropDown();
    drop.select_item(2);
    Answer([](nimbit::ui::window& w) { w.end_modal(0); });
    drop.select_item(4);
    EXPECT_TRUE(prefs.shortcutChoice == 2 && drop.get_selected_id() == 2 && prefs.customKeyName.empty());
    Answer([](nimbit::ui::window& w) { ChooseKey(w); });
    drop.select_item(4);
    const std::string shown =
        "Light|Custom: " + prefs.GenerateShortcutText() + "|" + prefs.captureFolder + "|on|light";
    EXPECT_TRUE(prefs.shortcutChoice == 4 && !prefs.customKeyName.empty());
    EXPECT_EQ(Controls(), shown);
    const std::vector<unsigned char> before = EncodePreferences(prefs);

    Answer([](nimbit::ui::window& w) { dynamic_cast<EffectsMessagePopup&>(w).GetCancelButton().press(); });
    window->GetResetButton().press();
    EXPECT_TRUE(EncodePreferences(prefs) == before && Controls() == shown);
    Answer([](nimbit::ui::window& w) { dynamic_cast<EffectsMessagePopup&>(w).GetConfirmButton().press(); });
    window->GetResetButton().press();
    EXPECT_EQ(modalTitles.size(), 4u);
    EXPECT_EQ(modalTitles.back(), "Reset Settings");
    PreferencesData fresh;
    fresh.newsTime = 1234;
    EXPECT_TRUE(EncodePreferences(prefs) == EncodePreferences(fresh));
    EXPECT_EQ(Controls(), "Dark|Ctrl + Space|" + fresh.captureFolder + "|off|dark");
}

TEST_F(PreferencesWindowTest, SaveLocationIsChosenInAFolderDialogAndShownInTheTooltip) {
    const std::string start = prefs.captureFolder, chosen = (root / "elsewhere").to_string();
    for (const std::string& answer : {std::string(), chosen}) {
        dialogs.answer({file_path(answer)});
        window->GetSaveLocationButton().press();
        const dialog_request& asked = dialogs.requests().back();
        EXPECT_TRUE(asked.what == dialog_request::kind::folder && asked.title == "Select Folder");
        const std::string now = answer.empty() ? start : chosen; // a cancel changes nothing
        EXPECT_TRUE(prefs.captureFolder == now && window->GetSaveLocationTooltip() == now &&
                    window->GetSaveLocationButton().get_text() == now);
    }
    EXPECT_EQ(dialogs.requests().back().start_folder.to_string(), start);
}

TEST_F(PreferencesWindowTest, ImportReplacesTheRecordAndTheListsAndTheControlsFollow) {
    prefs.theme = UIColorTheme::Light, prefs.fullResolutionScreenshots = true, prefs.shortcutChoice = 3;
    Open();
    const std::string shown = Controls();
    const std::vector<unsigned char> record = EncodePreferences(prefs);
    const auto favorites = Lines(popup->GetAliases()), blacklisted = Lines(popup->GetBlacklist());
    dialogs.answer({root / "mine.kvs"});
    window->GetExportButton().press();
    window->GetThemeDropDown().select_item(0); // another state, then the file back
    window->GetShortcutDropDown().select_item(0);
    window->GetFullResolutionBox().toggle();
    popup->GetAliases().clear();
    popup->GetBlacklist().clear();
    window->GetPanel(K::Favorites).Refresh();
    dialogs.answer({root / "mine.kvs"});
    window->GetImportButton().press();
    EXPECT_EQ(modalTitles, (std::vector<std::string>{"Export Successful", "Import Successful"}));
    EXPECT_TRUE(EncodePreferences(prefs) == record);
    EXPECT_EQ(Controls(), shown);
    EXPECT_TRUE(Lines(popup->GetAliases()) == favorites && Lines(popup->GetBlacklist()) == blacklisted);
    EXPECT_EQ(window->GetPanel(K::Favorites).GetSlots().size(), favorites.size());
}

// The popup runs the window over its own record and lists; Escape closes it; what changed is put in
// effect in the popup and saved.
TEST_F(PreferencesWindowTest, PopupRunsTheWindowThenAppliesWhatChangedAndSaves) {
    window.reset();
    Command(PopupCommand::Show);
    ASSERT_TRUE(popup->GetShortcutsBar().is_visible(false));
    Answer([&](nimbit::ui::window& w) {
        auto& shown = dynamic_cast<PreferencesWindow&>(w);
        EXPECT_EQ(w.get_client_rect().size(), PreferencesWindow::Size);
        shown.GetThemeDropDown().select_item(1);
        EXPECT_EQ(shown.GetColors(), &popup->GetThemes()[1]); // at once
        offscreen::push_menu_answer(W::ClearSlotItem);
        shown.ShowShortcutsActions(shown.GetPanel(K::Shortcuts).GetSlots()[0].get(), event_type::mouse_up, 0);
        offscreen::events_of(w).process_event(event_type::key_down, event_key::escape);
    });
    Command(PopupCommand::Preferences);
    EXPECT_EQ(modalTitles, std::vector<std::string>{"Preferences"}); // Escape ended the loop
    EXPECT_EQ(popup->GetColors(), &popup->GetThemes()[1]);
    EXPECT_FALSE(popup->GetShortcutsBar().is_visible(false)); // its only shortcut was cleared
    PreferencesData saved;
    ASSERT_TRUE(LoadPreferences(saved, UserSettingsFolder()));
    EXPECT_EQ(saved.theme, UIColorTheme::Light);
}

// Each picker's choice lands where its menu item or New row points; a cancelled one changes nothing.
TEST_F(PreferencesWindowTest, PickedEntriesLandInTheirLists) {
    Pick("tint");
    Menu(K::Shortcuts, 0, W::EntryItem); // the slot keeps its label
    Pick("glow");
    Menu(K::Shortcuts, 4, W::EditLabelItem); // "New Shortcut"
    Pick("blur in");
    Menu(K::Favorites, 0, W::EntryItem);
    for (K kind : {K::Shortcuts, K::Favorites, K::Blacklist}) {
        Pick("tint");
        window->AddNewEffect(&window->GetPanel(kind).GetNewRow(), event_type::pressed, 0);
    }
    EXPECT_EQ(modalTitles, (std::vector<std::string>{"Set Shortcut", "Set Shortcut", "Set Override",
                                                     "Add New Effect", "Add New Effect", "Add New Effect"}));
    std::vector<std::string> slots(9, "//");
    slots[0] = "Glo/Tint/", slots[1] = "Tin/Tint/", slots[4] = "Glo/Glow/";
    EXPECT_EQ(Lines(popup->GetShortcuts()), slots);
    EXPECT_EQ(Lines(popup->GetAliases()),
              (std::vector<std::string>{"glow/Glow/Blur In", "gb/Gaussian Blur/Blur In", "tint/Tint/"}));
    EXPECT_EQ(Lines(popup->GetBlacklist()), (std::vector<std::string>{"tint/Tint/"})); // there already
    EXPECT_EQ(window->GetPanel(K::Favorites).GetSlots().size(), 3u);
}

TEST_F(PreferencesWindowTest, LabelsAndAliasesAreEditedInTheAliasPopup) {
    Type("  Gx ", "Glo");
    Menu(K::Shortcuts, 0, W::EditLabelItem);
    Type("Shine");
    Menu(K::Favorites, 0, W::AddAliasItem);
    Answer([](nimbit::ui::window& w) { dynamic_cast<PreferencesAliasPopup&>(w).GetCancelButton().press(); });
    Menu(K::Favorites, 1, W::EditAliasItem);
    EXPECT_EQ(modalTitles, (std::vector<std::string>{"Edit Label", "Add Alias", "Edit Alias"}));
    EXPECT_EQ(popup->GetShortcuts()[0].alias, "Gx");
    EXPECT_EQ(Lines(popup->GetAliases()),
              (std::vector<std::string>{"shine/Glow/", "gb/Gaussian Blur/Blur In"})); // typed in lower case

    Menu(K::Favorites, 1, W::ClearAliasItem); // back to the search name
    Menu(K::Favorites, 1, W::ClearOverrideItem);
    Menu(K::Favorites, 0, W::RemoveFavoriteItem);
    EXPECT_EQ(Lines(popup->GetAliases()), std::vector<std::string>{"gaussian blur/Gaussian Blur/"});
    EXPECT_EQ(window->GetPanel(K::Favorites).GetSlots().size(), 1u);
}

} // namespace
