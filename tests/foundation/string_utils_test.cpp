#include "nimbit/utils/string_utils.h"

#include <gtest/gtest.h>

namespace {

// Only ASCII letters and white space are touched; UTF-8 bytes (>= 0x80) survive as they are.
TEST(StringUtils, LowerAndTrimTouchOnlyAscii) {
    EXPECT_EQ(nimbit::string_lower("Gaussian BLUR 2 @AZ[`{\xC3\x84"), "gaussian blur 2 @az[`{\xC3\x84");
    EXPECT_EQ(nimbit::trim(" \t\r\n a b \v\f"), "a b");
    EXPECT_EQ(nimbit::trim("   "), "");
    EXPECT_EQ(nimbit::trim("\xC2\xA0x"), "\xC2\xA0x") << "non-ASCII spaces are text";
}

TEST(StringUtils, MacRomanConvertsEveryHighByte) {
    const std::pair<const char*, const char*> samples[] = {
        {"caf\x8E", "caf\xC3\xA9"}, {"\x80", "\xC3\x84"} /* first */, {"\xFF", "\xCB\x87"} /* last */};
    for (const auto& [in, out] : samples)
        EXPECT_EQ(nimbit::macroman_to_utf8(in), out) << in;
    EXPECT_EQ(nimbit::macroman_to_utf8(std::string("a\0b", 3)), std::string("a\0b", 3));

    // Every high byte becomes exactly one well-formed UTF-8 character of two or three bytes.
    for (int b = 0x80; b <= 0xFF; ++b) {
        const std::string out = nimbit::macroman_to_utf8(std::string(1, static_cast<char>(b)));
        const auto lead = static_cast<unsigned char>(out[0]);
        ASSERT_EQ(lead >> 5 == 0x6 ? 2u : lead >> 4 == 0xE ? 3u : 0u, out.size()) << b;
        for (size_t i = 1; i < out.size(); ++i)
            EXPECT_EQ(static_cast<unsigned char>(out[i]) >> 6, 0x2) << b;
    }
}

} // namespace
