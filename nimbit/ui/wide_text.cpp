#include "nimbit/ui/wide_text.h"

namespace nimbit::ui {

namespace {
constexpr char32_t replacement = 0xFFFD;

bool is_scalar(char32_t c) {
    return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF);
}
} // namespace

std::u32string utf8_to_wide(std::string_view s) {
    std::u32string out;
    out.reserve(s.size());
    size_t i = 0;
    while (i < s.size()) {
        const auto lead = static_cast<unsigned char>(s[i]);
        int extra = 0;
        char32_t c = 0, min = 0;
        if (lead < 0x80) {
            out += static_cast<char32_t>(lead);
            ++i;
            continue;
        } else if ((lead & 0xE0) == 0xC0) {
            extra = 1, c = lead & 0x1F, min = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            extra = 2, c = lead & 0x0F, min = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            extra = 3, c = lead & 0x07, min = 0x10000;
        } else {
            out += static_cast<char32_t>(replacement);
            ++i;
            continue;
        }
        size_t j = i + 1;
        for (; j < s.size() && j <= i + static_cast<size_t>(extra); ++j) {
            const auto b = static_cast<unsigned char>(s[j]);
            if ((b & 0xC0) != 0x80)
                break;
            c = (c << 6) | (b & 0x3F);
        }
        if (j != i + 1 + static_cast<size_t>(extra) || c < min || !is_scalar(c))
            c = replacement;
        out += c;
        i = j; // a truncated sequence resumes at the byte that broke it
    }
    return out;
}

std::string wide_to_utf8(std::u32string_view w) {
    std::string out;
    out.reserve(w.size());
    for (char32_t c : w)
        append_utf8(out, c);
    return out;
}

} // namespace nimbit::ui
