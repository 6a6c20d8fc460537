// The bundled grooves: regenerating them gives the committed bytes, and each cleans into
// what the host should import, checked by reading the output independently.
#include <filesystem>
#include <map>
#include <set>

#include "grooves/tools/groove_library.h"
#include "grooves/tools/groove_pattern.h"
#include "midi_test_support.h"

namespace {
namespace fs = std::filesystem;

struct LibraryGroove {
    grooves::GroovePattern pattern;
    Bytes bytes;
};

std::vector<LibraryGroove> CommittedLibrary()
{
    std::vector<LibraryGroove> library;
    for (const auto& entry : fs::directory_iterator(SourceDir() + "/grooves/patterns")) {
        const Bytes text = ReadBytes(entry.path().string());
        LibraryGroove groove{grooves::ParsePattern(std::string(text.begin(), text.end()), entry.path().string()), {}};
        groove.bytes = ReadBytes(support::GrooveLibrary() + "/" + groove.pattern.title + ".mid");
        library.push_back(groove);
    }
    return library;
}

// (tick, key) of every sounding drum note of the first track holding channel-10 notes.
std::multiset<std::pair<int32_t, int>> FirstDrumTrackHits(const SmfListing& file)
{
    for (const auto& track : file.tracks) {
        std::multiset<std::pair<int32_t, int>> hits;
        for (const SmfEvent& ev : track)
            if (ev.IsNoteOn() && ev.Channel() == 10) hits.insert({ev.tick, ev.data1});
        if (!hits.empty()) return hits;
    }
    return {};
}

class MidiGrooveLibrary : public MidiTest {};

TEST_F(MidiGrooveLibrary, RegeneratingGivesTheCommittedFiles)
{
    const auto rendered = grooves::RenderLibrary(SourceDir() + "/grooves/patterns");
    std::set<std::string> committed;
    for (const auto& entry : fs::directory_iterator(SourceDir() + "/grooves/Tamberlyne"))
        committed.insert(entry.path().filename().string());
    EXPECT_GE(rendered.size(), 24u);
    EXPECT_EQ(committed.size(), rendered.size());
    for (const auto& groove : rendered) {
        EXPECT_EQ(committed.count(groove.fileName), 1u) << groove.fileName;
        EXPECT_EQ(ReadBytes(support::GrooveLibrary() + "/" + groove.fileName), groove.bytes) << groove.fileName;
    }
}

TEST_F(MidiGrooveLibrary, EveryGrooveCleansIntoItsDrumPart)
{
    std::map<std::string, int> features;
    for (const LibraryGroove& g : CommittedLibrary()) {
        SCOPED_TRACE(g.pattern.title);
        const SmfListing original = ListSmf(g.bytes);
        const CleanOutcome out = Clean(g.bytes);
        ASSERT_TRUE(out.result);
        ASSERT_TRUE(out.foundDrums);
        EXPECT_TRUE(Alerts().empty());
        const SmfListing cleaned = ListSmf(out.image);

        // Format 1 keeps the tempo track and the first drum track; format 0 its one track.
        const size_t tracks = g.pattern.format == 0 ? 1 : 2;
        EXPECT_EQ(support::Ints(cleaned.tracks.size(), cleaned.trackCountField, cleaned.division),
                  support::Ints(tracks, tracks, g.pattern.division));

        // Only channel-10 notes sound, and they are the first drum part's, keys moved back.
        std::multiset<std::pair<int32_t, int>> heard;
        for (const auto& track : cleaned.tracks)
            for (const SmfEvent& ev : track) {
                if (ev.status != 0xFF) {
                    EXPECT_EQ(ev.Channel(), 10);
                }
                if (!ev.IsNoteOn()) continue;
                EXPECT_LE(ev.data1, 59);
                heard.insert({ev.tick, out.reverseMap[ev.data1] != 0 ? out.reverseMap[ev.data1] : ev.data1});
            }
        EXPECT_EQ(heard, FirstDrumTrackHits(original));

        // The groove's meter, and its length in bars as the insertion driver reckons it (a
        // last bar whose final drum message lies in its first 70 % is a closing hit).
        const int32_t bars = out.lastBar - (out.lastTickInBar * 100 / out.meter.TPM < 70 && out.lastBar > 1 ? 1 : 0);
        EXPECT_EQ(support::Ints(out.meter.BPM, out.meter.Denominator, out.meter.TPM, bars),
                  support::Ints(g.pattern.numerator, g.pattern.denominator, g.pattern.BarTicks(), g.pattern.bars));

        EXPECT_EQ(out.image, CleanByMovingBytes(g.bytes).image);

        features["format 0"] += g.pattern.format == 0;
        features["remapped"] += out.remapped;
        features["running status"] += g.pattern.runningStatus;
        features["ending"] += !g.pattern.ending.empty();
        features["division " + std::to_string(g.pattern.division)] += 1;
        features["tracks cut"] += original.tracks.size() > cleaned.tracks.size();
    }
    for (const char* feature : {"format 0", "remapped", "running status", "ending", "division 96", "division 480",
                                "division 960", "tracks cut"})
        EXPECT_GE(features[feature], 2) << feature;
}
}   // namespace
