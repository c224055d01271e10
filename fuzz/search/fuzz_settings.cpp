// The settings file comes from disk and, through settings import, from other machines. Any bytes
// must read without fault, and whatever the record took must be written and read back unchanged.
#include "fuzz/fuzz_support.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"

#include <vector>

FUZZ_TARGET() {
    PreferencesData prefs;
    DecodePreferences(in.data, in.size, prefs);
    prefs.GenerateShortcutText();
    // Every field is written, so a field lost on the way back changes the second encoding.
    const std::vector<unsigned char> bytes = EncodePreferences(prefs);
    PreferencesData again;
    check(DecodePreferences(bytes.data(), bytes.size(), again));
    check(EncodePreferences(again) == bytes);
}
