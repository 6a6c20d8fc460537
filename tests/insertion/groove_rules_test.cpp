// The rules that lay a groove over the region, and the respelling of moved drum keys.
#include "stavio/document/pitch.h"
#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/platform/durations.h"
#include "tamberlyne/plugin/groove_import.h"
#include "tamberlyne/plugin/groove_shape.h"
#include "tests/score/score_test_support.h"

#include <array>

namespace {

LEventRec Meter(int32_t beats, int32_t ticksPerMeasure)
{
    LEventRec meter;
    meter.BPM = beats;
    meter.TPM = ticksPerMeasure;
    return meter;
}

bool Fits(int16_t beats, int16_t divbeat, int32_t grooveBeats, int32_t grooveEdu)
{
    EDTMeasureSpec measure{};
    measure.beats = beats;
    measure.divbeat = divbeat;
    return GrooveMeterFits(measure, Meter(grooveBeats, grooveEdu * 480 / 1024), 480);
}

}   // namespace

TEST(GrooveRules, ATrailingFillInTheFirstSeventyPercentIsNoRepetition)
{
    // A closing crash on the downbeat, at 69.9 % and 70 %; a one-bar groove keeps its bar; no measure
    // length: nothing to judge.
    EXPECT_EQ(support::Ints(TrimTrailingFill(5, 0, 1920), TrimTrailingFill(5, 1343, 1920),
                            TrimTrailingFill(5, 1344, 1920), TrimTrailingFill(1, 0, 1920), TrimTrailingFill(2, 0, 0)),
              support::Ints(4, 4, 5, 1, 2));
    // Region 10, groove 4: three imports; region 2, groove 4: one.
    EXPECT_EQ(
        (std::vector<int32_t>{ImportLoops(1, 10, 4), ImportLoops(3, 4, 4), ImportLoops(1, 8, 4), ImportLoops(5, 5, 1)}),
        (std::vector<int32_t>{3, 1, 2, 1}));
}

TEST(GrooveRules, MetersFitOnLengthAndOnBeatsCountedPlainOrDotted)
{
    EXPECT_EQ((std::vector<int32_t>{DotsBase(0), DotsBase(1), DotsBase(1023), DotsBase(1024), DotsBase(1536),
                                    DotsBase(2048), IntLog2(32768), IntLog2(32767)}),
              (std::vector<int32_t>{0, 1, 512, 1024, 1024, 2048, 15, 14}));
    // (beats, divbeat, groove beats, groove EDU) -> fits: 2/2 against 4/4 does, lengths agreeing with beats
    // that do not does not, 6/8 as two dotted quarters does.
    for (const auto& [beats, divbeat, grooveBeats, grooveEdu, fits] :
         std::vector<std::array<int, 5>>{{4, 1024, 4, 4096, 1},
                                         {4, 1024, 2, 4096, 1},
                                         {2, 2048, 4, 4096, 1},
                                         {4, 1024, 3, 4096, 0},
                                         {4, 1024, 4, 3072, 0},
                                         {2, 1536, 6, 3072, 1},
                                         {2, 1536, 3, 3072, 0},
                                         {6, 512, 6, 3072, 1},
                                         {3, 1024, 6, 3584, 0}})
        EXPECT_EQ(Fits(int16_t(beats), int16_t(divbeat), grooveBeats, grooveEdu), fits != 0)
            << beats << " x " << divbeat << " against " << grooveBeats << " in " << grooveEdu;
}

class Respelling : public score_test::ScoreTest {};

TEST_F(Respelling, MovedKeysGoBackUpAndEverythingElseStays)
{
    using stavio::Note;
    Start(stavio::DocumentBuilder()
              .Measures(1)
              .Staff("Drums")
              .Entries(1, 1, 0, {Note(37, 1024), stavio::Chord({36, 41}, 1024), stavio::Rest(1024), Note(50, 1024)})
              .Build());
    uint8_t reverseMap[128] = {};
    reverseMap[37] = 62;   // where the cleaner put them and what they were
    reverseMap[41] = 81;
    reverseMap[50] = 40;   // a map that would lower a note is not followed
    {
        LoadedFrame frame(0, 1, 1, 0);
        RespellFrame(frame.get(), reverseMap);
        frame.Save();
    }
    const std::vector<EXENTRY> e = score_test::Entries(doc(), 1, 1);
    auto key = [&](size_t i, size_t n) { return stavio::NoteToMidiKey(e[i].note[n].tcd, e[i].note[n].alteration); };
    EXPECT_EQ((std::vector<int>{key(0, 0), key(1, 0), key(1, 1), key(3, 0), e[2].numNotes}),
              (std::vector<int>{62, 36, 81, 50, 0}));
    // C#2 goes 13 steps up to B#3, then one step and one sharp more: C double-sharp 4.
    EXPECT_EQ((std::vector<int>{e[0].note[0].tcd, e[0].note[0].alteration}), (std::vector<int>{0, 2}));
}

TEST_F(Respelling, AHostThatNeverReportsTheKeyCannotHoldTheWalk)
{
    Start(stavio::DocumentBuilder().Measures(1).Build());
    gStavioFuncs.SX_NoteToMidi = [](const EXNOTE*, int32_t, EVERSION) -> int32_t { return 40; };
    EXNOTE note{};
    RespellNote(note, 62);
    EXPECT_LE(note.tcd + note.alteration, 200);
    gStavioFuncs.SX_NoteToMidi = [](const EXNOTE* n, int32_t, EVERSION) { return 99 + 2 * n->alteration; };
    note = EXNOTE{};
    RespellNote(note, 100);   // overshoots at once: the sharp walk runs away from the key
    EXPECT_LE(note.alteration, 200);
}
