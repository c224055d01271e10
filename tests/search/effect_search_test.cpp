#include "popup/effect_alias.h"
#include "popup/effect_search.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

namespace {

SearchResults Search(std::string_view text, const std::vector<EffectData>& catalogue) {
    SearchResults results;
    EffectSearch().Run(text, catalogue, {}, {}, results);
    return results;
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

// The ranking itself, blanks in the text included, is checked against plain passes above; these are
// the case of the text and the rows' headers.
TEST(EffectSearch, TextIsCaseFreeAndRowsCarryTheirHeaders) {
    // Laid out as the host builds it: host presets, installed effects, user presets.
    std::vector<EffectData> catalogue{MakePreset(-1, "Blur In"), MakePreset(-2, "Fade Up Characters")};
    for (EffectData& effect : LoadFixtureEffects().effects)
        catalogue.push_back(std::move(effect));
    catalogue.push_back(MakePreset(-3, "Fade Out Slow"));
    EXPECT_EQ(Flat(Search("FAST", catalogue)), Flat(ReferenceSearch("fast", catalogue, {}, {})));
    // Effects, then presets, each under its header.
    const SearchResults blur = Search("blur", catalogue);
    const std::vector<SearchRow> rows = blur.Rows();
    ASSERT_EQ(rows.size(), blur.entries.size() + 2);
    EXPECT_EQ(rows[0], (SearchRow{SearchRowKind::EffectsHeader, 0}));
    EXPECT_EQ(rows[blur.effect_count + 1], (SearchRow{SearchRowKind::PresetsHeader, 0}));
    EXPECT_EQ(rows.back(), (SearchRow{SearchRowKind::Entry, blur.entries.size() - 1}));
    // Presets alone keep the effects header.
    const std::vector<SearchRow> fade = Search("fade", catalogue).Rows();
    EXPECT_TRUE(fade.size() == 4 && fade[0].kind == SearchRowKind::EffectsHeader &&
                fade[1].kind == SearchRowKind::PresetsHeader &&
                fade[3] == (SearchRow{SearchRowKind::Entry, 1}));
    EXPECT_EQ(Search("no such effect", catalogue).Rows(),
              (std::vector<SearchRow>{{SearchRowKind::NoMatchesHeader, 0}}));
    EXPECT_TRUE(Search("", catalogue).Rows().empty());
}

} // namespace
