#pragma once

#include <string>

// Hand-offs to the platform's shell. Each toolkit backend (offscreen, cocoa) defines these functions,
// like the other native_* seams; this header only fixes what the rest of the program calls.

namespace nimbit {
class file_path;
} // namespace nimbit

namespace nimbit::file_shell {

// Shows the item in the platform's file viewer, selected when select is true (otherwise the folder
// itself is opened). Returns whether the viewer could be asked.
bool show_in_explorer(const file_path& path, bool select);
// Opens a URL with the platform's default handler. Returns whether the handler could be asked.
bool open_link(const std::string& url);

} // namespace nimbit::file_shell
