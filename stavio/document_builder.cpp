#include "stavio/document_builder.h"

#include "sdk/tags.h"
#include "stavio/document/canonical.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document/text_expressions.h"

#include <algorithm>

namespace stavio {

namespace {
constexpr EVERSION kMeasureSpecVersion = 0x0A000000;   // the 26-byte layout
constexpr EVERSION kTextBlockVersion = 0x09000000;     // the 26-byte layout
constexpr EVERSION kStaffSpecVersion = 0x08000000;     // the 102-byte layout
constexpr uint16_t kPlayMapUnused = 0xFFFF;
constexpr int kNoteIdBits = 0x1F;
constexpr int kNoteIdShift = 16;

EXENTRY EntryOf(const EntrySpec& spec)
{
    EXENTRY entry{};
    entry.dura = static_cast<int16_t>(spec.duration);
    entry.actdur = spec.duration;
    entry.ef = kEntryValid | (spec.notes.empty() ? 0 : kEntryIsNote);
    const size_t notes = std::min(spec.notes.size(), static_cast<size_t>(kMaxNotesPerEntry));
    entry.numNotes = static_cast<int16_t>(notes);
    for (size_t i = 0; i < notes; ++i) {
        EXNOTE& note = entry.note[i];
        note.tcd = spec.notes[i].tcd;
        note.alteration = spec.notes[i].alteration;
        note.noteID = static_cast<int16_t>(i + 1);
        note.flag = static_cast<uint32_t>(note.noteID & kNoteIdBits) << kNoteIdShift;
    }
    return entry;
}

// Entries under a tuplet take its share of the time: `count` notes in the time of `inTimeOf`.
void ApplyTuplet(FrameContent& content, const TupletSpec& spec)
{
    const auto size = static_cast<int>(content.entries.size());
    if (spec.first < 0 || spec.last < spec.first || spec.last >= size || spec.count <= 0 || spec.noteValue <= 0) {
        return;
    }
    for (int i = spec.first; i <= spec.last; ++i) {
        EXENTRY& entry = content.entries[static_cast<size_t>(i)];
        entry.actdur = static_cast<int32_t>(static_cast<int64_t>(entry.dura) * spec.inTimeOf * spec.referenceValue /
                                            (static_cast<int64_t>(spec.count) * spec.noteValue));
        entry.ef |= kEntryInTuplet;
    }
    TupletInfo tuplet{};
    tuplet.stoff = static_cast<int16_t>(spec.first);
    tuplet.enoff = static_cast<int16_t>(spec.last);
    tuplet.logInci = static_cast<int16_t>(content.tuplets.size());
    tuplet.tupPeriod = spec.inTimeOf * spec.referenceValue;
    tuplet.tpDef.symbolicNum = spec.count;
    tuplet.tpDef.symbolicDur = spec.noteValue;
    tuplet.tpDef.refNum = spec.inTimeOf;
    tuplet.tpDef.refDur = spec.referenceValue;
    content.tuplets.push_back(tuplet);
}

// Each entry starts where the one before it ends.
void PlaceEntries(FrameContent& content)
{
    int32_t position = 0;
    for (EXENTRY& entry : content.entries) {
        entry.elldur = position;
        entry.orgposi = static_cast<int16_t>(std::min<int32_t>(position, INT16_MAX));
        position += entry.actdur;
    }
}

}   // namespace

NotePitch PitchOfKey(int midiKey)
{
    static constexpr int16_t kStep[12] = {0, 0, 1, 1, 2, 3, 3, 4, 4, 5, 5, 6};
    static constexpr int16_t kSharp[12] = {0, 1, 0, 1, 0, 0, 1, 0, 1, 0, 1, 0};
    int octave = midiKey / 12;
    int semitone = midiKey % 12;
    if (semitone < 0) {
        semitone += 12;
        octave -= 1;
    }
    return NotePitch{static_cast<int16_t>(kStep[semitone] + 7 * (octave - 5)), kSharp[semitone]};
}

EntrySpec Note(int midiKey, TIME_EDU duration)
{
    return EntrySpec{duration, {PitchOfKey(midiKey)}};
}

EntrySpec Chord(std::initializer_list<int> midiKeys, TIME_EDU duration)
{
    EntrySpec entry{duration, {}};
    for (int key : midiKeys) {
        entry.notes.push_back(PitchOfKey(key));
    }
    return entry;
}

EntrySpec Pitched(std::vector<NotePitch> notes, TIME_EDU duration)
{
    return EntrySpec{duration, std::move(notes)};
}

EntrySpec Rest(TIME_EDU duration)
{
    return EntrySpec{duration, {}};
}

DocumentBuilder& DocumentBuilder::Measures(int count, int16_t beats, int16_t divbeat)
{
    measureCount_ = count;
    meters_[1] = Meter{beats, divbeat};
    return *this;
}

DocumentBuilder& DocumentBuilder::TimeSignatureFrom(int meas, int16_t beats, int16_t divbeat)
{
    meters_[meas] = Meter{beats, divbeat};
    return *this;
}

DocumentBuilder& DocumentBuilder::Staff(const std::string& fullName, const std::string& abbreviatedName)
{
    staves_.push_back(StaffNames{fullName, abbreviatedName});
    return *this;
}

DocumentBuilder& DocumentBuilder::MeasureFlags(int meas, uint16_t auxflag)
{
    auxflags_[meas] = auxflag;
    return *this;
}

DocumentBuilder& DocumentBuilder::Entries(int staff, int meas, int layer, std::vector<EntrySpec> entries)
{
    layers_[Place{staff, meas, layer}].entries = std::move(entries);
    return *this;
}

DocumentBuilder& DocumentBuilder::Tuplet(int staff, int meas, int layer, TupletSpec tuplet)
{
    layers_[Place{staff, meas, layer}].tuplets.push_back(tuplet);
    return *this;
}

DocumentBuilder& DocumentBuilder::DrumStaff(int staff)
{
    drumStaves_.push_back(staff);
    return *this;
}

DocumentBuilder& DocumentBuilder::StaffStyle(int16_t number, const EDTStaffStyle2003& style)
{
    styles_[number] = style;
    return *this;
}

DocumentBuilder& DocumentBuilder::StyleAssignment(int staff, int16_t style, EXMEASRANGE range)
{
    styleAssignments_.push_back(StyleAssignmentSpec{staff, style, range});
    return *this;
}

DocumentBuilder& DocumentBuilder::TextExpression(int16_t number, const std::string& text, int16_t playbackType)
{
    expressions_[number] = ExpressionSpec{text, playbackType};
    return *this;
}

DocumentBuilder& DocumentBuilder::ExpressionAssignment(int staff, int meas, int16_t expression)
{
    expressionAssignments_.push_back(ExpressionAssignmentSpec{staff, meas, expression});
    return *this;
}

DocumentBuilder& DocumentBuilder::WithoutPercussionMap()
{
    withoutPercussionMap_ = true;
    return *this;
}

DocumentBuilder& DocumentBuilder::FillChannelDefinitions()
{
    fillChannels_ = true;
    return *this;
}

Document DocumentBuilder::Build() const
{
    Document doc;
    for (int meas = 1; meas <= measureCount_; ++meas) {
        EDTMeasureSpec2005 spec = DefaultMeasureSpec();
        auto meter = meters_.upper_bound(meas);
        if (meter != meters_.begin()) {
            --meter;
            spec.beats = meter->second.beats;
            spec.divbeat = meter->second.divbeat;
        }
        auto flags = auxflags_.find(meas);
        if (flags != auxflags_.end()) {
            spec.auxflag = flags->second;
        }
        doc.Write(kTagMeasureSpec, RecordKey::Other(static_cast<uint16_t>(meas), 0), spec, kMeasureSpecVersion);
    }
    BuildStaves(doc);
    if (fillChannels_) {
        stavio::FillChannelDefinitions(doc);
    }
    BuildStylesAndExpressions(doc);
    BuildEntries(doc);
    if (withoutPercussionMap_) {
        doc.RemovePercussionMap(kDefaultPercussionMap);
    }
    return doc;
}

void DocumentBuilder::BuildStaves(Document& doc) const
{
    for (const StaffNames& names : staves_) {
        const int32_t inst = doc.AddStaff();
        const RecordKey key = RecordKey::Other(static_cast<uint16_t>(inst), 0);
        EDTStaffSpec2003 spec{};
        doc.Read(kTagStaffSpec, key, spec, kStaffSpecVersion);
        if (!names.full.empty()) {
            spec.fullName = AddTextBlock(doc, names.full);
            SetChannelName(doc, StaffChannelDefinition(doc, inst), names.full);
        }
        if (!names.abbreviated.empty()) {
            spec.abbrvName = AddTextBlock(doc, names.abbreviated);
        }
        doc.Write(kTagStaffSpec, key, spec, kStaffSpecVersion);
    }
    for (int staff : drumStaves_) {
        if (!doc.StaffExists(staff)) {
            continue;
        }
        SetChannelCode(doc, StaffChannelDefinition(doc, staff), kDrumChannelCode);
        EDTDrumStaff drum{};
        drum.percMap = kDefaultPercussionMap;
        std::fill(std::begin(drum.playMap), std::end(drum.playMap), kPlayMapUnused);
        doc.Write(kTagDrumStaff, RecordKey::Other(static_cast<uint16_t>(staff), 0), drum);
    }
}

void DocumentBuilder::BuildEntries(Document& doc) const
{
    for (const auto& [place, layer] : layers_) {
        const auto& [staff, meas, layerIndex] = place;
        FrameContent content;
        for (const EntrySpec& spec : layer.entries) {
            content.entries.push_back(EntryOf(spec));
        }
        for (const TupletSpec& tuplet : layer.tuplets) {
            ApplyTuplet(content, tuplet);
        }
        PlaceEntries(content);
        doc.SetFrame(staff, meas, layerIndex, content);
    }
}

void DocumentBuilder::BuildStylesAndExpressions(Document& doc) const
{
    for (const auto& [number, style] : styles_) {
        doc.Write(kTagStaffStyle, RecordKey::Other(static_cast<uint16_t>(number), 0), style);
    }
    for (const StyleAssignmentSpec& spec : styleAssignments_) {
        EDTStaffStyleAssign assignment{};
        assignment.style = spec.style;
        assignment.range = spec.range;
        EDataID key{};
        key.other.cmper = static_cast<uint16_t>(spec.staff);
        key.other.inci = -1;
        doc.CreateRecord(kTagStaffStyleAssign, &key, &assignment, sizeof(assignment), kPluginApiVersion);
    }
    for (const auto& [number, spec] : expressions_) {
        TextExpressionDef definition;
        definition.header.playbackType = spec.playbackType;
        definition.text = spec.text;
        WriteTextExpression(doc, number, definition);
    }
    for (const ExpressionAssignmentSpec& spec : expressionAssignments_) {
        if (doc.StaffExists(spec.staff)) {
            AddExpressionAssignment(doc, spec.meas, ExpressionAssignmentFor(spec.expression, spec.staff));
        }
    }
}

int16_t AddTextBlock(Document& doc, const std::string& text)
{
    EDataID textKey{};
    textKey.text.textnum = kPickNumber;
    if (doc.CreateRecord(kTagTextBody, &textKey, text.data(), static_cast<int32_t>(text.size()), kPluginApiVersion) ==
        0) {
        return 0;
    }
    EDTTextBlock2004 block{};
    block.textID = static_cast<int16_t>(textKey.text.textnum);
    block.lineSpacingPercent = 100;
    EDataID blockKey{};
    blockKey.other.cmper = kPickNumber;
    blockKey.other.inci = 0;
    if (doc.CreateRecord(kTagTextBlock, &blockKey, &block, sizeof(block), kTextBlockVersion) == 0) {
        return 0;
    }
    return static_cast<int16_t>(blockKey.other.cmper);
}

std::string TextBlockText(const Document& doc, int16_t block)
{
    EDTTextBlock2004 spec{};
    if (block <= 0 ||
        !doc.Read(kTagTextBlock, RecordKey::Other(static_cast<uint16_t>(block), 0), spec, kTextBlockVersion)) {
        return {};
    }
    const auto* bytes = doc.Records().Find(kTagTextBody, RecordKey::Number(static_cast<uint16_t>(spec.textID)));
    return bytes == nullptr ? std::string() : std::string(bytes->begin(), bytes->end());
}

}   // namespace stavio
