#include "popup/ui_colors.h"

#include "assets/icons.h"

namespace {

using nimbit::vec4;

constexpr vec4 Grey(float level, float alpha = 1.0f) {
    return {level, level, level, alpha};
}

nimbit::ui::image_stream Stream(const quillo::embedded_image& image) {
    return {image.data, static_cast<uint32_t>(image.size), image.frames, image.scale};
}

// The host's panels are a dark charcoal; the popup sits a shade above them so it reads as a floating
// tool, with the same accent blue the host uses for selection.
UIColors DarkColors() {
    UIColors c;
    c.theme = UIColorTheme::Dark;
    c.windowBack = Grey(0.149f);
    c.panelBack = Grey(0.149f);
    c.borderColor = Grey(0.298f);
    c.otherBorderColor = Grey(0.231f);
    c.separatorLineColor = Grey(0.212f);
    c.inputBack = Grey(0.11f);
    c.inputBorder = Grey(0.263f);
    c.inputFont = Grey(0.91f);
    c.inputDefaultText = Grey(0.447f);
    c.inputSelection = {0.0f, 0.443f, 0.737f, 1.0f};
    c.listBack = Grey(0.125f);
    c.rowText = Grey(0.827f);
    c.rowSecondText = Grey(0.502f);
    c.effectsHeaderBack = {0.11f, 0.18f, 0.235f, 1.0f};
    c.effectsHeaderText = {0.49f, 0.71f, 0.871f, 1.0f};
    c.presetsHeaderBack = {0.227f, 0.11f, 0.11f, 1.0f};
    c.presetsHeaderText = {0.898f, 0.529f, 0.514f, 1.0f};
    c.noMatchesHeaderBack = Grey(0.18f);
    c.noMatchesHeaderText = Grey(0.6f);
    c.scrollTrack = Grey(0.125f);
    c.scrollThumb = Grey(0.294f);
    c.scrollThumbHover = Grey(0.4f);
    c.buttonFont = Grey(0.784f);
    c.buttonFontHover = Grey(1.0f);
    c.buttonFontPressed = {0.357f, 0.678f, 0.902f, 1.0f};
    c.buttonFontNumbers = Grey(0.447f);
    c.buttonBackHover = Grey(0.216f);
    c.buttonBorderHover = Grey(0.6f);
    c.buttonBorderFocus = {0.255f, 0.584f, 0.753f, 1.0f};
    c.tooltipBack = Grey(0.106f);
    c.tooltipBorder = Grey(0.31f);
    c.tooltipBorder1 = Grey(0.0f);
    c.tooltipFont = Grey(0.8f);
    c.messageBack = {0.114f, 0.118f, 0.133f, 1.0f};
    c.messageFont = Grey(0.878f);
    c.messageButtonBack = Grey(0.2f);
    c.messageButtonBackHover = Grey(0.267f);
    c.dropDownBack = Grey(0.11f);
    c.dropDownBackHover = Grey(0.173f);
    c.dropDownFont = Grey(0.878f);
    c.checkBoxFont = Grey(0.878f);
    c.newsFont = Grey(1.0f);

    c.searchIcon = Stream(SearchIconDark);
    c.searchIconSmall = Stream(SearchIconSmallDark);
    c.screenshotIcon = Stream(ScreenshotIconDark);
    c.exportIcon = Stream(ExportIconDark);
    c.galleryIcon = Stream(GalleryIconDark);
    c.prefIcon = Stream(PrefIconDark);
    c.logoIcon = Stream(LogoIconDark);
    c.checkBox = Stream(CheckBoxDark);
    c.galleryPanelSwap = Stream(GalleryPanelSwapDark);
    c.galleryContextIcon = Stream(GalleryContextIconDark);
    c.galleryCopyIcon = Stream(GalleryCopyIconDark);
    c.galleryImportIcon = Stream(GalleryImportIconDark);
    c.galleryRemoveIcon = Stream(GalleryRemoveIconDark);
    c.gallerySaveIcon = Stream(GallerySaveIconDark);
    c.galleryMaximizeIcon = Stream(GalleryMaximizeIconDark);
    c.galleryRestoreIcon = Stream(GalleryRestoreIconDark);
    c.galleryPreviewFull = Stream(GalleryPreviewFullDark);
    c.galleryPreviewFullMinus = Stream(GalleryPreviewFullMinusDark);
    c.prefRemove = Stream(PrefRemoveDark);
    c.prefMinus = Stream(PrefMinusDark);
    c.dropDownArrow = Stream(DropDownArrowDark);
    c.newsIcon = Stream(NewsIcon);
    c.warningIcon = Stream(popupWarningIcon);
    return c;
}

// A paper-white variant for bright rooms: text stays near black and the header tints stay pale so the
// highlight colours keep their contrast.
UIColors LightColors() {
    UIColors c;
    c.theme = UIColorTheme::Light;
    c.windowBack = Grey(0.925f);
    c.panelBack = Grey(0.925f);
    c.borderColor = Grey(0.690f);
    c.otherBorderColor = Grey(0.780f);
    c.separatorLineColor = Grey(0.820f);
    c.inputBack = Grey(1.0f);
    c.inputBorder = Grey(0.690f);
    c.inputFont = Grey(0.11f);
    c.inputDefaultText = Grey(0.502f);
    c.inputSelection = {0.6f, 0.784f, 0.953f, 1.0f};
    c.listBack = Grey(0.973f);
    c.rowText = Grey(0.133f);
    c.rowSecondText = Grey(0.42f);
    c.effectsHeaderBack = {0.859f, 0.914f, 0.957f, 1.0f};
    c.effectsHeaderText = {0.0f, 0.329f, 0.557f, 1.0f};
    c.presetsHeaderBack = {0.965f, 0.875f, 0.871f, 1.0f};
    c.presetsHeaderText = {0.588f, 0.063f, 0.055f, 1.0f};
    c.noMatchesHeaderBack = Grey(0.878f);
    c.noMatchesHeaderText = Grey(0.38f);
    c.scrollTrack = Grey(0.933f);
    c.scrollThumb = Grey(0.741f);
    c.scrollThumbHover = Grey(0.620f);
    c.buttonFont = Grey(0.227f);
    c.buttonFontHover = Grey(0.0f);
    c.buttonFontPressed = {0.0f, 0.373f, 0.639f, 1.0f};
    c.buttonFontNumbers = Grey(0.541f);
    c.buttonBackHover = Grey(0.855f);
    c.buttonBorderHover = Grey(0.4f);
    c.buttonBorderFocus = {0.0f, 0.443f, 0.737f, 1.0f};
    c.tooltipBack = Grey(1.0f);
    c.tooltipBorder = Grey(0.69f);
    c.tooltipBorder1 = Grey(0.8f);
    c.tooltipFont = Grey(0.2f);
    c.messageBack = Grey(0.949f);
    c.messageFont = Grey(0.133f);
    c.messageButtonBack = Grey(0.867f);
    c.messageButtonBackHover = Grey(0.808f);
    c.dropDownBack = Grey(1.0f);
    c.dropDownBackHover = Grey(0.933f);
    c.dropDownFont = Grey(0.133f);
    c.checkBoxFont = Grey(0.133f);
    c.newsFont = Grey(1.0f);

    c.searchIcon = Stream(SearchIconLight);
    c.searchIconSmall = Stream(SearchIconSmallLight);
    c.screenshotIcon = Stream(ScreenshotIconLight);
    c.exportIcon = Stream(ExportIconLight);
    c.galleryIcon = Stream(GalleryIconLight);
    c.prefIcon = Stream(PrefIconLight);
    c.logoIcon = Stream(LogoIconLight);
    c.checkBox = Stream(CheckBoxLight);
    c.galleryPanelSwap = Stream(GalleryPanelSwapLight);
    c.galleryContextIcon = Stream(GalleryContextIconLight);
    c.galleryCopyIcon = Stream(GalleryCopyIconLight);
    c.galleryImportIcon = Stream(GalleryImportIconLight);
    c.galleryRemoveIcon = Stream(GalleryRemoveIconLight);
    c.gallerySaveIcon = Stream(GallerySaveIconLight);
    c.galleryMaximizeIcon = Stream(GalleryMaximizeIconLight);
    c.galleryRestoreIcon = Stream(GalleryRestoreIconLight);
    c.galleryPreviewFull = Stream(GalleryPreviewFullLight);
    c.galleryPreviewFullMinus = Stream(GalleryPreviewFullMinusLight);
    c.prefRemove = Stream(PrefRemoveLight);
    c.prefMinus = Stream(PrefMinusLight);
    c.dropDownArrow = Stream(DropDownArrowLight);
    c.newsIcon = Stream(NewsIcon);
    c.warningIcon = Stream(popupWarningIcon);
    return c;
}

} // namespace

std::vector<UIColors> BuildColorThemes() {
    std::vector<UIColors> themes;
    themes.push_back(DarkColors());
    themes.push_back(LightColors());
    return themes;
}
