// The preferences' modal editors, driven through their own event handlers on the offscreen backend.
#include "host/effect_data.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
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

namespace {

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
    EXPECT_EQ(picker.GetResult().effect, nullptr);
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
    EXPECT_EQ(picker.GetSelection(), catalogue.size() - 1);
    EXPECT_EQ(picker.RowsInView().second, catalogue.size());
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
