#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"

#include <gtest/gtest.h>

using namespace nimbit;
using namespace nimbit::ui;

// The record is what every paint test reads: calls keep the state and the pass they were made in,
// also when it is cleared in the middle of a pass.
TEST(OffscreenDrawer, RecordsCallsWithTheStateTheyUsedAndTheirPass) {
    offscreen_drawer native({200, 100});
    drawer d(native);
    native.start_draw({10, 20}, {0, 0, 50, 60});
    d.set_brush_color({1, 0, 0, 1});
    d.draw_rect({1, 2, 3, 4});
    native.start_draw({30, 40}, {30, 40, 5, 5}); // a child's pass inside its parent's
    d.draw_line({0, 0}, {9, 9});
    native.end_draw();
    d.set_pen_color({0, 1, 0, 1}, 2.0f);
    d.draw_rect_border({5, 6, 7, 8});
    native.end_draw();
    native.end_draw(); // unbalanced: ignored
    d.clear({0, 0, 1, 1});
    const draw_call rect = native.calls_named("draw_rect").at(0),
                    line = native.calls_named("draw_line").at(0),
                    border = native.calls_named("draw_rect_border").at(0);
    EXPECT_EQ(std::tuple(rect.rect, rect.color, rect.origin, rect.clip),
              std::tuple(ivec4{1, 2, 3, 4}, vec4{1, 0, 0, 1}, _vec2<int>{10, 20}, ivec4{0, 0, 50, 60}));
    EXPECT_EQ(line.origin, (_vec2<int>{30, 40}));
    EXPECT_EQ(line.points, (std::vector<_vec2<int>>{{0, 0}, {9, 9}}));
    EXPECT_EQ(std::tuple(border.origin, border.color, border.value),
              std::tuple(_vec2<int>{10, 20}, vec4{0, 1, 0, 1}, 2.0f))
        << "back in the parent's pass";
    EXPECT_EQ(native.calls().back().clip, (ivec4{})) << "outside any pass";

    native.start_draw({5, 6}, {0, 0, 40, 40});
    native.clear_calls();
    d.draw_text({0, 0, 50, 10}, "third");
    EXPECT_EQ(native.calls().at(0).origin, (_vec2<int>{5, 6})) << "the open pass survives the clear";
    native.end_draw();
    EXPECT_EQ(native.calls().back().op, "end_draw");
    EXPECT_FALSE(native.in_pass());
}

TEST(OffscreenDrawerDeathTest, ImagesAreDrawnAtTheirSizeInPointsAndMustBeLoaded) {
    offscreen_drawer native;
    drawer d(native);
    bitmap b, empty;
    ASSERT_TRUE(b.create({8, 6}, image_alpha::alpha));
    d.draw_image({3, 4}, b);
    d.draw_image({0, 0}, b, {2, 2, 4, 2});
    d.draw_image({1, 1}, b, ivec4{}); // an empty source means the whole image
    const auto images = native.calls_named("draw_image");
    ASSERT_EQ(images.size(), 3u);
    EXPECT_EQ((std::vector{images[0].rect, images[1].rect, images[1].source, images[2].rect}),
              (std::vector<ivec4>{{3, 4, 8, 6}, {0, 0, 4, 2}, {2, 2, 4, 2}, {1, 1, 8, 6}}));
    EXPECT_DEATH(d.draw_image({0, 0}, empty), "isLoaded");
}

TEST(OffscreenDrawer, TextMetricIsFixedAndWrapsAtSpacesThenMidWord) {
    offscreen_drawer native;
    drawer d(native);
    d.set_text_font("tahoma", 12.0f);
    EXPECT_EQ(d.calc_text_size("ab\ncdef"), (_vec2<int>{24, 30}));
    // Multi-byte characters count once; damaged bytes count one each and never overrun.
    EXPECT_EQ(d.calc_char_offsets("a\xC3\xA9\xE2\x82\xAC"), (std::vector<int>{0, 6, 12, 18}));
    EXPECT_EQ(d.calc_char_offsets("\xE2\x82"), (std::vector<int>{0, 6, 12}));
    text_full_format big; // runs change the size of the characters they cover
    big.size = 20.0f;
    big.start = 1;
    big.end = 2;
    EXPECT_EQ(d.calc_text_size("abc", {}, {big}), (_vec2<int>{6 + 10 + 6, 25}));
    d.set_text_font("tahoma", 10.0f); // 5 wide, 13 tall
    const std::tuple<const char*, _vec2<int>, _vec2<int>> wraps[] = {
        {"hello world", {40, 0}, {25, 26}},
        {"hello world", {55, 0}, {55, 13}},
        {"abcdefghij", {20, 0}, {20, 39}},
        {"a b c d e f", {15, 0}, {15, 39}},
        {"abcdefghij", {20, 30}, {20, 26}}, // only whole lines that fit
        {"abcdefghij", {20, 5}, {20, 13}},  // the first line always shows
        {"abc", {1, 0}, {5, 39}}};
    for (auto [text, limit, size] : wraps)
        EXPECT_EQ(d.calc_text_size(text, limit), size) << text << " in " << limit.x << "x" << limit.y;
}

// Plain one-line labels are sized without a layout; a run of the same size forces the full layout,
// and both must agree wherever the text fits, wraps, or carries trailing spaces.
TEST(OffscreenDrawer, PlainLabelsMeasureAsTheFullLayoutDoes) {
    offscreen_drawer native;
    drawer d(native);
    for (const float size : {10.0f, 12.0f, 13.0f}) {
        d.set_text_font("tahoma", size);
        text_full_format same;
        same.size = size;
        same.end = 1000;
        for (const char* text : {"", " ", "Gaussian Blur", "Blur  ", "a b c d e f", "abcdefghij"})
            for (const _vec2<int> limit : {_vec2<int>{}, _vec2<int>{-5, 0}, _vec2<int>{20, 0},
                                           _vec2<int>{60, 0}, _vec2<int>{200, 10}, _vec2<int>{30, 30}})
                EXPECT_EQ(d.calc_text_size(text, limit), d.calc_text_size(text, limit, {same}))
                    << '"' << text << "\" at " << size << " within " << limit.x << "x" << limit.y;
    }
}
