#pragma once

#include "nimbit/ui/native_file_browser.h"

#include <string>
#include <vector>

namespace nimbit::ui::cocoa {

// The file types a dialog accepts: each filter's pattern without its first two characters ("*.png"
// gives "png"), as written and in upper case, without repeats. Patterns too short to hold a type
// and the catch-all "*" add nothing.
std::vector<std::string> allowed_file_types(const std::vector<file_browser::file_filter>& filters);

} // namespace nimbit::ui::cocoa
