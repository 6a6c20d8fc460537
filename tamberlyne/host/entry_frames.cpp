// Slots 2-6 of the host table are in every host the start-up rules accept, so the wrappers call
// them without a test.
#include "tamberlyne/host/entry_frames.h"

#include "sdk/tags.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/typed_records.h"

#include <algorithm>
#include <cstring>

int32_t LoadedQVFCounter = 0;
bool CanAddNoteRecordToRests = false;

namespace {

constexpr uint32_t kNoteIDFlagBits = 0x001F0000;   // the low five bits of noteID, mirrored
constexpr int kNoteIDFlagShift = 16;

int NotesInUse(const EXENTRY& entry)
{
    return std::clamp<int>(entry.numNotes, 0, kMaxNotesPerEntry);
}

bool SharesNoteID(const EXENTRY& entry, int notes, int index)
{
    for (int other = 0; other < notes; ++other) {
        if (other != index && entry.note[other].noteID == entry.note[index].noteID) {
            return true;
        }
    }
    return false;
}

void CleanEntry(EXENTRY& entry)
{
    const int notes = NotesInUse(entry);
    int16_t maxID = 0;
    for (int i = 0; i < notes; ++i) {
        maxID = std::max(maxID, entry.note[i].noteID);
    }
    // Renumbering is seen by the notes that follow: of two equal identifiers the first moves on
    // and the second, now alone, keeps its own.
    for (int i = 0; i < notes; ++i) {
        if (entry.note[i].noteID == 0 || SharesNoteID(entry, notes, i)) {
            entry.note[i].noteID = ++maxID;
        }
    }
    for (int i = 0; i < notes; ++i) {
        EXNOTE& note = entry.note[i];
        const uint32_t mirrored = (static_cast<uint32_t>(note.noteID) & 0x1F) << kNoteIDFlagShift;
        note.flag = (note.flag & ~kNoteIDFlagBits) | mirrored;
    }
    for (int i = notes; i < kMaxNotesPerEntry; ++i) {
        std::memset(&entry.note[i], 0, sizeof(EXNOTE));
    }
    if (entry.numNotes == 0 && CanAddNoteRecordToRests) {
        entry.numNotes = 1;
        entry.note[0].flag = kNoteIsRestRecord;
        entry.ef |= kEntryRestHasNoteRecord;
    }
}

}   // namespace

EXQVF2005a* SX_LoadQVF(int16_t IUlist, int16_t slot, int16_t meas, int16_t layer, int32_t flags, EVERSION version)
{
    ++LoadedQVFCounter;
    return gStavioFuncs.SX_LoadQVF(IUlist, slot, meas, layer, flags, version);
}

int32_t SX_SaveQVF(EXQVF2005a* frame, EVERSION version)
{
    CleanQVF(frame, true);
    return gStavioFuncs.SX_SaveQVF(frame, version);
}

void SX_FreeQVF(EXQVF2005a* frame, EVERSION version)
{
    --LoadedQVFCounter;
    gStavioFuncs.SX_FreeQVF(frame, version);
}

int32_t SX_InsertEXENTRY(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version)
{
    CleanQVF(frame, true);
    return gStavioFuncs.SX_InsertEXENTRY(frame, index, count, version);
}

int32_t SX_DeleteEXENTRY(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version)
{
    CleanQVF(frame, true);
    return gStavioFuncs.SX_DeleteEXENTRY(frame, index, count, version);
}

void CleanQVF(const EXQVF2005a* frame, bool /*unused*/)
{
    if (frame == nullptr || frame->pent == nullptr) {
        return;
    }
    for (int16_t i = 0; i < frame->numEntries; ++i) {
        CleanEntry(frame->pent[i]);
    }
}

// ---- LoadedFrame --------------------------------------------------------------------------------

LoadedFrame::LoadedFrame(int16_t IUlist, int16_t slot, int16_t meas, int16_t layer, int32_t flags, EVERSION version)
    : frame_(SX_LoadQVF(IUlist, slot, meas, layer, flags, version))
{}

// Every load counted one frame. A frame the host did not give is not handed back, but its count
// is, so the counter still returns to what it was.
LoadedFrame::~LoadedFrame()
{
    if (frame_ != nullptr) {
        SX_FreeQVF(frame_);
    } else {
        --LoadedQVFCounter;
    }
}

// ---- FrameDetail --------------------------------------------------------------------------------

FrameDetail::FrameDetail()
    : frames_(static_cast<size_t>(std::max<int32_t>(SX_GetMaxLayers(), kLayersExamined)), 0), record_{}
{
    record_.frame = frames_.data();
}

bool FrameDetail::Load(int inst, int meas)
{
    std::fill(frames_.begin(), frames_.end(), int16_t{0});
    record_ = EDTGfhold2004{};
    record_.frame = frames_.data();
    return sx_loaddetail(kTagGfhold, inst, meas, &record_, kGfhold2004Size, 0, kPluginApiVersion);
}

bool FrameDetail::Save(int inst, int meas)
{
    return sx_savedetail(kTagGfhold, inst, meas, &record_, kGfhold2004Size, 0, kPluginApiVersion);
}

int32_t FrameDetail::FrameSum(int firstLayer, int count) const
{
    int32_t sum = 0;
    for (int layer = firstLayer; layer < firstLayer + count; ++layer) {
        sum += frames_[static_cast<size_t>(layer)];
    }
    return sum;
}
