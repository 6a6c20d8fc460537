// The `tamberlyne` command as a person runs it.
#include "tests/stavio/test_support.h"

namespace stavio {
namespace {

using support::Has;
using support::RunTamberlyne;

TEST(StavioCli, HelpExplainsTheCommandsAndOptions)
{
    const support::CommandRun run = RunTamberlyne("--help");
    EXPECT_EQ(run.status, 0);
    for (const char* part : {"Usage: tamberlyne", "plugins", "--plugins DIR", "--pose newer|older"})
        EXPECT_TRUE(Has(run.out, part)) << part;
    EXPECT_TRUE(run.err.empty());
}

TEST(StavioCli, WrongUsageSaysWhatIsWrongAndExitsWithTwo)
{
    for (const auto& [arguments, complaint] :
         {std::pair<std::string, std::string>{"--frobnicate plugins", "unknown option \"--frobnicate\""},
          {"groove", "unknown command \"groove\""},
          {"", "no command given"},
          {"plugins --pose sideways", "\"newer\" or \"older\""},
          {"plugins --plugins", "needs a value"}}) {
        const support::CommandRun run = RunTamberlyne(arguments);
        EXPECT_EQ(run.status, 2) << arguments;
        EXPECT_TRUE(Has(run.err, complaint)) << arguments << ": " << run.err;
        EXPECT_TRUE(Has(run.err, "Usage: tamberlyne")) << arguments;
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
