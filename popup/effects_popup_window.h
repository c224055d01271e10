#pragma once

#include "host/effect_data.h"
#include "host/popup_command.h"
#include "host/popup_window.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/generic_panel.h"
#include "nimbit/ui/input_box.h"
#include "nimbit/ui/window.h"
#include "popup/effect_alias.h"
#include "popup/effect_search.h"
#include "popup/parts/effect_slot.h"
#include "popup/parts/effects_popup_interface.h"
#include "popup/parts/effects_scroll_bar.h"
#include "popup/parts/effects_shortcuts_bar.h"
#include "popup/parts/header_slot.h"
#include "popup/parts/icon_view.h"
#include "popup/ui_colors.h"
#include "popup/usage_record.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class GalleryPopupWindow;
struct PreferencesData;

// The keyboard-invoked search popup: a search field over the list of matching effects and presets,
// five tool buttons, a news badge and, while the search text is empty, the numbered shortcuts bar.
// A chosen entry is handed back by raising pressed on the window with the EffectData pointer as data.
class EffectsPopupWindow : public nimbit::ui::window, public EffectsPopupInterface, public PopupWindow {
public:
    // Layout, in pixels.
    static constexpr int SearchWidth = 397;
    static constexpr int CompactWidth = 218;
    static constexpr int SearchTopHeight = 45;
    static constexpr int CompactTopHeight = 68;
    static constexpr int ShortcutsBarExtra = 35;
    static constexpr int ButtonSize = 28;
    static constexpr int NewsSize = 18;
    static constexpr int ScrollBarWidth = 16;
    static constexpr int MaxListHeight = 420;
    static constexpr int HeaderHeight = HeaderSlot::Height;
    static constexpr int RowHeight = EffectSlot::Height;

    // Timer ids of the window's content.
    static constexpr uint32_t NewsTimer = 200;
    static constexpr uint32_t FocusTimer = 300;
    static constexpr uint32_t FadeTimer = 100;
    static constexpr float FlashOpacity = 0.7f; // of the white flash at its strongest

    enum ToolButton : int { ScreenshotButton = 0, GalleryButton, ExportButton, SettingsButton, LogoButton };
    // Each tool button's left edge, counted from the window's right edge; the buttons sit 8 pixels down.
    static constexpr int ToolButtonRight[5] = {209, 166, 123, 80, 37};
    static constexpr int ToolButtonTop = 8;

    // A popup without a parent window (the host's windows are not ours). newsPoll answers the news
    // count, -1 while it is not known yet; it may be empty.
    explicit EffectsPopupWindow(PreferencesData& prefs, std::function<int32_t()> newsPoll = {});
    ~EffectsPopupWindow() override;

    uint32_t Show(std::string_view const& a, std::string_view const& b, std::string_view const& c,
                  PopupCommand const& command);

    // PopupWindow.
    uint32_t Show(const std::string& projectName, const std::string& compName, const std::string& layerName,
                  PopupCommand command) override;
    void Hide() override { hide(); }
    bool IsShown() const override { return is_shown(); }
    void WriteFile() override;
    void SetEffectData(const std::vector<EffectData>& entries) override;

    // EffectsPopupInterface.
    void AddToList(const EffectData* effect, bool blacklist) override;
    void AddToShortcuts(const EffectData* effect) override;
    void ReplaceToShortcuts(const EffectData* effect, unsigned long index) override;
    void SetSelected(EffectSlot* slot) override;

    void SearchChanged();
    void ApplySelectedEffect();
    void ApplyEffect(const nimbit::ui::event_info& e);
    void OnKeyDown(const nimbit::ui::event_info& e);
    void OnInputKeyDown(const nimbit::ui::event_info& e);
    void OnKeyChar(const nimbit::ui::event_info& e);
    void OnFocusGained(const nimbit::ui::event_info& e);
    void OnFocusLost(const nimbit::ui::event_info& e);
    void Timer(const nimbit::ui::event_info& e);
    void OnButton(const nimbit::ui::event_info& e);
    void OnScreenshotButton(const nimbit::ui::event_info& e);
    void OnShortcutButton(const nimbit::ui::event_info& e);
    void Paste();
    void Resize();
    // Theme application (effects_popup_theme.cpp).
    void SwitchTheme(UIColorTheme theme, bool force);
    void InitThemes();
    void SavePreferences(bool writeLists);
    // Forgets which entries were applied how often, the file included (Reset Settings).
    void ForgetUsage();
    const UsageRecord& GetUsage() const { return usage; }

    // Shows the gallery, made on first use in the popup's theme and then kept.
    virtual void OpenGallery();
    // Runs the preferences window over the popup's record and lists, then applies the theme, shows
    // the edited lists and saves.
    virtual void OpenPreferences();
    // Flashes the popup and asks the controller to capture the frame into the capture folder; with
    // from_clipboard, an image on the clipboard is written there too.
    virtual void TakeScreenshot(bool from_clipboard);
    // Asks the controller to capture the frame through the "Save to PNG" dialog.
    virtual void ExportScreenshot();
    // A shown gallery lists a new capture at once.
    void RefreshGallery() override;
    void Logo();

    // The product page that the logo button opens.
    static constexpr std::string_view ProductPage = "https://tarvelo.com/quillo";

    // --- state, for the controller and tests ---
    bool IsSearchMode() const { return searchMode; }
    bool IsScreenshotMode() const { return screenshotMode; }
    const std::vector<std::unique_ptr<EffectSlot>>& GetRows() const { return rows; }
    EffectSlot* GetSelected() const { return selected; }
    HeaderSlot* GetEffectsHeader() const { return effectsHeader.get(); }
    HeaderSlot* GetPresetsHeader() const { return presetsHeader.get(); }
    nimbit::ui::input_box& GetSearchField() { return searchField; }
    nimbit::ui::generic_button& GetToolButton(ToolButton which) { return toolButtons[which]; }
    nimbit::ui::generic_button& GetNewsBadge() { return newsBadge; }
    EffectsShortcutsBar& GetShortcutsBar() { return shortcutsBar; }
    EffectsScrollBar& GetScrollBar() { return scrollBar; }
    nimbit::ui::widget& GetListFrame() { return listFrame; }
    nimbit::ui::widget& GetListContent() { return listContent; }
    const UIColors* GetColors() const { return colors; }
    // Null until the gallery was first opened.
    GalleryPopupWindow* GetGallery() const { return gallery.get(); }
    const std::vector<UIColors>& GetThemes() const { return themes; }
    const std::vector<EffectData>& GetCatalogue() const { return catalogue; }
    std::vector<EffectAlias>& GetBlacklist() { return blacklist; }
    std::vector<EffectAlias>& GetAliases() { return aliases; }
    std::vector<EffectAlias>& GetShortcuts() { return shortcuts; }
    int GetNewsCount() const { return newsCount; }
    float GetFlash() const { return fade; }
    const std::string& GetShowText(int which) const { return showTexts[static_cast<size_t>(which) % 3]; }
    // The folder the user's files are written to; the user's data folder by default.
    void SetSettingsFolder(const nimbit::file_path& folder) { settingsFolder = folder; }
    const nimbit::file_path& GetSettingsFolder() const { return settingsFolder; }

private:
    void Build();
    void ReadDataFiles();
    void Open();
    void LayoutTop();
    int TopHeight() const;
    void ClearRows();
    void ScrollIntoView(size_t rowIndex);
    void Fire(const EffectData* effect);
    int ListWidth(bool overflow) const;

    PreferencesData& prefs;
    std::vector<UIColors> themes;
    const UIColors* colors = nullptr;

    std::vector<EffectData> catalogue;
    std::vector<EffectAlias> blacklist, aliases, shortcuts;
    nimbit::file_path settingsFolder;
    nimbit::file_path searchDataFile, shortcutsDataFile;

    EffectSearch search;
    SearchResults results;
    UsageRecord usage;
    std::vector<std::unique_ptr<EffectSlot>> rows;
    std::unique_ptr<HeaderSlot> effectsHeader, presetsHeader;
    EffectSlot* selected = nullptr;
    std::vector<std::string> shortcutLabels;
    int contentHeight = 0;

    bool searchMode = true;
    bool screenshotMode = false;
    bool screenshotBusy = false;
    bool shortcutsShown = false;
    std::array<std::string, 3> showTexts;

    std::function<int32_t()> newsPoll;
    int newsCount = -1;
    float fade = 0.0f; // the screenshot flash: starts at 1.1, down 0.1 per tick of FadeTimer

    IconView searchIcon;
    nimbit::ui::input_box searchField;
    nimbit::ui::generic_panel listFrame;
    nimbit::ui::generic_panel listContent;
    EffectsScrollBar scrollBar;
    EffectsShortcutsBar shortcutsBar;
    std::array<nimbit::ui::generic_button, 5> toolButtons;
    nimbit::ui::generic_button newsBadge;
    nimbit::ui::widget flash; // over everything, shown while the screenshot flash fades
    std::unique_ptr<GalleryPopupWindow> gallery;
};
