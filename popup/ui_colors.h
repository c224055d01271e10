#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/image_stream.h"
#include "popup/ui_color_theme.h"

#include <initializer_list>
#include <string_view>
#include <vector>

namespace nimbit::ui {
class theme;
}

// The colours and icons of one colour theme, shared by pointer with every window of the plug-in.
// The popup builds one record per theme when it starts and pushes the current one into its widgets
// and into the toolkit's shared theme table when the theme changes.
struct UIColors {
    UIColorTheme theme = UIColorTheme::Dark;

    // Windows and panels.
    nimbit::vec4 windowBack;
    nimbit::vec4 panelBack;
    nimbit::vec4 borderColor;
    nimbit::vec4 otherBorderColor;
    nimbit::vec4 separatorLineColor;

    // Search field.
    nimbit::vec4 inputBack;
    nimbit::vec4 inputBorder;
    nimbit::vec4 inputFont;
    nimbit::vec4 inputDefaultText;
    nimbit::vec4 inputSelection;

    // List rows and headers.
    nimbit::vec4 listBack;
    nimbit::vec4 rowText;
    nimbit::vec4 rowSecondText;
    nimbit::vec4 matchText; // the matched part of a row's name, on the list background
    nimbit::vec4 effectsHeaderBack;
    nimbit::vec4 effectsHeaderText;
    nimbit::vec4 presetsHeaderBack;
    nimbit::vec4 presetsHeaderText;
    nimbit::vec4 noMatchesHeaderBack;
    nimbit::vec4 noMatchesHeaderText;

    // Scroll bar.
    nimbit::vec4 scrollTrack;
    nimbit::vec4 scrollThumb;
    nimbit::vec4 scrollThumbHover;

    // Shortcut buttons.
    nimbit::vec4 buttonFont;
    nimbit::vec4 buttonFontHover;
    nimbit::vec4 buttonFontPressed;
    nimbit::vec4 buttonFontNumbers;
    nimbit::vec4 buttonBackHover;
    nimbit::vec4 buttonBorderHover;
    nimbit::vec4 buttonBorderFocus;

    // Tooltips (shared by every window).
    nimbit::vec4 tooltipBack;
    nimbit::vec4 tooltipBorder;
    nimbit::vec4 tooltipBorder1;
    nimbit::vec4 tooltipFont;

    // Message popups, drop-downs and check boxes of the other windows.
    nimbit::vec4 messageBack;
    nimbit::vec4 messageFont;
    nimbit::vec4 messageButtonBack;
    nimbit::vec4 messageButtonBackHover;
    nimbit::vec4 dropDownBack;
    nimbit::vec4 dropDownBackHover;
    nimbit::vec4 dropDownFont;
    nimbit::vec4 checkBoxFont;
    nimbit::vec4 newsFont;

    // Icons.
    nimbit::ui::image_stream searchIcon;
    nimbit::ui::image_stream searchIconSmall;
    nimbit::ui::image_stream screenshotIcon;
    nimbit::ui::image_stream exportIcon;
    nimbit::ui::image_stream galleryIcon;
    nimbit::ui::image_stream prefIcon;
    nimbit::ui::image_stream logoIcon;
    nimbit::ui::image_stream checkBox;
    nimbit::ui::image_stream galleryPanelSwap;
    nimbit::ui::image_stream galleryContextIcon;
    nimbit::ui::image_stream galleryCopyIcon;
    nimbit::ui::image_stream galleryImportIcon;
    nimbit::ui::image_stream galleryRemoveIcon;
    nimbit::ui::image_stream gallerySaveIcon;
    nimbit::ui::image_stream galleryMaximizeIcon;
    nimbit::ui::image_stream galleryRestoreIcon;
    nimbit::ui::image_stream galleryPreviewFull;
    nimbit::ui::image_stream galleryPreviewFullMinus;
    nimbit::ui::image_stream prefRemove;
    nimbit::ui::image_stream prefMinus;
    nimbit::ui::image_stream dropDownArrow;
    nimbit::ui::image_stream newsIcon;
    nimbit::ui::image_stream warningIcon;
};

// The records of every colour theme, indexed by UIColorTheme.
std::vector<UIColors> BuildColorThemes();

// Row highlight colours: the same in every theme, so that presets and effects read apart at a glance.
inline constexpr nimbit::vec4 PresetHighlightColor{0.753f, 0.09f, 0.082f, 1.0f};
inline constexpr nimbit::vec4 EffectHighlightColor{0.0f, 0.443f, 0.737f, 1.0f};
// The matched part of a name on either highlight: a pale amber that reads as well as white there.
inline constexpr nimbit::vec4 MatchOnHighlightColor{1.0f, 0.878f, 0.486f, 1.0f};

// One theme key of a widget and the colour of the record that fills it.
struct ThemeColorKey {
    std::string_view key;
    nimbit::vec4 UIColors::*color;
};

// Writes each listed colour of `colours` under its key into the widget theme `t`.
void SetThemeColors(nimbit::ui::theme& t, UIColors const& colours, std::initializer_list<ThemeColorKey> keys);
