#include "bench/big_score.h"

#include <array>

namespace bench {
namespace {

struct Instrument {
    const char* name;
    const char* abbreviation;
    const char* sound;
    int program;
    const char* clefSign;
    int clefLine;
    int lowOctave;   // the octave its melodies start in
};

constexpr std::array<Instrument, 7> kPitched = {{
    {"Flute", "Fl.", "wind.flutes.flute", 74, "G", 2, 5},
    {"Clarinet in B\xE2\x99\xAD", "Cl.", "wind.reed.clarinet", 72, "G", 2, 4},
    {"Horn in F", "Hn.", "brass.french-horn", 61, "G", 2, 4},
    {"Violin", "Vln.", "strings.violin", 41, "G", 2, 4},
    {"Viola", "Vla.", "strings.viola", 42, "C", 3, 3},
    {"Violoncello", "Vc.", "strings.cello", 43, "F", 4, 2},
    {"Piano", "Pno.", "keyboard.piano", 1, "G", 2, 4},
}};

struct Piece {
    const char* name;
    int key;
    const char* step;
    int octave;
    const char* notehead;   // nullptr: normal
};
constexpr Piece kHiHat = {"Closed Hi-Hat", 42, "G", 5, "x"};
constexpr Piece kSnare = {"Acoustic Snare", 38, "C", 5, nullptr};
constexpr Piece kKick = {"Bass Drum 1", 36, "F", 4, nullptr};

const char* const kSteps[] = {"C", "D", "E", "F", "G", "A", "B"};
const char* const kWords[] = {"long", "the", "road", "we", "walk", "to", "geth", "er", "home"};

std::string PartId(int part)
{
    return "P" + std::to_string(part + 1);
}

void Pitch(std::string& out, int degree, int octave)
{
    out += "        <pitch>\n          <step>";
    out += kSteps[degree % 7];
    out += "</step>\n          <octave>" + std::to_string(octave + degree / 7) + "</octave>\n        </pitch>\n";
}

// A whole note, two halves, a half and two quarters, or two eighths and three quarters, by the measure.
void PitchedMeasure(std::string& out, const Instrument& instrument, int part, int measure)
{
    const int shape = (measure + part) % 4;
    const int durations[4][5] = {{8, 0, 0, 0, 0}, {4, 4, 0, 0, 0}, {4, 2, 2, 0, 0}, {1, 1, 2, 2, 2}};
    const char* types[9] = {"", "eighth", "quarter", "", "half", "", "", "", "whole"};
    for (int i = 0; i < 5 && durations[shape][i] > 0; ++i) {
        const int duration = durations[shape][i];
        const int degree = (measure * 3 + i * 2 + part) % 9;
        out += "      <note>\n";
        Pitch(out, degree, instrument.lowOctave);
        out += "        <duration>" + std::to_string(duration) + "</duration>\n        <voice>1</voice>\n";
        out += std::string("        <type>") + types[duration] + "</type>\n";
        if (duration < 8) out += degree > 4 ? "        <stem>down</stem>\n" : "        <stem>up</stem>\n";
        if (duration == 1)
            out += i == 0 ? "        <beam number=\"1\">begin</beam>\n" : "        <beam number=\"1\">end</beam>\n";
        if (part == 0 && measure % 2 == 0)
            out += "        <lyric number=\"1\">\n          <syllabic>single</syllabic>\n          <text>" +
                   std::string(kWords[(measure + i) % 9]) + "</text>\n        </lyric>\n";
        out += "      </note>\n";
        if (part == 6 && i == 0) {   // the piano adds a chord third
            out += "      <note>\n        <chord/>\n";
            Pitch(out, degree + 2, instrument.lowOctave);
            out += "        <duration>" + std::to_string(duration) + "</duration>\n        <voice>1</voice>\n";
            out += std::string("        <type>") + types[duration] + "</type>\n      </note>\n";
        }
    }
}

void DrumNote(std::string& out, int part, const Piece& piece, int duration, int voice, bool chord, const char* beam)
{
    out += "      <note>\n";
    if (chord) out += "        <chord/>\n";
    out += std::string("        <unpitched>\n          <display-step>") + piece.step +
           "</display-step>\n          <display-octave>" + std::to_string(piece.octave) +
           "</display-octave>\n        </unpitched>\n";
    out += "        <duration>" + std::to_string(duration) + "</duration>\n";
    out += "        <instrument id=\"" + PartId(part) + "-I" + std::to_string(piece.key + 1) + "\"/>\n";
    out += "        <voice>" + std::to_string(voice) + "</voice>\n";
    out += duration == 1 ? "        <type>eighth</type>\n" : "        <type>quarter</type>\n";
    out += voice == 1 ? "        <stem>up</stem>\n" : "        <stem>down</stem>\n";
    if (piece.notehead) out += std::string("        <notehead>") + piece.notehead + "</notehead>\n";
    if (beam) out += std::string("        <beam number=\"1\">") + beam + "</beam>\n";
    out += "      </note>\n";
}

// Hi-hat eighths with the snare on 2 and 4, the bass drum on 1 and 3 in the second voice; the
// drums rest in three measures of four.
void DrumMeasure(std::string& out, int part, int measure)
{
    if (measure % 4 != 0) {
        out += "      <note>\n        <rest measure=\"yes\"/>\n        <duration>8</duration>\n"
               "        <voice>1</voice>\n      </note>\n";
        return;
    }
    for (int i = 0; i < 8; ++i) {
        DrumNote(out, part, kHiHat, 1, 1, false, i % 2 == 0 ? "begin" : "end");
        if (i == 2 || i == 6) DrumNote(out, part, kSnare, 1, 1, true, nullptr);
    }
    out += "      <backup>\n        <duration>8</duration>\n      </backup>\n";
    for (int i = 0; i < 2; ++i) {
        DrumNote(out, part, kKick, 2, 2, false, nullptr);
        out += "      <note>\n        <rest/>\n        <duration>2</duration>\n        <voice>2</voice>\n"
               "        <type>quarter</type>\n      </note>\n";
    }
}

void Attributes(std::string& out, const char* sign, int line, bool drums)
{
    out += "      <attributes>\n        <divisions>2</divisions>\n";
    out += drums ? "        <key>\n          <fifths>0</fifths>\n        </key>\n"
                 : "        <key>\n          <fifths>-1</fifths>\n          <mode>major</mode>\n        </key>\n";
    out += "        <time>\n          <beats>4</beats>\n          <beat-type>4</beat-type>\n        </time>\n";
    out += std::string("        <clef>\n          <sign>") + sign + "</sign>\n";
    if (line > 0) out += "          <line>" + std::to_string(line) + "</line>\n";
    out += "        </clef>\n      </attributes>\n";
}

void ScorePart(std::string& out, int part, int parts)
{
    const std::string id = PartId(part);
    out += "    <score-part id=\"" + id + "\">\n";
    if (part == parts - 1) {
        out += "      <part-name>Drum Set</part-name>\n      <part-abbreviation>Dr.</part-abbreviation>\n";
        for (const Piece* piece : {&kKick, &kSnare, &kHiHat})
            out += "      <score-instrument id=\"" + id + "-I" + std::to_string(piece->key + 1) +
                   "\">\n        <instrument-name>" + piece->name + "</instrument-name>\n      </score-instrument>\n";
        for (const Piece* piece : {&kKick, &kSnare, &kHiHat})
            out += "      <midi-instrument id=\"" + id + "-I" + std::to_string(piece->key + 1) +
                   "\">\n        <midi-channel>10</midi-channel>\n        <midi-program>1</midi-program>\n"
                   "        <midi-unpitched>" +
                   std::to_string(piece->key + 1) + "</midi-unpitched>\n      </midi-instrument>\n";
    } else {
        const Instrument& instrument = kPitched[static_cast<size_t>(part) % kPitched.size()];
        int channel = part + 1 >= 10 ? part + 2 : part + 1;   // channel 10 is the drums'
        out += std::string("      <part-name>") + instrument.name + "</part-name>\n      <part-abbreviation>" +
               instrument.abbreviation + "</part-abbreviation>\n";
        out += "      <score-instrument id=\"" + id + "-I1\">\n        <instrument-name>" + instrument.name +
               "</instrument-name>\n        <instrument-sound>" + instrument.sound +
               "</instrument-sound>\n      </score-instrument>\n";
        out += "      <midi-instrument id=\"" + id + "-I1\">\n        <midi-channel>" + std::to_string(channel) +
               "</midi-channel>\n        <midi-program>" + std::to_string(instrument.program) +
               "</midi-program>\n      </midi-instrument>\n";
    }
    out += "    </score-part>\n";
}

}   // namespace

std::string BigScore(int measures, int parts)
{
    std::string out;
    out.reserve(static_cast<size_t>(measures) * static_cast<size_t>(parts) * 1600);
    out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE score-partwise PUBLIC \"-//Recordare//DTD MusicXML 4.0 Partwise//EN\" "
           "\"http://www.musicxml.org/dtds/partwise.dtd\">\n"
           "<score-partwise version=\"4.0\">\n  <work>\n    <work-title>Long Road Home (" +
           std::to_string(measures) +
           " measures)</work-title>\n  </work>\n"
           "  <identification>\n    <encoding>\n      <software>big_score</software>\n    </encoding>\n"
           "  </identification>\n  <part-list>\n";
    for (int part = 0; part < parts; ++part) ScorePart(out, part, parts);
    out += "  </part-list>\n";
    for (int part = 0; part < parts; ++part) {
        const bool drums = part == parts - 1;
        const Instrument& instrument = kPitched[static_cast<size_t>(part) % kPitched.size()];
        out += "  <part id=\"" + PartId(part) + "\">\n";
        for (int measure = 1; measure <= measures; ++measure) {
            out += "    <measure number=\"" + std::to_string(measure) + "\">\n";
            if (measure == 1) {
                Attributes(out, drums ? "percussion" : instrument.clefSign, drums ? 2 : instrument.clefLine, drums);
            } else if (part == 0 && measure % 4 == 1) {
                out += "      <print new-system=\"yes\"/>\n";
            }
            if (!drums && measure % 16 == 1)
                out += std::string("      <direction placement=\"below\">\n        <direction-type>\n"
                                   "          <dynamics>\n            <") +
                       (measure % 32 == 1 ? "mf" : "p") +
                       "/>\n          </dynamics>\n        </direction-type>\n      </direction>\n";
            if (part == 0 && measure % 2 == 1)
                out += std::string("      <harmony>\n        <root>\n          <root-step>") + kSteps[measure % 7] +
                       "</root-step>\n        </root>\n        <kind>major</kind>\n      </harmony>\n";
            if (drums) {
                DrumMeasure(out, part, measure);
            } else {
                PitchedMeasure(out, instrument, part, measure);
            }
            if (measure == measures)
                out += "      <barline location=\"right\">\n        <bar-style>light-heavy</bar-style>\n"
                       "      </barline>\n";
            out += "    </measure>\n";
        }
        out += "  </part>\n";
    }
    out += "</score-partwise>\n";
    return out;
}

}   // namespace bench
