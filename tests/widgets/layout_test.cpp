#include "tests/support/widget_fixture.h"

#include "nimbit/ui/flow_panel.h"
#include "nimbit/ui/generic_panel.h"
#include "nimbit/ui/scroll_bar.h"
#include "nimbit/ui/split_panel.h"
#include "nimbit/ui/text_label.h"

namespace {

TEST_F(WidgetTest, FlowPanelHiddenChildrenTakeNoRoomAutoSizeTakesTheContentAndFlexItemsShareTheRest) {
    flow_panel column(flow_type::vertical, false, true, false, false);
    column.create(win.get_root(), {0, 0, 100, 10});
    generic_panel a, hidden, b;
    a.create(column, {7, 0, 50, 30});
    hidden.create(column, {0, 0, 50, 30});
    hidden.hide();
    column.add_span(5);
    b.create(column, {0, 0, 60, 30});
    EXPECT_EQ(a.get_rect(), (ivec4{7, 0, 50, 30})) << "keeps its own extent and place across the flow";
    auto at = [&](widget& w) {
        return std::tuple(w.get_rect().y, column.get_rect().h);
    };
    EXPECT_EQ(at(b), std::tuple(35, 65));
    EXPECT_EQ(column.get_min_size(), 65);
    // Showing the hidden child, resizing one or removing one lays out again.
    hidden.show(true);
    EXPECT_EQ(at(b), std::tuple(65, 95));
    a.set_rect({0, 0, 50, 10});
    EXPECT_EQ(at(hidden), std::tuple(10, 75));
    column.remove_child(&hidden);
    EXPECT_EQ(at(b), std::tuple(15, 45));

    // A row that fits across: a negative total counts as 0, and clearing empties it.
    flow_panel row(flow_type::horizontal, true, true, false, true);
    row.create(win.get_root(), {0, 0, 10, 10});
    row.add_span(-30);
    EXPECT_EQ(row.get_rect().w, 0);
    generic_panel c, d;
    c.create(row, {0, 0, 40, 12});
    d.create(row, {0, 0, 40, 25});
    EXPECT_EQ(row.get_rect().size(), (_vec2<int>{50, 25}));
    row.clear();
    EXPECT_TRUE(row.item_count() == 0 && row.get_children().empty() && row.get_rect().w == 0);

    // Flex items share the spare length in whole pixels: 40 spare pixels, 20 each.
    flow_panel flex(flow_type::horizontal, false, false, true, false);
    flex.create(win.get_root(), {0, 0, 140, 20});
    generic_panel e, f;
    e.create(flex, {0, 0, 50, 5});
    flex.add_flex();
    f.create(flex, {0, 0, 50, 5});
    flex.set_flex(&f, true);
    EXPECT_EQ(std::pair(e.get_rect(), f.get_rect()), std::pair(ivec4{0, 0, 50, 20}, ivec4{70, 0, 70, 20}))
        << "fill stretches across the flow";
    // 41 spare pixels: still 20 each, and the flex child does not grow from layout to layout.
    flex.set_rect({0, 0, 141, 20});
    EXPECT_EQ(f.get_rect(), (ivec4{70, 0, 70, 20}));
    flex.organize();
    EXPECT_EQ(f.get_rect().w, 70);
    // Too little room gives no share instead of shrinking anything.
    flex.set_rect({0, 0, 60, 20});
    EXPECT_EQ(f.get_rect(), (ivec4{50, 0, 50, 20}));
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
    // Whole steps unless told otherwise, clamped to [0, 300] (the overflow); the content moves by minus the
    // value.
    for (auto [delta, exact, y] :
         {std::tuple{-37, false, -30}, {-37, true, -67}, {-1000, false, -300}, {1000, false, 0}}) {
        bar.scroll(delta, exact);
        EXPECT_EQ(content.get_rect().y, y) << delta;
    }
    bar.set_value(5000);
    const int clamped = bar.get_value();
    bar.change_value(-50);
    const int changed = content.get_rect().y;
    bar.change_scroll(-2);
    EXPECT_EQ(std::tuple(clamped, changed, content.get_rect().y), std::tuple(300, -250, -230));

    // Size changes of the panel and of its parent move the limit.
    bar.set_value(300);
    content.set_rect({0, content.get_rect().y, 100, 250});
    EXPECT_EQ(std::tuple(bar.get_max_scroll(), content.get_rect().y), std::tuple(150, -150));
    view.set_rect({0, 0, 100, 300});
    EXPECT_EQ(std::tuple(bar.get_max_scroll(), content.get_rect().y), std::tuple(0, 0));
}

TEST_F(ScrollBarTest, WheelArrowsTrackAndThumbDragging) {
    // A bar lying across points its arrows away from the track just as an upright one does.
    scroll_bar across{scroll_type::horizontal, true};
    across.create(win.get_root(), {0, 100, 100, 14});
    std::vector<_vec2<int>> upright, turned;
    for (const draw_call& c : painted(win))
        for (const _vec2<int>& p : c.op == "draw_geometry" ? c.points : std::vector<_vec2<int>>{})
            (c.origin.y < 100 ? upright : turned).push_back(c.origin.y < 100 ? p : _vec2<int>{p.y, p.x});
    EXPECT_TRUE(upright.size() == 6 && upright == turned);

    event_recorder changed(bar, event_type::value_changed);
    offscreen::wheel(win, {105, 50}, -1.0); // 40 pixels down
    EXPECT_EQ(changed.data(), std::vector<uint64_t>{40});
    offscreen::click(win, {105, 95}); // the lower arrow: one step
    const int after_lower = bar.get_value();
    offscreen::click(win, {105, 2}); // the upper arrow
    EXPECT_EQ(std::tuple(after_lower, bar.get_value()), std::tuple(50, 40));
    // Thumb: a quarter of the 72-pixel track would be 18, below the minimum of 20.
    const ivec4 thumb = bar.thumb_rect();
    EXPECT_EQ(std::tuple(thumb.h, thumb.y), std::tuple(20, 14 + 52 * 40 / 300));
    offscreen::click(win, {105, thumb.y + thumb.h + 5}); // below the thumb: one page
    EXPECT_EQ(bar.get_value(), 140);
    offscreen::press_mouse(win, {105, bar.thumb_rect().y + 2});
    offscreen::move_mouse(win, {300, 14 + 54 + 2}); // thumb to the end of its room, far off the bar
    EXPECT_EQ(bar.get_value(), 300);
    offscreen::release_mouse(win, {300, 200});
    // A very long panel still gets a thumb of the minimum length, ending at the lower arrow.
    content.set_rect({0, 0, 100, 100000});
    EXPECT_EQ(bar.thumb_rect().h, bar.get_theme().get<int>(theme_keys::scroll_min_size));
    bar.set_value(bar.get_max_scroll());
    EXPECT_EQ(bar.thumb_rect().y + bar.thumb_rect().h, 100 - 14);
    // A panel that fits: the thumb fills the track, and dragging it moves (and divides by) nothing.
    content.set_rect({0, 0, 100, 100});
    offscreen::press_mouse(win, {105, 50});
    offscreen::move_mouse(win, {105, 70});
    offscreen::release_mouse(win, {105, 70});
    EXPECT_EQ(bar.get_value(), 0);
}

TEST_F(ScrollBarTest, AWheelAreaScrollsTheBarFromAnywhereInsideAndOutlivesItOrItsPanel) {
    text_label row;
    row.create(content, {0, 0, 100, 20});
    bar.add_wheel_area(view);
    // Over a row of the scrolled panel, over the panel itself, the bar's own wheel (once), outside.
    std::vector<int> values;
    for (auto [at, delta] :
         {std::pair{_vec2<int>{50, 10}, -1.0}, {{50, 50}, -2.0}, {{105, 50}, 1.0}, {{300, 50}, -1.0}}) {
        offscreen::wheel(win, at, delta);
        values.push_back(bar.get_value());
    }
    EXPECT_EQ(values, (std::vector<int>{40, 120, 80, 80}));

    // A panel or a wheel area outliving the other is left alone.
    {
        generic_panel temporary;
        temporary.create(view, {0, 0, 100, 500});
        bar.set_scroll_panel(&temporary);
        EXPECT_EQ(bar.get_max_scroll(), 400);
    }
    EXPECT_EQ(bar.get_scroll_panel(), nullptr);
    bar.scroll(-50, false);
    EXPECT_EQ(bar.get_value(), 0);
    generic_panel area, inner;
    area.create(win.get_root(), {200, 0, 100, 100});
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

TEST_F(WidgetTest, SplitPanelBarRatioLocksAndMinimumSizes) {
    split_panel split;
    split.create(win.get_root(), {0, 0, 204, 100});
    EXPECT_EQ(split.get_panel_a().get_rect(), (ivec4{0, 0, 100, 100}));
    EXPECT_EQ(split.get_panel_b().get_rect(), (ivec4{104, 0, 100, 100}));
    auto widths = [&] {
        return std::tuple(split.get_panel_a().get_rect().w, split.get_panel_b().get_rect().w);
    };
    split.set_split_bar(0.25f);
    EXPECT_EQ(widths(), std::tuple(50, 150));
    split.set_rect({0, 0, 404, 100}); // unlocked, the ratio survives a resize
    EXPECT_EQ(widths(), std::tuple(100, 300));
    split.lock_size_panel_b(true); // a locked B keeps its length, also one set after locking
    split.set_size_panel_b(60);
    split.set_rect({0, 0, 304, 100});
    EXPECT_EQ(widths(), std::tuple(240, 60));
    split.lock_size_panel_b(false); // the ratio of the last unlocked placing (340 of 400) is back
    split.set_rect({0, 0, 404, 100});
    EXPECT_EQ(widths(), std::tuple(340, 60));
    split.lock_size_panel_a(true);
    split.set_rect({0, 0, 504, 100});
    EXPECT_EQ(std::get<0>(widths()), 340);
    split.set_minimum_size(10, 200); // minimum sizes pull the bar back
    EXPECT_EQ(std::get<1>(widths()), 200);
    split.set_size_panel_a(0);
    EXPECT_EQ(std::get<0>(widths()), 10);
    split.set_minimum_size(0, 1000); // more than the room: A gets none of it
    EXPECT_EQ(widths(), std::tuple(0, 500));
    split.set_minimum_size(0, 0);
    split.set_size_panel_a(0);
    EXPECT_EQ(std::get<0>(widths()), 0);
    split.set_rect({0, 0, 3, 100}); // narrower than the bar: no room for either pane
    EXPECT_EQ(widths(), std::tuple(0, 0));
}

TEST_F(WidgetTest, SplitPanelDraggingTheBarAndSwappingAndStacking) {
    split_panel split;
    split.create(win.get_root(), {0, 0, 204, 100});
    event_recorder changed(split, event_type::value_changed);
    offscreen::press_mouse(win, {101, 50});
    offscreen::move_mouse(win, {61, 50});
    offscreen::release_mouse(win, {61, 50});
    EXPECT_EQ(std::tuple(split.get_split_position(), changed.last_data()), std::tuple(60, uint64_t{60}));
    generic_panel& a = split.get_panel_a();
    split.swap_panels();
    EXPECT_EQ(a.get_rect(), (ivec4{144, 0, 60, 100})) << "the old A keeps its length on the other side";
    EXPECT_EQ(split.get_panel_a().get_rect(), (ivec4{0, 0, 140, 100}));
    split.set_type(split_type::stacked);
    const ivec4 bar = split.bar_rect();
    EXPECT_EQ(std::tuple(split.get_panel_a().get_rect(), bar.w), std::tuple(ivec4{0, 0, 204, bar.y}, 204));
    std::vector<int> edges; // the bar's two border lines run along its first and last rows
    for (const draw_call& c : painted(win))
        if (c.op == "draw_line" && c.points[0].y == c.points[1].y)
            edges.push_back(c.points[0].y);
    EXPECT_EQ(edges, (std::vector<int>{bar.y, bar.y + bar.h - 1}));
}

} // namespace
