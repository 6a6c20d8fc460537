// The host functions a plug-in calls about the score, reached through the table a plug-in's
// main receives.
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/support/test_support.h"

#include <cstring>

namespace stavio {
namespace {

using support::Ints;

class StavioScoreServices : public ::testing::Test {
protected:
    StavioScoreServices() : host_(HostSettings{HostPose::Newer, "", "/opt/stavio/Application"})
    {
        host_.SetDocument(DocumentBuilder()
                              .Measures(8, 4, 1024)
                              .TimeSignatureFrom(5, 6, 512)
                              .Staff("Piano", "Pno.")
                              .Staff("Drum Set", "Dr.")
                              .Build());
    }
    const StavioFuncs& Table() const { return host_.FunctionTable(); }

    Host host_;
};

TEST_F(StavioScoreServices, SlotsAndInstrumentsMapBothWaysAndAnswerZeroOutsideTheList)
{
    const StavioFuncs& t = Table();
    const EVERSION v = kPluginApiVersion;   // list 1 is empty
    EXPECT_EQ(Ints(t.SX_SlotToInst(1, 0, v), t.SX_SlotToInst(2, 0, v), t.SX_SlotToInst(3, 0, v),
                   t.SX_SlotToInst(0, 0, v), t.SX_SlotToInst(1, 1, v), t.SX_InstToSlot(2, 0, v),
                   t.SX_InstToSlot(9, 0, v)),
              Ints(1, 2, 0, 0, 0, 2, 0));

    // Taking slot 1 out of the list moves the drum staff up to slot 1.
    EDataID slot1{};
    slot1.other = EOtherID{0, 0};
    ASSERT_EQ(t.SX_DeleteEData(kTagInstrumentUsed, &slot1, v), 1);
    EXPECT_EQ(Ints(t.SX_SlotToInst(1, 0, v), t.SX_InstToSlot(1, 0, v)), Ints(2, 0));
}

TEST_F(StavioScoreServices, MeasureDurationIsBeatsTimesDivbeat)
{
    std::vector<int64_t> durations;
    for (int32_t meas : {1, 4, 5, 9, 0}) durations.push_back(Table().SX_GetMeasureDuration(0, meas, kPluginApiVersion));
    EXPECT_EQ(durations, Ints(4096, 4096, 3072, 0, 0));
}

TEST_F(StavioScoreServices, NoteToMidiCountsMajorScaleStepsFromMiddleCAndPlaysTheBuildersKeysBack)
{
    struct Case {
        int16_t tcd;
        int16_t alteration;
        int32_t key;
    };
    const Case cases[] = {{0, 0, 60},  {1, 0, 62},  {2, 0, 64},   {3, 0, 65},   {6, 0, 71},
                          {7, 0, 72},  {3, 1, 66},  {6, -1, 70},  {-1, 0, 59},  {-3, 0, 55},
                          {-7, 0, 48}, {-8, 0, 47}, {-10, 0, 43}, {-6, -1, 49}, {14, 0, 84}};
    for (const Case& note : cases) {
        EXNOTE n{};
        n.tcd = note.tcd;
        n.alteration = note.alteration;
        EXPECT_EQ(Table().SX_NoteToMidi(&n, 0, kPluginApiVersion), note.key) << note.tcd << " " << note.alteration;
        EXPECT_EQ(Table().SX_NoteToMidi(&n, 3, kPluginApiVersion), note.key) << "the key signature changes nothing";
    }
    EXPECT_EQ(Table().SX_NoteToMidi(nullptr, 0, kPluginApiVersion), -1);

    // The builder spells every key so that the host plays it back.
    for (int key = 24; key <= 96; ++key) {
        EXNOTE n{};
        n.tcd = PitchOfKey(key).tcd;
        n.alteration = PitchOfKey(key).alteration;
        EXPECT_EQ(Table().SX_NoteToMidi(&n, 0, kPluginApiVersion), key);
    }
    EXPECT_EQ(Ints(PitchOfKey(61).tcd, PitchOfKey(61).alteration, PitchOfKey(59).tcd), Ints(0, 1, -1));
}

TEST_F(StavioScoreServices, RegionsPathAndFixedAnswers)
{
    EREGION selection{};
    EREGION document{};
    EXPECT_EQ(Table().SX_GetCurERegions(&selection, &document, kPluginApiVersion), 0) << "nothing selected";
    EXPECT_EQ(Ints(document.end.IUslot, document.end.meas, document.end.duraPos, document.start.meas),
              Ints(2, 8, kEndOfMeasure, 1));

    EFSSPEC folder{};
    ASSERT_EQ(Table().SX_GetStavioPathMac(&folder, kPluginApiVersion), 1);
    EXPECT_STREQ(folder.folder, "/opt/stavio");
    EXPECT_STREQ(folder.name, "Application");
    EXPECT_EQ(Table().SX_GetStavioPathMac(nullptr, kPluginApiVersion), 0);

    EXPECT_EQ(Ints(Table().SX_GetMaxLayers(kPluginApiVersion), Table().SX_IsMachO(kPluginApiVersion)), Ints(4, 1));
    EXPECT_EQ(Table().SX_RedrawMusic(kPluginApiVersion), 1);
    EXPECT_EQ(host_.RedrawCount(), 1);
}

TEST_F(StavioScoreServices, FunctionsNotOfferedYetAnswerFailureWithoutHarm)
{
    char chord[8] = "xxxxxxx";
    EXPECT_EQ(Table().SX_AnalyzeChord(nullptr, chord, sizeof(chord), kPluginApiVersion), 0);
    EXPECT_STREQ(chord, "");
    EXPECT_EQ(Table().SX_GetDlgCntl(nullptr, 1, kPluginApiVersion), nullptr);
    const auto untyped = reinterpret_cast<int32_t (*)()>(Table().SX_RebeamRegion);
    EXPECT_EQ(untyped(), 0);
    const auto unnamed = reinterpret_cast<int32_t (*)()>(Table().unnamedQuery62);
    ASSERT_NE(unnamed, nullptr);
}

TEST(StavioFunctionTable, NewerPoseOffersEverySlotAndOlderPoseOnlyAnOlderHostsSlots)
{
    for (HostPose pose : {HostPose::Newer, HostPose::Older}) {
        Host host(HostSettings{pose, "", ""});
        const StavioFuncs& table = host.FunctionTable();
        EXPECT_EQ(Ints(table.size, table.version),
                  Ints(sizeof(StavioFuncs), pose == HostPose::Newer ? kNewerHostVersion : kOlderHostVersion));
        const auto* bytes = reinterpret_cast<const unsigned char*>(&table);
        for (int slot = kFirstFunctionSlot; slot <= kLastFunctionSlot; ++slot) {
            void* entry = nullptr;
            std::memcpy(&entry, bytes + SlotOffset(slot), sizeof(entry));
            const bool offered = pose == HostPose::Newer || slot <= 76;
            EXPECT_EQ(entry != nullptr, offered) << "slot " << slot;
        }
    }
}

}   // namespace
}   // namespace stavio
