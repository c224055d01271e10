// The standard controls as they paint: the showcase at rest and in the states a user puts them in,
// checked against approved pictures (see tests/support/draw_snapshot.h).

#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/showcase_controls.h"
#include "nimbit/ui/tooltip.h"
#include "tests/support/draw_snapshot.h"
#include "tests/widgets/widget_fixture.h"

#include <memory>

namespace {

using PictureTest = WidgetTest;

// The centre of a control, in window coordinates.
_vec2<int> centre(widget& w) {
    const _vec2<int> p = w.calc_absolute_pos();
    return {p.x + w.get_rect().w / 2, p.y + w.get_rect().h / 2};
}

TEST_F(PictureTest, ShowcaseAtRestAndInUse) {
    win.set_rect({0, 0, showcase_size.x, showcase_size.y});
    const std::unique_ptr<showcase> show = build_showcase(win);
    showcase_controls& c = show->controls();
    snapshot::picture p;
    p.section("at rest");
    win.get_root().update(false);
    p.calls(painted(win));

    p.section("button hovered, then held");
    offscreen::move_mouse(win, centre(c.button));
    p.calls(painted(win));
    offscreen::press_mouse(win, centre(c.button));
    p.calls(painted(win));
    offscreen::release_mouse(win, centre(c.button));

    p.section("the search text's last three characters selected");
    offscreen::click(win, centre(c.search)); // past the text's end: the caret goes there
    key_with(shift_key, event_key::left, 3);
    p.calls(painted(win));

    p.section("drop-down stepped up, down, down past the separator, then hovered");
    c.drop_down.focus(focus_cause::keyboard);
    key(event_key::up);
    key(event_key::down);
    p.lines.push_back("theme choice " + std::to_string(c.theme_choice));
    key(event_key::down);
    offscreen::move_mouse(win, centre(c.drop_down));
    p.calls(painted(win));
    p.lines.push_back("theme choice " + std::to_string(c.theme_choice));

    p.section("tooltip resting on the check box");
    c.check.add_tooltip("Renders at full size", "Full resolution");
    offscreen::move_mouse(win, centre(c.check));
    offscreen::advance_ms(100 * 10);
    ASSERT_TRUE(win.is_tooltip_shown());
    tooltip& tip = *win.get_tooltip_window();
    p.place("tooltip window", tip.get_rect());
    tip.get_root().update(false);
    offscreen::native_of(tip).paint_pending();
    p.calls(offscreen::native_of(tip).get_canvas().calls());
    c.check.remove_tooltips();

    p.section("grown by 100 x 60: the flexible split takes the height");
    win.set_rect({0, 0, showcase_size.x + 100, showcase_size.y + 60});
    p.calls(painted(win));
    p.lines.push_back("scroll range " + std::to_string(c.scroll.get_max_scroll()));

    EXPECT_TRUE(p.matches("showcase"));
}

} // namespace
