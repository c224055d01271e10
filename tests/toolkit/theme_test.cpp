#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/event_object.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/widget_themes.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

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

} // namespace

TEST(Theme, DefaultTableHasEveryKeyOnceAndValuesFollowTheKeyFamilies) {
    const theme t;
    const auto keys = theme::default_keys();
    EXPECT_EQ(theme::default_map.size(), keys.size()) << "a key listed twice";
    EXPECT_EQ(keys[67], "button_back_image_strech") << "the table's own spelling";
    EXPECT_EQ(keys[182], "browser_stared_image");
    EXPECT_EQ(t.get<vec4>(theme_keys::default_back_color), (vec4{1, 0, 1, 1}));
    EXPECT_GT(t.get<float>(theme_keys::label_font_size), 6.0f);
    EXPECT_TRUE(t.get<bool>(theme_keys::dropdown_gradient_text));
    EXPECT_GT(t.get<int>(theme_keys::scroll_min_size), 0);
    EXPECT_GT(t.get<_vec2<int>>(theme_keys::message_popup_window_margins).x, 0);
    EXPECT_TRUE(t.get<image_stream>(theme_keys::checkbox_image).empty());
    // Every font name in the table is "tahoma", every colour an opaque-or-translucent 0..1 value.
    for (std::string_view key : keys) {
        EXPECT_EQ(theme::default_map.count(key), 1u) << key;
        if (key.ends_with("_font_name")) {
            EXPECT_EQ(t.get<std::string>(key), "tahoma") << key;
        }
        if (key.ends_with("_color") || key.find("_color_") != std::string_view::npos) {
            const vec4 c = t.get<vec4>(key);
            for (float v : {c.x, c.y, c.z, c.w})
                EXPECT_TRUE(v >= 0.0f && v <= 1.0f) << key;
            EXPECT_GT(c.w, 0.0f) << key;
        }
    }
}

TEST(Theme, OwnStylesWinOverPluginMapOverDefaultsAndLinksReadOneStepDeep) {
    plugin_guard guard;
    theme t;
    EXPECT_EQ(t.get<vec4>(theme_keys::button_font_color), (vec4{1, 1, 1, 1}));
    theme::plugin_map.insert_or_assign(theme_keys::button_font_color, theme_style(vec4{0.5f, 0.5f, 0.5f, 1}));
    EXPECT_EQ(t.get<vec4>(theme_keys::button_font_color), (vec4{0.5f, 0.5f, 0.5f, 1}));
    t.set(theme_keys::button_font_color, vec4{0, 0, 1, 1});
    EXPECT_EQ(t.get<vec4>(theme_keys::button_font_color), (vec4{0, 0, 1, 1}));
    theme other;
    EXPECT_EQ(other.get<vec4>(theme_keys::button_font_color), (vec4{0.5f, 0.5f, 0.5f, 1}))
        << "own styles are per theme";
    // A plugin-only key (not in the default table) is found through the second level.
    theme::plugin_map.insert_or_assign("app_row_color", theme_style(vec4{0.1f, 0.2f, 0.3f, 1}));
    EXPECT_EQ(other.get<vec4>("app_row_color"), (vec4{0.1f, 0.2f, 0.3f, 1}));

    // Links read the target through all levels, one step deep.
    theme::plugin_map.insert_or_assign("app_label_color", theme_style(vec4{0.2f, 0.4f, 0.6f, 1}));
    theme l;
    l.link(theme_keys::label_font_color, "app_label_color");
    EXPECT_EQ(l.translate(theme_keys::label_font_color), "app_label_color");
    EXPECT_EQ(l.translate(theme_keys::label_font_size), theme_keys::label_font_size);
    EXPECT_EQ(l.get<vec4>(theme_keys::label_font_color), (vec4{0.2f, 0.4f, 0.6f, 1}));
    // An own style of the target wins, as for any look-up.
    l.set("app_label_color", vec4{1, 0, 0, 1});
    EXPECT_EQ(l.get<vec4>(theme_keys::label_font_color), (vec4{1, 0, 0, 1}));
    // One level only: a link to a linked key reads the intermediate key itself.
    l.link(theme_keys::button_font_color, theme_keys::label_font_color);
    EXPECT_EQ(l.get<vec4>(theme_keys::button_font_color), theme().get<vec4>(theme_keys::label_font_color));
    EXPECT_NE(l.get<vec4>(theme_keys::button_font_color), (vec4{1, 0, 0, 1}));
}

TEST(Theme, ChangesAreAnnouncedWithTheKeyAddressAndCopiesKeepTheirOwner) {
    listener owner;
    theme t(&owner);
    static constexpr const char* key = "label_font_size";
    t.set(key, 12.0f);
    t.set(key, 12.0f); // unchanged, still announced
    ASSERT_EQ(owner.keys.size(), 2u);
    EXPECT_EQ(owner.keys[0], key);
    EXPECT_EQ(owner.keys[1], key);

    owner.keys.clear();
    static constexpr const char* link_key = "label_font_color";
    t.link(link_key, theme_keys::button_font_color);
    t.link(link_key, theme_keys::button_font_color); // same target: silent
    t.link(link_key, theme_keys::tooltip_font_color);
    ASSERT_EQ(owner.keys.size(), 2u);
    EXPECT_EQ(owner.keys[0], link_key);
    EXPECT_EQ(t.translate(link_key), theme_keys::tooltip_font_color);

    // Without an owner nothing is raised (and nothing breaks).
    theme lone;
    lone.set(theme_keys::label_font_size, 9.0f);
    EXPECT_EQ(lone.get<float>(theme_keys::label_font_size), 9.0f);

    // A copy takes styles and links but not the owner.
    listener a, b;
    theme first(&a);
    first.set(theme_keys::label_font_name, std::string("courier"));
    first.link(theme_keys::button_font_color, theme_keys::tooltip_font_color);
    theme second(&b);
    second = first;
    EXPECT_EQ(second.get_owner(), &b);
    EXPECT_EQ(second.get<std::string>(theme_keys::label_font_name), "courier");
    EXPECT_EQ(second.translate(theme_keys::button_font_color), theme_keys::tooltip_font_color);
    const size_t heard = b.keys.size();
    second.set(theme_keys::label_font_size, 20.0f);
    EXPECT_EQ(b.keys.size(), heard + 1);
    EXPECT_EQ(a.keys.size(), 2u);
}

TEST(ThemeDeathTest, CharacterArraysStayStringsStreamsKeepTheirScaleUnknownKeysStop) {
    static const unsigned char png[] = {1, 2, 3};
    const image_stream s(png, 3, 4, 4.0f);
    EXPECT_EQ(theme_style(s).get<image_stream>(), s);
    EXPECT_FLOAT_EQ(theme_style(s).get<image_stream>().scale(), 4.0f);
    EXPECT_EQ(theme_style("arial").get<std::string>(), "arial");
    theme t;
    t.set(theme_keys::checkbox_font_name, "abcde"); // a character array, not a bool
    EXPECT_EQ(t.get<std::string>(theme_keys::checkbox_font_name), "abcde");
    EXPECT_DEATH(t.get_theme_style("no_such_key"), "false && \"Style not found\"");
}

TEST(Theme, AnUnstyledWidgetIsMagentaAndSetBackgroundTellsIt) {
    window w;
    w.create("themes", {0, 0, 120, 80});
    widget child;
    child.create(w.get_root(), {10, 10, 20, 20});
    EXPECT_EQ(child.get_theme().get<vec4>(theme_keys::default_back_color), (vec4{1, 0, 1, 1}));
    EXPECT_EQ(w.get_root().get_theme().get<vec4>(theme_keys::default_back_color), (vec4{1, 0, 1, 1}));

    std::vector<std::string> heard;
    event_manager::instance().add_event(&child, &child, event_type::theme_changed, [&](const event_info& e) {
        EXPECT_EQ(e.sender, &child);
        heard.emplace_back(pointer_payload<const char>(e.data));
    });
    child.set_background({0.1f, 0.2f, 0.3f, 1});
    child.set_background({0.1f, 0.2f, 0.3f, 1});
    EXPECT_EQ(heard, (std::vector<std::string>{"default_back_color", "default_back_color"}));
    EXPECT_EQ(child.get_theme().get<vec4>(theme_keys::default_back_color), (vec4{0.1f, 0.2f, 0.3f, 1}));
    EXPECT_EQ(w.get_root().get_theme().get<vec4>(theme_keys::default_back_color), (vec4{1, 0, 1, 1}));
}
