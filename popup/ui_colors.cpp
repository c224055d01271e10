#include "popup/ui_colors.h"

#include "assets/icons.h"
#include "nimbit/ui/widget_themes.h"

namespace {

using nimbit::vec4;

constexpr vec4 Grey(float level, float alpha = 1.0f) {
    return {level, level, level, alpha};
}

nimbit::ui::image_stream Stream(const quillo::embedded_image& image) {
    return {image.data, static_cast<uint32_t>(image.size), image.frames, image.scale};
}

struct ThemedColor {
    vec4 UIColors::*field;
    vec4 dark;
    vec4 light;
};

// Dark: the host's panels are a dark charcoal; the popup sits a shade above them so it reads as a
// floating tool, with the same accent blue the host uses for selection. Light: a paper-white variant
// for bright rooms; text stays near black and the header tints stay pale so the highlight colours
// keep their contrast.
const ThemedColor Colors[] = {
    // Windows and panels.
    {&UIColors::windowBack, Grey(0.149f), Grey(0.925f)},
    {&UIColors::panelBack, Grey(0.149f), Grey(0.925f)},
    {&UIColors::borderColor, Grey(0.298f), Grey(0.690f)},
    {&UIColors::otherBorderColor, Grey(0.231f), Grey(0.780f)},
    {&UIColors::separatorLineColor, Grey(0.212f), Grey(0.820f)},
    // Search field.
    {&UIColors::inputBack, Grey(0.11f), Grey(1.0f)},
    {&UIColors::inputBorder, Grey(0.263f), Grey(0.690f)},
    {&UIColors::inputFont, Grey(0.91f), Grey(0.11f)},
    {&UIColors::inputDefaultText, Grey(0.447f), Grey(0.502f)},
    {&UIColors::inputSelection, {0.0f, 0.443f, 0.737f, 1.0f}, {0.6f, 0.784f, 0.953f, 1.0f}},
    // List rows and headers.
    {&UIColors::listBack, Grey(0.125f), Grey(0.973f)},
    {&UIColors::rowText, Grey(0.827f), Grey(0.133f)},
    {&UIColors::rowSecondText, Grey(0.502f), Grey(0.42f)},
    {&UIColors::matchText, {1.0f, 0.784f, 0.341f, 1.0f}, {0.69f, 0.325f, 0.0f, 1.0f}},
    {&UIColors::effectsHeaderBack, {0.11f, 0.18f, 0.235f, 1.0f}, {0.859f, 0.914f, 0.957f, 1.0f}},
    {&UIColors::effectsHeaderText, {0.49f, 0.71f, 0.871f, 1.0f}, {0.0f, 0.329f, 0.557f, 1.0f}},
    {&UIColors::presetsHeaderBack, {0.227f, 0.11f, 0.11f, 1.0f}, {0.965f, 0.875f, 0.871f, 1.0f}},
    {&UIColors::presetsHeaderText, {0.898f, 0.529f, 0.514f, 1.0f}, {0.588f, 0.063f, 0.055f, 1.0f}},
    {&UIColors::noMatchesHeaderBack, Grey(0.18f), Grey(0.878f)},
    {&UIColors::noMatchesHeaderText, Grey(0.6f), Grey(0.38f)},
    // Scroll bar.
    {&UIColors::scrollTrack, Grey(0.125f), Grey(0.933f)},
    {&UIColors::scrollThumb, Grey(0.294f), Grey(0.741f)},
    {&UIColors::scrollThumbHover, Grey(0.4f), Grey(0.620f)},
    // Shortcut buttons.
    {&UIColors::buttonFont, Grey(0.784f), Grey(0.227f)},
    {&UIColors::buttonFontHover, Grey(1.0f), Grey(0.0f)},
    {&UIColors::buttonFontPressed, {0.357f, 0.678f, 0.902f, 1.0f}, {0.0f, 0.373f, 0.639f, 1.0f}},
    {&UIColors::buttonFontNumbers, Grey(0.447f), Grey(0.541f)},
    {&UIColors::buttonBackHover, Grey(0.216f), Grey(0.855f)},
    {&UIColors::buttonBorderHover, Grey(0.6f), Grey(0.4f)},
    {&UIColors::buttonBorderFocus, {0.255f, 0.584f, 0.753f, 1.0f}, {0.0f, 0.443f, 0.737f, 1.0f}},
    // Tooltips (shared by every window).
    {&UIColors::tooltipBack, Grey(0.106f), Grey(1.0f)},
    {&UIColors::tooltipBorder, Grey(0.31f), Grey(0.69f)},
    {&UIColors::tooltipBorder1, Grey(0.0f), Grey(0.8f)},
    {&UIColors::tooltipFont, Grey(0.8f), Grey(0.2f)},
    // Message popups, drop-downs and check boxes of the other windows.
    {&UIColors::messageBack, {0.114f, 0.118f, 0.133f, 1.0f}, Grey(0.949f)},
    {&UIColors::messageFont, Grey(0.878f), Grey(0.133f)},
    {&UIColors::messageButtonBack, Grey(0.2f), Grey(0.867f)},
    {&UIColors::messageButtonBackHover, Grey(0.267f), Grey(0.808f)},
    {&UIColors::dropDownBack, Grey(0.11f), Grey(1.0f)},
    {&UIColors::dropDownBackHover, Grey(0.173f), Grey(0.933f)},
    {&UIColors::dropDownFont, Grey(0.878f), Grey(0.133f)},
    {&UIColors::checkBoxFont, Grey(0.878f), Grey(0.133f)},
    {&UIColors::newsFont, Grey(1.0f), Grey(1.0f)},
};

struct ThemedIcon {
    nimbit::ui::image_stream UIColors::*field;
    const quillo::embedded_image* dark;
    const quillo::embedded_image* light;
};

const ThemedIcon Icons[] = {
    {&UIColors::searchIcon, &SearchIconDark, &SearchIconLight},
    {&UIColors::searchIconSmall, &SearchIconSmallDark, &SearchIconSmallLight},
    {&UIColors::screenshotIcon, &ScreenshotIconDark, &ScreenshotIconLight},
    {&UIColors::exportIcon, &ExportIconDark, &ExportIconLight},
    {&UIColors::galleryIcon, &GalleryIconDark, &GalleryIconLight},
    {&UIColors::prefIcon, &PrefIconDark, &PrefIconLight},
    {&UIColors::logoIcon, &LogoIconDark, &LogoIconLight},
    {&UIColors::checkBox, &CheckBoxDark, &CheckBoxLight},
    {&UIColors::galleryPanelSwap, &GalleryPanelSwapDark, &GalleryPanelSwapLight},
    {&UIColors::galleryContextIcon, &GalleryContextIconDark, &GalleryContextIconLight},
    {&UIColors::galleryCopyIcon, &GalleryCopyIconDark, &GalleryCopyIconLight},
    {&UIColors::galleryImportIcon, &GalleryImportIconDark, &GalleryImportIconLight},
    {&UIColors::galleryRemoveIcon, &GalleryRemoveIconDark, &GalleryRemoveIconLight},
    {&UIColors::gallerySaveIcon, &GallerySaveIconDark, &GallerySaveIconLight},
    {&UIColors::galleryMaximizeIcon, &GalleryMaximizeIconDark, &GalleryMaximizeIconLight},
    {&UIColors::galleryRestoreIcon, &GalleryRestoreIconDark, &GalleryRestoreIconLight},
    {&UIColors::galleryPreviewFull, &GalleryPreviewFullDark, &GalleryPreviewFullLight},
    {&UIColors::galleryPreviewFullMinus, &GalleryPreviewFullMinusDark, &GalleryPreviewFullMinusLight},
    {&UIColors::prefRemove, &PrefRemoveDark, &PrefRemoveLight},
    {&UIColors::prefMinus, &PrefMinusDark, &PrefMinusLight},
    {&UIColors::dropDownArrow, &DropDownArrowDark, &DropDownArrowLight},
    {&UIColors::newsIcon, &NewsIcon, &NewsIcon},
    {&UIColors::warningIcon, &popupWarningIcon, &popupWarningIcon},
};

UIColors ColorsOf(UIColorTheme theme) {
    const bool dark = theme == UIColorTheme::Dark;
    UIColors c;
    c.theme = theme;
    for (const ThemedColor& t : Colors)
        c.*t.field = dark ? t.dark : t.light;
    for (const ThemedIcon& i : Icons)
        c.*i.field = Stream(dark ? *i.dark : *i.light);
    return c;
}

} // namespace

std::vector<UIColors> BuildColorThemes() {
    std::vector<UIColors> themes;
    themes.push_back(ColorsOf(UIColorTheme::Dark));
    themes.push_back(ColorsOf(UIColorTheme::Light));
    return themes;
}

void SetThemeColors(nimbit::ui::theme& t, UIColors const& colours,
                    std::initializer_list<ThemeColorKey> keys) {
    for (const ThemeColorKey& k : keys)
        t.set(k.key, colours.*k.color);
}
