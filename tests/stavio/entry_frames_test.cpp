// Entry frames as a plug-in meets them through the table: host-allocated copies of one
// staff-measure-layer, grown and shrunk by the host, written back with the frame detail kept
// in step, and every frame accounted for.
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/support/test_support.h"

#include <array>
#include <vector>

namespace stavio {
namespace {

using support::Ints;
constexpr EVERSION kV = kPluginApiVersion;

class StavioEntryFrames : public ::testing::Test {
protected:
    StavioEntryFrames()
    {
        host_.SetDocument(DocumentBuilder()
                              .Measures(4)
                              .Staff("Piano")
                              .Staff("Drum Set")
                              .Entries(2, 1, 0, {Note(36, 1024), Chord({38, 42}, 1024), Rest(2048)})
                              .Entries(2, 2, 0, {Note(42, 512), Note(42, 512), Note(42, 512), Rest(2560)})
                              .Tuplet(2, 2, 0, TupletSpec{0, 2, 3, 512, 2, 512})
                              .Build());
    }
    const StavioFuncs& T() const { return host_.FunctionTable(); }
    int16_t FrameNumber(int meas, int layer) const { return host_.document().FrameNumber(2, meas, layer); }
    // (stoff, enoff) of the frame's first tuplet.
    static std::vector<int64_t> Tuplet(const EXQVF2005a* f) { return Ints(f->tpInfo[0].stoff, f->tpInfo[0].enoff); }

    Host host_;
};

TEST_F(StavioEntryFrames, LoadGivesACopyOfTheLayerOrAnEmptyFrameAndNullOnlyWhereThereIsNoPlace)
{
    EXQVF2005a* frame = T().SX_LoadQVF(0, 2, 1, 0, 0, kV);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(Ints(frame->inst, frame->staffSlot, frame->meas, frame->frame != 0, frame->numEntries),
              Ints(2, 2, 1, true, 3));
    const EXENTRY* e = frame->pent;
    EXPECT_EQ(Ints(e[0].ef, T().SX_NoteToMidi(&e[0].note[0], 0, kV), e[1].numNotes, e[1].elldur, e[2].numNotes),
              Ints(kEntryValid | kEntryIsNote, 36, 2, 1024, 0));
    EXPECT_NE(Ints(e[0].entnum), Ints(e[1].entnum));

    EXQVF2005a* empty = T().SX_LoadQVF(0, 1, 4, 3, 1, 0x0A000000);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(Ints(empty->numEntries, empty->frame, empty->numTuplets), Ints(0, 0, 0));

    // No staff in slot 3 or 0, no measure 5 or 0, layers are 0..3, list 1 is empty.
    for (const auto& [list, slot, meas, layer] : std::vector<std::array<int, 4>>{
             {0, 3, 1, 0}, {0, 0, 1, 0}, {0, 1, 5, 0}, {0, 1, 0, 0}, {0, 1, 1, 4}, {1, 1, 1, 0}})
        EXPECT_EQ(T().SX_LoadQVF(list, slot, meas, layer, 0, kV), nullptr)
            << list << " " << slot << " " << meas << " " << layer;
    EXPECT_EQ(host_.LiveFrameCount(), 2u);
    T().SX_FreeQVF(frame, kV);
    T().SX_FreeQVF(empty, kV);
    EXPECT_EQ(host_.LiveFrameCount(), 0u);
}

TEST_F(StavioEntryFrames, InsertionZeroesNewEntriesAndStartsThemWhereThePreviousOneEnds)
{
    EXQVF2005a* frame = T().SX_LoadQVF(0, 1, 1, 0, 0, kV);
    ASSERT_NE(frame, nullptr);
    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 0, 1, kV), 1);
    ASSERT_EQ(frame->numEntries, 1);
    EXPECT_EQ(Ints(frame->pent[0].ef, frame->pent[0].elldur), Ints(kEntryValid, 0));
    frame->pent[0].dura = 1024;
    frame->pent[0].actdur = 1024;
    frame->pent[0].elldur = 512;

    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 1, 2, kV), 1) << "append two";
    ASSERT_EQ(frame->numEntries, 3);
    EXPECT_EQ(Ints(frame->pent[1].elldur, frame->pent[2].elldur, frame->pent[2].entnum, frame->pent[2].numNotes),
              Ints(1536, 1536, 0, 0));

    frame->pent[2].dura = 77;
    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 1, 1, kV), 1) << "in the middle";
    EXPECT_EQ(Ints(frame->pent[1].elldur), Ints(1536));
    EXPECT_EQ(frame->pent[3].dura, 77) << "later entries move up";

    // Beyond the end, before the start, none, no frame.
    EXPECT_EQ(Ints(T().SX_InsertEXENTRY(frame, 5, 1, kV), T().SX_InsertEXENTRY(frame, -1, 1, kV),
                   T().SX_InsertEXENTRY(frame, 0, 0, kV), T().SX_InsertEXENTRY(nullptr, 0, 1, kV)),
              Ints(0, 0, 0, 0));
    EXPECT_EQ(frame->numEntries, 4);
    T().SX_FreeQVF(frame, kV);
}

TEST_F(StavioEntryFrames, DeletionRemovesFromTheMiddleAndTheEndsAndRefusesWhatIsNotThere)
{
    EXQVF2005a* frame = T().SX_LoadQVF(0, 2, 1, 0, 0, kV);
    ASSERT_NE(frame, nullptr);
    const uint32_t first = frame->pent[0].entnum;
    const uint32_t last = frame->pent[2].entnum;
    // Beyond the end, past the end, none.
    EXPECT_EQ(Ints(T().SX_DeleteEXENTRY(frame, 3, 1, kV), T().SX_DeleteEXENTRY(frame, 2, 2, kV),
                   T().SX_DeleteEXENTRY(frame, 0, 0, kV)),
              Ints(0, 0, 0));
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 1, 1, kV), 1);
    ASSERT_EQ(frame->numEntries, 2);
    EXPECT_EQ(Ints(frame->pent[0].entnum, frame->pent[1].entnum), Ints(first, last));
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 1, 1, kV), 1);
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 0, 1, kV), 1);
    EXPECT_EQ(frame->numEntries, 0);
    EXPECT_TRUE(frame->pent == nullptr);
    EXPECT_EQ(T().SX_DeleteEXENTRY(frame, 0, 1, kV), 0) << "nothing left";
    T().SX_FreeQVF(frame, kV);
}

TEST_F(StavioEntryFrames, SaveNumbersNewEntriesAndKeepsTheFrameDetailInStepBothWays)
{
    ASSERT_EQ(FrameNumber(3, 1), 0);
    EXQVF2005a* frame = T().SX_LoadQVF(0, 2, 3, 1, 0, kV);
    ASSERT_NE(frame, nullptr);
    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 0, 2, kV), 1);
    frame->pent[1].entnum = 0;
    ASSERT_EQ(T().SX_SaveQVF(frame, kV), 1);
    EXPECT_NE(uint32_t{frame->pent[0].entnum}, 0u) << "numbers are written into the plug-in's copy";
    EXPECT_NE(Ints(frame->pent[0].entnum), Ints(frame->pent[1].entnum));
    const int16_t number = FrameNumber(3, 1);
    EXPECT_NE(number, 0);
    EXPECT_EQ(frame->frame, number);
    EXPECT_NE(number, FrameNumber(1, 0)) << "frame numbers are the frame's own";

    // What the plug-in reads through the frame detail.
    EDataID key{};
    key.detail = EDetailID{2, 3, 0};
    int16_t frames[4] = {};
    EDTGfhold2004 hold{};
    hold.frame = frames;
    int32_t size = kGfhold2004Size;
    ASSERT_EQ(T().SX_LoadEData(kTagGfhold, &key, &hold, &size, kV), 1);
    EXPECT_EQ(frames[1], number);

    const uint32_t kept = frame->pent[0].entnum;
    frame->pent[1].entnum = kept;
    ASSERT_EQ(T().SX_SaveQVF(frame, kV), 1);
    EXPECT_EQ(uint32_t{frame->pent[0].entnum}, kept) << "a second save keeps the numbers";
    EXPECT_NE(uint32_t{frame->pent[1].entnum}, kept) << "a copied number is replaced";
    EXPECT_EQ(FrameNumber(3, 1), number);

    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 0, frame->numEntries, kV), 1);
    ASSERT_EQ(T().SX_SaveQVF(frame, kV), 1);
    EXPECT_EQ(Ints(FrameNumber(3, 1), frame->frame), Ints(0, 0)) << "an emptied layer has no frame";
    T().SX_FreeQVF(frame, kV);
    EXPECT_EQ(host_.document().Frame(2, 3, 1)->entries.size(), 0u);
}

TEST_F(StavioEntryFrames, TupletsTravelWithTheirEntriesAndAreKeptOnSave)
{
    EXQVF2005a* frame = T().SX_LoadQVF(0, 2, 2, 0, 0, kV);
    ASSERT_NE(frame, nullptr);
    ASSERT_EQ(frame->numTuplets, 1);
    EXPECT_EQ(Ints(frame->tpInfo[0].stoff, frame->tpInfo[0].enoff, frame->tpInfo[0].tupPeriod, frame->pent[0].actdur),
              Ints(0, 2, 1024, 341));
    EXPECT_TRUE(frame->pent[1].ef & kEntryInTuplet);

    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 0, 1, kV), 1);
    EXPECT_EQ(Tuplet(frame), Ints(1, 3));
    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 2, 1, kV), 1) << "inside the tuplet";
    EXPECT_EQ(Tuplet(frame), Ints(1, 4));
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 0, 2, kV), 1) << "cuts off its first entry";
    EXPECT_EQ(Tuplet(frame), Ints(0, 2));
    ASSERT_EQ(T().SX_SaveQVF(frame, kV), 1);
    T().SX_FreeQVF(frame, kV);
    EXPECT_EQ(host_.document().Frame(2, 2, 0)->tuplets.size(), 1u);

    frame = T().SX_LoadQVF(0, 2, 2, 0, 0, kV);
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 0, 3, kV), 1);
    EXPECT_EQ(frame->numTuplets, 0) << "a tuplet goes with its last entry";
    EXPECT_TRUE(frame->tpInfo == nullptr);
    T().SX_FreeQVF(frame, kV);
}

TEST_F(StavioEntryFrames, EveryFrameIsAccountedForAndForeignOrFreedFramesAreRefused)
{
    EXQVF2005a* frame = T().SX_LoadQVF(0, 2, 1, 0, 0, kV);
    ASSERT_NE(frame, nullptr);
    EXQVF2005a copy = *frame;
    EXPECT_EQ(T().SX_SaveQVF(&copy, kV), 0) << "a copy of the header is not the host's frame";
    T().SX_FreeQVF(&copy, kV);
    T().SX_FreeQVF(nullptr, kV);
    EXPECT_EQ(Ints(host_.RefusedFrameFrees(), host_.LiveFrameCount()), Ints(2, 1));

    EXENTRY* const entries = frame->pent;
    frame->pent = nullptr;
    EXPECT_EQ(T().SX_SaveQVF(frame, kV), 0) << "the entry array must stay the host's";
    EXPECT_EQ(T().SX_InsertEXENTRY(frame, 0, 1, kV), 0);
    frame->pent = entries;
    frame->numEntries = 2;
    EXPECT_EQ(T().SX_SaveQVF(frame, kV), 0) << "the count must stay the host's";
    frame->numEntries = 3;
    EXPECT_EQ(T().SX_SaveQVF(frame, kV), 1);

    T().SX_FreeQVF(frame, kV);
    EXPECT_EQ(host_.LiveFrameCount(), 0u);
    // A second free is refused, also once other frames have been handed out since.
    std::vector<EXQVF2005a*> others;
    for (int i = 0; i < 8; ++i) others.push_back(T().SX_LoadQVF(0, 1, 1, 0, 0, kV));
    T().SX_FreeQVF(frame, kV);
    EXPECT_EQ(T().SX_SaveQVF(frame, kV), 0);
    EXPECT_EQ(Ints(host_.RefusedFrameFrees(), host_.LiveFrameCount()), Ints(3, 8));
    for (EXQVF2005a* other : others) T().SX_FreeQVF(other, kV);
    EXPECT_EQ(Ints(host_.LiveFrameCount(), host_.Frames().LoadedCount()), Ints(0, 9));
}

TEST_F(StavioEntryFrames, AFrameSavedInsideAnEditBracketIsUndoneWithIt)
{
    ASSERT_EQ(T().SX_StartStavioEdit("Fill", kV), 1);
    EXQVF2005a* frame = T().SX_LoadQVF(0, 1, 2, 0, 0, kV);
    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 0, 1, kV), 1);
    ASSERT_EQ(T().SX_SaveQVF(frame, kV), 1);
    T().SX_FreeQVF(frame, kV);
    ASSERT_EQ(T().SX_EndStavioEdit(kV), 1);
    EXPECT_EQ(host_.document().Frame(1, 2, 0)->entries.size(), 1u);

    ASSERT_TRUE(host_.document().Undo());
    EXPECT_TRUE(host_.document().Frame(1, 2, 0)->Empty());
    EXPECT_EQ(host_.document().FrameNumber(1, 2, 0), 0);
    ASSERT_TRUE(host_.document().Redo());
    EXPECT_EQ(host_.document().Frame(1, 2, 0)->entries.size(), 1u);
}

}   // namespace
}   // namespace stavio
