// The byte image of a MIDI file inside the caller's fixed block, edited in place.
//
// Positions are those of the plain image: inserting a byte at p moves every later byte up by
// one, removing a range moves the rest down. Physically the block keeps a gap (its free room)
// at the place of the last edit, so an edit costs the distance from the previous edit rather
// than the length of the image: cleaning inserts bytes at a cursor that only moves forward,
// which makes a whole pass linear. Settle() closes the gap, leaving the image contiguous at
// the start of the block, as the caller expects to find it.
#pragma once

#include <cstdint>

class MidiImage {
public:
    // The image is the first `size` bytes of `block`, which holds `capacity` bytes.
    MidiImage(char* block, int32_t size, int32_t capacity);

    int32_t Size() const { return size_; }
    int32_t Capacity() const { return capacity_; }

    uint8_t At(int32_t pos) const { return static_cast<uint8_t>(block_[Physical(pos)]); }   // 0 <= pos < Size()
    void Set(int32_t pos, uint8_t value) { block_[Physical(pos)] = static_cast<char>(value); }

    // Inserts one byte before position pos (0 <= pos <= Size()); false when the block is full.
    bool Insert(int32_t pos, uint8_t value);
    // Deletes the bytes from `from` up to but not including `to` (0 <= from <= to <= Size()).
    void Remove(int32_t from, int32_t to);
    // Position of the first byte at or after `from` that equals value, searching no further
    // than `limit` (exclusive, at most Size()); `limit` when there is none.
    int32_t Find(int32_t from, int32_t limit, uint8_t value) const;
    // Copies up to `count` bytes starting at `from` (all inside the image) into dest.
    void CopyOut(int32_t from, uint8_t* dest, int32_t count) const;

    // Makes the image contiguous at the start of the block and returns the block.
    char* Settle();

    // The stretch of the image around `pos` (0 <= pos < Size()) that lies in one piece in the
    // block: positions start..end-1 are the bytes from `bytes` onward.
    struct Run {
        int32_t start;
        int32_t end;
        char* bytes;
    };
    Run RunAt(int32_t pos) const
    {
        if (pos < gapStart_) return {0, gapStart_, block_};
        return {gapStart_, size_, block_ + gapStart_ + gapLength_};
    }

private:
    int32_t Physical(int32_t pos) const { return pos < gapStart_ ? pos : pos + gapLength_; }
    void MoveGapTo(int32_t pos);

    char* block_;
    int32_t size_;
    int32_t capacity_;
    int32_t gapStart_;    // logical position where the gap sits
    int32_t gapLength_;   // capacity_ - size_
};
