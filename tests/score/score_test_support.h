// Shared set-up for the score tests: the reference host holding a built document, the plug-in's
// code started on the host's table, and short ways to read what the plug-in wrote.
#pragma once

#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/support/test_support.h"

#include <array>
#include <memory>
#include <vector>

namespace score_test {

using support::Ints;
using support::Region;

// Every test ends with no entry frame out: the plug-in's count and the host's agree on 0.
class ScoreTest : public ::testing::Test {
protected:
    ScoreTest();
    void TearDown() override;
    // Puts `doc` into the host and starts the plug-in on the host's table, with SelRegion
    // `region` and the options word `options`.
    void Start(stavio::Document doc, const EREGION& region = EREGION{}, uint32_t options = 0);
    stavio::Document& doc() { return host->document(); }

    stavio::ScriptedFrontEnd frontEnd;
    std::unique_ptr<stavio::Host> host;
};

EXMEASRANGE Range(int16_t startMeas, int32_t startEdu, int16_t endMeas, int32_t endEdu = kEndOfMeasure);
EDTStaffStyle2003 SlashStyle(uint16_t mask1 = 0, uint16_t mask2 = 0x1000);

std::vector<EXENTRY> Entries(const stavio::Document& doc, int inst, int meas, int layer = 0);

template <typename Record>
bool ReadOther(const stavio::Document& doc, EXTAG tag, int cmper, int inci, Record& record,
               EVERSION version = kPluginApiVersion)
{
    record = Record{};
    return doc.Read(tag, stavio::RecordKey::Other(uint16_t(cmper), uint16_t(inci)), record, version);
}

// A staff's style assignments from incidence 0 as (style, start measure, start position, end
// measure, end position).
using Assigned = std::array<int32_t, 5>;
std::vector<Assigned> Assignments(const stavio::Document& doc, int inst);

// The clef of a staff-measure; `set` (when not -1) is written first.
int16_t ClefAt(stavio::Document& doc, int inst, int meas, int16_t set = -1);

// The playback type bytes of staff `inst`'s labels in `meas`, in incidence order (17 off, 16 on).
std::vector<int> Labels(const stavio::Document& doc, int inst, int meas);

}   // namespace score_test
