// What other programs say about a score: the MusicXML 4.0 schema (xmllint, offline through the
// schema's catalog) and MuseScore 3 (headless MIDI export); and the entries of a .mxl archive.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace musicxml_support {

// Validates every file in ONE xmllint run (the schema compiles once) and returns the files that
// do not validate, each with xmllint's words about it; `log` (optional) gets the whole output.
std::vector<std::string> SchemaFailures(const std::vector<std::string>& paths, std::string* log = nullptr);

// Every entry of a zip archive, name and bytes, in the archive's order (directories too, empty).
std::vector<std::pair<std::string, std::string>> ZipEntries(const std::string& path);
// The score of a .mxl: the entry the first <rootfile> of META-INF/container.xml names.
std::string MxlScore(const std::string& path);

struct DrumHit {
    double quarter = 0;   // onset in quarter notes from the start of the score
    int key = 0;
    bool operator==(const DrumHit& other) const { return quarter == other.quarter && key == other.key; }
    bool operator<(const DrumHit& other) const
    {
        return quarter != other.quarter ? quarter < other.quarter : key < other.key;
    }
};

// Exports each score (.musicxml or .mxl) to MIDI with MuseScore 3 in one batch run and returns
// the note-ons on MIDI channel 10 of each, sorted; onsets rounded to 1/960 quarter. Fails the
// test when MuseScore writes no MIDI file for a score. Repeats come unrolled, as MuseScore plays.
std::vector<std::vector<DrumHit>> MuseScoreDrumHits(const std::vector<std::string>& scorePaths);

// The drum hits a reader should play from the written notes of one part (MuseScore's way:
// channel-10 instruments, key = <midi-unpitched> - 1, tied continuations and grace notes silent),
// between two onsets in quarters [from, to).
std::vector<DrumHit> WrittenDrumHits(const std::string& scoreBytes, const std::string& partId, double from = 0,
                                     double to = 1e300);

}   // namespace musicxml_support
