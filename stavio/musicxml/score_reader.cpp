// Reading a MusicXML score into a host document, and the index of byte ranges the writer
// splices into.
#include "sdk/tags.h"
#include "stavio/document/canonical.h"
#include "stavio/document/pitch.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"
#include "stavio/musicxml/mxl_archive.h"
#include "stavio/musicxml/score_file.h"
#include "stavio/musicxml/score_index.h"
#include "stavio/musicxml/score_model.h"

#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>

namespace stavio::musicxml {

namespace {

constexpr EVERSION kMeasureSpecVersion = 0x0A000000;
constexpr int kMidiDrumChannel = 10;
constexpr int kMaxDivisions = 1 << 20;
constexpr int kNoteIdBits = 0x1F;
constexpr int kNoteIdShift = 16;

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

int IntOf(const pugi::xml_node& node, int fallback = 0)
{
    const char* text = node.child_value();
    if (text == nullptr || *text == '\0') {
        return fallback;
    }
    return static_cast<int>(std::lround(std::strtod(text, nullptr)));
}

// The '<' of an element the parser found.
size_t StartOf(const pugi::xml_node& node, const std::string& text, size_t base)
{
    size_t offset = static_cast<size_t>(node.offset_debug()) + base;
    while (offset > 0 && offset < text.size() && text[offset] != '<') {
        --offset;
    }
    return offset;
}

ByteRange RangeOf(const pugi::xml_node& node, const std::string& text, size_t base)
{
    ByteRange range;
    range.begin = StartOf(node, text, base);
    range.end = ElementEnd(text, range.begin);
    if (range.end == std::string::npos) {
        range.end = range.begin;
    }
    return range;
}

std::string LineColumn(const std::string& text, size_t offset)
{
    offset = std::min(offset, text.size());
    size_t line = 1;
    size_t lineStart = 0;
    for (size_t at = 0; at < offset; ++at) {
        if (text[at] == '\n') {
            ++line;
            lineStart = at + 1;
        }
    }
    return std::to_string(line) + ":" + std::to_string(offset - lineStart + 1);
}

// One part's MIDI data from the part list.
struct PartListEntry {
    std::string name;
    std::string abbreviation;
    ByteRange range;
    int channel = 0;
    int program = 0;
    std::vector<std::string> instruments;
    std::map<std::string, int> keyOfInstrument;   // instrument id -> MIDI key from <midi-unpitched>
    bool drumSound = false;                       // an <instrument-sound> of the drum families
};

// The layers of one staff-measure while a part is read.
struct LayerBuild {
    FrameContent content;
    int32_t openTuplet = -1;   // index into content.tuplets of the tuplet still open
};

struct StaffBuild {
    std::map<std::string, int> layerOfVoice;   // voice -> layer 0..3, in order of first appearance
    int16_t clef = 0;
    bool percussionClef = false;
};

struct PartBuild {
    PartInfo info;
    std::vector<StaffBuild> staves;
    // [measure][staff][layer]
    std::vector<std::vector<std::array<LayerBuild, kMaxLayers>>> layers;
    std::vector<std::vector<int16_t>> clefs;   // [measure][staff]
    bool unpitched = false;
};

struct Meter {
    int beats = 4;
    int beatType = 4;
    bool operator!=(const Meter& other) const { return beats != other.beats || beatType != other.beatType; }
};

// The host meter: a compound meter (6/8, 9/8, 12/8 ...) counts dotted beats.
std::pair<int16_t, int16_t> HostMeter(const Meter& meter)
{
    const int beatType = meter.beatType > 0 ? meter.beatType : 4;
    const int32_t unit = 4 * kEduPerQuarter / beatType;
    if (beatType >= 8 && meter.beats > 3 && meter.beats % 3 == 0) {
        return {static_cast<int16_t>(meter.beats / 3), static_cast<int16_t>(3 * unit)};
    }
    return {static_cast<int16_t>(std::max(meter.beats, 1)), static_cast<int16_t>(std::max(unit, 1))};
}

// The <part> elements of the score, found by their tags without a parse: their byte ranges.
// Empty when the text is not laid out plainly enough to find them so (a doctype with an
// internal subset, markup that does not close); the whole score is then parsed at once.
std::vector<ByteRange> PartRangesOf(const std::string& text, size_t from)
{
    const auto startsWith = [&text](size_t at, const char* prefix) {
        return text.compare(at, std::strlen(prefix), prefix) == 0;
    };
    const auto skip = [&text](size_t at, const char* end) {
        const size_t found = text.find(end, at);
        return found == std::string::npos ? found : found + std::strlen(end);
    };
    size_t at = from;
    for (;;) {   // the prolog
        at = text.find('<', at);
        if (at == std::string::npos) {
            return {};
        }
        if (startsWith(at, "<?")) {
            at = skip(at, "?>");
        } else if (startsWith(at, "<!--")) {
            at = skip(at, "-->");
        } else if (startsWith(at, "<!DOCTYPE")) {
            const size_t end = text.find('>', at);
            if (end == std::string::npos || text.find('[', at) < end) {
                return {};
            }
            at = end + 1;
        } else {
            break;
        }
        if (at == std::string::npos) {
            return {};
        }
    }
    at = StartTagEnd(text, at);   // the root's start tag
    if (at == std::string::npos || text[at - 2] == '/') {
        return {};
    }
    std::vector<ByteRange> parts;
    for (;;) {
        at = text.find('<', at);
        if (at == std::string::npos) {
            return {};
        }
        if (startsWith(at, "</")) {
            return parts;
        }
        if (startsWith(at, "<?")) {
            at = skip(at, "?>");
        } else if (startsWith(at, "<!--")) {
            at = skip(at, "-->");
        } else if (startsWith(at, "<!")) {
            return {};
        } else {
            const size_t end = ElementEnd(text, at);
            if (end == std::string::npos) {
                return {};
            }
            const size_t nameEnd = text.find_first_of(" \t\r\n/>", at + 1);
            if (text.compare(at + 1, nameEnd - at - 1, "part") == 0) {
                parts.push_back(ByteRange{at, end});
            }
            at = end;
        }
        if (at == std::string::npos) {
            return {};
        }
    }
}

class Reader {
public:
    Reader(ScoreFile::Impl& impl, const std::string& name) : impl_(impl), name_(name) {}

    // Reads the parts and measures from the parsed score; Build() then makes the host document,
    // so that the parsed tree can be let go first.
    // `loadPart` gives the content of a <part> of `root`: the part itself, or the same part
    // parsed on its own (with the offset in the text its parse starts at).
    struct PartTree {
        pugi::xml_node node;
        size_t base = 0;
    };
    using PartLoader = std::function<toolbox::Result<PartTree>(pugi::xml_node part)>;
    toolbox::Status Run(pugi::xml_node root, const PartLoader& loadPart);
    void Build()
    {
        BuildDocument(builds_);
        builds_.clear();
    }

    std::vector<PartInfo> parts;
    std::vector<StaffInfo> staves;
    std::vector<MeasureInfo> measures;
    Document document;

private:
    void ReadPartList(pugi::xml_node partList);
    void ReadPart(pugi::xml_node part, PartIndex& index, PartBuild& build, bool first);
    void ReadNote(pugi::xml_node note, PartBuild& build, size_t meas, int divisions, int64_t& position,
                  int64_t& lastStart, std::vector<LayerBuild*>& lastLayer);
    int KeyOfUnpitched(pugi::xml_node note, const PartListEntry& entry) const;
    void BuildDocument(std::vector<PartBuild>& builds);

    ScoreFile::Impl& impl_;
    const std::string& name_;
    std::map<std::string, PartListEntry> partList_;
    std::vector<std::string> partOrder_;
    const PercussionMap kit_ = GeneralMidiKit();
    const PartListEntry* currentEntry_ = nullptr;
    std::vector<PartBuild> builds_;
    size_t partBase_ = 0;   // where in the text the parse of the part being read starts
};

void Reader::ReadPartList(pugi::xml_node list)
{
    impl_.partList = RangeOf(list, impl_.text, impl_.textOffset);
    for (pugi::xml_node scorePart : list.children("score-part")) {
        PartListEntry entry;
        const std::string id = scorePart.attribute("id").as_string();
        entry.name = scorePart.child_value("part-name");
        entry.abbreviation = scorePart.child_value("part-abbreviation");
        entry.range = RangeOf(scorePart, impl_.text, impl_.textOffset);
        for (pugi::xml_node instrument : scorePart.children("score-instrument")) {
            entry.instruments.push_back(instrument.attribute("id").as_string());
            const std::string sound = instrument.child_value("instrument-sound");
            entry.drumSound = entry.drumSound || sound.rfind("drum.", 0) == 0 || sound.rfind("metal.", 0) == 0;
        }
        for (pugi::xml_node midi : scorePart.children("midi-instrument")) {
            const int channel = IntOf(midi.child("midi-channel"));
            if (entry.channel == 0 && channel > 0) {
                entry.channel = channel;
            }
            const int program = IntOf(midi.child("midi-program"));
            if (entry.program == 0 && program > 0) {
                entry.program = program;
            }
            const int unpitched = IntOf(midi.child("midi-unpitched"));
            if (unpitched >= 1 && unpitched <= 128) {
                entry.keyOfInstrument[midi.attribute("id").as_string()] = unpitched - 1;
            }
        }
        partOrder_.push_back(id);
        partList_[id] = std::move(entry);
    }
}

int Reader::KeyOfUnpitched(pugi::xml_node note, const PartListEntry& entry) const
{
    const std::string instrument = note.child("instrument").attribute("id").as_string();
    auto key = entry.keyOfInstrument.find(instrument);
    if (key == entry.keyOfInstrument.end() && instrument.empty() && entry.keyOfInstrument.size() == 1) {
        key = entry.keyOfInstrument.begin();
    }
    if (key != entry.keyOfInstrument.end()) {
        return key->second;
    }
    // Placed by display step and octave, told apart by notehead.
    const pugi::xml_node unpitched = note.child("unpitched");
    const std::string step = unpitched.child_value("display-step");
    const int16_t tcd = StaffStepOf(step.empty() ? 'C' : step[0], IntOf(unpitched.child("display-octave"), 5));
    const std::string headName = note.child_value("notehead");
    Notehead head = Notehead::Normal;
    for (Notehead candidate :
         {Notehead::X, Notehead::CircleX, Notehead::Diamond, Notehead::Triangle, Notehead::Square, Notehead::Slash}) {
        if (headName == NoteheadName(candidate)) {
            head = candidate;
        }
    }
    if (head == Notehead::Normal && headName == "cross") {
        head = Notehead::X;
    }
    const PercussionNote* piece = kit_.At(tcd, head);
    if (piece == nullptr) {
        piece = kit_.At(tcd, Notehead::Normal);
    }
    return piece == nullptr ? -1 : piece->key;
}

void Reader::ReadNote(pugi::xml_node note, PartBuild& build, size_t meas, int divisions, int64_t& position,
                      int64_t& lastStart, std::vector<LayerBuild*>& lastLayer)
{
    if (note.child("grace")) {
        return;
    }
    const bool chord = note.child("chord") != nullptr;
    const int64_t duration = IntOf(note.child("duration"));
    const int64_t start = chord ? lastStart : position;
    if (!chord) {
        position += duration;
        lastStart = start;
    }
    if (note.child("cue")) {
        return;
    }
    const int staff = std::clamp(IntOf(note.child("staff"), 1), 1, static_cast<int>(build.staves.size()));
    StaffBuild& staffBuild = build.staves[static_cast<size_t>(staff - 1)];
    std::string voice = note.child_value("voice");
    if (voice.empty()) {
        voice = "1";
    }
    auto layer = staffBuild.layerOfVoice.find(voice);
    if (layer == staffBuild.layerOfVoice.end()) {
        if (staffBuild.layerOfVoice.size() >= static_cast<size_t>(kMaxLayers)) {
            return;   // the host has four layers; a fifth voice stays in the file only
        }
        layer = staffBuild.layerOfVoice.emplace(voice, static_cast<int>(staffBuild.layerOfVoice.size())).first;
    }
    if (build.layers[meas].size() < build.staves.size()) {
        build.layers[meas].resize(build.staves.size());
        lastLayer.clear();
    }
    LayerBuild& target = build.layers[meas][static_cast<size_t>(staff - 1)][static_cast<size_t>(layer->second)];
    const bool rest = note.child("rest") != nullptr;

    EXNOTE pitch{};
    if (!rest) {
        if (pugi::xml_node pitched = note.child("pitch")) {
            const std::string step = pitched.child_value("step");
            pitch.tcd = StaffStepOf(step.empty() ? 'C' : step[0], IntOf(pitched.child("octave"), 4));
            pitch.alteration = static_cast<int16_t>(IntOf(pitched.child("alter")));
        } else if (note.child("unpitched")) {
            build.unpitched = true;
            const int key = currentEntry_ == nullptr ? -1 : KeyOfUnpitched(note, *currentEntry_);
            if (key >= 0) {
                const NotePitch spelled = PitchOfKey(key);
                pitch.tcd = spelled.tcd;
                pitch.alteration = spelled.alteration;
            } else {
                const pugi::xml_node unpitched = note.child("unpitched");
                const std::string step = unpitched.child_value("display-step");
                pitch.tcd = StaffStepOf(step.empty() ? 'C' : step[0], IntOf(unpitched.child("display-octave"), 5));
            }
        }
    }

    // <tie type="start"/> is the sound of a tie (<tied> only its drawing): the host joins the
    // note with the next one of the same pitch when it plays.
    bool tiedForward = false;
    for (pugi::xml_node tie : note.children("tie")) {
        tiedForward = tiedForward || std::string(tie.attribute("type").as_string()) == "start";
    }
    const uint32_t tieFlag = tiedForward && !rest ? kNoteTiedForward : 0;

    if (chord && !rest && !target.content.entries.empty() && lastLayer.size() == 1 && lastLayer[0] == &target) {
        EXENTRY& entry = target.content.entries.back();
        if (entry.numNotes < kMaxNotesPerEntry) {
            pitch.noteID = static_cast<int16_t>(entry.numNotes + 1);
            pitch.flag = (static_cast<uint32_t>(pitch.noteID & kNoteIdBits) << kNoteIdShift) | tieFlag;
            entry.note[entry.numNotes++] = pitch;
        }
        return;
    }
    lastLayer.assign(1, &target);

    const int32_t divisor = std::max(divisions, 1);
    EXENTRY entry{};
    entry.ef = kEntryValid | (rest ? 0 : kEntryIsNote);
    entry.elldur = static_cast<int32_t>(start * kEduPerQuarter / divisor);
    entry.actdur = static_cast<int32_t>(duration * kEduPerQuarter / divisor);
    int32_t notated = TypeDuration(note.child_value("type"));
    int32_t dotValue = notated / 2;
    for (pugi::xml_node dot = note.child("dot"); dot && notated > 0; dot = dot.next_sibling("dot")) {
        notated += dotValue;
        dotValue /= 2;
    }
    entry.dura = static_cast<int16_t>(std::clamp<int32_t>(notated > 0 ? notated : entry.actdur, 0, INT16_MAX));
    entry.orgposi = static_cast<int16_t>(std::min<int32_t>(entry.elldur, INT16_MAX));
    if (!rest) {
        pitch.noteID = 1;
        pitch.flag = (static_cast<uint32_t>(1) << kNoteIdShift) | tieFlag;
        entry.note[0] = pitch;
        entry.numNotes = 1;
    }

    const pugi::xml_node modification = note.child("time-modification");
    const pugi::xml_node tupletMark = note.child("notations").child("tuplet");
    const std::string tupletType = tupletMark.attribute("type").as_string();
    if (target.content.entries.size() >= static_cast<size_t>(kMaxFrameEntries)) {
        return;
    }
    target.content.entries.push_back(entry);
    const auto index = static_cast<int16_t>(target.content.entries.size() - 1);
    if (modification) {
        target.content.entries.back().ef |= kEntryInTuplet;
        if (target.openTuplet < 0 || tupletType == "start") {
            TupletInfo tuplet{};
            tuplet.stoff = index;
            tuplet.logInci = static_cast<int16_t>(target.content.tuplets.size());
            tuplet.tpDef.symbolicNum = static_cast<int16_t>(IntOf(modification.child("actual-notes"), 3));
            tuplet.tpDef.refNum = static_cast<int16_t>(IntOf(modification.child("normal-notes"), 2));
            int32_t value = TypeDuration(modification.child_value("normal-type"));
            tuplet.tpDef.symbolicDur = value > 0 ? value : std::max<int32_t>(TypeDuration(note.child_value("type")), 1);
            tuplet.tpDef.refDur = tuplet.tpDef.symbolicDur;
            target.content.tuplets.push_back(tuplet);
            target.openTuplet = static_cast<int32_t>(target.content.tuplets.size() - 1);
        }
        TupletInfo& open = target.content.tuplets[static_cast<size_t>(target.openTuplet)];
        open.enoff = index;
        open.tupPeriod = static_cast<int32_t>(
            std::clamp<int64_t>(static_cast<int64_t>(open.tupPeriod) + entry.actdur, INT32_MIN, INT32_MAX));
        if (tupletType == "stop") {
            target.openTuplet = -1;
        }
    } else {
        target.openTuplet = -1;
    }
}

void Reader::ReadPart(pugi::xml_node part, PartIndex& index, PartBuild& build, bool first)
{
    const std::string& text = impl_.text;
    int divisions = 1;
    Meter meter;
    int fifths = 0;
    size_t meas = 0;
    for (pugi::xml_node measure : part.children("measure")) {
        if (build.layers.size() <= meas) {
            build.layers.resize(meas + 1);
            build.clefs.resize(meas + 1);
        }
        MeasureIndex measureIndex;
        measureIndex.range = RangeOf(measure, text, partBase_);
        measureIndex.contentBegin = StartTagEnd(text, measureIndex.range.begin);
        if (measureIndex.contentBegin == std::string::npos || measureIndex.range.end <= measureIndex.range.begin) {
            measureIndex.contentBegin = measureIndex.range.begin;   // nothing the writer can splice into
        }
        measureIndex.contentEnd = measureIndex.contentBegin;
        if (measureIndex.contentBegin >= 2 && measureIndex.contentBegin > measureIndex.range.begin &&
            text[measureIndex.contentBegin - 2] != '/') {
            measureIndex.contentEnd = text.rfind('<', measureIndex.range.end - 1);
        }
        measureIndex.leadingEnd = measureIndex.contentBegin;
        measureIndex.divisionsAtStart = divisions;

        int64_t position = 0;
        int64_t lastStart = 0;
        int64_t furthest = 0;
        bool leading = true;
        std::vector<LayerBuild*> lastLayer;
        for (pugi::xml_node child : measure.children()) {
            if (child.type() != pugi::node_element) {
                continue;
            }
            const std::string name = child.name();
            if (leading && (name == "print" || name == "attributes" || name == "barline")) {
                measureIndex.leadingEnd = RangeOf(child, text, partBase_).end;
            } else {
                leading = false;
            }
            if (name == "attributes") {
                const int newDivisions = IntOf(child.child("divisions"));
                if (newDivisions > 0 && newDivisions <= kMaxDivisions) {
                    divisions = newDivisions;
                    if (leading) {
                        measureIndex.divisionsAtStart = divisions;   // the kept leading attributes set it
                    }
                }
                if (pugi::xml_node key = child.child("key")) {
                    fifths = IntOf(key.child("fifths"));
                }
                if (pugi::xml_node time = child.child("time")) {
                    if (time.child("beats")) {
                        meter.beats = std::max(IntOf(time.child("beats"), 4), 1);
                        meter.beatType = std::clamp(IntOf(time.child("beat-type"), 4), 1, 64);
                    }
                }
                if (pugi::xml_node stavesNode = child.child("staves")) {
                    const int count = std::clamp(IntOf(stavesNode, 1), 1, 8);
                    if (count > static_cast<int>(build.staves.size())) {
                        build.staves.resize(static_cast<size_t>(count));
                        build.info.staves = count;
                    }
                }
                for (pugi::xml_node clef : child.children("clef")) {
                    const int staff = std::clamp(clef.attribute("number").as_int(1), 1, 8);
                    if (staff > static_cast<int>(build.staves.size())) {
                        continue;
                    }
                    StaffBuild& staffBuild = build.staves[static_cast<size_t>(staff - 1)];
                    staffBuild.clef = HostClefOf(clef.child_value("sign"), IntOf(clef.child("line")),
                                                 IntOf(clef.child("clef-octave-change")));
                    staffBuild.percussionClef = staffBuild.percussionClef || staffBuild.clef == kPercussionClef;
                    measureIndex.clefsWritten.push_back(staff);
                }
            } else if (name == "note") {
                ReadNote(child, build, meas, divisions, position, lastStart, lastLayer);
            } else if (name == "backup") {
                position = std::max<int64_t>(0, position - IntOf(child.child("duration")));
                lastLayer.clear();
            } else if (name == "forward") {
                position += IntOf(child.child("duration"));
                lastLayer.clear();
            }
            furthest = std::max(furthest, position);
            if (position == 0 || build.clefs[meas].empty()) {
                build.clefs[meas].resize(build.staves.size());
                for (size_t staff = 0; staff < build.staves.size(); ++staff) {
                    build.clefs[meas][staff] = build.staves[staff].clef;
                }
            }
        }
        if (build.clefs[meas].size() < build.staves.size()) {
            build.clefs[meas].resize(build.staves.size(), build.staves.back().clef);
        }
        for (auto& staffLayers : build.layers[meas]) {
            for (LayerBuild& layer : staffLayers) {
                layer.openTuplet = -1;
            }
        }
        measureIndex.divisionsAtEnd = divisions;
        measureIndex.length =
            static_cast<int32_t>(std::min<int64_t>(furthest * kEduPerQuarter / std::max(divisions, 1), INT32_MAX));
        index.measures.push_back(measureIndex);
        if (first) {
            MeasureInfo info;
            info.number = measure.attribute("number").as_string();
            info.implicit = Lower(measure.attribute("implicit").as_string()) == "yes";
            info.beats = meter.beats;
            info.beatType = meter.beatType;
            info.fifths = fifths;
            measures.push_back(info);
        }
        ++meas;
    }
}

toolbox::Status Reader::Run(pugi::xml_node root, const PartLoader& loadPart)
{
    const std::string rootName = root.name();
    if (rootName == "score-timewise") {
        return toolbox::Status::Failure(
            name_ + ": a timewise MusicXML score (<score-timewise>); only partwise scores are read. Export it from "
                    "your notation program as partwise MusicXML (the usual kind).");
    }
    if (rootName != "score-partwise") {
        return toolbox::Status::Failure(name_ + ": not a MusicXML score: its root element is <" + rootName +
                                        ">, not <score-partwise>");
    }
    if (!root.child("part-list")) {
        return toolbox::Status::Failure(name_ + ": not a complete MusicXML score: it has no <part-list>");
    }
    ReadPartList(root.child("part-list"));
    std::vector<PartBuild>& builds = builds_;
    for (pugi::xml_node part : root.children("part")) {
        PartIndex index;
        index.id = part.attribute("id").as_string();
        index.range = RangeOf(part, impl_.text, impl_.textOffset);
        PartBuild build;
        build.staves.resize(1);
        auto entry = partList_.find(index.id);
        currentEntry_ = entry == partList_.end() ? nullptr : &entry->second;
        if (currentEntry_ != nullptr) {
            index.scorePart = currentEntry_->range;
            index.instrumentIds = currentEntry_->instruments;
            index.keyOfInstrument = currentEntry_->keyOfInstrument;
            build.info.name = currentEntry_->name;
            build.info.abbreviation = currentEntry_->abbreviation;
            build.info.midiChannel = currentEntry_->channel;
            build.info.midiProgram = currentEntry_->program;
        }
        build.info.id = index.id;
        const toolbox::Result<PartTree> tree = loadPart(part);
        if (!tree) {
            return tree.status();
        }
        partBase_ = tree->base;
        ReadPart(tree->node, index, build, builds.empty());
        for (auto& measureLayers : build.layers) {
            measureLayers.resize(build.staves.size());
        }
        build.info.staves = static_cast<int>(build.staves.size());
        impl_.parts.push_back(std::move(index));
        builds.push_back(std::move(build));
    }
    if (builds.empty()) {
        return toolbox::Status::Failure(name_ + ": a MusicXML score without parts (no <part> element)");
    }
    if (measures.empty()) {
        return toolbox::Status::Failure(name_ +
                                        ": a MusicXML score without measures (its first part has no <measure>)");
    }
    return toolbox::Status::Ok();
}

void Reader::BuildDocument(std::vector<PartBuild>& builds)
{
    DocumentBuilder builder;
    const auto measureCount = static_cast<int>(measures.size());
    Meter current{measures[0].beats, measures[0].beatType};
    auto [beats, divbeat] = HostMeter(current);
    builder.Measures(measureCount, beats, divbeat);
    for (size_t meas = 1; meas < measures.size(); ++meas) {
        const Meter meter{measures[meas].beats, measures[meas].beatType};
        if (meter != current) {
            const auto [newBeats, newDivbeat] = HostMeter(meter);
            builder.TimeSignatureFrom(static_cast<int>(meas + 1), newBeats, newDivbeat);
            current = meter;
        }
    }
    int32_t inst = 0;
    for (size_t part = 0; part < builds.size(); ++part) {
        PartBuild& build = builds[part];
        build.info.drum = build.info.midiChannel == kMidiDrumChannel;
        if (!build.info.drum && build.unpitched) {
            for (const StaffBuild& staff : build.staves) {
                build.info.drum = build.info.drum || staff.percussionClef;
            }
            const auto entry = partList_.find(build.info.id);
            build.info.drum = build.info.drum || (entry != partList_.end() && entry->second.drumSound);
        }
        build.info.firstInst = inst + 1;
        const std::string partName = build.info.name.empty() ? build.info.id : build.info.name;
        for (size_t staff = 0; staff < build.staves.size(); ++staff) {
            ++inst;
            StaffInfo info;
            info.inst = inst;
            info.part = part;
            info.staffInPart = static_cast<int>(staff + 1);
            info.name = build.staves.size() > 1 ? partName + " (" + std::to_string(staff + 1) + ")" : partName;
            info.drum = build.info.drum;
            builder.Staff(info.name, staff == 0 ? build.info.abbreviation : std::string());
            if (info.drum) {
                builder.DrumStaff(inst);
            }
            staves.push_back(info);
        }
        parts.push_back(build.info);
    }
    document = builder.Build();

    for (size_t meas = 0; meas < measures.size(); ++meas) {
        const RecordKey key = RecordKey::Other(static_cast<uint16_t>(meas + 1), 0);
        EDTMeasureSpec2005 spec{};
        if (!document.Read(kTagMeasureSpec, key, spec, kMeasureSpecVersion)) {
            continue;
        }
        spec.key = static_cast<int16_t>(measures[meas].fifths);
        // A pickup (an implicit measure shorter than its meter) is as long as its music: the
        // host sees its own meter there, so no groove bar is forced into it.
        int32_t length = 0;
        for (const PartIndex& part : impl_.parts) {
            if (meas < part.measures.size()) {
                length = std::max(length, part.measures[meas].length);
            }
        }
        if (measures[meas].implicit && length > 0 && length < spec.beats * spec.divbeat) {
            for (int32_t unit : {static_cast<int32_t>(spec.divbeat), kEduPerQuarter, 512, 256, 128, 64}) {
                if (unit > 0 && length % unit == 0 && length / unit <= INT16_MAX) {
                    spec.beats = static_cast<int16_t>(length / unit);
                    spec.divbeat = static_cast<int16_t>(unit);
                    break;
                }
            }
        }
        document.Write(kTagMeasureSpec, key, spec, kMeasureSpecVersion);
    }
    for (const StaffInfo& staff : staves) {
        PartBuild& build = builds[staff.part];
        const auto staffIndex = static_cast<size_t>(staff.staffInPart - 1);
        if (!staff.drum && build.info.midiChannel > 0) {
            SetChannelCode(document, StaffChannelDefinition(document, staff.inst),
                           static_cast<uint16_t>(build.info.midiChannel - 1));
        }
        // Both count programs 1..128, so the file's number goes in as it stands.
        if (!staff.drum && build.info.midiProgram > 0) {
            SetChannelProgram(document, StaffChannelDefinition(document, staff.inst),
                              static_cast<int16_t>(build.info.midiProgram));
        }
        for (size_t meas = 0; meas < build.layers.size() && meas < measures.size(); ++meas) {
            const int32_t measure = static_cast<int32_t>(meas + 1);
            if (staffIndex < build.clefs[meas].size() && build.clefs[meas][staffIndex] != 0) {
                SetMeasureClef(document, staff.inst, measure, build.clefs[meas][staffIndex]);
            }
            if (staffIndex >= build.layers[meas].size()) {
                continue;
            }
            for (int layer = 0; layer < kMaxLayers; ++layer) {
                FrameContent& content = build.layers[meas][staffIndex][static_cast<size_t>(layer)].content;
                if (!content.Empty()) {
                    document.SetFrame(staff.inst, measure, layer, content);
                }
            }
        }
    }
}

toolbox::Result<std::string> ReadWholeFile(const std::string& path)
{
    if (path == "-") {
        std::ostringstream buffer;
        buffer << std::cin.rdbuf();
        return buffer.str();
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return toolbox::Status::Failure(path + ": cannot open: " + std::strerror(errno),
                                        errno == ENOENT ? toolbox::kFileNotFound : toolbox::kIOErr);
    }
    std::string bytes;
    std::error_code sizeUnknown;
    const std::uintmax_t size = std::filesystem::file_size(path, sizeUnknown);
    if (!sizeUnknown) {
        bytes.reserve(static_cast<size_t>(size));
    }
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (in.bad()) {
        return toolbox::Status::Failure(path + ": cannot read: " + std::strerror(errno), toolbox::kIOErr);
    }
    return bytes;
}

}   // namespace

Container ContainerForPath(const std::string& path)
{
    return path.size() >= 4 && Lower(path.substr(path.size() - 4)) == ".mxl" ? Container::Compressed : Container::Plain;
}

ScoreFile::ScoreFile() = default;
ScoreFile::~ScoreFile() = default;
ScoreFile::ScoreFile(ScoreFile&&) noexcept = default;
ScoreFile& ScoreFile::operator=(ScoreFile&&) noexcept = default;

toolbox::Result<ScoreFile> ScoreFile::Read(const std::string& path)
{
    toolbox::Result<std::string> bytes = ReadWholeFile(path);
    if (!bytes) {
        return bytes.status();
    }
    return FromBytes(std::move(*bytes), path == "-" ? "standard input" : path);
}

toolbox::Result<ScoreFile> ScoreFile::FromBytes(std::string bytes, const std::string& name)
{
    ScoreFile score;
    score.name_ = name;
    score.impl_ = std::make_unique<Impl>();
    Impl& impl = *score.impl_;
    // The file's bytes are kept once: as the text when they are it, apart only for an archive
    // or UTF-16.
    std::string scoreBytes;
    if (LooksLikeArchive(bytes)) {
        score.container_ = Container::Compressed;
        toolbox::Result<ArchiveScore> archived = ReadArchiveScore(bytes);
        if (!archived) {
            return archived.status().Within(name);
        }
        impl.rootPath = std::move(archived->rootPath);
        scoreBytes = std::move(archived->score);
        impl.original = std::move(bytes);
    } else {
        scoreBytes = std::move(bytes);
    }
    impl.encoding = DetectEncoding(scoreBytes);
    if (impl.encoding != TextEncoding::Utf8) {
        if (!Utf16ToUtf8(scoreBytes, impl.encoding, impl.text)) {
            return toolbox::Status::Failure(name +
                                            ": broken UTF-16 text (the file starts with a UTF-16 byte-order mark)");
        }
        if (score.container_ == Container::Plain) {
            impl.original = std::move(scoreBytes);
        }
    } else {
        impl.text = std::move(scoreBytes);
        if (impl.text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
            impl.textOffset = 3;
        }
    }
    if (impl.text.find_first_not_of(" \t\r\n", impl.textOffset) == std::string::npos) {
        return toolbox::Status::Failure(name + ": an empty file, not a MusicXML score");
    }

    // The parsed tree is the largest thing the host holds for a big score (several times the
    // text). So a score is parsed as its frame (the text with every part's content blanked out,
    // at the same offsets) and then one part at a time; an element's text is kept in the element
    // rather than in a node of its own; and no tree is held while the host document is built.
    constexpr unsigned kParseOptions = pugi::parse_default | pugi::parse_embed_pcdata;
    const auto notWellFormed = [&](const pugi::xml_parse_result& parsed, size_t base) {
        return toolbox::Status::Failure(name + ": not well-formed XML at line " +
                                        LineColumn(impl.text, base + static_cast<size_t>(parsed.offset)) + ": " +
                                        parsed.description());
    };
    const std::vector<ByteRange> partRanges = PartRangesOf(impl.text, impl.textOffset);
    std::string frame;
    if (!partRanges.empty()) {
        frame = impl.text;
        for (const ByteRange& part : partRanges) {
            const size_t contentBegin = StartTagEnd(frame, part.begin);
            const size_t contentEnd = frame.rfind('<', part.end - 1);
            if (contentBegin != std::string::npos && frame[contentBegin - 2] != '/' && contentEnd > contentBegin) {
                std::fill(frame.begin() + static_cast<std::ptrdiff_t>(contentBegin),
                          frame.begin() + static_cast<std::ptrdiff_t>(contentEnd), ' ');
            }
        }
    }
    auto xml = std::make_unique<pugi::xml_document>();
    const pugi::xml_parse_result parsed =
        frame.empty() ? xml->load_buffer(impl.text.data() + impl.textOffset, impl.text.size() - impl.textOffset,
                                         kParseOptions, pugi::encoding_utf8)
                      : xml->load_buffer_inplace(frame.data() + impl.textOffset, frame.size() - impl.textOffset,
                                                 kParseOptions, pugi::encoding_utf8);
    if (!parsed && score.container_ == Container::Plain && ContainerForPath(name) == Container::Compressed) {
        return toolbox::Status::Failure(
            name + ": not a .mxl archive (a .mxl file is a zip archive, and this one is not) nor MusicXML text");
    }
    if (!parsed) {
        return notWellFormed(parsed, impl.textOffset);
    }
    const auto collectIds = [&impl](const pugi::xml_document& tree) {
        for (pugi::xpath_node node : tree.select_nodes("//*[@id]")) {
            impl.ids.insert(node.node().attribute("id").as_string());
        }
    };
    pugi::xml_document partXml;
    const auto loadPart = [&](pugi::xml_node part) -> toolbox::Result<Reader::PartTree> {
        if (frame.empty()) {
            return Reader::PartTree{part, impl.textOffset};
        }
        const ByteRange range = RangeOf(part, impl.text, impl.textOffset);
        const pugi::xml_parse_result partParsed = partXml.load_buffer(
            impl.text.data() + range.begin, range.end - range.begin, kParseOptions, pugi::encoding_utf8);
        if (!partParsed) {
            return notWellFormed(partParsed, range.begin);
        }
        collectIds(partXml);
        return Reader::PartTree{partXml.document_element(), range.begin};
    };
    impl.lineEnd = LineEndOf(impl.text);
    Reader reader(impl, name);
    if (toolbox::Status read = reader.Run(xml->document_element(), loadPart); !read) {
        return read;
    }
    collectIds(*xml);
    partXml.reset();
    xml.reset();
    frame = std::string();
    reader.Build();
    if (!impl.parts.empty() && !impl.parts[0].measures.empty()) {
        // The indentation step: how much deeper a measure sits than its part.
        const std::string partIndent = IndentBefore(impl.text, impl.parts[0].range.begin);
        const std::string measureIndent = IndentBefore(impl.text, impl.parts[0].measures[0].range.begin);
        if (measureIndent.size() > partIndent.size()) {
            impl.indentUnit = measureIndent.substr(partIndent.size());
        }
    }
    const size_t firstNote = impl.text.find("<note", impl.textOffset);
    if (firstNote != std::string::npos) {
        const size_t tagEnd = StartTagEnd(impl.text, firstNote);
        const size_t next = tagEnd == std::string::npos ? tagEnd : impl.text.find('<', tagEnd);
        impl.nested = next != std::string::npos && impl.text.find('\n', tagEnd) < next;
    }
    const size_t firstEmpty = impl.text.find("/>", impl.textOffset);
    impl.spacedEmpty = firstEmpty != std::string::npos && firstEmpty > 0 && impl.text[firstEmpty - 1] == ' ';
    score.document_ = std::move(reader.document);
    score.parts_ = std::move(reader.parts);
    score.staves_ = std::move(reader.staves);
    score.measures_ = std::move(reader.measures);
    return score;
}

std::vector<int32_t> ScoreFile::MeasuresNumbered(const std::string& number) const
{
    std::vector<int32_t> found;
    for (size_t meas = 0; meas < measures_.size(); ++meas) {
        if (measures_[meas].number == number) {
            found.push_back(static_cast<int32_t>(meas + 1));
        }
    }
    return found;
}

}   // namespace stavio::musicxml
