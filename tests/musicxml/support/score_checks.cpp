#include "tests/musicxml/support/score_checks.h"

#include <pugixml.hpp>

#include <cmath>
#include <map>
#include <set>
#include <sstream>

namespace musicxml_support {
namespace {

constexpr double kTolerance = 1e-6;

double TypeQuarters(const std::string& type)
{
    static const std::map<std::string, double> quarters = {
        {"maxima", 32},     {"long", 16},        {"breve", 8},         {"whole", 4},           {"half", 2},
        {"quarter", 1},     {"eighth", 0.5},     {"16th", 0.25},       {"32nd", 0.125},        {"64th", 0.0625},
        {"128th", 0.03125}, {"256th", 0.015625}, {"512th", 0.0078125}, {"1024th", 0.00390625},
    };
    auto found = quarters.find(type);
    return found == quarters.end() ? -1 : found->second;
}

// "3+2" beats count as 5; several <beats>/<beat-type> pairs add up.
double MeasureQuarters(pugi::xml_node time)
{
    double total = 0;
    pugi::xml_node beats = time.child("beats");
    for (pugi::xml_node type = time.child("beat-type"); beats && type;
         beats = beats.next_sibling("beats"), type = type.next_sibling("beat-type")) {
        double count = 0;
        std::stringstream parts(beats.text().get());
        for (std::string piece; std::getline(parts, piece, '+');) count += std::atof(piece.c_str());
        total += count * 4.0 / type.text().as_double(4);
    }
    return total;
}

struct Instrument {
    int unpitched = 0;
    int channel = 0;
};

struct Part {
    pugi::xml_node scorePart;
    std::map<std::string, Instrument> instruments;   // score-instrument id -> its MIDI data
};

std::map<std::string, Instrument> InstrumentsOf(pugi::xml_node scorePart)
{
    std::map<std::string, Instrument> instruments;
    for (pugi::xml_node instrument : scorePart.children("score-instrument"))
        instruments[instrument.attribute("id").value()];
    for (pugi::xml_node midi : scorePart.children("midi-instrument")) {
        auto found = instruments.find(midi.attribute("id").value());
        if (found == instruments.end()) continue;
        found->second.unpitched = midi.child("midi-unpitched").text().as_int();
        found->second.channel = midi.child("midi-channel").text().as_int();
    }
    return instruments;
}

// Walks one part measure by measure, keeping a cursor per measure moved by notes, backup and
// forward, and reports what does not add up. `notes` (optional) receives every note in time.
class PartWalk {
public:
    PartWalk(const std::string& partId, const std::map<std::string, Instrument>& instruments,
             std::vector<std::string>& problems, std::vector<TimedNote>* notes)
        : partId_(partId), instruments_(instruments), problems_(problems), notes_(notes)
    {}

    // `untouched`: the edit did not rewrite the measure's notes.
    void Measure(pugi::xml_node measure, int index, bool untouched = false)
    {
        untouched_ = untouched;
        number_ = measure.attribute("number").value();
        index_ = index;
        cursor_ = 0;
        longest_ = 0;
        voiceEnds_.clear();
        for (pugi::xml_node child : measure.children()) {
            std::string name = child.name();
            if (name == "attributes") {
                if (pugi::xml_node divisions = child.child("divisions")) divisions_ = divisions.text().as_double();
                if (pugi::xml_node time = child.child("time")) expected_ = MeasureQuarters(time);
            } else if (name == "note") {
                Note(child);
            } else if (name == "backup") {
                cursor_ -= Quarters(child);
                if (cursor_ < -kTolerance) Problem("backup goes before the start of the measure");
            } else if (name == "forward") {
                cursor_ += Quarters(child);
            }
            longest_ = std::max(longest_, cursor_);
        }
        bool implicit = std::string(measure.attribute("implicit").value()) == "yes";
        if (expected_ <= 0) {
            Problem("no time signature before this measure");
        } else if (longest_ > expected_ + kTolerance || (!implicit && longest_ < expected_ - kTolerance)) {
            Problem("holds " + Text(longest_) + " quarters, its time signature " + Text(expected_));
        }
        start_ += implicit ? longest_ : expected_;
    }

private:
    double Quarters(pugi::xml_node element)
    {
        if (divisions_ <= 0) Problem("a duration before any <divisions>");
        return element.child("duration").text().as_double() / (divisions_ > 0 ? divisions_ : 1);
    }

    void Note(pugi::xml_node note)
    {
        TimedNote timed;
        timed.measureIndex = index_;
        timed.measureNumber = number_;
        timed.grace = static_cast<bool>(note.child("grace"));
        timed.rest = static_cast<bool>(note.child("rest"));
        timed.unpitched = static_cast<bool>(note.child("unpitched"));
        timed.staff = note.child("staff").text().as_int(1);
        timed.voice = note.child("voice").text().as_string("1");
        timed.duration = timed.grace ? 0 : Quarters(note);
        for (pugi::xml_node tie : note.children("tie"))
            if (std::string(tie.attribute("type").value()) == "stop") timed.tieStop = true;
        if (pugi::xml_node pitch = note.child("pitch")) {
            static const std::string kSteps = "C D EF G A B";
            const size_t step = kSteps.find(pitch.child_value("step"));
            timed.key = (pitch.child("octave").text().as_int() + 1) * 12 + static_cast<int>(step) +
                        pitch.child("alter").text().as_int();
        }
        bool chord = static_cast<bool>(note.child("chord"));
        if (chord && !timed.grace) {
            cursor_ = lastOnset_;   // a chord note starts with the note before it
        } else if (!timed.grace) {
            auto& voiceEnd = voiceEnds_[std::to_string(timed.staff) + "/" + timed.voice];
            if (voiceEnd > cursor_ + kTolerance) Problem("voice " + timed.voice + " overlaps itself");
            voiceEnd = cursor_ + timed.duration;
        }
        timed.onset = start_ + cursor_;
        if (!timed.grace) lastOnset_ = cursor_;
        CheckType(note, timed.duration);
        ResolveInstrument(note, timed);
        if (!timed.grace) cursor_ += timed.duration;
        if (notes_) notes_->push_back(timed);
    }

    // The written type, dots and tuplet ratio must give the duration (to one division's rounding).
    void CheckType(pugi::xml_node note, double duration)
    {
        pugi::xml_node type = note.child("type");
        if (!type || note.child("grace")) return;
        double written = TypeQuarters(type.text().get());
        if (written < 0) {
            Problem(std::string("unknown note type ") + type.text().get());
            return;
        }
        double dotValue = written;
        for (pugi::xml_node dot = note.child("dot"); dot; dot = dot.next_sibling("dot")) written += (dotValue /= 2);
        if (pugi::xml_node ratio = note.child("time-modification"))
            written *=
                ratio.child("normal-notes").text().as_double(1) / ratio.child("actual-notes").text().as_double(1);
        if (std::fabs(written - duration) > 0.5 / divisions_ + kTolerance)   // rounded to a division
            Problem(std::string("a ") + type.text().get() + " lasting " + Text(duration) + " quarters");
    }

    void ResolveInstrument(pugi::xml_node note, TimedNote& timed)
    {
        pugi::xml_node reference = note.child("instrument");
        if (reference) {
            timed.instrumentId = reference.attribute("id").value();
            if (!instruments_.count(timed.instrumentId))
                Problem("<instrument id=\"" + timed.instrumentId + "\"> names no score-instrument of the part");
        } else if (instruments_.size() == 1) {
            timed.instrumentId = instruments_.begin()->first;
        } else if (instruments_.size() > 1 && !timed.rest && !untouched_) {
            Problem("a note without <instrument> in a part of several instruments");
        }
        auto found = instruments_.find(timed.instrumentId);
        if (found != instruments_.end()) {
            timed.midiUnpitched = found->second.unpitched;
            timed.midiChannel = found->second.channel;
        }
    }

    static std::string Text(double value)
    {
        std::ostringstream text;
        text << value;
        return text.str();
    }

    void Problem(const std::string& what)   // each once per measure
    {
        std::string problem =
            "part " + partId_ + " measure " + number_ + " (#" + std::to_string(index_ + 1) + "): " + what;
        if (problems_.empty() || problems_.back() != problem) problems_.push_back(problem);
    }

    std::string partId_;
    const std::map<std::string, Instrument>& instruments_;
    std::vector<std::string>& problems_;
    std::vector<TimedNote>* notes_;
    std::string number_;
    int index_ = 0;
    double divisions_ = 0;
    double expected_ = 0;
    double start_ = 0;
    double cursor_ = 0;
    double longest_ = 0;
    double lastOnset_ = 0;
    bool untouched_ = false;
    std::map<std::string, double> voiceEnds_;
};

// Parses and walks the score; the problems of the whole score, and the notes of `wantedPart`.
std::vector<std::string> Walk(const std::string& bytes, const std::string& wantedPart, std::vector<TimedNote>* notes,
                              const std::map<std::string, std::set<std::string>>& rewritten = {})
{
    std::vector<std::string> problems;
    pugi::xml_document document;
    pugi::xml_parse_result parsed = document.load_buffer(bytes.data(), bytes.size());
    if (!parsed) return {std::string("not well-formed: ") + parsed.description()};
    pugi::xml_node score = document.child("score-partwise");
    if (!score) return {"no <score-partwise> root"};

    std::map<std::string, Part> parts;
    std::set<std::string> instrumentIds;
    for (pugi::xml_node scorePart : score.child("part-list").children("score-part")) {
        std::string id = scorePart.attribute("id").value();
        if (parts.count(id)) problems.push_back("two <score-part> with id " + id);
        parts[id] = {scorePart, InstrumentsOf(scorePart)};
        for (pugi::xml_node instrument : scorePart.children("score-instrument"))
            if (!instrumentIds.insert(instrument.attribute("id").value()).second)
                problems.push_back(std::string("score-instrument id ") + instrument.attribute("id").value() +
                                   " used twice");
        for (pugi::xml_node midi : scorePart.children("midi-instrument"))
            if (!parts[id].instruments.count(midi.attribute("id").value()))
                problems.push_back("part " + id + ": <midi-instrument id=\"" + midi.attribute("id").value() +
                                   "\"> names no score-instrument of the part");
    }

    std::set<std::string> seen;
    std::vector<std::string> firstNumbers;
    bool first = true;
    for (pugi::xml_node part : score.children("part")) {
        std::string id = part.attribute("id").value();
        if (!parts.count(id)) problems.push_back("<part id=\"" + id + "\"> is not in the <part-list>");
        if (!seen.insert(id).second) problems.push_back("two <part> with id " + id);
        std::vector<std::string> numbers;
        static const std::map<std::string, Instrument> kNone;
        auto known = parts.find(id);
        PartWalk walk(id, known == parts.end() ? kNone : known->second.instruments, problems,
                      id == wantedPart ? notes : nullptr);
        auto edited = rewritten.find(id);
        int index = 0;
        for (pugi::xml_node measure : part.children("measure")) {
            numbers.push_back(measure.attribute("number").value());
            walk.Measure(measure, index,
                         edited != rewritten.end() && !edited->second.count(measure.attribute("number").value()));
            ++index;
        }
        if (first) firstNumbers = numbers;
        if (numbers != firstNumbers)
            problems.push_back("part " + id + " does not have the first part's measures (" +
                               std::to_string(numbers.size()) + " against " + std::to_string(firstNumbers.size()) +
                               ")");
        first = false;
    }
    for (const auto& [id, part] : parts)
        if (!seen.count(id)) problems.push_back("<score-part id=\"" + id + "\"> has no <part>");
    return problems;
}

}   // namespace

std::vector<std::string> ScoreProblems(const std::string& bytes,
                                       const std::map<std::string, std::set<std::string>>& rewritten)
{
    return Walk(bytes, "", nullptr, rewritten);
}

std::vector<TimedNote> PartNotes(const std::string& bytes, const std::string& partId)
{
    std::vector<TimedNote> notes;
    Walk(bytes, partId, &notes);
    return notes;
}

}   // namespace musicxml_support
