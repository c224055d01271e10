#include "popup/effect_alias.h"
#include "popup/effect_search.h"
#include "popup/usage_record.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

namespace {

SearchResults Search(std::string_view text, const std::vector<EffectData>& catalogue,
                     bool ignoreAccents = false) {
    SearchResults results;
    EffectSearch search;
    search.options.ignore_accents = ignoreAccents;
    search.Run(text, catalogue, {}, {}, results);
    return results;
}

// "name" per result, the highlighted parts in brackets: "[Box] [Blur]".
std::vector<std::string> Shown(const SearchResults& results) {
    std::vector<std::string> shown;
    for (const SearchEntry& entry : results.entries) {
        std::string name = entry.effect->name;
        const auto ranges = results.Highlights(entry);
        for (auto range = ranges.rbegin(); range != ranges.rend(); ++range)
            name.insert(range->end, "]").insert(range->begin, "[");
        shown.push_back(name);
    }
    return shown;
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
    // Reused on purpose: nothing may leak from one run into the next.
    EffectSearch search, fourPasses;
    fourPasses.options.beyond_substrings = false;
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

        const SearchResults reference = ReferenceSearch(text, catalogue, blacklist, aliases);
        fourPasses.Run(text, catalogue, blacklist, aliases, results);
        ASSERT_EQ(Flat(results), Flat(reference)) << "round " << round << " text '" << text << "'";

        // The later passes only add: the four passes' effects and presets open their sections
        // unchanged, and each shows where the text stands in its name.
        search.Run(text, catalogue, blacklist, aliases, results);
        auto [all, effectCount, none] = Flat(results);
        auto [first, firstEffects, firstNone] = Flat(reference);
        const auto presetsAt = all.begin() + std::ptrdiff_t(effectCount);
        ASSERT_TRUE(std::equal(first.begin(), first.begin() + std::ptrdiff_t(firstEffects), all.begin()) &&
                    std::equal(first.begin() + std::ptrdiff_t(firstEffects), first.end(), presetsAt) &&
                    (firstNone || !results.did_you_mean))
            << "round " << round << " text '" << text << "'";
        for (const SearchEntry& entry : results.entries) {
            const size_t at = entry.effect->search_name.find(text);
            if (at != std::string::npos && !results.did_you_mean) {
                ASSERT_EQ(std::vector(results.Highlights(entry).begin(), results.Highlights(entry).end()),
                          (std::vector<ByteRange>{{uint32_t(at), uint32_t(at + text.size())}}));
            }
        }
    }
}

// After the four passes, in this order: names lower-cased in every script, match names, words in
// any order; none of them moves what an earlier pass found.
TEST(EffectSearch, LaterPassesFindAcrossScriptsMatchNamesAndWordOrder) {
    // clang-format off
    const std::vector<EffectData> catalogue{
        MakeEffect(7, "Kanal \xC3\x9C" "bersicht", "Kanal", "XYZ Overview"), // a late hit inside the name
        MakeEffect(1, "Gau\xC3\x9F" "scher Weichzeichner", "Weichzeichnen", "ADBE Gaussian Blur 2"),
        MakeEffect(2, "Gaussian Glow", "Stylize", "XYZ GaussGlow"),
        MakeEffect(3, "\xC3\x9C" "berlagern", "Kanal", "ADBE Overlay"),
        MakeEffect(4, "\xD0\xA0\xD0\xB0\xD0\xB7\xD0\xBC\xD1\x8B\xD1\x82\xD0\xB8\xD0\xB5", "Blur", "ADBE Gaussian Blur 2"),
        MakeEffect(5, "Box Blur", "Blur", "ADBE Box Blur2"),
        MakeEffect(6, "\xCE\x98\xCF\x8C\xCE\xBB\xCF\x89\xCF\x83\xCE\xB7", "Blur", "ADBE Radial Blur"),
        MakePreset(-1, "Caf\xC3\xA9 Cr\xC3\xA8me"),
    };
    // clang-format on
    // clang-format off
    const struct { const char* text; bool ignoreAccents; std::vector<std::string> shown; } cases[] = {
        {"gauss", false, {"[Gauss]ian Glow", "Gau\xC3\x9F" "scher Weichzeichner", catalogue[4].name}},  // match names after names
        {"\xC3\xBC" "ber", false, {"[\xC3\x9C" "ber]lagern", "Kanal [\xC3\x9C" "ber]sicht"}}, // prefixes first
        {"uber", true, {"[\xC3\x9C" "ber]lagern", "Kanal [\xC3\x9C" "ber]sicht"}},
        {"gaus", true, {"[Gaus]sian Glow", "[Gau\xC3\x9F]scher Weichzeichner", catalogue[4].name}},
        {"\xD0\xA0\xD0\x90\xD0\x97", false, {"[\xD0\xA0\xD0\xB0\xD0\xB7]\xD0\xBC\xD1\x8B\xD1\x82\xD0\xB8\xD0\xB5"}},
        {"\xCE\xB8\xCE\xBF\xCE\xBB", true, {"[\xCE\x98\xCF\x8C\xCE\xBB]\xCF\x89\xCF\x83\xCE\xB7"}},
        {"cafe crem", true, {"[Caf\xC3\xA9 Cr\xC3\xA8m]e"}},
        {"blur box", false, {"[Box] [Blur]"}},
        {"radial blur", false, {catalogue[6].name}},
        {"blur gaussian", false, {"Gau\xC3\x9F" "scher Weichzeichner", catalogue[4].name}},
    };
    // clang-format on
    for (const auto& c : cases) {
        const SearchResults results = Search(c.text, catalogue, c.ignoreAccents);
        EXPECT_EQ(Shown(results), c.shown) << c.text;
        EXPECT_FALSE(results.did_you_mean) << c.text;
    }

    // Match names lose the vendor prefix and version, and split joined words.
    EXPECT_EQ(MatchWords("ADBE Gaussian Blur 2"), "gaussian blur");
    EXPECT_EQ(MatchWords("CC Light Burst 2.5"), "light burst");
    EXPECT_EQ(MatchWords("ADBE HDRCompander_Pro2"), "hdr compander pro");
    EXPECT_EQ(MatchWords("ADBE AUX CHANNEL EXTRACT"), "aux channel extract");
    EXPECT_EQ(MatchWords("ADBE"), "adbe");
}

// Only when nothing else matched: near spellings first, then letters in order from a word start.
TEST(EffectSearch, TextIsCaseFreeAndTyposAreRankedBoundedAndMarked) {
    const std::vector<EffectData> catalogue = LoadFixtureEffects().effects;
    // clang-format off
    const struct { const char* text; std::vector<std::string> leading; } cases[] = {
        {"gausian blur", {"[Gaussian Blur]"}},
        {"guassian", {"[Gaussian] Blur"}},
        {"ehco", {"[Echo]"}},                                 // transposed
        {"levles", {"[Levels]", "Auto [Levels]"}},            // the shorter name first
        {"gblr", {"[G]aussian [Bl]u[r]"}},                      // letters in order
        {"turbulant displace", {"[Turbulent Displace]"}},
        {"motoin blur", {"Pixel [Motion Blur]", "CC Force [Motion Blur]", "Directional Blur"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        const SearchResults results = Search(c.text, catalogue);
        const std::vector<std::string> shown = Shown(results);
        EXPECT_TRUE(results.did_you_mean) << c.text;
        EXPECT_EQ(std::vector(shown.begin(),
                              shown.begin() + std::ptrdiff_t(std::min(shown.size(), c.leading.size()))),
                  c.leading)
            << c.text;
        EXPECT_LE(results.entries.size(), 12u);
    }
    const SearchResults many = Search("blr", catalogue);
    EXPECT_EQ(many.entries.size(), 12u);
    EXPECT_EQ(many.Rows().front().kind, SearchRowKind::DidYouMeanHeader);
    EXPECT_EQ(Search("xqzvw", catalogue).Rows(),
              (std::vector<SearchRow>{{SearchRowKind::NoMatchesHeader, 0}}));
    // The case of the text does not matter; no text, no rows (the rows' headers are the popup tests' part).
    EXPECT_EQ(Flat(Search("FAST", catalogue)), Flat(ReferenceSearch("fast", catalogue, {}, {})));
    EXPECT_TRUE(Search("", catalogue).Rows().empty());
    // A blacklisted entry is not suggested either.
    const EffectData* gaussian = Search("gaussian blur", catalogue).entries.at(0).effect;
    SearchResults results;
    EffectSearch().Run("gausian blur", catalogue, {{"", gaussian, nullptr}}, {}, results);
    EXPECT_TRUE(results.did_you_mean &&
                std::none_of(results.entries.begin(), results.entries.end(),
                             [&](const SearchEntry& e) { return e.effect == gaussian; }));
}

constexpr int64_t Now = 1'800'000'000, Day = 24 * 3600;

TEST(UsageRecord, ReadsToleratesDamageKeepsKindsApartStaysBoundedAndScoresOftenAndLately) {
    UsageRecord record;
    record.Parse("3 1700000000 e Glow\n"
                 "2 1700000000 p glow\n" // a preset of the same name is another entry
                 "1 1700000005 e GLOW\n" // the same effect twice adds up
                 "x 1 e Bad Count\n4 1 q Bad Kind\n4 1 e \n0 1 e No Uses\n5 e Short\n"
                 "99999999999 1 e Too Many\n\r\n",
                 Now);
    EXPECT_EQ(record.Format(), "4 1700000005 e GLOW\n2 1700000000 p glow\n");

    UsageRecord full;
    for (int i = 0; i < 600; ++i)
        full.Record(MakeEffect(i + 1, "Effect " + std::to_string(i)), Now + i);
    EXPECT_EQ(full.Size(), UsageRecord::MaxEntries);
    EXPECT_EQ(full.Score(MakeEffect(1, "Effect 99"), Now + 600), 0.0) << "the oldest went first";
    EXPECT_GT(full.Score(MakeEffect(1, "Effect 100"), Now + 600), 0.0);

    // Often and lately both raise the score.
    UsageRecord scored;
    const EffectData often = MakeEffect(1, "Often"), lately = MakeEffect(2, "Lately"),
                     both = MakeEffect(3, "Both");
    for (int i = 0; i < 4; ++i)
        scored.Record(often, Now - 60 * Day), scored.Record(both, Now);
    scored.Record(lately, Now);
    EXPECT_GT(scored.Score(both, Now), scored.Score(often, Now));
    EXPECT_GT(scored.Score(both, Now), scored.Score(lately, Now));
    EXPECT_GT(scored.Score(lately, Now), scored.Score(often, Now)) << "two months fade four uses";
}

TEST(UsageRanking, UsedEntriesRiseBehindAliasesAndNearMissesKeepTheirOrder) {
    const std::vector<EffectData> catalogue = {MakeEffect(1, "Box Blur"),    MakeEffect(2, "Fast Blur"),
                                               MakeEffect(3, "Radial Blur"), MakeEffect(4, "Gaussian Blur"),
                                               MakePreset(-1, "Blur In"),    MakePreset(-2, "Blur Out")};
    const std::vector<EffectAlias> aliases = {{"box blur", &catalogue[0], nullptr}};
    UsageRecord record;
    record.Record(catalogue[2], Now);
    for (int i = 0; i < 3; ++i)
        record.Record(catalogue[3], Now - 7 * Day), record.Record(catalogue[5], Now);
    EffectSearch search;
    SearchResults results;
    auto names = [&](std::string_view text) {
        search.Run(text, catalogue, {}, aliases, results);
        std::vector<std::string> shown;
        for (const SearchEntry& entry : results.entries)
            shown.push_back(entry.effect->name);
        return shown;
    };
    using Names = std::vector<std::string>;
    const Names asFound = {"Box Blur", "Fast Blur", "Radial Blur", "Gaussian Blur", "Blur In", "Blur Out"};
    EXPECT_EQ(names("blur"), asFound) << "off";
    const Names nearMisses = names("blru");
    ASSERT_TRUE(results.did_you_mean);
    search.usage = record.Scores(catalogue, Now);
    EXPECT_EQ(names("blur"),
              (Names{"Box Blur", "Gaussian Blur", "Radial Blur", "Fast Blur", "Blur Out", "Blur In"}));
    EXPECT_EQ(results.Highlights(results.entries[1]).front(), (ByteRange{9, 13})) << "ranges travel along";
    EXPECT_EQ(names("blru"), nearMisses);
}

} // namespace
