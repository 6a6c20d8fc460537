// The command on every corpus file, as a person runs it: opening and saving gives the same bytes,
// a fill changes only the target's measures (byte for byte), leaves nothing of a drum part's old
// notes in them, and writes a valid, sound score that MuseScore 3 plays with the written drum
// notes in the region, and a broken file is refused with a message naming it and no file written.
#include "tests/musicxml/support/byte_regions.h"
#include "tests/musicxml/support/corpus.h"
#include "tests/musicxml/support/external_checks.h"
#include "tests/musicxml/support/score_checks.h"
#include "tests/support/test_support.h"

#include <gmock/gmock.h>
#include <pugixml.hpp>

#include <algorithm>
#include <filesystem>
#include <set>
#include <tuple>

using namespace musicxml_support;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

std::string Quoted(const std::string& text)
{
    return "'" + text + "'";
}

std::string Extension(const CorpusFile& file)
{
    return file.IsMxl() ? ".mxl" : ".musicxml";
}

// The numbers of the part's measures from the fill's first to its last, and with `andNext` one
// past it: the measure after the region may change too (the clef restored, slashes stopped).
std::set<std::string> FillMeasures(const std::string& score, const std::string& part, const CorpusFile& file,
                                   bool andNext)
{
    std::vector<std::string> numbers;
    for (const ElementRange& range : ScanElements(score))
        if (range.name == "measure" && range.partId == part) numbers.push_back(range.number);
    auto first = std::find(numbers.begin(), numbers.end(), file.fillFirst);
    auto last = std::find(numbers.rbegin(), numbers.rend(), file.fillLast).base();   // one past the last
    if (andNext && last != numbers.end()) ++last;
    return {first, last};
}

// The onsets (in quarters) where the part's measures `first` .. `last` (numbers) begin and end.
std::pair<double, double> RegionQuarters(const std::string& score, const std::string& part, const CorpusFile& file)
{
    double from = -1, to = 0;
    for (const TimedNote& note : PartNotes(score, part)) {
        if (from < 0 && note.measureNumber == file.fillFirst) from = note.onset;
        if (note.measureNumber == file.fillLast) to = std::max(to, note.onset + note.duration);
    }
    return {from, to};
}

// The name the score gives the part, which the command takes for the staff.
std::string PartName(const std::string& score, const std::string& part)
{
    pugi::xml_document document;
    document.load_buffer(score.data(), score.size());
    return document.select_node(("//score-part[@id='" + part + "']/part-name").c_str()).node().text().get();
}

// The id of the part the output has and the input has not ("" when none).
std::string NewPartId(const std::string& input, const std::string& output)
{
    std::set<std::string> inputParts;
    for (const ElementRange& range : ScanElements(input))
        if (range.name == "part") inputParts.insert(range.partId);
    for (const ElementRange& range : ScanElements(output))
        if (range.name == "part" && !inputParts.count(range.partId)) return range.partId;
    return "";
}

// What a part writes in the given measures: each note's onset, <midi-unpitched> and voice.
std::multiset<std::tuple<double, int, std::string>> WrittenNotes(const std::string& score, const std::string& part,
                                                                 const std::set<std::string>& measures)
{
    std::multiset<std::tuple<double, int, std::string>> notes;
    for (const TimedNote& note : PartNotes(score, part))
        if (!note.rest && measures.count(note.measureNumber)) notes.emplace(note.onset, note.midiUnpitched, note.voice);
    return notes;
}

}   // namespace

TEST(FillRoundTrip, EveryCorpusScoreComesBackUntouchedButForTheFill)
{
    support::TempFolder folder;
    const std::string environment = "XDG_DATA_HOME=" + folder.Path() + " XDG_CONFIG_HOME=" + folder.Path();
    std::vector<std::string> validated;
    std::vector<std::pair<CorpusFile, std::string>> played;   // (file, filled part) for MuseScore
    for (const CorpusFile& file : Corpus()) {
        if (!file.valid) continue;
        SCOPED_TRACE(file.file);
        const std::string stem = folder / std::filesystem::path(file.file).stem().string();
        const std::string copy = stem + ".copy" + Extension(file);
        support::CommandRun convert = support::RunTamberlyne("convert " + Quoted(file.path) + " -o " + Quoted(copy));
        EXPECT_EQ(convert.status, 0) << convert.err;
        EXPECT_TRUE(support::ReadFile(copy) == support::ReadFile(file.path)) << "open and save changed the bytes";

        const std::string filled = stem + ".filled" + Extension(file);
        const std::string target =
            file.fillPart == "new" ? "--new-staff" : "--staff " + Quoted(PartName(ScoreBytes(file), file.fillPart));
        support::CommandRun fill =
            support::RunTamberlyne("fill " + Quoted(file.path) + " --library " + Quoted(support::GrooveLibrary()) +
                                       " --groove " + Quoted(file.fillGroove) + " --measures " + file.fillFirst + "-" +
                                       file.fillLast + " " + target + " --style drums --yes -o " + Quoted(filled),
                                   environment);
        ASSERT_EQ(fill.status, 0) << fill.out << fill.err;

        const std::string input = ScoreBytes(file);
        const std::string output = file.IsMxl() ? MxlScore(filled) : support::ReadFile(filled);
        AllowedChanges allowed;
        std::string part = file.fillPart;
        if (part == "new") {
            allowed.newParts.insert(part = NewPartId(input, output));
        } else {
            allowed.measures[part] = FillMeasures(input, part, file, true);
        }
        std::map<std::string, std::set<std::string>> rewritten;
        if (file.fillPart != "new") {
            rewritten[part] = FillMeasures(input, part, file, false);
            // The fill replaced what the part played there, in every voice (a drum part's feet
            // too): its measures hold exactly what the same fill writes on a new staff.
            const std::string onNewStaff = stem + ".new-staff" + Extension(file);
            support::CommandRun fillNew =
                support::RunTamberlyne("fill " + Quoted(file.path) + " --library " + Quoted(support::GrooveLibrary()) +
                                           " --groove " + Quoted(file.fillGroove) + " --measures " + file.fillFirst +
                                           "-" + file.fillLast + " --new-staff --style drums -o " + Quoted(onNewStaff),
                                       environment);
            ASSERT_EQ(fillNew.status, 0) << fillNew.out << fillNew.err;
            const std::string groove = file.IsMxl() ? MxlScore(onNewStaff) : support::ReadFile(onNewStaff);
            const std::multiset<std::tuple<double, int, std::string>> filledNotes =
                WrittenNotes(output, part, rewritten[part]);
            EXPECT_FALSE(filledNotes.empty());
            EXPECT_TRUE(filledNotes == WrittenNotes(groove, NewPartId(input, groove), rewritten[part]))
                << "the filled measures hold other notes than the groove's";
        }
        EXPECT_THAT(ScoreProblems(output, rewritten), IsEmpty());
        EXPECT_EQ(FirstUnexpectedChange(input, output, allowed), "");
        if (file.IsMxl()) {
            auto before = ZipEntries(file.path), after = ZipEntries(filled);
            ASSERT_EQ(before.size(), after.size());
            for (std::size_t i = 0; i < before.size(); ++i) {
                EXPECT_EQ(after[i].first, before[i].first);
                if (before[i].first != file.rootfile) {
                    EXPECT_TRUE(after[i].second == before[i].second) << before[i].first;
                }
            }
            support::WriteFile(stem + ".filled-score.musicxml", output);
            validated.push_back(stem + ".filled-score.musicxml");
        } else {
            validated.push_back(filled);
        }
        // MuseScore unrolls repeats: its onsets match the written ones only in a score without them.
        if (input.find("<repeat") == std::string::npos) played.emplace_back(file, part);
    }
    EXPECT_THAT(SchemaFailures(validated), IsEmpty());

    std::vector<std::string> playedPaths;
    for (const auto& [file, part] : played)
        playedPaths.push_back(folder /
                              (std::filesystem::path(file.file).stem().string() + ".filled" + Extension(file)));
    std::vector<std::vector<DrumHit>> hits = MuseScoreDrumHits(playedPaths);
    ASSERT_EQ(hits.size(), played.size());
    for (std::size_t i = 0; i < played.size(); ++i) {
        const auto& [file, part] = played[i];
        const std::string output = file.IsMxl() ? MxlScore(playedPaths[i]) : support::ReadFile(playedPaths[i]);
        const auto [from, to] = RegionQuarters(output, part, file);
        std::vector<DrumHit> written = WrittenDrumHits(output, part, from, to);
        std::vector<DrumHit> inRegion;
        for (const DrumHit& hit : hits[i])
            if (hit.quarter >= from && hit.quarter < to) inRegion.push_back(hit);
        EXPECT_FALSE(written.empty()) << file.file;
        EXPECT_TRUE(inRegion == written) << file.file << ": MuseScore plays " << inRegion.size()
                                         << " channel-10 notes in the region, the score writes " << written.size();
    }
}

TEST(FillRoundTrip, BrokenFilesAreRefusedByNameAndNothingIsWritten)
{
    support::TempFolder folder;
    for (const CorpusFile& file : Corpus()) {
        if (file.valid) continue;
        SCOPED_TRACE(file.file);
        ASSERT_TRUE(std::filesystem::exists(file.path) && !file.error.empty());
        const std::string out = folder / "out.musicxml";
        support::CommandRun fill = support::RunTamberlyne("fill " + Quoted(file.path) + " --groove 'Rock 8ths' " +
                                                          "--measures 1-1 --yes -o " + Quoted(out));
        EXPECT_EQ(fill.status, 1);
        EXPECT_THAT(fill.err, HasSubstr(file.path));
        EXPECT_THAT(fill.err, HasSubstr(file.error));
        EXPECT_FALSE(std::filesystem::exists(out));
    }
}
