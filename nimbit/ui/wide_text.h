#pragma once

#include "nimbit/utils/utf8_case.h"

#include <string>
#include <string_view>

// Text controls edit strings of code points (one element per character, on every platform: a wchar_t
// holds only half of some characters on Windows) and hand UTF-8 to everything else.

namespace nimbit::ui {

// Malformed, overlong or surrogate sequences become U+FFFD; nothing is read past the input.
std::u32string utf8_to_wide(std::string_view utf8);
// Elements outside Unicode (or lone surrogates) become U+FFFD.
std::string wide_to_utf8(std::u32string_view wide);
using nimbit::append_utf8; // one encoder for the whole code base

} // namespace nimbit::ui
