#include "tests/score/score_test_support.h"

#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/startup.h"
#include "tamberlyne/plugin/plugin_globals.h"

namespace score_test {

ScoreTest::ScoreTest() : host(std::make_unique<stavio::Host>(stavio::HostSettings{}, &frontEnd)) {}

void ScoreTest::Start(stavio::Document document, const EREGION& region, uint32_t options)
{
    host->SetDocument(std::move(document));
    gStavioFuncs = StavioFuncs{};
    gStavioFuncs.size = sizeof(StavioFuncs);
    StavioFuncs table = host->FunctionTable();
    SXPluginFuncs reply{};
    ASSERT_EQ(PluginMain(&table, &reply), 1);
    LoadedQVFCounter = 0;
    CanAddNoteRecordToRests = false;
    SelRegion = region;
    dlgFlags = options;
}

void ScoreTest::TearDown()
{
    EXPECT_EQ(LoadedQVFCounter, 0);
    EXPECT_EQ(host->LiveFrameCount(), 0u);
    EXPECT_EQ(host->RefusedFrameFrees(), 0u);
}

EREGION Region(uint16_t firstSlot, uint16_t lastSlot, uint16_t firstMeas, uint16_t lastMeas, int32_t startPos,
               int32_t endPos)
{
    return EREGION{{0, firstSlot, firstMeas, startPos}, {0, lastSlot, lastMeas, endPos}};
}

EXMEASRANGE Range(int16_t startMeas, int32_t startEdu, int16_t endMeas, int32_t endEdu)
{
    return EXMEASRANGE{{startMeas, startEdu}, {endMeas, endEdu}};
}

EDTStaffStyle2003 SlashStyle(uint16_t mask1, uint16_t mask2)
{
    EDTStaffStyle2003 style{};
    style.altFlag = 0x7101;
    style.mask1 = mask1;
    style.mask2 = mask2;
    return style;
}

std::vector<EXENTRY> Entries(const stavio::Document& doc, int inst, int meas, int layer)
{
    const auto frame = doc.Frame(inst, meas, layer);
    return frame ? frame->entries : std::vector<EXENTRY>{};
}

std::vector<Assigned> Assignments(const stavio::Document& doc, int inst)
{
    std::vector<Assigned> found;
    EDTStaffStyleAssign a;
    while (ReadOther(doc, kTagStaffStyleAssign, inst, int(found.size()), a)) {
        found.push_back({a.style, a.range.start.meas, a.range.start.edu, a.range.end.meas, a.range.end.edu});
    }
    return found;
}

}  // namespace score_test
