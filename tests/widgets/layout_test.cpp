#include "widget_fixture.h"

#include "nimbit/ui/flow_panel.h"
#include "nimbit/ui/generic_panel.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/scroll_bar.h"
#include "nimbit/ui/split_panel.h"
#include "nimbit/ui/text_label.h"
#include "nimbit/ui/theme_keys.h"

#include <bit>

namespace {

using FlowPanelTest = WidgetTest;

TEST_F(FlowPanelTest, HiddenChildrenTakeNoRoomAndAutoSizeTakesTheContentLength) {
    flow_panel column(flow_type::vertical, false, true, false, false);
    column.create(win.get_root(), {0, 0, 100, 10});
    generic_panel a, hidden, b;
    a.create(column, {7, 0, 50, 30});
    hidden.create(column, {0, 0, 50, 30});
    hidden.hide();
    column.add_span(5);
    b.create(column, {0, 0, 60, 30});
    EXPECT_EQ(a.get_rect(), (ivec4{7, 0, 50, 30})) << "keeps its own extent and place across the flow";
    EXPECT_EQ(b.get_rect().y, 35);
    EXPECT_EQ(column.get_rect().h, 65);
    EXPECT_EQ(column.get_min_size(), 65);
    // Showing the hidden child, resizing one or removing one lays out again.
    hidden.show(true);
    EXPECT_EQ(b.get_rect().y, 65);
    EXPECT_EQ(column.get_rect().h, 95);
    a.set_rect({0, 0, 50, 10});
    EXPECT_EQ(hidden.get_rect().y, 10);
    EXPECT_EQ(column.get_rect().h, 75);
    column.remove_child(&hidden);
    EXPECT_EQ(b.get_rect().y, 15);
    EXPECT_EQ(column.get_rect().h, 45);
}

TEST_F(FlowPanelTest, FlexItemsShareTheSpareLengthInWholePixels) {
    flow_panel row(flow_type::horizontal, false, false, true, false);
    row.create(win.get_root(), {0, 0, 140, 20});
    generic_panel a, b;
    a.create(row, {0, 0, 50, 5});
    row.add_flex();
    b.create(row, {0, 0, 50, 5});
    row.set_flex(&b, true);
    // 40 spare pixels: 20 each.
    EXPECT_EQ(b.get_rect(), (ivec4{70, 0, 70, 20})) << "fill stretches across the flow";
    EXPECT_EQ(a.get_rect(), (ivec4{0, 0, 50, 20}));
    // 41 spare pixels: still 20 each, and the flex child does not grow from layout to layout.
    row.set_rect({0, 0, 141, 20});
    EXPECT_EQ(b.get_rect(), (ivec4{70, 0, 70, 20}));
    row.organize();
    EXPECT_EQ(b.get_rect().w, 70);
    // Too little room gives no share instead of shrinking anything.
    row.set_rect({0, 0, 60, 20});
    EXPECT_EQ(b.get_rect(), (ivec4{50, 0, 50, 20}));
}

TEST_F(FlowPanelTest, NegativeTotalsClearAndFitAcross) {
    flow_panel row(flow_type::horizontal, true, true, false, true);
    row.create(win.get_root(), {0, 0, 10, 10});
    row.add_span(-30);
    EXPECT_EQ(row.get_rect().w, 0) << "a negative total counts as 0";
    generic_panel a, b;
    a.create(row, {0, 0, 40, 12});
    b.create(row, {0, 0, 40, 25});
    EXPECT_EQ(row.get_rect().w, 50);
    EXPECT_EQ(row.get_rect().h, 25);
    row.clear();
    EXPECT_EQ(row.item_count(), 0u);
    EXPECT_TRUE(row.get_children().empty());
    EXPECT_EQ(row.get_rect().w, 0);
}

TEST_F(FlowPanelTest, FollowsItsAnchorsWhenTheParentResizes) {
    generic_panel host;
    host.create(win.get_root(), {0, 0, 200, 100});
    flow_panel row(flow_type::horizontal, false, false, true, false);
    row.create(host, {10, 0, 180, 30});
    row.set_anchor(anchor_type::left, 10);
    row.set_anchor(anchor_type::right, 10);
    generic_panel a;
    a.create(row, {0, 0, 20, 30});
    row.add_flex();
    generic_panel b;
    b.create(row, {0, 0, 20, 30});
    EXPECT_EQ(b.get_rect().x, 160);
    host.set_rect({0, 0, 300, 100});
    EXPECT_EQ(row.get_rect().w, 280);
    EXPECT_EQ(b.get_rect().x, 260);
}

class ScrollBarTest : public WidgetTest {
protected:
    void SetUp() override {
        WidgetTest::SetUp();
        view.create(win.get_root(), {0, 0, 100, 100});
        content.create(view, {5, 7, 100, 400});
        bar.create(win.get_root(), {100, 0, 14, 100});
        bar.set_scroll_panel(&content);
        bar.set_step(10);
    }
    generic_panel view, content;
    scroll_bar bar{scroll_type::vertical, true};
};

TEST_F(ScrollBarTest, ScrollRoundsToStepsAndClampsToTheOverflowAsItChanges) {
    EXPECT_EQ(content.get_rect().position(), (_vec2<int>{0, 0})) << "moved to the parent's origin";
    EXPECT_EQ(bar.get_max_scroll(), 300);
    bar.scroll(-37, false);
    EXPECT_EQ(content.get_rect().y, -30);
    bar.scroll(-37, true);
    EXPECT_EQ(content.get_rect().y, -67);
    bar.scroll(-1000, false);
    EXPECT_EQ(content.get_rect().y, -300);
    bar.scroll(1000, false);
    EXPECT_EQ(content.get_rect().y, 0);
    bar.set_value(5000);
    EXPECT_EQ(bar.get_value(), 300);
    bar.change_value(-50);
    EXPECT_EQ(content.get_rect().y, -250);
    bar.change_scroll(-2);
    EXPECT_EQ(content.get_rect().y, -230);

    // Size changes of the panel and of its parent move the limit.
    bar.set_value(300);
    content.set_rect({0, content.get_rect().y, 100, 250});
    EXPECT_EQ(bar.get_max_scroll(), 150);
    EXPECT_EQ(content.get_rect().y, -150);
    view.set_rect({0, 0, 100, 300});
    EXPECT_EQ(bar.get_max_scroll(), 0);
    EXPECT_EQ(content.get_rect().y, 0);
}

TEST_F(ScrollBarTest, WheelArrowsTrackAndThumbDragging) {
    event_recorder changed(bar, event_type::value_changed);
    offscreen::wheel(win, {50, 50}, -1.0); // over the panel: the bar is not an ancestor
    EXPECT_EQ(bar.get_value(), 0);
    offscreen::wheel(win, {105, 50}, -1.0); // 40 pixels down
    EXPECT_EQ(changed.data(), std::vector<uint64_t>{40});
    offscreen::click(win, {105, 95}); // the lower arrow: one step
    EXPECT_EQ(bar.get_value(), 50);
    offscreen::click(win, {105, 2}); // the upper arrow
    EXPECT_EQ(bar.get_value(), 40);
    // Thumb: a quarter of the 72-pixel track would be 18, below the minimum of 20.
    const ivec4 thumb = bar.thumb_rect();
    EXPECT_EQ(thumb.h, 20);
    EXPECT_EQ(thumb.y, 14 + 52 * 40 / 300);
    offscreen::click(win, {105, thumb.y + thumb.h + 5}); // below the thumb: one page
    EXPECT_EQ(bar.get_value(), 140);
    const ivec4 t = bar.thumb_rect();
    offscreen::press_mouse(win, {105, t.y + 2});
    offscreen::move_mouse(win, {300, 14 + 54 + 2}); // thumb to the end of its room, far off the bar
    EXPECT_EQ(bar.get_value(), 300);
    offscreen::release_mouse(win, {300, 200});
    EXPECT_EQ(mouse::get_captured_widget(), nullptr);
    // A very long panel still gets a thumb of the minimum length, ending at the lower arrow.
    content.set_rect({0, 0, 100, 100000});
    EXPECT_EQ(bar.thumb_rect().h, bar.get_theme().get<int>(theme_keys::scroll_min_size));
    bar.get_theme().set(theme_keys::scroll_min_size, 30);
    EXPECT_EQ(bar.thumb_rect().h, 30);
    bar.set_value(bar.get_max_scroll());
    EXPECT_EQ(bar.thumb_rect().y + bar.thumb_rect().h, 100 - 14);
}

TEST_F(ScrollBarTest, AWheelAreaScrollsTheBarFromAnywhereInside) {
    text_label row;
    row.create(content, {0, 0, 100, 20});
    bar.add_wheel_area(view);
    offscreen::wheel(win, {50, 10}, -1.0); // over a row of the scrolled panel
    EXPECT_EQ(bar.get_value(), 40);
    offscreen::wheel(win, {50, 50}, -2.0); // over the panel itself
    EXPECT_EQ(bar.get_value(), 120);
    offscreen::wheel(win, {105, 50}, 1.0); // the bar's own wheel still works, once
    EXPECT_EQ(bar.get_value(), 80);
    offscreen::wheel(win, {300, 50}, -1.0); // outside the area
    EXPECT_EQ(bar.get_value(), 80);
}

TEST_F(ScrollBarTest, APanelOrAWheelAreaOutlivingTheOtherIsLeftAlone) {
    {
        generic_panel temporary;
        temporary.create(view, {0, 0, 100, 500});
        bar.set_scroll_panel(&temporary);
        EXPECT_EQ(bar.get_max_scroll(), 400);
    }
    EXPECT_EQ(bar.get_scroll_panel(), nullptr);
    bar.scroll(-50, false);
    EXPECT_EQ(bar.get_value(), 0);
    generic_panel area;
    area.create(win.get_root(), {200, 0, 100, 100});
    generic_panel inner;
    inner.create(area, {0, 0, 50, 300});
    {
        scroll_bar temporary{scroll_type::vertical, false};
        temporary.create(win.get_root(), {300, 0, 14, 100});
        temporary.set_scroll_panel(&inner);
        temporary.add_wheel_area(area);
        offscreen::wheel(win, {250, 50}, -1.0);
        EXPECT_EQ(temporary.get_value(), 40);
    }
    offscreen::wheel(win, {250, 50}, -1.0); // must not reach the destroyed bar
    EXPECT_EQ(inner.get_rect().y, -40);
}

using ScrollBarDeathTest = ScrollBarTest;
TEST_F(ScrollBarDeathTest, AttachingTheBarToItselfStops) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(bar.set_scroll_panel(&bar), "panel != this && \"Scroll panel is set o it's own.\"");
}

class SplitPanelTest : public WidgetTest {
protected:
    void SetUp() override {
        WidgetTest::SetUp();
        split.create(win.get_root(), {0, 0, 204, 100});
    }
    split_panel split;
};

TEST_F(SplitPanelTest, BarRatioLocksAndMinimumSizes) {
    ASSERT_EQ(split.get_thickness(), 4);
    EXPECT_EQ(split.get_panel_a().get_rect(), (ivec4{0, 0, 100, 100}));
    EXPECT_EQ(split.get_panel_b().get_rect(), (ivec4{104, 0, 100, 100}));
    split.set_split_bar(0.25f);
    EXPECT_EQ(split.get_panel_a().get_rect().w, 50);
    // Unlocked, the ratio survives a resize.
    split.set_rect({0, 0, 404, 100});
    EXPECT_EQ(split.get_panel_a().get_rect().w, 100);
    // A locked B keeps its length.
    split.set_size_panel_b(60);
    split.lock_size_panel_b(true);
    split.set_rect({0, 0, 304, 100});
    EXPECT_EQ(split.get_panel_b().get_rect().w, 60);
    EXPECT_EQ(split.get_panel_a().get_rect().w, 240);
    split.lock_size_panel_a(true);
    split.set_rect({0, 0, 404, 100});
    EXPECT_EQ(split.get_panel_a().get_rect().w, 240);
    // Minimum sizes pull the bar back.
    split.set_minimum_size(10, 200);
    EXPECT_EQ(split.get_panel_b().get_rect().w, 200);
    split.set_size_panel_a(0);
    EXPECT_EQ(split.get_panel_a().get_rect().w, 10);
}

TEST_F(SplitPanelTest, DraggingTheBarAndSwappingAndStacking) {
    event_recorder changed(split, event_type::value_changed);
    offscreen::press_mouse(win, {101, 50});
    offscreen::move_mouse(win, {61, 50});
    offscreen::release_mouse(win, {61, 50});
    EXPECT_EQ(split.get_split_position(), 60);
    EXPECT_EQ(changed.last_data(), 60u);
    generic_panel& a = split.get_panel_a();
    split.swap_panels();
    EXPECT_EQ(&split.get_panel_b(), &a);
    EXPECT_EQ(a.get_rect(), (ivec4{144, 0, 60, 100})) << "the old A keeps its length on the other side";
    EXPECT_EQ(split.get_panel_a().get_rect(), (ivec4{0, 0, 140, 100}));
    split.set_type(split_type::stacked);
    EXPECT_EQ(split.get_panel_a().get_rect().w, 204);
    EXPECT_EQ(split.bar_rect().w, 204);
}

} // namespace
