#pragma once

#include "popup/ui_color_theme.h"

#include <cstdint>
#include <string>

// The user's settings, kept by the host-side controller for the whole session and edited in place by
// the preferences window. Saved as the chunk file "effects_settings" (see preferences_file.h).
struct PreferencesData {
    PreferencesData();

    UIColorTheme theme = UIColorTheme::Dark;
    // Index into the shortcut choices: 0 "Ctrl + Space", 1 "Shift + Space", 2 "Ctrl + Tab",
    // 3 "Shift + Tab", 4 "Custom".
    int32_t shortcutChoice = 0;
    std::string captureFolder; // where screenshots go; defaults to Documents/Tarvelo/Quillo/Capture
    bool fullResolutionScreenshots = false;
    int64_t newsTime = 0; // seconds; when the user last acknowledged the news badge
    int32_t customKeyCode = -1;
    // Modifiers of the custom shortcut. Flags, but kept 32 bits wide: that is how they are stored.
    int32_t customCtrl = 0;
    int32_t customOpt = 0;
    int32_t customShift = 0;
    int32_t customCmd = 0;
    std::string customKeyName; // the key's display name from the preferences' shortcut editor
    // The search lists the entries applied often and lately first (see UsageRecord).
    bool recentFirst = false;
    // The search ignores accents: "uber" finds "Überlagern", "cafe" finds "Café".
    bool ignoreAccents = false;

    // "CTRL + ", "OPT + ", "SHIFT + ", "CMD + " for each modifier set, in that order, then the key name.
    std::string GenerateShortcutText() const;
};

// The current time in whole seconds, as the news time holds it.
int64_t CurrentNewsTime();
