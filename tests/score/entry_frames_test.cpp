// Cleaning of frames before they go back to the host, and the count of frames in hand.
#include "tamberlyne/host/entry_frames.h"
#include "tests/score/score_test_support.h"

namespace {

// One entry with notes of these identifiers, carrying stale flag bits and a stale unused slot.
EXQVF2005a FrameOf(EXENTRY& entry, std::vector<int16_t> ids)
{
    entry = EXENTRY{};
    for (int16_t id : ids) {
        entry.note[entry.numNotes].noteID = id;
        entry.note[entry.numNotes++].flag = 0x00FF0003;
    }
    entry.note[11].tcd = 7;
    return EXQVF2005a{0, 0, 0, 0, 0, 0, 0, &entry, 1, nullptr, 0};
}

}   // namespace

TEST(CleanQVF, GivesEveryNoteAUniqueIdentifierMirroredInItsFlag)
{
    // The first of two equal identifiers moves on; missing ones continue after the largest.
    const std::vector<std::pair<std::vector<int16_t>, std::vector<int16_t>>> cases = {
        {{3, 3}, {4, 3}}, {{0, 2}, {3, 2}}, {{5, 0, 5}, {6, 7, 5}}, {{-4, 0}, {-4, 1}}, {{9, 31}, {9, 31}}};
    for (const auto& [before, after] : cases) {
        EXENTRY entry;
        EXQVF2005a frame = FrameOf(entry, before);
        CleanQVF(&frame, true);
        for (size_t i = 0; i < after.size(); ++i)
            EXPECT_EQ(score_test::Ints(entry.note[i].noteID, entry.note[i].flag),
                      score_test::Ints(after[i], 0x00E00003u | uint32_t(after[i] & 0x1F) << 16))
                << "case starting " << before[0] << ", note " << i;
        EXPECT_EQ(entry.note[11].tcd, 0);
    }
}

TEST(CleanQVF, RestsGetANoteRecordOnlyWhenAllowedAndEmptyFramesStayAsTheyAre)
{
    EXENTRY rest;
    EXQVF2005a frame = FrameOf(rest, {});
    frame.numEntries = 0;
    CleanQVF(&frame, true);
    EXPECT_EQ(rest.note[11].tcd, 7);
    frame.numEntries = 1;
    CleanQVF(&frame, true);
    EXPECT_EQ(score_test::Ints(rest.numNotes, rest.ef), score_test::Ints(0, 0));
    CanAddNoteRecordToRests = true;
    CleanQVF(&frame, true);
    CanAddNoteRecordToRests = false;
    EXPECT_EQ(score_test::Ints(rest.numNotes, rest.note[0].flag, rest.ef),
              score_test::Ints(1, kNoteIsRestRecord, kEntryRestHasNoteRecord));
}

using EntryFrames = score_test::ScoreTest;

TEST_F(EntryFrames, SavedFramesReachTheHostCleanedAndEveryLoadIsCountedBack)
{
    Start(
        stavio::DocumentBuilder().Measures(2).Staff("Drums").Entries(1, 1, 0, {stavio::Chord({36, 38}, 1024)}).Build());
    {
        LoadedFrame frame(0, 1, 1, 0);
        ASSERT_TRUE(frame && frame->numEntries == 1);
        frame->pent[0].note[0].noteID = frame->pent[0].note[1].noteID;
        EXPECT_NE(frame.Save(), 0);
        LoadedFrame missing(0, 7, 1, 0);   // no staff in slot 7
        EXPECT_FALSE(missing);
        EXPECT_EQ(LoadedQVFCounter, 2);
    }
    const auto entries = score_test::Entries(doc(), 1, 1);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_NE(entries[0].note[0].noteID, entries[0].note[1].noteID);
}
