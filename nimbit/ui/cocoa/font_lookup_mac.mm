#include "nimbit/ui/cocoa/font_lookup.h"

namespace nimbit::ui::cocoa {

std::string installed_font_family(std::string_view requested) { return std::string(requested); }

} // namespace nimbit::ui::cocoa
