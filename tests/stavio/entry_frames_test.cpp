// Entry frames as a plug-in meets them through the table: host-allocated copies of one
// staff-measure-layer, grown and shrunk by the host, written back with the frame detail kept
// in step, and every frame accounted for.
#include "stavio/document_builder.h"
#include "stavio/host.h"

#include <gtest/gtest.h>

#include <vector>

namespace stavio {
namespace {

constexpr EVERSION kV = kPluginApiVersion;

// Packed 32-bit fields are compared by value: a reference to one may be unaligned.
template <typename T>
T Copy(T value)
{
    return value;
}

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

    Host host_;
};

TEST_F(StavioEntryFrames, LoadGivesACopyOfTheLayerOrAnEmptyFrameAndNullOnlyWhereThereIsNoPlace)
{
    EXQVF2005a* frame = T().SX_LoadQVF(0, 2, 1, 0, 0, kV);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->inst, 2);
    EXPECT_EQ(frame->staffSlot, 2);
    EXPECT_EQ(frame->meas, 1);
    EXPECT_NE(frame->frame, 0);
    ASSERT_EQ(frame->numEntries, 3);
    EXPECT_EQ(Copy(frame->pent[0].ef), kEntryValid | kEntryIsNote);
    EXPECT_EQ(T().SX_NoteToMidi(&frame->pent[0].note[0], 0, kV), 36);
    EXPECT_EQ(frame->pent[1].numNotes, 2);
    EXPECT_EQ(Copy(frame->pent[1].elldur), 1024);
    EXPECT_EQ(frame->pent[2].numNotes, 0);
    EXPECT_NE(Copy(frame->pent[0].entnum), Copy(frame->pent[1].entnum));

    EXQVF2005a* empty = T().SX_LoadQVF(0, 1, 4, 3, 1, 0x0A000000);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->numEntries, 0);
    EXPECT_EQ(empty->frame, 0);
    EXPECT_EQ(empty->numTuplets, 0);

    EXPECT_EQ(T().SX_LoadQVF(0, 3, 1, 0, 0, kV), nullptr) << "no staff in slot 3";
    EXPECT_EQ(T().SX_LoadQVF(0, 0, 1, 0, 0, kV), nullptr);
    EXPECT_EQ(T().SX_LoadQVF(0, 1, 5, 0, 0, kV), nullptr) << "no measure 5";
    EXPECT_EQ(T().SX_LoadQVF(0, 1, 0, 0, 0, kV), nullptr);
    EXPECT_EQ(T().SX_LoadQVF(0, 1, 1, 4, 0, kV), nullptr) << "layers are 0..3";
    EXPECT_EQ(T().SX_LoadQVF(1, 1, 1, 0, 0, kV), nullptr) << "list 1 is empty";
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
    EXPECT_EQ(Copy(frame->pent[0].ef), kEntryValid);
    EXPECT_EQ(Copy(frame->pent[0].elldur), 0);
    frame->pent[0].dura = 1024;
    frame->pent[0].actdur = 1024;
    frame->pent[0].elldur = 512;

    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 1, 2, kV), 1) << "append two";
    ASSERT_EQ(frame->numEntries, 3);
    EXPECT_EQ(Copy(frame->pent[1].elldur), 1536);
    EXPECT_EQ(Copy(frame->pent[2].elldur), 1536);
    EXPECT_EQ(Copy(frame->pent[2].entnum), 0u);
    EXPECT_EQ(frame->pent[2].numNotes, 0);

    frame->pent[2].dura = 77;
    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 1, 1, kV), 1) << "in the middle";
    EXPECT_EQ(Copy(frame->pent[1].elldur), 1536);
    EXPECT_EQ(frame->pent[3].dura, 77) << "later entries move up";

    EXPECT_EQ(T().SX_InsertEXENTRY(frame, 5, 1, kV), 0) << "index beyond the end";
    EXPECT_EQ(T().SX_InsertEXENTRY(frame, -1, 1, kV), 0);
    EXPECT_EQ(T().SX_InsertEXENTRY(frame, 0, 0, kV), 0);
    EXPECT_EQ(T().SX_InsertEXENTRY(nullptr, 0, 1, kV), 0);
    EXPECT_EQ(frame->numEntries, 4);
    T().SX_FreeQVF(frame, kV);
}

TEST_F(StavioEntryFrames, DeletionRemovesFromTheMiddleAndTheEndsAndRefusesWhatIsNotThere)
{
    EXQVF2005a* frame = T().SX_LoadQVF(0, 2, 1, 0, 0, kV);
    ASSERT_NE(frame, nullptr);
    const uint32_t first = frame->pent[0].entnum;
    const uint32_t last = frame->pent[2].entnum;
    EXPECT_EQ(T().SX_DeleteEXENTRY(frame, 3, 1, kV), 0);
    EXPECT_EQ(T().SX_DeleteEXENTRY(frame, 2, 2, kV), 0) << "past the end";
    EXPECT_EQ(T().SX_DeleteEXENTRY(frame, 0, 0, kV), 0);
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 1, 1, kV), 1);
    ASSERT_EQ(frame->numEntries, 2);
    EXPECT_EQ(Copy(frame->pent[0].entnum), first);
    EXPECT_EQ(Copy(frame->pent[1].entnum), last);
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 1, 1, kV), 1);
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 0, 1, kV), 1);
    EXPECT_EQ(frame->numEntries, 0);
    EXPECT_EQ(Copy(frame->pent), nullptr);
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
    EXPECT_NE(Copy(frame->pent[0].entnum), 0u) << "numbers are written into the plug-in's copy";
    EXPECT_NE(Copy(frame->pent[0].entnum), Copy(frame->pent[1].entnum));
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
    EXPECT_EQ(Copy(frame->pent[0].entnum), kept) << "a second save keeps the numbers";
    EXPECT_NE(Copy(frame->pent[1].entnum), kept) << "a copied number is replaced";
    EXPECT_EQ(FrameNumber(3, 1), number);

    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 0, frame->numEntries, kV), 1);
    ASSERT_EQ(T().SX_SaveQVF(frame, kV), 1);
    EXPECT_EQ(FrameNumber(3, 1), 0) << "an emptied layer has no frame";
    EXPECT_EQ(frame->frame, 0);
    T().SX_FreeQVF(frame, kV);
    EXPECT_EQ(host_.document().Frame(2, 3, 1)->entries.size(), 0u);
}

TEST_F(StavioEntryFrames, TupletsTravelWithTheirEntriesAndAreKeptOnSave)
{
    EXQVF2005a* frame = T().SX_LoadQVF(0, 2, 2, 0, 0, kV);
    ASSERT_NE(frame, nullptr);
    ASSERT_EQ(frame->numTuplets, 1);
    EXPECT_EQ(frame->tpInfo[0].stoff, 0);
    EXPECT_EQ(frame->tpInfo[0].enoff, 2);
    EXPECT_EQ(Copy(frame->tpInfo[0].tupPeriod), 1024);
    EXPECT_EQ(Copy(frame->pent[0].actdur), 341);
    EXPECT_TRUE(frame->pent[1].ef & kEntryInTuplet);

    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 0, 1, kV), 1);
    EXPECT_EQ(frame->tpInfo[0].stoff, 1);
    EXPECT_EQ(frame->tpInfo[0].enoff, 3);
    ASSERT_EQ(T().SX_InsertEXENTRY(frame, 2, 1, kV), 1) << "inside the tuplet";
    EXPECT_EQ(frame->tpInfo[0].enoff, 4);
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 0, 2, kV), 1) << "cuts off its first entry";
    EXPECT_EQ(frame->tpInfo[0].stoff, 0);
    EXPECT_EQ(frame->tpInfo[0].enoff, 2);
    ASSERT_EQ(T().SX_SaveQVF(frame, kV), 1);
    T().SX_FreeQVF(frame, kV);
    EXPECT_EQ(host_.document().Frame(2, 2, 0)->tuplets.size(), 1u);

    frame = T().SX_LoadQVF(0, 2, 2, 0, 0, kV);
    ASSERT_EQ(T().SX_DeleteEXENTRY(frame, 0, 3, kV), 1);
    EXPECT_EQ(frame->numTuplets, 0) << "a tuplet goes with its last entry";
    EXPECT_EQ(Copy(frame->tpInfo), nullptr);
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
    EXPECT_EQ(host_.RefusedFrameFrees(), 2u);
    EXPECT_EQ(host_.LiveFrameCount(), 1u);

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
    for (int i = 0; i < 8; ++i) {
        others.push_back(T().SX_LoadQVF(0, 1, 1, 0, 0, kV));
    }
    T().SX_FreeQVF(frame, kV);
    EXPECT_EQ(T().SX_SaveQVF(frame, kV), 0);
    EXPECT_EQ(host_.RefusedFrameFrees(), 3u);
    EXPECT_EQ(host_.LiveFrameCount(), 8u);
    for (EXQVF2005a* other : others) {
        T().SX_FreeQVF(other, kV);
    }
    EXPECT_EQ(host_.LiveFrameCount(), 0u);
    EXPECT_EQ(host_.Frames().LoadedCount(), 9u);
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

TEST(StavioFrameContent, BuilderSpellsMidiKeysSoThatTheHostPlaysThemBack)
{
    Host host;
    for (int key = 24; key <= 96; ++key) {
        EXNOTE note{};
        note.tcd = PitchOfKey(key).tcd;
        note.alteration = PitchOfKey(key).alteration;
        EXPECT_EQ(host.FunctionTable().SX_NoteToMidi(&note, 0, kV), key);
    }
    EXPECT_EQ(PitchOfKey(61).tcd, 0);
    EXPECT_EQ(PitchOfKey(61).alteration, 1);
    EXPECT_EQ(PitchOfKey(59).tcd, -1);
}

}  // namespace
}  // namespace stavio
