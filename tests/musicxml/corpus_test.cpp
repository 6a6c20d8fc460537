// The corpus itself: its manifest tells the truth about each file, every valid file passes the
// schema and the score checks, and MuseScore 3 plays the drum parts as they are written. The
// same checks then judge what the host writes.
#include "tests/musicxml/support/corpus.h"
#include "tests/musicxml/support/external_checks.h"
#include "tests/musicxml/support/score_checks.h"
#include "tests/support/test_support.h"

#include <pugixml.hpp>

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

std::string Meter(pugi::xml_node time)
{
    return std::string(time.child_value("beats")) + "/" + time.child_value("beat-type");
}

// A part the host takes for drums: channel 10, or a percussion clef with unpitched notes.
bool IsDrumPart(pugi::xml_node scorePart, pugi::xml_node part)
{
    for (pugi::xml_node midi : scorePart.children("midi-instrument"))
        if (midi.child("midi-channel").text().as_int() == 10) return true;
    return part.select_node(".//clef[sign='percussion']") && part.select_node(".//note/unpitched");
}

}   // namespace

TEST(Corpus, ManifestTellsWhatEachFileHolds)
{
    for (const CorpusFile& file : Corpus()) {
        SCOPED_TRACE(file.file);
        ASSERT_TRUE(std::filesystem::exists(file.path));
        if (!file.valid) {
            EXPECT_FALSE(file.error.empty());
            continue;
        }
        std::string bytes = ScoreBytes(file);
        pugi::xml_document document;
        ASSERT_TRUE(document.load_buffer(bytes.data(), bytes.size()));
        pugi::xml_node score = document.child("score-partwise");
        std::vector<std::string> drums;
        std::size_t index = 0;
        for (pugi::xml_node part : score.children("part")) {
            ASSERT_LT(index, file.parts.size());
            const CorpusPart& expected = file.parts[index++];
            pugi::xml_node scorePart =
                score.child("part-list").find_child_by_attribute("score-part", "id", part.attribute("id").value());
            EXPECT_EQ(part.attribute("id").value(), expected.id);
            EXPECT_EQ(scorePart.child_value("part-name"), expected.name);
            EXPECT_EQ(part.select_node("measure/attributes/staves")
                          ? part.select_node("measure/attributes/staves").node().text().as_int()
                          : 1,
                      expected.staves);
            std::vector<std::string> numbers;
            std::vector<std::pair<std::string, std::string>> meters;
            for (pugi::xml_node measure : part.children("measure")) {
                numbers.push_back(measure.attribute("number").value());
                if (pugi::xml_node time = measure.child("attributes").child("time"))
                    meters.emplace_back(numbers.back(), Meter(time));
            }
            EXPECT_EQ(numbers.size(), static_cast<std::size_t>(file.measures));
            EXPECT_EQ(numbers, file.numbers);
            EXPECT_EQ(meters, file.meters) << expected.id;
            if (IsDrumPart(scorePart, part)) drums.push_back(expected.id);
        }
        EXPECT_EQ(index, file.parts.size());
        EXPECT_EQ(drums, file.drums);
        EXPECT_THAT(file.numbers, ::testing::IsSupersetOf({file.fillFirst, file.fillLast}));
        EXPECT_TRUE(std::filesystem::exists(support::GrooveLibrary() + "/" + file.fillGroove + ".mid"))
            << file.fillGroove;
        if (file.IsMxl()) {
            std::vector<std::string> names;
            for (const auto& entry : ZipEntries(file.path)) names.push_back(entry.first);
            EXPECT_EQ(names, file.entries);
            EXPECT_THAT(names, ::testing::Contains(file.rootfile));
        }
    }
}

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
