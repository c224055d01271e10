// The preferences' modal editors, driven through their own event handlers on the offscreen backend.
#include "host/effect_data.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "popup/preferences_data.h"
#include "popup/ui_colors.h"
#include "preferences/preferences_alias_popup.h"
#include "preferences/preferences_edit_effect_popup.h"
#include "preferences/preferences_shortcut_popup.h"
#include "tests/support/offscreen_test.h"

#include <functional>
#include <set>
#include <string_view>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

struct EditorsTest : OffscreenTest {
    // Runs one step of `steps` per turn of the modal loop; past the last one the loop ends with -1.
    static void Script(std::vector<std::function<void(window&)>> steps) {
        offscreen::offscreen_window::set_modal_driver([steps, turn = size_t{0}](window& w) mutable {
            if (turn < steps.size())
                steps[turn++](w);
            else
                w.end_modal(-1);
        });
    }
    static void Key(window& w, uint64_t key) {
        offscreen::events_of(w).process_event(event_type::key_down, key);
    }
    static void Type(window& w, std::string_view text) {
        for (char c : text)
            offscreen::type_key(w, 0, static_cast<char16_t>(c));
    }

    UIColors colours = BuildColorThemes()[0];
};

struct PickerTest : EditorsTest {
    void SetUp() override {
        EditorsTest::SetUp();
        catalogue = {{1, "Gaussian Blur", "gaussian blur", "Blur", false},
                     {-1, "Blur Sweep", "blur sweep", "Animation Preset", true},
                     {2, "Fast Box Blur", "fast box blur", "Blur", false},
                     {3, "Glow", "glow", "Stylize", false}};
        for (int i = 0; i < 3000; ++i)
            catalogue.push_back(
                {10 + i, "Filler " + std::to_string(i), "filler " + std::to_string(i), "Misc", false});
    }
    std::vector<EffectData> catalogue;
};

TEST_F(PickerTest, TypingNarrowsTheListAndReturnChoosesTheSelectedRow) {
    PreferencesEditEffectPopup picker(nullptr, {40, 40}, &colours, "Set Override", catalogue);
    EXPECT_EQ(offscreen::native_of(picker).get_title(), "Set Override");
    EXPECT_EQ(picker.GetResults().entries.size(), catalogue.size());

    std::vector<std::string> names;
    Script({[&](window& w) { Type(w, "bl"); }, [&](window& w) { Key(w, event_key::down); },
            [&](window& w) {
                EXPECT_EQ(picker.GetSelection(), 1u);
                Type(w, "u"); // a keystroke selects the first row again
                EXPECT_EQ(picker.GetSelection(), 0u);
                for (const SearchEntry& e : picker.GetResults().entries)
                    names.push_back(e.effect->name);
            },
            [&](window& w) { Key(w, event_key::down); },
            [&](window& w) {
                offscreen::type_key(w, 36, u'\r');
            }});
    ASSERT_TRUE(picker.Run());
    // Effects before presets, as the popup lists them.
    EXPECT_EQ(names, (std::vector<std::string>{"Gaussian Blur", "Fast Box Blur", "Blur Sweep"}));
    EXPECT_EQ(picker.GetResult().effect, &catalogue[2]);

    Script({[&](window& w) { Type(w, "glow"); },
            [&](window& w) {
                offscreen::type_key(w, 53, 27);
            }});
    EXPECT_FALSE(picker.Run());
    EXPECT_EQ(picker.GetResult().effect, nullptr);
}

TEST_F(PickerTest, OnlyTheRowsInViewPaintAndTheViewFollowsTheSelectionAndTheWheel) {
    PreferencesEditEffectPopup picker(nullptr, {0, 0}, &colours, "Add New Effect", catalogue);
    picker.show();
    auto painted_rows = [&] {
        offscreen::offscreen_window& native = offscreen::native_of(picker);
        picker.get_root().update(false);
        native.get_canvas().clear_calls();
        native.paint_pending();
        size_t rows = 0;
        for (const draw_call& c : native.get_canvas().calls_named("draw_text"))
            rows += c.text.starts_with("Filler") ? 1 : 0;
        return rows;
    };
    const auto [first, last] = picker.RowsInView();
    EXPECT_EQ(first, 0u);
    EXPECT_LT(last, 20u);
    EXPECT_EQ(painted_rows(), last - 3); // three named effects lead the list

    // Up from the first row wraps to the last and scrolls it into view.
    Key(picker, event_key::up);
    EXPECT_EQ(picker.GetSelection(), catalogue.size() - 1);
    EXPECT_EQ(picker.RowsInView().second, catalogue.size());
    EXPECT_GT(painted_rows(), 0u);

    // A click chooses the row under the pointer, wherever the list is scrolled to.
    picker.GetSearchField().set_text("filler 1", true);
    const ivec4 list = picker.GetSearchField().get_rect();
    const ivec2 inList{list.x + 20, list.y + list.h + 15};
    offscreen::wheel(picker, inList, -3);
    const size_t top = picker.RowsInView().first;
    ASSERT_GT(top, 0u);
    Script({[&](window& w) {
        offscreen::click(w, inList + ivec2{0, PreferencesEditEffectPopup::RowHeight});
    }});
    ASSERT_TRUE(picker.Run());
    EXPECT_EQ(picker.GetResult().effect, picker.GetResults().entries[top + 1].effect);
}

TEST_F(EditorsTest, AliasPopupReturnsTheTrimmedEditedTextOrNothing) {
    PreferencesAliasPopup popup(nullptr, {0, 0}, &colours, "Edit Label", "old");
    Script({[&](window& w) { Type(w, "  Soft Glow "); },
            [&](window& w) {
                offscreen::type_key(w, 36, u'\r');
            }});
    ASSERT_TRUE(popup.Run());
    EXPECT_EQ(popup.GetAlias(), "Soft Glow"); // the text was selected: typing replaced it

    Script({[&](window& w) { Type(w, "x"); },
            [&](window& w) {
                offscreen::type_key(w, 53, 27);
            }});
    EXPECT_FALSE(popup.Run());
    Script({[&](window&) {
        popup.GetCancelButton().press();
    }});
    EXPECT_FALSE(popup.Run());
    Script({[&](window&) {
        popup.GetConfirmButton().press();
    }});
    EXPECT_TRUE(popup.Run());
}

TEST_F(EditorsTest, ShortcutPopupStartsFromTheRecordAndAppliesTheChoice) {
    PreferencesData prefs;
    prefs.customCtrl = prefs.customShift = prefs.customCmd = 1;
    prefs.customKeyCode = 40; // K
    PreferencesShortcutPopup popup(nullptr, {0, 0}, &colours, prefs);
    EXPECT_EQ(offscreen::native_of(popup).get_title(), "Custom Shortcut Key");
    EXPECT_TRUE(popup.GetCtrl().is_selected() && !popup.GetOpt().is_selected() &&
                popup.GetShift().is_selected());
    EXPECT_EQ(popup.GetKeys().get_selected_text(), "K");

    Script({[&](window&) {
                popup.GetCtrl().toggle();
                popup.GetOpt().toggle();
                popup.GetKeys().select_item(popup.GetKeys().find_item(122)); // F1
            },
            [&](window&) {
                popup.GetConfirmButton().press();
            }});
    ASSERT_TRUE(popup.Run());
    popup.Apply(prefs);
    EXPECT_EQ(std::tuple(prefs.customCtrl, prefs.customOpt, prefs.customShift, prefs.customCmd),
              std::tuple(0, 1, 1, 0));
    EXPECT_EQ(std::tuple(prefs.customKeyCode, prefs.customKeyName), std::tuple(122, std::string("F1")));

    // Without a key OK does not confirm.
    PreferencesShortcutPopup unset(nullptr, {0, 0}, &colours, PreferencesData{});
    Script({[&](window&) { unset.GetConfirmButton().press(); },
            [&](window& w) {
                Key(w, event_key::escape);
            }});
    EXPECT_FALSE(unset.Run());
}

TEST(ShortcutKeys, EveryKeyHasItsOwnCodeAndAName) {
    // Keys the backend cannot name (the offscreen one names no Home or Page Up) still read as something.
    std::set<int> codes;
    std::set<std::string> names;
    for (const ShortcutKeyChoice& k : ShortcutKeyChoices()) {
        EXPECT_FALSE(k.name.empty()) << k.code;
        codes.insert(k.code);
        names.insert(k.name);
    }
    EXPECT_EQ(codes.size(), ShortcutKeyChoices().size());
    EXPECT_EQ(names.size(), ShortcutKeyChoices().size());
}

} // namespace
