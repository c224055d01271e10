// Names come from the host, from preset file names and from the keyboard: any bytes must fold to
// valid UTF-8, with byte origins that stay inside the input, and folding again changes nothing.
#include "fuzz/fuzz_support.h"
#include "nimbit/utils/utf8_case.h"

#include <vector>

namespace {

// Strict UTF-8: no overlong forms, no surrogates, nothing past U+10FFFF.
bool valid_utf8(std::string_view text) {
    for (size_t i = 0; i < text.size();) {
        const auto b = [&](size_t k) {
            return static_cast<unsigned char>(text[k]);
        };
        const unsigned char lead = b(i);
        const size_t n = lead < 0x80   ? 1
                         : lead < 0xC2 ? 0
                         : lead < 0xE0 ? 2
                         : lead < 0xF0 ? 3
                         : lead < 0xF5 ? 4
                                       : 0;
        if (n == 0 || i + n > text.size())
            return false;
        for (size_t k = 1; k < n; ++k)
            if ((b(i + k) & 0xC0) != 0x80)
                return false;
        if ((lead == 0xE0 && b(i + 1) < 0xA0) || (lead == 0xED && b(i + 1) >= 0xA0) ||
            (lead == 0xF0 && b(i + 1) < 0x90) || (lead == 0xF4 && b(i + 1) >= 0x90))
            return false;
        i += n;
    }
    return true;
}

} // namespace

FUZZ_TARGET() {
    const std::string_view text = in.text();
    std::vector<uint32_t> origins;
    for (const bool plain : {false, true}) {
        const std::string folded = nimbit::utf8_fold(text, plain, &origins);
        check(valid_utf8(folded));
        check(origins.size() == folded.size() + 1 && origins.back() == text.size());
        for (size_t i = 0; i + 1 < origins.size(); ++i)
            check(origins[i] <= origins[i + 1] && origins[i] < text.size());
        check(nimbit::utf8_fold(folded, plain) == folded);
        // Stripping accents sees through case: lowering first changes nothing.
        check(!plain || nimbit::utf8_fold(nimbit::utf8_fold(text), true) == folded);
    }
}
