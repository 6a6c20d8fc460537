// musicxml_check: the checks of tests/musicxml/support on files, from the command line.
//
//   musicxml_check [--against IN [--allow PART:FIRST-LAST]... [--new-part ID]...] [--drums PART]
//                  SCORE...
//
// Validates every SCORE (.musicxml or .mxl) against the MusicXML 4.0 schema in one xmllint run
// and runs the score checks on each; with --against, compares each SCORE byte for byte with IN
// outside the allowed measures (the fill's: the measures of PART from the first numbered FIRST to
// the last numbered LAST, and the one after them, where a clef may be restored) and new parts;
// outside the fill's measures, notes of PART may go without <instrument>; with --drums, lists the channel-10 notes MuseScore 3 plays from
// each SCORE beside those its PART writes. Exit status 0 when every check passes, 1 otherwise.
#include "tests/musicxml/support/byte_regions.h"
#include "tests/musicxml/support/external_checks.h"
#include "tests/musicxml/support/score_checks.h"
#include "tests/support/test_support.h"

#include <filesystem>
#include <iostream>

using namespace musicxml_support;

namespace {

bool IsMxl(const std::string& path)
{
    return path.size() > 4 && path.compare(path.size() - 4, 4, ".mxl") == 0;
}

std::string Score(const std::string& path)
{
    return IsMxl(path) ? MxlScore(path) : support::ReadFile(path);
}

// The numbers of PART's measures from the first numbered `first` to the last numbered `last`,
// and with `andNext` the one after them.
std::set<std::string> MeasureRange(const std::string& bytes, const std::string& part, const std::string& first,
                                   const std::string& last, bool andNext)
{
    std::vector<std::string> numbers;
    for (const ElementRange& range : ScanElements(bytes))
        if (range.name == "measure" && range.partId == part) numbers.push_back(range.number);
    std::set<std::string> chosen;
    bool inside = false;
    std::size_t lastAt = numbers.size();
    for (std::size_t i = numbers.size(); i-- > 0;)
        if (numbers[i] == last && lastAt == numbers.size()) lastAt = i;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        inside = inside || numbers[i] == first;
        if (inside && (i <= lastAt || (andNext && i == lastAt + 1))) chosen.insert(numbers[i]);
    }
    return chosen;
}

int Usage()
{
    std::cerr << "usage: musicxml_check [--against IN [--allow PART:FIRST-LAST]... [--new-part ID]...] "
                 "[--drums PART] SCORE...\n";
    return 2;
}

}   // namespace

int main(int argc, char** argv)
{
    std::string against, drums;
    std::vector<std::string> allows, newParts, scores;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        bool hasValue = i + 1 < argc;
        if (arg == "--against" && hasValue) {
            against = argv[++i];
        } else if (arg == "--allow" && hasValue) {
            allows.push_back(argv[++i]);
        } else if (arg == "--new-part" && hasValue) {
            newParts.push_back(argv[++i]);
        } else if (arg == "--drums" && hasValue) {
            drums = argv[++i];
        } else if (arg.rfind("--", 0) == 0) {
            return Usage();
        } else {
            scores.push_back(arg);
        }
    }
    if (scores.empty()) return Usage();

    bool passed = true;
    support::TempFolder folder;
    std::vector<std::string> plain;   // the schema reads the scores of .mxl files from the folder
    for (std::size_t i = 0; i < scores.size(); ++i) {
        plain.push_back(scores[i]);
        if (IsMxl(scores[i]))
            support::WriteFile(plain.back() = folder / (std::to_string(i) + ".musicxml"), Score(scores[i]));
    }
    for (const std::string& failure : SchemaFailures(plain)) {
        std::cout << "schema: " << failure << "\n";
        passed = false;
    }
    const std::string input = against.empty() ? "" : Score(against);
    AllowedChanges allowed;
    std::map<std::string, std::set<std::string>> rewritten;
    allowed.newParts.insert(newParts.begin(), newParts.end());
    for (const std::string& allow : allows) {
        std::size_t colon = allow.find(':'), dash = allow.find('-', colon);
        if (colon == std::string::npos || dash == std::string::npos) return Usage();
        std::string part = allow.substr(0, colon);
        const std::string first = allow.substr(colon + 1, dash - colon - 1), last = allow.substr(dash + 1);
        allowed.measures[part] = MeasureRange(input, part, first, last, true);
        rewritten[part] = MeasureRange(input, part, first, last, false);
    }
    for (const std::string& score : scores) {
        const std::string bytes = Score(score);
        for (const std::string& problem : ScoreProblems(bytes, rewritten)) {
            std::cout << score << ": " << problem << "\n";
            passed = false;
        }
        if (!against.empty()) {
            std::string change = FirstUnexpectedChange(input, bytes, allowed);
            if (!change.empty()) std::cout << score << ": " << change << "\n";
            passed = passed && change.empty();
        }
    }
    if (!drums.empty()) {
        std::vector<std::vector<DrumHit>> played = MuseScoreDrumHits(scores);
        for (std::size_t i = 0; i < scores.size() && i < played.size(); ++i) {
            std::vector<DrumHit> written = WrittenDrumHits(Score(scores[i]), drums);
            std::cout << scores[i] << ": MuseScore plays " << played[i].size() << " channel-10 notes, part " << drums
                      << " writes " << written.size() << (played[i] == written ? " (the same)\n" : " (they differ)\n");
            for (std::size_t n = 0; n < std::max(played[i].size(), written.size()); ++n) {
                auto show = [&](const std::vector<DrumHit>& hits) {
                    return n < hits.size() ? std::to_string(hits[n].quarter) + " key " + std::to_string(hits[n].key)
                                           : std::string("-");
                };
                if (played[i] != written)
                    std::cout << "  played " << show(played[i]) << "   written " << show(written) << "\n";
            }
            passed = passed && played[i] == written;
        }
    }
    std::cout << (passed ? "all checks pass\n" : "some checks fail\n");
    return passed ? 0 : 1;
}
