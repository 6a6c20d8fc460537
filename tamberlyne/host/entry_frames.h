// Entry frames: the notes and rests of one staff, measure and layer, which the host allocates on
// load and takes back on free. The wrappers keep count of the frames in hand and repair a frame's
// note records before it goes back to the host, so the host never sees duplicate or missing note
// identifiers or stale note slots.
//
// Also here: the staff-measure frame detail ('SDGF'), whose layer array the caller must provide.
#pragma once

#include "sdk/funcs.h"

#include <vector>

// Frames loaded and not yet freed.
extern int32_t LoadedQVFCounter;
// Whether cleaning gives a rest the note record that some host operations expect. Owned by the
// callers; cleaning only reads it.
extern bool CanAddNoteRecordToRests;

// Loads one staff-measure-layer (layer counted from 0). Counts the frame whatever the host answers.
EXQVF2005a* SX_LoadQVF(int16_t IUlist, int16_t slot, int16_t meas, int16_t layer, int32_t flags,
                       EVERSION version = kPluginApiVersion);
// Save, insert and delete clean the frame first.
int32_t SX_SaveQVF(EXQVF2005a* frame, EVERSION version = kPluginApiVersion);
void SX_FreeQVF(EXQVF2005a* frame, EVERSION version = kPluginApiVersion);
int32_t SX_InsertEXENTRY(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version = kPluginApiVersion);
int32_t SX_DeleteEXENTRY(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version = kPluginApiVersion);

// Gives every note in use a unique non-zero identifier (mirrored into bits 16-20 of its flag),
// zeroes the unused note records and, when allowed, gives a rest its note record. The flag is
// not used.
void CleanQVF(const EXQVF2005a* frame, bool unused);

// A loaded frame that goes back to the host (SX_FreeQVF) when the holder ends.
class LoadedFrame {
public:
    LoadedFrame(int16_t IUlist, int16_t slot, int16_t meas, int16_t layer, int32_t flags = 0,
                EVERSION version = kPluginApiVersion);
    ~LoadedFrame();
    LoadedFrame(const LoadedFrame&) = delete;
    LoadedFrame& operator=(const LoadedFrame&) = delete;

    explicit operator bool() const { return frame_ != nullptr; }
    EXQVF2005a* get() const { return frame_; }
    EXQVF2005a* operator->() const { return frame_; }
    int32_t Save() { return SX_SaveQVF(frame_); }

private:
    EXQVF2005a* frame_;
};

// A staff-measure's frame detail with a layer array of its own: at least SX_GetMaxLayers slots
// (and never fewer than the four layers the plug-in examines), zeroed before each load.
class FrameDetail {
public:
    static constexpr int kLayersExamined = 4;

    FrameDetail();
    FrameDetail(const FrameDetail&) = delete;
    FrameDetail& operator=(const FrameDetail&) = delete;

    // Loads the detail of staff `inst` in measure `meas`; false when there is none.
    bool Load(int inst, int meas);
    bool Save(int inst, int meas);

    EDTGfhold2004& record() { return record_; }
    int16_t FrameNumber(int layer) const { return frames_[static_cast<size_t>(layer)]; }
    // The sum of the frame numbers of `count` layers from `firstLayer` (0 when none holds a frame).
    int32_t FrameSum(int firstLayer, int count) const;

private:
    std::vector<int16_t> frames_;
    EDTGfhold2004 record_;
};
