#include "stavio/app/groove_preview.h"

#include "stavio/document_builder.h"
#include "stavio/midi_import/drum_groove.h"
#include "stavio/midi_import/midi_import.h"
#include "stavio/midi_import/smf_reader.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace stavio::app {

namespace {

namespace fs = std::filesystem;

constexpr int kTrailingFillPercent = 70;

std::string Lowercase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool IsDrumMessage(const midi_import::SmfEvent& event)
{
    return event.status >= 0x80 && event.status < 0xF0 && (event.status & 0x0F) == 9;
}

// The groove's length as the plug-in repeats it: see BuildGroovePreview.
int32_t RepeatedBars(const midi_import::SmfFile& file, int64_t barLength)
{
    const int64_t ticksPerQuarter = std::max(1, file.ticksPerQuarter);
    int64_t last = -1;
    for (const midi_import::SmfTrack& track : file.tracks) {
        for (const midi_import::SmfEvent& event : track.events) {
            if (IsDrumMessage(event)) {
                last = std::max(last, event.tick * kEduPerQuarter / ticksPerQuarter);
            }
        }
    }
    if (last < 0 || barLength <= 0) {
        return 0;
    }
    auto bars = static_cast<int32_t>(last / barLength + 1);
    if ((last % barLength) * 100 / barLength < kTrailingFillPercent && bars > 1) {
        --bars;
    }
    return bars;
}

}   // namespace

std::optional<std::string> FindGrooveFile(const std::string& folder, const std::string& name)
{
    std::error_code failure;
    for (fs::directory_iterator item(folder, failure), end; !failure && item != end; item.increment(failure)) {
        const std::string file = item->path().filename().string();
        const bool midiFile = Lowercase(item->path().extension().string()) == ".mid";
        if (item->is_regular_file(failure) && (file == name || (midiFile && item->path().stem().string() == name))) {
            return item->path().string();
        }
    }
    return std::nullopt;
}

toolbox::Result<GroovePreview> BuildGroovePreview(const std::string& path)
{
    midi_import::SmfFile file;
    std::string error;
    if (!midi_import::ReadSmfFile(path, file, error)) {
        return toolbox::Status::Failure(error);
    }
    GroovePreview preview;
    const midi_import::DrumGroove groove = midi_import::DrumGrooveOf(file);
    preview.bars = RepeatedBars(file, groove.barLength);
    if (groove.onsets.empty() || preview.bars == 0) {
        return toolbox::Status::Failure(path + ": the groove has no drum notes (MIDI channel 10)");
    }
    preview.numerator = groove.meter.numerator;
    preview.denominator = groove.meter.denominator;
    preview.tempo = midi_import::StartTempo(file);

    // Compound meters count dotted beats, as a score written in them does.
    const bool compound = preview.denominator >= 8 && preview.numerator % 3 == 0 && preview.numerator > 3;
    const int32_t note = 4 * kEduPerQuarter / preview.denominator;
    const auto beats = static_cast<int16_t>(compound ? preview.numerator / 3 : preview.numerator);
    const auto divbeat = static_cast<int16_t>(compound ? 3 * note : note);
    preview.document =
        DocumentBuilder().Measures(preview.bars, beats, divbeat).Staff("Drums", "Dr.").DrumStaff(1).Build();

    EREGION region{};
    region.start = EMUSICPOINT{kMainInstrumentList, 1, 1, 0};
    region.end = EMUSICPOINT{kMainInstrumentList, 1, static_cast<uint16_t>(preview.bars), kEndOfMeasure};
    if (!midi_import::ImportMidiFile(preview.document, region, path, error)) {
        return toolbox::Status::Failure(error);
    }
    return preview;
}

}   // namespace stavio::app
