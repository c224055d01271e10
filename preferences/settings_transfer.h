#pragma once

#include "nimbit/filesystem/file_path.h"
#include "popup/effect_alias.h"
#include "popup/preferences_data.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace nimbit::ui {
class window;
}
struct EffectData;
struct UIColors;

// Moving the settings between machines: the settings file and the two search data files, written
// into a temporary folder under the user's data folder and packed into one file the user chooses
// (".kvs"), and back. Neither direction touches the user's settings files: an import hands back the
// settings it read, which the caller puts in effect and saves as usual.

// Tells the user how a transfer went: a title and a message. The preferences window shows each in a
// warning popup.
using TransferReport = std::function<void(const std::string& title, const std::string& message)>;

// What a transfer runs with besides the settings.
struct TransferContext {
    TransferReport report;
    const nimbit::ui::window* parent = nullptr; // of the file dialogs
    // The moment the transfer starts, in microseconds, which names its temporary folder; the system
    // clock when empty.
    std::function<uint64_t()> clock;
};

// Where a transfer started at that moment keeps its files: "Tarvelo/quillo_settings_<microseconds>"
// under the user's data folder. Empty when there is no user data folder.
nimbit::file_path TransferFolder(uint64_t microseconds);

// The record and the three lists, as a transfer carries them.
struct TransferredSettings {
    PreferencesData prefs;
    std::vector<EffectAlias> blacklist, aliases, shortcuts;
};

// Asks for the file to write through a save dialog, then writes it. Returns whether the file was
// written; every outcome but a cancelled dialog is reported.
bool ExportPreferences(const TransferredSettings& current, const TransferContext& context);

struct ImportResult {
    // False when the dialog was cancelled or nothing could be read; then the rest means nothing and
    // the caller keeps its settings.
    bool imported = false;
    // The settings file was missing from the pack or damaged: whatever it lacked kept the current
    // value.
    bool incomplete = false;
    // The imported capture folder does not exist here and was replaced by the default one, which
    // now exists.
    bool captureFolderReset = false;
    // The current record with the imported values over it, and the imported lists (names not in
    // the catalogue dropped).
    TransferredSettings settings;
};

// Asks for a file through an open dialog and reads the settings it holds on top of current. Every
// outcome but a cancelled dialog is reported.
ImportResult ImportPreferences(const PreferencesData& current, const std::vector<EffectData>& catalogue,
                               const TransferContext& context);

// A report that shows each message in a warning popup centred on parent (or at the origin without
// one), in colours, and waits for the user to close it.
TransferReport WarningPopupReport(nimbit::ui::window* parent, const UIColors* colours);
