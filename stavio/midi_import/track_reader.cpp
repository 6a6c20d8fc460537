#include "stavio/midi_import/track_reader.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <unordered_set>

namespace stavio::midi_import {

namespace {

// How messages sent with running status are read.
enum class Reading : uint8_t {
    Standard,   // by the running status byte
    Unsure,     // after 0x89 0x00 0x40: not decided yet
    TwoBytes,   // decided: two data bytes each
    OneByte,    // decided: one data byte each (the original message had one)
};

// Where the reading stands: at the start of an event.
struct Cursor {
    size_t pos = 0;
    int64_t tick = 0;
    uint8_t running = 0;
    Reading reading = Reading::Standard;

    // What decides how the rest of the track reads: not the tick.
    uint64_t State() const
    {
        return static_cast<uint64_t>(pos) << 10 | static_cast<uint64_t>(running) << 2 | static_cast<uint64_t>(reading);
    }
};

struct Fault {
    size_t pos = 0;
    std::string what;
};

enum class Step {
    Event,
    End,
    Fault
};

constexpr uint8_t kStatusBit = 0x80;
constexpr int64_t kLastTick = UINT32_MAX;   // an event's tick is kept in 32 bits
constexpr uint8_t kNeutralisedStatus = 0x89;
constexpr uint8_t kNeutralisedKey = 0x00;
constexpr uint8_t kNeutralisedVelocity = 0x40;

int DataBytesOf(uint8_t status)
{
    const uint8_t kind = status & 0xF0;
    return kind == 0xC0 || kind == 0xD0 ? 1 : 2;
}

std::string Hex(unsigned value, int digits)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%0*X", digits, value);
    return text;
}

class TrackReader {
public:
    TrackReader(const std::vector<uint8_t>& bytes, size_t end, std::vector<uint8_t>& dataStore)
        : bytes_(bytes), end_(end), dataStore_(dataStore)
    {}

    // Reads one event at `at`, moving it on. `branched` tells that an unsure run was read with
    // two data bytes and one data byte remains to be tried from the same cursor.
    Step Read(Cursor& at, SmfEvent& event, bool& branched, Fault& fault)
    {
        branched = false;
        if (at.pos == end_) {
            return Step::End;   // no end-of-track event: the chunk's end closes the track
        }
        int64_t delta = 0;
        if (!Number(at.pos, delta, fault)) {
            return Step::Fault;
        }
        at.tick += delta;
        if (at.tick > kLastTick) {
            return Fail(fault, at.pos, "the track runs past tick " + std::to_string(kLastTick));
        }
        event = SmfEvent{};
        event.tick = static_cast<uint32_t>(at.tick);
        if (at.pos == end_) {
            return Fail(fault, at.pos, "the track ends after a delta time, without an event");
        }
        const size_t statusPos = at.pos;
        const uint8_t first = bytes_[at.pos];
        if (first >= kStatusBit) {
            ++at.pos;
            if (first == 0xFF || first == 0xF0 || first == 0xF7) {
                return MetaOrSysex(at, first, event, fault);
            }
            if (first > 0xEF) {
                return Fail(fault, statusPos, "system message " + Hex(first, 2) + " has no place in a file");
            }
            event.status = first;
            if (!Data(at.pos, DataBytesOf(first), event, fault)) {
                return Step::Fault;
            }
            at.running = first;
            const bool neutralised =
                first == kNeutralisedStatus && event.data1 == kNeutralisedKey && event.data2 == kNeutralisedVelocity;
            at.reading = neutralised ? Reading::Unsure : Reading::Standard;
            return Step::Event;
        }
        if (at.running == 0) {
            return Fail(fault, statusPos, "running status is used before any status byte");
        }
        event.status = at.running;
        int count = DataBytesOf(at.running);
        if (at.reading == Reading::Unsure) {
            at.reading = Reading::TwoBytes;
            branched = true;
        }
        if (at.reading == Reading::TwoBytes) {
            count = 2;
        } else if (at.reading == Reading::OneByte) {
            count = 1;
        }
        return Data(at.pos, count, event, fault) ? Step::Event : Step::Fault;
    }

private:
    Step MetaOrSysex(Cursor& at, uint8_t status, SmfEvent& event, Fault& fault)
    {
        event.status = status;
        if (status == 0xFF) {
            if (at.pos == end_) {
                return Fail(fault, at.pos, "the track ends inside a meta event");
            }
            event.data1 = bytes_[at.pos++];
        }
        int64_t length = 0;
        const size_t lengthPos = at.pos;
        if (!Number(at.pos, length, fault)) {
            return Step::Fault;
        }
        if (static_cast<uint64_t>(length) > end_ - at.pos) {
            return Fail(fault, lengthPos,
                        std::string(status == 0xFF ? "meta event " + Hex(event.data1, 2) : "system-exclusive message") +
                            " claims " + std::to_string(length) + " bytes; the track has " +
                            std::to_string(end_ - at.pos) + " left");
        }
        StoreData(event, at.pos, static_cast<uint32_t>(length));
        at.pos += static_cast<size_t>(length);
        return status == 0xFF && event.data1 == kMetaEndOfTrack ? Step::End : Step::Event;
    }

    bool Data(size_t& pos, int count, SmfEvent& event, Fault& fault)
    {
        uint8_t values[2] = {0, 0};
        for (int i = 0; i < count; ++i) {
            if (pos == end_) {
                Fail(fault, pos, "the track ends inside a message of status " + Hex(event.status, 2));
                return false;
            }
            values[i] = bytes_[pos];
            if (values[i] >= kStatusBit) {
                Fail(fault, pos,
                     "data byte expected in a message of status " + Hex(event.status, 2) + ", found " +
                         Hex(values[i], 2));
                return false;
            }
            ++pos;
        }
        event.data1 = values[0];
        event.data2 = values[1];
        return true;
    }

    // A variable-length quantity of at most four bytes.
    bool Number(size_t& pos, int64_t& value, Fault& fault)
    {
        const size_t start = pos;
        value = 0;
        for (int i = 0; i < 4; ++i) {
            if (pos == end_) {
                Fail(fault, start, "the track ends inside a variable-length number");
                return false;
            }
            const uint8_t byte = bytes_[pos++];
            value = value << 7 | (byte & 0x7F);
            if (byte < kStatusBit) {
                return true;
            }
        }
        Fail(fault, start, "variable-length number longer than four bytes");
        return false;
    }

    // The event's data, after its length, at the end of the data store.
    void StoreData(SmfEvent& event, size_t pos, uint32_t length)
    {
        event.dataAt = static_cast<uint32_t>(dataStore_.size());
        uint8_t size[sizeof(length)];
        std::memcpy(size, &length, sizeof(length));
        dataStore_.insert(dataStore_.end(), size, size + sizeof(size));
        dataStore_.insert(dataStore_.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(pos),
                          bytes_.begin() + static_cast<std::ptrdiff_t>(pos + length));
    }

    static Step Fail(Fault& fault, size_t pos, std::string what)
    {
        fault.pos = pos;
        fault.what = std::move(what);
        return Step::Fault;
    }

    const std::vector<uint8_t>& bytes_;
    size_t end_;
    std::vector<uint8_t>& dataStore_;
};

// A decision still open: the unsure run at `alternative` read with one data byte each.
struct OpenChoice {
    Cursor alternative;
    size_t events;    // events read before it
    size_t visited;   // states visited before it (those after it die when it is taken)
    size_t data;      // the data store's size before it
};

constexpr size_t kNoFault = SIZE_MAX;

struct Search {
    bool complete = false;            // a reading reached the track's end
    Fault furthest;                   // else the fault furthest into the track
    size_t furthestIndex = 0;         // which fault of the search that was (from 0)
    bool eventsAreFurthest = false;   // the events read are those of that reading
};

// The search over the readings of unsure runs, newest decision first. With `stopAt` it
// returns at that fault, with the events of the reading that met it.
Search SearchReadings(TrackReader& reader, size_t begin, std::vector<SmfEvent>& events, std::vector<uint8_t>& dataStore,
                      size_t stopAt)
{
    std::vector<OpenChoice> choices;
    std::vector<uint64_t> visited;       // states on the current reading since the first choice
    std::unordered_set<uint64_t> dead;   // states from which no reading reaches the track's end
    Search search;
    size_t faults = 0;
    Cursor at;
    at.pos = begin;
    for (;;) {
        if (dead.empty() || dead.count(at.State()) == 0) {
            if (!choices.empty()) {
                visited.push_back(at.State());
            }
            const Cursor before = at;
            SmfEvent event;
            bool branched = false;
            Fault fault;
            const Step step = reader.Read(at, event, branched, fault);
            if (branched) {
                Cursor alternative = before;
                alternative.reading = Reading::OneByte;
                choices.push_back(OpenChoice{alternative, events.size(), visited.size(), dataStore.size()});
            }
            if (step == Step::Event || (step == Step::End && event.status == 0xFF)) {
                events.push_back(event);
            }
            if (step == Step::End) {
                search.complete = true;
                return search;
            }
            if (step == Step::Event) {
                continue;
            }
            if (faults == stopAt) {
                search.furthest = fault;
                search.furthestIndex = faults;
                search.eventsAreFurthest = true;
                return search;
            }
            if (faults == 0 || fault.pos >= search.furthest.pos) {
                search.furthest = fault;
                search.furthestIndex = faults;
                search.eventsAreFurthest = true;
            }
            ++faults;
        }
        if (choices.empty()) {
            return search;
        }
        const OpenChoice choice = choices.back();
        choices.pop_back();
        for (size_t i = choice.visited; i < visited.size(); ++i) {
            dead.insert(visited[i]);
        }
        visited.resize(choice.visited);
        events.resize(choice.events);
        dataStore.resize(choice.data);
        search.eventsAreFurthest = false;
        at = choice.alternative;
    }
}

}   // namespace

bool ReadTrackEvents(const std::vector<uint8_t>& bytes, size_t begin, size_t end, SmfTrack& track,
                     std::vector<uint8_t>& dataStore, std::string& error)
{
    std::vector<SmfEvent>& events = track.events;
    events.clear();
    if (begin > end || end > bytes.size()) {
        error = "track bounds lie outside the file";
        return false;
    }
    // No event is shorter than two bytes; what is reserved and never reached is never touched.
    events.reserve((end - begin) / 2 + 1);
    const size_t dataBefore = dataStore.size();
    TrackReader reader(bytes, end, dataStore);
    Search search = SearchReadings(reader, begin, events, dataStore, kNoFault);
    if (search.complete) {
        return true;
    }
    if (!search.eventsAreFurthest) {
        events.clear();
        dataStore.resize(dataBefore);
        search = SearchReadings(reader, begin, events, dataStore, search.furthestIndex);
    }
    error = "at byte " + Hex(static_cast<unsigned>(search.furthest.pos), 8) + ": " + search.furthest.what;
    return false;
}

}   // namespace stavio::midi_import
