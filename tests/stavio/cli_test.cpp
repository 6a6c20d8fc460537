// The `tamberlyne` command as a person runs it.
#include "tests/stavio/test_support.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace stavio {
namespace {

struct CommandRun {
    int status = -1;
    std::string out;
    std::string err;
};

std::string BuildDir()
{
    const char* dir = std::getenv("TAMBERLYNE_BUILD_DIR");
    return dir != nullptr ? dir : "";
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

CommandRun Tamberlyne(const std::string& arguments)
{
    test::TempFolder folder;
    const std::string out = folder.Path() + "/out";
    const std::string err = folder.Path() + "/err";
    const std::string command =
        BuildDir() + "/bin/tamberlyne " + arguments + " >" + out + " 2>" + err;
    CommandRun run;
    const int raw = std::system(command.c_str());
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.out = ReadFile(out);
    run.err = ReadFile(err);
    return run;
}

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(StavioCli, HelpExplainsTheCommandsAndOptions)
{
    ASSERT_FALSE(BuildDir().empty());
    const CommandRun run = Tamberlyne("--help");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(Has(run.out, "Usage: tamberlyne"));
    EXPECT_TRUE(Has(run.out, "plugins"));
    EXPECT_TRUE(Has(run.out, "--plugins DIR"));
    EXPECT_TRUE(Has(run.out, "--pose newer|older"));
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
        const CommandRun run = Tamberlyne(arguments);
        EXPECT_EQ(run.status, 2) << arguments;
        EXPECT_TRUE(Has(run.err, complaint)) << arguments << ": " << run.err;
        EXPECT_TRUE(Has(run.err, "Usage: tamberlyne")) << arguments;
    }
}

TEST(StavioCli, PluginsReportsFailuresAndFailsOnlyWhenNothingLoaded)
{
    test::TempFolder folder;
    test::MakeBundle(folder.Path(), "Refuses", test::TestModulePath("main_returns_zero"));
    CommandRun run = Tamberlyne("plugins --plugins " + folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Has(run.err, "cannot load plug-in " + folder.Path() + "/Refuses.bundle: ")) << run.err;

    test::MakeBundle(folder.Path(), "Probe", test::TestModulePath("probe_plugin"));
    run = Tamberlyne("--pose older plugins --plugins=" + folder.Path());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(Has(run.out, "Probe.bundle\n  menu item: Probe Command\n")) << run.out;
    EXPECT_TRUE(Has(run.err, "Refuses.bundle")) << "the failure is still told";

    run = Tamberlyne("plugins --plugins " + folder.Path() + "/missing");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Has(run.err, "does not exist")) << run.err;
}

TEST(StavioCli, PluginsListsTheBuildsOwnPlugInInBothPoses)
{
    for (const char* pose : {"newer", "older"}) {
        const CommandRun run = Tamberlyne(std::string("plugins --pose ") + pose);
        EXPECT_TRUE(Has(run.out, "PlugIns")) << run.out;
        if (run.status == 0) {
            EXPECT_TRUE(Has(run.out, "Tamberlyne.bundle\n  menu item: ")) << run.out;
            EXPECT_FALSE(Has(run.out, "menu item: \n")) << "the menu item has a text";
        } else {
            // The plug-in is not built in this tree: its failure is still told with the path.
            EXPECT_EQ(run.status, 1);
            EXPECT_TRUE(Has(run.err, "Tamberlyne.bundle")) << run.err;
        }
    }
}

}  // namespace
}  // namespace stavio
