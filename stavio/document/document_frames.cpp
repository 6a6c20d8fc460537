// The document's entries, frame numbers, running numbers and percussion maps.
#include "sdk/tags.h"
#include "stavio/document/document.h"
#include "stavio/document/host_tags.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace stavio {

namespace {

constexpr uint32_t kLastFrameNumber = 0x7FFF;       // frame numbers are signed 16-bit
constexpr uint32_t kLastEntryNumber = 0x7FFFFFFF;   // entry keys carry them as signed 32-bit
constexpr size_t kMapNameSize = 12;

RecordKey EntriesKey(int32_t inst, int32_t meas, int32_t layer)
{
    return RecordKey::Detail(static_cast<uint16_t>(inst), static_cast<uint16_t>(meas), static_cast<uint16_t>(layer));
}

bool ValidLayer(int32_t layer)
{
    return layer >= 0 && layer < kMaxLayers;
}

// New entries, and copies of an entry earlier in the frame, get fresh numbers.
template <typename NextNumber>
void NumberEntries(FrameContent& content, NextNumber next)
{
    std::set<uint32_t> seen;
    for (EXENTRY& entry : content.entries) {
        const uint32_t number = entry.entnum;   // a copy: the packed field may sit unaligned
        if (number == 0 || !seen.insert(number).second) {
            const uint32_t fresh = next();
            entry.entnum = fresh;
            seen.insert(fresh);
        }
    }
}

}   // namespace

std::optional<FrameContent> Document::Frame(int32_t inst, int32_t meas, int32_t layer) const
{
    if (!StaffExists(inst) || !MeasureExists(meas) || !ValidLayer(layer)) {
        return std::nullopt;
    }
    FrameContent content;
    const RecordStore::Bytes* bytes = records_.Find(kHostTagEntries, EntriesKey(inst, meas, layer));
    if (bytes != nullptr && !DecodeFrame(*bytes, content)) {
        content = FrameContent{};
    }
    return content;
}

void Document::ForEachEntry(int32_t inst, int32_t first, int32_t last,
                            const std::function<void(int32_t meas, int layer, const EXENTRY& entry)>& visit) const
{
    for (int32_t meas = std::max(first, 1); meas <= std::min(last, MeasureCount()); ++meas) {
        for (int layer = 0; layer < kMaxLayers; ++layer) {
            const std::optional<FrameContent> frame = Frame(inst, meas, layer);
            for (const EXENTRY& entry : frame ? frame->entries : std::vector<EXENTRY>()) {
                visit(meas, layer, entry);
            }
        }
    }
}

bool Document::SetFrame(int32_t inst, int32_t meas, int32_t layer, FrameContent& content)
{
    if (!StaffExists(inst) || !MeasureExists(meas) || !ValidLayer(layer) ||
        content.entries.size() > static_cast<size_t>(kMaxFrameEntries) ||
        content.tuplets.size() > static_cast<size_t>(kMaxFrameEntries)) {
        return false;
    }
    int16_t frames[kMaxLayers] = {};
    FrameNumbers(inst, meas, frames);
    const RecordKey key = EntriesKey(inst, meas, layer);
    if (content.Empty()) {
        records_.Erase(kHostTagEntries, key);
        frames[layer] = 0;
    } else {
        NumberEntries(content, [this] { return NextNumber(kCounterEntryNumbers, kLastEntryNumber); });
        records_.Put(kHostTagEntries, key, EncodeFrame(content));
        if (frames[layer] == 0) {
            frames[layer] = static_cast<int16_t>(NextNumber(kCounterFrameNumbers, kLastFrameNumber));
        }
    }
    return SetFrameNumbers(inst, meas, frames);
}

int16_t Document::FrameNumber(int32_t inst, int32_t meas, int32_t layer) const
{
    int16_t frames[kMaxLayers] = {};
    if (!ValidLayer(layer) || !FrameNumbers(inst, meas, frames)) {
        return 0;
    }
    return frames[layer];
}

uint32_t Document::NextNumber(uint16_t counter, uint32_t limit)
{
    const RecordKey key = RecordKey::Number(counter);
    uint32_t last = 0;
    RecordStore::Bytes* bytes = records_.Find(kHostTagCounters, key);
    if (bytes != nullptr) {
        std::memcpy(&last, bytes->data(), std::min(sizeof(last), bytes->size()));
    }
    const uint32_t next = last >= limit ? 1 : last + 1;
    if (bytes != nullptr && bytes->size() == sizeof(next)) {
        std::memcpy(bytes->data(), &next, sizeof(next));   // in place: one number per entry written
        return next;
    }
    RecordStore::Bytes stored(sizeof(next));
    std::memcpy(stored.data(), &next, sizeof(next));
    records_.Put(kHostTagCounters, key, std::move(stored));
    return next;
}

// ---- Percussion maps ------------------------------------------------------------------------------------

const PercussionMap* Document::PercussionMapOf(int number) const
{
    if (number < 1 || number >= kPickNumber ||
        records_.Find(kTagPercussionMapName, RecordKey::Other(static_cast<uint16_t>(number), 0)) == nullptr) {
        return nullptr;
    }
    auto found = percussionMaps_.find(number);
    return found == percussionMaps_.end() ? nullptr : &found->second;
}

void Document::SetPercussionMap(int number, PercussionMap map)
{
    if (number < 1 || number >= kPickNumber) {
        return;
    }
    char name[kMapNameSize] = {};
    std::memcpy(name, map.name.data(), std::min(map.name.size(), sizeof(name)));
    Write(kTagPercussionMapName, RecordKey::Other(static_cast<uint16_t>(number), 0), name, sizeof(name),
          kPluginApiVersion);
    percussionMaps_[number] = std::move(map);
}

void Document::RemovePercussionMap(int number)
{
    if (number < 1 || number >= kPickNumber) {
        return;
    }
    records_.Erase(kTagPercussionMapName, RecordKey::Other(static_cast<uint16_t>(number), 0));
    percussionMaps_.erase(number);
}

}   // namespace stavio
