#include "popup/effect_alias.h"
#include "popup/effect_search.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

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
        auto it =
            std::find_if(entries.begin(), entries.end(), [&](const EffectData& e) { return e.name == name; });
        return it == entries.end() ? nullptr : &*it;
    }
    SearchResults Search(std::string_view text, const std::vector<EffectAlias>& blacklist,
                         const std::vector<EffectAlias>& aliases) const {
        SearchResults results;
        EffectSearch().Run(text, entries, blacklist, aliases, results);
        return results;
    }
};

std::vector<std::string> Names(const SearchResults& results) {
    std::vector<std::string> names;
    for (const SearchEntry& entry : results.entries)
        names.push_back(entry.effect->name);
    return names;
}

// The ranking itself is checked against plain passes below; these are the edges of the text and the
// rows' headers.
TEST(EffectSearch, TextIsCaseFreeKeepsItsTrailingBlankAndRowsCarryTheirHeaders) {
    Catalogue catalogue({"Blur In", "Soft Blur", "Fade Up Characters"}, {"Fade Out Slow"});
    EXPECT_EQ(Names(catalogue.Search("FAST", {}, {})),
              (std::vector<std::string>{"Fast Box Blur", "Fast Blur (Legacy)", "CC Radial Fast Blur"}));
    // "Gaussian Blur" ends with "blur": without a blank after it, it does not match.
    EXPECT_EQ(Names(catalogue.Search("blur ", {}, {})),
              (std::vector<std::string>{"Fast Blur (Legacy)", "Gaussian Blur (Legacy)", "Blur In"}));
    // Effects, then presets, each under its header.
    const SearchResults blur = catalogue.Search("blur", {}, {});
    const std::vector<SearchRow> rows = blur.Rows();
    ASSERT_EQ(rows.size(), blur.entries.size() + 2);
    EXPECT_EQ(rows[0].kind, SearchRowKind::EffectsHeader);
    EXPECT_EQ(rows[1], (SearchRow{SearchRowKind::Entry, 0}));
    EXPECT_EQ(rows[blur.effect_count + 1].kind, SearchRowKind::PresetsHeader);
    EXPECT_EQ(rows.back(), (SearchRow{SearchRowKind::Entry, blur.entries.size() - 1}));
    // Presets alone keep the effects header.
    EXPECT_EQ(catalogue.Search("fade", {}, {}).Rows(),
              (std::vector<SearchRow>{{SearchRowKind::EffectsHeader, 0},
                                      {SearchRowKind::PresetsHeader, 0},
                                      {SearchRowKind::Entry, 0},
                                      {SearchRowKind::Entry, 1}}));
    const EffectData* gaussian = catalogue["Gaussian Blur"];
    const std::vector<EffectAlias> aliases{{"qgb", gaussian, nullptr}};
    EXPECT_EQ(catalogue.Search("qgb", {{"gaussian blur", gaussian, nullptr}}, aliases).Rows(),
              (std::vector<SearchRow>{{SearchRowKind::NoMatchesHeader, 0}}));
    const SearchResults empty = catalogue.Search("", {}, aliases);
    EXPECT_FALSE(empty.no_matches);
    EXPECT_TRUE(empty.Rows().empty());
}

// The search done the plain way: four passes, each checking the results and the blacklist by
// scanning them. The engine must agree with it entry for entry.
SearchResults ReferenceSearch(const std::string& text, const std::vector<EffectData>& catalogue,
                              const std::vector<EffectAlias>& blacklist,
                              const std::vector<EffectAlias>& aliases) {
    SearchResults out;
    if (text.empty())
        return out;
    std::vector<const EffectData*> effects, presets;
    auto consider = [&](const EffectData* effect) {
        auto has = [&](auto& list) {
            return std::find(list.begin(), list.end(), effect) != list.end();
        };
        if (effect == nullptr || has(effects) || has(presets) ||
            std::any_of(blacklist.begin(), blacklist.end(), [&](auto& b) { return b.effect == effect; }))
            return;
        (effect->is_preset ? presets : effects).push_back(effect);
    };
    for (bool prefix : {true, false})
        for (const EffectAlias& a : aliases)
            if (prefix ? a.alias.rfind(text, 0) == 0 : a.alias.find(text) != std::string::npos)
                consider(a.effect);
    const size_t userEffects = effects.size(), userPresets = presets.size();
    for (bool prefix : {true, false})
        for (const EffectData& e : catalogue)
            if (prefix ? e.search_name.rfind(text, 0) == 0 : e.search_name.find(text) != std::string::npos)
                consider(&e);
    for (size_t i = 0; i < effects.size(); ++i)
        out.entries.push_back({effects[i], i < userEffects});
    for (size_t i = 0; i < presets.size(); ++i)
        out.entries.push_back({presets[i], i < userPresets});
    out.effect_count = effects.size();
    out.no_matches = out.entries.empty();
    return out;
}

// Every entry with its flag, the effect count and the no-matches flag, for comparing results whole.
auto Flat(const SearchResults& results) {
    std::vector<std::pair<const EffectData*, bool>> entries;
    for (const SearchEntry& entry : results.entries)
        entries.emplace_back(entry.effect, entry.user_entry);
    return std::tuple(entries, results.effect_count, results.no_matches);
}

TEST(EffectSearch, AgreesWithPlainPassesOnRandomCataloguesAndLists) {
    std::mt19937 rng(1234);
    auto word = [&](size_t maxLength) {
        std::string w;
        for (size_t i = rng() % (maxLength + 1); i > 0; --i)
            w += "abc "[rng() % 4];
        return w;
    };
    // Records outside the catalogue, as a caller might hand in, go through the same checks.
    const std::vector<EffectData> outside{MakeEffect(900, "ab"), MakePreset(-900, "ca")};
    EffectSearch search; // reused on purpose: nothing may leak from one run into the next
    SearchResults results;
    for (int round = 0; round < 400; ++round) {
        std::vector<EffectData> catalogue;
        for (size_t i = rng() % 40; i > 0; --i)
            catalogue.push_back(rng() % 3 ? MakeEffect(int(i), word(6)) : MakePreset(-int(i), word(6)));
        auto pick = [&]() -> const EffectData* {
            const unsigned r = rng() % 12;
            return r == 0              ? nullptr
                   : r == 1            ? &outside[rng() % 2]
                   : catalogue.empty() ? nullptr
                                       : &catalogue[rng() % catalogue.size()];
        };
        std::vector<EffectAlias> blacklist, aliases;
        for (size_t i = rng() % 4; i > 0; --i)
            blacklist.push_back({"", pick(), nullptr});
        for (size_t i = rng() % 12; i > 0; --i)
            aliases.push_back({word(5), pick(), nullptr});
        const std::string text = word(3);

        search.Run(text, catalogue, blacklist, aliases, results);
        ASSERT_EQ(Flat(results), Flat(ReferenceSearch(text, catalogue, blacklist, aliases)))
            << "round " << round << " text '" << text << "'";
    }
}

} // namespace
