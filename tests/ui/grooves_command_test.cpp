// `tamberlyne grooves` as a person runs it: the bundled library's listing, the reasons given for
// files the plug-in would refuse, and a groove's drum grid.
#include "tests/support/smf.h"
#include "tests/ui/ui_test_support.h"

using namespace ui_test;
using support::Bytes;
using support::CommandRun;
using support::ExpectHas;

namespace {

CommandRun Grooves(const std::string& arguments, const std::string& library)
{
    return support::RunTamberlyne("grooves " + arguments + " --library \"" + library + "\"");
}

}   // namespace

// The listing of the bundled library, checked in as tests/ui/files/grooves_listing.txt. After a
// change to the library, regenerate it from a build and read the difference:
//   build/bin/tamberlyne grooves --library build/bin/Tamberlyne | tail -n +2 > tests/ui/files/grooves_listing.txt
TEST(GroovesCommand, ListsEveryBundledGrooveWithItsMeterLengthTempoFeelAndKit)
{
    const std::string bundled = BuildDir() + "/bin/Tamberlyne";
    const CommandRun text = Grooves("", bundled);
    ASSERT_EQ(text.status, 0) << text.err;
    const std::string listing = ReadFile(support::SourceDir() + "/tests/ui/files/grooves_listing.txt");
    EXPECT_EQ(text.out, "Groove library: " + bundled + "\n" + listing);

    // The same grooves in JSON, one object each.
    const CommandRun json = Grooves("--json", bundled);
    ASSERT_EQ(json.status, 0) << json.err;
    size_t objects = 0;
    for (size_t at = json.out.find("\"closingHits\":"); at != std::string::npos;
         at = json.out.find("\"closingHits\":", at + 1))
        ++objects;
    ExpectHas(listing, {"\n" + std::to_string(objects) + " grooves\n"});
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
          support::Smf(0, 480,
                       {support::Concat({{0x00, 0xFF, 0x58, 0x04, 4,    2,    24,   8,    0x00, 0x99, 36, 100, 0x83,
                                          0x60, 0x89, 36,   0,    0x8B, 0x20, 0xFF, 0x58, 0x04, 3,    2,  24,  8},
                                         support::kEndOfTrack})}));
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
