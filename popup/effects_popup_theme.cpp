#include "popup/effects_popup_theme.h"

#include "gallery/gallery_popup_window.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget_themes.h"
#include "popup/effects_popup_window.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

// Placeholder of the empty search field: short enough to sit in the narrow compact field.
constexpr std::string_view SearchPlaceholder = "fx";

} // namespace

void StyleRow(EffectSlot& row, UIColors const& c) {
    row.get_theme().set(theme_keys::default_back_color, c.listBack);
    row.SetTextColor(c.rowText, c.rowSecondText, c.matchText);
}

void StyleHeader(HeaderSlot& header, UIColors const& c) {
    header.get_theme().set(theme_keys::default_back_color, c.listBack);
    switch (header.GetKind()) {
    case HeaderKind::Effects:
        header.SetColors(c.effectsHeaderBack, c.effectsHeaderText);
        return;
    case HeaderKind::Presets:
        header.SetColors(c.presetsHeaderBack, c.presetsHeaderText);
        return;
    case HeaderKind::NoMatches:
        header.SetColors(c.noMatchesHeaderBack, c.noMatchesHeaderText);
        return;
    case HeaderKind::DidYouMean: // suggestions: the effects' colours, not those of a dead end
        header.SetColors(c.effectsHeaderBack, c.effectsHeaderText);
        return;
    }
}

void EffectsPopupWindow::InitThemes() {
    themes = BuildColorThemes();
    colors = nullptr;
}

void EffectsPopupWindow::SwitchTheme(UIColorTheme themeId, bool force) {
    const auto index = static_cast<size_t>(static_cast<int32_t>(themeId));
    const UIColors* next = index < themes.size() ? &themes[index] : &themes.front();
    if (next == colors && !force)
        return;
    colors = next;
    const UIColors& c = *colors;

    // Tooltips and button borders are drawn by toolkit windows of their own: they read the shared table.
    theme::plugin_map = theme::style_map{
        {theme_keys::tooltip_back_color, theme_style(c.tooltipBack)},
        {theme_keys::tooltip_border_color, theme_style(c.tooltipBorder)},
        {theme_keys::tooltip_font_color, theme_style(c.tooltipFont)},
        {theme_keys::tooltip_border_color_1, theme_style(c.tooltipBorder1)},
        {theme_keys::button_border_color_hover, theme_style(c.buttonBorderHover)},
        {theme_keys::button_border_color_focus, theme_style(c.buttonBorderFocus)},
        {theme_keys::input_selection_color, theme_style(c.inputSelection)},
    };

    get_root().set_background(c.windowBack);
    const image_stream icons[5] = {c.screenshotIcon, c.galleryIcon, c.exportIcon, c.prefIcon, c.logoIcon};
    for (int b = 0; b < 5; ++b) {
        nimbit::ui::theme& t = toolButtons[b].get_theme();
        t.set(theme_keys::button_color_normal, c.windowBack);
        t.set(theme_keys::button_color_hover, c.windowBack);
        t.set(theme_keys::button_back_image, icons[b]);
    }
    nimbit::ui::theme& news = newsBadge.get_theme();
    news.set(theme_keys::button_color_normal, c.windowBack);
    news.set(theme_keys::button_color_hover, c.windowBack);
    news.set(theme_keys::button_font_color, c.newsFont);
    news.set(theme_keys::button_back_image, c.newsIcon);

    searchIcon.set_background(c.windowBack);
    searchIcon.SetImage(c.searchIcon);
    searchField.set_background(c.inputBack);
    nimbit::ui::theme& input = searchField.get_theme();
    input.set(theme_keys::input_border_color, c.inputBorder);
    input.set(theme_keys::input_font_color, c.inputFont);
    input.set(theme_keys::input_font_default_text_color, c.inputDefaultText);
    searchField.set_default_text(SearchPlaceholder);

    shortcutsBar.set_background(c.panelBack);
    nimbit::ui::theme& bar = shortcutsBar.get_theme();
    bar.set(theme_keys::default_border_color, c.borderColor);
    bar.set(shortcuts_bar_keys::other_border_color, c.otherBorderColor);
    bar.set(shortcuts_bar_keys::separator_line_color, c.separatorLineColor);
    if (shortcutsShown)
        shortcutsBar.UpdateList(shortcuts, colors);

    listFrame.set_background(c.listBack);
    listContent.set_background(c.listBack);
    for (auto& row : rows)
        StyleRow(*row, c);
    for (HeaderSlot* h : {effectsHeader.get(), presetsHeader.get()})
        if (h != nullptr)
            StyleHeader(*h, c);
    scrollBar.SwitchTheme(colors);
    if (gallery)
        gallery->SetColors(colors);
    get_root().update(false);
}
