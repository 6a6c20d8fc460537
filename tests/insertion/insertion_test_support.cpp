#include "tests/insertion/insertion_test_support.h"

#include "stavio/document/pitch.h"
#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/plugin/groove_insertion.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "toolbox/files.h"

#include <algorithm>
#include <map>

namespace insertion_test {
namespace {

std::vector<ImportCall> gCalls;
SXProcessMidiDataProc gHostImport = nullptr;
bool* gPassOn = nullptr;

int32_t WatchImport(SxpMidiData* data, EVERSION version)
{
    ImportCall call{data->ereg.start.IUslot, data->ereg.start.meas, data->ereg.end.meas,
                    toolbox::Exists(toolbox::FileSpec{data->midiFile.folder, data->midiFile.name}), 0};
    if (*gPassOn && gHostImport != nullptr) call.answer = gHostImport(data, version);
    gCalls.push_back(call);
    return call.answer;
}

std::string GroovePath(const std::string& name)
{
    return support::GrooveLibrary() + "/" + name + ".mid";
}

}   // namespace

std::vector<Onset> GrooveOnsets(const std::string& grooveName)
{
    const support::SmfListing file = support::ListSmf(support::ReadBytes(GroovePath(grooveName)));
    const int ticksPerMeasure = 4 * file.division;   // the rhythm tests use grooves in 4/4
    std::map<std::pair<int, int>, std::vector<int>> onsets;
    for (const auto& track : file.tracks) {
        for (const support::SmfEvent& ev : track)
            if (ev.IsNoteOn() && ev.Channel() == 10)
                onsets[{ev.tick / ticksPerMeasure + 1, ev.tick % ticksPerMeasure * kEduPerQuarter / file.division}]
                    .push_back(ev.data1);
        if (!onsets.empty()) break;   // only the first drum track is imported
    }
    std::vector<Onset> result;
    for (auto& [where, keys] : onsets) {
        std::sort(keys.begin(), keys.end());
        result.emplace_back(where.first, where.second, keys);
    }
    return result;
}

std::vector<Onset> StaffOnsets(const stavio::Document& doc, int inst, int firstMeas, int lastMeas)
{
    std::vector<Onset> result;
    for (int meas = firstMeas; meas <= lastMeas; ++meas) {
        for (const EXENTRY& entry : score_test::Entries(doc, inst, meas)) {
            if ((entry.ef & kEntryIsNote) == 0) continue;
            std::vector<int> keys;
            for (int n = 0; n < entry.numNotes; ++n) {
                keys.push_back(stavio::NoteToMidiKey(entry.note[n].tcd, entry.note[n].alteration));
            }
            std::sort(keys.begin(), keys.end());
            result.emplace_back(meas - firstMeas + 1, int32_t{entry.elldur}, keys);
        }
    }
    return result;
}

InsertionTest::InsertionTest() : calls(gCalls)
{
    gCalls.clear();
    gPassOn = &passImportsOn;
}

InsertionTest::~InsertionTest()
{
    gPassOn = nullptr;
}

void InsertionTest::TearDown()
{
    ScoreTest::TearDown();
    EXPECT_TRUE(std::all_of(gCalls.begin(), gCalls.end(), [](const ImportCall& c) { return c.fileThere; }));
}

void InsertionTest::StartOn(stavio::Document document, int firstMeas, int lastMeas)
{
    Start(std::move(document), score_test::Region(1, 1, uint16_t(firstMeas), uint16_t(lastMeas)));
    DocRegion = doc().WholeRegion();
    gHostImport = gStavioFuncs.SX_ProcessMidiData;
    gStavioFuncs.SX_ProcessMidiData = &WatchImport;
    toolbox::MakeFileSpec(folder, TempFileNameDotMid, TempFileSpec);
    needRefresh = 0;
}

void InsertionTest::UseLibraryGroove(const std::string& name)
{
    UseGrooveBytes(support::ReadBytes(GroovePath(name)));
}

void InsertionTest::UseGrooveBytes(const std::vector<uint8_t>& bytes)
{
    const toolbox::FileSpec spec{folder, "groove.mid"};
    ASSERT_EQ(toolbox::WriteWholeFile(spec, bytes.data(), bytes.size()), toolbox::kNoErr);
    Files = {spec};
    filenum = 0;
}

bool InsertionTest::Run(int style, uint32_t options, int staff)
{
    stylenum = style;
    staffnum = staff;
    dlgFlags = options;
    const bool done = DoYourThing(nullptr, &dlgFlags);
    EXPECT_EQ(score_test::Ints(LoadedQVFCounter, host->LiveFrameCount()), score_test::Ints(0, 0));
    EXPECT_FALSE(toolbox::Exists(TempFileSpec)) << "the temporary file stayed behind";
    return done;
}

std::vector<int32_t> InsertionTest::AlertIds(bool styles) const
{
    std::vector<int32_t> ids;
    for (const auto& alert : frontEnd.Alerts()) ids.push_back(styles ? alert.request.style : alert.request.stringId);
    return ids;
}

bool InsertionTest::EveryImportAnswered() const
{
    return !gCalls.empty() &&
           std::all_of(gCalls.begin(), gCalls.end(), [](const ImportCall& c) { return c.answer == 1; });
}

}   // namespace insertion_test
