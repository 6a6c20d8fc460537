#include "stavio/app/staff_changes.h"

#include "sdk/tags.h"
#include "stavio/dialogs/dialog_text.h"
#include "stavio/document/canonical.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"
#include "stavio/views/staff_view.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <ostream>
#include <sstream>
#include <vector>

namespace stavio::app {

namespace {

constexpr EVERSION kStaffSpecVersion = 0x08000000;   // the 102-byte layout
constexpr int16_t kPercussionClef = 12;

struct StaffSummary {
    std::string name;
    bool playsOnChannel10 = false;
    int16_t clef = -1;   // in the first measure of the region; -1 without a frame detail
    bool drumStaffRecord = false;
    int styleAssignments = 0;
    int entries = 0;   // in the region's measures, all layers
    int notes = 0;
    // What the region's entries say musically (where, how long, which pitches), so that notes
    // replaced by as many other notes still count as a change.
    std::vector<int64_t> music;

    bool operator==(const StaffSummary& other) const
    {
        return name == other.name && playsOnChannel10 == other.playsOnChannel10 && clef == other.clef &&
               drumStaffRecord == other.drumStaffRecord && styleAssignments == other.styleAssignments &&
               entries == other.entries && notes == other.notes && music == other.music;
    }
};

std::optional<StaffSummary> Summarise(const Document& doc, int32_t inst, const EREGION& region)
{
    if (!doc.StaffExists(inst)) {
        return std::nullopt;
    }
    StaffSummary summary;
    const RecordKey staffKey = RecordKey::Other(static_cast<uint16_t>(inst), 0);
    EDTStaffSpec2003 spec{};
    if (doc.Read(kTagStaffSpec, staffKey, spec, kStaffSpecVersion)) {
        summary.name = TextBlockText(doc, spec.fullName);
    }
    const std::optional<uint16_t> channel = ChannelCode(doc, StaffChannelDefinition(doc, inst));
    summary.playsOnChannel10 = channel && PlaysOnChannel10(*channel);
    const RecordStore::Bytes* hold =
        doc.Records().Find(kTagGfhold, RecordKey::Detail(static_cast<uint16_t>(inst), region.start.meas, 0));
    if (hold != nullptr && hold->size() >= sizeof(int16_t)) {
        std::memcpy(&summary.clef, hold->data(), sizeof(int16_t));
    }
    summary.drumStaffRecord = doc.Records().Find(kTagDrumStaff, staffKey) != nullptr;
    summary.styleAssignments = doc.Records().IncidenceCount(kTagStaffStyleAssign, staffKey);
    doc.ForEachEntry(
        inst, region.start.meas, region.end.meas, [&summary](int32_t meas, int layer, const EXENTRY& entry) {
            ++summary.entries;
            summary.notes += (entry.ef & kEntryIsNote) != 0 ? 1 : 0;
            summary.music.insert(summary.music.end(),
                                 {meas, layer, entry.elldur, entry.actdur, entry.dura, entry.ef & kEntryIsNote});
            for (int n = 0; n < std::clamp<int>(entry.numNotes, 0, kMaxNotesPerEntry); ++n) {
                summary.music.insert(summary.music.end(), {entry.note[n].tcd, entry.note[n].alteration});
            }
        });
    return summary;
}

// Text expression assignments in the region's measures (key: measure, incidence).
int LabelsInRegion(const Document& doc, const EREGION& region)
{
    int labels = 0;
    for (const auto& entry : doc.Records().All(kTagExpressionAssign)) {
        const int meas = entry.first.group1;
        labels += meas >= region.start.meas && meas <= region.end.meas ? 1 : 0;
    }
    return labels;
}

std::string ClefText(int16_t clef)
{
    if (clef < 0) {
        return "none";
    }
    return std::to_string(clef) + (clef == kPercussionClef ? " (percussion)" : "");
}

std::string MeasuresText(const EREGION& region, const std::vector<std::string>& scoreNumbers)
{
    return region.start.meas == region.end.meas ? "measure " + MeasureName(scoreNumbers, region.start.meas)
                                                : "measures " + MeasureName(scoreNumbers, region.start.meas) + "-" +
                                                      MeasureName(scoreNumbers, region.end.meas);
}

void WriteText(std::ostream& out, int slot, const std::optional<StaffSummary>& before, const StaffSummary& after,
               const EREGION& region, const std::vector<std::string>& scoreNumbers)
{
    const char* state = !before ? "new staff" : (*before == after ? "unchanged" : "changed");
    out << "Staff " << slot << " \"" << after.name << "\" (" << state << ")\n";
    auto line = [&](const char* what, const std::string& now, const std::optional<std::string>& was) {
        out << "  " << what << ": " << now;
        if (was && *was != now) {
            out << " (was " << *was << ")";
        }
        out << "\n";
    };
    auto yesNo = [](bool value) { return std::string(value ? "yes" : "no"); };
    line("MIDI channel 10", yesNo(after.playsOnChannel10),
         before ? std::optional<std::string>(yesNo(before->playsOnChannel10)) : std::nullopt);
    line("drum staff record", yesNo(after.drumStaffRecord),
         before ? std::optional<std::string>(yesNo(before->drumStaffRecord)) : std::nullopt);
    line(("clef in measure " + MeasureName(scoreNumbers, region.start.meas)).c_str(), ClefText(after.clef),
         before ? std::optional<std::string>(ClefText(before->clef)) : std::nullopt);
    line("staff style assignments", std::to_string(after.styleAssignments),
         before ? std::optional<std::string>(std::to_string(before->styleAssignments)) : std::nullopt);
    line(("notes and rests in " + MeasuresText(region, scoreNumbers)).c_str(),
         std::to_string(after.entries) + " (" + std::to_string(after.notes) + " with notes)",
         before ? std::optional<std::string>(std::to_string(before->entries) + " (" + std::to_string(before->notes) +
                                             " with notes)")
                : std::nullopt);
}

void WriteJson(std::ostream& out, int slot, int32_t inst, const std::optional<StaffSummary>& before,
               const StaffSummary& after, const std::string& entries)
{
    auto object = [](const StaffSummary& summary) {
        return std::string("{\"midiChannel10\":") + (summary.playsOnChannel10 ? "true" : "false") +
               ",\"drumStaffRecord\":" + (summary.drumStaffRecord ? "true" : "false") +
               ",\"clef\":" + std::to_string(summary.clef) +
               ",\"styleAssignments\":" + std::to_string(summary.styleAssignments) +
               ",\"entries\":" + std::to_string(summary.entries) + ",\"notes\":" + std::to_string(summary.notes) + "}";
    };
    out << "{\"slot\":" << slot << ",\"staff\":" << inst << ",\"name\":" << JsonQuoted(after.name)
        << ",\"new\":" << (before ? "false" : "true")
        << ",\"changed\":" << (!before || !(*before == after) ? "true" : "false") << ",\"after\":" << object(after)
        << ",\"before\":" << (before ? object(*before) : "null") << ",\"entries\":" << entries << "}";
}

}   // namespace

std::string MeasureName(const std::vector<std::string>& scoreNumbers, int32_t meas)
{
    const bool named = meas >= 1 && static_cast<size_t>(meas) <= scoreNumbers.size();
    return named ? scoreNumbers[static_cast<size_t>(meas - 1)] : std::to_string(meas);
}

void PrintStaffChanges(std::ostream& out, const Document& before, const Document& after, const EREGION& measures,
                       ReportFormat format, const std::vector<std::string>& scoreNumbers)
{
    const int32_t staves = after.StaffCount(kMainInstrumentList);
    if (format == ReportFormat::Json) {
        out << "[";
    }
    for (int32_t slot = 1; slot <= staves; ++slot) {
        const int32_t inst = after.SlotToInst(slot, kMainInstrumentList);
        const std::optional<StaffSummary> now = Summarise(after, inst, measures);
        if (!now) {
            continue;
        }
        const std::optional<StaffSummary> was = Summarise(before, inst, measures);
        if (format == ReportFormat::Json) {
            out << (slot > 1 ? "," : "");
            WriteJson(out, slot, inst, was, *now,
                      views::StaffEntriesJson(after, inst, measures.start.meas, measures.end.meas));
        } else {
            WriteText(out, slot, was, *now, measures, scoreNumbers);
            if (!was || !(*was == *now)) {   // the staff's notes as a drum grid
                std::istringstream grid(
                    views::RenderDrumGrid(after, inst, measures.start.meas, measures.end.meas, scoreNumbers));
                for (std::string line; std::getline(grid, line);) {
                    out << "  " << line << "\n";
                }
            }
        }
    }
    if (format == ReportFormat::Json) {
        out << "]";
    } else {
        const int labelsBefore = LabelsInRegion(before, measures);
        const int labelsAfter = LabelsInRegion(after, measures);
        out << "Playback labels (text expressions) in " << MeasuresText(measures, scoreNumbers) << ": " << labelsAfter;
        if (labelsAfter != labelsBefore) {
            out << " (was " << labelsBefore << ")";
        }
        out << "\n";
    }
}

}   // namespace stavio::app
