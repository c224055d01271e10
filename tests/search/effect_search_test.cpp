#include "popup/effect_alias.h"
#include "popup/effect_search.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

// A catalogue laid out as the host builds it: host presets, installed effects, user presets.
struct Catalogue {
    std::vector<EffectData> entries;

    Catalogue(std::vector<std::string> hostPresets, std::vector<std::string> userPresets = {}) {
        int presetId = -1;
        for (const auto& name : hostPresets)
            entries.push_back(MakePreset(presetId--, name));
        for (EffectData& effect : LoadFixtureEffects().effects)
            entries.push_back(std::move(effect));
        for (const auto& name : userPresets)
            entries.push_back(MakePreset(presetId--, name));
    }
    const EffectData* operator[](std::string_view name) const {
        for (const EffectData& entry : entries)
            if (entry.name == name)
                return &entry;
        ADD_FAILURE() << "no catalogue entry " << name;
        return nullptr;
    }
};

std::vector<std::string> Names(const SearchResults& results) {
    std::vector<std::string> names;
    for (const SearchEntry& entry : results.entries)
        names.push_back(entry.effect->name);
    return names;
}

std::vector<std::string> EffectsContaining(const Catalogue& catalogue, std::string_view text,
                                           std::string_view except = {}) {
    std::vector<std::string> names;
    for (const EffectData& entry : catalogue.entries)
        if (!entry.is_preset && entry.search_name.find(text) != std::string::npos && entry.name != except)
            names.push_back(entry.name);
    return names;
}

SearchResults Search(std::string_view text, const Catalogue& catalogue,
                     const std::vector<EffectAlias>& blacklist, const std::vector<EffectAlias>& aliases) {
    EffectSearch search;
    SearchResults results;
    search.Run(text, catalogue.entries, blacklist, aliases, results);
    return results;
}

TEST(EffectSearch, AliasPointingLateComesFirstThenPrefixThenContainsForEffectsAndPresets) {
    // "Text Blur Wipe" comes first in the catalogue but only contains the text, so "Blur Fade",
    // which begins with it, ranks above it.
    Catalogue catalogue({"Text Blur Wipe", "Blur Fade"}, {"Blurry Title"});
    const EffectData* late = catalogue["Pixel Motion Blur"];
    ASSERT_GT(late, catalogue["Gaussian Blur"]);
    std::vector<EffectAlias> aliases{{"blur", late, nullptr}};

    SearchResults results = Search("blur", catalogue, {}, aliases);

    std::vector<std::string> expected{"Pixel Motion Blur"};
    for (auto& name : EffectsContaining(catalogue, "blur", "Pixel Motion Blur"))
        expected.push_back(name);
    expected.insert(expected.end(), {"Blur Fade", "Blurry Title", "Text Blur Wipe"});
    EXPECT_EQ(Names(results), expected);
    EXPECT_EQ(results.effect_count, expected.size() - 3);
    EXPECT_TRUE(results.entries[0].user_entry);
    for (size_t i = 1; i < results.entries.size(); ++i)
        EXPECT_FALSE(results.entries[i].user_entry) << results.entries[i].effect->name;

    const std::vector<SearchRow> rows = results.Rows();
    ASSERT_EQ(rows.size(), results.entries.size() + 2);
    EXPECT_EQ(rows[0].kind, SearchRowKind::EffectsHeader);
    EXPECT_EQ(rows[1], (SearchRow{SearchRowKind::Entry, 0}));
    EXPECT_EQ(rows[results.effect_count + 1].kind, SearchRowKind::PresetsHeader);
    EXPECT_EQ(rows.back(), (SearchRow{SearchRowKind::Entry, results.entries.size() - 1}));
}

TEST(EffectSearch, NameBeginningWithTextRanksAboveEarlierNameContainingIt) {
    Catalogue catalogue({});
    SearchResults results = Search("FAST", catalogue, {}, {});
    EXPECT_EQ(Names(results),
              (std::vector<std::string>{"Fast Box Blur", "Fast Blur (Legacy)", "CC Radial Fast Blur"}));
}

TEST(EffectSearch, AliasesAndFavoritesRankAboveCatalogueAndAreMarked) {
    Catalogue catalogue({"Glow Pulse"});
    // A favorite of Glow (alias text = its search name) and an alias containing the text inside it.
    std::vector<EffectAlias> aliases{{"my glow", catalogue["Tint"], nullptr},
                                     {"glow", catalogue["Glow"], nullptr},
                                     {"pulse", catalogue["Glow Pulse"], nullptr}};
    SearchResults results = Search("glow", catalogue, {}, aliases);
    // Pass 1 finds Glow, pass 2 Tint through "my glow"; the preset comes from the catalogue only.
    ASSERT_GE(results.entries.size(), 3u);
    EXPECT_EQ(results.entries[0].effect->name, "Glow");
    EXPECT_EQ(results.entries[1].effect->name, "Tint");
    EXPECT_TRUE(results.entries[0].user_entry);
    EXPECT_TRUE(results.entries[1].user_entry);
    const SearchEntry& preset = results.entries[results.FirstPreset()];
    EXPECT_EQ(preset.effect->name, "Glow Pulse");
    EXPECT_FALSE(preset.user_entry);
    // Each entry appears once although both the alias and the catalogue match it.
    EXPECT_EQ(std::count_if(results.entries.begin(), results.entries.end(),
                            [](const SearchEntry& e) { return e.effect->name == "Glow"; }),
              1);
}

TEST(EffectSearch, BlacklistBeatsAliasesAndFavorites) {
    Catalogue catalogue({});
    const EffectData* gaussian = catalogue["Gaussian Blur"];
    std::vector<EffectAlias> blacklist{{"gaussian blur", gaussian, nullptr}};
    std::vector<EffectAlias> aliases{{"qgb", gaussian, nullptr}, {"gaussian blur", gaussian, nullptr}};
    for (const char* text : {"qgb", "gaussian", "blur"}) {
        SearchResults results = Search(text, catalogue, blacklist, aliases);
        for (const SearchEntry& entry : results.entries)
            EXPECT_NE(entry.effect, gaussian) << text;
    }
    SearchResults results = Search("qgb", catalogue, blacklist, aliases);
    EXPECT_TRUE(results.no_matches);
    ASSERT_EQ(results.Rows().size(), 1u);
    EXPECT_EQ(results.Rows()[0].kind, SearchRowKind::NoMatchesHeader);
}

TEST(EffectSearch, EmptyTextGivesNoRowsAndUnmatchedTextOnlyNoMatches) {
    Catalogue catalogue({"Blur Fade"});
    SearchResults empty = Search("", catalogue, {}, {});
    EXPECT_TRUE(empty.entries.empty());
    EXPECT_FALSE(empty.no_matches);
    EXPECT_TRUE(empty.Rows().empty());

    SearchResults none = Search("zzz", catalogue, {}, {});
    EXPECT_TRUE(none.no_matches);
    EXPECT_EQ(none.Rows(), (std::vector<SearchRow>{{SearchRowKind::NoMatchesHeader, 0}}));
}

TEST(EffectSearch, TrailingBlankIsPartOfTheText) {
    Catalogue catalogue({"Blur In", "Soft Blur"});
    SearchResults results = Search("blur ", catalogue, {}, {});
    // "Gaussian Blur" ends with "blur": without a blank after it, it does not match.
    EXPECT_EQ(Names(results),
              (std::vector<std::string>{"Fast Blur (Legacy)", "Gaussian Blur (Legacy)", "Blur In"}));
}

TEST(EffectSearch, OnlyPresetsFoundStillOpensWithEffectsHeader) {
    Catalogue catalogue({"Fade Up Characters"}, {"Fade Out Slow"});
    SearchResults results = Search("fade", catalogue, {}, {});
    EXPECT_EQ(results.effect_count, 0u);
    EXPECT_EQ(results.FirstPreset(), 0u);
    EXPECT_EQ(results.Rows(), (std::vector<SearchRow>{{SearchRowKind::EffectsHeader, 0},
                                                      {SearchRowKind::PresetsHeader, 0},
                                                      {SearchRowKind::Entry, 0},
                                                      {SearchRowKind::Entry, 1}}));
}

TEST(EffectSearch, EntriesOutsideTheCatalogueAreStillSearchedAndDeduplicated) {
    Catalogue catalogue({});
    EffectData outside = MakeEffect(9999, "Outside Effect");
    std::vector<EffectAlias> aliases{
        {"qq", &outside, nullptr}, {"xqq", &outside, nullptr}, {"qq2", nullptr, nullptr}};
    SearchResults results = Search("qq", catalogue, {}, aliases);
    ASSERT_EQ(results.entries.size(), 1u);
    EXPECT_EQ(results.entries[0].effect, &outside);
    std::vector<EffectAlias> blacklist{{"", &outside, nullptr}};
    EXPECT_TRUE(Search("qq", catalogue, blacklist, aliases).no_matches);
}

// The search as the popup first did it: four plain passes, each checking the results and the
// blacklist by scanning them. The engine must agree with it entry for entry.
SearchResults ReferenceSearch(const std::string& text, const std::vector<EffectData>& catalogue,
                              const std::vector<EffectAlias>& blacklist,
                              const std::vector<EffectAlias>& aliases) {
    SearchResults out;
    if (text.empty())
        return out;
    std::vector<const EffectData*> effects, presets;
    auto consider = [&](const EffectData* effect) {
        if (effect == nullptr || std::find(effects.begin(), effects.end(), effect) != effects.end() ||
            std::find(presets.begin(), presets.end(), effect) != presets.end())
            return;
        for (const EffectAlias& entry : blacklist)
            if (entry.effect == effect)
                return;
        (effect->is_preset ? presets : effects).push_back(effect);
    };
    for (const EffectAlias& a : aliases)
        if (a.alias.rfind(text, 0) == 0)
            consider(a.effect);
    for (const EffectAlias& a : aliases)
        if (a.alias.find(text) != std::string::npos)
            consider(a.effect);
    const size_t userEffects = effects.size(), userPresets = presets.size();
    for (const EffectData& e : catalogue)
        if (e.search_name.rfind(text, 0) == 0)
            consider(&e);
    for (const EffectData& e : catalogue)
        if (e.search_name.find(text) != std::string::npos)
            consider(&e);
    for (size_t i = 0; i < effects.size(); ++i)
        out.entries.push_back({effects[i], i < userEffects});
    for (size_t i = 0; i < presets.size(); ++i)
        out.entries.push_back({presets[i], i < userPresets});
    out.effect_count = effects.size();
    out.no_matches = out.entries.empty();
    return out;
}

TEST(EffectSearch, AgreesWithPlainPassesOnRandomCataloguesAndLists) {
    std::mt19937 rng(1234);
    auto word = [&](size_t maxLength) {
        std::string w;
        const size_t length = rng() % (maxLength + 1);
        for (size_t i = 0; i < length; ++i)
            w += "abc "[rng() % 4];
        return w;
    };
    EffectSearch search; // reused on purpose: nothing may leak from one run into the next
    SearchResults results;
    for (int round = 0; round < 300; ++round) {
        std::vector<EffectData> catalogue;
        const size_t size = rng() % 40;
        for (size_t i = 0; i < size; ++i)
            catalogue.push_back(rng() % 3 ? MakeEffect(int(i + 1), word(6))
                                          : MakePreset(-int(i + 1), word(6)));
        auto randomEntry = [&]() -> const EffectData* {
            return catalogue.empty() || rng() % 10 == 0 ? nullptr : &catalogue[rng() % catalogue.size()];
        };
        std::vector<EffectAlias> blacklist, aliases;
        for (size_t i = rng() % 4; i > 0; --i)
            blacklist.push_back({"", randomEntry(), nullptr});
        for (size_t i = rng() % 12; i > 0; --i)
            aliases.push_back({word(5), randomEntry(), nullptr});
        const std::string text = word(3);

        search.Run(text, catalogue, blacklist, aliases, results);
        const SearchResults expected = ReferenceSearch(text, catalogue, blacklist, aliases);
        ASSERT_EQ(results.entries.size(), expected.entries.size())
            << "round " << round << " text '" << text << "'";
        for (size_t i = 0; i < expected.entries.size(); ++i) {
            ASSERT_EQ(results.entries[i].effect, expected.entries[i].effect)
                << "round " << round << " at " << i;
            ASSERT_EQ(results.entries[i].user_entry, expected.entries[i].user_entry) << "round " << round;
        }
        ASSERT_EQ(results.effect_count, expected.effect_count);
        ASSERT_EQ(results.no_matches, expected.no_matches);
    }
}

} // namespace
