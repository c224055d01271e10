#include "nimbit/utils/utf8_case.h"

#include <algorithm>
#include <iterator>

namespace nimbit {

namespace {

// Upper-case runs and their lower-case distance. With step 2 only every other code point of the run,
// starting at first, is a capital (the alternating pairs of Latin Extended, Greek and Cyrillic).
struct case_run {
    uint16_t first, last;
    int16_t delta;
    uint8_t step;
};

// clang-format off
constexpr case_run lower_runs[] = {
    {0x0041, 0x005A, 32, 1},   {0x00C0, 0x00D6, 32, 1},   {0x00D8, 0x00DE, 32, 1},
    {0x0100, 0x012E, 1, 2},    {0x0130, 0x0130, -199, 1}, {0x0132, 0x0136, 1, 2},
    {0x0139, 0x0147, 1, 2},    {0x014A, 0x0176, 1, 2},    {0x0178, 0x0178, -121, 1},
    {0x0179, 0x017D, 1, 2},    {0x017F, 0x017F, -268, 1}, {0x0181, 0x0181, 210, 1},
    {0x0182, 0x0184, 1, 2},    {0x0186, 0x0186, 206, 1},  {0x0187, 0x0187, 1, 1},
    {0x0189, 0x018A, 205, 1},  {0x018B, 0x018B, 1, 1},    {0x018E, 0x018E, 79, 1},
    {0x018F, 0x018F, 202, 1},  {0x0190, 0x0190, 203, 1},  {0x0191, 0x0191, 1, 1},
    {0x0193, 0x0193, 205, 1},  {0x0194, 0x0194, 207, 1},  {0x0196, 0x0196, 211, 1},
    {0x0197, 0x0197, 209, 1},  {0x0198, 0x0198, 1, 1},    {0x019C, 0x019C, 211, 1},
    {0x019D, 0x019D, 213, 1},  {0x019F, 0x019F, 214, 1},  {0x01A0, 0x01A4, 1, 2},
    {0x01A6, 0x01A6, 218, 1},  {0x01A7, 0x01A7, 1, 1},    {0x01A9, 0x01A9, 218, 1},
    {0x01AC, 0x01AC, 1, 1},    {0x01AE, 0x01AE, 218, 1},  {0x01AF, 0x01AF, 1, 1},
    {0x01B1, 0x01B2, 217, 1},  {0x01B3, 0x01B5, 1, 2},    {0x01B7, 0x01B7, 219, 1},
    {0x01B8, 0x01B8, 1, 1},    {0x01BC, 0x01BC, 1, 1},    {0x01C4, 0x01C4, 2, 1},
    {0x01C5, 0x01C5, 1, 1},    {0x01C7, 0x01C7, 2, 1},    {0x01C8, 0x01C8, 1, 1},
    {0x01CA, 0x01CA, 2, 1},    {0x01CB, 0x01DB, 1, 2},    {0x01DE, 0x01EE, 1, 2},
    {0x01F1, 0x01F1, 2, 1},    {0x01F2, 0x01F4, 1, 2},    {0x01F6, 0x01F6, -97, 1},
    {0x01F7, 0x01F7, -56, 1},  {0x01F8, 0x021E, 1, 2},    {0x0220, 0x0220, -130, 1},
    {0x0222, 0x0232, 1, 2},    {0x023A, 0x023A, 10795, 1}, {0x023B, 0x023B, 1, 1},
    {0x023D, 0x023D, -163, 1}, {0x023E, 0x023E, 10792, 1}, {0x0241, 0x0241, 1, 1},
    {0x0243, 0x0243, -195, 1}, {0x0244, 0x0244, 69, 1},   {0x0245, 0x0245, 71, 1},
    {0x0246, 0x024E, 1, 2},    // Greek
    {0x0370, 0x0372, 1, 2},    {0x0376, 0x0376, 1, 1},    {0x037F, 0x037F, 116, 1},
    {0x0386, 0x0386, 38, 1},   {0x0388, 0x038A, 37, 1},   {0x038C, 0x038C, 64, 1},
    {0x038E, 0x038F, 63, 1},   {0x0391, 0x03A1, 32, 1},   {0x03A3, 0x03AB, 32, 1},
    {0x03C2, 0x03C2, 1, 1},    {0x03CF, 0x03CF, 8, 1},    {0x03D8, 0x03EE, 1, 2},
    {0x03F4, 0x03F4, -60, 1},  {0x03F7, 0x03F7, 1, 1},    {0x03F9, 0x03F9, -7, 1},
    {0x03FA, 0x03FA, 1, 1},    {0x03FD, 0x03FF, -130, 1}, // Cyrillic
    {0x0400, 0x040F, 80, 1},   {0x0410, 0x042F, 32, 1},   {0x0460, 0x0480, 1, 2},
    {0x048A, 0x04BE, 1, 2},    {0x04C0, 0x04C0, 15, 1},   {0x04C1, 0x04CD, 1, 2},
    {0x04D0, 0x052E, 1, 2},    // Latin Extended Additional
    {0x1E00, 0x1E94, 1, 2},    {0x1E9E, 0x1E9E, -7615, 1}, {0x1EA0, 0x1EFE, 1, 2},
};

// Base letters of the lower-case letters U+00E0-U+017F; '.' keeps the letter as it is.
constexpr std::string_view latin_bases =
    "aaaaaa.ceeeeiiii.nooooo.ouuuuy.y"  // U+00E0
    "aaaaaaccccccccddddeeeeeeeeeegggg"  // U+0100
    "gggghhhhiiiiiiiiii..jjkk.lllllll"  // U+0120
    "lllnnnnnnn..oooooo..rrrrrrssssss"  // U+0140
    "ssttttttuuuuuuuuuuuuwwyyyzzzzzzs"; // U+0160

// Other letters with a diacritic, lower case, and their base.
constexpr uint16_t accent_bases[][2] = {
    {0x01A1, 'o'},    {0x01B0, 'u'},    {0x01CE, 'a'},    {0x01D0, 'i'},    {0x01D2, 'o'},
    {0x01D4, 'u'},    {0x01D6, 'u'},    {0x01D8, 'u'},    {0x01DA, 'u'},    {0x01DC, 'u'},
    {0x0219, 's'},    {0x021B, 't'},    {0x0390, 0x03B9}, {0x03AC, 0x03B1}, {0x03AD, 0x03B5},
    {0x03AE, 0x03B7}, {0x03AF, 0x03B9}, {0x03B0, 0x03C5}, {0x03CA, 0x03B9}, {0x03CB, 0x03C5},
    {0x03CC, 0x03BF}, {0x03CD, 0x03C5}, {0x03CE, 0x03C9}, {0x0451, 0x0435},
};
// clang-format on

char32_t to_lower(char32_t c) {
    if (c < 0x80)
        return c >= 'A' && c <= 'Z' ? c + 32 : c;
    const auto run = std::lower_bound(std::begin(lower_runs), std::end(lower_runs), c,
                                      [](const case_run& r, char32_t v) { return r.last < v; });
    if (run == std::end(lower_runs) || c < run->first || (c - run->first) % run->step != 0)
        return c;
    return static_cast<char32_t>(static_cast<int32_t>(c) + run->delta);
}

// Reads one character at text[at], advancing at; invalid or overlong sequences, surrogates and
// values past U+10FFFF read as U+FFFD, one byte at a time.
char32_t decode(std::string_view text, size_t& at) {
    const auto byte = [&](size_t i) {
        return static_cast<unsigned char>(text[i]);
    };
    const unsigned char lead = byte(at);
    const size_t length = lead < 0x80   ? 1
                          : lead < 0xC2 ? 0
                          : lead < 0xE0 ? 2
                          : lead < 0xF0 ? 3
                          : lead < 0xF5 ? 4
                                        : 0;
    if (length == 1 || length == 0 || at + length > text.size()) {
        ++at;
        return length == 1 ? lead : 0xFFFD;
    }
    char32_t c = lead & (0x7F >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) {
            ++at;
            return 0xFFFD;
        }
        c = (c << 6) | (byte(at + i) & 0x3F);
    }
    if ((length == 3 && (c < 0x800 || (c >= 0xD800 && c <= 0xDFFF))) ||
        (length == 4 && (c < 0x10000 || c > 0x10FFFF))) {
        ++at;
        return 0xFFFD;
    }
    at += length;
    return c;
}

// Writes the lower-case letter c without its diacritics.
void encode_plain(char32_t c, std::string& out) {
    if (c >= 0x300 && c <= 0x36F) // combining marks
        return;
    if (c == 0xDF) {
        out += "ss";
        return;
    }
    if (c >= 0xE0 && c < 0xE0 + latin_bases.size() && latin_bases[c - 0xE0] != '.') {
        out += latin_bases[c - 0xE0];
        return;
    }
    const auto base = std::lower_bound(std::begin(accent_bases), std::end(accent_bases), c,
                                       [](const uint16_t(&pair)[2], char32_t v) { return pair[0] < v; });
    append_utf8(out, base != std::end(accent_bases) && (*base)[0] == c ? (*base)[1] : c);
}

} // namespace

std::string utf8_fold(std::string_view text, bool strip_accents, std::vector<uint32_t>* origins) {
    std::string out;
    out.reserve(text.size());
    if (origins != nullptr) {
        origins->clear();
        origins->reserve(text.size() + 1);
    }
    for (size_t at = 0; at < text.size();) {
        const size_t from = at;
        const char32_t c = to_lower(decode(text, at));
        if (strip_accents)
            encode_plain(c, out);
        else
            append_utf8(out, c);
        if (origins != nullptr)
            origins->resize(out.size(), static_cast<uint32_t>(from));
    }
    if (origins != nullptr)
        origins->push_back(static_cast<uint32_t>(text.size()));
    return out;
}

void append_utf8(std::string& out, char32_t c) {
    if (c >= 0x110000 || (c >= 0xD800 && c <= 0xDFFF))
        c = 0xFFFD;
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

} // namespace nimbit
