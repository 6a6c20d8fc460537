// The groove dialog of the real bundle, run by the reference host through the scripted front
// end: what it lists, what it preselects, and each way out of it.
#include "tests/ui/ui_test_support.h"

#include <filesystem>

using stavio::DialogAction;
using stavio::HostPose;
using namespace ui_test;
using support::ExpectHas;
using support::Ints;
using Ids = std::vector<int32_t>;

namespace {

constexpr int32_t kAlertNoGrooves = 0x4E210008;
constexpr int32_t kAlertNoGrooveChosen = 0x4E210009;
constexpr int32_t kAlertNoPercussionMap = 0x4E21000A;

const std::vector<StaffNames> kPianoAndDrums = {{"Piano", "Pno."}, {"Drums", "Dr.", true}};
const EREGION kWholeScore = Measures(1, 8, 2);

class GrooveDialog : public ::testing::TestWithParam<HostPose> {
protected:
    // The bundle in a host of this pose over a piano and a drum staff, with these grooves.
    DialogHost Session(const std::vector<std::string>& grooves, stavio::Document doc = Score(kPianoAndDrums))
    {
        return DialogHost(std::move(doc), PlugIn::Bundle, GetParam(), grooves);
    }
};

}   // namespace

// The rows follow the folder's order; only ".mid", ".MID" and ".Mid" files longer than their
// extension count, the temporary file and folders never do.
TEST_P(GrooveDialog, ListsTheGrooveFilesOfTheFolderAndPreselectsTheDrumStaff)
{
    DialogHost session(Session(
        {"Rock.mid", "Funk.MID", "Latin.mId", "Tamberlyne$$Temp$$File.mid", ".mid", "Notes.txt", "Waltz.mid.bak"}));
    std::filesystem::create_directory(session.application / "Tamberlyne/Folder.mid");
    DialogView view;
    session.frontEnd.inspect = [&](stavio::DialogSession& dialog) { view = ViewOf(dialog); };
    const EREGION selection = Measures(1, 4, 2);
    EXPECT_EQ(session.Fill({DialogAction::PressItem(2)}, &selection), 0);

    EXPECT_EQ(view.grooveRows, (std::vector<std::string>{"Funk", "Rock"}));
    EXPECT_EQ(view.staffEntries, (std::vector<std::string>{"Piano", "Drums"}));
    EXPECT_EQ(Ints(view.shown, view.staffChoice, view.staffEnabled, view.chosenStaffRadio, view.newStaffRadio),
              Ints(true, 2, true, 1, 0));
    EXPECT_TRUE(session.frontEnd.Alerts().empty());
    EXPECT_EQ(session.LastDialog().result, 2);
}

TEST_P(GrooveDialog, StaffNamesFallBackAndTheLaterDrumStaffIsChosen)
{
    DialogHost session(
        Session({"Rock.mid"}, Score({{"Kit ^font(Times)A", "", true}, {"", "Pno."}, {"", ""}, {"Kit B", "", true}})));
    DialogView view;
    session.frontEnd.inspect = [&](stavio::DialogSession& dialog) { view = ViewOf(dialog); };
    const EREGION selection = Measures(2, 3, 4);
    session.Fill({DialogAction::PressItem(2)}, &selection);
    ASSERT_EQ(view.staffEntries.size(), 4u);
    EXPECT_EQ(view.staffEntries[0] + "|" + view.staffEntries[1] + "|" + view.staffEntries[2].substr(0, 7),
              "Kit A|Pno.|[Staff ");
    EXPECT_EQ(view.staffChoice, 4);

    // Without a drum staff the first entry is chosen; a selection of staves 2-3 lists only those.
    DialogHost plain(Session({"Rock.mid"}, Score({{"Flute"}, {"Piano"}, {"Bass"}})));
    plain.frontEnd.inspect = [&](stavio::DialogSession& dialog) { view = ViewOf(dialog); };
    const EREGION middle = support::Region(2, 3, 1, 2);
    plain.Fill({DialogAction::PressItem(2)}, &middle);
    EXPECT_EQ(view.staffEntries, (std::vector<std::string>{"Piano", "Bass"}));
    EXPECT_EQ(view.staffChoice, 1);
}

TEST_P(GrooveDialog, CancelSetsTheCancelBitAndChangesNothing)
{
    DialogHost session(Session({"Rock.mid"}));
    const stavio::RecordStore before = session.host.document().Records();
    EXPECT_EQ(session.Fill(
                  {DialogAction::ClickListRowNamed(4, "Rock"), DialogAction::PressItem(6), DialogAction::PressItem(2)},
                  &kWholeScore),
              0);
    EXPECT_EQ(session.DialogFlags(), 0x10000u);
    EXPECT_TRUE(session.host.document().Records() == before && session.host.document().UndoCount() == 0);
    EXPECT_TRUE(session.AllNotes().empty()) << session.AllNotes();
}

// OK fills the measures inside one edit bracket: one undo step, named for the plug-in, that
// takes the whole fill back.
TEST_P(GrooveDialog, OKFillsAsOneUndoStepNamedForThePlugIn)
{
    DialogHost session(Session({"Rock.mid"}));
    std::filesystem::copy_file(BuildDir() + "/bin/Tamberlyne/Rock 8ths.mid",
                               session.application / "Tamberlyne/Rock.mid",
                               std::filesystem::copy_options::overwrite_existing);
    stavio::Document& doc = session.host.document();
    const stavio::RecordStore before = doc.Records();
    EXPECT_EQ(session.Fill({DialogAction::ClickListRowNamed(4, "Rock"), DialogAction::PressItem(1)}, &kWholeScore), 1);
    EXPECT_TRUE(session.frontEnd.Alerts().empty());
    EXPECT_EQ(Ints(doc.EditDepth(), doc.UndoCount()), Ints(0, 1));
    EXPECT_EQ(doc.UndoName(), "Tamberlyne Plug-In");
    EXPECT_FALSE(doc.Records() == before);
    ASSERT_TRUE(doc.Undo());
    EXPECT_TRUE(doc.Records() == before);
}

TEST_P(GrooveDialog, OKWithoutAGrooveAlertsAndStaysOpen)
{
    DialogHost session(Session({"Rock.mid", "Funk.mid"}));
    EXPECT_EQ(session.Fill({DialogAction::PressItem(6), DialogAction::PressItem(1)}, &kWholeScore), 0);
    ASSERT_EQ(session.frontEnd.Alerts().size(), 1u);
    EXPECT_EQ(Ints(session.frontEnd.Alerts()[0].request.stringId, session.frontEnd.Alerts()[0].request.style),
              Ints(kAlertNoGrooveChosen, kAlertStop));
    // The dialog stayed open: the front end had to cancel it.
    ExpectHas(session.AllNotes(), {"stayed open after the last scripted action, press \"OK\" (item 1)"});
    EXPECT_EQ(session.DialogFlags(), 0x10001u) << "bit 0 read from radio 6, then the cancel bit";
}

TEST_P(GrooveDialog, TheDrumStaffStyleNeedsAPercussionMap)
{
    stavio::Document doc = Score(kPianoAndDrums);
    doc.RemovePercussionMap(1);
    DialogHost session(Session({"Rock.mid"}, std::move(doc)));
    session.Fill({DialogAction::ClickListRowNamed(4, "rock"), DialogAction::ChooseEntryNamed(11, "Drum staff"),
                  DialogAction::PressItem(1)},
                 &kWholeScore);
    EXPECT_EQ(session.AlertIds(), Ids{kAlertNoPercussionMap});
    EXPECT_EQ(session.host.document().UndoCount(), 0u);
    ExpectHas(session.AllNotes(), {"stayed open"});
}

// A groove the driver cannot use: the edit bracket opens and closes around the attempt, the
// buttons come back, and the dialog stays open for another choice.
TEST_P(GrooveDialog, AFailedInsertionKeepsTheDialogOpen)
{
    DialogHost session(Session({"Broken.mid"}));
    const stavio::RecordStore before = session.host.document().Records();
    bool buttonsBack = false;
    session.frontEnd.inspect = [&](stavio::DialogSession& dialog) {
        for (const toolbox::Status& done : {dialog.ClickListRowNamed(*dialog.ListInItem(4), "Broken"),
                                            dialog.ChooseNamed(11, "Slash notation"), dialog.Press(1)}) {
            ASSERT_TRUE(done) << done.Message();
        }
        EXPECT_FALSE(dialog.Ended());
        buttonsBack = dialog.Dialog().Item(1)->IsEnabled() && dialog.Dialog().Item(2)->IsEnabled();
    };
    const EREGION selection = Measures(3, 6, 2);
    EXPECT_EQ(session.Fill({}, &selection), 0);
    EXPECT_TRUE(buttonsBack);
    EXPECT_EQ(session.host.document().EditDepth(), 0) << "the edit bracket was closed";
    EXPECT_TRUE(session.host.document().Records() == before);
    EXPECT_EQ(session.DialogFlags(), 0x10000u);
}

// Without a groove folder the dialog never shows: it warns, and its timer ends it a moment later.
TEST_P(GrooveDialog, AMissingGrooveFolderClosesTheDialogOnItsTimer)
{
    DialogHost session(Session({}));
    EXPECT_EQ(session.Fill({DialogAction::PressItem(1)}, &kWholeScore), 0);
    EXPECT_EQ(session.AlertIds(), Ids{kAlertNoGrooves});
    EXPECT_EQ(session.frontEnd.Alerts()[0].request.style, kAlertWarning);
    const stavio::DialogOutcome& dialog = session.LastDialog();
    EXPECT_EQ(Ints(dialog.opened, dialog.shown, dialog.result), Ints(true, false, 0));
    EXPECT_TRUE(dialog.notes.empty()) << "it ended by itself: " << session.AllNotes();

    // A folder without a single groove file is the same.
    MakeGrooveFolder(session.application.Path(), {"Readme.txt"});
    session.Fill({DialogAction::PressItem(1)}, &kWholeScore);
    EXPECT_EQ(session.AlertIds(), (Ids{kAlertNoGrooves, kAlertNoGrooves}));
    EXPECT_FALSE(session.LastDialog().shown);
}

TEST_P(GrooveDialog, TheRadioButtonsSwitchTheStaffPopUp)
{
    DialogHost session(Session({"Rock.mid"}));
    std::vector<DialogView> views;
    session.frontEnd.inspect = [&](stavio::DialogSession& dialog) {
        EXPECT_TRUE(dialog.Press(6));
        views.push_back(ViewOf(dialog));
        EXPECT_TRUE(Has(dialog.Choose(8, 1).Message(), "disabled"));
        EXPECT_TRUE(dialog.Press(7));
        views.push_back(ViewOf(dialog));
        EXPECT_TRUE(dialog.Choose(8, 1));
    };
    session.Fill({DialogAction::PressItem(2)}, &kWholeScore);
    ASSERT_EQ(views.size(), 2u);
    EXPECT_EQ(Ints(views[0].newStaffRadio, views[0].chosenStaffRadio, views[0].staffEnabled), Ints(1, 0, false));
    EXPECT_EQ(Ints(views[1].newStaffRadio, views[1].chosenStaffRadio, views[1].staffEnabled), Ints(0, 1, true));
}

INSTANTIATE_TEST_SUITE_P(Dialog, GrooveDialog, ::testing::Values(HostPose::Newer, HostPose::Older),
                         [](const auto& instance) {
                             return instance.param == HostPose::Older ? "OlderHost" : "NewerHost";
                         });
