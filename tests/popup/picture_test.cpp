// The popup as it paints, checked against approved pictures (see tests/support/draw_snapshot.h):
// layout, colours and texts in the states an artist sees. The message windows' pictures are taken
// with their own tests.

#include "nimbit/ui/offscreen/offscreen_input.h"
#include "tests/popup/popup_fixture.h"
#include "tests/support/draw_snapshot.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

using PicturePopupTest = PopupTest;

TEST_F(PicturePopupTest, PopupInEachModeWithRowsHoverAndShortcuts) {
    snapshot::picture p;
    const struct {
        const char *title, *comp, *layer;
    } modes[] = {{"no composition", "", ""}, {"composition, no layer", "Comp 1", ""}};
    for (const auto& m : modes) {
        p.section(m.title);
        Open(m.comp, m.layer);
        p.place("window", popup->get_rect());
        p.calls(painted(*popup));
        popup->hide();
    }

    p.section("search mode with two shortcuts");
    SetSlot(1, "Glow", "Glo");
    SetSlot(4, "Curves", "Cur");
    Open();
    p.place("window", popup->get_rect());
    p.calls(painted(*popup));

    p.section("rows for \"blur\", the second hovered");
    Search("blur");
    p.place("window", popup->get_rect());
    const ivec4 second = popup->GetRows()[1]->get_rect();
    const _vec2<int> at = popup->GetRows()[1]->calc_absolute_pos();
    offscreen::move_mouse(*popup, {at.x, at.y + second.h / 2}); // its left edge
    p.calls(painted(*popup));
    p.lines.push_back("selected " + SelectedName());

    p.section("no matches");
    Search("zzz");
    p.calls(painted(*popup));
    EXPECT_TRUE(p.matches("popup"));
}

} // namespace
