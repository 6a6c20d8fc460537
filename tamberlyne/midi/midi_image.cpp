#include "tamberlyne/midi/midi_image.h"

#include <algorithm>
#include <cstring>

MidiImage::MidiImage(char* block, int32_t size, int32_t capacity)
    : block_(block), size_(std::max<int32_t>(size, 0)), capacity_(std::max(capacity, size_)), gapStart_(size_),
      gapLength_(capacity_ - size_)
{}

void MidiImage::MoveGapTo(int32_t pos)
{
    if (pos < gapStart_) {
        std::memmove(block_ + pos + gapLength_, block_ + pos, static_cast<size_t>(gapStart_ - pos));
    } else if (pos > gapStart_) {
        std::memmove(block_ + gapStart_, block_ + gapStart_ + gapLength_, static_cast<size_t>(pos - gapStart_));
    }
    gapStart_ = pos;
}

bool MidiImage::Insert(int32_t pos, uint8_t value)
{
    if (gapLength_ == 0 || pos < 0 || pos > size_) return false;
    MoveGapTo(pos);
    block_[pos] = static_cast<char>(value);
    ++gapStart_;
    --gapLength_;
    ++size_;
    return true;
}

void MidiImage::Remove(int32_t from, int32_t to)
{
    if (from < 0 || to > size_ || from >= to) return;
    // Widen the gap over the range from whichever end of it is nearer.
    const int32_t removed = to - from;
    if (gapStart_ >= to) {
        MoveGapTo(to);
        gapStart_ = from;
    } else {
        MoveGapTo(from);
    }
    gapLength_ += removed;
    size_ -= removed;
}

int32_t MidiImage::Find(int32_t from, int32_t limit, uint8_t value) const
{
    limit = std::min(limit, size_);
    // The image is at most two runs of the block: before the gap and after it.
    const int32_t runEnds[2] = {std::min(gapStart_, limit), limit};
    const int32_t offsets[2] = {0, gapLength_};
    for (int run = 0; run < 2; ++run) {
        const int32_t begin = run == 0 ? from : std::max(from, gapStart_);
        if (begin >= runEnds[run]) continue;
        const void* hit = std::memchr(block_ + begin + offsets[run], value, static_cast<size_t>(runEnds[run] - begin));
        if (hit != nullptr) return static_cast<int32_t>(static_cast<const char*>(hit) - block_) - offsets[run];
    }
    return limit;
}

void MidiImage::CopyOut(int32_t from, uint8_t* dest, int32_t count) const
{
    for (int32_t i = 0; i < count; ++i) dest[i] = At(from + i);
}

char* MidiImage::Settle()
{
    MoveGapTo(size_);
    return block_;
}
