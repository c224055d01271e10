#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"

#include <gtest/gtest.h>

using namespace nimbit;
using namespace nimbit::ui;

TEST(OffscreenDrawer, RecordsCallsWithTheStateTheyUsedAndTheirPass) {
    offscreen_drawer native({200, 100});
    drawer d(native);
    native.start_draw({10, 20}, {0, 0, 50, 60});
    d.set_brush_color({1, 0, 0, 1});
    d.draw_rect({1, 2, 3, 4});
    d.set_pen_color({0, 1, 0, 1}, 2.0f);
    d.draw_rect_border({5, 6, 7, 8});
    native.start_draw({30, 40}, {30, 40, 5, 5}); // a child's pass inside its parent's
    d.draw_line({0, 0}, {9, 9});
    native.end_draw();
    d.draw_rect_gradient({0, 0, 10, 10}, {0, 0, 0, 1}, {1, 1, 1, 1}, orientation::horizontal);
    native.end_draw();
    d.clear({0, 0, 1, 1});

    const auto rects = native.calls_named("draw_rect");
    ASSERT_EQ(rects.size(), 1u);
    EXPECT_EQ(rects[0].rect, (ivec4{1, 2, 3, 4}));
    EXPECT_EQ(rects[0].color, (vec4{1, 0, 0, 1}));
    EXPECT_EQ(rects[0].origin, (_vec2<int>{10, 20}));
    EXPECT_EQ(rects[0].clip, (ivec4{0, 0, 50, 60}));
    const auto border = native.calls_named("draw_rect_border").at(0);
    EXPECT_EQ(border.color, (vec4{0, 1, 0, 1}));
    EXPECT_EQ(border.value, 2.0f);
    const auto line = native.calls_named("draw_line").at(0);
    EXPECT_EQ(line.origin, (_vec2<int>{30, 40}));
    EXPECT_EQ(line.points, (std::vector<_vec2<int>>{{0, 0}, {9, 9}}));
    const auto gradient = native.calls_named("draw_rect_gradient").at(0);
    EXPECT_EQ(gradient.origin, (_vec2<int>{10, 20})) << "back in the parent's pass";
    EXPECT_EQ(gradient.mode_1, 1);
    EXPECT_EQ(gradient.color_2, (vec4{1, 1, 1, 1}));
    EXPECT_EQ(native.calls_named("clear").at(0).clip, (ivec4{})) << "outside any pass";
    EXPECT_FALSE(native.in_pass());
    native.end_draw(); // unbalanced: ignored
    EXPECT_EQ(native.calls().back().op, "clear");

    // The record is read while painting goes on and may be cleared in the middle of a pass (a test
    // that only wants one widget's calls): what is read must stay complete and keep its pass.
    native.clear_calls();
    native.start_draw({5, 6}, {0, 0, 40, 40});
    d.draw_text({0, 0, 50, 10}, "first");
    EXPECT_EQ(native.calls().size(), 2u);
    d.draw_text({0, 0, 50, 10}, "second");
    d.draw_line({1, 1}, {2, 2});
    const auto& all = native.calls();
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[1].text, "first");
    EXPECT_EQ(all[2].text, "second");
    EXPECT_EQ(all[3].points, (std::vector<_vec2<int>>{{1, 1}, {2, 2}}));
    native.clear_calls();
    EXPECT_TRUE(native.calls().empty());
    d.draw_text({0, 0, 50, 10}, "third");
    native.start_draw({7, 8}, {1, 1, 2, 2});
    d.draw_rect({0, 0, 1, 1});
    native.end_draw();
    native.end_draw();
    const auto& after = native.calls();
    ASSERT_EQ(after.size(), 5u);
    EXPECT_EQ(after[0].text, "third");
    EXPECT_EQ(after[0].origin, (_vec2<int>{5, 6})) << "the open pass survives the clear";
    EXPECT_EQ(after[0].clip, (ivec4{0, 0, 40, 40}));
    EXPECT_TRUE(after[0].points.empty());
    EXPECT_EQ(after[2].origin, (_vec2<int>{7, 8}));
    EXPECT_EQ(after[4].op, "end_draw");
    EXPECT_EQ(after[4].origin, (_vec2<int>{5, 6}));
    EXPECT_EQ(native.calls_named("draw_text").at(0).text, "third");
}

TEST(OffscreenDrawerDeathTest, ImagesAreDrawnAtTheirSizeInPointsAndMustBeLoaded) {
    offscreen_drawer native;
    drawer d(native);
    bitmap b;
    ASSERT_TRUE(b.create({8, 6}, image_alpha::alpha));
    d.draw_image({3, 4}, b);
    d.draw_image({0, 0}, b, {2, 2, 4, 2});
    d.draw_image({0, 0, 40, 40}, b, true);
    d.draw_image({1, 1}, b, ivec4{}); // an empty source means the whole image
    d.set_image_extend(image_extend::repeat, image_extend::stretch);
    d.draw_rect({0, 0, 30, 30}, b);
    const auto images = native.calls_named("draw_image");
    ASSERT_EQ(images.size(), 4u);
    EXPECT_EQ(images[3].rect, (ivec4{1, 1, 8, 6}));
    EXPECT_EQ(images[0].rect, (ivec4{3, 4, 8, 6}));
    EXPECT_EQ(images[0].source, (ivec4{}));
    EXPECT_EQ(images[1].rect, (ivec4{0, 0, 4, 2}));
    EXPECT_EQ(images[1].source, (ivec4{2, 2, 4, 2}));
    EXPECT_EQ(images[2].mode_1, 1);
    EXPECT_EQ(images[2].image_size, (_vec2<int>{8, 6}));
    const auto tiled = native.calls_named("draw_rect_image").at(0);
    EXPECT_EQ(tiled.mode_1, int(image_extend::repeat));
    EXPECT_EQ(tiled.mode_2, int(image_extend::stretch));
    bitmap empty;
    EXPECT_DEATH(d.draw_image({0, 0}, empty), "isLoaded");
}

TEST(OffscreenDrawer, TextMetricIsFixedAndWrapsAtSpacesThenMidWord) {
    offscreen_drawer native;
    drawer d(native);
    d.set_text_font("tahoma", 12.0f);
    EXPECT_EQ(offscreen_drawer::char_width(12.0f), 6);
    EXPECT_EQ(offscreen_drawer::line_height(12.0f), 15);
    EXPECT_EQ(offscreen_drawer::char_width(0.0f), 1);
    EXPECT_EQ(d.calc_text_size("abc"), (_vec2<int>{18, 15}));
    EXPECT_EQ(d.calc_text_size(""), (_vec2<int>{0, 15}));
    EXPECT_EQ(d.calc_text_size("ab\ncdef"), (_vec2<int>{24, 30}));
    // Multi-byte characters count once; damaged bytes count one each and never overrun.
    EXPECT_EQ(d.calc_char_offsets("a\xC3\xA9\xE2\x82\xAC"), (std::vector<int>{0, 6, 12, 18}));
    EXPECT_EQ(d.calc_char_offsets("\xE2\x82"), (std::vector<int>{0, 6, 12}));
    EXPECT_EQ(d.calc_char_offsets(""), (std::vector<int>{0}));
    // Runs change the size of the characters they cover.
    text_full_format big;
    big.size = 20.0f;
    big.start = 1;
    big.end = 2;
    EXPECT_EQ(d.calc_text_size("abc", {}, {big}), (_vec2<int>{6 + 10 + 6, 25}));
    // Wrapping breaks at spaces, then mid-word, and stops at the height.
    d.set_text_font("tahoma", 10.0f); // 5 wide, 13 tall
    EXPECT_EQ(d.calc_text_size("hello world", {40, 0}), (_vec2<int>{25, 26}));
    EXPECT_EQ(d.calc_text_size("hello world", {55, 0}), (_vec2<int>{55, 13}));
    EXPECT_EQ(d.calc_text_size("abcdefghij", {20, 0}), (_vec2<int>{20, 39}));
    EXPECT_EQ(d.calc_text_size("a b c d e f", {15, 0}), (_vec2<int>{15, 39}));
    EXPECT_EQ(d.calc_text_size("abcdefghij", {20, 30}), (_vec2<int>{20, 26})) << "only whole lines that fit";
    EXPECT_EQ(d.calc_text_size("abcdefghij", {20, 5}), (_vec2<int>{20, 13})) << "the first line always shows";
    EXPECT_EQ(d.calc_text_size("abc", {1, 0}), (_vec2<int>{5, 39})) << "one character per line at worst";
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

TEST(OffscreenDrawer, TextIsPlacedByItsAlignment) {
    offscreen_drawer native;
    drawer d(native);
    d.set_text_font("tahoma", 10.0f);
    d.set_text_color({0.5f, 0.5f, 0.5f, 1});
    const ivec4 rect{10, 20, 100, 41};
    d.set_text_format(text_align::left, text_valign::top);
    d.draw_text(rect, "abcd");
    d.set_text_format(text_align::center, text_valign::center);
    d.draw_text(rect, "abcd");
    d.set_text_format(text_align::right, text_valign::bottom);
    d.draw_text(rect, "abcd");
    d.draw_clipped_text(rect, {0, 0, 5, 5}, "xy");
    const auto texts = native.calls_named("draw_text");
    ASSERT_EQ(texts.size(), 3u);
    EXPECT_EQ(texts[0].text, "abcd");
    EXPECT_EQ(texts[0].color, (vec4{0.5f, 0.5f, 0.5f, 1}));
    EXPECT_EQ(texts[0].layout, (ivec4{11, 20, 20, 13}));
    EXPECT_EQ(texts[1].layout, (ivec4{11 + 40, 20 - 2 + (43 - 13) / 2, 20, 13}));
    EXPECT_EQ(texts[2].layout, (ivec4{11 + 80, 20 + 2 + 28, 20, 13}));
    const auto clipped = native.calls_named("draw_clipped_text").at(0);
    EXPECT_EQ(clipped.source, (ivec4{0, 0, 5, 5}));
    EXPECT_EQ(clipped.layout.w, 10);
}
