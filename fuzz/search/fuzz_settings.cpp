// The settings file comes from disk and, through settings import, from other machines. Any bytes
// must read without fault, and whatever the record took must be written and read back unchanged.
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"

#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    PreferencesData prefs;
    DecodePreferences(data, size, prefs);
    prefs.GenerateShortcutText();

    const std::vector<unsigned char> bytes = EncodePreferences(prefs);
    PreferencesData again;
    if (!DecodePreferences(bytes.data(), bytes.size(), again))
        std::abort();
    if (again.theme != prefs.theme || again.shortcutChoice != prefs.shortcutChoice ||
        again.captureFolder != prefs.captureFolder ||
        again.fullResolutionScreenshots != prefs.fullResolutionScreenshots ||
        again.newsTime != prefs.newsTime || again.customKeyCode != prefs.customKeyCode ||
        again.customCtrl != prefs.customCtrl || again.customOpt != prefs.customOpt ||
        again.customShift != prefs.customShift || again.customCmd != prefs.customCmd ||
        again.customKeyName != prefs.customKeyName)
        std::abort();
    return 0;
}
