#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/event_object.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget_themes.h"

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

// A digest over the serialised default table (each key in table order, its text and its value bytes):
// any change of a key, the order, a value or its type changes it. After a deliberate change of the
// table, run this test and paste the digest it reports.
TEST(Theme, DefaultTableKeepsItsKeysOrderAndValues) {
    struct raw {
        unsigned char bytes[16];
    };
    uint64_t digest = 14695981039346656037ull; // FNV-1a
    auto mix = [&](const void* p, size_t n) {
        for (size_t i = 0; i < n; ++i)
            digest = (digest ^ static_cast<const unsigned char*>(p)[i]) * 1099511628211ull;
    };
    for (std::string_view key : theme::default_keys()) {
        const theme_style& s = theme::default_map.at(key);
        const std::string text = s.get<std::string>();
        mix(key.data(), key.size());
        mix(text.c_str(), text.size() + 1);
        mix(s.get<raw>().bytes, sizeof(raw));
    }
    EXPECT_EQ(theme::default_map.size(), theme::default_keys().size()) << "a key listed twice";
    EXPECT_EQ(digest, 0x53274745ee08a9fcull) << std::hex << "digest 0x" << digest;
}

TEST(Theme, OwnStylesWinOverPluginMapOverDefaultsAndLinksReadOneStepDeep) {
    plugin_guard guard;
    theme t;
    theme::plugin_map.insert_or_assign(theme_keys::button_font_color, theme_style(vec4{0.5f, 0.5f, 0.5f, 1}));
    t.set(theme_keys::button_font_color, vec4{0, 0, 1, 1});
    theme l; // own styles are per theme
    EXPECT_EQ(
        std::pair(t.get<vec4>(theme_keys::button_font_color), l.get<vec4>(theme_keys::button_font_color)),
        std::pair(vec4{0, 0, 1, 1}, vec4{0.5f, 0.5f, 0.5f, 1}));
    // Links read the target through all levels, one step deep; here a plugin-only key (not in the
    // default table), found through the second level.
    theme::plugin_map.insert_or_assign("app_label_color", theme_style(vec4{0.2f, 0.4f, 0.6f, 1}));
    l.link(theme_keys::label_font_color, "app_label_color");
    EXPECT_EQ(std::pair(l.translate(theme_keys::label_font_color), l.translate(theme_keys::label_font_size)),
              std::pair(std::string_view("app_label_color"), theme_keys::label_font_size));
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
    static constexpr const char* link_key = "label_font_color";
    t.link(link_key, theme_keys::button_font_color);
    t.link(link_key, theme_keys::button_font_color); // same target: silent
    t.link(link_key, theme_keys::tooltip_font_color);
    EXPECT_EQ(owner.keys, (std::vector<const char*>{key, key, link_key, link_key}));
    EXPECT_EQ(t.translate(link_key), theme_keys::tooltip_font_color);

    theme().set(theme_keys::label_font_size, 9.0f); // without an owner nothing is raised
    // A copy takes styles and links but not the owner.
    listener a, b;
    theme first(&a);
    first.set(theme_keys::label_font_name, std::string("courier"));
    first.link(theme_keys::button_font_color, theme_keys::tooltip_font_color);
    theme second(&b);
    second = first;
    EXPECT_EQ(second.get<std::string>(theme_keys::label_font_name), "courier");
    EXPECT_EQ(second.translate(theme_keys::button_font_color), theme_keys::tooltip_font_color);
    const size_t heard = b.keys.size();
    second.set(theme_keys::label_font_size, 20.0f);
    EXPECT_EQ(std::tuple(second.get_owner(), b.keys.size(), a.keys.size()),
              std::tuple(&b, heard + 1, size_t(2)));
}

TEST(ThemeDeathTest, CharacterArraysStayStringsStreamsKeepTheirScaleUnknownKeysStop) {
    static const unsigned char png[] = {1, 2, 3};
    const image_stream s(png, 3, 4, 4.0f);
    EXPECT_EQ(theme_style(s).get<image_stream>(), s);
    EXPECT_EQ(theme_style(s).get<image_stream>().scale(), 4.0f);
    theme t;
    t.set(theme_keys::checkbox_font_name, "abcde"); // a character array, not a bool
    EXPECT_EQ(t.get<std::string>(theme_keys::checkbox_font_name), "abcde");
    EXPECT_DEATH(t.get_theme_style("no_such_key"), "false && \"Style not found\"");
}
