#include "tests/import/import_test_support.h"

#include "stavio/document/pitch.h"
#include "stavio/document_builder.h"

#include <algorithm>
#include <filesystem>

namespace import_test {

Listing ListDrumHits(const Bytes& file, bool asFarAsItGoes)
{
    const support::SmfListing smf = support::ListSmf(file, asFarAsItGoes);
    Listing listing;
    listing.tpq = smf.division;
    bool meterFound = false;
    for (const auto& track : smf.tracks) {
        for (const support::SmfEvent& ev : track) {
            if (ev.status == 0xFF && ev.data1 == 0x58 && ev.tick == 0 && !meterFound && ev.data.size() >= 2) {
                meterFound = true;
                listing.numerator = ev.data[0];
                listing.denominator = 1 << ev.data[1];
            }
            if (ev.IsNoteOn() && ev.Channel() == 10) listing.hits.push_back({ev.tick, ev.data1});
        }
    }
    std::stable_sort(listing.hits.begin(), listing.hits.end(),
                     [](const DrumHit& a, const DrumHit& b) { return a.tick < b.tick; });
    return listing;
}

std::vector<std::string> GrooveFiles()
{
    std::vector<std::string> paths;
    for (const auto& item : std::filesystem::directory_iterator(GrooveLibrary()))
        if (item.path().extension() == ".mid") paths.push_back(item.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

stavio::Document DrumDocument(int measures, int16_t beats, int16_t divbeat)
{
    return stavio::DocumentBuilder()
        .Measures(measures, beats, divbeat)
        .Staff("Drum Set")
        .DrumStaff(1)
        .Staff("Piano")
        .Build();
}

std::string Describe(const stavio::FrameContent& frame)
{
    std::string text;
    for (const EXENTRY& entry : frame.entries) {
        text += (text.empty() ? "" : " | ") + std::to_string(entry.elldur) + "+" + std::to_string(entry.actdur);
        text += entry.dura != entry.actdur ? "=" + std::to_string(entry.dura) : "";
        text += (entry.ef & kEntryInTuplet) != 0 ? "t" : "";
        text += (entry.ef & kEntryIsNote) == 0 ? ":r" : "";
        for (int i = 0; (entry.ef & kEntryIsNote) != 0 && i < entry.numNotes; ++i) {
            text += (i == 0 ? ":" : ",") +
                    std::to_string(stavio::NoteToMidiKey(entry.note[i].tcd, entry.note[i].alteration));
        }
    }
    return text;
}

std::string Describe(const stavio::Document& doc, int32_t inst, int32_t meas)
{
    const std::optional<stavio::FrameContent> frame = doc.Frame(inst, meas, 0);
    return frame ? Describe(*frame) : "(no frame)";
}

}   // namespace import_test
