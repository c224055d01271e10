#include "nimbit/ui/text_markup.h"
#include "nimbit/ui/wide_text.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace nimbit::ui;

namespace {

TEST(WideText, RoundTripsAndRepairsDamagedUtf8) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::u32string wide = utf8_to_wide(text);
    EXPECT_EQ(wide, (std::u32string{U'a', 0xE9, 0x20AC, 0x1F600}));
    EXPECT_EQ(wide_to_utf8(wide), text);
    EXPECT_EQ(wide_to_utf8(std::u32string{0x7FF, 0x800}), "\xDF\xBF\xE0\xA0\x80"); // the two-byte limit
    // A truncated sequence, an overlong form, an encoded surrogate and a stray byte each become one
    // replacement character; the byte that broke a sequence is read again.
    EXPECT_EQ(utf8_to_wide("\xE2\x82"
                           "b"),
              (std::u32string{0xFFFD, U'b'}));
    EXPECT_EQ(utf8_to_wide("\xC0\x80"), (std::u32string{0xFFFD}));
    EXPECT_EQ(utf8_to_wide("\xED\xA0\x80"), (std::u32string{0xFFFD}));
    EXPECT_EQ(utf8_to_wide("\xFF"
                           "c\xF0\x9F"),
              (std::u32string{0xFFFD, U'c', 0xFFFD}));
    EXPECT_EQ(wide_to_utf8(std::u32string{static_cast<char32_t>(0xD800), static_cast<char32_t>(0x110000)}),
              "\xEF\xBF\xBD\xEF\xBF\xBD");
}

text_full_format base() {
    text_full_format f;
    f.font_name = "tahoma";
    f.size = 12.0f;
    return f;
}

TEST(TextMarkup, FontTagsNestAndCloseIntoRuns) {
    const markup_text m =
        parse_markup("<HTML><body>a<font face='Arial' size=20>b<font style=\"italic\" underline>c</font>d"
                     "</font>e</body></html>",
                     base());
    EXPECT_EQ(m.text, "abcde");
    ASSERT_EQ(m.runs.size(), 5u);
    // The inner run inherits face and size from the outer tag; closing it restores the outer style.
    EXPECT_EQ(std::tuple(m.runs[2].font_name, m.runs[2].style, m.runs[2].underline, m.runs[2].size),
              std::tuple("Arial", font_style::italic, true, 20.0f));
    EXPECT_EQ(std::tuple(m.runs[3].font_name, m.runs[3].style, m.runs[3].underline),
              std::tuple("Arial", font_style::normal, false));
    EXPECT_EQ(std::tuple(m.runs[4].font_name, m.runs[4].start, m.runs[4].end), std::tuple("tahoma", 4u, 5u));
    for (const std::string off : {"0", "false", "NO"}) // the ways to say no, in any case
        EXPECT_FALSE(parse_markup("<font underline=" + off + ">x</font>", base()).runs.back().underline)
            << off;
}

TEST(TextMarkup, EntitiesBreaksAndEverythingElseIsText) {
    const markup_text m = parse_markup("x &lt;y&gt; &amp; &#65;&#x42;<br/>&bogus;&#6x; a<b & <font", base());
    EXPECT_EQ(m.text, "x <y> & AB\n&bogus;&#6x; a<b & <font");
    ASSERT_EQ(m.runs.size(), 1u) << "one font throughout";
    EXPECT_EQ(m.runs[0].end, 35u) << "counts characters";
    // Run ranges count characters, not bytes; extra closing tags and bad sizes are ignored.
    const markup_text w = parse_markup("\xC3\xA9<font size=900>\xE2\x82\xAC</font></font>z", base());
    ASSERT_EQ(w.runs.size(), 1u);
    EXPECT_EQ(w.runs[0].end, 3u);
}

TEST(TextMarkup, DeepNestingIsBounded) {
    std::string deep;
    for (int i = 0; i < 10000; ++i)
        deep += "<font size=13>";
    deep += "x";
    for (int i = 0; i < 10000; ++i)
        deep += "</font>";
    deep += "y";
    const markup_text m = parse_markup(deep, base());
    EXPECT_EQ(m.text, "xy");
    ASSERT_EQ(m.runs.size(), 2u);
    EXPECT_EQ(std::tuple(m.runs[0].size, m.runs[1].size), std::tuple(13.0f, 12.0f)) << "every tag was closed";
}

} // namespace
