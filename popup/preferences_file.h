#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace nimbit {
class file_path;
}
struct PreferencesData;
struct EffectAlias;

// The settings file: a chunk file in the user's "Tarvelo" folder, one chunk per field:
//   1 theme (int), 2 shortcut choice (int), 3 capture folder (string), 4 full resolution (bool),
//   5 news time (long long), 7 custom key name (string), 8 custom key code (int),
//   9 ctrl, 10 opt, 11 shift, 12 cmd (int each), 13 recently used first (bool).
// Identifier 6 once held something else; it is never written and always skipped on reading, and no
// identifier is ever given a new meaning. The settings export writes the same chunks.

inline constexpr std::string_view SettingsFileName = "effects_settings";

// The bytes of the settings file for prefs.
std::vector<unsigned char> EncodePreferences(const PreferencesData& prefs);

// Reads settings bytes into prefs, chunk by chunk in file order. Fields whose chunk is missing keep
// their value; so do fixed-size fields whose chunk has the wrong size, and unknown identifiers are
// skipped. Strings end at their first zero byte. Returns false, touching nothing, when the bytes are
// not a settings file.
//
// A stored capture folder is taken only when it is an absolute path that names an existing folder;
// otherwise the record keeps the folder it had. A folder on a drive that is not mounted, or one
// deleted since, would make every capture fail silently, while the default folder is created on the
// next save.
bool DecodePreferences(const unsigned char* data, size_t size, PreferencesData& prefs);

// Reads folder/effects_settings into prefs; a missing or damaged file leaves prefs as it was.
bool LoadPreferences(PreferencesData& prefs, const nimbit::file_path& folder);

// What a read met besides the values it took; a settings import tells the user about both.
struct PreferencesReadReport {
    // Some chunk was not read whole: one ran past the end of the file, or a field's chunk had
    // another size than the field.
    bool damaged = false;
    // A capture folder was stored but not taken (see DecodePreferences).
    bool captureFolderRejected = false;
};
bool DecodePreferences(const unsigned char* data, size_t size, PreferencesData& prefs,
                       PreferencesReadReport& report);
bool LoadPreferences(PreferencesData& prefs, const nimbit::file_path& folder, PreferencesReadReport& report);

bool SettingsFileExists(const nimbit::file_path& folder);

// Writes folder/effects_settings (creating folder if needed), creates the capture folder so that a
// configured folder exists once saved, and with writeLists also writes the two search data files.
// Every file is replaced atomically. Returns false when anything could not be written; nothing is
// reported to the user.
bool SavePreferences(const PreferencesData& prefs, const std::vector<EffectAlias>& blacklist,
                     const std::vector<EffectAlias>& aliases, const std::vector<EffectAlias>& shortcuts,
                     const nimbit::file_path& folder, bool writeLists);
