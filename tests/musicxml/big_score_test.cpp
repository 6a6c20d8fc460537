// The benchmark's big score is what it claims: about 12 MB of 2,000 measures in 8 parts, valid
// against the schema, every measure adding up, its drum part played on channel 10 as written.
#include "bench/big_score.h"
#include "tests/musicxml/support/byte_regions.h"
#include "tests/musicxml/support/external_checks.h"
#include "tests/musicxml/support/score_checks.h"
#include "tests/support/test_support.h"

#include <gmock/gmock.h>

using namespace musicxml_support;

TEST(BigScore, IsASoundScoreOfTheSizeAsked)
{
    const std::string score = bench::BigScore(2000, 8);
    EXPECT_GT(score.size(), 10'000'000u);
    EXPECT_LT(score.size(), 14'000'000u);
    int measures = 0;
    for (const ElementRange& range : ScanElements(score)) measures += range.name == "measure";
    EXPECT_EQ(measures, 2000 * 8);
    EXPECT_THAT(ScoreProblems(score), ::testing::IsEmpty());

    support::TempFolder folder;
    support::WriteFile(folder / "big.musicxml", score);
    EXPECT_THAT(SchemaFailures({folder / "big.musicxml"}), ::testing::IsEmpty());
    // A short one through MuseScore: the drum part sounds as written.
    support::WriteFile(folder / "short.musicxml", bench::BigScore(12, 3));
    std::vector<std::vector<DrumHit>> played = MuseScoreDrumHits({folder / "short.musicxml"});
    ASSERT_EQ(played.size(), 1u);
    EXPECT_EQ(played[0].size(), 3u * 12u);
    EXPECT_TRUE(played[0] == WrittenDrumHits(bench::BigScore(12, 3), "P3"));
}
