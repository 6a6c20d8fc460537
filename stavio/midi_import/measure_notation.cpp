#include "stavio/midi_import/measure_notation.h"

#include "stavio/document_builder.h"

#include <algorithm>
#include <cstdint>

namespace stavio::midi_import {

namespace {

// Notated values, longest first: dotted whole down to 32nd.
constexpr int32_t kNotatedValues[] = {6144, 4096, 3072, 2048, 1536, 1024, 768, 512, 384, 256, 192, 128};
constexpr int32_t kWholeNote = 4096;
constexpr int kNoteIdBits = 0x1F;
constexpr int kNoteIdShift = 16;

int32_t LargestValueUpTo(int32_t length)
{
    for (int32_t value : kNotatedValues) {
        if (value <= length) {
            return value;
        }
    }
    return length;   // shorter than any notated value: only a grid this fine could ask for it
}

class MeasureWriter {
public:
    MeasureWriter(const MeasureGrid& grid, FrameContent& content) : grid_(grid), content_(content) {}

    void Beat(const QuantisedBeat& beat, int32_t beatStart)
    {
        const size_t first = content_.entries.size();
        const int lastSlot = beat.triplet ? 3 : grid_.beat / grid_.step;
        auto position = [&](int slot) {
            return beatStart + (beat.triplet ? (2 * slot * grid_.beat + 3) / 6 : slot * grid_.step);
        };
        const int32_t slotValue = beat.triplet ? grid_.beat / 2 : grid_.step;   // notated length of one slot
        const int firstSlot = beat.slots.front().slot;
        if (firstSlot > 0) {
            if (beat.triplet) {
                Add(position(0), position(firstSlot) - position(0), firstSlot * slotValue, nullptr, true);
            } else {
                Rests(position(0), firstSlot * grid_.step);
            }
        }
        for (size_t i = 0; i < beat.slots.size(); ++i) {
            const int slot = beat.slots[i].slot;
            const int next = i + 1 < beat.slots.size() ? beat.slots[i + 1].slot : lastSlot;
            const std::vector<int>* keys = &beat.slots[i].keys;
            if (beat.triplet) {
                Add(position(slot), position(next) - position(slot), (next - slot) * slotValue, keys, true);
                continue;
            }
            const int32_t length = (next - slot) * grid_.step;
            const int32_t noteLength = LargestValueUpTo(length);
            Add(position(slot), noteLength, noteLength, keys, false);
            Rests(position(slot) + noteLength, length - noteLength);
        }
        if (beat.triplet) {
            TupletInfo tuplet{};
            tuplet.stoff = static_cast<int16_t>(first);
            tuplet.enoff = static_cast<int16_t>(content_.entries.size() - 1);
            tuplet.logInci = static_cast<int16_t>(content_.tuplets.size());
            tuplet.tupPeriod = grid_.beat;
            tuplet.tpDef.symbolicNum = 3;
            tuplet.tpDef.symbolicDur = grid_.beat / 2;
            tuplet.tpDef.refNum = 2;
            tuplet.tpDef.refDur = grid_.beat / 2;
            content_.tuplets.push_back(tuplet);
        }
    }

    // Rests for the empty beats first .. first + count - 1: a longer rest where it starts on a
    // multiple of its own length.
    void EmptyBeats(int first, int count)
    {
        int32_t position = first * grid_.beat;
        int32_t left = count * grid_.beat;
        while (left > 0) {
            int32_t length = grid_.beat;
            while (2 * length <= left && position % (2 * length) == 0 && IsNotatedValue(2 * length)) {
                length *= 2;
            }
            Rests(position, length);
            position += length;
            left -= length;
        }
    }

    void WholeMeasureRest()
    {
        const int32_t length = grid_.length;
        Add(0, length, IsNotatedValue(length) ? length : kWholeNote, nullptr, false);
    }

private:
    void Rests(int32_t position, int32_t length)
    {
        while (length > 0) {
            const int32_t piece = LargestValueUpTo(length);
            Add(position, piece, piece, nullptr, false);
            position += piece;
            length -= piece;
        }
    }

    void Add(int32_t position, int32_t actual, int32_t notated, const std::vector<int>* keys, bool inTuplet)
    {
        EXENTRY entry{};
        entry.dura = static_cast<int16_t>(notated);
        entry.orgposi = static_cast<int16_t>(std::min<int32_t>(position, INT16_MAX));
        entry.ef = kEntryValid | (keys != nullptr ? kEntryIsNote : 0) | (inTuplet ? kEntryInTuplet : 0);
        entry.elldur = position;
        entry.actdur = actual;
        if (keys != nullptr) {
            entry.numNotes = static_cast<int16_t>(keys->size());
            for (size_t i = 0; i < keys->size(); ++i) {
                const NotePitch pitch = PitchOfKey((*keys)[i]);
                EXNOTE& note = entry.note[i];
                note.tcd = pitch.tcd;
                note.alteration = pitch.alteration;
                note.noteID = static_cast<int16_t>(i + 1);
                note.flag = static_cast<uint32_t>(note.noteID & kNoteIdBits) << kNoteIdShift;
            }
        }
        content_.entries.push_back(entry);
    }

    const MeasureGrid& grid_;
    FrameContent& content_;
};

}   // namespace

bool IsNotatedValue(int32_t edu)
{
    return std::find(std::begin(kNotatedValues), std::end(kNotatedValues), edu) != std::end(kNotatedValues);
}

FrameContent NotateMeasure(const std::vector<Hit>& hits, const MeasureGrid& grid)
{
    FrameContent content;
    if (grid.length <= 0) {
        return content;
    }
    const int beats = grid.Beats();
    std::vector<std::vector<Hit>> perBeat(static_cast<size_t>(beats));
    bool anyHit = false;
    for (const Hit& hit : hits) {
        const int64_t beat = std::max<int64_t>(0, FloorDiv(hit.offset + grid.EarlyWindow(), grid.beat));
        if (beat < beats) {
            perBeat[static_cast<size_t>(beat)].push_back(
                Hit{hit.offset - static_cast<int32_t>(beat) * grid.beat, hit.key});
            anyHit = true;
        }
    }
    content.entries.reserve(hits.size() + 2 * static_cast<size_t>(beats));   // hits and a few rests
    MeasureWriter writer(grid, content);
    if (!anyHit) {
        writer.WholeMeasureRest();
        return content;
    }
    int emptyFrom = -1;
    for (int beat = 0; beat < beats; ++beat) {
        if (perBeat[static_cast<size_t>(beat)].empty()) {
            emptyFrom = emptyFrom < 0 ? beat : emptyFrom;
            continue;
        }
        if (emptyFrom >= 0) {
            writer.EmptyBeats(emptyFrom, beat - emptyFrom);
            emptyFrom = -1;
        }
        writer.Beat(QuantiseBeat(perBeat[static_cast<size_t>(beat)], grid), beat * grid.beat);
    }
    if (emptyFrom >= 0) {
        writer.EmptyBeats(emptyFrom, beats - emptyFrom);
    }
    return content;
}

}   // namespace stavio::midi_import
