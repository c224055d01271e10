// The preferences window's list panels and its modal editors on the offscreen backend: what the rows
// show, what the pointer does to them, and the editors driven through their own event handlers.
#include "preferences/preferences_effects_scroll_panel.h"

#include "host/effect_data.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_drawer.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "popup/effect_alias.h"
#include "popup/preferences_data.h"
#include "popup/ui_colors.h"
#include "preferences/preferences_alias_popup.h"
#include "preferences/preferences_edit_effect_popup.h"
#include "preferences/preferences_shortcut_popup.h"
#include "tests/support/offscreen_test.h"

#include <algorithm>
#include <functional>
#include <set>

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
    const std::string emptySlots =
        "|3|Empty Slot|4|Empty Slot|5|Empty Slot|6|Empty Slot|7|Empty Slot|8|Empty "
        "Slot|9|Empty Slot";
    const struct {
        Kind kind;
        std::vector<EffectAlias> entries;
        std::string texts;
    } cases[] = {
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
    for (const auto& c : cases) {
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
    // clang-format off
    const struct { size_t from, gap; Finish finish; std::string order; } cases[] = {
        {1, 0, Release, "BACD"}, {1, 1, Release, "ABCD"}, {1, 2, Release, "ABCD"}, {1, 3, Release, "ACBD"},
        {1, 4, Release, "ACDB"}, {0, 4, Release, "BCDA"}, {3, 0, Release, "DABC"}, {3, 4, Release, "ABCD"},
        {0, 3, Escape, "ABCD"},  {0, 3, Outside, "ABCD"},
    };
    // clang-format on
    for (const auto& k : cases) {
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
    EXPECT_EQ(Painted(), "Name|New Alias +"); // both rows gone from the list
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
    EXPECT_TRUE(bar.get_value() == 0 && !bar.is_visible(false));
}

struct EditorsTest : OffscreenTest {
    using Step = std::function<void(window&)>;
    // Runs one step per turn of the modal loop; past the last one the loop ends with -1.
    static void Script(std::vector<Step> steps) {
        offscreen::offscreen_window::set_modal_driver([steps, turn = size_t{0}](window& w) mutable {
            turn < steps.size() ? steps[turn++](w) : w.end_modal(-1);
        });
    }
    // Keys with a character, as the platform sends them ("\r" Return, "\x1b" Escape).
    static Step Typing(std::string text) {
        return [text](window& w) {
            for (char c : text)
                offscreen::type_key(w, 0, static_cast<char16_t>(c));
        };
    }
    // Keys without one (arrows), which only go down.
    static Step Pressing(uint64_t key) {
        return [key](window& w) {
            offscreen::events_of(w).process_event(event_type::key_down, key);
        };
    }
    static Step Clicking(generic_button& button) {
        return [&button](window&) {
            button.press();
        };
    }

    UIColors colours = BuildColorThemes()[0];
};

struct PickerTest : EditorsTest {
    void SetUp() override {
        EditorsTest::SetUp();
        catalogue = {{1, "Gaussian Blur", "gaussian blur", "Blur"},
                     {-1, "Blur Sweep", "blur sweep", "Preset", true},
                     {2, "Fast Box Blur", "fast box blur", "Blur"},
                     {3, "Glow", "glow", "Stylize"}};
        for (int i = 0; i < 3000; ++i)
            catalogue.push_back({10 + i, "Filler " + std::to_string(i), "filler " + std::to_string(i), {}});
    }
    std::vector<EffectData> catalogue;
};

TEST_F(PickerTest, TypingNarrowsTheListAndReturnChoosesTheSelectedRow) {
    PreferencesEditEffectPopup picker(nullptr, {40, 40}, &colours, "Set Override", catalogue);
    std::vector<std::string> names;
    size_t movedTo = 0;
    auto afterKeystroke = [&](window&) {
        movedTo = picker.GetSelection();
        for (const SearchEntry& e : picker.GetResults().entries)
            names.push_back(e.effect->name);
    };
    Script({Typing("bl"), Pressing(event_key::down), Typing("u"), afterKeystroke, Pressing(event_key::down),
            Typing("\r")});
    ASSERT_TRUE(picker.Run());
    EXPECT_EQ(movedTo, 0u); // a keystroke selects the first row again
    // Effects before presets, as the popup lists them.
    EXPECT_EQ(names, (std::vector<std::string>{"Gaussian Blur", "Fast Box Blur", "Blur Sweep"}));
    EXPECT_EQ(picker.GetResult().effect, &catalogue[2]);

    Script({Typing("glow"), Typing("\x1b")});
    EXPECT_FALSE(picker.Run());
    EXPECT_EQ(picker.GetResult().effect, nullptr) << "Escape chooses nothing";
}

TEST_F(PickerTest, OnlyTheRowsInViewPaintAndTheViewFollowsTheSelectionAndTheWheel) {
    PreferencesEditEffectPopup picker(nullptr, {0, 0}, &colours, "Add New Effect", catalogue);
    picker.show();
    auto paintedRows = [&] {
        return std::ranges::count_if(painted(picker), [](const draw_call& c) {
            return c.op == "draw_text" && c.text.starts_with("Filler");
        });
    };
    const size_t last = picker.RowsInView().second;
    EXPECT_LT(last, 20u);
    EXPECT_EQ(paintedRows(), static_cast<ptrdiff_t>(last - 3)); // three named effects lead the list

    // Up from the first row wraps to the last (every entry is listed) and Down back to the first,
    // each scrolled into view.
    Pressing(event_key::up)(picker);
    EXPECT_EQ(std::pair(picker.GetSelection(), picker.RowsInView().second),
              std::pair(catalogue.size() - 1, catalogue.size()));
    Pressing(event_key::down)(picker);
    EXPECT_EQ(picker.RowsInView().first, 0u);

    // A click chooses the row under the pointer, wherever the list is scrolled to.
    picker.GetSearchField().set_text("filler 1", true);
    const ivec4 field = picker.GetSearchField().get_rect();
    const ivec2 inList{field.x + 20, field.y + field.h + 15};
    offscreen::wheel(picker, inList, -3);
    const size_t top = picker.RowsInView().first;
    ASSERT_GT(top, 0u);
    const ivec2 nextRow = inList + ivec2{0, PreferencesEditEffectPopup::RowHeight};
    std::string shown; // and that row is the one painted under the pointer
    for (const draw_call& c : painted(picker))
        if (c.op == "draw_text" && c.rect.contains(nextRow - c.origin))
            shown = c.text;
    EXPECT_EQ(shown, picker.GetResults().entries[top + 1].effect->name);
    Script({[&](window& w) { offscreen::click(w, nextRow); }, Typing("\x1b")});
    ASSERT_TRUE(picker.Run());
    EXPECT_EQ(picker.GetResult().effect, picker.GetResults().entries[top + 1].effect);
}

TEST_F(EditorsTest, AliasPopupReturnsTheTrimmedEditedTextOrNothing) {
    PreferencesAliasPopup popup(nullptr, {0, 0}, &colours, "Edit Label", "old");
    Script({Typing("  Soft Glow "), Typing("\r")});
    ASSERT_TRUE(popup.Run());
    EXPECT_EQ(popup.GetAlias(), "Soft Glow"); // the text was selected: typing replaced it

    Script({Typing("x"), Typing("\x1b")});
    EXPECT_FALSE(popup.Run());
    Script({Clicking(popup.GetConfirmButton())});
    EXPECT_TRUE(popup.Run());
}

TEST_F(EditorsTest, ShortcutPopupStartsFromTheRecordAndAppliesTheChoice) {
    PreferencesData prefs;
    prefs.customCtrl = prefs.customShift = prefs.customCmd = 1;
    prefs.customKeyCode = 40; // K
    PreferencesShortcutPopup popup(nullptr, {0, 0}, &colours, prefs);
    EXPECT_TRUE(popup.GetCtrl().is_selected() && !popup.GetOpt().is_selected() &&
                popup.GetShift().is_selected());
    EXPECT_EQ(popup.GetKeys().get_selected_text(), "K");

    Script({[&](window&) {
                popup.GetCtrl().toggle();
                popup.GetOpt().toggle();
                popup.GetKeys().select_item(popup.GetKeys().find_item(122)); // F1
            },
            Clicking(popup.GetConfirmButton())});
    ASSERT_TRUE(popup.Run());
    popup.Apply(prefs);
    EXPECT_EQ(std::tuple(prefs.customCtrl, prefs.customOpt, prefs.customShift, prefs.customCmd),
              std::tuple(0, 1, 1, 0));
    EXPECT_EQ(std::tuple(prefs.customKeyCode, prefs.customKeyName), std::tuple(122, std::string("F1")));

    // Every key offered has a code and a name of its own, also where the backend names none (the
    // offscreen one has no Home or Page Up).
    std::set<int> codes;
    std::set<std::string> names{""};
    for (const ShortcutKeyChoice& k : ShortcutKeyChoices())
        EXPECT_TRUE(codes.insert(k.code).second && names.insert(k.name).second) << k.code << " " << k.name;

    // Without a key OK does not confirm.
    PreferencesShortcutPopup unset(nullptr, {0, 0}, &colours, PreferencesData{});
    Script({Clicking(unset.GetConfirmButton()), Pressing(event_key::escape)});
    EXPECT_FALSE(unset.Run());
}

} // namespace
