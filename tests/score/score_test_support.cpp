#include "tests/score/score_test_support.h"

#include "stavio/document/text_expressions.h"
#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tests/support/plugin_core.h"

namespace score_test {

ScoreTest::ScoreTest() : host(std::make_unique<stavio::Host>(stavio::HostSettings{}, &frontEnd))
{}

void ScoreTest::Start(stavio::Document document, const EREGION& region, uint32_t options)
{
    host->SetDocument(std::move(document));
    support::StartPluginCore(*host);
    LoadedQVFCounter = 0;
    CanAddNoteRecordToRests = false;
    SelRegion = region;
    dlgFlags = options;
}

void ScoreTest::TearDown()
{
    EXPECT_EQ(Ints(LoadedQVFCounter, host->LiveFrameCount(), host->RefusedFrameFrees()), Ints(0, 0, 0));
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
    while (ReadOther(doc, kTagStaffStyleAssign, inst, int(found.size()), a))
        found.push_back({a.style, a.range.start.meas, a.range.start.edu, a.range.end.meas, a.range.end.edu});
    return found;
}

int16_t ClefAt(stavio::Document& doc, int inst, int meas, int16_t set)
{
    int16_t frames[stavio::kMaxLayers] = {};
    EDTGfhold2004 hold{0, 0, 0, frames};
    const stavio::RecordKey key = stavio::RecordKey::Detail(inst, meas, 0);
    doc.Read(kTagGfhold, key, &hold, kGfhold2004Size, kPluginApiVersion);
    if (set >= 0) {
        hold.clef = set;
        doc.Write(kTagGfhold, key, &hold, kGfhold2004Size, kPluginApiVersion);
    }
    return hold.clef;
}

std::vector<int> Labels(const stavio::Document& doc, int inst, int meas)
{
    std::vector<int> kinds;
    for (const EDTGeneric& assignment : stavio::ExpressionAssignments(doc, meas)) {
        const auto definition = stavio::ReadTextExpression(doc, assignment.words[0]);
        if (stavio::AssignmentOnStaff(assignment, inst) && definition)
            kinds.push_back(definition->header.playbackType & 0xFF);
    }
    return kinds;
}

}   // namespace score_test
