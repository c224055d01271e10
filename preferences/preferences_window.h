#pragma once

#include "nimbit/ui/check_box.h"
#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/text_label.h"
#include "nimbit/ui/window.h"
#include "popup/effect_alias.h"
#include "popup/parts/effects_drop_down.h"
#include "popup/ui_color_theme.h"
#include "preferences/preferences_edit_effect_popup.h"
#include "preferences/preferences_effects_scroll_panel.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class EffectsPopupWindow;
struct EffectData;
struct PreferencesData;
struct UIColors;

// The settings window: the record's controls at the top, the three user lists below, all edited in
// place (there is no apply or cancel: what the user does is what the popup saves when it closes).
// Runs modally over the popup; Escape closes it.
class PreferencesWindow : public nimbit::ui::window {
public:
    // The inside of the window, in pixels.
    static constexpr nimbit::ivec2 Size{760, 560};
    // The controls' places, client coordinates (the labels' are in the source).
    static constexpr nimbit::ivec4 ThemeRect{130, 12, 150, 24}, ShortcutRect{420, 12, 324, 24};
    static constexpr nimbit::ivec4 SaveRect{130, 44, 614, 24}, ClearRect{130, 76, 90, 24};
    static constexpr nimbit::ivec4 FullRect{414, 79, 18, 18}, RecentRect{578, 79, 18, 18};
    static constexpr nimbit::ivec4 AccentsRect{726, 79, 18, 18};
    static constexpr nimbit::ivec4 ResetRect{16, 520, 108, 24}, ExportRect{132, 520, 80, 24};
    static constexpr nimbit::ivec4 ImportRect{220, 520, 80, 24};
    // In PreferencesListKind order. The shortcuts' height holds the header and ten rows.
    static constexpr nimbit::ivec4 PanelRects[3] = {
        {16, 140, 300, 286}, {332, 140, 412, 220}, {332, 390, 412, 154}};

    // Ids of the shortcut drop-down: the index stored in the record's shortcut choice.
    static constexpr uint32_t CustomShortcut = 4;

    // Context menu item ids of the list rows. Every menu starts with the entry's name and a separator.
    enum MenuId : uint32_t {
        EntryItem = 1,
        SeparatorItem = 2,
        // Shortcuts.
        EditLabelItem = 3, // "New Shortcut" on an empty slot
        ClearSlotItem = 4,
        // Favorites.
        RemoveFavoriteItem = 3,
        ClearAliasItem = 4,
        AddAliasItem = 5,
        EditAliasItem = 6,
        ClearOverrideItem = 7,
        // Blacklist.
        RemoveItem = 3,
    };

    PreferencesWindow(EffectsPopupWindow& popup, const std::vector<UIColors>& themes, PreferencesData& prefs,
                      std::vector<EffectAlias>& blacklist, std::vector<EffectAlias>& aliases,
                      std::vector<EffectAlias>& shortcuts, const std::vector<EffectData>& catalogue);
    ~PreferencesWindow() override;

    // The modal loop; returns when the window is closed.
    void Run();

    void OnShow(const nimbit::ui::event_info& e);
    void Draw(const nimbit::ui::event_info& e);
    void OnKeyDown(const nimbit::ui::event_info& e);
    void OnButton(const nimbit::ui::event_info& e);

    // Puts the theme's colours into every control; without force, only when the theme changes.
    void SwitchTheme(UIColorTheme theme, bool force);
    // Repaints every part, the panels included.
    void ThemeChanged();

    // The rows' menus (preferences_row_menus.cpp). data: the client point the menu opens at.
    void ShowShortcutsActions(PreferencesEffectSlot* slot, nimbit::ui::event_type type,
                              unsigned long long data);
    void ShowFavoritesActions(PreferencesEffectSlot* slot, nimbit::ui::event_type type,
                              unsigned long long data);
    void ShowBlacklistActions(PreferencesEffectSlot* slot, nimbit::ui::event_type type,
                              unsigned long long data);
    // A "New" row: the picker, then the chosen entry goes to the end of the row's list.
    void AddNewEffect(PreferencesEffectNew* row, nimbit::ui::event_type type, unsigned long long data);
    // A picker's choice for the slot (or favorite) whose menu asked for it.
    void SetShortcutEffect(EffectSearchResult result);
    void SetOverridePreset(EffectSearchResult result);

    void ExportPreferences();
    void ImportPreferences();

    // --- controls, for tests ---
    EffectsDropDown& GetThemeDropDown() { return themeDrop; }
    EffectsDropDown& GetShortcutDropDown() { return shortcutDrop; }
    nimbit::ui::generic_button& GetSaveLocationButton() { return saveLocation; }
    const std::string& GetSaveLocationTooltip() const { return saveLocationTip; }
    nimbit::ui::generic_button& GetClearCacheButton() { return clearCache; }
    nimbit::ui::check_box& GetFullResolutionBox() { return fullResolution; }
    nimbit::ui::check_box& GetRecentFirstBox() { return recentFirst; }
    nimbit::ui::check_box& GetIgnoreAccentsBox() { return ignoreAccents; }
    nimbit::ui::generic_button& GetResetButton() { return reset; }
    nimbit::ui::generic_button& GetExportButton() { return exportButton; }
    nimbit::ui::generic_button& GetImportButton() { return importButton; }
    PreferencesEffectsScrollPanel& GetPanel(PreferencesListKind kind) { return *panels[Index(kind)]; }
    const UIColors* GetColors() const { return colours; }

private:
    static size_t Index(PreferencesListKind kind) { return static_cast<size_t>(kind); }
    void Build();
    void Layout();
    // The controls follow the record (after a reset or an import).
    void UpdateControls();
    void UpdateCustomItem();
    void UpdateSaveLocation();
    void RefreshPanels();
    void ThemeChosen(uint32_t id);
    void ShortcutChosen(uint32_t id);
    void ChooseSaveLocation();
    void ClearThumbnailCache();
    void ResetSettings();
    // Puts a modal window of ours over the upper middle of this one, inside the screen.
    void CentreOver(nimbit::ui::window& child) const;
    // Runs the catalogue picker; null when cancelled.
    const EffectData* PickEffect(std::string_view title);
    // Runs the alias popup over text; false when cancelled.
    bool AskText(std::string_view title, std::string& text);
    std::vector<EffectAlias>& List(PreferencesListKind kind);

    EffectsPopupWindow& popup;
    const std::vector<UIColors>& themes;
    const UIColors* colours = nullptr;
    PreferencesData& prefs;
    std::vector<EffectAlias>& blacklist;
    std::vector<EffectAlias>& aliases;
    std::vector<EffectAlias>& shortcuts;
    const std::vector<EffectData>& catalogue;

    // The shortcut choice before the drop-down changed: a cancelled "Custom" goes back to it.
    int32_t previousShortcut = 0;
    // The list entry a picker was opened for.
    size_t pendingIndex = 0;
    std::string saveLocationTip;

    enum Label : size_t {
        ThemeLabel,
        ShortcutLabel,
        SaveLabel,
        CacheLabel,
        FullLabel,
        RecentLabel,
        AccentsLabel,
        ShortcutsTitle,
        FavoritesTitle,
        BlacklistTitle,
        LabelCount
    };
    std::array<nimbit::ui::text_label, LabelCount> labels;
    EffectsDropDown themeDrop;
    EffectsDropDown shortcutDrop;
    nimbit::ui::generic_button saveLocation;
    nimbit::ui::generic_button clearCache;
    nimbit::ui::check_box fullResolution;
    nimbit::ui::check_box recentFirst; // entries applied often and lately rise in the popup's groups
    nimbit::ui::check_box ignoreAccents;
    nimbit::ui::generic_button reset;
    nimbit::ui::generic_button exportButton;
    nimbit::ui::generic_button importButton;
    // Last: the panels' rows point into the lists and call the window, so they go first.
    std::array<std::unique_ptr<PreferencesEffectsScrollPanel>, 3> panels;
};
