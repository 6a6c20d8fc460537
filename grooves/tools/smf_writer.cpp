#include "grooves/tools/smf_writer.h"

#include <algorithm>
#include <string>

namespace grooves {
namespace {

// Messages at one tick: meta events first, then program changes, note-offs, note-ons; the
// end of the track after everything.
enum Order {
    kMeta = 0,
    kProgram = 1,
    kNoteOff = 2,
    kNoteOn = 3,
    kEndOfTrack = 4
};

struct TimedMessage {
    int tick;
    int order;
    int sequence;
    std::vector<uint8_t> bytes;   // a channel message with its status, or a whole meta event
};

class TrackBuilder {
public:
    void Meta(int tick, uint8_t type, const std::vector<uint8_t>& data, int order = kMeta)
    {
        std::vector<uint8_t> bytes = {0xFF, type};
        AppendNumber(bytes, static_cast<uint32_t>(data.size()));
        bytes.insert(bytes.end(), data.begin(), data.end());
        Add(tick, order, bytes);
    }
    void Channel(int tick, int order, std::vector<uint8_t> bytes) { Add(tick, order, std::move(bytes)); }

    // The chunk, events in time order; channel statuses repeated only when running status is
    // off or the status changes (a meta event interrupts running status).
    std::vector<uint8_t> Chunk(bool runningStatus, int endTick)
    {
        Meta(endTick, 0x2F, {}, kEndOfTrack);
        std::stable_sort(messages_.begin(), messages_.end(), [](const TimedMessage& a, const TimedMessage& b) {
            return a.tick != b.tick     ? a.tick < b.tick
                   : a.order != b.order ? a.order < b.order
                                        : a.sequence < b.sequence;
        });
        std::vector<uint8_t> body;
        int previousTick = 0;
        uint8_t lastStatus = 0;
        for (const TimedMessage& m : messages_) {
            AppendNumber(body, static_cast<uint32_t>(m.tick - previousTick));
            previousTick = m.tick;
            const bool meta = m.bytes[0] == 0xFF;
            const bool omitStatus = runningStatus && !meta && m.bytes[0] == lastStatus;
            body.insert(body.end(), m.bytes.begin() + (omitStatus ? 1 : 0), m.bytes.end());
            lastStatus = meta ? 0 : m.bytes[0];
        }
        std::vector<uint8_t> chunk = {'M', 'T', 'r', 'k'};
        AppendWord32(chunk, static_cast<uint32_t>(body.size()));
        chunk.insert(chunk.end(), body.begin(), body.end());
        return chunk;
    }

    static void AppendNumber(std::vector<uint8_t>& out, uint32_t value)
    {
        uint8_t groups[5];
        int count = 0;
        do {
            groups[count++] = static_cast<uint8_t>(value & 0x7F);
            value >>= 7;
        } while (value != 0);
        while (count > 0) {
            --count;
            out.push_back(static_cast<uint8_t>(groups[count] | (count > 0 ? 0x80 : 0)));
        }
    }
    static void AppendWord32(std::vector<uint8_t>& out, uint32_t value)
    {
        for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(value >> shift));
    }

private:
    void Add(int tick, int order, std::vector<uint8_t> bytes)
    {
        messages_.push_back({tick, order, static_cast<int>(messages_.size()), std::move(bytes)});
    }

    std::vector<TimedMessage> messages_;
};

std::vector<uint8_t> Text(const std::string& text)
{
    return std::vector<uint8_t>(text.begin(), text.end());
}

std::vector<uint8_t> TimeSignature(const GroovePattern& p)
{
    int log2 = 0;
    while ((1 << log2) < p.denominator) ++log2;
    return {static_cast<uint8_t>(p.numerator), static_cast<uint8_t>(log2), 24, 8};
}

void AddConductor(TrackBuilder& track, const GroovePattern& p)
{
    const uint32_t micros = static_cast<uint32_t>(60000000 / p.tempo);
    track.Meta(0, 0x03, Text(p.title));
    track.Meta(0, 0x58, TimeSignature(p));
    track.Meta(0, 0x51,
               {static_cast<uint8_t>(micros >> 16), static_cast<uint8_t>(micros >> 8), static_cast<uint8_t>(micros)});
}

// Adds a part's program change and notes; returns the tick of its last note-off.
int AddPart(TrackBuilder& track, const GroovePattern& p, const PatternTrack& part, bool ownTrack)
{
    const uint8_t channel = static_cast<uint8_t>(part.channel - 1);
    if (ownTrack) {
        // Each track repeats the meter at tick 0: the cleaner counts measures per track, from
        // that track's own time signature (4/4 when it has none).
        track.Meta(0, 0x03, Text(part.name));
        track.Meta(0, 0x58, TimeSignature(p));
    }
    if (part.program >= 0)
        track.Channel(0, kProgram, {static_cast<uint8_t>(0xC0 | channel), static_cast<uint8_t>(part.program)});
    const int stepTicks = p.StepTicks();
    int lastOff = 0;
    auto addNote = [&](int on, int off, int key, int velocity) {
        track.Channel(
            on, kNoteOn,
            {static_cast<uint8_t>(0x90 | channel), static_cast<uint8_t>(key), static_cast<uint8_t>(velocity)});
        // Note-off as note-on with velocity 0 where running status is wanted.
        if (p.runningStatus)
            track.Channel(off, kNoteOff, {static_cast<uint8_t>(0x90 | channel), static_cast<uint8_t>(key), 0});
        else
            track.Channel(off, kNoteOff, {static_cast<uint8_t>(0x80 | channel), static_cast<uint8_t>(key), 64});
        lastOff = std::max(lastOff, off);
    };
    for (const GridNote& n : part.notes) {
        const int on = p.StepTick(n.step);
        // Drum hits are short; pitched notes sound until just before the next step.
        const int off = part.IsDrums() ? on + std::max(1, stepTicks / 2)
                                       : p.StepTick(n.step + n.steps) - std::max(1, stepTicks / 8);
        addNote(on, off, n.key, n.velocity);
    }
    return lastOff;
}

}   // namespace

std::vector<uint8_t> RenderMidiFile(const GroovePattern& p)
{
    std::vector<TrackBuilder> tracks(p.format == 0 ? 1 : p.tracks.size() + 1);
    AddConductor(tracks[0], p);
    int endTick = p.bars * p.BarTicks();
    bool endingPlaced = false;
    for (size_t i = 0; i < p.tracks.size(); ++i) {
        TrackBuilder& track = tracks[p.format == 0 ? 0 : i + 1];
        endTick = std::max(endTick, AddPart(track, p, p.tracks[i], p.format != 0));
        if (p.tracks[i].IsDrums() && !endingPlaced && !p.ending.empty()) {
            // The closing hits on the downbeat after the last bar go with the first drum part.
            PatternTrack ending = p.tracks[i];
            ending.program = -1;
            ending.notes.clear();
            for (int key : p.ending) ending.notes.push_back({p.bars * p.stepsPerBar, 1, key, 110});
            endTick = std::max(endTick, AddPart(track, p, ending, false));
            endingPlaced = true;
        }
    }
    std::vector<uint8_t> file = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, static_cast<uint8_t>(p.format)};
    file.push_back(static_cast<uint8_t>(tracks.size() >> 8));
    file.push_back(static_cast<uint8_t>(tracks.size()));
    file.push_back(static_cast<uint8_t>(p.division >> 8));
    file.push_back(static_cast<uint8_t>(p.division));
    for (TrackBuilder& track : tracks) {
        const std::vector<uint8_t> chunk = track.Chunk(p.runningStatus, endTick);
        file.insert(file.end(), chunk.begin(), chunk.end());
    }
    return file;
}

}   // namespace grooves
