// The corpus itself: every valid file passes the schema and the score checks, and MuseScore 3
// plays the drum parts as they are written. The same checks then judge what the host writes.
#include "tests/musicxml/support/corpus.h"
#include "tests/musicxml/support/external_checks.h"
#include "tests/musicxml/support/score_checks.h"
#include "tests/support/test_support.h"

#include <gmock/gmock.h>

#include <filesystem>

using namespace musicxml_support;
using ::testing::IsEmpty;

namespace {

std::vector<CorpusFile> ValidFiles()
{
    std::vector<CorpusFile> valid;
    for (const CorpusFile& file : Corpus())
        if (file.valid) valid.push_back(file);
    return valid;
}

}   // namespace

// One xmllint run over every score of the corpus: the valid ones (a .mxl's score taken out of
// its archive) and the schema-valid timewise file pass, and the broken ones show that a failure
// is seen.
TEST(Corpus, ValidScoresPassTheSchemaAndBrokenOnesDoNot)
{
    support::TempFolder folder;
    std::vector<std::string> paths;
    std::vector<std::string> mustFail;
    for (const CorpusFile& file : Corpus()) {
        std::string path = file.path;
        if (file.valid && file.IsMxl()) {
            path = folder / (std::filesystem::path(file.file).stem().string() + ".musicxml");
            support::WriteFile(path, ScoreBytes(file));
        }
        if (file.valid || file.file == "broken/timewise.musicxml") {
            paths.push_back(path);
        } else if (!file.IsMxl()) {
            paths.push_back(path);
            mustFail.push_back(path);
        }
    }
    std::string log;
    std::vector<std::string> failures = SchemaFailures(paths, &log);
    std::vector<std::string> failed;
    for (const std::string& failure : failures) failed.push_back(failure.substr(0, failure.find('\n')));
    EXPECT_EQ(failed, mustFail) << log;
}

TEST(Corpus, ValidScoresPassTheScoreChecks)
{
    for (const CorpusFile& file : ValidFiles()) EXPECT_THAT(ScoreProblems(ScoreBytes(file)), IsEmpty()) << file.file;
}

// MuseScore 3 reads every valid file and plays on channel 10 exactly the written notes of the
// parts the manifest names: keys from <midi-unpitched> - 1, onsets from the walk. A drum part on
// channel 1 with one drum-set instrument (compound_meters.musicxml) is not played as drums.
TEST(Corpus, MuseScorePlaysTheWrittenDrumParts)
{
    std::vector<CorpusFile> files = ValidFiles();
    std::vector<std::string> paths;
    for (const CorpusFile& file : files) paths.push_back(file.path);
    std::vector<std::vector<DrumHit>> played = MuseScoreDrumHits(paths);
    ASSERT_EQ(played.size(), files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::string bytes = ScoreBytes(files[i]);
        std::vector<DrumHit> written;
        for (const std::string& part : files[i].channel10) {
            std::vector<DrumHit> hits = WrittenDrumHits(bytes, part);
            EXPECT_FALSE(hits.empty()) << files[i].file << " " << part;
            written.insert(written.end(), hits.begin(), hits.end());
        }
        std::sort(written.begin(), written.end());
        EXPECT_TRUE(played[i] == written) << files[i].file << ": MuseScore played " << played[i].size()
                                          << " channel-10 notes, the score writes " << written.size();
    }
}
