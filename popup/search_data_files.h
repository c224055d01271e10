#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nimbit {
class file_path;
}
struct EffectData;
struct EffectAlias;
class CatalogueIndex;

// The user's search vocabulary, two hand-editable UTF-8 text files beside the settings file:
//
//   effects_search.txt     "-Name" blacklists; "Name" is a favorite; "alias = Name" an alias;
//                          either of the last two may end in " # Other Name" to apply Other instead.
//   effects_shortcuts.txt  "label = Name", one line per occupied slot, in slot order.
//
// Names are display names; reading compares them case-insensitively with the catalogue and drops
// lines naming nothing in it, so the next save drops them from the file too.

inline constexpr std::string_view SearchDataFileName = "effects_search.txt";
inline constexpr std::string_view ShortcutsDataFileName = "effects_shortcuts.txt";

// Parses the text of effects_search.txt, appending to the two lists.
void ParseSearchData(std::string_view text, const CatalogueIndex& catalogue,
                     std::vector<EffectAlias>& blacklist, std::vector<EffectAlias>& aliases);
// Parses the text of effects_shortcuts.txt into exactly nine slots; lines after the ninth taken are
// ignored.
void ParseShortcutsData(std::string_view text, const CatalogueIndex& catalogue,
                        std::vector<EffectAlias>& shortcuts);

std::string FormatSearchData(const std::vector<EffectAlias>& blacklist,
                             const std::vector<EffectAlias>& aliases);
std::string FormatShortcutsData(const std::vector<EffectAlias>& shortcuts);

// The folder "Tarvelo" under the user's data folder, where everything is written.
nimbit::file_path UserSettingsFolder();
// The folder to read fileName from: the user's folder when the user has that file, otherwise the
// machine-wide one, whose file seeds users who have none of their own.
nimbit::file_path ChooseReadFolder(std::string_view fileName);

// Read folder/effects_search.txt and folder/effects_shortcuts.txt. The lists are emptied first; a
// missing or unreadable file leaves empty lists (nine empty slots).
void ReadSearchDataFile(std::vector<EffectAlias>& blacklist, std::vector<EffectAlias>& aliases,
                        const std::vector<EffectData>& catalogue, const nimbit::file_path& folder);
void ReadShortcutsDataFile(std::vector<EffectAlias>& shortcuts, const std::vector<EffectData>& catalogue,
                           const nimbit::file_path& folder);

// Writes both files into folder, each atomically (a reader sees the old file or the new one).
// Returns false when either could not be written.
bool WriteSearchDataFiles(const std::vector<EffectAlias>& blacklist, const std::vector<EffectAlias>& aliases,
                          const std::vector<EffectAlias>& shortcuts, const nimbit::file_path& folder);
