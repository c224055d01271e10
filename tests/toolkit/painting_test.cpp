#include "toolkit_fixture.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"

#include <algorithm>

namespace toolkit_test {
namespace {

using PaintingTest = OffscreenTest;

// A widget that paints a rectangle of its own size and logs its name.
struct Painted : widget {
    std::vector<std::string>* log = nullptr;
    void hook(std::vector<std::string>& out) {
        log = &out;
        event_manager::instance().add_event(this, this, event_type::draw, [this](const event_info&) {
            log->push_back(get_name());
            drawer& d = get_window()->get_drawer();
            d.set_brush_color({1, 0, 0, 1});
            d.draw_rect({0, 0, get_rect().w, get_rect().h});
        });
    }
};

TEST_F(PaintingTest, ParentsPaintBeforeChildrenAndShadowsBeforeAnyChildOfTheLevel) {
    TestWindow win({0, 0, 300, 200});
    Painted panel, a, b, hidden, outside;
    std::vector<std::string> order;
    for (Painted* w : {&panel, &a, &b, &hidden, &outside})
        w->hook(order);
    panel.set_name("panel");
    a.set_name("a");
    b.set_name("b");
    panel.create(win.get_root(), {10, 10, 200, 100});
    a.create(panel, {0, 0, 50, 50});
    b.create(panel, {60, 0, 50, 50});
    hidden.create(panel, {0, 0, 10, 10});
    hidden.hide();
    outside.create(win.get_root(), {250, 150, 40, 40});
    b.set_shadow(true, {2, 3}, 8);

    auto& canvas = win.os().get_canvas();
    canvas.clear_calls();
    paint(win, {0, 0, 240, 140}); // misses `outside`
    EXPECT_EQ(order, (std::vector<std::string>{"panel", "a", "b"}));

    std::vector<std::string> ops;
    for (const auto& c : canvas.calls())
        if (c.op == "draw_rect" || c.op == "draw_shadow")
            ops.push_back(c.op + "@" + std::to_string(c.origin.x) + "," + std::to_string(c.origin.y));
    EXPECT_EQ(ops, (std::vector<std::string>{"draw_rect@10,10", "draw_shadow@10,10", "draw_rect@10,10",
                                             "draw_rect@70,10"}));
    const auto shadows = canvas.calls_named("draw_shadow");
    ASSERT_EQ(shadows.size(), 1u);
    EXPECT_EQ(shadows[0].rect, (ivec4{60, 0, 50, 50}));
    EXPECT_EQ(shadows[0].clip, (ivec4{10, 10, 200, 100})) << "in the panel's pass, inside the panel";
    EXPECT_FALSE(canvas.in_pass());

    // A flush paints the dirty area and leaves nothing behind.
    win.os().paint_pending();
    order.clear();
    a.update(true);
    EXPECT_EQ(order, (std::vector<std::string>{"panel", "a"}));
    EXPECT_EQ(win.os().get_dirty(), ivec4{});
    EXPECT_FALSE(win.os().paint_pending());
}

// A widget that paints far past its own edges, as a list with more rows than room does.
struct Spilling : widget {
    int draws = 0;
    Spilling() {
        event_manager::instance().add_event(this, this, event_type::draw, [this](const event_info&) {
            ++draws;
            get_window()->get_drawer().draw_rect({-1000, -1000, 3000, 3000});
        });
    }
};

// Where each draw_rect can leave paint, in painting order: its rectangle in window coordinates,
// within its clip.
std::vector<ivec4> painted_rects(offscreen_drawer& canvas) {
    std::vector<ivec4> out;
    for (const auto& c : canvas.calls_named("draw_rect")) {
        const int left = std::max(c.rect.x + c.origin.x, c.clip.x),
                  top = std::max(c.rect.y + c.origin.y, c.clip.y);
        const int right = std::min(c.rect.x + c.origin.x + c.rect.w, c.clip.x + c.clip.w),
                  bottom = std::min(c.rect.y + c.origin.y + c.rect.h, c.clip.y + c.clip.h);
        out.push_back({left, top, std::max(0, right - left), std::max(0, bottom - top)});
    }
    return out;
}

TEST_F(PaintingTest, EachWidgetPaintsOnlyInsideItselfAndItsAncestorsWithinTheDirtyArea) {
    TestWindow win({0, 0, 300, 200});
    Spilling panel, child, grandchild, beside, outside;
    panel.create(win.get_root(), {10, 10, 100, 60});
    child.create(panel, {80, 40, 50, 50});            // hangs over the panel's bottom-right corner
    grandchild.create(child, {10, 10, 100, 100});     // and further still
    outside.create(panel, {150, 0, 20, 20});          // wholly outside its parent
    beside.create(win.get_root(), {120, 10, 50, 50}); // the neighbour the spill must not reach
    auto& canvas = win.os().get_canvas();

    canvas.clear_calls();
    paint(win, {0, 0, 300, 200});
    EXPECT_EQ(painted_rects(canvas), (std::vector<ivec4>{
                                         {10, 10, 100, 60}, // panel
                                         {90, 50, 20, 20},  // child, cut by the panel
                                         {100, 60, 10, 10}, // grandchild, cut by both
                                         {120, 10, 50, 50}, // beside
                                     }));
    EXPECT_EQ(outside.draws, 0) << "a widget outside its parent is not seen";

    // The dirty rectangle still limits every pass, and widgets it misses are not asked to paint.
    canvas.clear_calls();
    child.draws = grandchild.draws = beside.draws = 0;
    paint(win, {0, 0, 95, 55});
    EXPECT_EQ(painted_rects(canvas), (std::vector<ivec4>{{10, 10, 85, 45}, {90, 50, 5, 5}}));
    EXPECT_EQ(grandchild.draws, 0);
    EXPECT_EQ(beside.draws, 0);
    for (const auto& c : canvas.calls_named("start_draw"))
        EXPECT_TRUE(c.clip.w > 0 && c.clip.h > 0) << "no pass opens with nothing to paint";

    // Repainting one widget keeps it inside its ancestors.
    child.set_shadow(true, {4, 4}, 10);
    canvas.clear_calls();
    panel.draws = 0;
    win.process_draw(child, {0, 0, 300, 200});
    EXPECT_EQ(painted_rects(canvas), (std::vector<ivec4>{{90, 50, 20, 20}, {100, 60, 10, 10}}));
    EXPECT_EQ(panel.draws, 0);

    // A child's shadow is painted in its parent's pass, so it cannot leave the parent either.
    canvas.clear_calls();
    win.process_draw(panel, {0, 0, 300, 200});
    const auto shadows = canvas.calls_named("draw_shadow");
    ASSERT_EQ(shadows.size(), 1u);
    EXPECT_EQ(shadows[0].clip, (ivec4{10, 10, 100, 60}));
}

} // namespace
} // namespace toolkit_test
