#include "grooves/tools/groove_pattern.h"

#include <cctype>
#include <map>
#include <sstream>

namespace grooves {
namespace {

const std::map<std::string, int>& KitPieces()
{
    static const std::map<std::string, int> pieces = {
        {"kick2", 35},        {"kick", 36},         {"sidestick", 37},   {"snare", 38},      {"clap", 39},
        {"snare2", 40},       {"lowfloortom", 41},  {"hihat", 42},       {"floortom", 43},   {"pedalhat", 44},
        {"lowtom", 45},       {"openhat", 46},      {"lowmidtom", 47},   {"himidtom", 48},   {"crash", 49},
        {"hightom", 50},      {"ride", 51},         {"china", 52},       {"ridebell", 53},   {"tambourine", 54},
        {"splash", 55},       {"cowbell", 56},      {"crash2", 57},      {"vibraslap", 58},  {"ride2", 59},
        {"hibongo", 60},      {"lobongo", 61},      {"muteconga", 62},   {"hiconga", 63},    {"loconga", 64},
        {"hitimbale", 65},    {"lotimbale", 66},    {"hiagogo", 67},     {"loagogo", 68},    {"cabasa", 69},
        {"maracas", 70},      {"shortwhistle", 71}, {"longwhistle", 72}, {"shortguiro", 73}, {"longguiro", 74},
        {"claves", 75},       {"hiwoodblock", 76},  {"lowoodblock", 77}, {"mutecuica", 78},  {"opencuica", 79},
        {"mutetriangle", 80}, {"opentriangle", 81},
    };
    return pieces;
}

// Grid characters of a drum line and their velocities.
int HitVelocity(char cell)
{
    switch (cell) {
        case 'X': return 120;   // accent
        case 'x': return 96;    // normal
        case 'o': return 72;    // soft
        case 'g': return 36;    // ghost note
        case '.': return 0;     // rest
        default: return -1;
    }
}

// "C4" = 60; sharps with '#', flats with 'b'; octave -1..9.
int NoteNumber(const std::string& name)
{
    static const int kSemitones[] = {9, 11, 0, 2, 4, 5, 7};   // A B C D E F G
    if (name.empty() || name[0] < 'A' || name[0] > 'G') return -1;
    int key = kSemitones[name[0] - 'A'];
    size_t i = 1;
    if (i < name.size() && (name[i] == '#' || name[i] == 'b')) key += name[i++] == '#' ? 1 : -1;
    const std::string octave = name.substr(i);
    if (octave.empty() ||
        (octave != "-1" && !(octave.size() == 1 && std::isdigit(static_cast<unsigned char>(octave[0])))))
        return -1;
    key += (std::stoi(octave) + 1) * 12;
    return key >= 0 && key <= 127 ? key : -1;
}

class Parser {
public:
    Parser(const std::string& source) : source_(source) {}

    GroovePattern Parse(const std::string& text)
    {
        std::istringstream lines(text);
        std::string line;
        while (std::getline(lines, line)) {
            ++lineNumber_;
            line.erase(CommentStart(line));
            std::istringstream words(line);
            std::string keyword;
            if (!(words >> keyword)) continue;
            ParseLine(keyword, words);
        }
        lineNumber_ = 0;
        Check();
        return pattern_;
    }

private:
    // A comment is a word starting with '#'; inside a word ("F#3") it is a sharp.
    static size_t CommentStart(const std::string& line)
    {
        for (size_t i = 0; i < line.size(); ++i)
            if (line[i] == '#' && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t')) return i;
        return line.size();
    }

    [[noreturn]] void Fail(const std::string& what) const
    {
        std::string where = source_;
        if (lineNumber_ > 0) where += ", line " + std::to_string(lineNumber_);
        throw PatternError(where + ": " + what);
    }

    int Number(std::istream& words, const char* what, int low, int high)
    {
        std::string token;
        if (!(words >> token)) Fail(std::string("missing ") + what);
        size_t used = 0;
        int value = 0;
        try {
            value = std::stoi(token, &used);
        } catch (const std::exception&) {
            used = 0;
        }
        if (used != token.size() || value < low || value > high)
            Fail(std::string("bad ") + what + " '" + token + "' (" + std::to_string(low) + ".." + std::to_string(high) +
                 ")");
        return value;
    }

    static std::string Rest(std::istream& words)
    {
        std::string rest;
        std::getline(words, rest);
        const size_t begin = rest.find_first_not_of(" \t");
        const size_t end = rest.find_last_not_of(" \t\r");
        return begin == std::string::npos ? std::string() : rest.substr(begin, end - begin + 1);
    }

    void ParseLine(const std::string& keyword, std::istringstream& words)
    {
        GroovePattern& p = pattern_;
        if (keyword == "groove") {
            p.title = Rest(words);
            if (p.title.empty() || p.title.find('/') != std::string::npos) Fail("a groove needs a title without '/'");
        } else if (keyword == "meter") {
            std::string meter;
            words >> meter;
            const size_t slash = meter.find('/');
            std::istringstream num(meter.substr(0, slash == std::string::npos ? 0 : slash));
            std::istringstream den(slash == std::string::npos ? "" : meter.substr(slash + 1));
            p.numerator = Number(num, "meter numerator", 1, 32);
            p.denominator = Number(den, "meter denominator", 1, 32);
            if ((p.denominator & (p.denominator - 1)) != 0) Fail("the meter's denominator must be a power of two");
        } else if (keyword == "division") {
            p.division = Number(words, "division", 24, 32767);
        } else if (keyword == "tempo") {
            p.tempo = Number(words, "tempo", 20, 400);
        } else if (keyword == "format") {
            p.format = Number(words, "format", 0, 1);
        } else if (keyword == "steps") {
            p.stepsPerBar = Number(words, "steps per bar", 1, 192);
        } else if (keyword == "bars") {
            p.bars = Number(words, "bars", 1, 64);
        } else if (keyword == "swing") {
            p.swing = Number(words, "swing", 50, 80);
        } else if (keyword == "running-status") {
            const std::string value = Rest(words);
            if (value != "yes" && value != "no") Fail("running-status is yes or no");
            p.runningStatus = value == "yes";
        } else if (keyword == "ending") {
            std::string piece;
            while (words >> piece) p.ending.push_back(KitKey(piece));
        } else if (keyword == "track") {
            ParseTrackHeader(words);
        } else if (keyword == "notes") {
            ParseNoteLine(words);
        } else if (DrumKey(keyword) >= 0) {
            ParseDrumLine(DrumKey(keyword), words);
        } else {
            Fail("unknown keyword or kit piece '" + keyword + "'");
        }
    }

    int KitKey(const std::string& piece)
    {
        const int key = DrumKey(piece);
        if (key < 0) Fail("unknown kit piece '" + piece + "'");
        return key;
    }

    void ParseTrackHeader(std::istringstream& words)
    {
        PatternTrack track;
        if (!(words >> track.name)) Fail("a track needs a name");
        std::string option;
        while (words >> option) {
            if (option == "channel")
                track.channel = Number(words, "channel", 1, 16);
            else if (option == "program")
                track.program = Number(words, "program", 0, 127);
            else
                Fail("unknown track option '" + option + "'");
        }
        pattern_.tracks.push_back(track);
    }

    PatternTrack& CurrentTrack(bool drums)
    {
        if (pattern_.tracks.empty()) Fail("lines must follow a 'track' line");
        PatternTrack& track = pattern_.tracks.back();
        if (track.IsDrums() != drums)
            Fail(drums ? "kit lines belong to a channel 10 track" : "'notes' lines belong to a pitched track");
        return track;
    }

    // The cells of a line cover one bar (repeated over every bar) or the whole groove.
    int Repeats(size_t cells)
    {
        const size_t perBar = static_cast<size_t>(pattern_.stepsPerBar);
        const size_t perGroove = perBar * static_cast<size_t>(pattern_.bars);
        if (cells == perBar) return pattern_.bars;
        if (cells == perGroove) return 1;
        Fail("a line has " + std::to_string(cells) + " steps; one bar has " + std::to_string(perBar) +
             " and the groove " + std::to_string(perGroove));
    }

    void ParseDrumLine(int key, std::istringstream& words)
    {
        PatternTrack& track = CurrentTrack(true);
        std::vector<int> velocities;
        for (char cell : Rest(words)) {
            if (cell == ' ' || cell == '\t' || cell == '|') continue;
            const int velocity = HitVelocity(cell);
            if (velocity < 0) Fail(std::string("bad grid cell '") + cell + "' (use X x o g .)");
            velocities.push_back(velocity);
        }
        const int repeats = Repeats(velocities.size());
        int step = 0;
        for (int r = 0; r < repeats; ++r) {
            for (const int velocity : velocities) {
                if (velocity > 0) track.notes.push_back({step, 1, key, velocity});
                ++step;
            }
        }
    }

    // Tokens: a note ("E2", "F#3"), a chord ("C4+E4+G4"), "." a rest, "-" holds the previous one.
    void ParseNoteLine(std::istringstream& words)
    {
        PatternTrack& track = CurrentTrack(false);
        std::vector<std::vector<int>> steps;
        std::vector<bool> held;
        std::string token;
        while (words >> token) {
            if (token == "|") continue;
            std::vector<int> chord;
            if (token != "." && token != "-") {
                std::istringstream parts(token);
                std::string part;
                while (std::getline(parts, part, '+')) {
                    const int key = NoteNumber(part);
                    if (key < 0) Fail("bad note '" + part + "'");
                    chord.push_back(key);
                }
            }
            steps.push_back(chord);
            held.push_back(token == "-");
        }
        const int repeats = Repeats(steps.size());
        const size_t count = steps.size();
        int step = 0;
        for (int r = 0; r < repeats; ++r) {
            for (size_t i = 0; i < count; ++i, ++step) {
                size_t length = 1;
                while (i + length < count && held[i + length]) ++length;
                for (int key : steps[i]) track.notes.push_back({step, static_cast<int>(length), key, 88});
            }
        }
    }

    void Check()
    {
        GroovePattern& p = pattern_;
        if (p.title.empty()) Fail("no 'groove' title");
        if (p.tracks.empty()) Fail("no tracks");
        if (p.BarTicks() % p.stepsPerBar != 0) Fail("the bar's ticks do not divide into the grid's steps");
        bool drums = false;
        for (const PatternTrack& t : p.tracks) drums = drums || (t.IsDrums() && !t.notes.empty());
        if (!drums) Fail("no drum notes");
        if (p.format == 0 && p.tracks.size() > 16) Fail("too many tracks");
    }

    std::string source_;
    int lineNumber_ = 0;
    GroovePattern pattern_;
};

}   // namespace

int GroovePattern::StepTick(int step) const
{
    const int stepTicks = StepTicks();
    int tick = step * stepTicks;
    if (step % 2 == 1) tick = (step - 1) * stepTicks + (2 * stepTicks * swing + 50) / 100;
    return tick;
}

int DrumKey(const std::string& piece)
{
    const auto it = KitPieces().find(piece);
    return it == KitPieces().end() ? -1 : it->second;
}

GroovePattern ParsePattern(const std::string& text, const std::string& source)
{
    return Parser(source).Parse(text);
}

}   // namespace grooves
