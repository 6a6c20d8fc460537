#include "stavio/views/staff_entries.h"

#include "stavio/document/pitch.h"
#include "stavio/views/staff_view.h"

#include <algorithm>
#include <string>

namespace stavio::views {

std::vector<ViewEntry> CollectEntries(const Document& doc, int32_t inst, int32_t firstMeasure, int32_t lastMeasure)
{
    std::vector<ViewEntry> entries;
    if (!doc.StaffExists(inst)) {
        return entries;
    }
    doc.ForEachEntry(inst, firstMeasure, lastMeasure, [&entries](int32_t meas, int layer, const EXENTRY& entry) {
        ViewEntry view;
        view.measure = meas;
        view.layer = layer;
        view.position = entry.elldur;
        view.duration = entry.actdur;
        view.tuplet = (entry.ef & kEntryInTuplet) != 0;
        const int notes = (entry.ef & kEntryIsNote) != 0 ? std::clamp<int>(entry.numNotes, 0, kMaxNotesPerEntry) : 0;
        std::vector<std::pair<int, int16_t>> keyed;
        for (int i = 0; i < notes; ++i) {
            const EXNOTE& note = entry.note[i];
            keyed.emplace_back(NoteToMidiKey(note.tcd, note.alteration), note.tcd);
        }
        std::sort(keyed.begin(), keyed.end());
        for (const auto& [key, tcd] : keyed) {
            view.keys.push_back(key);
            view.tcds.push_back(tcd);
        }
        entries.push_back(std::move(view));
    });
    return entries;
}

std::string StaffEntriesJson(const Document& doc, int32_t inst, int32_t firstMeasure, int32_t lastMeasure)
{
    std::string json = "[";
    bool first = true;
    for (const ViewEntry& entry : CollectEntries(doc, inst, firstMeasure, lastMeasure)) {
        json += first ? "" : ",";
        first = false;
        json += "{\"measure\":" + std::to_string(entry.measure) + ",\"layer\":" + std::to_string(entry.layer) +
                ",\"position\":" + std::to_string(entry.position) + ",\"duration\":" + std::to_string(entry.duration);
        if (entry.keys.empty()) {
            json += ",\"rest\":true";
        } else {
            json += ",\"keys\":[";
            for (size_t i = 0; i < entry.keys.size(); ++i) {
                json += (i > 0 ? "," : "") + std::to_string(entry.keys[i]);
            }
            json += "]";
        }
        json += std::string(",\"tuplet\":") + (entry.tuplet ? "true" : "false") + "}";
    }
    return json + "]";
}

}   // namespace stavio::views
