// The `tamberlyne` command as a person runs it: its help, its complaints about wrong usage, and
// the plugins command.
#include "tests/stavio/test_support.h"

namespace stavio {
namespace {

using support::ExpectHas;
using support::Has;
using support::RunTamberlyne;

TEST(StavioCli, HelpNamesEveryCommandAndOption)
{
    for (const auto& [arguments, parts] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"--help",
              {"Usage: tamberlyne", "plugins", "--plugins DIR", "--pose newer|older", "fill [fill options]",
               "export SCORE -o OUT"}},
             {"fill --help",
              {"--measures FIRST-LAST", "--groove NAME", "--staff NAME|NUMBER", "--style drums|percussion-clef|slashes",
               "--new-staff", "--yes, --no", "--library DIR", "--interactive", "--json", "Exit status",
               "--midi OUT.mid", "--audio OUT.wav|OUT.ogg", "--tempo BPM", "--sound-font FILE"}},
             {"grooves --help", {"grooves play NAME -o OUT"}}}) {
        const support::CommandRun run = RunTamberlyne(arguments);
        EXPECT_EQ(run.status, 0) << arguments;
        EXPECT_TRUE(run.err.empty()) << arguments << ": " << run.err;
        ExpectHas(run.out, parts);
    }
}

// Usage faults come with the usage; a range past the score's end, only known once the score is
// read, does not. Preferences and the per-user library stay inside the test's folder all the same.
TEST(StavioCli, WrongUsageSaysWhatIsWrongAndExitsWithTwo)
{
    test::TempFolder home;
    const std::string environment = "XDG_CONFIG_HOME=" + home.Path() + " XDG_DATA_HOME=" + home.Path();
    for (const auto& [arguments, complaint] : std::vector<std::pair<std::string, std::string>>{
             {"--frobnicate plugins", "unknown option \"--frobnicate\""},
             {"groove", "unknown command \"groove\""},
             {"", "no command given"},
             {"plugins --pose sideways", "\"newer\" or \"older\""},
             {"plugins --plugins", "needs a value"},
             {"fill --style wood", "--style takes drums, percussion-clef or slashes (got \"wood\")"},
             {"fill --measures 12-5", "the last measure 5 comes before the first 12"},
             {"fill --measures five", "FIRST-LAST or one measure number"},
             {"fill --measures 5-20", "the demo score has 16 measures"},
             {"fill --yes --no", "--yes and --no contradict each other"},
             {"fill --groove", "option --groove needs a value"},
             {"fill --colour red", "unknown option \"--colour\" for the fill command"},
             {"fill a.musicxml b.musicxml", "takes one score (got \"a.musicxml\" and \"b.musicxml\")"},
             {"export", "needs the file to write: -o OUT.mid"},
             {"export -o x.mid --measures 3-17", "the score has 16 measures"},
             {"export -o x.mid --tempo fast", "--tempo takes quarter notes a minute, 1 to 1000 (got \"fast\")"},
             {"export -o x.mid --audio x.mp3", "must end in .wav or .ogg"},
             {"grooves list", "takes \"show NAME\" or options only"},
             {"grooves play \"Rock 8ths\"", "needs the audio file to write: -o OUT.wav or -o OUT.ogg"}}) {
        const support::CommandRun run = RunTamberlyne(arguments, environment);
        EXPECT_EQ(run.status, 2) << arguments;
        ExpectHas(run.err, {complaint});
        EXPECT_EQ(Has(run.err, "Usage: tamberlyne"), !Has(complaint, "16 measures")) << arguments;
    }
}

TEST(StavioCli, PluginsReportsFailuresAndFailsOnlyWhenNothingLoaded)
{
    test::TempFolder folder;
    test::MakeBundle(folder.Path(), "Refuses", test::TestModulePath("main_returns_zero"));
    support::CommandRun run = RunTamberlyne("plugins --plugins " + folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Has(run.err, "cannot load plug-in " + folder.Path() + "/Refuses.bundle: ")) << run.err;

    test::MakeBundle(folder.Path(), "Probe", test::TestModulePath("probe_plugin"));
    run = RunTamberlyne("--pose older plugins --plugins=" + folder.Path());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(Has(run.out, "Probe.bundle\n  menu item: Probe Command\n")) << run.out;
    EXPECT_TRUE(Has(run.err, "Refuses.bundle")) << "the failure is still told";

    run = RunTamberlyne("plugins --plugins " + folder.Path() + "/missing");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Has(run.err, "does not exist")) << run.err;
}

TEST(StavioCli, PluginsLoadsTheBuildsOwnPlugInInBothPoses)
{
    for (const char* pose : {"newer", "older"}) {
        const support::CommandRun run = RunTamberlyne(std::string("plugins --pose ") + pose);
        EXPECT_EQ(run.status, 0) << pose << ": " << run.err;
        EXPECT_TRUE(run.err.empty()) << pose << ": " << run.err;
        EXPECT_TRUE(Has(run.out, "PlugIns\nTamberlyne.bundle\n  menu item: Fill with Drum Groove...\n")) << run.out;
    }
}

}   // namespace
}   // namespace stavio
