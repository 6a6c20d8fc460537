#include "stavio/midi_import/smf_reader.h"

#include "stavio/midi_import/track_reader.h"
#include "toolbox/files.h"

#include <cstring>
#include <optional>

namespace stavio::midi_import {

namespace {

constexpr size_t kChunkHeaderSize = 8;   // four-character ID and a 32-bit length
constexpr size_t kHeaderBodySize = 6;    // format, track count, division
constexpr uint32_t kTimeCodeDivision = 0x8000;

uint32_t BigEndian(const std::vector<uint8_t>& bytes, size_t pos, int count)
{
    uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
        value = value << 8 | bytes[pos + static_cast<size_t>(i)];
    }
    return value;
}

bool ChunkIs(const std::vector<uint8_t>& bytes, size_t pos, const char* id)
{
    return std::memcmp(bytes.data() + pos, id, 4) == 0;
}

bool ReadHeader(const std::vector<uint8_t>& bytes, SmfFile& file, uint32_t& trackCount, size_t& next,
                std::string& fault)
{
    if (bytes.size() < kChunkHeaderSize || !ChunkIs(bytes, 0, "MThd")) {
        fault = "not a Standard MIDI File (no \"MThd\" header chunk)";
        return false;
    }
    const uint32_t length = BigEndian(bytes, 4, 4);
    if (length < kHeaderBodySize) {
        fault = "the header chunk is " + std::to_string(length) + " bytes long; it needs 6";
        return false;
    }
    if (length > bytes.size() - kChunkHeaderSize) {
        fault = "the header chunk claims " + std::to_string(length) + " bytes; the file has " +
                std::to_string(bytes.size() - kChunkHeaderSize) + " after it";
        return false;
    }
    file.format = static_cast<int>(BigEndian(bytes, 8, 2));
    trackCount = BigEndian(bytes, 10, 2);
    const uint32_t division = BigEndian(bytes, 12, 2);
    if (file.format > 2) {
        fault = "unknown format " + std::to_string(file.format);
        return false;
    }
    if (trackCount == 0) {
        fault = "the header announces no tracks";
        return false;
    }
    if ((division & kTimeCodeDivision) != 0) {
        fault = "time-code division (frames per second) is not supported: ticks per quarter note are needed";
        return false;
    }
    if (division == 0) {
        fault = "the division is 0 ticks per quarter note";
        return false;
    }
    file.ticksPerQuarter = static_cast<int>(division);
    next = kChunkHeaderSize + length;
    return true;
}

}   // namespace

EventData SmfFile::DataOf(const SmfEvent& event) const
{
    uint32_t size = 0;
    if (static_cast<size_t>(event.dataAt) + sizeof(size) > dataStore.size()) {
        return EventData{};
    }
    std::memcpy(&size, dataStore.data() + event.dataAt, sizeof(size));
    return EventData{dataStore.data() + event.dataAt + sizeof(size), size};
}

bool ReadSmf(const std::vector<uint8_t>& bytes, const std::string& name, SmfFile& file, std::string& error)
{
    file = SmfFile{};
    std::string fault;
    uint32_t trackCount = 0;
    size_t pos = 0;
    if (!ReadHeader(bytes, file, trackCount, pos, fault)) {
        error = name + ": " + fault;
        return false;
    }
    const auto damaged = [&file](std::string what) {
        if (file.damage.empty()) {
            file.damage = std::move(what);
        }
    };
    while (file.tracks.size() < trackCount) {
        const size_t left = bytes.size() - pos;
        if (left < kChunkHeaderSize) {
            damaged("the header announces " + std::to_string(trackCount) + " tracks; the file ends after " +
                    std::to_string(file.tracks.size()));
            break;
        }
        const uint32_t length = BigEndian(bytes, pos + 4, 4);
        const size_t body = pos + kChunkHeaderSize;
        const bool cut = length > left - kChunkHeaderSize;
        if (cut) {
            damaged("the chunk at byte " + std::to_string(pos) + " claims " + std::to_string(length) +
                    " bytes; the file has " + std::to_string(left - kChunkHeaderSize) + " after it");
        }
        const size_t end = cut ? bytes.size() : body + length;
        if (ChunkIs(bytes, pos, "MTrk")) {
            file.tracks.emplace_back();
            if (!ReadTrackEvents(bytes, body, end, file.tracks.back(), file.dataStore, fault)) {
                damaged("track " + std::to_string(file.tracks.size()) + " " + fault);
            }
        }
        if (cut) {
            break;
        }
        pos = end;   // a chunk of another kind is skipped
    }
    return true;
}

bool ReadSmfFile(const std::string& path, SmfFile& file, std::string& error)
{
    std::vector<uint8_t> bytes;
    const toolbox::OSErr status = toolbox::ReadWholeFile(toolbox::FileSpecFromPath(path), bytes);
    if (status != toolbox::kNoErr) {
        file = SmfFile{};
        error = path + ": cannot be read (" +
                (status == toolbox::kFileNotFound || status == toolbox::kDirNotFound ? "no such file" : "read error") +
                ")";
        return false;
    }
    return ReadSmf(bytes, path, file, error);
}

double StartTempo(const SmfFile& file)
{
    std::optional<std::pair<int64_t, double>> first;   // tick, quarter notes a minute
    for (const SmfTrack& track : file.tracks) {
        for (const SmfEvent& event : track.events) {
            const EventData data = file.DataOf(event);
            if (event.IsMeta(kMetaTempo) && data.size >= 3 && (!first || event.tick < first->first)) {
                const uint32_t micros = uint32_t{data[0]} << 16 | uint32_t{data[1]} << 8 | data[2];
                if (micros > 0) {
                    first = std::make_pair(event.tick, 60000000.0 / micros);
                }
            }
        }
    }
    return first ? first->second : kDefaultFileTempo;
}

}   // namespace stavio::midi_import
