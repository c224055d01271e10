#include "popup/effect_alias.h"
#include "popup/effect_search.h"
#include "popup/usage_record.h"
#include "tests/search/fixture_catalogue.h"

#include <gtest/gtest.h>

namespace {

constexpr int64_t Now = 1'800'000'000, Day = 24 * 3600;

TEST(UsageRecord, ReadsToleratesDamageKeepsKindsApartAndStaysBounded) {
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
}

TEST(UsageRecord, OftenAndLatelyBothRaiseTheScore) {
    UsageRecord record;
    const EffectData often = MakeEffect(1, "Often"), lately = MakeEffect(2, "Lately"),
                     both = MakeEffect(3, "Both");
    for (int i = 0; i < 4; ++i)
        record.Record(often, Now - 60 * Day), record.Record(both, Now);
    record.Record(lately, Now);
    EXPECT_GT(record.Score(both, Now), record.Score(often, Now));
    EXPECT_GT(record.Score(both, Now), record.Score(lately, Now));
    EXPECT_GT(record.Score(lately, Now), record.Score(often, Now)) << "two months fade four uses";
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
