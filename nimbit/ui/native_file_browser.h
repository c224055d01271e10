#pragma once

#include "nimbit/filesystem/file_path.h"

#include <string>
#include <vector>

// The platform's file and folder dialogs. Each toolkit backend (offscreen, cocoa) defines these
// functions, like the other native_* seams; this header only fixes what the rest of the program calls.

namespace nimbit::ui {
class window;
} // namespace nimbit::ui

namespace nimbit::file_browser {

enum class dialog_type { open, save };

// One entry of the file-type list: a label such as "PNG files (*.png)" and its pattern "*.png".
// The accepted extensions are the pattern without its first two characters, in the given case and
// in upper case.
struct file_filter {
    std::string label;
    std::string pattern;
};

// Runs a modal open or save panel over parent (which may be null). The title is the panel's prompt.
// Open chooses files only, several when allow_multiple; save allows creating folders and starts
// with default_name in the name field. Returns the chosen paths, empty when cancelled.
std::vector<file_path> file_dialog(const ui::window* parent, dialog_type type, const std::string& title,
                                   const std::vector<file_filter>& filters, bool allow_multiple,
                                   const std::string& default_name);

// Runs a modal panel that chooses one folder, starting in start_folder when it is not empty.
// Returns the empty path when cancelled.
file_path folder_select_dialog(const ui::window* parent, const std::string& title,
                               const file_path& start_folder = {});

} // namespace nimbit::file_browser
