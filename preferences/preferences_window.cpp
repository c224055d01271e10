#include "preferences/preferences_window.h"

#include "gallery/gallery_popup_window.h"
#include "nimbit/filesystem/known_folders.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/native_file_browser.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/utils/mapped_cache.h"
#include "popup/effects_popup_window.h"
#include "popup/parts/effects_message_popup.h"
#include "popup/preferences_data.h"
#include "popup/ui_colors.h"
#include "preferences/preferences_shortcut_popup.h"
#include "preferences/settings_transfer.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

// The controls' places, client coordinates: the settings in two columns at the top, then the
// shortcuts (all nine slots in view) with the record's actions under them, and beside them the
// favorites over the blacklist.
constexpr int Margin = 16, SeparatorY = 112;
constexpr ivec4 LabelRects[] = {
    {16, 12, 110, 24},   // "UI Color:"
    {320, 12, 100, 24},  // "Shortcut:"
    {16, 44, 110, 24},   // "Save Location:"
    {16, 76, 110, 24},   // "Thumbnail Cache:"
    {240, 76, 172, 24},  // "Full Resolution Screenshots:"
    {448, 76, 128, 24},  // "Recently Used First:"
    {612, 76, 110, 24},  // "Ignore Accents:"
    {16, 118, 300, 20},  // "Shortcuts:"
    {332, 118, 412, 20}, // "Favorites:"
    {332, 368, 412, 20}, // "Blacklist:"
};

constexpr const char* ThemeNames = "Dark|Light";
constexpr const char* ShortcutNames = "Ctrl + Space|Shift + Space|Ctrl + Tab|Shift + Tab|Custom";

file_path DefaultCacheFile() {
    return get_user_data_path().append(file_path("Tarvelo")).append(file_path("effects_cache"));
}

void StyleButton(generic_button& b, const UIColors& c) {
    SetThemeColors(b.get_theme(), c,
                   {{theme_keys::button_color_normal, &UIColors::messageButtonBack},
                    {theme_keys::button_color_hover, &UIColors::messageButtonBackHover},
                    {theme_keys::button_font_color, &UIColors::messageFont},
                    {theme_keys::button_border_color_normal, &UIColors::borderColor},
                    {theme_keys::button_border_color_hover, &UIColors::buttonBorderHover},
                    {theme_keys::button_border_color_focus, &UIColors::buttonBorderFocus}});
}

} // namespace

PreferencesWindow::PreferencesWindow(EffectsPopupWindow& popup, const std::vector<UIColors>& themes,
                                     PreferencesData& prefs, std::vector<EffectAlias>& blacklist,
                                     std::vector<EffectAlias>& aliases, std::vector<EffectAlias>& shortcuts,
                                     const std::vector<EffectData>& catalogue)
    : popup(popup), themes(themes), prefs(prefs), blacklist(blacklist), aliases(aliases),
      shortcuts(shortcuts), catalogue(catalogue) {
    panels[Index(PreferencesListKind::Shortcuts)] =
        std::make_unique<PreferencesEffectsScrollPanel>(PreferencesListKind::Shortcuts, shortcuts);
    panels[Index(PreferencesListKind::Favorites)] =
        std::make_unique<PreferencesEffectsScrollPanel>(PreferencesListKind::Favorites, aliases);
    panels[Index(PreferencesListKind::Blacklist)] =
        std::make_unique<PreferencesEffectsScrollPanel>(PreferencesListKind::Blacklist, blacklist);

    // No parent: the popup hides as soon as this window takes the focus.
    create("Preferences", {0, 0, Size.x, Size.y}, window_style_titled, nullptr);
    // The frame grows by the title bar so that the inside keeps its size.
    const ivec4 frame = get_rect(), client = get_client_rect();
    ivec4 placed{frame.x, frame.y, Size.x + frame.w - client.w, Size.y + frame.h - client.h};
    if (popup.is_shown()) {
        const ivec4 over = popup.get_rect();
        placed.x = over.x + (over.w - placed.w) / 2;
        placed.y = over.y + (over.h - placed.h) / 2;
        set_rect(placed);
    } else {
        set_rect(placed);
        center_window();
    }
    force_in_screen();
    Build();
}

PreferencesWindow::~PreferencesWindow() = default;

void PreferencesWindow::Build() {
    widget& root = get_root();
    static constexpr const char* texts[LabelCount] = {"UI Color:",
                                                      "Shortcut:",
                                                      "Save Location:",
                                                      "Thumbnail Cache:",
                                                      "Full Resolution Screenshots:",
                                                      "Recently Used First:",
                                                      "Ignore Accents:",
                                                      "Shortcuts:",
                                                      "Favorites:",
                                                      "Blacklist:"};
    for (size_t i = 0; i < LabelCount; ++i) {
        labels[i].create(root, LabelRects[i]);
        labels[i].set_text(texts[i]);
        labels[i].set_mouse_transparent(true);
        labels[i].show(true);
        nimbit::ui::theme& t = labels[i].get_theme();
        t.set(theme_keys::label_font_name, std::string("Arial"));
        t.set(theme_keys::label_font_size, i >= ShortcutsTitle ? 13.0f : 12.0f);
    }
    themeDrop.create(root, {0, 0, 0, 0});
    themeDrop.add_items(ThemeNames);
    shortcutDrop.create(root, {0, 0, 0, 0});
    shortcutDrop.add_items(ShortcutNames);
    saveLocation.create(root, {0, 0, 0, 0});
    clearCache.create(root, {0, 0, 0, 0});
    clearCache.set_text("Clear");
    fullResolution.create(root, {0, 0, 0, 0});
    fullResolution.set_pointer(&prefs.fullResolutionScreenshots);
    recentFirst.create(root, {0, 0, 0, 0});
    recentFirst.set_pointer(&prefs.recentFirst);
    ignoreAccents.create(root, {0, 0, 0, 0});
    ignoreAccents.set_pointer(&prefs.ignoreAccents);
    reset.create(root, {0, 0, 0, 0});
    reset.set_text("Reset Settings");
    exportButton.create(root, {0, 0, 0, 0});
    exportButton.set_text("Export");
    importButton.create(root, {0, 0, 0, 0});
    importButton.set_text("Import");
    for (widget* w : std::initializer_list<widget*>{&themeDrop, &shortcutDrop, &saveLocation, &clearCache,
                                                    &fullResolution, &recentFirst, &ignoreAccents, &reset,
                                                    &exportButton, &importButton})
        w->show(true);
    for (auto& panel : panels) {
        panel->create(root, {0, 0, 0, 0});
        panel->show(true);
        panel->onSlotEvent = [this](PreferencesEffectSlot* slot, event_type type, uint64_t data) {
            switch (slot->GetKind()) {
            case PreferencesListKind::Shortcuts:
                ShowShortcutsActions(slot, type, data);
                break;
            case PreferencesListKind::Favorites:
                ShowFavoritesActions(slot, type, data);
                break;
            case PreferencesListKind::Blacklist:
                ShowBlacklistActions(slot, type, data);
                break;
            }
        };
        panel->onNewEvent = [this](PreferencesEffectNew* row, event_type type, uint64_t data) {
            AddNewEffect(row, type, data);
        };
    }
    Layout();
    set_tab_navigation(true);

    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::shown, &PreferencesWindow::OnShow);
    ev.add_event(&root, this, event_type::draw, &PreferencesWindow::Draw);
    ev.add_event(this, this, event_type::key_down, &PreferencesWindow::OnKeyDown);
    ev.add_event(&themeDrop, this, event_type::value_changed,
                 [this](const event_info& e) { ThemeChosen(static_cast<uint32_t>(e.data)); });
    ev.add_event(&shortcutDrop, this, event_type::value_changed,
                 [this](const event_info& e) { ShortcutChosen(static_cast<uint32_t>(e.data)); });
    for (generic_button* b : {&saveLocation, &clearCache, &reset, &exportButton, &importButton})
        ev.add_event(b, this, event_type::pressed, &PreferencesWindow::OnButton);

    SwitchTheme(prefs.theme, true);
    UpdateControls();
    RefreshPanels();
}

void PreferencesWindow::Layout() {
    static_assert(std::size(LabelRects) == LabelCount);
    for (size_t i = 0; i < LabelCount; ++i)
        labels[i].set_rect(LabelRects[i]);
    themeDrop.set_rect(ThemeRect);
    shortcutDrop.set_rect(ShortcutRect);
    saveLocation.set_rect(SaveRect);
    clearCache.set_rect(ClearRect);
    fullResolution.set_rect(FullRect);
    recentFirst.set_rect(RecentRect);
    ignoreAccents.set_rect(AccentsRect);
    reset.set_rect(ResetRect);
    exportButton.set_rect(ExportRect);
    importButton.set_rect(ImportRect);
    for (size_t i = 0; i < panels.size(); ++i)
        panels[i]->set_rect(PanelRects[i]);
}

// --- window events -----------------------------------------------------------------------------------

void PreferencesWindow::Run() {
    show_modal();
}

void PreferencesWindow::OnShow(const event_info&) {
    // The record may have changed since the window was made (a script, another window).
    UpdateControls();
}

void PreferencesWindow::Draw(const event_info&) {
    if (colours == nullptr)
        return;
    drawer& d = get_drawer();
    const ivec4 area = get_root().get_rect();
    d.set_brush_color(colours->windowBack);
    d.draw_rect({0, 0, area.w, area.h});
    // A hairline between the settings and the lists.
    d.set_brush_color(colours->separatorLineColor);
    d.draw_rect({Margin, SeparatorY, area.w - 2 * Margin, 1});
}

void PreferencesWindow::OnKeyDown(const event_info& e) {
    if (e.data == event_key::escape)
        end_modal(0);
}

void PreferencesWindow::OnButton(const event_info& e) {
    if (e.sender == &saveLocation)
        ChooseSaveLocation();
    else if (e.sender == &clearCache)
        ClearThumbnailCache();
    else if (e.sender == &reset)
        ResetSettings();
    else if (e.sender == &exportButton)
        ExportPreferences();
    else if (e.sender == &importButton)
        ImportPreferences();
}

// --- theme -------------------------------------------------------------------------------------------

void PreferencesWindow::SwitchTheme(UIColorTheme theme, bool force) {
    if (themes.empty())
        return;
    const auto index = static_cast<size_t>(static_cast<int32_t>(theme));
    const UIColors* next = index < themes.size() ? &themes[index] : &themes.front();
    if (next == colours && !force)
        return;
    colours = next;
    const UIColors& c = *colours;
    get_root().set_background(c.windowBack);
    for (text_label& label : labels)
        label.get_theme().set(theme_keys::label_font_color, c.checkBoxFont);
    themeDrop.SwitchTheme(colours);
    shortcutDrop.SwitchTheme(colours);
    for (generic_button* b : {&saveLocation, &clearCache, &reset, &exportButton, &importButton})
        StyleButton(*b, c);
    for (check_box* b : {&fullResolution, &recentFirst, &ignoreAccents}) {
        nimbit::ui::theme& box = b->get_theme();
        SetThemeColors(box, c,
                       {{theme_keys::checkbox_font_color, &UIColors::checkBoxFont},
                        {theme_keys::checkbox_back_color, &UIColors::inputBack},
                        {theme_keys::checkbox_border_color_normal, &UIColors::borderColor},
                        {theme_keys::checkbox_border_color_hover, &UIColors::buttonBorderHover},
                        {theme_keys::checkbox_border_color_focus, &UIColors::buttonBorderFocus}});
        box.set(theme_keys::checkbox_image, c.checkBox);
    }
    for (auto& panel : panels)
        panel->SwitchTheme(colours);
    ThemeChanged();
    // The tooltips' colours live in the toolkit's shared table, which the popup's theme fills.
    popup.SwitchTheme(theme, false);
}

void PreferencesWindow::ThemeChanged() {
    for (auto& panel : panels)
        panel->update(false);
    get_root().update(false);
}

// --- the record's controls -----------------------------------------------------------------------------

void PreferencesWindow::UpdateControls() {
    // A value outside the lists shows as the first choice, as it is used.
    if (!themeDrop.set_selected_item(static_cast<uint32_t>(static_cast<int32_t>(prefs.theme))))
        themeDrop.set_selected_item(0);
    UpdateCustomItem();
    if (!shortcutDrop.set_selected_item(static_cast<uint32_t>(prefs.shortcutChoice)))
        shortcutDrop.set_selected_item(0);
    previousShortcut = static_cast<int32_t>(shortcutDrop.get_selected_id());
    UpdateSaveLocation();
    fullResolution.update(false); // bound to the record: a repaint shows it
    recentFirst.update(false);
    ignoreAccents.update(false);
}

void PreferencesWindow::UpdateCustomItem() {
    const bool keySet = prefs.customKeyCode >= 0 || !prefs.customKeyName.empty();
    const std::string keys = prefs.GenerateShortcutText();
    shortcutDrop.set_item_text(CustomShortcut, keySet ? "Custom: " + keys : "Custom");
    // The drop-down may cut a long chord short: while it is chosen, the tooltip spells it out.
    shortcutDrop.remove_tooltips();
    if (keySet && prefs.shortcutChoice == static_cast<int32_t>(CustomShortcut))
        shortcutDrop.add_tooltip(keys);
}

void PreferencesWindow::UpdateSaveLocation() {
    saveLocation.set_text(prefs.captureFolder);
    saveLocation.remove_tooltips();
    saveLocationTip = prefs.captureFolder;
    if (!saveLocationTip.empty())
        saveLocation.add_tooltip(saveLocationTip);
}

void PreferencesWindow::ThemeChosen(uint32_t id) {
    prefs.theme = id == 1 ? UIColorTheme::Light : UIColorTheme::Dark;
    SwitchTheme(prefs.theme, false);
}

void PreferencesWindow::ShortcutChosen(uint32_t id) {
    if (id != CustomShortcut) {
        prefs.shortcutChoice = static_cast<int32_t>(id);
        previousShortcut = prefs.shortcutChoice;
        UpdateCustomItem();
        return;
    }
    PreferencesShortcutPopup editor(this, {}, colours, prefs);
    CentreOver(editor);
    if (!editor.Run()) {
        shortcutDrop.set_selected_item(static_cast<uint32_t>(previousShortcut));
        return;
    }
    editor.Apply(prefs);
    prefs.shortcutChoice = static_cast<int32_t>(CustomShortcut);
    previousShortcut = prefs.shortcutChoice;
    UpdateCustomItem();
}

void PreferencesWindow::ChooseSaveLocation() {
    const file_path chosen =
        file_browser::folder_select_dialog(this, "Select Folder", file_path(prefs.captureFolder));
    if (chosen.empty())
        return;
    prefs.captureFolder = chosen.to_string();
    UpdateSaveLocation();
}

void PreferencesWindow::ClearThumbnailCache() {
    if (GalleryPopupWindow* gallery = popup.GetGallery()) {
        gallery->ClearCache();
        return;
    }
    // No gallery yet: nobody holds the cache open, so its files can go directly.
    mapped_cache cache;
    cache.load(DefaultCacheFile(), false);
    cache.clear(true);
}

void PreferencesWindow::ResetSettings() {
    EffectsMessagePopup question(
        this, {}, colours,
        {.title = "Reset Settings", .message = "Are you sure you want to reset all settings?"});
    CentreOver(question);
    if (question.Run() != 1)
        return;
    const int64_t newsTime = prefs.newsTime;
    prefs = PreferencesData{};
    prefs.newsTime = newsTime;
    popup.ForgetUsage(); // what was applied how often goes with the settings
    UpdateControls();
    SwitchTheme(prefs.theme, false);
}

// --- export and import -------------------------------------------------------------------------------

void PreferencesWindow::ExportPreferences() {
    const TransferContext context{.report = WarningPopupReport(this, colours), .parent = this, .clock = {}};
    ::ExportPreferences(TransferredSettings{prefs, blacklist, aliases, shortcuts}, context);
}

void PreferencesWindow::ImportPreferences() {
    const TransferContext context{.report = WarningPopupReport(this, colours), .parent = this, .clock = {}};
    ImportResult result = ::ImportPreferences(prefs, catalogue, context);
    if (!result.imported)
        return;
    prefs = std::move(result.settings.prefs);
    blacklist = std::move(result.settings.blacklist);
    aliases = std::move(result.settings.aliases);
    shortcuts = std::move(result.settings.shortcuts);
    UpdateControls();
    SwitchTheme(prefs.theme, false);
    RefreshPanels();
}

// --- helpers -----------------------------------------------------------------------------------------

void PreferencesWindow::RefreshPanels() {
    for (auto& panel : panels)
        panel->Refresh();
}

void PreferencesWindow::CentreOver(window& child) const {
    const ivec4 mine = get_rect(), theirs = child.get_rect();
    child.set_rect({mine.x + (mine.w - theirs.w) / 2, mine.y + (mine.h - theirs.h) / 3, theirs.w, theirs.h});
    child.force_in_screen();
}

std::vector<EffectAlias>& PreferencesWindow::List(PreferencesListKind kind) {
    switch (kind) {
    case PreferencesListKind::Shortcuts:
        return shortcuts;
    case PreferencesListKind::Favorites:
        return aliases;
    case PreferencesListKind::Blacklist:
        break;
    }
    return blacklist;
}
