#include "tests/support/widget_fixture.h"

#include "nimbit/graphics/rect.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"
#include "nimbit/ui/widget_themes.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>

namespace {

using enum event_type;

TEST_F(WidgetTest, CreateRaisesItsEventsAndDisablingAndHidingReachEveryDescendant) {
    widget parent, child, a, b, c, d;
    parent.create(win.get_root(), {10, 10, 200, 100});
    event_recorder r;
    r.watch(child, "child", {create, shown, parent_changed});
    r.watch(parent, "parent", {child_added});
    child.create(parent, {1, 2, 3, 4});
    EXPECT_EQ(r.take(true), (lines{ev("child", shown, 0), ev("child", create, 0),
                                   ev("child", parent_changed, pack_pointer(&parent)),
                                   ev("parent", child_added, pack_pointer(&child))}));
    EXPECT_EQ(std::tuple(child.is_created(), child.is_visible(true), child.get_window(),
                         parent.get_children(), win.get_widgets().back()),
              std::tuple(true, true, &win, std::vector<widget*>{&child}, &child));

    // Disabling and hiding reach every descendant without touching their own flags.
    a.create(win.get_root(), {0, 0, 100, 100});
    b.create(a, {0, 0, 50, 50});
    c.create(b, {0, 0, 10, 10});
    a.enable(false);
    EXPECT_TRUE(c.is_enabled() && !c.is_parent_enabled() && !b.is_live());
    b.enable(false);
    a.enable(true);
    EXPECT_TRUE(b.is_parent_enabled() && !c.is_parent_enabled()) << "b itself is still disabled";
    b.enable(true);
    EXPECT_TRUE(c.is_live());
    r.watch(b, "b", {shown, hidden});
    a.show(false);
    b.show(true); // unchanged: no event
    EXPECT_TRUE(c.is_visible(false) && !c.is_visible(true) && r.count() == 0);
    // A child added under a hidden, disabled parent inherits both; removal resets them.
    a.enable(false);
    d.create(b, {0, 0, 5, 5});
    EXPECT_FALSE(d.is_visible(true) || d.is_live());
    b.remove_child(&d);
    EXPECT_TRUE(d.is_visible(true) && d.is_live());
}

TEST_F(WidgetTest, RemovingOrDestroyingChildrenDetachesThemEverywhere) {
    widget parent, child, grandchild;
    parent.create(win.get_root(), {0, 0, 100, 100});
    child.create(parent, {0, 0, 10, 10});
    int via_parent = 0, other = 0;
    parent.add_child_event(child, custom, [&](const event_info&) { ++via_parent; });
    event_recorder r;
    r.watch(child, "child", {parent_changed});
    r.watch(parent, "parent", {child_removed});
    event_manager::instance().add_event(&child, &r, custom, [&](const event_info&) { ++other; });
    parent.remove_child(&child);
    EXPECT_EQ(r.take(true),
              (lines{ev("child", parent_changed, 0), ev("parent", child_removed, pack_pointer(&child))}));
    event_manager::instance().fire_event(&child, custom, 0);
    EXPECT_EQ(std::pair(via_parent, other), std::pair(0, 1)) << "the parent's subscription went with it";
    EXPECT_TRUE(child.get_parent() == nullptr && parent.get_children().empty());

    // A destroyed child leaves no callbacks, focus or grandchild link behind.
    {
        widget gone;
        gone.create(parent, {0, 0, 50, 50});
        grandchild.create(gone, {0, 0, 5, 5});
        event_manager::instance().add_event(&parent, &gone, custom, [&](const event_info&) { ++other; });
        parent.add_child_event(gone, custom, [&](const event_info&) { ++other; });
        gone.focus();
    }
    event_manager::instance().fire_event(&parent, custom, 0);
    EXPECT_TRUE(other == 1 && parent.get_children().empty() && !grandchild.get_parent() && !win.get_focus());

    // remove_all_children survives callbacks that destroy children.
    auto a = std::make_unique<widget>(), b = std::make_unique<widget>(), c = std::make_unique<widget>();
    for (widget* w : {a.get(), b.get(), c.get()})
        w->create(parent, {0, 0, 1, 1});
    int removed = 0;
    event_manager::instance().add_event(&parent, &win, child_removed, [&](const event_info&) {
        ++removed;
        c.reset(); // a later child dies while the list is walked
    });
    parent.remove_all_children();
    EXPECT_TRUE(removed == 3 && parent.get_children().empty() && !a->get_parent());
}

// Removed children leave holes squeezed out later; survivors keep their order in the parent and in
// the window's Tab order.
TEST_F(WidgetTest, RemovalsInAnyOrderKeepTheOthersInOrder) {
    widget parent, extra;
    parent.create(win.get_root(), {0, 0, 100, 100});
    std::vector<std::unique_ptr<widget>> rows(300);
    std::vector<size_t> order(rows.size());
    std::iota(order.begin(), order.end(), 0);
    for (auto& r : rows)
        (r = std::make_unique<widget>())->create(parent, {0, 0, 10, 10});
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    for (size_t k = 0; k < 250; ++k) {
        rows[order[k]].reset();
        if (k % 50 == 0) { // reading in between compacts
            EXPECT_EQ(parent.get_children().size(), rows.size() - k - 1);
        }
    }
    std::vector<widget*> expected;
    for (auto& r : rows)
        if (r)
            expected.push_back(r.get());
    EXPECT_EQ(parent.get_children(), expected);
    EXPECT_EQ(std::vector<widget*>(win.get_widgets().begin() + 2, win.get_widgets().end()), expected);
    expected.back()->send_to_back();
    extra.create(parent, {0, 0, 1, 1});
    EXPECT_TRUE(parent.get_children().front() == expected.back() && parent.get_children().back() == &extra);
}

// A rectangle change raises the old values; anchored children follow silently, and pass the change on
// to their own children through parent_resize and parent_move. Where anchors place widgets is the
// showcase picture's part (it grows the window).
TEST_F(WidgetTest, RectangleChangesRaiseOldValuesAndAnchorsFollowThroughEveryLevel) {
    widget panel, stretch, right, pinned, content;
    panel.create(win.get_root(), {10, 20, 200, 100});
    for (widget* w : {&stretch, &right})
        w->create(panel, {0, 0, 30, 10});
    pinned.create(stretch, {0, 0, 20, 20});
    content.create(right, {0, 0, 10, 10});
    stretch.set_anchor(anchor_type::left, 5);
    stretch.set_anchor(anchor_type::right, 7);
    right.set_anchor(anchor_type::right, 4);
    pinned.set_anchor(anchor_type::right, 5);
    event_recorder r;
    r.watch(panel, "panel", {resize, move});
    for (auto [w, name] : {std::pair{&stretch, "stretch"}, {&pinned, "pinned"}, {&content, "content"}})
        r.watch(*w, name, {resize, move, parent_resize, parent_move});
    panel.set_rect({11, 22, 300, 150});
    EXPECT_EQ(
        r.take(true),
        (lines{ev("panel", resize, pack_pair(200, 100)), ev("stretch", parent_resize, pack_pair(200, 100)),
               ev("pinned", parent_resize, pack_pair(188, 10)), ev("content", parent_move, pack_pair(166, 0)),
               ev("panel", move, pack_pair(10, 20)), ev("stretch", parent_move, pack_pair(10, 20))}));
    EXPECT_EQ(pinned.get_rect(), (ivec4{263, 0, 20, 20}));
    panel.set_rect({11, 22, 300, 150}); // unchanged: nothing raised
    EXPECT_EQ(r.count(), 0u);
}

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
// within its clip. Every widget asked to paint adds one, so the list also says who painted.
std::vector<ivec4> painted_rects(offscreen_drawer& canvas) {
    std::vector<ivec4> out;
    for (const auto& c : canvas.calls_named("draw_rect"))
        out.push_back(
            intersection({c.rect.x + c.origin.x, c.rect.y + c.origin.y, c.rect.w, c.rect.h}, c.clip));
    canvas.clear_calls();
    return out;
}

// Parents paint before their children, each widget only inside itself and its ancestors within the
// dirty area, and the shadows of a level go under all its children, inside the parent. Update
// rectangles are clipped by every ancestor the same way.
TEST_F(OffscreenTest, EachWidgetPaintsAndUpdatesOnlyInsideItAndItsAncestorsAfterItsParent) {
    TestWindow win({100, 100, 300, 200});
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
    offscreen::events_of(win).paint({0, 0, 300, 200});
    std::string ops; // R for a rectangle, S for a shadow
    for (const auto& c : canvas.calls())
        ops += c.op == "draw_rect" ? "R" : c.op == "draw_shadow" ? "S" : "";
    ASSERT_EQ(ops, "RSRRRR");
    const auto shadows = canvas.calls_named("draw_shadow");
    EXPECT_EQ(std::pair(shadows[0].rect, shadows[0].clip),
              std::pair(ivec4{80, 40, 50, 50}, ivec4{10, 10, 100, 60}));
    EXPECT_EQ(painted_rects(canvas), (std::vector<ivec4>{
                                         {10, 10, 100, 60}, // panel
                                         {10, 10, 30, 30},  // a
                                         {90, 50, 20, 20},  // child, cut by the panel
                                         {100, 60, 10, 10}, // grandchild, cut by both
                                         {120, 10, 50, 50}, // beside
                                     }));
    EXPECT_FALSE(canvas.in_pass());

    // The dirty rectangle still limits every pass, and widgets it misses are not asked to paint.
    offscreen::events_of(win).paint({0, 0, 95, 55});
    for (const auto& c : canvas.calls_named("start_draw"))
        EXPECT_TRUE(c.clip.w > 0 && c.clip.h > 0) << "no pass opens with nothing to paint";
    EXPECT_EQ(painted_rects(canvas),
              (std::vector<ivec4>{{10, 10, 85, 45}, {10, 10, 30, 30}, {90, 50, 5, 5}}));

    // A flush paints the dirty area and leaves nothing behind.
    win.os().paint_pending();
    order.clear();
    a.update(true);
    EXPECT_EQ(order, (std::vector<std::string>{"panel", "a"}));
    EXPECT_TRUE(win.os().get_dirty() == ivec4{} && !win.os().paint_pending());

    widget outer, inner, leaf;
    outer.create(win.get_root(), {10, 10, 100, 100});
    inner.create(outer, {50, 50, 100, 100});
    leaf.create(inner, {-10, 20, 30, 200});
    EXPECT_EQ(std::pair(leaf.calc_absolute_pos(), leaf.get_screen_pos()),
              std::pair(_vec2<int>{50, 80}, _vec2<int>{150, 180}));
    // leaf spans x 50..80, y 80..280; inner clips to x 60..160, y 60..160; outer to x 10..110, y 10..110.
    win.os().paint_pending();
    leaf.update(false);
    EXPECT_EQ(win.os().get_dirty(), (ivec4{60, 80, 20, 30}));
    win.os().paint_pending();
    outer.set_rect({20, 10, 100, 100}); // the old area is invalidated as well as the new
    EXPECT_EQ(win.os().get_dirty(), (ivec4{10, 10, 110, 100}));
}

event_manager& em = event_manager::instance();

struct Source : event_object {};

// Bound member functions (the common way to listen) run like any callback: on a snapshot, and not
// after their registration is gone, even when its storage has been taken by a newer registration.
struct Listener : event_object {
    Listener(std::vector<int>& l, int t) : log(&l), tag(t) {}
    std::vector<int>* log;
    uint32_t own_id = 0;
    int tag;
    void heard(const event_info& e) {
        log->push_back(tag + static_cast<int>(e.data));
        event_manager::instance().remove_event(own_id);
    }
};

TEST(EventManager, FireReportsAListAndCallbacksAndBoundMembersRunOnASnapshotUntilRemoved) {
    Source s;
    EXPECT_FALSE(em.fire_event(&s, custom, 0));
    event_info seen;
    const uint32_t id = em.add_event(&s, &s, custom, [&](const event_info& e) { seen = e; });
    EXPECT_TRUE(em.fire_event(&s, custom, 0x1234567890ull));
    EXPECT_EQ(std::pair(seen.sender, seen.data), std::pair(static_cast<event_object*>(&s), 0x1234567890ull));
    em.remove_event(id);
    EXPECT_TRUE(em.has_event(&s, custom) && em.fire_event(&s, custom, 0));
    EXPECT_FALSE(em.fire_event(&s, draw, 0)); // only that type got a list
    em.remove_event(id);                      // again, and an id never handed out: ignored
    em.remove_event(0xFFFFFFF0u);

    // Callbacks run in registration order on a snapshot.
    // The first removes itself and the second and adds a fourth: the running dispatch is unchanged.
    std::vector<int> order;
    uint32_t first = 0, second = 0;
    first = em.add_event(&s, &s, custom, [&](const event_info&) {
        order.push_back(1);
        em.remove_event(first);
        em.remove_event(second);
        em.add_event(&s, &s, custom, [&](const event_info&) { order.push_back(4); });
    });
    second = em.add_event(&s, &s, custom, [&](const event_info&) { order.push_back(2); });
    em.add_event(&s, &s, custom, [&](const event_info&) { order.push_back(3); });
    em.fire_event(&s, custom, 0);
    em.fire_event(&s, custom, 0);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 3, 4}));

    // Bound members run once after removing themselves; new registrations reuse their storage.
    Source s2;
    std::vector<int> log;
    Listener a(log, 10), b(log, 20), c(log, 30);
    a.own_id = em.add_event(&s2, &a, custom, &Listener::heard);
    b.own_id = em.add_event(&s2, &b, custom, &Listener::heard);
    em.fire_event(&s2, custom, 1);
    // Both are gone; new registrations reuse their storage but only they run.
    c.own_id = em.add_event(&s2, &c, custom, &Listener::heard);
    int plain = 0;
    em.add_event(&s2, &s2, custom, [&](const event_info&) { ++plain; });
    em.remove_event(a.own_id); // long gone: ignored, must not touch the recycled ones
    em.fire_event(&s2, custom, 2);
    em.fire_event(&s2, custom, 2);
    EXPECT_EQ(std::pair(plain, log), std::pair(2, std::vector<int>{11, 21, 32}));
}

// Registrations go with their objects, also during dispatch, and an owner of short-lived ones sheds
// the removed ones instead of growing without bound.
TEST(EventManager, DestroyingObjectsDropsTheirRegistrationsAndRemovedOnesAreShed) {
    auto s = std::make_unique<Source>();
    Source other;
    int after = 0;
    em.add_event(s.get(), &other, custom, [&](const event_info&) { s.reset(); });
    em.add_event(s.get(), &other, custom, [&](const event_info& e) { after += e.sender != nullptr; });
    EXPECT_TRUE(em.fire_event(s.get(), custom, 0));
    EXPECT_EQ(after, 1); // the snapshot still ran the second callback

    // Destroying an object drops what it owns and what is attached to it.
    Source keeper;
    int heard = 0;
    {
        Source owner;
        em.add_event(&keeper, &owner, custom, [&](const event_info&) { ++heard; });
        em.add_event(&owner, &keeper, custom, [&](const event_info&) { ++heard; });
        EXPECT_TRUE(em.fire_event(&keeper, custom, 0) && em.fire_event(&owner, custom, 0) && heard == 2);
    }
    // The owner's callback on keeper is gone (keeper's list stays, now empty).
    EXPECT_TRUE(em.fire_event(&keeper, custom, 0) && heard == 2);
    // keeper still owns a callback on a source that no longer exists; removing keeper's registrations
    // skips it quietly.
    em.remove_events(&keeper);

    // Like a list that subscribes to its rows on every rebuild: removed ids are shed once the owner's
    // list reaches its limit (64 at first), while live ones are kept and still removed with the owner.
    Source owner, keep;
    for (int i = 0; i < 64; ++i)
        em.remove_event(em.add_event(&keep, &owner, draw, [](const event_info&) {}));
    int kept_calls = 0;
    em.add_event(&keep, &owner, custom, [&](const event_info&) { ++kept_calls; });
    EXPECT_EQ(em.owned_id_count(&owner), 1u) << "the 65th registration sheds the 64 removed ones";
    for (int rebuild = 0; rebuild < 50; ++rebuild) {
        std::vector<std::unique_ptr<Source>> rows(100);
        for (auto& r : rows)
            em.add_event((r = std::make_unique<Source>()).get(), &owner, mouse_down,
                         [](const event_info&) {});
    }
    EXPECT_LT(em.owned_id_count(&owner), 500u);
    em.fire_event(&keep, custom, 0);
    em.remove_events(&owner);
    em.fire_event(&keep, custom, 0);
    EXPECT_EQ(std::pair(kept_calls, em.owned_id_count(&owner)), std::pair(1, size_t(0)));
}

TEST(ThemeDeathTest, OwnStylesWinLinksReadThroughUnknownKeysStopAndChangesReachTheOwner) {
    // plugin_map is process-wide: the scene leaves it empty again however it ends.
    const std::shared_ptr<void> guard(nullptr, [](void*) { theme::plugin_map.clear(); });
    theme t;
    theme::plugin_map.insert_or_assign(theme_keys::button_font_color, theme_style(vec4{0.5f, 0.5f, 0.5f, 1}));
    t.set(theme_keys::button_font_color, vec4{0, 0, 1, 1});
    theme l; // own styles are per theme
    EXPECT_EQ(
        std::pair(t.get<vec4>(theme_keys::button_font_color), l.get<vec4>(theme_keys::button_font_color)),
        std::pair(vec4{0, 0, 1, 1}, vec4{0.5f, 0.5f, 0.5f, 1}));
    // Links read the target through all levels; here a plugin-only key (not in the default table),
    // found through the second level.
    theme::plugin_map.insert_or_assign("app_label_color", theme_style(vec4{0.2f, 0.4f, 0.6f, 1}));
    l.link(theme_keys::label_font_color, "app_label_color");
    EXPECT_EQ(std::pair(l.translate(theme_keys::label_font_color), l.translate(theme_keys::label_font_size)),
              std::pair(std::string_view("app_label_color"), theme_keys::label_font_size));
    EXPECT_EQ(l.get<vec4>(theme_keys::label_font_color), (vec4{0.2f, 0.4f, 0.6f, 1}));
    // An own style of the target wins, as for any look-up.
    l.set("app_label_color", vec4{1, 0, 0, 1});
    EXPECT_EQ(l.get<vec4>(theme_keys::label_font_color), (vec4{1, 0, 0, 1}));
    // Character arrays stay strings, unknown keys stop.
    t.set(theme_keys::checkbox_font_name, "abcde"); // a character array, not a bool
    EXPECT_EQ(t.get<std::string>(theme_keys::checkbox_font_name), "abcde");
    EXPECT_DEATH(t.get_theme_style("no_such_key"), "false && \"Style not found\"");

    // Changes are announced to the owner with the key's address; copies keep their own owner.
    event_recorder a, b;
    a.watch(a, "", {theme_changed});
    b.watch(b, "", {theme_changed});
    theme first(&a);
    first.set(theme_keys::label_font_name, std::string("courier"));
    first.link(theme_keys::button_font_color, theme_keys::tooltip_font_color);
    first.link(theme_keys::button_font_color, theme_keys::tooltip_font_color); // same target: silent
    EXPECT_EQ(a.data(), (std::vector<uint64_t>{pack_pointer(theme_keys::label_font_name.data()),
                                               pack_pointer(theme_keys::button_font_color.data())}));
    // A copy takes styles and links but not the owner.
    theme second(&b);
    second = first;
    EXPECT_EQ(second.get<std::string>(theme_keys::label_font_name), "courier");
    EXPECT_EQ(second.translate(theme_keys::button_font_color), theme_keys::tooltip_font_color);
    const size_t heard = b.count();
    second.set(theme_keys::label_font_size, 20.0f);
    EXPECT_EQ(std::tuple(second.get_owner(), b.count(), a.count()), std::tuple(&b, heard + 1, size_t(2)));
}

} // namespace
