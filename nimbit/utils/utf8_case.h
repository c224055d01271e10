#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nimbit {

// Lower-cases UTF-8 text for comparing, across the Latin (Latin-1 Supplement, Extended-A, -B and
// Additional), Greek and Cyrillic scripts; final sigma folds to sigma. With strip_accents, letters
// lose their diacritics as well ("Ü" -> "u", "ß" -> "ss", "ά" -> "α") and combining marks are
// dropped, so decomposed text folds like precomposed text. Invalid bytes become U+FFFD, so the
// output is always valid UTF-8.
//
// When origins is given, it receives one entry per output byte plus one: the input offset of the
// character that byte came from, and last the input's size. An output range [a, b) then covers the
// input range [origins[a], origins[b]).
std::string utf8_fold(std::string_view text, bool strip_accents = false,
                      std::vector<uint32_t>* origins = nullptr);

// Appends one character as UTF-8; anything outside Unicode (or a lone surrogate) becomes U+FFFD.
void append_utf8(std::string& out, char32_t code_point);

} // namespace nimbit
