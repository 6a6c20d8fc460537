#include "stavio/document/entry_frames.h"

#include <cstring>
#include <utility>

namespace stavio {

namespace {

// Record form: entry count and tuplet count (16 bits each), the entries, the tuplets.
constexpr size_t kHeaderSize = 2 * sizeof(uint16_t);

}   // namespace

std::vector<uint8_t> EncodeFrame(const FrameContent& content)
{
    const auto entries = static_cast<uint16_t>(content.entries.size());
    const auto tuplets = static_cast<uint16_t>(content.tuplets.size());
    std::vector<uint8_t> bytes(kHeaderSize + entries * sizeof(EXENTRY) + tuplets * sizeof(TupletInfo));
    uint8_t* out = bytes.data();
    std::memcpy(out, &entries, sizeof(entries));
    std::memcpy(out + sizeof(entries), &tuplets, sizeof(tuplets));
    out += kHeaderSize;
    if (entries > 0) {
        std::memcpy(out, content.entries.data(), entries * sizeof(EXENTRY));
        out += entries * sizeof(EXENTRY);
    }
    if (tuplets > 0) {
        std::memcpy(out, content.tuplets.data(), tuplets * sizeof(TupletInfo));
    }
    return bytes;
}

bool DecodeFrame(const std::vector<uint8_t>& bytes, FrameContent& content)
{
    if (bytes.size() < kHeaderSize) {
        return false;
    }
    uint16_t entries = 0;
    uint16_t tuplets = 0;
    std::memcpy(&entries, bytes.data(), sizeof(entries));
    std::memcpy(&tuplets, bytes.data() + sizeof(entries), sizeof(tuplets));
    if (bytes.size() != kHeaderSize + entries * sizeof(EXENTRY) + tuplets * sizeof(TupletInfo)) {
        return false;
    }
    const uint8_t* in = bytes.data() + kHeaderSize;
    content.entries.resize(entries);
    content.tuplets.resize(tuplets);
    if (entries > 0) {
        std::memcpy(content.entries.data(), in, entries * sizeof(EXENTRY));
        in += entries * sizeof(EXENTRY);
    }
    if (tuplets > 0) {
        std::memcpy(content.tuplets.data(), in, tuplets * sizeof(TupletInfo));
    }
    return true;
}

EXENTRY NewEntryAfter(const EXENTRY* previous)
{
    EXENTRY entry{};
    entry.ef = kEntryValid;
    if (previous != nullptr) {
        entry.elldur = previous->elldur + previous->actdur;
    }
    return entry;
}

bool InsertEntries(FrameContent& content, int32_t index, int32_t count)
{
    const auto size = static_cast<int32_t>(content.entries.size());
    if (index < 0 || index > size || count < 1 || count > kMaxFrameEntries - size) {
        return false;
    }
    const EXENTRY fresh = NewEntryAfter(index > 0 ? &content.entries[static_cast<size_t>(index - 1)] : nullptr);
    content.entries.insert(content.entries.begin() + index, static_cast<size_t>(count), fresh);
    for (TupletInfo& tuplet : content.tuplets) {
        if (tuplet.stoff >= index) {
            tuplet.stoff = static_cast<int16_t>(tuplet.stoff + count);
            tuplet.enoff = static_cast<int16_t>(tuplet.enoff + count);
        } else if (tuplet.enoff >= index) {
            tuplet.enoff = static_cast<int16_t>(tuplet.enoff + count);   // new entries inside it
        }
    }
    return true;
}

bool DeleteEntries(FrameContent& content, int32_t index, int32_t count)
{
    const auto size = static_cast<int32_t>(content.entries.size());
    if (index < 0 || index >= size || count < 1 || count > size - index) {
        return false;
    }
    content.entries.erase(content.entries.begin() + index, content.entries.begin() + index + count);
    const int32_t end = index + count;   // first index after the removed ones
    std::vector<TupletInfo> kept;
    for (TupletInfo tuplet : content.tuplets) {
        const int32_t first =
            tuplet.stoff < index ? tuplet.stoff : (tuplet.stoff >= end ? tuplet.stoff - count : index);
        const int32_t last =
            tuplet.enoff < index ? tuplet.enoff : (tuplet.enoff >= end ? tuplet.enoff - count : index - 1);
        if (last >= first) {
            tuplet.stoff = static_cast<int16_t>(first);
            tuplet.enoff = static_cast<int16_t>(last);
            kept.push_back(tuplet);
        }
    }
    content.tuplets = std::move(kept);
    return true;
}

}   // namespace stavio
