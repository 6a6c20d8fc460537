// The notes and rests of one staff-measure-layer as the host keeps them, and the edits a frame
// goes through while a plug-in holds it.
//
// The document stores each non-empty staff-measure-layer as one host-internal record (see
// host_tags.h), so that edit brackets, undo and redo cover entries like every other record.
#pragma once

#include "sdk/frames.h"

#include <cstdint>
#include <vector>

namespace stavio {

// One staff-measure-layer: its entries in order and the tuplets over them (`stoff`/`enoff`
// are indices into `entries`).
struct FrameContent {
    std::vector<EXENTRY> entries;
    std::vector<TupletInfo> tuplets;

    bool Empty() const { return entries.empty(); }
};

// The host's mark (in EXNOTE::flag) on a note tied to the note of the same pitch that follows it
// in its layer, in the next entry or the next measure's first: they sound as one note.
constexpr uint32_t kNoteTiedForward = 0x40000000;

// The most entries a frame can hold: its count is a signed 16-bit field.
constexpr int32_t kMaxFrameEntries = 0x7FFF;

// The record bytes of a frame and back. Decoding fails on bytes of the wrong length.
std::vector<uint8_t> EncodeFrame(const FrameContent& content);
bool DecodeFrame(const std::vector<uint8_t>& bytes, FrameContent& content);

// A new entry as the host makes it on insertion: all zero, valid, starting where the entry
// before it ends (0 at the front).
EXENTRY NewEntryAfter(const EXENTRY* previous);

// Inserts `count` new entries before `index` (0..size) or removes `count` entries from
// `index`, moving the tuplets' entry indices with them. A tuplet grows when entries go in
// inside it and disappears when all its entries go. False (and nothing changed) for an index
// or count out of range.
bool InsertEntries(FrameContent& content, int32_t index, int32_t count);
bool DeleteEntries(FrameContent& content, int32_t index, int32_t count);

}   // namespace stavio
