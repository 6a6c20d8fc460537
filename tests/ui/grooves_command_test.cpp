// `tamberlyne grooves` as a person runs it: the bundled library listed as its pattern sources
// describe it, the reasons given for files the plug-in would refuse, and a groove's drum grid.
#include "tests/support/smf.h"
#include "tests/ui/ui_test_support.h"

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace ui_test;
using support::Bytes;
using support::CommandRun;
using support::ExpectHas;

namespace {

struct PatternFacts {
    std::string title;
    std::string meter;
    std::string bars;
    bool ending = false;
};

// The settings of every pattern source, read straight from its text: "groove", "meter",
// "bars" and "ending" lines, comments cut at a word starting with '#'.
std::vector<PatternFacts> PatternSources()
{
    std::vector<PatternFacts> patterns;
    for (const auto& entry : std::filesystem::directory_iterator(support::SourceDir() + "/grooves/patterns")) {
        std::ifstream in(entry.path());
        PatternFacts facts;
        for (std::string line; std::getline(in, line);) {
            line = line.substr(0, line.find(" #"));
            std::istringstream words(line);
            std::string key;
            words >> key;
            std::string value;
            std::getline(words >> std::ws, value);
            value.erase(value.find_last_not_of(' ') + 1);
            if (key == "groove") facts.title = value;
            if (key == "meter") facts.meter = value;
            if (key == "bars") facts.bars = value;
            if (key == "ending") facts.ending = true;
        }
        patterns.push_back(facts);
    }
    return patterns;
}

CommandRun Grooves(const std::string& arguments, const std::string& library)
{
    return support::RunTamberlyne("grooves " + arguments + " --library \"" + library + "\"");
}

Bytes TrackBody(std::initializer_list<uint8_t> events)
{
    Bytes body(events);
    body.insert(body.end(), support::kEndOfTrack.begin(), support::kEndOfTrack.end());
    return body;
}

}   // namespace

TEST(GroovesCommand, ListsEveryBundledGrooveWithTheMeterAndLengthOfItsPattern)
{
    const std::string bundled = BuildDir() + "/bin/Tamberlyne";
    const std::vector<PatternFacts> patterns = PatternSources();
    ASSERT_GE(patterns.size(), 60u);

    const CommandRun json = Grooves("--json", bundled);
    ASSERT_EQ(json.status, 0) << json.err;
    const CommandRun text = Grooves("", bundled);
    ASSERT_EQ(text.status, 0) << text.err;
    ExpectHas(text.out, {std::to_string(patterns.size()) + " grooves\n"});
    for (const PatternFacts& groove : patterns) {
        SCOPED_TRACE(groove.title);
        ExpectHas(json.out, {"{\"name\":\"" + groove.title + "\",\"file\":\"" + groove.title + ".mid\",\"meter\":\"" +
                             groove.meter + "\",\"bars\":" + groove.bars +
                             ",\"closingHits\":" + (groove.ending ? "true" : "false") + ","});
        const std::string meterAndBars = groove.meter + std::string(7 - groove.meter.size(), ' ') +
                                         std::string(4 - groove.bars.size(), ' ') + groove.bars +
                                         (groove.ending ? "*" : " ");
        ExpectHas(text.out, {"\n" + groove.title + "  ", meterAndBars});
    }
    EXPECT_EQ(json.out.find("\"refused\":[]"), json.out.size() - 14) << json.out.substr(json.out.size() - 40);
    ExpectHas(json.out, {"\"name\":\"Jazz Swing\",\"file\":\"Jazz Swing.mid\",\"meter\":\"4/4\",\"bars\":2,"
                         "\"closingHits\":false,\"tempo\":160,\"feel\":\"triplet\",\"kit\":[{\"key\":36,\"name\":"
                         "\"Bass Drum 1\"},{\"key\":38,",
                         "\"name\":\"Hip Hop Swing 16ths\",\"file\":\"Hip Hop Swing 16ths.mid\",\"meter\":\"4/4\","
                         "\"bars\":2,\"closingHits\":false,\"tempo\":90,\"feel\":\"swing\"",
                         "\"name\":\"Rock 8ths\",\"file\":\"Rock 8ths.mid\",\"meter\":\"4/4\",\"bars\":2,"
                         "\"closingHits\":true,\"tempo\":112,\"feel\":\"straight\""});
}

// Each file the plug-in would refuse is named with the reason; the temporary file and other
// files are not grooves at all.
TEST(GroovesCommand, NamesAReasonForEachRefusedFile)
{
    TempFolder home;
    const std::string library = MakeGrooveFolder(home.Path(), {});
    const std::string drums = support::ReadFile(BuildDir() + "/bin/Tamberlyne/Rock 8ths.mid");
    const auto write = [&](const std::string& name, const Bytes& bytes) {
        WriteFile(library + "/" + name, std::string(bytes.begin(), bytes.end()));
    };
    write("Empty.mid", {});
    write("Notes.mid", Bytes{'T', 'e', 'x', 't'});
    write("Piano.mid", support::DrumFile(480, 4, 4, {{0, 60, 1}, {960, 64, 1}}));
    write("Changes.mid",
          support::Smf(0, 480, {TrackBody({0x00, 0xFF, 0x58, 0x04, 4,    2,    24,   8,    0x00, 0x99, 36, 100, 0x83,
                                           0x60, 0x89, 36,   0,    0x8B, 0x20, 0xFF, 0x58, 0x04, 3,    2,  24,  8})}));
    write("Latin.mId", Bytes(drums.begin(), drums.end()));
    write("Tamberlyne$$Temp$$File.mid", Bytes(drums.begin(), drums.end()));
    WriteFile(library + "/notes.txt", "not a groove");

    CommandRun run = Grooves("", library);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.out, {"0 grooves; 5 files the plug-in would refuse:\n", "  Empty.mid: the file is empty\n",
                        "  Notes.mid: it cannot be read as a MIDI file: ",
                        "  Piano.mid: it holds no drum notes (nothing on MIDI channel 10)\n",
                        "  Changes.mid: its meter changes in bar 2 (4/4 to 3/4); the plug-in takes grooves in one "
                        "meter only\n",
                        "  Latin.mId: the plug-in lists only names ending in \".mid\", \".MID\" or \".Mid\"\n"});
    ExpectHas(run.err, {"holds no groove the plug-in takes"});
    EXPECT_FALSE(Has(run.out, "$$Temp$$")) << run.out;
    EXPECT_FALSE(Has(run.out, "notes.txt")) << run.out;

    write("Rock.MID", Bytes(drums.begin(), drums.end()));
    run = Grooves("--json", library);
    EXPECT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"\"grooves\":[{\"name\":\"Rock\",\"file\":\"Rock.MID\",\"meter\":\"4/4\",\"bars\":2,",
                        "{\"name\":\"Piano\",\"file\":\"Piano.mid\",\"reason\":\"it holds no drum notes"});

    run = Grooves("show Changes", library);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.err, {"the plug-in would refuse Changes.mid: its meter changes in bar 2"});
    run = Grooves("show Samba", library);
    EXPECT_EQ(run.status, 1);
    ExpectHas(run.err, {"there is no groove \"Samba\" in " + library});
    run = Grooves("show", library);
    EXPECT_EQ(run.status, 2);
    ExpectHas(run.err, {"grooves show needs the name of a groove", "Usage: tamberlyne [options] grooves"});
}

// The grid of a groove in its own meter: compound beats of six sixteenths in 6/8, triplet
// beats where the ride swings, and only the drum track the plug-in imports.
TEST(GroovesCommand, ShowPrintsTheDrumGridInTheGroovesOwnMeter)
{
    const std::string bundled = BuildDir() + "/bin/Tamberlyne";
    CommandRun run = Grooves("show \"Afro-Cuban 6-8\"", bundled);
    EXPECT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"Afro-Cuban 6-8: 6/8, 2 bars, 180 quarter notes a minute, triplet feel\n",
                        "Beat          |1     2     |1     2     |\n", "Cowbell       |o---o---o-o-|--o---o---o-|\n",
                        "Bass Drum 1   |o-----o-----|o-----o-----|\n"});

    run = Grooves("show \"Jazz Waltz.mid\"", bundled);
    EXPECT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"Jazz Waltz: 3/4, 2 bars, 150 quarter notes a minute, triplet feel\n",
                        "Ride Cymbal 1  |x---x-xx---|x---x-xx--|\n", "Pedal Hi-Hat   |----x--x---|----x--x--|\n"});

    run = Grooves("show \"Soul Backbeat\"", bundled);
    EXPECT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"Acoustic Snare |----o-------o---|----o-------o---|\n"});
    EXPECT_FALSE(Has(run.out, "Hand Clap")) << "the second drum track is left behind\n" << run.out;
}
