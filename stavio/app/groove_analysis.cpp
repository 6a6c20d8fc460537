#include "stavio/app/groove_analysis.h"

#include "stavio/document/percussion_map.h"
#include "stavio/midi_import/smf_reader.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>

namespace stavio::app {

namespace {

using midi_import::SmfEvent;
using midi_import::SmfFile;
using midi_import::SmfTrack;

constexpr int64_t kEduPerQuarter = 1024;
constexpr int64_t kGridTolerance = 8;   // EDU a programmed hit may lie off its grid point
constexpr int kClosingHitPercent = 70;

bool IsDrumMessage(const SmfEvent& event)
{
    return event.status >= 0x80 && event.status < 0xF0 && (event.status & 0x0F) == 9;
}

bool IsDrumHit(const SmfEvent& event)
{
    return (event.status & 0xF0) == 0x90 && IsDrumMessage(event) && event.data2 > 0;
}

struct Meter {
    int numerator = 4;
    int denominator = 4;
};

// The time signature at the start of a track (4/4 without one), as the plug-in counts bars.
Meter StartMeter(const SmfFile& smf, const SmfTrack& track)
{
    Meter meter;
    for (const SmfEvent& event : track.events) {
        if (event.tick > 0) {
            break;
        }
        const midi_import::EventData data = smf.DataOf(event);
        if (event.IsMeta(midi_import::kMetaTimeSignature) && data.size >= 2) {
            meter.numerator = data[0];
            meter.denominator = 1 << std::min<int>(data[1], 7);
        }
    }
    return meter;
}

int64_t BarTicks(const Meter& meter, int ticksPerQuarter)
{
    return int64_t{meter.numerator} * (4 * int64_t{ticksPerQuarter} / meter.denominator);
}

// A time signature after the start: the plug-in refuses the file.
std::optional<std::string> MeterChange(const SmfFile& smf)
{
    for (const SmfTrack& track : smf.tracks) {
        const Meter start = StartMeter(smf, track);
        const int64_t barTicks = std::max<int64_t>(1, BarTicks(start, smf.ticksPerQuarter));
        for (const SmfEvent& event : track.events) {
            const midi_import::EventData data = smf.DataOf(event);
            if (event.tick == 0 || !event.IsMeta(midi_import::kMetaTimeSignature) || data.size < 2) {
                continue;
            }
            const Meter next{data[0], 1 << std::min<int>(data[1], 7)};
            const std::string bar = "bar " + std::to_string(event.tick / barTicks + 1);
            if (next.numerator == start.numerator && next.denominator == start.denominator) {
                return "it sets its time signature again in " + bar +
                       "; the plug-in refuses a time signature after the start";
            }
            return "its meter changes in " + bar + " (" + std::to_string(start.numerator) + "/" +
                   std::to_string(start.denominator) + " to " + std::to_string(next.numerator) + "/" +
                   std::to_string(next.denominator) + "); the plug-in takes grooves in one meter only";
        }
    }
    return std::nullopt;
}

std::vector<KitPiece> KitOf(const SmfTrack& track)
{
    const PercussionMap kit = GeneralMidiKit();
    std::map<int, KitPiece> pieces;
    for (const SmfEvent& event : track.events) {
        if (IsDrumHit(event)) {
            const PercussionNote* piece = kit.ForKey(event.data1);
            pieces[event.data1] =
                KitPiece{event.data1, piece != nullptr ? piece->name : "Key " + std::to_string(event.data1)};
        }
    }
    std::vector<KitPiece> list;
    for (const auto& [key, piece] : pieces) {
        list.push_back(piece);
    }
    return list;
}

bool Near(int64_t value, int64_t target)
{
    return std::llabs(value - target) <= kGridTolerance;
}

// Where the hits fall inside their beats: a quarter note, or in a compound meter (6/8, 9/8,
// 12/8) a dotted quarter, whose three eighths are its natural thirds.
GrooveFeel FeelOf(const SmfTrack& track, const Meter& meter, int ticksPerQuarter)
{
    const bool compound = meter.denominator >= 8 && meter.numerator >= 6 && meter.numerator % 3 == 0;
    const int64_t beat = compound ? 3 * 4 * kEduPerQuarter / meter.denominator : kEduPerQuarter;
    const int64_t bar = meter.numerator * 4 * kEduPerQuarter / meter.denominator;
    const int64_t sixteenth = kEduPerQuarter / 4;
    bool eighth = false;     // the off-beat eighth: straight eighths, or swung sixteenths
    bool straight = false;   // sixteenths on their straight places
    bool triplet = false;    // thirds of the beat
    bool late = false;       // off both grids: swung
    for (const SmfEvent& event : track.events) {
        if (!IsDrumHit(event)) {
            continue;
        }
        const int64_t inBeat = (event.tick * kEduPerQuarter / ticksPerQuarter) % bar % beat;
        const int64_t inSixteenth = inBeat % sixteenth;
        if (Near(inBeat, 0) || Near(inBeat, beat)) {
            continue;
        }
        if (Near(inBeat, beat / 3) || Near(inBeat, 2 * beat / 3)) {
            triplet = true;
        } else if (!compound && Near(inBeat, beat / 2)) {
            eighth = true;
        } else if (Near(inSixteenth, 0) || Near(inSixteenth, sixteenth)) {
            straight = true;
        } else {
            late = true;
        }
    }
    if (late && !straight && !triplet) {
        return GrooveFeel::Swing;   // swung sixteenths keep the eighths in place
    }
    if ((triplet || late) && (eighth || straight)) {
        return GrooveFeel::Mixed;
    }
    if (late) {
        return GrooveFeel::Swing;
    }
    return triplet ? GrooveFeel::Triplet : GrooveFeel::Straight;
}

bool ReadBytes(const std::string& path, std::vector<uint8_t>& bytes)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

uint32_t ReadBigEndian32(const std::vector<uint8_t>& bytes, size_t at)
{
    return (uint32_t{bytes[at]} << 24) | (uint32_t{bytes[at + 1]} << 16) | (uint32_t{bytes[at + 2]} << 8) |
           bytes[at + 3];
}

}   // namespace

const char* FeelName(GrooveFeel feel)
{
    switch (feel) {
        case GrooveFeel::Triplet: return "triplet";
        case GrooveFeel::Swing: return "swing";
        case GrooveFeel::Mixed: return "mixed";
        default: return "straight";
    }
}

bool IsOfferedGrooveName(const std::string& file)
{
    if (file.size() <= 4 || file == kTemporaryGrooveFileName) {
        return false;
    }
    const std::string extension = file.substr(file.size() - 4);
    return extension == ".mid" || extension == ".MID" || extension == ".Mid";
}

bool LooksLikeGrooveName(const std::string& file)
{
    if (file.size() <= 4) {
        return false;
    }
    std::string extension = file.substr(file.size() - 4);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".mid";
}

GrooveSummary AnalyseGrooveFile(const std::string& path, const std::string& file)
{
    GrooveSummary groove;
    groove.file = file;
    groove.name = file.size() > 4 ? file.substr(0, file.size() - 4) : file;
    std::vector<uint8_t> bytes;
    if (!ReadBytes(path, bytes)) {
        groove.refusal = "it cannot be opened";
        return groove;
    }
    if (bytes.empty()) {
        groove.refusal = "the file is empty";
        return groove;
    }
    SmfFile smf;
    std::string error;
    if (!midi_import::ReadSmf(bytes, file, smf, error)) {
        const std::string prefix = file + ": ";
        groove.refusal = "it cannot be read as a MIDI file: " +
                         (error.compare(0, prefix.size(), prefix) == 0 ? error.substr(prefix.size()) : error);
        return groove;
    }
    if (smf.ticksPerQuarter <= 0 || smf.tracks.empty()) {
        groove.refusal = "it cannot be read as a MIDI file: it has no tracks or no ticks per quarter note";
        return groove;
    }
    if (const std::optional<std::string> change = MeterChange(smf)) {
        groove.refusal = *change;
        return groove;
    }
    const Meter meter = StartMeter(smf, smf.tracks.front());
    if (meter.numerator < 1) {
        groove.refusal = "its time signature has no beats (0/" + std::to_string(meter.denominator) + ")";
        return groove;
    }
    groove.numerator = meter.numerator;
    groove.denominator = meter.denominator;
    groove.tempo = midi_import::StartTempo(smf);

    const auto drums = std::find_if(smf.tracks.begin(), smf.tracks.end(), [](const SmfTrack& track) {
        return std::any_of(track.events.begin(), track.events.end(), IsDrumMessage);
    });
    if (drums == smf.tracks.end()) {
        groove.refusal = "it holds no drum notes (nothing on MIDI channel 10)";
        return groove;
    }
    groove.drumTrack = static_cast<int>(drums - smf.tracks.begin());
    groove.kit = KitOf(*drums);
    if (groove.kit.empty()) {
        groove.refusal = "it holds no drum notes (its channel-10 messages sound no note)";
        return groove;
    }

    // Bars are counted with the drum track's own meter; the closing-hit test measures against
    // the groove's meter, as the plug-in does.
    const auto last = std::find_if(drums->events.rbegin(), drums->events.rend(), IsDrumMessage);
    const int64_t trackBar = std::max<int64_t>(1, BarTicks(StartMeter(smf, *drums), smf.ticksPerQuarter));
    const int64_t grooveBar = std::max<int64_t>(1, BarTicks(meter, smf.ticksPerQuarter));
    groove.bars = static_cast<int>(last->tick / trackBar + 1);
    const int64_t tickInBar = last->tick % trackBar;
    if (tickInBar * 100 / grooveBar < kClosingHitPercent && groove.bars > 1) {
        --groove.bars;
        groove.closingHits = true;
    }
    groove.feel = FeelOf(*drums, meter, smf.ticksPerQuarter);
    return groove;
}

std::vector<uint8_t> ImportedTracksImage(const std::vector<uint8_t>& bytes, int drumTrack)
{
    constexpr size_t kChunkHeader = 8;
    if (bytes.size() < kChunkHeader + 6) {
        return {};
    }
    const size_t headerEnd = kChunkHeader + ReadBigEndian32(bytes, 4);
    if (headerEnd > bytes.size()) {
        return {};
    }
    std::vector<uint8_t> image(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(headerEnd));
    uint16_t kept = 0;
    int track = 0;
    for (size_t at = headerEnd; at + kChunkHeader <= bytes.size();) {
        const size_t end = at + kChunkHeader + ReadBigEndian32(bytes, at + 4);
        if (end > bytes.size()) {
            return {};
        }
        if (std::equal(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                       bytes.begin() + static_cast<std::ptrdiff_t>(at + 4), "MTrk")) {
            if (track == 0 || track == drumTrack) {
                image.insert(image.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                             bytes.begin() + static_cast<std::ptrdiff_t>(end));
                ++kept;
            }
            ++track;
        }
        at = end;
    }
    image[10] = static_cast<uint8_t>(kept >> 8);
    image[11] = static_cast<uint8_t>(kept & 0xFF);
    return image;
}

}   // namespace stavio::app
