#include "stavio/midi_export/midi_export.h"

#include "stavio/document/pitch.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace stavio::midi_export {

namespace {

constexpr EVERSION kMeasureSpecVersion = 0x0A000000;   // the 26-byte layout
constexpr EVERSION kStaffSpecVersion = 0x08000000;     // the 102-byte layout
constexpr int32_t kWholeNote = 4 * kEduPerQuarter;
constexpr uint8_t kNoteOff = 0x80;
constexpr uint8_t kNoteOn = 0x90;
constexpr uint8_t kProgramChange = 0xC0;
constexpr uint8_t kMeta = 0xFF;
constexpr uint8_t kMetaTrackName = 0x03;
constexpr uint8_t kMetaEndOfTrack = 0x2F;
constexpr uint8_t kMetaTempo = 0x51;
constexpr uint8_t kMetaTimeSignature = 0x58;
constexpr int kChannels = 16;
constexpr int kMidiClocksPerQuarter = 24;

using Bytes = std::vector<uint8_t>;

// One event of a track at its tick. At one tick, note-offs go before everything else, so that a
// note struck again at the moment the one before ends is not cut off.
struct TrackEvent {
    int64_t tick = 0;
    int rank = 1;   // 0 note-off, 1 the rest
    Bytes bytes;
};

struct Meter {
    int numerator = 4;
    int denominator = 4;
    bool operator!=(const Meter& other) const
    {
        return numerator != other.numerator || denominator != other.denominator;
    }
};

// The written meter of a measure `length` EDU long whose beat is `divbeat`: a beat whose length
// divides the whole note is the denominator's value (3/4, 2/2); a dotted beat is three of its
// thirds (6/8 from two dotted quarters); anything else is counted in the largest note value that
// fits a whole number of times, down to a sixty-fourth.
Meter MeterOf(int32_t beats, int32_t divbeat)
{
    if (beats <= 0 || divbeat <= 0) {
        return {};
    }
    if (kWholeNote % divbeat == 0) {
        return {beats, kWholeNote / divbeat};
    }
    if (divbeat % 3 == 0 && kWholeNote % (divbeat / 3) == 0) {
        return {beats * 3, kWholeNote / (divbeat / 3)};
    }
    const int64_t length = int64_t{beats} * divbeat;
    for (int denominator = 1; denominator <= 64; denominator *= 2) {
        if (length * denominator % kWholeNote == 0) {
            return {static_cast<int>(length * denominator / kWholeNote), denominator};
        }
    }
    return {};
}

Meter MeasureMeter(const Document& doc, int32_t meas)
{
    EDTMeasureSpec2005 spec{};
    if (!doc.Read(kTagMeasureSpec, RecordKey::Other(static_cast<uint16_t>(meas), 0), spec, kMeasureSpecVersion)) {
        return {};
    }
    return MeterOf(spec.beats, spec.divbeat);
}

void PutNumber(Bytes& out, uint32_t value)
{
    uint8_t groups[5];
    int count = 0;
    do {
        groups[count++] = static_cast<uint8_t>(value & 0x7F);
        value >>= 7;
    } while (value != 0);
    while (count > 1) {
        out.push_back(static_cast<uint8_t>(groups[--count] | 0x80));
    }
    out.push_back(groups[0]);
}

void PutWord(Bytes& out, uint32_t value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        out.push_back(static_cast<uint8_t>(value >> shift));
    }
}

TrackEvent MetaEvent(int64_t tick, uint8_t type, const Bytes& data)
{
    TrackEvent event{tick, 1, {kMeta, type}};
    PutNumber(event.bytes, static_cast<uint32_t>(data.size()));
    event.bytes.insert(event.bytes.end(), data.begin(), data.end());
    return event;
}

// The chunk of one track: its events in tick order (note-offs first at a tick), then its end.
Bytes TrackChunk(std::vector<TrackEvent> events, int64_t endTick)
{
    std::stable_sort(events.begin(), events.end(), [](const TrackEvent& a, const TrackEvent& b) {
        return a.tick != b.tick ? a.tick < b.tick : a.rank < b.rank;
    });
    Bytes body;
    int64_t now = 0;
    for (const TrackEvent& event : events) {
        PutNumber(body, static_cast<uint32_t>(event.tick - now));
        body.insert(body.end(), event.bytes.begin(), event.bytes.end());
        now = event.tick;
    }
    PutNumber(body, static_cast<uint32_t>(std::max<int64_t>(endTick - now, 0)));
    body.insert(body.end(), {kMeta, kMetaEndOfTrack, 0x00});
    Bytes chunk = {'M', 'T', 'r', 'k'};
    PutWord(chunk, static_cast<uint32_t>(body.size()), 4);
    chunk.insert(chunk.end(), body.begin(), body.end());
    return chunk;
}

// Where each measure of the range starts, in ticks from the range's start; one more for its end.
std::vector<int64_t> MeasureStarts(const Document& doc, int32_t first, int32_t last)
{
    std::vector<int64_t> starts = {0};
    for (int32_t meas = first; meas <= last; ++meas) {
        starts.push_back(starts.back() + doc.MeasureDuration(meas));
    }
    return starts;
}

Bytes ConductorTrack(const Document& doc, int32_t first, int32_t last, const std::vector<int64_t>& starts,
                     int32_t microsecondsPerQuarter)
{
    std::vector<TrackEvent> events;
    Bytes tempo;
    PutWord(tempo, static_cast<uint32_t>(microsecondsPerQuarter), 3);
    events.push_back(MetaEvent(0, kMetaTempo, tempo));
    Meter previous{0, 0};
    for (int32_t meas = first; meas <= last; ++meas) {
        const Meter meter = MeasureMeter(doc, meas);
        if (meter != previous) {
            int power = 0;
            while ((1 << power) < meter.denominator) {
                ++power;
            }
            // A metronome click per beat: a dotted quarter in 6/8, 9/8 and 12/8.
            const bool compound = meter.denominator >= 8 && meter.numerator % 3 == 0 && meter.numerator > 3;
            const int click = kMidiClocksPerQuarter * 4 / meter.denominator * (compound ? 3 : 1);
            events.push_back(MetaEvent(
                starts[static_cast<size_t>(meas - first)], kMetaTimeSignature,
                {static_cast<uint8_t>(meter.numerator), static_cast<uint8_t>(power), static_cast<uint8_t>(click), 8}));
            previous = meter;
        }
    }
    return TrackChunk(std::move(events), starts.back());
}

// How long an entry sounds: its actual duration, or, when the host has none for it, its notated
// duration scaled by the tuplet it lies under.
int64_t SoundingLength(const FrameContent& frame, size_t index)
{
    const EXENTRY& entry = frame.entries[index];
    if (entry.actdur > 0) {
        return entry.actdur;
    }
    for (const TupletInfo& tuplet : frame.tuplets) {
        const int64_t symbolic = int64_t{tuplet.tpDef.symbolicNum} * tuplet.tpDef.symbolicDur;
        if (tuplet.stoff <= static_cast<int64_t>(index) && static_cast<int64_t>(index) <= tuplet.enoff &&
            symbolic > 0) {
            return int64_t{entry.dura} * tuplet.tpDef.refNum * tuplet.tpDef.refDur / symbolic;
        }
    }
    return entry.dura;
}

struct SoundingNote {
    int64_t start = 0;
    int64_t end = 0;
    int key = 0;
};

// The notes of one staff over the range, ties joined: a note tied forward continues with the
// note of its key in the layer's next entry (in the next measure too), however the two entries'
// positions were rounded. A rest or an empty measure ends a tie.
std::vector<SoundingNote> StaffNotes(const Document& doc, int32_t inst, int32_t first, int32_t last,
                                     const std::vector<int64_t>& starts)
{
    std::vector<SoundingNote> notes;
    for (int layer = 0; layer < kMaxLayers; ++layer) {
        std::map<int, size_t> tiedOpen;   // key -> index in `notes` of a note tied forward
        for (int32_t meas = first; meas <= last; ++meas) {
            const std::optional<FrameContent> frame = doc.Frame(inst, meas, layer);
            if (!frame || frame->Empty()) {
                tiedOpen.clear();
                continue;
            }
            const int64_t measureStart = starts[static_cast<size_t>(meas - first)];
            for (size_t index = 0; index < frame->entries.size(); ++index) {
                const EXENTRY& entry = frame->entries[index];
                std::map<int, size_t> stillTied;
                const bool sounds = (entry.ef & kEntryValid) != 0 && (entry.ef & kEntryIsNote) != 0;
                const int count = sounds ? std::clamp<int>(entry.numNotes, 0, kMaxNotesPerEntry) : 0;
                const int64_t start = measureStart + entry.elldur;
                const int64_t end = start + std::max<int64_t>(SoundingLength(*frame, index), 0);
                for (int i = 0; i < count; ++i) {
                    const EXNOTE& note = entry.note[i];
                    const int key = NoteToMidiKey(note.tcd, note.alteration);
                    if (key < 0 || key > 127 || (note.flag & kNoteIsRestRecord) != 0) {
                        continue;
                    }
                    size_t at = notes.size();
                    const auto open = tiedOpen.find(key);
                    if (open != tiedOpen.end()) {
                        at = open->second;
                        notes[at].end = std::max(notes[at].end, end);
                    } else {
                        notes.push_back(SoundingNote{start, end, key});
                    }
                    if ((note.flag & kNoteTiedForward) != 0) {
                        stillTied[key] = at;
                    }
                }
                tiedOpen = std::move(stillTied);
            }
        }
    }
    return notes;
}

Bytes StaffTrack(const Document& doc, int32_t inst, int32_t first, int32_t last, const std::vector<int64_t>& starts,
                 int defaultChannel)
{
    const int32_t definition = StaffChannelDefinition(doc, inst);
    const std::optional<uint16_t> code = ChannelCode(doc, definition);
    const bool drums = code && PlaysOnChannel10(*code);
    const int channel = drums ? kDrumChannel : code ? (*code & 0x0F) : defaultChannel;

    std::vector<TrackEvent> events;
    std::string name;
    EDTStaffSpec2003 spec{};
    if (doc.Read(kTagStaffSpec, RecordKey::Other(static_cast<uint16_t>(inst), 0), spec, kStaffSpecVersion)) {
        name = TextBlockText(doc, spec.fullName);
    }
    if (name.empty()) {
        name = ChannelName(doc, definition);
    }
    if (!name.empty()) {
        events.push_back(MetaEvent(0, kMetaTrackName, Bytes(name.begin(), name.end())));
    }
    if (!drums) {
        const int16_t program = ChannelProgram(doc, definition);
        const int number = program >= 1 && program <= 128 ? program - 1 : 0;
        events.push_back(
            TrackEvent{0, 1, {static_cast<uint8_t>(kProgramChange | channel), static_cast<uint8_t>(number)}});
    }
    const int64_t endTick = starts.back();
    for (const SoundingNote& note : StaffNotes(doc, inst, first, last, starts)) {
        const int64_t end = std::min(note.end, endTick);
        if (end <= note.start) {
            continue;
        }
        const auto key = static_cast<uint8_t>(note.key);
        events.push_back(TrackEvent{note.start, 1, {static_cast<uint8_t>(kNoteOn | channel), key, kExportVelocity}});
        events.push_back(TrackEvent{end, 0, {static_cast<uint8_t>(kNoteOff | channel), key, 0x40}});
    }
    return TrackChunk(std::move(events), endTick);
}

toolbox::Status CheckRange(const Document& doc, const ExportOptions& options, int32_t& first, int32_t& last)
{
    const int32_t measures = doc.MeasureCount();
    first = options.firstMeasure;
    last = options.lastMeasure == 0 ? measures : options.lastMeasure;
    if (measures == 0) {
        return toolbox::Status::Failure("the score has no measures");
    }
    if (first < 1 || last < first || last > measures) {
        return toolbox::Status::Failure("measures " + std::to_string(first) + "-" + std::to_string(last) +
                                        " are not a range of the score's measures 1-" + std::to_string(measures));
    }
    return toolbox::Status::Ok();
}

}   // namespace

int32_t MicrosecondsPerQuarter(double quartersPerMinute)
{
    if (!(quartersPerMinute >= 1.0 && quartersPerMinute <= 1000.0)) {
        return 0;
    }
    return static_cast<int32_t>(std::lround(60000000.0 / quartersPerMinute));
}

ExportOptions MeasuresAtTempo(int32_t first, int32_t last, double quartersPerMinute)
{
    ExportOptions options;
    options.firstMeasure = first;
    options.lastMeasure = last;
    options.microsecondsPerQuarter = MicrosecondsPerQuarter(quartersPerMinute);
    return options;
}

toolbox::Result<std::vector<uint8_t>> ExportMidi(const Document& doc, const ExportOptions& options)
{
    int32_t first = 0;
    int32_t last = 0;
    if (toolbox::Status range = CheckRange(doc, options, first, last); !range) {
        return range;
    }
    if (options.microsecondsPerQuarter <= 0 || options.microsecondsPerQuarter > 0xFFFFFF) {
        return toolbox::Status::Failure("the tempo is out of range");
    }
    const std::vector<int64_t> starts = MeasureStarts(doc, first, last);
    const int32_t staves = doc.StaffCount(kMainInstrumentList);
    std::vector<Bytes> tracks = {ConductorTrack(doc, first, last, starts, options.microsecondsPerQuarter)};
    int nextChannel = 0;
    for (int32_t slot = 1; slot <= staves; ++slot) {
        const int32_t inst = doc.SlotToInst(slot, kMainInstrumentList);
        if (inst == 0) {
            continue;
        }
        // A staff without a channel definition takes the next channel, keeping clear of the drums.
        if (nextChannel == kDrumChannel) {
            ++nextChannel;
        }
        tracks.push_back(StaffTrack(doc, inst, first, last, starts, nextChannel));
        nextChannel = (nextChannel + 1) % kChannels;
    }

    std::vector<uint8_t> bytes = {'M', 'T', 'h', 'd', 0, 0, 0, 6};
    PutWord(bytes, 1, 2);
    PutWord(bytes, static_cast<uint32_t>(tracks.size()), 2);
    PutWord(bytes, kTicksPerQuarter, 2);
    for (const Bytes& track : tracks) {
        bytes.insert(bytes.end(), track.begin(), track.end());
    }
    return bytes;
}

double RangeSeconds(const Document& doc, const ExportOptions& options)
{
    int32_t first = 0;
    int32_t last = 0;
    if (!CheckRange(doc, options, first, last)) {
        return 0.0;
    }
    const int64_t ticks = MeasureStarts(doc, first, last).back();
    return static_cast<double>(ticks) * options.microsecondsPerQuarter / kTicksPerQuarter / 1e6;
}

}   // namespace stavio::midi_export
