#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/event_object.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/widget_themes.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
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
            this, this, event_type::theme_changed, [this](const event_info& e) {
                keys.push_back(reinterpret_cast<const char*>(static_cast<uintptr_t>(e.data)));
            });
    }
};

// plugin_map is process-wide: every test that fills it leaves it empty again.
struct plugin_guard {
    ~plugin_guard() { theme::plugin_map.clear(); }
};

} // namespace

TEST(Theme, DefaultTableHasEveryKeyOnceInTableOrder) {
    const auto keys = theme::default_keys();
    ASSERT_EQ(keys.size(), 279u);
    EXPECT_EQ(theme::default_map.size(), 279u);
    EXPECT_EQ(keys.front(), "default_back_color");
    EXPECT_EQ(keys[3], "checkbox_back_color");
    EXPECT_EQ(keys[66], "button_back_image");
    EXPECT_EQ(keys[67], "button_back_image_strech");
    EXPECT_EQ(keys[82], "tooltip_back_color");
    EXPECT_EQ(keys[182], "browser_stared_image");
    EXPECT_EQ(keys.back(), "curve_editor_grid_color");
    for (std::string_view key : keys)
        EXPECT_EQ(theme::default_map.count(key), 1u) << key;
    EXPECT_EQ(theme::default_map.count("browser_stared_image"), 1u);
}

TEST(Theme, ValueTypesFollowTheKeyFamilies) {
    const theme t;
    EXPECT_EQ(t.get<vec4>("default_back_color"), (vec4{1, 0, 1, 1}));
    EXPECT_EQ(t.get<vec4>("checkbox_border_color_focus"), (vec4{0.255f, 0.584f, 0.753f, 1}));
    EXPECT_EQ(t.get<vec4>("dropdown_gradient_text_2"), (vec4{0.796f, 0.784f, 0.784f, 1}));
    EXPECT_EQ(t.get<vec4>("input_ime_cursor_color"), (vec4{0.578f, 0.578f, 0.578f, 1}));
    EXPECT_EQ(t.get<vec4>("float_font_color"), (vec4{0.455f, 0.784f, 0.953f, 1}));
    EXPECT_EQ(t.get<std::string>("label_font_name"), "tahoma");
    EXPECT_EQ(t.get<std::string>("tooltip_title_font_name"), "tahoma");
    EXPECT_GT(t.get<float>("label_font_size"), 6.0f);
    EXPECT_GT(t.get<float>("default_border_width"), 0.0f);
    EXPECT_TRUE(t.get<bool>("dropdown_gradient_text"));
    EXPECT_GT(t.get<int>("scroll_min_size"), 0);
    EXPECT_GT(t.get<int>("message_popup_component_margins"), 0);
    EXPECT_GT(t.get<_vec2<int>>("message_popup_window_margins").x, 0);
    EXPECT_TRUE(t.get<image_stream>("checkbox_image").empty());
    // Every font name in the table is "tahoma", every colour an opaque-or-translucent 0..1 value.
    for (std::string_view key : theme::default_keys()) {
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

TEST(Theme, OwnStylesWinOverPluginMapWhichWinsOverDefaults) {
    plugin_guard guard;
    theme t;
    EXPECT_EQ(t.get<vec4>("button_font_color"), (vec4{1, 1, 1, 1}));
    theme::plugin_map.insert_or_assign("button_font_color", theme_style(vec4{0.5f, 0.5f, 0.5f, 1}));
    EXPECT_EQ(t.get<vec4>("button_font_color"), (vec4{0.5f, 0.5f, 0.5f, 1}));
    t.set("button_font_color", vec4{0, 0, 1, 1});
    EXPECT_EQ(t.get<vec4>("button_font_color"), (vec4{0, 0, 1, 1}));
    theme other;
    EXPECT_EQ(other.get<vec4>("button_font_color"), (vec4{0.5f, 0.5f, 0.5f, 1}))
        << "own styles are per theme";
    // A plugin-only key (not in the default table) is found through the second level.
    theme::plugin_map.insert_or_assign("app_row_color", theme_style(vec4{0.1f, 0.2f, 0.3f, 1}));
    EXPECT_EQ(other.get<vec4>("app_row_color"), (vec4{0.1f, 0.2f, 0.3f, 1}));
}

TEST(Theme, LinksReadTheTargetThroughAllLevelsOneStepDeep) {
    plugin_guard guard;
    theme::plugin_map.insert_or_assign("app_label_color", theme_style(vec4{0.2f, 0.4f, 0.6f, 1}));
    listener owner;
    theme t(&owner);
    t.link("label_font_color", "app_label_color");
    EXPECT_EQ(t.translate("label_font_color"), "app_label_color");
    EXPECT_EQ(t.translate("label_font_size"), "label_font_size");
    EXPECT_EQ(t.get<vec4>("label_font_color"), (vec4{0.2f, 0.4f, 0.6f, 1}));
    // An own style of the target wins, as for any look-up.
    t.set("app_label_color", vec4{1, 0, 0, 1});
    EXPECT_EQ(t.get<vec4>("label_font_color"), (vec4{1, 0, 0, 1}));
    // One level only: a link to a linked key reads the intermediate key itself.
    t.link("button_font_color", "label_font_color");
    EXPECT_EQ(t.get<vec4>("button_font_color"), theme().get<vec4>("label_font_color"));
    EXPECT_NE(t.get<vec4>("button_font_color"), (vec4{1, 0, 0, 1}));
}

TEST(Theme, ChangesAreAnnouncedWithTheKeyAddress) {
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
    t.link(link_key, "button_font_color");
    t.link(link_key, "button_font_color"); // same target: silent
    t.link(link_key, "tooltip_font_color");
    ASSERT_EQ(owner.keys.size(), 2u);
    EXPECT_EQ(owner.keys[0], link_key);
    EXPECT_EQ(t.translate(link_key), "tooltip_font_color");

    // Without an owner nothing is raised (and nothing breaks).
    theme lone;
    lone.set("label_font_size", 9.0f);
    EXPECT_EQ(lone.get<float>("label_font_size"), 9.0f);
}

TEST(Theme, CopyTakesStylesAndLinksButNotTheOwner) {
    listener a, b;
    theme first(&a);
    first.set("label_font_name", std::string("courier"));
    first.link("button_font_color", "tooltip_font_color");
    theme second(&b);
    second = first;
    EXPECT_EQ(second.get_owner(), &b);
    EXPECT_EQ(second.get<std::string>("label_font_name"), "courier");
    EXPECT_EQ(second.translate("button_font_color"), "tooltip_font_color");
    const size_t heard = b.keys.size();
    second.set("label_font_size", 20.0f);
    EXPECT_EQ(b.keys.size(), heard + 1);
    EXPECT_EQ(a.keys.size(), 2u);
}

TEST(ThemeStyle, HoldsEachValueTypeAndStringsApart) {
    EXPECT_EQ(theme_style("arial").get<std::string>(), "arial");
    EXPECT_EQ(theme_style(std::string("menlo")).get<std::string>(), "menlo");
    EXPECT_EQ(theme_style(text_align::right).get<text_align>(), text_align::right);
    EXPECT_EQ(theme_style(text_valign::bottom).get<text_valign>(), text_valign::bottom);
    EXPECT_EQ(theme_style(font_weight::bold).get<font_weight>(), font_weight::bold);
    EXPECT_EQ(theme_style(font_style::italic).get<font_style>(), font_style::italic);
    EXPECT_EQ(theme_style(_vec2<int>{-3, 7}).get<_vec2<int>>(), (_vec2<int>{-3, 7}));
    static const unsigned char png[] = {1, 2, 3};
    const image_stream s(png, 3, 4, 4.0f);
    EXPECT_EQ(theme_style(s).get<image_stream>(), s);
    EXPECT_FLOAT_EQ(theme_style(s).get<image_stream>().scale(), 4.0f);
    theme t;
    t.set("checkbox_font_name", "abcde"); // a character array
    EXPECT_EQ(t.get<std::string>("checkbox_font_name"), "abcde");
}

TEST(ThemeDeathTest, UnknownKeyIsFatal) {
    const theme t;
    EXPECT_DEATH(t.get_theme_style("no_such_key"), "false && \"Style not found\"");
}

TEST(Theme, AnUnstyledWidgetIsMagentaAndSetBackgroundTellsIt) {
    window w;
    w.create("themes", {0, 0, 120, 80});
    widget child;
    child.create(w.get_root(), {10, 10, 20, 20});
    EXPECT_EQ(child.get_theme().get<vec4>("default_back_color"), (vec4{1, 0, 1, 1}));
    EXPECT_EQ(w.get_root().get_theme().get<vec4>("default_back_color"), (vec4{1, 0, 1, 1}));

    std::vector<std::string> heard;
    event_manager::instance().add_event(&child, &child, event_type::theme_changed, [&](const event_info& e) {
        EXPECT_EQ(e.sender, &child);
        heard.emplace_back(reinterpret_cast<const char*>(static_cast<uintptr_t>(e.data)));
    });
    child.set_background({0.1f, 0.2f, 0.3f, 1});
    child.set_background({0.1f, 0.2f, 0.3f, 1});
    EXPECT_EQ(heard, (std::vector<std::string>{"default_back_color", "default_back_color"}));
    EXPECT_EQ(child.get_theme().get<vec4>("default_back_color"), (vec4{0.1f, 0.2f, 0.3f, 1}));
    EXPECT_EQ(w.get_root().get_theme().get<vec4>("default_back_color"), (vec4{1, 0, 1, 1}));
}
