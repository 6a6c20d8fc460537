// Every groove of the library imported into a document of its meter and checked against the
// MIDI file itself (an independent listing of its drum hits), and loosely played copies of
// grooves quantised like the originals.
#include "stavio/document/pitch.h"
#include "stavio/midi_import/midi_import.h"
#include "tests/import/import_test_support.h"

#include <cstdlib>
#include <random>

namespace {

using namespace import_test;
using stavio::Document;
using stavio::midi_import::ImportMidiBytes;
using stavio::midi_import::ImportMidiFile;

constexpr int kTolerance = 64;   // EDU a hit may move: a sixteenth swung at 60 % moves 51

struct Expected {
    int32_t position;   // EDU in the bar
    int key;
};

int BarsOf(const Listing& midi)
{
    return static_cast<int>(midi.hits.back().tick / (int64_t{midi.numerator} * 4 * midi.tpq / midi.denominator)) + 1;
}

bool NearAThird(int32_t position)   // of a quarter: a triplet eighth
{
    return std::abs(position % 1024 - 341) <= 8 || std::abs(position % 1024 - 683) <= 8;
}

int KeyOf(const EXENTRY& entry, int i)
{
    return stavio::NoteToMidiKey(entry.note[i].tcd, entry.note[i].alteration);
}

// Checks one measure against the hits of its bar; true when it holds a tuplet.
bool CheckMeasure(const stavio::FrameContent& frame, const std::vector<Expected>& hits, int32_t length)
{
    int32_t position = 0;   // entries follow each other from the start to the end
    for (const EXENTRY& entry : frame.entries) {
        EXPECT_EQ(+entry.elldur, position);
        EXPECT_GE(entry.dura, 256) << "no 32nds";
        position += entry.actdur;
        for (int i = 0; (entry.ef & kEntryIsNote) != 0 && i < entry.numNotes; ++i) {
            bool heard = false;
            for (const Expected& hit : hits) {
                heard = heard || (hit.key == KeyOf(entry, i) && std::abs(entry.elldur - hit.position) <= kTolerance);
            }
            EXPECT_TRUE(heard) << "key " << KeyOf(entry, i) << " at " << entry.elldur << " is not in the file";
        }
    }
    EXPECT_EQ(position, length);
    for (const Expected& hit : hits) {
        bool found = false;
        for (const EXENTRY& entry : frame.entries) {
            for (int i = 0; i < entry.numNotes && std::abs(entry.elldur - hit.position) <= kTolerance; ++i) {
                if (KeyOf(entry, i) != hit.key) continue;
                found = true;
                const bool inTuplet = (entry.ef & kEntryInTuplet) != 0;
                const bool straightOffBeat = hit.position % 256 == 0 && hit.position % 1024 != 0;
                EXPECT_TRUE(NearAThird(hit.position) ? inTuplet : !straightOffBeat || !inTuplet) << hit.position;
            }
        }
        EXPECT_TRUE(found) << "key " << hit.key << " at " << hit.position << " missing";
    }
    for (const TupletInfo& tuplet : frame.tuplets) {
        EXPECT_EQ(tuplet.tpDef.symbolicNum * 1000 + tuplet.tpDef.refNum, 3002) << "3 in the time of 2";
        EXPECT_EQ(+tuplet.tupPeriod, 1024);
    }
    return !frame.tuplets.empty();
}

TEST(GrooveLibraryImport, EveryGrooveMatchesItsMidiFileBarByBar)
{
    const std::vector<std::string> grooves = GrooveFiles();
    ASSERT_GE(grooves.size(), 25u);
    for (const std::string& path : grooves) {
        SCOPED_TRACE(path);
        const Listing midi = ListDrumHits(ReadBytes(path));
        ASSERT_FALSE(midi.hits.empty());
        const auto divbeat = static_cast<int16_t>(4096 / midi.denominator);
        const int32_t length = midi.numerator * divbeat;
        const int bars = BarsOf(midi);
        Document doc = DrumDocument(bars + 1, static_cast<int16_t>(midi.numerator), divbeat);
        std::string error;
        ASSERT_TRUE(ImportMidiFile(doc, Region(1, 1, bars + 1), path, error)) << error;

        std::vector<std::vector<Expected>> perBar(static_cast<size_t>(bars) + 1);
        bool tripletFeel = false;
        for (const DrumHit& hit : midi.hits) {
            const int64_t edu = hit.tick * 1024 / midi.tpq;
            perBar[static_cast<size_t>(edu / length)].push_back({static_cast<int32_t>(edu % length), hit.key});
            tripletFeel = tripletFeel || NearAThird(static_cast<int32_t>(edu % length));
        }
        bool tuplets = false;
        for (int bar = 0; bar <= bars; ++bar) {
            SCOPED_TRACE("measure " + std::to_string(bar + 1));
            tuplets = CheckMeasure(*doc.Frame(1, bar + 1, 0), perBar[static_cast<size_t>(bar)], length) || tuplets;
        }
        EXPECT_EQ(tuplets, tripletFeel);
        const bool notated = length == 2048 || length == 3072 || length == 4096 || length == 6144;
        EXPECT_EQ(Describe(doc, 1, bars + 1), "0+" + std::to_string(length) + (notated ? "" : "=4096") + ":r")
            << "the measure after the groove is one whole-measure rest";
    }
}

// Loosely played copies: every hit moved by up to about a 200th of a second either way.
TEST(GrooveLibraryImport, JitteredCopiesQuantiseLikeTheOriginal)
{
    for (const char* name :
         {"Rock 8ths", "Funk 16ths Ghost Notes", "Pop 16ths", "Waltz 3-4", "Jazz Swing", "Shuffle"}) {
        SCOPED_TRACE(name);
        const Bytes file = ReadBytes(GrooveLibrary() + "/" + name + ".mid");
        const Listing midi = ListDrumHits(file);
        const int bars = BarsOf(midi);
        const auto beats = static_cast<int16_t>(midi.numerator);
        const auto divbeat = static_cast<int16_t>(4096 / midi.denominator);
        Document original = DrumDocument(bars, beats, divbeat);
        std::string error;
        ASSERT_TRUE(ImportMidiBytes(original, Region(1, 1, bars), file, name, error)) << error;
        const int spread = midi.tpq / 48;
        for (unsigned seed = 1; seed <= 4; ++seed) {
            std::mt19937 random(seed);
            std::uniform_int_distribution<int> shift(-spread, spread);
            std::vector<DrumHit> played = midi.hits;
            for (DrumHit& hit : played) hit.tick = std::max<int64_t>(0, hit.tick + shift(random));
            Document loose = DrumDocument(bars, beats, divbeat);
            const Bytes looseFile = DrumFile(midi.tpq, midi.numerator, midi.denominator, played);
            ASSERT_TRUE(ImportMidiBytes(loose, Region(1, 1, bars), looseFile, "loose.mid", error)) << error;
            for (int meas = 1; meas <= bars; ++meas) {
                EXPECT_EQ(Describe(loose, 1, meas), Describe(original, 1, meas))
                    << "seed " << seed << ", measure " << meas;
            }
        }
    }
}

}   // namespace
