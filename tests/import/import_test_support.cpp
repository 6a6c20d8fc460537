#include "tests/import/import_test_support.h"

#include "stavio/document/pitch.h"
#include "stavio/document_builder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace import_test {

namespace {

void Put(Bytes& out, uint32_t value, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void PutNumber(Bytes& out, uint32_t value)
{
    Bytes groups{static_cast<uint8_t>(value & 0x7F)};
    while ((value >>= 7) != 0) groups.push_back(static_cast<uint8_t>(0x80 | (value & 0x7F)));
    out.insert(out.end(), groups.rbegin(), groups.rend());
}

}  // namespace

Bytes Chunk(const char* id, const Bytes& body)
{
    Bytes out(id, id + 4);
    Put(out, static_cast<uint32_t>(body.size()), 4);
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

Bytes Header(int format, int tracks, int division)
{
    Bytes body;
    for (int word : {format, tracks, division}) Put(body, static_cast<uint32_t>(word), 2);
    return Chunk("MThd", body);
}

Bytes Concat(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

Bytes DrumFile(int tpq, int numerator, int denominator, std::vector<DrumHit> hits)
{
    std::vector<std::pair<int64_t, Bytes>> messages;
    for (const DrumHit& hit : hits) {
        messages.push_back({hit.tick, {0x99, static_cast<uint8_t>(hit.key), 100}});
        messages.push_back({hit.tick + 10, {0x89, static_cast<uint8_t>(hit.key), 0}});
    }
    std::stable_sort(messages.begin(), messages.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    const auto power = static_cast<uint8_t>(__builtin_ctz(static_cast<unsigned>(denominator)));
    Bytes body{0x00, 0xFF, 0x58, 4, static_cast<uint8_t>(numerator), power, 24, 8};
    int64_t now = 0;
    for (const auto& [tick, bytes] : messages) {
        PutNumber(body, static_cast<uint32_t>(tick - now));
        now = tick;
        body.insert(body.end(), bytes.begin(), bytes.end());
    }
    body.insert(body.end(), {0x00, 0xFF, 0x2F, 0x00});
    return Concat({Header(0, 1, tpq), Chunk("MTrk", body)});
}

// A plain reading of a well-formed file: standard running status, meta and sysex by length.
Listing ListDrumHits(const Bytes& file)
{
    Listing listing;
    auto word = [&](size_t at, int count) {
        uint32_t value = 0;
        for (int i = 0; i < count; ++i) value = value << 8 | file.at(at + static_cast<size_t>(i));
        return value;
    };
    listing.tpq = static_cast<int>(word(12, 2));
    bool meterFound = false;
    for (size_t pos = 8 + word(4, 4); pos + 8 <= file.size(); pos += 8 + word(pos + 4, 4)) {
        const size_t end = pos + 8 + word(pos + 4, 4);
        size_t at = pos + 8;
        int64_t tick = 0;
        uint8_t running = 0;
        auto number = [&] {
            uint32_t value = 0;
            for (uint8_t byte = 0x80; byte & 0x80;) value = value << 7 | ((byte = file.at(at++)) & 0x7F);
            return value;
        };
        while (at < end) {
            tick += number();
            const uint8_t status = file.at(at);
            if (status == 0xFF || status == 0xF0 || status == 0xF7) {
                const uint8_t type = file.at(at + 1);
                at += status == 0xFF ? 2 : 1;
                const uint32_t length = number();
                if (status == 0xFF && type == 0x58 && tick == 0 && !meterFound) {
                    meterFound = true;
                    listing.numerator = file.at(at);
                    listing.denominator = 1 << file.at(at + 1);
                }
                at += length;
                continue;
            }
            running = status >= 0x80 ? file.at(at++) : running;
            const uint8_t key = file.at(at++);
            const bool twoBytes = (running & 0xF0) != 0xC0 && (running & 0xF0) != 0xD0;
            if (twoBytes && file.at(at++) > 0 && running == 0x99) listing.hits.push_back({tick, key});
        }
    }
    std::stable_sort(listing.hits.begin(), listing.hits.end(),
                     [](const DrumHit& a, const DrumHit& b) { return a.tick < b.tick; });
    return listing;
}

Bytes ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

std::string GrooveFolder() { return std::string(TAMBERLYNE_SOURCE_TREE) + "/grooves/Tamberlyne"; }

std::vector<std::string> GrooveFiles()
{
    std::vector<std::string> paths;
    for (const auto& item : std::filesystem::directory_iterator(GrooveFolder())) {
        if (item.path().extension() == ".mid") paths.push_back(item.path().string());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

stavio::Document DrumDocument(int measures, int16_t beats, int16_t divbeat)
{
    return stavio::DocumentBuilder().Measures(measures, beats, divbeat).Staff("Drum Set").DrumStaff(1).Staff("Piano").Build();
}

EREGION Region(int slot, int first, int last)
{
    const auto s = static_cast<uint16_t>(slot);
    return EREGION{{0, s, static_cast<uint16_t>(first), 0}, {0, s, static_cast<uint16_t>(last), 0x7FFFFFFF}};
}

std::string Describe(const stavio::FrameContent& frame)
{
    std::string text;
    for (const EXENTRY& entry : frame.entries) {
        text += (text.empty() ? "" : " | ") + std::to_string(entry.elldur) + "+" + std::to_string(entry.actdur);
        text += entry.dura != entry.actdur ? "=" + std::to_string(entry.dura) : "";
        text += (entry.ef & kEntryInTuplet) != 0 ? "t" : "";
        text += (entry.ef & kEntryIsNote) == 0 ? ":r" : "";
        for (int i = 0; (entry.ef & kEntryIsNote) != 0 && i < entry.numNotes; ++i) {
            text += (i == 0 ? ":" : ",") + std::to_string(stavio::NoteToMidiKey(entry.note[i].tcd, entry.note[i].alteration));
        }
    }
    return text;
}

std::string Describe(const stavio::Document& doc, int32_t inst, int32_t meas)
{
    const std::optional<stavio::FrameContent> frame = doc.Frame(inst, meas, 0);
    return frame ? Describe(*frame) : "(no frame)";
}

}  // namespace import_test
