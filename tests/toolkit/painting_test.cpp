#include "toolkit_fixture.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"

#include <algorithm>

namespace toolkit_test {
namespace {

using PaintingTest = OffscreenTest;

// A widget that logs its name and paints far past its own edges, as a list with more rows than room does.
struct Spilling : widget {
    Spilling(std::vector<std::string>& log, const char* name) {
        set_name(name);
        event_manager::instance().add_event(this, this, event_type::draw, [this, &log](const event_info&) {
            log.push_back(get_name());
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
    canvas.clear_calls();
    return out;
}

// Parents paint before their children, each widget only inside itself and its ancestors within the
// dirty area, and the shadows of a level go under all its children, inside the parent.
TEST_F(PaintingTest, EachWidgetPaintsAfterItsParentOnlyInsideItAndItsAncestorsWithinTheDirtyArea) {
    TestWindow win({0, 0, 300, 200});
    std::vector<std::string> order;
    Spilling panel(order, "panel"), a(order, "a"), child(order, "child"), grandchild(order, "grandchild"),
        hidden(order, "hidden"), outside(order, "outside"), beside(order, "beside");
    panel.create(win.get_root(), {10, 10, 100, 60});
    a.create(panel, {0, 0, 30, 30});
    child.create(panel, {80, 40, 50, 50});        // hangs over the panel's bottom-right corner
    grandchild.create(child, {10, 10, 100, 100}); // and further still
    hidden.create(panel, {0, 0, 10, 10});
    hidden.hide();
    outside.create(panel, {150, 0, 20, 20});          // wholly outside its parent
    beside.create(win.get_root(), {120, 10, 50, 50}); // the neighbour the spill must not reach
    child.set_shadow(true, {2, 3}, 8);
    auto& canvas = win.os().get_canvas();

    canvas.clear_calls();
    paint(win, {0, 0, 300, 200});
    std::vector<std::string> ops;
    for (const auto& c : canvas.calls())
        if (c.op == "draw_rect" || c.op == "draw_shadow")
            ops.push_back(c.op);
    EXPECT_EQ(ops, (std::vector<std::string>{"draw_rect", "draw_shadow", "draw_rect", "draw_rect",
                                             "draw_rect", "draw_rect"}));
    const auto shadows = canvas.calls_named("draw_shadow");
    ASSERT_EQ(shadows.size(), 1u);
    EXPECT_EQ(std::pair(shadows[0].rect, shadows[0].clip),
              std::pair(ivec4{80, 40, 50, 50}, ivec4{10, 10, 100, 60}));
    EXPECT_EQ(painted_rects(canvas), (std::vector<ivec4>{
                                         {10, 10, 100, 60}, // panel
                                         {10, 10, 30, 30},  // a
                                         {90, 50, 20, 20},  // child, cut by the panel
                                         {100, 60, 10, 10}, // grandchild, cut by both
                                         {120, 10, 50, 50}, // beside
                                     }));
    EXPECT_EQ(order, (std::vector<std::string>{"panel", "a", "child", "grandchild", "beside"}));
    EXPECT_FALSE(canvas.in_pass());

    // The dirty rectangle still limits every pass, and widgets it misses are not asked to paint.
    order.clear();
    paint(win, {0, 0, 95, 55});
    for (const auto& c : canvas.calls_named("start_draw"))
        EXPECT_TRUE(c.clip.w > 0 && c.clip.h > 0) << "no pass opens with nothing to paint";
    EXPECT_EQ(painted_rects(canvas),
              (std::vector<ivec4>{{10, 10, 85, 45}, {10, 10, 30, 30}, {90, 50, 5, 5}}));
    EXPECT_EQ(order, (std::vector<std::string>{"panel", "a", "child"}));

    // Repainting one widget keeps it inside its ancestors.
    win.process_draw(child, {0, 0, 300, 200});
    EXPECT_EQ(painted_rects(canvas), (std::vector<ivec4>{{90, 50, 20, 20}, {100, 60, 10, 10}}));

    // A flush paints the dirty area and leaves nothing behind.
    win.os().paint_pending();
    order.clear();
    a.update(true);
    EXPECT_EQ(order, (std::vector<std::string>{"panel", "a"}));
    EXPECT_EQ(win.os().get_dirty(), ivec4{});
    EXPECT_FALSE(win.os().paint_pending());
}

} // namespace
} // namespace toolkit_test
