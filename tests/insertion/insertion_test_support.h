// The insertion tests' set-up: the reference host with a built document and the plug-in's code
// on its table, a temporary groove folder, the dialog's choices, and a record of every import
// the driver asks of the host (each passed on to the host's own import).
#pragma once

#include "tests/score/score_test_support.h"
#include "tests/support/smf.h"

#include <string>
#include <tuple>
#include <vector>

namespace insertion_test {

struct ImportCall {
    int slot, firstMeas, lastMeas;
    bool fileThere;   // the temporary file existed when the host was asked
    int32_t answer;
};

// A 4/4 groove of one track, 480 ticks to the quarter: (tick, key, channel) hits in tick order.
inline std::vector<uint8_t> SmallGroove(const std::vector<support::DrumHit>& hits)
{
    return support::DrumFile(480, 4, 4, hits, 1);
}

// (measure from 1, EDU in it, sorted keys) of a 4/4 library groove's first channel-10 track, or
// of a staff's measures firstMeas..lastMeas.
using Onset = std::tuple<int, int, std::vector<int>>;
std::vector<Onset> GrooveOnsets(const std::string& grooveName);
std::vector<Onset> StaffOnsets(const stavio::Document& doc, int inst, int firstMeas, int lastMeas);

class InsertionTest : public score_test::ScoreTest {
protected:
    InsertionTest();
    ~InsertionTest() override;
    void TearDown() override;

    // The document in the host, SelRegion = measures first..last of slot 1.
    void StartOn(stavio::Document document, int firstMeas, int lastMeas);
    void UseLibraryGroove(const std::string& name);
    void UseGrooveBytes(const std::vector<uint8_t>& bytes);
    // Runs the driver; every run must hand back its frames and take its temporary file away.
    bool Run(int style = 0, uint32_t options = 0, int staff = 0);
    std::vector<int32_t> AlertIds(bool styles = false) const;
    bool EveryImportAnswered() const;   // the host's import was asked and answered 1 each time

    support::TempFolder temp;
    const std::string folder = temp.Path();
    std::vector<ImportCall>& calls;
    bool passImportsOn = true;   // false: the host's import is not reached (it imports nothing)
};

}   // namespace insertion_test
