#pragma once

#include <string>
#include <string_view>

namespace nimbit {

// ASCII lower-casing: only A-Z change, so UTF-8 sequences (bytes >= 0x80) pass through intact.
std::string string_lower(std::string_view text);
// The text without leading and trailing ASCII white space (space, tab, CR, LF, FF, VT).
std::string trim(std::string_view text);
// Converts Mac OS Roman text, as older host versions hand out names, to UTF-8.
std::string macroman_to_utf8(std::string_view text);

} // namespace nimbit
