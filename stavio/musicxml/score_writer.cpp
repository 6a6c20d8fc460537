// Writing a score back: the changes between the document as read and the edited document,
// spliced into the original text.
#include "sdk/tags.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document/text_expressions.h"
#include "stavio/document_builder.h"
#include "stavio/musicxml/drum_measure.h"
#include "stavio/musicxml/mxl_archive.h"
#include "stavio/musicxml/score_file.h"
#include "stavio/musicxml/score_index.h"
#include "stavio/musicxml/score_model.h"

#include <pugixml.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace stavio::musicxml {

namespace {

constexpr uint16_t kSlashStyleAltFlag = 0x7101;

struct Splice {
    size_t begin;
    size_t end;
    std::string text;
};

struct ChildElement {
    std::string name;
    ByteRange range;
};

// The child elements of the element at `range`, with their byte ranges in `text`.
std::vector<ChildElement> ChildrenOf(const std::string& text, const ByteRange& range)
{
    std::vector<ChildElement> children;
    pugi::xml_document fragment;
    if (!fragment.load_buffer(text.data() + range.begin, range.end - range.begin, pugi::parse_default,
                              pugi::encoding_utf8)) {
        return children;
    }
    for (pugi::xml_node child : fragment.document_element().children()) {
        if (child.type() != pugi::node_element) {
            continue;
        }
        size_t begin = range.begin + static_cast<size_t>(child.offset_debug());
        while (begin > range.begin && text[begin] != '<') {
            --begin;
        }
        children.push_back(ChildElement{child.name(), ByteRange{begin, ElementEnd(text, begin)}});
    }
    return children;
}

bool SameFrame(const Document& before, const Document& after, int32_t inst, int32_t meas)
{
    for (int layer = 0; layer < kMaxLayers; ++layer) {
        const std::optional<FrameContent> a = before.Frame(inst, meas, layer);
        const std::optional<FrameContent> b = after.Frame(inst, meas, layer);
        if (a.has_value() != b.has_value() || (a && EncodeFrame(*a) != EncodeFrame(*b))) {
            return false;
        }
    }
    return true;
}

bool DrumChannel(const Document& doc, int32_t inst)
{
    const std::optional<uint16_t> code = ChannelCode(doc, StaffChannelDefinition(doc, inst));
    return code && PlaysOnChannel10(*code);
}

bool SlashAt(const Document& doc, int32_t inst, int32_t meas)
{
    const RecordKey staffKey = RecordKey::Other(static_cast<uint16_t>(inst), 0);
    const size_t count = doc.Records().IncidenceCount(kTagStaffStyleAssign, staffKey);
    for (size_t inci = 0; inci < count; ++inci) {
        EDTStaffStyleAssign assignment{};
        if (!doc.Read(kTagStaffStyleAssign, RecordKey::Other(static_cast<uint16_t>(inst), static_cast<uint16_t>(inci)),
                      assignment)) {
            continue;
        }
        if (meas < assignment.range.start.meas || meas > assignment.range.end.meas) {
            continue;
        }
        EDTStaffStyle2003 style{};
        if (doc.Read(kTagStaffStyle, RecordKey::Other(static_cast<uint16_t>(assignment.style), 0), style) &&
            style.altFlag == kSlashStyleAltFlag) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> LabelsAt(const Document& doc, int32_t inst, int32_t meas)
{
    std::vector<std::string> labels;
    for (const EDTGeneric& assignment : ExpressionAssignments(doc, meas)) {
        if (AssignmentOnStaff(assignment, inst)) {
            const std::optional<TextExpressionDef> definition = ReadTextExpression(doc, assignment.words[0]);
            labels.push_back(definition ? definition->text : std::string());
        }
    }
    return labels;
}

class Writer {
public:
    Writer(const ScoreFile& score, const ScoreFile::Impl& impl, const Document& after)
        : score_(score), impl_(impl), before_(score.document()), after_(after)
    {}

    toolbox::Status Collect();
    std::string Apply() const;
    bool Empty() const { return splices_.empty(); }

private:
    toolbox::Status WriteStaff(const StaffInfo& staff);
    void WriteNewPart(int32_t inst, int number);
    Splice RewriteMeasure(const MeasureIndex& index, int staff, bool shared, const std::vector<std::string>& lines,
                          const MeasureMusic& music) const;
    std::string InstrumentsText(const std::string& partId, const std::set<int>& keys,
                                std::map<int, std::string>& instrumentOf, const std::string& indent, std::string& midi);
    void WriteInstruments(size_t part, const std::set<int>& keys, std::map<int, std::string>& instrumentOf);
    // A new line inside the measure at `measureStart`, indented one step deeper than it.
    std::string ChildLine(size_t measureStart) const
    {
        return impl_.lineEnd + IndentBefore(impl_.text, measureStart) + impl_.indentUnit;
    }
    // `element` on a new line inside the measure at `measureStart`, laid out as the file lays
    // out its notes.
    std::string NewChild(size_t measureStart, const std::string& element) const
    {
        return ElementAt(IndentBefore(impl_.text, measureStart) + impl_.indentUnit, element);
    }
    std::string ElementAt(const std::string& indent, const std::string& element) const
    {
        std::string laidOut = impl_.nested ? LayOut(element, indent, impl_.indentUnit, impl_.lineEnd) : element;
        for (size_t at = laidOut.find("/>"); impl_.spacedEmpty && at != std::string::npos;
             at = laidOut.find("/>", at + 3)) {
            laidOut.insert(at, " ");
        }
        return impl_.lineEnd + indent + laidOut;
    }

    const ScoreFile& score_;
    const ScoreFile::Impl& impl_;
    const Document& before_;
    const Document& after_;
    std::vector<Splice> splices_;
    std::set<std::string> ids_;
    std::set<std::string> staffNames_;   // every staff's name, so that a new part's name is its own
};

std::string Writer::InstrumentsText(const std::string& partId, const std::set<int>& keys,
                                    std::map<int, std::string>& instrumentOf, const std::string& indent,
                                    std::string& midi)
{
    const PercussionMap kit = GeneralMidiKit();
    std::string newInstruments;
    for (int key : keys) {
        if (instrumentOf.count(key) != 0) {
            continue;
        }
        std::string id = partId + "-I" + std::to_string(key + 1);
        for (int suffix = 2; ids_.count(id) != 0; ++suffix) {
            id = partId + "-I" + std::to_string(key + 1) + "-" + std::to_string(suffix);
        }
        ids_.insert(id);
        instrumentOf[key] = id;
        const PercussionNote* piece = kit.ForKey(key);
        const std::string name = piece != nullptr ? piece->name : "Drum " + std::to_string(key);
        const char* sound = key == 35 || key == 36                                               ? "drum.bass-drum"
                            : key == 38 || key == 40 || key == 37                                ? "drum.snare-drum"
                            : key == 42 || key == 44 || key == 46                                ? "metal.hi-hat"
                            : key == 49 || key == 57                                             ? "metal.cymbal.crash"
                            : key == 51 || key == 53 || key == 59                                ? "metal.cymbal.ride"
                            : (key >= 41 && key <= 50 && key % 2 == 1) || key == 48 || key == 50 ? "drum.tom-tom"
                                                                                                 : nullptr;
        newInstruments += impl_.lineEnd + indent + "<score-instrument id=\"" + EscapeXml(id) + "\">" + impl_.lineEnd +
                          indent + impl_.indentUnit + "<instrument-name>" + EscapeXml(name) + "</instrument-name>";
        if (sound != nullptr) {
            newInstruments +=
                impl_.lineEnd + indent + impl_.indentUnit + "<instrument-sound>" + sound + "</instrument-sound>";
        }
        newInstruments += impl_.lineEnd + indent + "</score-instrument>";
        midi += impl_.lineEnd + indent + "<midi-instrument id=\"" + EscapeXml(id) + "\">" + impl_.lineEnd + indent +
                impl_.indentUnit + "<midi-channel>10</midi-channel>" + impl_.lineEnd + indent + impl_.indentUnit +
                "<midi-unpitched>" + std::to_string(key + 1) + "</midi-unpitched>" + impl_.lineEnd + indent +
                "</midi-instrument>";
    }
    return newInstruments;
}

// The kit pieces the written notes play, after the part's own instruments. The part's first
// instrument and its MIDI settings stay first and unchanged: the measures the fill did not touch
// keep their notes without <instrument>, and a reader gives those the part's first instrument, so
// they sound as they did (a voice still sings) while the written measures name their kit pieces.
void Writer::WriteInstruments(size_t part, const std::set<int>& keys, std::map<int, std::string>& instrumentOf)
{
    const PartIndex& index = impl_.parts[part];
    for (const auto& [id, key] : index.keyOfInstrument) {
        instrumentOf.emplace(key, id);
    }
    const std::string childIndent = IndentBefore(impl_.text, index.scorePart.begin) + impl_.indentUnit;
    std::string newMidi;
    const std::string newInstruments = InstrumentsText(index.id, keys, instrumentOf, childIndent, newMidi);
    const std::string& text = impl_.text;
    if (index.scorePart.end <= index.scorePart.begin) {
        return;
    }
    size_t instrumentsAt = StartTagEnd(text, index.scorePart.begin);
    size_t midiAt = instrumentsAt;
    static const std::set<std::string> kBeforeInstruments = {"identification",
                                                             "part-link",
                                                             "part-name",
                                                             "part-name-display",
                                                             "part-abbreviation",
                                                             "part-abbreviation-display",
                                                             "group",
                                                             "score-instrument"};
    for (const ChildElement& child : ChildrenOf(text, index.scorePart)) {
        if (kBeforeInstruments.count(child.name) != 0) {
            instrumentsAt = child.range.end;
        }
        midiAt = child.range.end;
    }
    if (!newInstruments.empty()) {
        splices_.push_back(Splice{instrumentsAt, instrumentsAt, newInstruments});
        splices_.push_back(Splice{midiAt, midiAt, newMidi});
    }
}

toolbox::Status Writer::WriteStaff(const StaffInfo& staff)
{
    const int32_t inst = staff.inst;
    const PartIndex& part = impl_.parts[staff.part];
    const PartInfo& info = score_.Parts()[staff.part];
    const int32_t measures = static_cast<int32_t>(std::min(part.measures.size(), score_.Measures().size()));
    const bool drumAfter = DrumChannel(after_, inst) || staff.drum;

    std::vector<bool> rewrite(static_cast<size_t>(measures) + 1, false);
    std::set<int> keys;
    bool any = false;
    for (int32_t meas = 1; meas <= measures; ++meas) {
        if (!SameFrame(before_, after_, inst, meas)) {
            rewrite[static_cast<size_t>(meas)] = true;
            any = true;
            if (drumAfter) {
                const std::set<int> used = KeysInMeasure(after_, inst, meas);
                keys.insert(used.begin(), used.end());
            }
        }
    }
    bool otherChange = DrumChannel(after_, inst) != DrumChannel(before_, inst);
    for (int32_t meas = 1; meas <= measures && !otherChange; ++meas) {
        otherChange = MeasureClef(before_, inst, meas) != MeasureClef(after_, inst, meas) ||
                      SlashAt(before_, inst, meas) != SlashAt(after_, inst, meas) ||
                      LabelsAt(before_, inst, meas) != LabelsAt(after_, inst, meas);
    }
    if (!any && !otherChange) {
        return toolbox::Status::Ok();
    }
    // In a part with several staves, what the host writes names its staff.
    const bool shared = info.staves > 1;
    const std::string staffNumber = std::to_string(staff.staffInPart);
    const std::string numbered = shared ? " number=\"" + staffNumber + "\"" : "";
    std::map<int, std::string> instrumentOf;
    if (drumAfter) {
        // The part's own instruments keep their sound; only the kit is on channel 10.
        WriteInstruments(staff.part, keys, instrumentOf);
    }

    int16_t shownClef = 0;   // the clef in force in the written file
    bool shownSlash = false;
    for (int32_t meas = 1; meas <= measures; ++meas) {
        const MeasureIndex& index = part.measures[static_cast<size_t>(meas - 1)];
        const int16_t clefBefore = MeasureClef(before_, inst, meas);
        const int16_t clefAfter = MeasureClef(after_, inst, meas);
        const bool ownClef = std::find(index.clefsWritten.begin(), index.clefsWritten.end(), staff.staffInPart) !=
                             index.clefsWritten.end();
        const bool slashAfter = SlashAt(after_, inst, meas);
        std::vector<std::string> labelsBefore = LabelsAt(before_, inst, meas);
        std::vector<std::string> labelsAfter = LabelsAt(after_, inst, meas);

        std::vector<std::string> attributes;
        const bool rewritten = rewrite[static_cast<size_t>(meas)];
        MeasureMusic music;
        if (rewritten) {
            // The new music is written after what the measure keeps, in the divisions in force there.
            music = WriteMeasureMusic(after_, inst, meas, drumAfter, index.divisionsAtEnd, instrumentOf, 0,
                                      shared ? staff.staffInPart : 0, shared ? 4 * (staff.staffInPart - 1) + 1 : 1);
            if (music.divisions != index.divisionsAtEnd) {
                attributes.push_back("<divisions>" + std::to_string(music.divisions) + "</divisions>");
            }
        }
        int16_t inForce = ownClef ? clefBefore : shownClef;
        if (meas == 1 && !ownClef) {
            inForce = clefBefore;
        }
        if (clefAfter != inForce) {
            attributes.push_back("<clef" + numbered + ">" + ClefContent(clefAfter) + "</clef>");
        }
        shownClef = clefAfter;
        if (slashAfter != shownSlash && slashAfter != SlashAt(before_, inst, meas)) {
            attributes.push_back("<measure-style" + numbered + ">" +
                                 (slashAfter ? "<slash type=\"start\" use-stems=\"no\"/>" : "<slash type=\"stop\"/>") +
                                 "</measure-style>");
        } else if (slashAfter != shownSlash && meas > 1 && SlashAt(after_, inst, meas - 1) &&
                   !SlashAt(before_, inst, meas - 1)) {
            attributes.push_back("<measure-style" + numbered + "><slash type=\"stop\"/></measure-style>");
        }
        shownSlash = slashAfter;

        std::vector<std::string> lines;
        if (!attributes.empty()) {
            std::string element = "<attributes>";
            for (const std::string& item : attributes) {
                element += item;
            }
            lines.push_back(element + "</attributes>");
        }
        if (labelsAfter != labelsBefore) {
            for (const std::string& label : labelsAfter) {
                if (std::find(labelsBefore.begin(), labelsBefore.end(), label) == labelsBefore.end()) {
                    lines.push_back("<direction><direction-type><other-direction print-object=\"no\">" +
                                    EscapeXml(label) + "</other-direction></direction-type>" +
                                    (shared ? "<staff>" + staffNumber + "</staff>" : "") + "</direction>");
                }
            }
        }
        if (!rewritten) {
            if (!lines.empty()) {
                std::string insertion;
                for (const std::string& line : lines) {
                    insertion += NewChild(index.range.begin, line);
                }
                if (index.contentEnd <= index.contentBegin) {
                    return toolbox::Status::Failure(
                        score_.Name() + ": measure " + score_.Measures()[static_cast<size_t>(meas - 1)].number +
                        " of part \"" + info.name + "\" is an empty element the host cannot add to");
                }
                splices_.push_back(Splice{index.leadingEnd, index.leadingEnd, insertion});
            }
            continue;
        }
        if (index.contentEnd <= index.contentBegin) {
            return toolbox::Status::Failure(score_.Name() + ": measure " +
                                            score_.Measures()[static_cast<size_t>(meas - 1)].number + " of part \"" +
                                            info.name + "\" is an empty element the host cannot fill");
        }
        splices_.push_back(RewriteMeasure(index, staff.staffInPart, shared, lines, music));
    }
    return toolbox::Status::Ok();
}

// A rewritten measure: its leading print, attributes and barlines stay as they were, so does
// everything in it that is not the staff's notes (directions, chord symbols, sounds, other
// staves' notes), each at its own time; then, from the measure's start, the staff's new music
// with its attributes and labels, and last the closing barline.
Splice Writer::RewriteMeasure(const MeasureIndex& index, int staff, bool shared, const std::vector<std::string>& lines,
                              const MeasureMusic& music) const
{
    const std::string& text = impl_.text;
    std::string content = text.substr(index.contentBegin, index.leadingEnd - index.contentBegin);
    std::vector<std::string> closing;
    int64_t original = 0;   // where the input's element stands in the measure
    int64_t written = 0;    // where the written text stands
    int64_t lastStart = 0;
    int divisions = index.divisionsAtStart;
    auto moveTo = [&](int64_t target) {
        if (target > written) {
            content += NewChild(index.range.begin,
                                "<forward><duration>" + std::to_string(target - written) + "</duration></forward>");
        } else if (target < written) {
            content += NewChild(index.range.begin,
                                "<backup><duration>" + std::to_string(written - target) + "</duration></backup>");
        }
        written = target;
    };
    pugi::xml_document fragment;
    fragment.load_buffer(text.data() + index.range.begin, index.range.end - index.range.begin, pugi::parse_default,
                         pugi::encoding_utf8);
    for (pugi::xml_node child : fragment.document_element().children()) {
        if (child.type() != pugi::node_element) {
            continue;
        }
        size_t begin = index.range.begin + static_cast<size_t>(child.offset_debug());
        while (begin > index.range.begin && text[begin] != '<') {
            --begin;
        }
        const size_t end = ElementEnd(text, begin);
        const std::string name = child.name();
        const int64_t duration = std::max<int64_t>(0, child.child("duration").text().as_llong());
        if (name == "attributes" && child.child("divisions").text().as_int() > 0 && end > index.leadingEnd) {
            const int newDivisions = child.child("divisions").text().as_int();
            original = original * newDivisions / std::max(divisions, 1);
            written = written * newDivisions / std::max(divisions, 1);
            lastStart = lastStart * newDivisions / std::max(divisions, 1);
            divisions = newDivisions;
        }
        if (end <= index.leadingEnd) {
            continue;   // copied with the leading text
        }
        if (name == "backup" || name == "forward") {
            original = name == "backup" ? std::max<int64_t>(0, original - duration) : original + duration;
            continue;
        }
        const bool note = name == "note";
        const bool chord = note && child.child("chord");
        const bool timed = note && !chord && !child.child("grace");
        const int64_t at = chord ? lastStart : original;
        if (note && !chord) {
            lastStart = original;
        }
        if (timed) {
            original += duration;
        }
        if (note && (!shared || child.child("staff").text().as_int(1) == staff)) {
            continue;   // the staff's own notes give way to its new music
        }
        const std::string element = text.substr(begin, end - begin);
        if (name == "barline") {
            closing.push_back(element);
            continue;
        }
        if (!chord) {
            moveTo(at);
        }
        content += ChildLine(index.range.begin) + element;
        if (timed) {
            written += duration;
        }
    }
    moveTo(0);

    // The staff's attributes (divisions, clef, slashes) and labels at the measure's start.
    std::string attributes;
    if (music.divisions != divisions) {
        attributes += "<divisions>" + std::to_string(music.divisions) + "</divisions>";
    }
    std::vector<std::string> added;
    for (const std::string& item : lines) {
        if (item.rfind("<attributes>", 0) == 0) {
            std::string inner = item.substr(12, item.size() - 12 - 13);
            if (inner.rfind("<divisions>", 0) == 0) {
                inner.erase(0, inner.find("</divisions>") + 12);
            }
            attributes += inner;
        } else {
            added.push_back(item);
        }
    }
    if (!attributes.empty()) {
        added.insert(added.begin(), "<attributes>" + attributes + "</attributes>");
    }
    added.insert(added.end(), music.lines.begin(), music.lines.end());
    if (music.divisions != divisions) {
        added.push_back("<attributes><divisions>" + std::to_string(divisions) + "</divisions></attributes>");
    }
    for (const std::string& item : added) {
        content += NewChild(index.range.begin, item);
    }
    for (const std::string& barline : closing) {
        content += ChildLine(index.range.begin) + barline;
    }
    content += impl_.lineEnd + IndentBefore(text, index.range.begin);
    return Splice{index.contentBegin, index.contentEnd, content};
}

void Writer::WriteNewPart(int32_t inst, int number)
{
    const std::string& text = impl_.text;
    const std::string& unit = impl_.indentUnit;
    const std::string& lineEnd = impl_.lineEnd;
    std::string id = "P" + std::to_string(number);
    for (int suffix = 2; ids_.count(id) != 0; ++suffix) {
        id = "P" + std::to_string(number) + "-" + std::to_string(suffix);
    }
    ids_.insert(id);
    EDTStaffSpec2003 spec{};
    after_.Read(kTagStaffSpec, RecordKey::Other(static_cast<uint16_t>(inst), 0), spec, 0x08000000);
    std::string name = TextBlockText(after_, spec.fullName);
    if (name.empty()) {
        name = "Drums";
    }
    // A second staff of the same name is numbered, as a notation program numbers a second
    // instrument of a kind ("Drums 2"), so that --staff can still tell the staves apart.
    const std::string base = name;
    for (int count = 2; staffNames_.count(name) != 0; ++count) {
        name = base + " " + std::to_string(count);
    }
    staffNames_.insert(name);

    const auto measures = static_cast<int32_t>(score_.Measures().size());
    std::set<int> keys;
    for (int32_t meas = 1; meas <= measures; ++meas) {
        const std::set<int> used = KeysInMeasure(after_, inst, meas);
        keys.insert(used.begin(), used.end());
    }
    std::map<int, std::string> instrumentOf;

    // The part list entry, after the last one.
    const PartIndex& lastPart = impl_.parts.back();
    const ByteRange lastEntry = lastPart.scorePart.end > lastPart.scorePart.begin ? lastPart.scorePart : impl_.partList;
    const std::string entryIndent =
        lastPart.scorePart.end > lastPart.scorePart.begin ? IndentBefore(text, lastEntry.begin) : unit;
    std::string midi;
    const std::string instruments = InstrumentsText(id, keys, instrumentOf, entryIndent + unit, midi);
    std::string entry = lineEnd + entryIndent + "<score-part id=\"" + id + "\">" + lineEnd + entryIndent + unit +
                        "<part-name>" + EscapeXml(name) + "</part-name>" + instruments + midi + lineEnd + entryIndent +
                        "</score-part>";
    const size_t entryAt = lastEntry.end;
    splices_.push_back(Splice{entryAt, entryAt, entry});

    // The part, after the last one: every measure of the score, rests outside the fill.
    const std::string partIndent = IndentBefore(text, lastPart.range.begin);
    const std::string measureIndent = partIndent + unit;
    const std::string childIndent = measureIndent + unit;
    std::string part = lineEnd + partIndent + "<part id=\"" + id + "\">";
    int divisions = 0;
    bool slash = false;
    for (int32_t meas = 1; meas <= measures; ++meas) {
        const MeasureInfo& info = score_.Measures()[static_cast<size_t>(meas - 1)];
        const MeasureIndex* index = impl_.parts.front().measures.size() >= static_cast<size_t>(meas)
                                        ? &impl_.parts.front().measures[static_cast<size_t>(meas - 1)]
                                        : nullptr;
        const MeasureMusic music = WriteMeasureMusic(after_, inst, meas, true, std::max(divisions, 1), instrumentOf,
                                                     info.implicit && index != nullptr ? index->length : 0);
        part += lineEnd + measureIndent + "<measure number=\"" + EscapeXml(info.number) + "\"" +
                (info.implicit ? " implicit=\"yes\"" : "") + ">";
        std::string attributes;
        if (music.divisions != divisions) {
            attributes += "<divisions>" + std::to_string(music.divisions) + "</divisions>";
            divisions = music.divisions;
        }
        const MeasureInfo* previous = meas > 1 ? &score_.Measures()[static_cast<size_t>(meas - 2)] : nullptr;
        if (previous == nullptr || previous->fifths != info.fifths) {
            attributes += "<key><fifths>" + std::to_string(info.fifths) + "</fifths></key>";
        }
        if (previous == nullptr || previous->beats != info.beats || previous->beatType != info.beatType) {
            attributes += "<time><beats>" + std::to_string(info.beats) + "</beats><beat-type>" +
                          std::to_string(info.beatType) + "</beat-type></time>";
        }
        if (previous == nullptr) {
            attributes += "<clef><sign>percussion</sign></clef>";
        }
        if (SlashAt(after_, inst, meas) != slash) {
            slash = !slash;
            attributes += slash ? "<measure-style><slash type=\"start\" use-stems=\"no\"/></measure-style>"
                                : "<measure-style><slash type=\"stop\"/></measure-style>";
        }
        if (!attributes.empty()) {
            part += ElementAt(childIndent, "<attributes>" + attributes + "</attributes>");
        }
        for (const std::string& label : LabelsAt(after_, inst, meas)) {
            part += ElementAt(childIndent, "<direction><direction-type><other-direction print-object=\"no\">" +
                                               EscapeXml(label) + "</other-direction></direction-type></direction>");
        }
        for (const std::string& line : music.lines) {
            part += ElementAt(childIndent, line);
        }
        part += lineEnd + measureIndent + "</measure>";
    }
    part += lineEnd + partIndent + "</part>";
    splices_.push_back(Splice{lastPart.range.end, lastPart.range.end, part});
}

toolbox::Status Writer::Collect()
{
    ids_ = impl_.ids;
    for (const StaffInfo& staff : score_.Staves()) {
        staffNames_.insert(staff.name);
    }
    for (const StaffInfo& staff : score_.Staves()) {
        if (toolbox::Status written = WriteStaff(staff); !written) {
            return written;
        }
    }
    // Staves the edit added become new parts after the last one, numbered on from the score's.
    const auto known = static_cast<int32_t>(score_.Staves().size());
    int number = static_cast<int>(score_.Parts().size());
    for (int32_t inst = known + 1; after_.StaffExists(inst); ++inst) {
        WriteNewPart(inst, ++number);
    }
    return toolbox::Status::Ok();
}

std::string Writer::Apply() const
{
    std::vector<Splice> sorted = splices_;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Splice& a, const Splice& b) { return a.begin < b.begin; });
    const std::string& text = impl_.text;
    std::string out;
    out.reserve(text.size() + 1024);
    size_t at = 0;
    for (const Splice& splice : sorted) {
        if (splice.begin < at) {
            continue;   // overlapping edits do not happen; never write one twice
        }
        out.append(text, at, splice.begin - at);
        out += splice.text;
        at = splice.end;
    }
    out.append(text, at, std::string::npos);
    return out;
}

}   // namespace

toolbox::Result<std::string> ScoreFile::Write(const Document& edited, Container container) const
{
    const Container target = container == Container::Same ? container_ : container;
    Writer writer(*this, *impl_, edited);
    if (toolbox::Status collected = writer.Collect(); !collected) {
        return collected;
    }
    if (writer.Empty() && target == container_) {
        return impl_->OriginalBytes();
    }
    std::string text = writer.Empty() ? impl_->text : writer.Apply();
    std::string scoreBytes =
        impl_->encoding == TextEncoding::Utf8 ? std::move(text) : Utf8ToUtf16(text, impl_->encoding);
    if (target == Container::Plain) {
        return scoreBytes;
    }
    if (container_ == Container::Compressed) {
        toolbox::Result<std::string> archive = ReplaceArchiveScore(impl_->original, impl_->rootPath, scoreBytes);
        if (!archive) {
            return archive.status().Within(Name() + ": the .mxl archive could not be written");
        }
        return archive;
    }
    std::string root = std::filesystem::path(Name()).filename().string();
    if (root.empty() || Name() == "standard input") {
        root = "score.musicxml";
    }
    const size_t dot = root.rfind('.');
    root = (dot == std::string::npos ? root : root.substr(0, dot)) + ".musicxml";
    toolbox::Result<std::string> archive = NewArchive(root, scoreBytes);
    if (!archive) {
        return archive.status().Within(Name() + ": the .mxl archive could not be made");
    }
    return archive;
}

toolbox::Status WriteFileAtomically(const std::string& path, const std::string& bytes)
{
    if (path == "-") {
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        std::cout.flush();
        if (!std::cout) {
            return toolbox::Status::Failure("cannot write to standard output", toolbox::kIOErr);
        }
        return toolbox::Status::Ok();
    }
    const std::filesystem::path target(path);
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
    std::string pattern = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
    const int fd = mkstemp(pattern.data());
    if (fd < 0) {
        return toolbox::Status::Failure(path + ": cannot write a temporary file in " + folder.string() + ": " +
                                            std::strerror(errno),
                                        toolbox::kIOErr);
    }
    const auto failed = [&](int fileToClose) {
        toolbox::Status failure =
            toolbox::Status::Failure(path + ": cannot write: " + std::strerror(errno), toolbox::kIOErr);
        if (fileToClose >= 0) {
            ::close(fileToClose);
        }
        std::remove(pattern.c_str());
        return failure;
    };
    // The file keeps the permissions it had; a new one is a readable document, not a private
    // temporary file.
    struct stat existing {};
    ::fchmod(fd, ::stat(path.c_str(), &existing) == 0 ? (existing.st_mode & 07777) : 0644);
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return failed(fd);
        }
        written += static_cast<size_t>(count);
    }
    if (::fsync(fd) != 0) {
        return failed(fd);
    }
    if (::close(fd) != 0) {
        return failed(-1);
    }
    if (std::rename(pattern.c_str(), path.c_str()) != 0) {
        return failed(-1);
    }
    return toolbox::Status::Ok();
}

}   // namespace stavio::musicxml
