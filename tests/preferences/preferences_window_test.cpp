#include "preferences/preferences_window.h"

#include "host/effect_data.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "popup/effects_popup_window.h"
#include "popup/parts/effects_message_popup.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"
#include "popup/usage_record.h"
#include "preferences/preferences_alias_popup.h"
#include "preferences/preferences_shortcut_popup.h"
#include "tests/foundation/temp_folder.h"
#include "tests/support/offscreen_test.h"

#include <functional>

using namespace nimbit;
using namespace nimbit::ui;
using Items = std::vector<std::pair<uint32_t, std::string>>;
using Strings = std::vector<std::string>;
using K = PreferencesListKind;
using W = PreferencesWindow;

namespace {

constexpr const char* Vars[] = {"QUILLO_USER_DATA_DIR", "QUILLO_COMMON_DATA_DIR", "QUILLO_DOCS_DIR"};

// The window over the popup's record and lists, in a private data folder. Modal windows (pickers,
// editors, questions, notices) are answered in turn by `answers`, or closed.
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
    std::vector<std::function<void(nimbit::ui::window&)>> answers;
    Strings modalTitles;

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
            if (answers.empty())
                return w.end_modal(0);
            auto answer = std::move(answers.front());
            answers.erase(answers.begin());
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
            offscreen::events_of(w).process_event(event_type::key_down, event_key::return_key);
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
        std::string lines;
        for (const EffectAlias& e : list)
            lines += (lines.empty() ? "" : ", ") + e.alias + "/" + (e.effect ? e.effect->name : "") + "/" +
                     (e.override ? e.override->name : "");
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
    EXPECT_TRUE(modalTitles.empty()); // dismissed menus open nothing
}

// Menu items and New rows go through the pickers and the alias popup into the right list entry.
TEST_F(PreferencesWindowTest, RowActionsEditTheListsThroughThePickersAndTheAliasPopup) {
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
              (Strings{"Set Shortcut", "Set Shortcut", "Set Override", "Add New Effect", "Add New Effect",
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
    EXPECT_EQ(Controls(), "Light|Custom: " + prefs.GenerateShortcutText() + "|" + prefs.captureFolder +
                              "|on|recent|light");
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
    window->GetExportButton().press();
    window->GetThemeDropDown().select_item(0); // another state, then the file back
    window->GetShortcutDropDown().select_item(0);
    window->GetFullResolutionBox().toggle();
    popup->GetAliases().clear(), popup->GetBlacklist().clear();
    window->GetPanel(K::Favorites).Refresh();
    dialogs.answer({root / "mine.kvs"});
    window->GetImportButton().press();
    EXPECT_EQ(modalTitles, (Strings{"Export Successful", "Import Successful"}));
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
        offscreen::events_of(w).process_event(event_type::key_down, event_key::escape);
    });
    popup->Show(std::string_view("P"), {}, std::string_view("L"), PopupCommand{PopupCommand::Preferences});
    EXPECT_EQ(modalTitles, Strings{"Preferences"}); // Escape ended the loop
    EXPECT_EQ(popup->GetColors(), &popup->GetThemes()[1]);
    EXPECT_FALSE(popup->GetShortcutsBar().is_visible(false)); // its only shortcut was cleared
    PreferencesData saved;
    ASSERT_TRUE(LoadPreferences(saved, UserSettingsFolder()));
    EXPECT_EQ(saved.theme, UIColorTheme::Light);
}

} // namespace
