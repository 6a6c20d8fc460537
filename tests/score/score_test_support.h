// Shared set-up for the score tests: the reference host holding a built document, the plug-in's
// code started on the host's table, and short ways to read what the plug-in wrote.
#pragma once

#include "stavio/document_builder.h"
#include "stavio/host.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

namespace score_test {

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

// Whole measures `firstMeas`..`lastMeas` of slots `firstSlot`..`lastSlot` of list 0.
EREGION Region(uint16_t firstSlot, uint16_t lastSlot, uint16_t firstMeas, uint16_t lastMeas, int32_t startPos = 0,
               int32_t endPos = kEndOfMeasure);
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

}  // namespace score_test
