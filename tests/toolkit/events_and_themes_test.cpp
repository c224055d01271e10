#include "toolkit_fixture.h"

#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget_themes.h"

#include <memory>

namespace toolkit_test {
namespace {

event_manager& em() {
    return event_manager::instance();
}

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
    EXPECT_FALSE(em().fire_event(&s, custom, 0));
    event_info seen;
    const uint32_t id = em().add_event(&s, &s, custom, [&](const event_info& e) { seen = e; });
    EXPECT_TRUE(em().fire_event(&s, custom, 0x1234567890ull));
    EXPECT_EQ(std::pair(seen.sender, seen.data), std::pair(static_cast<event_object*>(&s), 0x1234567890ull));
    em().remove_event(id);
    EXPECT_TRUE(em().has_event(&s, custom) && em().fire_event(&s, custom, 0));
    EXPECT_FALSE(em().fire_event(&s, draw, 0)); // only that type got a list
    em().remove_event(id);                      // again, and an id never handed out: ignored
    em().remove_event(0xFFFFFFF0u);

    // Callbacks run in registration order on a snapshot.
    // The first removes itself and the second and adds a fourth: the running dispatch is unchanged.
    std::vector<int> order;
    uint32_t first = 0, second = 0;
    first = em().add_event(&s, &s, custom, [&](const event_info&) {
        order.push_back(1);
        em().remove_event(first);
        em().remove_event(second);
        em().add_event(&s, &s, custom, [&](const event_info&) { order.push_back(4); });
    });
    second = em().add_event(&s, &s, custom, [&](const event_info&) { order.push_back(2); });
    em().add_event(&s, &s, custom, [&](const event_info&) { order.push_back(3); });
    em().fire_event(&s, custom, 0);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    order.clear();
    em().fire_event(&s, custom, 0);
    EXPECT_EQ(order, (std::vector<int>{3, 4}));

    // Bound members run once after removing themselves; new registrations reuse their storage.
    Source s2;
    std::vector<int> log;
    Listener a(log, 10), b(log, 20), c(log, 30);
    a.own_id = em().add_event(&s2, &a, custom, &Listener::heard);
    b.own_id = em().add_event(&s2, &b, custom, &Listener::heard);
    em().fire_event(&s2, custom, 1);
    EXPECT_EQ(log, (std::vector<int>{11, 21}));
    // Both are gone; new registrations reuse their storage but only they run.
    c.own_id = em().add_event(&s2, &c, custom, &Listener::heard);
    int plain = 0;
    em().add_event(&s2, &s2, custom, [&](const event_info&) { ++plain; });
    em().remove_event(a.own_id); // long gone: ignored, must not touch the recycled ones
    log.clear();
    em().fire_event(&s2, custom, 2);
    EXPECT_EQ(log, (std::vector<int>{32}));
    em().fire_event(&s2, custom, 2);
    EXPECT_EQ(std::pair(plain, log.size()), std::pair(2, size_t(1)));
}

TEST(EventManager, DestroyingObjectsEvenDuringDispatchDropsTheirRegistrations) {
    auto s = std::make_unique<Source>();
    Source other;
    int after = 0;
    em().add_event(s.get(), &other, custom, [&](const event_info&) { s.reset(); });
    em().add_event(s.get(), &other, custom, [&](const event_info& e) { after += e.sender != nullptr; });
    EXPECT_TRUE(em().fire_event(s.get(), custom, 0));
    EXPECT_EQ(after, 1); // the snapshot still ran the second callback

    // Destroying an object drops what it owns and what is attached to it.
    Source keeper;
    int heard = 0;
    {
        Source owner;
        em().add_event(&keeper, &owner, custom, [&](const event_info&) { ++heard; });
        em().add_event(&owner, &keeper, custom, [&](const event_info&) { ++heard; });
        EXPECT_TRUE(em().fire_event(&keeper, custom, 0) && em().fire_event(&owner, custom, 0) && heard == 2);
    }
    // The owner's callback on keeper is gone (keeper's list stays, now empty).
    EXPECT_TRUE(em().fire_event(&keeper, custom, 0) && heard == 2);
    // keeper still owns a callback on a source that no longer exists; removing keeper's registrations
    // skips it quietly.
    em().remove_events(&keeper);
}

TEST(EventManager, AnOwnerOfShortLivedRegistrationsDoesNotGrowWithoutBound) {
    // Like a list that subscribes to its rows on every rebuild: removed ids are shed once the owner's
    // list reaches its limit (64 at first), while live ones are kept and still removed with the owner.
    Source owner, keep;
    for (int i = 0; i < 64; ++i)
        em().remove_event(em().add_event(&keep, &owner, draw, [](const event_info&) {}));
    int kept_calls = 0;
    em().add_event(&keep, &owner, custom, [&](const event_info&) { ++kept_calls; });
    EXPECT_EQ(em().owned_id_count(&owner), 1u) << "the 65th registration sheds the 64 removed ones";
    for (int rebuild = 0; rebuild < 50; ++rebuild) {
        std::vector<std::unique_ptr<Source>> rows(100);
        for (auto& r : rows)
            em().add_event((r = std::make_unique<Source>()).get(), &owner, mouse_down,
                           [](const event_info&) {});
    }
    EXPECT_LT(em().owned_id_count(&owner), 500u);
    em().fire_event(&keep, custom, 0);
    em().remove_events(&owner);
    em().fire_event(&keep, custom, 0);
    EXPECT_EQ(std::pair(kept_calls, em().owned_id_count(&owner)), std::pair(1, size_t(0)));
}

// An owner that writes down every theme_changed it hears, as the key text it points at.
struct listener : event_object {
    std::vector<const char*> keys;
    listener() {
        event_manager::instance().add_event(
            this, this, event_type::theme_changed,
            [this](const event_info& e) { keys.push_back(pointer_payload<const char>(e.data)); });
    }
};

// plugin_map is process-wide: every test that fills it leaves it empty again.
struct plugin_guard {
    ~plugin_guard() { theme::plugin_map.clear(); }
};

TEST(ThemeDeathTest, OwnStylesWinLinksReadThroughUnknownKeysStopAndChangesReachTheOwner) {
    plugin_guard guard;
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
    listener a, b;
    theme first(&a);
    first.set(theme_keys::label_font_name, std::string("courier"));
    first.link(theme_keys::button_font_color, theme_keys::tooltip_font_color);
    first.link(theme_keys::button_font_color, theme_keys::tooltip_font_color); // same target: silent
    EXPECT_EQ(a.keys, (std::vector<const char*>{theme_keys::label_font_name.data(),
                                                theme_keys::button_font_color.data()}));
    // A copy takes styles and links but not the owner.
    theme second(&b);
    second = first;
    EXPECT_EQ(second.get<std::string>(theme_keys::label_font_name), "courier");
    EXPECT_EQ(second.translate(theme_keys::button_font_color), theme_keys::tooltip_font_color);
    const size_t heard = b.keys.size();
    second.set(theme_keys::label_font_size, 20.0f);
    EXPECT_EQ(std::tuple(second.get_owner(), b.keys.size(), a.keys.size()),
              std::tuple(&b, heard + 1, size_t(2)));
}

} // namespace
} // namespace toolkit_test
