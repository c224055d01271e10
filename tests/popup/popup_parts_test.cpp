// The list's rows and the message popups, built without the popup window; the popup's pictures.
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/parts/effect_slot.h"
#include "popup/parts/effects_message_popup.h"
#include "popup/parts/effects_popup_interface.h"
#include "popup/ui_colors.h"
#include "tests/popup/popup_fixture.h"
#include "tests/support/draw_snapshot.h"

#include <optional>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

struct RecordingPopup : EffectsPopupInterface {
    struct Call {
        std::string what;
        const EffectData* effect;
        unsigned long value;
    };
    std::vector<Call> calls;
    void AddToList(const EffectData* e, bool blacklist) override { calls.push_back({"list", e, blacklist}); }
    void AddToShortcuts(const EffectData* e) override { calls.push_back({"create", e, 0}); }
    void ReplaceToShortcuts(const EffectData* e, unsigned long index) override {
        calls.push_back({"replace", e, index});
    }
    void SetSelected(EffectSlot*) override { calls.push_back({"select", nullptr, 0}); }
};

struct SlotTest : OffscreenTest {
    void SetUp() override {
        OffscreenTest::SetUp();
        host.create("rows", {0, 0, 300, 200});
        host.show();
        effect.name = "Gaussian Blur";
        effect.search_name = "gaussian blur";
        slot.get_theme().set(theme_keys::default_back_color, vec4{0.1f, 0.1f, 0.1f, 1});
        slot.create(host.get_root(), {0, 0, 300, 30});
        slot.show(true);
    }
    // The items of the menu the row shows, choosing `answer`.
    std::vector<menu_item> Menu(bool userEntry, size_t labelCount, std::optional<uint32_t> answer = {}) {
        labels.clear();
        for (size_t i = 0; i < labelCount; ++i)
            labels.push_back("S" + std::to_string(i + 1));
        slot.SetEffect(&effect, userEntry, &labels);
        offscreen::push_menu_answer(answer);
        slot.ShowContextMenu({10, 10});
        return offscreen::shown_menus().back().items;
    }
    static std::vector<uint32_t> Ids(const std::vector<menu_item>& items) {
        std::vector<uint32_t> ids;
        for (const menu_item& i : items)
            ids.push_back(i.id);
        return ids;
    }

    window host;
    RecordingPopup popup;
    EffectSlot slot{popup, true};
    EffectData effect;
    std::vector<std::string> labels;
};

TEST_F(SlotTest, ContextMenuOffersWhatTheRowAndSlotsAllowAndPassesTheChoiceOn) {
    std::vector<menu_item> items = Menu(false, 0);
    EXPECT_EQ(Ids(items), (std::vector<uint32_t>{1, 2, 3, 5, 4}));
    EXPECT_TRUE(items[0].text == "Gaussian Blur" && !items[0].enabled && items[1].separator);

    // A favorite has no "Add to Favorites"; nine shortcuts leave only "Replace Shortcut".
    items = Menu(true, 9);
    EXPECT_EQ(Ids(items), (std::vector<uint32_t>{1, 2, 6, 4}));
    ASSERT_EQ(items[2].submenu.size(), 9u);
    EXPECT_EQ(std::tuple(items[2].submenu[0].id, items[2].submenu[0].text, items[2].submenu[8].id,
                         items[2].submenu[8].text),
              std::tuple(61u, "1. S1", 69u, "9. S9"));
    EXPECT_TRUE(popup.calls.empty()); // dismissed

    // Choices reach the popup.
    for (uint32_t answer : {62u, 3u, 4u, 5u, 1u}) // the second submenu item ... the title, which is inert
        Menu(false, 2, answer);
    std::vector<std::string> calls;
    for (const auto& c : popup.calls)
        calls.push_back(c.what + ":" + std::to_string(c.value) + (c.effect == &effect ? "" : "?"));
    EXPECT_EQ(calls, (std::vector<std::string>{"replace:1", "list:0", "list:1", "create:0"}));
}

TEST_F(SlotTest, PointerSelectsUnlessSelectedAndRightClickOpensTheMenuOnlyWhenAllowed) {
    slot.SetEffect(&effect, false, &labels);
    offscreen::move_mouse(host, {20, 10});
    EXPECT_TRUE(popup.calls.size() == 1u && slot.IsHovered()); // asks to be selected
    offscreen::move_mouse(host, {20, 150});
    EXPECT_FALSE(slot.IsHovered());
    slot.SetSelected(true);
    offscreen::click(host, {0, 10}, 2);
    EXPECT_EQ(std::pair(popup.calls.size(), offscreen::shown_menus().size()), std::pair(1ul, 1ul));
    EXPECT_TRUE(slot.IsHovered()); // the pointer is still over the row (its left edge): it stays lit
    offscreen::set_pointer({20, 150});
    slot.ShowContextMenu({20, 10});
    EXPECT_FALSE(slot.IsHovered()); // the pointer left while the menu was open

    EffectSlot quiet(popup, false);
    quiet.create(host.get_root(), {0, 40, 300, 30});
    quiet.show(true);
    quiet.SetEffect(&effect, false, &labels);
    offscreen::click(host, {20, 50}, 2);
    EXPECT_EQ(offscreen::shown_menus().size(), 2u);
}

// Runs are placed by characters, not bytes; a range past the name's end is cut at it.
TEST_F(SlotTest, MatchedRunsOfAWideNameLineUpAndStayWithinIt) {
    effect.name = "Gaußscher Weichzeichner"; // "ß" takes two bytes
    slot.SetEffect(&effect, false, &labels);
    slot.SetHighlights(std::vector<ByteRange>{{0, 3}, {11, 40}});
    std::vector<std::string> runs;
    for (const draw_call& c : painted(host))
        if (c.op == "draw_text" && c.value == 14)
            runs.push_back(std::to_string(c.rect.x) + " " + c.text);
    const int w = offscreen_drawer::char_width(14);
    EXPECT_EQ(runs,
              (std::vector<std::string>{std::to_string(EffectSlot::TextLeft) + " Gau",
                                        std::to_string(EffectSlot::TextLeft + 3 * w) + " ßscher ",
                                        std::to_string(EffectSlot::TextLeft + 10 * w) + " Weichzeichner"}));
}

struct MessageTest : OffscreenTest {
    // The title bar shows the title; the inside paints as approved: the size, the message as one
    // text and the buttons' places and labels.
    static void ExpectPicture(window& popup, const std::string& title, const std::string& name) {
        EXPECT_EQ(offscreen::native_of(popup).get_title(), title);
        snapshot::picture p;
        p.calls(painted(popup));
        EXPECT_TRUE(p.matches(name));
    }
    template <typename Popup> static void ExpectEscapeEndsWithZero(Popup& popup) {
        offscreen::offscreen_window::set_modal_driver(
            [&](window&) { Deliver(popup, event_type::key_down, 27); });
        EXPECT_EQ(popup.Run(), 0);
    }
    UIColors colours = BuildColorThemes()[0];
};

TEST_F(MessageTest, QuestionAndNoticeShowTheirTextsAndEndWithOneForConfirmAndZeroOtherwise) {
    window parent;
    parent.create("parent", {0, 0, 400, 300});
    EffectsMessagePopup ask(&parent, {40, 50}, &colours,
                            {.title = "Delete?",
                             .message = "Are you sure you want to delete these 3 images?",
                             .confirm = "Delete"});
    EXPECT_EQ(ask.get_rect().position(), (ivec2{40, 50}));
    ExpectPicture(ask, "Delete?", "question");

    int turn = 0;
    offscreen::offscreen_window::set_modal_driver([&](window& w) {
        if (++turn == 1)
            ask.GetConfirmButton().press();
        else
            w.end_modal(-5);
    });
    EXPECT_EQ(ask.Run(), 1);
    offscreen::offscreen_window::set_modal_driver([&](window&) { ask.GetCancelButton().press(); });
    EXPECT_EQ(ask.Run(), 0);
    ExpectEscapeEndsWithZero(ask);

    // The notice: one for its button, zero for Escape.
    EffectsWarningPopup warn(
        nullptr, {0, 0}, &colours,
        {.title = "Failed to Load", .message = "Unable to import settings from the file."});
    ExpectPicture(warn, "Failed to Load", "notice");

    offscreen::offscreen_window::set_modal_driver([&](window&) { warn.GetButton().press(); });
    EXPECT_EQ(warn.Run(), 1);
    ExpectEscapeEndsWithZero(warn);
}

// The popup as it paints, checked against approved pictures (see tests/support/draw_snapshot.h): layout,
// colours and texts in the states an artist sees.
TEST_F(PopupTest, PictureInEachModeWithRowsHoverAndShortcuts) {
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
