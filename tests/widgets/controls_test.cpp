#include "tests/support/widget_fixture.h"

#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/check_box.h"
#include "nimbit/ui/drop_down_box.h"
#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/image_panel.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/showcase_controls.h"
#include "nimbit/ui/text_label.h"
#include "nimbit/ui/text_markup.h"
#include "nimbit/ui/tooltip.h"
#include "nimbit/ui/wide_text.h"
#include "tests/support/draw_snapshot.h"

#include <cstdio>
#include <memory>

namespace {

TEST_F(WidgetTest, DropDownWheelClicksAndBindingsSelectOverSeparatorsWithinTheEnds) {
    drop_down_box box;
    box.create(win.get_root(), {20, 20, 120, 24});
    box.add_item(10, "Ten");
    box.add_separator(11);
    box.add_item(12, "Twelve");
    box.add_item(13, "Thirteen");
    event_recorder changed(box, event_type::value_changed);
    // Towards the user is down the list, skipping the separator; a slight nudge is a step too.
    for (double delta : {-1.0, -1.0, -1.0, -1.0, 0.01, 1.0})
        offscreen::wheel(win, {30, 30}, delta);
    EXPECT_EQ(changed.data(), (std::vector<uint64_t>{10, 12, 13, 12, 10}));
    offscreen::wheel(win, {30, 30}, 1.0); // at the top already
    EXPECT_TRUE(changed.count() == 5u && changed.entries.back().agent == event_agent::user);

    // A bound int follows the selection by id or by index; rebinding lets the old one go.
    int by_id = 12;
    box.set_pointer(&by_id);
    EXPECT_EQ(box.get_selected_item(), 2);
    box.select_item(3, false);
    int by_index = 0;
    box.set_pointer(&by_index, false);
    offscreen::wheel(win, {30, 30}, -1.0);
    EXPECT_EQ(std::tuple(by_index, by_id), std::tuple(2, 13));
    EXPECT_FALSE(box.select_item(1)) << "a separator cannot be selected";
    box.add_item(14, "Fourteen"); // leaves a stale item just past the end
    box.remove_item(14);
    EXPECT_FALSE(box.select_item(4) || box.select_item(-1)) << "just past either end";
    EXPECT_EQ(by_index, 2);
    box.set_pointer(nullptr);

    // A click opens the items under the box; only the choice notifies.
    changed.entries.clear();
    box.set_selected_item(12);
    offscreen::push_menu_answer(13);
    offscreen::click(win, {40, 30});
    ASSERT_EQ(offscreen::shown_menus().size(), 1u);
    const auto& menu = offscreen::shown_menus()[0];
    ASSERT_EQ(menu.items.size(), 4u);
    EXPECT_TRUE(menu.items[1].separator && menu.items[2].checked);
    EXPECT_EQ(menu.position, (_vec2<int>{20, 44})) << "opens under the box";
    offscreen::click(win, {40, 30}); // no answer queued: dismissed
    EXPECT_EQ(std::pair(box.get_selected_id(), changed.data()), std::pair(13u, std::vector<uint64_t>{13}));
    box.set_selected_item(10); // the first item gets its tick too
    offscreen::click(win, {40, 30});
    EXPECT_TRUE(offscreen::shown_menus().back().items[0].checked);
    box.set_selected_item(13);

    // Editing items keeps the selection right.
    box.remove_item(10);
    EXPECT_EQ(std::tuple(box.get_selected_item(), box.get_selected_id()), std::tuple(2, 13u));
    box.remove_item(13);
    EXPECT_EQ(box.get_selected_id(), drop_down_box::no_id);
    box.remove_all_items();
    box.add_items("A|B|-|C");
    EXPECT_EQ(box.find_item(3), 3);
    box.select_item(3, false);
    EXPECT_EQ(box.get_selected_text(), "C");

    // A typed initial walks the items that begin with it, wrapping; others leave the selection.
    box.add_items("ka|Kb|L");
    box.focus(focus_cause::keyboard);
    std::string walked;
    for (uint32_t typed : {'K', 'K', 'K', 'Z', 'C', 'A'}) {
        key(typed);
        walked += box.get_selected_text() + " ";
    }
    EXPECT_EQ(walked, "ka Kb ka ka C A ");
}

TEST_F(WidgetTest, CheckBoxClicksDoubleClicksAndSpaceFlipTheBoundBool) {
    check_box box;
    box.create(win.get_root(), {10, 10, 120, 20});
    bool value = true;
    box.set_pointer(&value);
    event_recorder changed(box, event_type::value_changed);
    offscreen::click(win, {15, 20});
    const bool clicked = value;
    key(' ');
    EXPECT_EQ(std::tuple(clicked, value), std::tuple(false, true));
    value = false; // code that changes the bool is what the box shows: the next flip sets it
    offscreen::press_mouse(win, {15, 20}); // released outside: nothing
    offscreen::release_mouse(win, {300, 200});
    offscreen::double_click(win, {15, 20}); // each half flips it
    EXPECT_EQ(changed.data(), (std::vector<uint64_t>{0, 1, 1, 0}));
    box.set_pointer(nullptr);
    box.set_selected(true);
    EXPECT_FALSE(value);
}

TEST_F(WidgetTest, ButtonPressesFromClicksDoubleClicksKeysAndToggles) {
    generic_button button;
    button.create(win.get_root(), {10, 10, 80, 24});
    event_recorder pressed(button, event_type::pressed);
    offscreen::click(win, {20, 20});
    offscreen::press_mouse(win, {20, 20});
    offscreen::release_mouse(win, {200, 200});
    EXPECT_TRUE(pressed.count() == 1u && mouse::get_captured_widget() == nullptr) << "released outside";
    button.focus();
    for (uint32_t k : {13u, uint32_t(' '), uint32_t('A')})
        key(k);
    button.set_toggle_mode(true);
    offscreen::click(win, {20, 20});
    EXPECT_TRUE(button.is_toggled() && pressed.last_data() == 1u);
    offscreen::click(win, {20, 20});
    EXPECT_FALSE(button.is_toggled());

    // A double click counts as two presses and leaves no capture behind.
    button.set_toggle_mode(false);
    offscreen::double_click(win, {20, 20});
    EXPECT_TRUE(pressed.count() == 7u && mouse::get_captured_widget() == nullptr);
}

TEST_F(WidgetTest, LabelMarkupBecomesRunsAndFitsTheLabel) {
    text_label label;
    label.create(win.get_root(), {0, 0, 10, 10});
    label.set_html_text("<html><body>ab<font size=\"20\" weight=\"bold\">cd</font>e</body></html>", true,
                        true);
    ASSERT_EQ(label.get_runs().size(), 3u); // the runs themselves: text_test and the showcase's pictures
    // 3 characters at 6 pixels and 2 at 10, two spare pixels; 25 pixels for the 20-point line.
    EXPECT_EQ(label.get_rect().size(), (_vec2<int>{40, 25}));
    label.set_text("<b>", true, false);
    EXPECT_TRUE(label.get_text() == "<b>" && label.get_runs().empty() && label.get_rect().w == 20);
}

bitmap blank(_vec2<int> size) {
    bitmap b;
    b.create(size, image_alpha::alpha);
    return b;
}

TEST_F(WidgetTest, ImagePanelLoadsFitsZoomsAndDrags) {
    image_panel panel;
    panel.create(win.get_root(), {0, 0, 200, 100});
    const auto bytes = blank({400, 100}).save_image_stream(image_format::png);
    ASSERT_TRUE(panel.set_image(bytes.data(), bytes.size()));
    EXPECT_EQ(std::tuple(panel.get_zoom(), panel.image_rect()), std::tuple(0.5f, ivec4{0, 25, 200, 50}))
        << "fitted into the panel";
    // Damaged bytes leave the image as it was.
    const unsigned char junk[] = {0x89, 'P', 'N', 'G', 1, 2, 3};
    EXPECT_TRUE(!panel.set_image(junk, sizeof junk) && !panel.set_image(nullptr, 10) && panel.has_image());
    // Zooming about a point keeps that point of the image under it.
    panel.zoom_at(1.0f, {100, 50});
    EXPECT_EQ(panel.image_rect(), (ivec4{-100, 0, 400, 100}));
    offscreen::wheel(win, {100, 50}, 1.0);
    offscreen::press_mouse(win, {50, 50});
    offscreen::move_mouse(win, {70, 45});
    offscreen::release_mouse(win, {70, 45});
    EXPECT_EQ(panel.get_offset(), (_vec2<int>{-100, -10}));
    panel.set_zoom(0.0f);
    EXPECT_FLOAT_EQ(panel.get_zoom(), image_panel::min_zoom);

    // From a file: a small image is not enlarged, but centred.
    const file_path path(::testing::TempDir() + "image_panel_test.png");
    ASSERT_TRUE(blank({30, 20}).save_image(path, image_format::png));
    EXPECT_TRUE(panel.set_image(path) && (panel.image_rect() == ivec4{85, 40, 30, 20}));
    std::remove(path.c_str());
    EXPECT_FALSE(panel.set_image(path));
}

TEST(WideText, RoundTripsAndRepairsDamagedUtf8) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::u32string wide = utf8_to_wide(text);
    EXPECT_EQ(wide, (std::u32string{U'a', 0xE9, 0x20AC, 0x1F600}));
    EXPECT_EQ(wide_to_utf8(wide), text);
    EXPECT_EQ(wide_to_utf8(std::u32string{0x7FF, 0x800}), "\xDF\xBF\xE0\xA0\x80"); // the two-byte limit
    // A truncated sequence, an overlong form, an encoded surrogate and a stray byte each become one
    // replacement character; the byte that broke a sequence is read again.
    // clang-format off
    const std::pair<const char*, std::u32string> damaged[] = {{"\xE2\x82" "b", {0xFFFD, U'b'}}, {"\xC0\x80", {0xFFFD}},
        {"\xED\xA0\x80", {0xFFFD}}, {"\xFF" "c\xF0\x9F", {0xFFFD, U'c', 0xFFFD}}};
    // clang-format on
    for (const auto& [in, out] : damaged)
        EXPECT_EQ(utf8_to_wide(in), out) << in;
    EXPECT_EQ(wide_to_utf8(std::u32string{static_cast<char32_t>(0xD800), static_cast<char32_t>(0x110000)}),
              "\xEF\xBF\xBD\xEF\xBF\xBD");
}

const text_full_format base{"tahoma"}; // at the default 12 points

TEST(TextMarkup, FontTagsNestIntoRunsEntitiesAndBreaksAreReadAndDeepNestingIsBounded) {
    const markup_text m =
        parse_markup("<HTML><body>a<font face='Arial' size=20>b<font style=\"italic\" underline>c</font>d"
                     "</font>e</body></html>",
                     base);
    EXPECT_EQ(m.text, "abcde");
    ASSERT_EQ(m.runs.size(), 5u);
    // The inner run inherits face and size from the outer tag; closing it restores the outer style.
    EXPECT_EQ(std::tuple(m.runs[2].font_name, m.runs[2].style, m.runs[2].underline, m.runs[2].size),
              std::tuple("Arial", font_style::italic, true, 20.0f));
    EXPECT_EQ(std::tuple(m.runs[3].font_name, m.runs[3].style, m.runs[3].underline),
              std::tuple("Arial", font_style::normal, false));
    EXPECT_EQ(std::tuple(m.runs[4].font_name, m.runs[4].start, m.runs[4].end), std::tuple("tahoma", 4u, 5u));
    for (const std::string off : {"0", "false", "NO"}) // the ways to say no, in any case
        EXPECT_FALSE(parse_markup("<font underline=" + off + ">x</font>", base).runs.back().underline) << off;

    // Entities and line breaks are read; everything else, tags cut short included, is text.
    const markup_text t = parse_markup("x &lt;y&gt; &amp; &#65;&#x42;<br/>&bogus;&#6x; a<b & <font", base);
    EXPECT_EQ(t.text, "x <y> & AB\n&bogus;&#6x; a<b & <font");
    ASSERT_EQ(t.runs.size(), 1u) << "one font throughout";
    EXPECT_EQ(t.runs[0].end, 35u) << "counts characters";
    // Run ranges count characters, not bytes; extra closing tags and bad sizes are ignored.
    const markup_text w = parse_markup("\xC3\xA9<font size=900>\xE2\x82\xAC</font></font>z", base);
    ASSERT_EQ(w.runs.size(), 1u);
    EXPECT_EQ(w.runs[0].end, 3u);

    // Deep nesting is bounded, and every tag is still closed.
    std::string open, close;
    for (int i = 0; i < 10000; ++i) {
        open += "<font size=13>";
        close += "</font>";
    }
    const markup_text d = parse_markup(open + "x" + close + "y", base);
    EXPECT_EQ(d.text, "xy");
    ASSERT_EQ(d.runs.size(), 2u);
    EXPECT_EQ(std::tuple(d.runs[0].size, d.runs[1].size), std::tuple(13.0f, 12.0f));
}

// The standard controls as they paint: the showcase at rest and in the states a user puts them in,
// checked against approved pictures (see tests/support/draw_snapshot.h).

// The centre of a control, in window coordinates.
_vec2<int> centre(widget& w) {
    return w.calc_absolute_pos() + _vec2<int>{w.get_rect().w / 2, w.get_rect().h / 2};
}

TEST_F(WidgetTest, PictureShowcaseAtRestAndInUse) {
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
