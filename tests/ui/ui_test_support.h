// Shared set-up of the dialog tests: temporary folders and environment, groove folders, scores
// with named and drum staves, and hosts that run the plug-in's dialog through a scripted front
// end -- the real bundle, or the plug-in's code linked into the test.
#pragma once

#include "stavio/dialogs/dialog_session.h"
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/support/test_support.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ui_test {

using support::BuildDir;
using support::BundlePath;
using support::Has;
using support::ReadFile;
using support::ScopedEnv;
using support::TempFolder;
using support::WriteFile;

// Makes "<applicationFolder>/Tamberlyne" holding files of these names (a little data each).
std::string MakeGrooveFolder(const std::string& applicationFolder, const std::vector<std::string>& names);

struct StaffNames {
    StaffNames(std::string fullName, std::string abbreviatedName = "", bool drumStaff = false)
        : full(std::move(fullName)), abbreviated(std::move(abbreviatedName)), drums(drumStaff)
    {}
    std::string full;
    std::string abbreviated;
    bool drums = false;   // plays on the host's drum channel
};
// `measures` measures of 4/4 with these staves.
stavio::Document Score(const std::vector<StaffNames>& staves, int measures = 8);

// Whole measures on every staff of the score.
inline EREGION Measures(uint16_t first, uint16_t last, uint16_t staves)
{
    return support::Region(1, staves, first, last);
}

// What the dialog showed right after it was initialised.
struct DialogView {
    bool shown = false;
    std::vector<std::string> grooveRows;
    std::vector<std::string> staffEntries;
    int32_t staffChoice = 0;
    bool staffEnabled = false;
    int32_t style = 0;
    int32_t newStaffRadio = -1;
    int32_t chosenStaffRadio = -1;
};
DialogView ViewOf(const stavio::DialogSession& session);

// Every note the front end wrote about its dialogs, one a line.
std::string AllNotes(const stavio::ScriptedFrontEnd& frontEnd);

// A scripted front end that first hands the dialog to `inspect` (when set).
class InspectingFrontEnd : public stavio::ScriptedFrontEnd {
public:
    std::function<void(stavio::DialogSession&)> inspect;
    void RunDialog(stavio::DialogSession& session) override;
};

// The plug-in of a DialogHost: the real bundle loaded by the host, or its code linked into the
// test (for what only the code can tell, the remembered option), started on the host's table
// with the bundle's resource file current and its remembered option reset as at load.
enum class PlugIn {
    Bundle,
    Linked
};

// A host with its application folder and the preferences folder in temporary folders, and a
// groove folder holding files of these names unless there are none.
class DialogHost {
public:
    explicit DialogHost(stavio::Document doc, PlugIn plugIn = PlugIn::Bundle,
                        stavio::HostPose pose = stavio::HostPose::Newer,
                        const std::vector<std::string>& grooves = {"Rock.mid"});
    ~DialogHost();

    TempFolder application;
    TempFolder config;
    ScopedEnv configEnv;
    InspectingFrontEnd frontEnd;
    stavio::Host host;

    // Runs the command once with this script for its dialog.
    int32_t Fill(const std::vector<stavio::DialogAction>& actions, const EREGION* selection);

    const stavio::DialogOutcome& LastDialog() const;
    std::vector<int32_t> AlertIds() const;
    std::string AllNotes() const;
    // The plug-in's options word, through the pointer it handed to SX_Dialog.
    uint32_t DialogFlags() const;

private:
    PlugIn plugIn_;
};

}   // namespace ui_test
