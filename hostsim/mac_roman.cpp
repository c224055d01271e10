#include "hostsim/sim_model.h"

#include <cstdint>

namespace hostsim {

namespace {

// Unicode code points of Mac Roman 0x80..0xFF.
constexpr uint16_t upperHalf[128] = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265,
    0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044,
    0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};

// Decodes one UTF-8 sequence at text[i], advancing i; malformed bytes decode as U+FFFD.
uint32_t NextCodePoint(const std::string& text, size_t& i) {
    const auto byte = [&](size_t k) {
        return static_cast<unsigned char>(text[k]);
    };
    const unsigned char lead = byte(i++);
    if (lead < 0x80)
        return lead;
    int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : -1;
    if (extra < 0 || i + static_cast<size_t>(extra) > text.size())
        return 0xFFFD;
    uint32_t cp = lead & (0x3F >> extra);
    for (int k = 0; k < extra; ++k) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0xFFFD;
        cp = (cp << 6) | (byte(i++) & 0x3F);
    }
    return cp;
}

} // namespace

std::vector<uint16_t> Utf8ToUtf16(const std::string& text) {
    std::vector<uint16_t> out;
    for (size_t i = 0; i < text.size();) {
        const uint32_t cp = NextCodePoint(text, i);
        if (cp >= 0x10000) { // a surrogate pair
            out.push_back(static_cast<uint16_t>(0xD800 + ((cp - 0x10000) >> 10)));
            out.push_back(static_cast<uint16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
        } else {
            out.push_back(static_cast<uint16_t>(cp));
        }
    }
    return out;
}

std::string Utf8ToMacRoman(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const uint32_t cp = NextCodePoint(text, i);
        if (cp < 0x80) {
            out.push_back(static_cast<char>(cp));
            continue;
        }
        char encoded = '?';
        for (int k = 0; k < 128; ++k) {
            if (upperHalf[k] == cp) {
                encoded = static_cast<char>(0x80 + k);
                break;
            }
        }
        out.push_back(encoded);
    }
    return out;
}

} // namespace hostsim
