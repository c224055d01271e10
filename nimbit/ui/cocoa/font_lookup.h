#pragma once

#include <string>
#include <string_view>

// The installed font family that stands in for a family name. On macOS the name is used as given;
// under GNUstep on Linux the fonts this program names ("Arial", "Trebuchet MS", "tahoma") are
// usually missing, and fontconfig picks the installed face it considers equivalent (Liberation
// Sans for Arial, for instance).

namespace nimbit::ui::cocoa {

std::string installed_font_family(std::string_view requested);

} // namespace nimbit::ui::cocoa
