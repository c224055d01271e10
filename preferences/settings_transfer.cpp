#include "preferences/settings_transfer.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/known_folders.h"
#include "nimbit/filesystem/nimpacker.h"
#include "nimbit/ui/native_file_browser.h"
#include "nimbit/ui/window.h"
#include "nimbit/utils/timer.h"
#include "popup/parts/effects_message_popup.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"

#include <cstdint>
#include <string_view>

using nimbit::file_path;
namespace file_browser = nimbit::file_browser;

namespace {

const file_browser::file_filter SettingsFilter{"Quillo Settings File", "*.kvs"};

// The settings files are a few kilobytes; anything near this is not an export of ours.
constexpr uint64_t ImportSizeLimit = 16ull << 20;

file_path StartingFolder(const TransferContext& context) {
    return TransferFolder(context.clock ? context.clock()
                                        : static_cast<uint64_t>(nimbit::timer::get_current_microseconds()));
}

file_path ChooseFile(const nimbit::ui::window* parent, file_browser::dialog_type type,
                     const std::string& title, const std::string& suggested) {
    const std::vector<file_path> chosen =
        file_browser::file_dialog(parent, type, title, {SettingsFilter}, false, suggested);
    return chosen.empty() ? file_path() : chosen.front();
}

// Whether the settings were written into folder. SavePreferences also fails when it cannot create the
// capture folder, which is no reason to refuse an export: that folder is checked on import.
bool HoldsSettingsFiles(const file_path& folder) {
    for (std::string_view name : {SettingsFileName, SearchDataFileName, ShortcutsDataFileName})
        if (nimbit::file_stats(folder.append(name)).type != 0)
            return false;
    return true;
}

void Report(const TransferContext& context, const std::string& title, const std::string& message) {
    if (context.report)
        context.report(title, message);
}

} // namespace

file_path TransferFolder(uint64_t microseconds) {
    const file_path userData = nimbit::get_user_data_path();
    if (userData.empty())
        return {};
    return userData.append("Tarvelo/quillo_settings_" + std::to_string(microseconds));
}

bool ExportPreferences(const TransferredSettings& current, const TransferContext& context) {
    const file_path target = ChooseFile(context.parent, file_browser::dialog_type::save,
                                        "Select a file to save to", "quillo_settings.kvs");
    if (target.empty())
        return false;

    const std::string failed = "Failed to Save";
    const file_path folder = StartingFolder(context);
    // Another export started in the same microsecond owns that folder: leave it alone.
    if (!folder.empty() && nimbit::file_stats(folder).exists) {
        Report(context, failed, "There appears to be another export process running.");
        return false;
    }
    if (folder.empty() || !nimbit::make_dir(folder)) {
        Report(context, failed, "Unable to save current settings to disk.");
        return false;
    }

    bool written = false;
    SavePreferences(current.prefs, current.blacklist, current.aliases, current.shortcuts, folder, true);
    if (!HoldsSettingsFiles(folder))
        Report(context, failed, "Unable to save current settings to disk.");
    // The pack is written beside the target and renamed into place, so a failure keeps any
    // earlier file of that name.
    else if (nimbit::nimpacker::pack_files(folder, target) != nimbit::nimpacker::success)
        Report(context, failed, "Unable create the export file in the directory you specified.");
    else
        written = true;
    nimbit::remove_dir(folder);
    if (written)
        Report(context, "Export Successful", "Preferences exported successfully.");
    return written;
}

ImportResult ImportPreferences(const PreferencesData& current, const std::vector<EffectData>& catalogue,
                               const TransferContext& context) {
    ImportResult result;
    const file_path source =
        ChooseFile(context.parent, file_browser::dialog_type::open, "Select a file to load from", "");
    if (source.empty())
        return result;

    const std::string failed = "Failed to Load";
    // A folder left by an import that never finished would mix its files with this pack's; it
    // goes, without following any link in it.
    const file_path folder = StartingFolder(context);
    if (folder.empty() || (nimbit::file_stats(folder).exists && !nimbit::remove_dir(folder)) ||
        !nimbit::make_dir(folder)) {
        Report(context, failed, "Unable to import settings from the file.");
        return result;
    }
    if (nimbit::nimpacker::unpack_files(source, folder, ImportSizeLimit) != nimbit::nimpacker::success) {
        nimbit::remove_dir(folder);
        Report(context, failed, "Unable read from the preferences file you selected.");
        return result;
    }

    // Read over a copy, exactly as the settings are loaded at start-up: fields the file lacks keep
    // their current values.
    TransferredSettings& imported = result.settings;
    imported.prefs = current;
    PreferencesReadReport read;
    result.incomplete = !LoadPreferences(imported.prefs, folder, read) || read.damaged;
    if (read.captureFolderRejected) {
        // Captures must land somewhere that exists on this machine.
        imported.prefs.captureFolder = PreferencesData().captureFolder;
        nimbit::make_dir(file_path(imported.prefs.captureFolder));
        result.captureFolderReset = true;
    }
    ReadSearchDataFile(imported.blacklist, imported.aliases, catalogue, folder);
    ReadShortcutsDataFile(imported.shortcuts, catalogue, folder);
    nimbit::remove_dir(folder);
    result.imported = true;

    if (result.incomplete)
        Report(context, "Import Info",
               "There was a problem with the preferences file, some preferences may have not been imported "
               "correctly.");
    else
        Report(context, "Import Successful", "Preferences imported successfully.");
    if (result.captureFolderReset)
        Report(context, "Import Info",
               "The imported gallery path was not found in the local machine, so it was reset to default.");
    return result;
}

TransferReport WarningPopupReport(nimbit::ui::window* parent, const UIColors* colours) {
    return [parent, colours](const std::string& title, const std::string& message) {
        nimbit::ivec2 at{0, 0};
        if (parent != nullptr) {
            const nimbit::ivec4 r = parent->get_rect();
            at = {r.x + (r.w - MessagePopupSize.x) / 2, r.y + (r.h - MessagePopupSize.y) / 2};
        }
        EffectsWarningPopup popup(parent, at, colours, {.title = title, .message = message});
        popup.Run();
    };
}
