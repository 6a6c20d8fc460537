#include "tests/support/smf.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <stdexcept>

namespace support {

Bytes Chunk(const char* id, const Bytes& body)
{
    // Sized once and filled in place: growing the vector by insert sends GCC 12's -O2 bounds
    // analysis down a reallocation path it misreads (a false -Warray-bounds in the library).
    Bytes chunk(8 + body.size());
    std::copy(id, id + 4, chunk.begin());
    const auto length = static_cast<uint32_t>(body.size());
    for (size_t i = 0; i < 4; ++i) chunk[4 + i] = static_cast<uint8_t>(length >> (24 - 8 * i));
    std::copy(body.begin(), body.end(), chunk.begin() + 8);
    return chunk;
}

Bytes Concat(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes Header(int format, int tracks, int division)
{
    return Chunk("MThd", {uint8_t(format >> 8), uint8_t(format), uint8_t(tracks >> 8), uint8_t(tracks),
                          uint8_t(division >> 8), uint8_t(division)});
}

Bytes Smf(int format, int division, const std::vector<Bytes>& trackBodies, int trackCountField)
{
    Bytes file = Header(format, trackCountField >= 0 ? trackCountField : int(trackBodies.size()), division);
    for (const Bytes& body : trackBodies) {
        const Bytes chunk = Chunk("MTrk", body);
        file.insert(file.end(), chunk.begin(), chunk.end());
    }
    return file;
}

void PutNumber(Bytes& out, uint32_t value)
{
    Bytes groups{uint8_t(value & 0x7F)};
    while ((value >>= 7) != 0) groups.push_back(uint8_t(0x80 | (value & 0x7F)));
    out.insert(out.end(), groups.rbegin(), groups.rend());
}

Bytes DrumFile(int tpq, int numerator, int denominator, std::vector<DrumHit> hits, int offAfter)
{
    std::vector<std::pair<int64_t, Bytes>> messages;
    for (const DrumHit& hit : hits) {
        const auto channel = uint8_t(hit.channel - 1);
        messages.push_back({hit.tick, {uint8_t(0x90 | channel), uint8_t(hit.key), 100}});
        messages.push_back({hit.tick + offAfter, {uint8_t(0x80 | channel), uint8_t(hit.key), 0}});
    }
    std::stable_sort(messages.begin(), messages.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    const auto power = uint8_t(__builtin_ctz(unsigned(denominator)));
    Bytes body{0x00, 0xFF, 0x58, 4, uint8_t(numerator), power, 24, 8};
    int64_t now = 0;
    for (const auto& [tick, bytes] : messages) {
        PutNumber(body, uint32_t(tick - now));
        now = tick;
        body.insert(body.end(), bytes.begin(), bytes.end());
    }
    return Smf(0, tpq, {Concat({body, kEndOfTrack})});
}

namespace {

struct Cursor {
    const Bytes& bytes;
    size_t pos = 0;
    size_t end = 0;
    uint8_t Byte()
    {
        if (pos >= end) throw std::runtime_error("chunk ends inside an event");
        return bytes[pos++];
    }
    uint32_t Fixed(int count)
    {
        uint32_t value = 0;
        for (int i = 0; i < count; ++i) value = value << 8 | Byte();
        return value;
    }
    uint32_t Variable()
    {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            const uint8_t b = Byte();
            value = value << 7 | (b & 0x7F);
            if (b < 0x80) return value;
        }
        throw std::runtime_error("variable-length number longer than four bytes");
    }
};

// Lists the track into `events`; throws at a fault, the events before it listed.
void ListTrack(Cursor& in, std::vector<SmfEvent>& events)
{
    int32_t tick = 0;
    uint8_t running = 0;
    while (in.pos < in.end) {
        SmfEvent ev;
        tick += static_cast<int32_t>(in.Variable());
        ev.tick = tick;
        const uint8_t first = in.Byte();
        if (first == 0xFF || first == 0xF0 || first == 0xF7) {
            ev.status = first;
            if (first == 0xFF) ev.data1 = in.Byte();
            const uint32_t length = in.Variable();
            if (length > in.end - in.pos) throw std::runtime_error("meta or sysex runs past its chunk");
            ev.data.assign(in.bytes.begin() + long(in.pos), in.bytes.begin() + long(in.pos + length));
            in.pos += length;
            running = 0;   // meta and system-exclusive events cancel running status
            events.push_back(ev);
            if (ev.status == 0xFF && ev.data1 == 0x2F) {
                if (in.pos != in.end) throw std::runtime_error("bytes after end of track");
                return;
            }
            continue;
        }
        if (first < 0x80) {
            if (running == 0) throw std::runtime_error("running status without a status");
            ev.status = running;
            ev.data1 = first;
        } else {
            if (first > 0xEF) throw std::runtime_error("system message in a track");
            ev.status = running = first;
            ev.data1 = in.Byte();
        }
        const uint8_t kind = ev.status & 0xF0;
        if (kind != 0xC0 && kind != 0xD0) ev.data2 = in.Byte();
        if (ev.data1 > 127 || ev.data2 > 127) throw std::runtime_error("data byte above 127");
        events.push_back(ev);
    }
    throw std::runtime_error("track without end-of-track event");
}

}   // namespace

SmfListing ListSmf(const Bytes& bytes, bool asFarAsItGoes)
{
    SmfListing file;
    Cursor in{bytes, 0, bytes.size()};
    if (in.Fixed(4) != 0x4D546864 || in.Fixed(4) != 6) throw std::runtime_error("bad header chunk");
    file.format = static_cast<int>(in.Fixed(2));
    file.trackCountField = static_cast<int>(in.Fixed(2));
    file.division = static_cast<int>(in.Fixed(2));
    while (in.pos < bytes.size()) {
        if (asFarAsItGoes && bytes.size() - in.pos < 8) break;
        if (in.Fixed(4) != 0x4D54726B) throw std::runtime_error("chunk is not a track");
        uint32_t length = in.Fixed(4);
        if (length > bytes.size() - in.pos) {
            if (!asFarAsItGoes) throw std::runtime_error("track chunk runs past the file");
            length = static_cast<uint32_t>(bytes.size() - in.pos);
        }
        Cursor track{bytes, in.pos, in.pos + length};
        file.tracks.emplace_back();
        try {
            ListTrack(track, file.tracks.back());
        } catch (const std::runtime_error&) {
            if (!asFarAsItGoes) throw;
        }
        in.pos += length;
    }
    return file;
}

std::string ListingText(const SmfListing& file)
{
    static const char* const kKinds[] = {"off", "on", "key pressure", "control", "program", "pressure", "bend"};
    std::ostringstream out;
    out << "format " << file.format << ", " << file.trackCountField << " tracks, " << file.division
        << " ticks a quarter\n";
    for (size_t track = 0; track < file.tracks.size(); ++track) {
        out << "track " << track << "\n";
        for (const SmfEvent& event : file.tracks[track]) {
            out << std::setw(7) << event.tick << ' ';
            if (event.status < 0xF0) {
                out << kKinds[(event.status >> 4) - 8] << ' ' << event.Channel() << ' ' << int{event.data1};
                if ((event.status & 0xE0) != 0xC0) out << ' ' << int{event.data2};
            } else {
                out << (event.status == 0xFF ? "meta" : "sysex") << std::hex << std::setfill('0');
                if (event.status == 0xFF) out << ' ' << std::setw(2) << int{event.data1};
                if (event.status == 0xFF && event.data1 >= 1 && event.data1 <= 7) {
                    out << " \"" << std::string(event.data.begin(), event.data.end()) << '"';
                } else {
                    for (const uint8_t byte : event.data) out << ' ' << std::setw(2) << int{byte};
                }
                out << std::dec << std::setfill(' ');
            }
            out << '\n';
        }
    }
    return out.str();
}

}   // namespace support
