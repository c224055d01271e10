#include "toolkit_fixture.h"

#include "nimbit/ui/drawer.h"

namespace toolkit_test {
namespace {

using PaintingTest = ToolkitTest;

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
    for (auto* w : {&panel, &a, &b, &hidden, &outside})
        w->hook(order);
    panel.set_name("panel");
    a.set_name("a");
    b.set_name("b");
    hidden.set_name("hidden");
    outside.set_name("outside");
    panel.create(win.get_root(), {10, 10, 200, 100});
    a.create(panel, {0, 0, 50, 50});
    b.create(panel, {60, 0, 50, 50});
    hidden.create(panel, {0, 0, 10, 10});
    hidden.hide();
    outside.create(win.get_root(), {250, 150, 40, 40});
    b.set_shadow(true, {2, 3}, 8);

    auto& canvas = win.os().get_canvas();
    canvas.clear_calls();
    win.paint({0, 0, 240, 140}); // misses `outside`
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
    EXPECT_EQ(shadows[0].clip, (ivec4{0, 0, 240, 140}));
    EXPECT_FALSE(canvas.in_pass());
}

TEST_F(PaintingTest, FlushPaintsTheMergedDirtyArea) {
    TestWindow win({0, 0, 300, 200});
    Painted a;
    std::vector<std::string> order;
    a.hook(order);
    a.create(win.get_root(), {10, 10, 20, 20});
    win.os().paint_pending();
    order.clear();
    a.update(true);
    EXPECT_EQ(order, std::vector<std::string>{"Widget"});
    EXPECT_EQ(win.os().get_dirty(), ivec4{});
    EXPECT_FALSE(win.os().paint_pending()); // nothing left
}

} // namespace
} // namespace toolkit_test
