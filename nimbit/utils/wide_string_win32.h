#pragma once

// Text crosses into Windows as UTF-16: every path and label the code holds as UTF-8 is widened where
// it meets a W function, and what the system returns is narrowed back. Windows only.

#include <string>
#include <string_view>

namespace nimbit {

// Invalid UTF-8 bytes become U+FFFD, as the system's own conversion makes them.
std::wstring widen(std::string_view utf8);
// Unpaired surrogates become U+FFFD.
std::string narrow(std::wstring_view utf16);

} // namespace nimbit
