#include "stavio/midi_import/midi_import.h"

#include "sdk/tags.h"
#include "stavio/midi_import/beat_quantiser.h"
#include "stavio/midi_import/drum_groove.h"
#include "stavio/midi_import/measure_notation.h"
#include "stavio/midi_import/smf_reader.h"

#include <cstring>
#include <optional>

namespace stavio::midi_import {

namespace {

constexpr EVERSION kMeasureSpecVersion = 0x0A000000;   // the 26-byte layout
constexpr int32_t kImportLayer = 0;                    // the groove's notes; the measure's other layers are emptied

std::string RegionText(const EREGION& region)
{
    return "measures " + std::to_string(region.start.meas) + "-" + std::to_string(region.end.meas);
}

// The staff's instrument number, or 0 with `error` set when the region is not in the document.
int32_t CheckRegion(const Document& doc, const EREGION& region, std::string& error)
{
    const int32_t inst = doc.SlotToInst(region.start.IUslot, region.start.IUlist);
    if (inst == 0 || !doc.StaffExists(inst)) {
        error = "no staff at slot " + std::to_string(region.start.IUslot) + " of instrument list " +
                std::to_string(region.start.IUlist);
        return 0;
    }
    if (region.start.meas < 1 || region.end.meas < region.start.meas || region.end.meas > doc.MeasureCount()) {
        error =
            RegionText(region) + " are not a range of the document's measures 1-" + std::to_string(doc.MeasureCount());
        return 0;
    }
    return inst;
}

MeasureGrid GridOfMeasure(const Document& doc, int32_t meas, const TimeSignature& meter)
{
    EDTMeasureSpec2005 spec{};
    if (!doc.Read(kTagMeasureSpec, RecordKey::Other(static_cast<uint16_t>(meas), 0), spec, kMeasureSpecVersion)) {
        return GridFor(0, 0, meter);
    }
    return GridFor(spec.beats, spec.divbeat, meter);
}

// Entries or a frame number: a detail saved on its own may have left one without the other.
bool HoldsAnything(const Document& doc, int32_t inst, int32_t meas, int32_t layer)
{
    const std::optional<FrameContent> frame = doc.Frame(inst, meas, layer);
    return doc.FrameNumber(inst, meas, layer) != 0 || (frame && !frame->Empty());
}

// Notates and writes the region's measures one by one: groove bar i into the region's measure
// i, its hits as offsets from the bar's start. A hit just before a bar line counts for the bar
// after it. The onsets are in time order, so one walk over them serves the whole region.
//
// Each measure is replaced, not overlaid: whatever the staff's other layers held there (a
// drum part's feet in a voice of their own, say) would go on playing under the groove, so
// those layers are emptied and their frame numbers cleared with them.
bool WriteMeasures(Document& doc, int32_t inst, const EREGION& region, const DrumGroove& groove)
{
    const int64_t measures = region.end.meas - region.start.meas + 1;
    const int64_t early = MeasureGrid{}.EarlyWindow();
    const auto barOf = [&](const DrumOnset& onset) {
        return groove.barLength > 0 ? FloorDiv(onset.edu + early, groove.barLength) : measures;
    };
    auto onset = groove.onsets.begin();
    std::vector<Hit> hits;
    bool written = true;
    for (int64_t bar = 0; bar < measures; ++bar) {
        hits.clear();
        for (; onset != groove.onsets.end() && barOf(*onset) <= bar; ++onset) {
            if (barOf(*onset) == bar) {
                hits.push_back(
                    Hit{static_cast<int32_t>(onset->edu - bar * groove.barLength), static_cast<int>(onset->key)});
            }
        }
        const int32_t meas = region.start.meas + static_cast<int32_t>(bar);
        FrameContent frame = NotateMeasure(hits, GridOfMeasure(doc, meas, groove.meter));
        written = doc.SetFrame(inst, meas, kImportLayer, frame) && written;
        for (int32_t layer = 0; layer < kMaxLayers; ++layer) {
            if (layer != kImportLayer && HoldsAnything(doc, inst, meas, layer)) {
                FrameContent nothing;
                written = doc.SetFrame(inst, meas, layer, nothing) && written;
            }
        }
    }
    return written;
}

// Checks the region, reads the file with `read` (SmfFile&, error&) -> bool, then writes. A
// damaged file gives what could be read of it; one that gives no hit at all is refused.
template <typename ReadFile>
bool Import(Document& doc, const EREGION& region, const std::string& name, std::string& error, ReadFile read)
{
    const int32_t inst = CheckRegion(doc, region, error);
    if (inst == 0) {
        error = name + ": cannot import into " + error;
        return false;
    }
    DrumGroove groove;
    {
        SmfFile file;   // let go before the measures are written: only the hits are needed
        if (!read(file, error)) {
            return false;
        }
        groove = DrumGrooveOf(file);
        if (groove.onsets.empty() && !file.damage.empty()) {
            error = name + ": " + file.damage;
            return false;
        }
    }
    if (!WriteMeasures(doc, inst, region, groove)) {
        error = name + ": the staff's frames in " + RegionText(region) + " could not be written";
        return false;
    }
    return true;
}

std::string& LastError()
{
    static std::string error;
    return error;
}

}   // namespace

bool ImportMidiBytes(Document& doc, const EREGION& region, const std::vector<uint8_t>& bytes, const std::string& name,
                     std::string& error)
{
    return Import(doc, region, name, error,
                  [&](SmfFile& file, std::string& fault) { return ReadSmf(bytes, name, file, fault); });
}

bool ImportMidiFile(Document& doc, const EREGION& region, const std::string& path, std::string& error)
{
    return Import(doc, region, path, error,
                  [&](SmfFile& file, std::string& fault) { return ReadSmfFile(path, file, fault); });
}

std::string PathOf(const EFSSPEC& spec)
{
    const std::string folder(spec.folder, strnlen(spec.folder, sizeof(spec.folder)));
    const std::string name(spec.name, strnlen(spec.name, sizeof(spec.name)));
    if (folder.empty()) {
        return name;
    }
    return folder.back() == '/' ? folder + name : folder + "/" + name;
}

int32_t ProcessMidiData(Document& doc, const SxpMidiData& data)
{
    std::string error;
    const bool imported = ImportMidiFile(doc, data.ereg, PathOf(data.midiFile), error);
    LastError() = imported ? std::string() : error;
    return imported ? 1 : 0;
}

const std::string& LastProcessMidiDataError()
{
    return LastError();
}

}   // namespace stavio::midi_import
