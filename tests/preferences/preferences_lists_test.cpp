// The preferences window's list panels on the offscreen backend: what the rows show, and what the
// pointer does to them.
#include "preferences/preferences_effects_scroll_panel.h"

#include "host/effect_data.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/window.h"
#include "popup/effect_alias.h"
#include "tests/support/offscreen_test.h"

#include <string>
#include <vector>

using namespace nimbit;
using namespace nimbit::ui;
using Kind = PreferencesListKind;

namespace {

constexpr int Top = 10, Row = PreferencesEffectSlot::Height;
constexpr int FirstRow = Top + PreferencesEffectsScrollPanel::HeaderHeight;

EffectData Effect(const char* name, const char* search) {
    return EffectData{0, name, search, {}, false};
}

struct ListsTest : OffscreenTest {
    void SetUp() override {
        OffscreenTest::SetUp();
        host.create("lists", {0, 0, 400, 400});
        host.show();
    }
    // A panel over `entries`, recording what its rows raise as "row:type:x,y" (New: "new:...").
    PreferencesEffectsScrollPanel& Open(Kind kind, std::vector<EffectAlias> entries, int height = 300) {
        list = std::move(entries);
        panel = std::make_unique<PreferencesEffectsScrollPanel>(kind, list);
        panel->onSlotEvent = [this](PreferencesEffectSlot* s, event_type t, uint64_t at) {
            Record(std::to_string(s->GetIndex()), t, at);
        };
        panel->onNewEvent = [this](PreferencesEffectNew*, event_type t, uint64_t at) {
            Record("new", t, at);
        };
        panel->create(host.get_root(), {10, Top, 300, height});
        panel->show(true);
        return *panel;
    }
    void Record(const std::string& what, event_type t, uint64_t at) {
        events.push_back(what + ":" + std::to_string(static_cast<int>(t)) + ":" +
                         std::to_string(pair_low(at)) + "," + std::to_string(pair_high(at)));
    }
    std::string Painted() {
        std::string texts;
        for (const draw_call& c : painted(host))
            if (c.op == "draw_text")
                texts += (texts.empty() ? "" : "|") + c.text;
        return texts;
    }
    std::string Order() const {
        std::string names;
        for (const EffectAlias& e : list)
            names += e.effect != nullptr ? e.effect->name : "-";
        return names;
    }

    window host;
    EffectData a = Effect("A", "a"), b = Effect("B", "b"), c = Effect("C", "c"), d = Effect("D", "d");
    EffectData blur = Effect("Gaussian Blur", "gaussian blur"), glow = Effect("Glow", "glow");
    std::vector<EffectAlias> list;
    std::unique_ptr<PreferencesEffectsScrollPanel> panel;
    std::vector<std::string> events;
};

TEST_F(ListsTest, RowsShowTheColumnsOfTheirListUnderItsTitles) {
    struct Case {
        Kind kind;
        std::vector<EffectAlias> entries;
        std::string texts;
    };
    const std::string emptySlots =
        "|3|Empty Slot|4|Empty Slot|5|Empty Slot|6|Empty Slot|7|Empty Slot|8|Empty "
        "Slot|9|Empty Slot";
    const Case cases[] = {
        // Too short a shortcuts list still shows the nine slots.
        {Kind::Shortcuts,
         {{"Gau", &blur}, {}},
         "Name|Label|1|Gaussian Blur|Gau|2|Empty Slot" + emptySlots + "|New +"},
        // The alias shows only when it is not the search name.
        {Kind::Favorites,
         {{"gaussian blur", &blur}, {"gl", &glow, &blur}},
         "Name|Override|Alias|Gaussian Blur|Glow|Gaussian Blur|gl|New Override +"},
        {Kind::Blacklist, {{"glow", &glow}}, "Name|Glow|New Alias +"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.kind));
        Open(c.kind, c.entries);
        EXPECT_EQ(Painted(), c.texts);
        std::vector<ivec4> titles; // each title ends before the next column starts
        for (const draw_call& t : painted(host))
            if (t.op == "draw_text" && t.origin == ivec2{10, Top})
                titles.push_back(t.rect);
        for (size_t i = 1; i < titles.size(); ++i)
            EXPECT_LT(titles[i - 1].x + titles[i - 1].w, titles[i].x);
    }
    EXPECT_EQ(list.size(), 1u); // only the shortcuts list was padded, to nine
}

TEST_F(ListsTest, DraggingARowMovesItsEntryToTheGapUnderThePointer) {
    enum Finish { Release, Escape, Outside };
    struct Case {
        size_t from, gap;
        Finish finish;
        std::string order;
    };
    const Case cases[] = {
        {1, 0, Release, "BACD"}, {1, 1, Release, "ABCD"}, {1, 2, Release, "ABCD"}, {1, 3, Release, "ACBD"},
        {1, 4, Release, "ACDB"}, {0, 4, Release, "BCDA"}, {3, 0, Release, "DABC"}, {3, 4, Release, "ABCD"},
        {0, 3, Escape, "ABCD"},  {0, 3, Outside, "ABCD"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(std::to_string(k.from) + " to " + std::to_string(k.gap));
        Open(Kind::Favorites, {{"a", &a}, {"b", &b}, {"c", &c}, {"d", &d}});
        const int x = 50, y = FirstRow + static_cast<int>(k.gap) * Row - 8; // nearer that gap than others
        offscreen::press_mouse(host, {x, FirstRow + static_cast<int>(k.from) * Row + Row / 2});
        offscreen::move_mouse(host, {x, y});
        ASSERT_TRUE(panel->IsDragging());
        EXPECT_EQ(panel->GetDropGap(), k.gap);
        int imageTop = -1; // the row's image keeps the pointer where the row was pressed
        for (const draw_call& c : painted(host))
            if (c.op == "draw_rect_border" && c.origin.x == 10)
                imageTop = c.origin.y;
        EXPECT_EQ(imageTop, y - Row / 2);
        if (k.finish == Escape)
            offscreen::events_of(host).process_event(event_type::key_down, 27);
        offscreen::release_mouse(host, k.finish == Outside ? ivec2{x, 380} : ivec2{x, y});
        EXPECT_EQ(Order(), k.order);
        EXPECT_FALSE(panel->IsDragging());
    }
    EXPECT_TRUE(events.empty()); // no drag counted as a click

    // A shortcut slot moves among the nine.
    Open(Kind::Shortcuts, {{"A", &a}, {"B", &b}});
    offscreen::press_mouse(host, {50, FirstRow + 5});
    offscreen::move_mouse(host, {50, FirstRow + 9 * Row});
    offscreen::release_mouse(host, {50, FirstRow + 9 * Row});
    EXPECT_EQ(Order(), "B-------A");
}

TEST_F(ListsTest, ClicksReachTheWindowWithTheirClientPoint) {
    Open(Kind::Blacklist, {{"a", &a}, {"b", &b}});
    // The window edits the list in its handler: the clicked row goes while it is still handling input.
    panel->onSlotEvent = [this](PreferencesEffectSlot* s, event_type t, uint64_t at) {
        Record(std::to_string(s->GetIndex()), t, at);
        list.erase(list.begin());
        panel->Refresh();
    };
    offscreen::press_mouse(host, {40, FirstRow + 3});
    offscreen::move_mouse(host, {43, FirstRow + 6}); // within the threshold: still a click
    offscreen::release_mouse(host, {43, FirstRow + 6});
    offscreen::click(host, {60, FirstRow + 5}, 2);
    offscreen::click(host, {70, FirstRow + 5}); // the New row, now first
    EXPECT_EQ(events, (std::vector<std::string>{"0:38:43,40", "0:1:60,39", "new:38:70,39"}));
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(Painted(), "Name|New Alias +");
}

TEST_F(ListsTest, RefreshKeepsTheScrollPositionTheListStillReaches) {
    std::vector<EffectAlias> many(12, EffectAlias{"a", &a});
    EffectsScrollBar& bar = Open(Kind::Favorites, many, 24 + 5 * Row).GetScrollBar();
    EXPECT_EQ(bar.get_max_scroll(), 8 * Row); // 12 rows and New in a view of 5
    offscreen::wheel(host, {50, FirstRow + 5}, -3);
    const int scrolled = bar.get_value();
    EXPECT_GT(scrolled, 0);
    list.push_back({"b", &b});
    panel->Refresh();
    EXPECT_EQ(panel->GetSlots().size(), 13u);
    EXPECT_EQ(bar.get_value(), scrolled);
    list.resize(2);
    panel->Refresh();
    EXPECT_EQ(bar.get_value(), 0);
    EXPECT_FALSE(bar.is_visible(false));
}

} // namespace
