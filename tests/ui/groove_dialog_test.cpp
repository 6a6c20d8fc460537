// The groove dialog of the real bundle, run by the reference host through the scripted front
// end: what it lists, what it preselects, and each way out of it.
#include "tests/ui/ui_test_support.h"

#include <gtest/gtest.h>

#include <filesystem>

using stavio::DialogAction;
using stavio::HostPose;
using namespace ui_test;

namespace {

constexpr int32_t kAlertNoGrooves = 0x4E210008;
constexpr int32_t kAlertNoGrooveChosen = 0x4E210009;
constexpr int32_t kAlertNoPercussionMap = 0x4E21000A;

const std::vector<StaffNames> kPianoAndDrums = {{"Piano", "Pno."}, {"Drums", "Dr.", true}};

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class GrooveDialog : public ::testing::TestWithParam<HostPose> {};

}  // namespace

// The rows follow the folder's order; only ".mid", ".MID" and ".Mid" files longer than their
// extension count, the temporary file and folders never do.
TEST_P(GrooveDialog, ListsTheGrooveFilesOfTheFolderAndPreselectsTheDrumStaff)
{
    BundleHost session(Score(kPianoAndDrums), GetParam());
    const std::string grooves = MakeGrooveFolder(
        session.application.Path(),
        {"Rock.mid", "Funk.MID", "Latin.mId", "Tamberlyne$$Temp$$File.mid", ".mid", "Notes.txt", "Waltz.mid.bak"});
    std::filesystem::create_directory(grooves + "/Folder.mid");
    DialogView view;
    session.frontEnd.inspect = [&](stavio::DialogSession& dialog) { view = ViewOf(dialog); };

    const EREGION selection = Measures(1, 4, 2);
    EXPECT_EQ(session.Fill({DialogAction::PressItem(2)}, &selection), 0);

    EXPECT_TRUE(view.shown);
    EXPECT_EQ(view.grooveRows, (std::vector<std::string>{"Funk", "Rock"}));
    EXPECT_EQ(view.staffEntries, (std::vector<std::string>{"Piano", "Drums"}));
    EXPECT_EQ(view.staffChoice, 2);
    EXPECT_TRUE(view.staffEnabled);
    EXPECT_EQ(view.chosenStaffRadio, 1);
    EXPECT_EQ(view.newStaffRadio, 0);
    EXPECT_TRUE(session.frontEnd.Alerts().empty());
    EXPECT_EQ(session.LastDialog().result, 2);
}

TEST_P(GrooveDialog, StaffNamesFallBackAndTheLaterDrumStaffIsChosen)
{
    BundleHost session(Score({{"Kit ^font(Times)A", "", true}, {"", "Pno."}, {"", ""}, {"Kit B", "", true}}),
                       GetParam());
    MakeGrooveFolder(session.application.Path(), {"Rock.mid"});
    DialogView view;
    session.frontEnd.inspect = [&](stavio::DialogSession& dialog) { view = ViewOf(dialog); };
    const EREGION selection = Measures(2, 3, 4);
    session.Fill({DialogAction::PressItem(2)}, &selection);
    ASSERT_EQ(view.staffEntries.size(), 4u);
    EXPECT_EQ(view.staffEntries[0], "Kit A");
    EXPECT_EQ(view.staffEntries[1], "Pno.");
    EXPECT_EQ(view.staffEntries[2].rfind("[Staff ", 0), 0u) << view.staffEntries[2];
    EXPECT_EQ(view.staffChoice, 4);

    // Without a drum staff the first entry is chosen; a selection of staves 2-3 lists only those.
    BundleHost plain(Score({{"Flute"}, {"Piano"}, {"Bass"}}), GetParam());
    MakeGrooveFolder(plain.application.Path(), {"Rock.mid"});
    plain.frontEnd.inspect = [&](stavio::DialogSession& dialog) { view = ViewOf(dialog); };
    EREGION middle = Measures(1, 2, 3);
    middle.start.IUslot = 2;
    plain.Fill({DialogAction::PressItem(2)}, &middle);
    EXPECT_EQ(view.staffEntries, (std::vector<std::string>{"Piano", "Bass"}));
    EXPECT_EQ(view.staffChoice, 1);
}

TEST_P(GrooveDialog, CancelSetsTheCancelBitAndChangesNothing)
{
    BundleHost session(Score(kPianoAndDrums), GetParam());
    MakeGrooveFolder(session.application.Path(), {"Rock.mid"});
    const stavio::RecordStore before = session.host.document().Records();
    const EREGION selection = Measures(1, 8, 2);
    EXPECT_EQ(session.Fill({DialogAction::ClickListRowNamed(4, "Rock"), DialogAction::PressItem(6),
                            DialogAction::PressItem(2)},
                           &selection),
              0);
    EXPECT_EQ(session.DialogFlags(), 0x10000u);
    EXPECT_TRUE(session.host.document().Records() == before);
    EXPECT_EQ(session.host.document().UndoCount(), 0u);
    EXPECT_TRUE(session.AllNotes().empty()) << session.AllNotes();
}

TEST_P(GrooveDialog, OKWithoutAGrooveAlertsAndStaysOpen)
{
    BundleHost session(Score(kPianoAndDrums), GetParam());
    MakeGrooveFolder(session.application.Path(), {"Rock.mid", "Funk.mid"});
    const EREGION selection = Measures(1, 8, 2);
    EXPECT_EQ(session.Fill({DialogAction::PressItem(6), DialogAction::PressItem(1)}, &selection), 0);
    ASSERT_EQ(session.frontEnd.Alerts().size(), 1u);
    EXPECT_EQ(session.frontEnd.Alerts()[0].request.stringId, kAlertNoGrooveChosen);
    EXPECT_EQ(session.frontEnd.Alerts()[0].request.style, kAlertStop);
    // The dialog stayed open: the front end had to cancel it.
    EXPECT_TRUE(Has(session.AllNotes(), "stayed open after the last scripted action, press \"OK\" (item 1)"))
        << session.AllNotes();
    EXPECT_EQ(session.DialogFlags(), 0x10001u) << "bit 0 read from radio 6, then the cancel bit";
}

TEST_P(GrooveDialog, TheDrumStaffStyleNeedsAPercussionMap)
{
    stavio::Document doc = Score(kPianoAndDrums);
    doc.RemovePercussionMap(1);
    BundleHost session(std::move(doc), GetParam());
    MakeGrooveFolder(session.application.Path(), {"Rock.mid"});
    const EREGION selection = Measures(1, 8, 2);
    session.Fill({DialogAction::ClickListRowNamed(4, "rock"), DialogAction::ChooseEntryNamed(11, "Drum staff"),
                  DialogAction::PressItem(1)},
                 &selection);
    EXPECT_EQ(session.AlertIds(), (std::vector<int32_t>{kAlertNoPercussionMap}));
    EXPECT_EQ(session.host.document().UndoCount(), 0u);
    EXPECT_TRUE(Has(session.AllNotes(), "stayed open")) << session.AllNotes();
}

// A groove the driver cannot use: the edit bracket opens and closes around the attempt, the
// buttons come back, and the dialog stays open for another choice.
TEST_P(GrooveDialog, AFailedInsertionKeepsTheDialogOpen)
{
    BundleHost session(Score(kPianoAndDrums), GetParam());
    MakeGrooveFolder(session.application.Path(), {"Broken.mid"});
    const stavio::RecordStore before = session.host.document().Records();
    bool buttonsBack = false;
    session.frontEnd.inspect = [&](stavio::DialogSession& dialog) {
        std::string why;
        ASSERT_TRUE(dialog.ClickListRowNamed(*dialog.ListInItem(4), "Broken", why)) << why;
        ASSERT_TRUE(dialog.ChooseNamed(11, "Slash notation", why)) << why;
        ASSERT_TRUE(dialog.Press(1, why)) << why;
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
    BundleHost session(Score(kPianoAndDrums), GetParam());
    const EREGION selection = Measures(1, 8, 2);
    EXPECT_EQ(session.Fill({DialogAction::PressItem(1)}, &selection), 0);
    EXPECT_EQ(session.AlertIds(), (std::vector<int32_t>{kAlertNoGrooves}));
    EXPECT_EQ(session.frontEnd.Alerts()[0].request.style, kAlertWarning);
    const stavio::DialogOutcome& dialog = session.LastDialog();
    EXPECT_TRUE(dialog.opened);
    EXPECT_FALSE(dialog.shown);
    EXPECT_EQ(dialog.result, 0);
    EXPECT_TRUE(dialog.notes.empty()) << "it ended by itself: " << session.AllNotes();

    // A folder without a single groove file is the same.
    MakeGrooveFolder(session.application.Path(), {"Readme.txt"});
    session.Fill({DialogAction::PressItem(1)}, &selection);
    EXPECT_EQ(session.AlertIds(), (std::vector<int32_t>{kAlertNoGrooves, kAlertNoGrooves}));
    EXPECT_FALSE(session.LastDialog().shown);
}

TEST_P(GrooveDialog, TheRadioButtonsSwitchTheStaffPopUp)
{
    BundleHost session(Score(kPianoAndDrums), GetParam());
    MakeGrooveFolder(session.application.Path(), {"Rock.mid"});
    std::vector<DialogView> views;
    session.frontEnd.inspect = [&](stavio::DialogSession& dialog) {
        std::string why;
        EXPECT_TRUE(dialog.Press(6, why)) << why;
        views.push_back(ViewOf(dialog));
        EXPECT_FALSE(dialog.Choose(8, 1, why));
        EXPECT_TRUE(Has(why, "disabled")) << why;
        EXPECT_TRUE(dialog.Press(7, why)) << why;
        views.push_back(ViewOf(dialog));
        EXPECT_TRUE(dialog.Choose(8, 1, why)) << why;
    };
    const EREGION selection = Measures(1, 8, 2);
    session.Fill({DialogAction::PressItem(2)}, &selection);
    ASSERT_EQ(views.size(), 2u);
    EXPECT_EQ(views[0].newStaffRadio, 1);
    EXPECT_EQ(views[0].chosenStaffRadio, 0);
    EXPECT_FALSE(views[0].staffEnabled);
    EXPECT_EQ(views[1].newStaffRadio, 0);
    EXPECT_EQ(views[1].chosenStaffRadio, 1);
    EXPECT_TRUE(views[1].staffEnabled);
}

TEST_P(GrooveDialog, AScriptThatCannotBeFollowedCancels)
{
    BundleHost session(Score(kPianoAndDrums), GetParam());
    MakeGrooveFolder(session.application.Path(), {"Rock.mid", "Funk.mid"});
    const EREGION selection = Measures(1, 8, 2);
    session.Fill({DialogAction::ClickListRowNamed(4, "Samba"), DialogAction::PressItem(1)}, &selection);
    EXPECT_TRUE(Has(session.AllNotes(), "no row reads \"Samba\" (rows: Funk, Rock)")) << session.AllNotes();
    EXPECT_EQ(session.DialogFlags(), 0x10000u);
    EXPECT_TRUE(session.frontEnd.Alerts().empty());

    session.Fill({DialogAction::ChooseEntry(8, 3)}, &selection);
    EXPECT_TRUE(Has(session.AllNotes(), "has no entry 3 (entries: 1 Piano, 2 Drums)")) << session.AllNotes();
}

INSTANTIATE_TEST_SUITE_P(Dialog, GrooveDialog, ::testing::Values(HostPose::Newer, HostPose::Older),
                         [](const auto& info) { return info.param == HostPose::Older ? "OlderHost" : "NewerHost"; });
