// `tamberlyne fill` as a person runs it: the groove library it uses, its refusals, what it
// prints and its exit status (its help and usage complaints are in tests/stavio/cli_test).
#include "tests/support/smf.h"
#include "tests/ui/ui_test_support.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

using namespace ui_test;
using support::CommandRun;
using support::ExpectHas;

namespace {

// A folder "Tamberlyne" with two grooves, and the environment that keeps preferences and the
// per-user library inside the test's own folder.
class FillCommand : public ::testing::Test {
protected:
    void SetUp() override
    {
        library_ = MakeGrooveFolder(home_.Path(), {"Funk.mid", "Rock.mid"});
        environment_ = "XDG_CONFIG_HOME=" + home_.Path() + "/config XDG_DATA_HOME=" + home_.Path() + "/data";
    }
    CommandRun Fill(const std::string& options, const std::string& input = "")
    {
        return support::RunTamberlyne("fill " + options, environment_, input);
    }

    TempFolder home_;
    std::string library_;
    std::string environment_;
};

}   // namespace

TEST_F(FillCommand, TheLibraryMustBeAWritableFolderNamedTamberlyne)
{
    std::filesystem::create_directories(home_ / "Grooves");
    CommandRun run = Fill("--measures 1-4 --groove Rock --library " + home_ / "Grooves");
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.err, {"must be a folder named \"Tamberlyne\"", "is named \"Grooves\""});

    run = Fill("--measures 1-4 --groove Rock --library " + home_ / "Nowhere/Tamberlyne");
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.err, {"does not exist"});

    // Root may write anywhere, so as root the command runs as "nobody" (through `env`, which runs
    // what follows the environment), for whom the folder is read-only as for any person.
    chmod(library_.c_str(), 0555);
    std::string asPerson;
    if (geteuid() == 0) {
        chmod(home_.Path().c_str(), 0755);
        asPerson = " setpriv --reuid=65534 --regid=65534 --clear-groups";
    }
    run = support::RunTamberlyne("fill --measures 1-4 --groove Rock --library " + library_, environment_ + asPerson);
    chmod(library_.c_str(), 0755);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.err, {"is read-only; the plug-in writes its temporary MIDI file there"});
    EXPECT_TRUE(run.out.empty()) << "the plug-in did not run";
}

// The plug-in's refusals end the command with its own message.
TEST_F(FillCommand, RefusalsExitWithOneAndThePlugInsMessage)
{
    CommandRun run = Fill("--measures 5-12 --library " + library_);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.out, {"Stop: Please choose a groove from the list first."});
    ExpectHas(run.out, {"The plug-in did not fill the measures: Please choose a groove from the list first."});
    ExpectHas(run.err,
              {"tamberlyne: The plug-in did not fill the measures: Please choose a groove from the list first."});
    EXPECT_FALSE(Has(run.out + run.err, "Dialog 2")) << "no line a person reads names the dialog's number";

    run = Fill("--measures 5-12 --groove Samba --library " + library_);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.err, {"The plug-in did not fill the measures: no row reads \"Samba\" (rows: Funk, Rock)"});
    EXPECT_FALSE(Has(run.out + run.err, "item")) << run.out << run.err;

    run = Fill("--groove Rock --library " + library_);   // nothing selected, and no --yes
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.out, {"Selection: nothing selected", "-> No"});
    ExpectHas(run.err, {"and the answer was No"});

    std::filesystem::remove_all(library_);
    std::filesystem::create_directories(library_);
    run = Fill("--measures 1-2 --groove Rock --library " + library_);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.err, {"No grooves were found."});
}

// Damaged grooves: a copy cut short fills what it holds; a copy cut early is refused with the
// plug-in's alerts, each run of the same alert told once; a groove whose notes do not sound
// (velocity 0) lands no note, which is no fill.
TEST_F(FillCommand, DamagedGroovesFillWhatTheyHoldOrSaySoPlainly)
{
    std::vector<uint8_t> rock = support::ReadBytes(BuildDir() + "/bin/Tamberlyne/Rock 8ths.mid");
    rock.resize(rock.size() - 20);
    WriteFile(library_ + "/Rock.mid", std::string(rock.begin(), rock.end()));
    CommandRun run = Fill("--measures 1-4 --groove Rock --staff Drums --yes --library " + library_);
    EXPECT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"Notice: End of track meta event missing", "Plug-in result: 1 (the score changed)",
                        "  Acoustic Snare |----o-------o---|----o-------o---|"});

    rock.resize(40);
    WriteFile(library_ + "/Rock.mid", std::string(rock.begin(), rock.end()));
    run = Fill("--measures 1-4 --groove Rock --staff Drums --yes --library " + library_);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.out, {"Notice: Parsing error - trying to read beyond EOF. (repeated 5 times)\n"});
    ExpectHas(run.err, {"tamberlyne: The plug-in did not fill the measures: Parsing error"});
    run = Fill("--interactive --measures 1-4 --library " + library_, "2\nok\n");   // told as they come
    ExpectHas(run.out, {"Parsing error - trying to read beyond EOF.\n(repeated 5 times)\n"});

    std::vector<uint8_t> silent = support::DrumFile(480, 4, 4, {{0, 36}, {480, 38}});
    for (size_t i = 0; i + 2 < silent.size(); ++i) {
        if (silent[i] == 0x99) silent[i + 2] = 0;   // every note-on at velocity 0
    }
    WriteFile(library_ + "/Rock.mid", std::string(silent.begin(), silent.end()));
    run = Fill("--measures 1-4 --groove Rock --staff Drums --yes --library " + library_);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.out, {"Plug-in result: 1 (no notes landed)"});
    ExpectHas(run.err, {"tamberlyne: The plug-in did not fill the measures: no note of the groove landed"});
    EXPECT_FALSE(Has(run.out, "Staff 2")) << "nothing is reported as filled";
}

// A real groove fills the drum staff: the report names the staves, shows what changed and
// draws the groove's grid.
TEST_F(FillCommand, ReportsTheDialogTheStavesAndTheResult)
{
    std::filesystem::copy_file(BuildDir() + "/bin/Tamberlyne/Rock 8ths.mid", library_ + "/Rock.mid",
                               std::filesystem::copy_options::overwrite_existing);
    CommandRun run = Fill("--measures 5-12 --groove Rock --staff Drums --style drums --yes --library " + library_);
    EXPECT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"Selection: measures 5-12 of every staff", "Plug-in result: 1 (the score changed)",
                        "Staff 1 \"Piano\" (unchanged)", "Staff 2 \"Drums\" (changed)", "  MIDI channel 10: yes\n",
                        "  clef in measure 5: 12 (percussion) (was 0)", "  Acoustic Snare |----o-------o---|"});
    // OK remembered the option in the command's own preferences folder, not loose in the base.
    EXPECT_TRUE(std::filesystem::is_regular_file(home_ / "config/tamberlyne/tamberlyne Prefs"));
    EXPECT_FALSE(std::filesystem::exists(home_ / "config/tamberlyne Prefs"));

    // Notes replaced by as many other notes still change the staff: this score's drums hold six
    // in measure 1, as this groove does.
    std::filesystem::copy_file(BuildDir() + "/bin/Tamberlyne/Cha-Cha-Cha.mid", library_ + "/Funk.mid",
                               std::filesystem::copy_options::overwrite_existing);
    run = Fill(support::SourceDir() +
               "/tests/musicxml/files/garage_demo.mxl --measures 1 --groove Funk --staff Drums "
               "--yes --dry-run --library " +
               library_);
    EXPECT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"Staff 2 \"Drums\" (changed)", "  notes and rests in measure 1: 6 (6 with notes)\n"});

    run = Fill("--measures 5-12 --groove Rock --staff 3 --library " + library_ + " --json");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out.rfind("{\"library\":", 0), 0u) << run.out;
    ExpectHas(run.out, {"\"selection\":{\"first\":5,\"last\":12},\"result\":0,\"changed\":false",
                        "has no entry 3 (entries: 1 Piano, 2 Drums)", "\"staves\":[{\"slot\":1,"});
    EXPECT_EQ(run.out.back(), '\n');

    // The older pose runs the same dialog.
    run = support::RunTamberlyne("--pose older fill --measures 1-4 --library " + library_, environment_);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.err, {"Please choose a groove"});
}

TEST_F(FillCommand, ThePerUserLibraryIsFilledFromTheBundledOneOnFirstUse)
{
    const std::string bundled = BuildDir() + "/bin/Tamberlyne";
    ASSERT_TRUE(std::filesystem::is_directory(bundled)) << "the build lays the groove library out at " << bundled;
    const std::string userLibrary = home_.Path() + "/data/tamberlyne/Tamberlyne";
    CommandRun run = Fill("--measures 1-4 --groove NoSuchGroove");
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.out, {"Groove library: " + userLibrary + " (filled from " + bundled});
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(bundled)) {
        if (entry.is_regular_file()) ++files;
        EXPECT_TRUE(std::filesystem::exists(userLibrary + "/" + entry.path().filename().string()));
    }
    EXPECT_GT(files, 0u);

    // Once there, it is the person's: it is not filled again.
    std::filesystem::remove(std::filesystem::directory_iterator(userLibrary)->path());
    run = Fill("--measures 1-4 --groove NoSuchGroove");
    EXPECT_FALSE(Has(run.out, "filled from")) << run.out;
}

TEST_F(FillCommand, InteractiveShowsTheDialogAndReadsThePersonsChoices)
{
    const CommandRun run = Fill("--interactive --measures 1-4 --library " + library_, "2\nset 11 3\nok\ncancel\n");
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.out, {"== Fill with Drum Groove ==", "      1  Funk\n      2  Rock\n", "   >  2  Rock\n",
                        "[11] Style: Slash notation", "[8] Staff: Drums   [1 Piano, 2 Drums]"});
    ExpectHas(run.err, {"The plug-in did not fill the measures"});

    // A question at the terminal: nothing selected.
    const CommandRun asked = Fill("--interactive --library " + library_, "n\n");
    EXPECT_EQ(asked.status, 1);
    ExpectHas(asked.out, {"Question: Nothing is selected.", "Yes or No? [y/n]"});
}
