// The host's MusicXML: what it reads from real-style score files (files/), how a change rewrites
// its own measures and only those, what it says about bad files, and the commands as a person
// runs them. Byte-for-byte round trips and fills of every corpus score are in tests/musicxml.
#include "sdk/tags.h"
#include "stavio/document/pitch.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"
#include "stavio/musicxml/mxl_archive.h"
#include "stavio/musicxml/score_file.h"
#include "stavio/musicxml/xml_text.h"
#include "tests/support/test_support.h"

#include <filesystem>
#include <set>

using stavio::musicxml::Container;
using stavio::musicxml::ScoreFile;
using support::ExpectHas;
using support::ReadFile;

namespace {

std::string ScorePath(const std::string& name)
{
    return support::SourceDir() + "/tests/musicxml_host/files/" + name;
}

ScoreFile Open(const std::string& name)
{
    toolbox::Result<ScoreFile> score = ScoreFile::Read(ScorePath(name));
    EXPECT_TRUE(score) << score.Message();
    if (!score) {
        throw std::runtime_error(score.Message());
    }
    return std::move(*score);
}

// The keys sounding in a staff-measure, every layer.
std::set<int> KeysOf(const stavio::Document& doc, int32_t inst, int32_t meas)
{
    std::set<int> keys;
    for (int layer = 0; layer < stavio::kMaxLayers; ++layer) {
        for (const EXENTRY& entry : doc.Frame(inst, meas, layer).value_or(stavio::FrameContent{}).entries) {
            for (int i = 0; i < entry.numNotes; ++i) {
                keys.insert(stavio::NoteToMidiKey(entry.note[i].tcd, entry.note[i].alteration));
            }
        }
    }
    return keys;
}

// The <measure>...</measure> texts of the part with `id`, in order.
std::vector<std::string> MeasuresOfPart(const std::string& text, const std::string& id)
{
    std::vector<std::string> measures;
    const size_t part = text.find("<part id=\"" + id + "\"");
    const size_t partEnd = text.find("</part>", part);
    for (size_t at = text.find("<measure", part); at < partEnd; at = text.find("<measure", at + 1)) {
        measures.push_back(text.substr(at, text.find("</measure>", at) + 10 - at));
    }
    return measures;
}

std::string PartText(const std::string& text, const std::string& id)
{
    const size_t part = text.find("<part id=\"" + id + "\"");
    return text.substr(part, text.find("</part>", part) - part);
}

// One measure's layer holding `entries` one after another, laid out by the document builder.
stavio::FrameContent FrameOf(std::vector<stavio::EntrySpec> entries, int16_t beats = 4, int16_t divbeat = 1024)
{
    return stavio::DocumentBuilder()
        .Measures(1, beats, divbeat)
        .Staff("")
        .Entries(1, 1, 0, std::move(entries))
        .Build()
        .Frame(1, 1, 0)
        .value();
}

}   // namespace

TEST(MusicXmlRead, PartsStavesMeasuresAndNotesComeFromTheFile)
{
    const ScoreFile score = Open("two_parts.musicxml");
    ASSERT_EQ(score.Staves().size(), 2U);
    EXPECT_EQ(score.Staves()[0].name, "Guitar");
    EXPECT_FALSE(score.Staves()[0].drum);
    EXPECT_TRUE(score.Staves()[1].drum);
    ASSERT_EQ(score.Measures().size(), 4U);
    EXPECT_EQ(score.Measures()[0].number, "0");
    EXPECT_TRUE(score.Measures()[0].implicit);
    EXPECT_EQ(score.Measures()[1].fifths, 2);
    EXPECT_EQ(score.MeasuresNumbered("1"), std::vector<int32_t>{2});

    const stavio::Document& doc = score.document();
    EXPECT_EQ(doc.MeasureCount(), 4);
    EXPECT_EQ(support::Ints(doc.MeasureDuration(1), doc.MeasureDuration(2)), support::Ints(1024, 4096));   // pickup
    // Measure "1": a half-note chord D4 + F#4, two eighths, a quarter rest.
    const stavio::FrameContent guitar = doc.Frame(1, 2, 0).value();
    ASSERT_EQ(guitar.entries.size(), 4U);
    EXPECT_EQ(support::Ints(guitar.entries[0].numNotes, guitar.entries[0].actdur, guitar.entries[2].elldur,
                            guitar.entries[3].numNotes),
              support::Ints(2, 2048, 2560, 0));
    EXPECT_EQ(KeysOf(doc, 1, 2), (std::set<int>{62, 64, 66}));
    // Unpitched notes through the instruments' <midi-unpitched>: snare in the pickup, kick at the end.
    EXPECT_EQ(KeysOf(doc, 2, 1), std::set<int>{38});
    EXPECT_EQ(KeysOf(doc, 2, 4), std::set<int>{36});
    const std::optional<uint16_t> code = stavio::ChannelCode(doc, stavio::StaffChannelDefinition(doc, 2));
    EXPECT_EQ(code.value_or(0), stavio::kDrumChannelCode);
    EXPECT_EQ(Open("guitar_drums_utf16.musicxml").Staves()[0].name, "Gitarre \xC3\xA9\xF0\x9D\x84\x9E");
}

TEST(MusicXmlRead, TwoStavesCompoundMeterTupletsAndADrumPartOffChannelTen)
{
    const ScoreFile score = Open("piano_kit_6-8_crlf.musicxml");
    ASSERT_EQ(score.Staves().size(), 3U);
    EXPECT_EQ(score.Staves()[1].name, "Piano (2)");
    EXPECT_TRUE(score.Staves()[2].drum);   // percussion clef and unpitched notes, channel 1
    const stavio::Document& doc = score.document();
    EDTMeasureSpec2005 spec{};
    doc.Read(kTagMeasureSpec, stavio::RecordKey::Other(1, 0), spec, 0x0A000000);
    EXPECT_EQ(support::Ints(spec.beats, spec.divbeat, spec.key), support::Ints(2, 1536, -1));
    const stavio::FrameContent right = doc.Frame(1, 1, 0).value();
    ASSERT_EQ(right.tuplets.size(), 1U);
    EXPECT_EQ(support::Ints(right.tuplets[0].stoff, right.tuplets[0].enoff, right.tuplets[0].tpDef.symbolicNum),
              support::Ints(0, 2, 3));
    EXPECT_EQ(KeysOf(doc, 2, 1), (std::set<int>{48, 53}));   // voice 5 on staff 2 is its layer 0
    // Placed by display step, octave and notehead: snare on C5, closed hi-hat G5 with x.
    EXPECT_EQ(KeysOf(doc, 3, 1), (std::set<int>{38, 42}));
}

TEST(MusicXmlWrite, ConvertingToMxlAndBackKeepsTheScore)
{
    support::TempFolder folder;
    const std::string plain = ScorePath("two_parts.musicxml");
    ASSERT_EQ(support::RunTamberlyne("convert " + plain + " -o " + (folder / "a.mxl")).status, 0);
    ASSERT_EQ(support::RunTamberlyne("convert " + (folder / "a.mxl") + " -o " + (folder / "b.musicxml")).status, 0);
    EXPECT_TRUE(ReadFile(folder / "b.musicxml") == ReadFile(plain));
    const auto archived = stavio::musicxml::ReadArchiveScore(ReadFile(folder / "a.mxl"));
    ASSERT_TRUE(archived) << archived.Message();
    EXPECT_EQ(ReadFile(folder / "a.mxl").substr(30, 8), "mimetype");   // stored first
}

// A changed staff-measure is rewritten; every other part and measure keeps its bytes.
TEST(MusicXmlWrite, AFillRewritesOnlyItsMeasuresOfTheTargetPart)
{
    const ScoreFile score = Open("two_parts.musicxml");
    stavio::Document edited = score.document();
    stavio::FrameContent frame = FrameOf(
        {stavio::Chord({36, 42}, 1024), stavio::Note(42, 1024), stavio::Chord({38, 42}, 1024), stavio::Note(42, 1024)});
    ASSERT_TRUE(edited.SetFrame(2, 3, 0, frame));   // measure "2" of the drums
    const toolbox::Result<std::string> written = score.Write(edited, Container::Same);
    ASSERT_TRUE(written) << written.Message();
    const std::string& bytes = *written;
    const std::string before = ReadFile(ScorePath("two_parts.musicxml"));
    EXPECT_EQ(PartText(bytes, "P1"), PartText(before, "P1"));
    const std::vector<std::string> oldMeasures = MeasuresOfPart(before, "P2");
    const std::vector<std::string> newMeasures = MeasuresOfPart(bytes, "P2");
    ASSERT_EQ(newMeasures.size(), oldMeasures.size());
    for (size_t i = 0; i < oldMeasures.size(); ++i) {
        EXPECT_EQ(newMeasures[i] == oldMeasures[i], i != 2) << "measure index " << i;
    }
    // Hands up in voice 1, the kick down in voice 2, the hi-hat's new instrument on channel 10.
    // The measure's rehearsal mark stays at its start, its words after the whole rest.
    ExpectHas(newMeasures[2],
              {"<rehearsal>B</rehearsal>",
               "<forward><duration>8</duration></forward>\n      <direction><direction-type><words>fill",
               "<voice>2</voice><type>quarter</type><stem>down</stem>", "<notehead>x</notehead>",
               "<backup><duration>8</duration></backup>", "<instrument id=\"P2-I43\"/>"});
    ExpectHas(bytes, {"<midi-unpitched>43</midi-unpitched>"});
    toolbox::Result<ScoreFile> reread = ScoreFile::FromBytes(bytes, "two_parts.musicxml");
    ASSERT_TRUE(reread) << reread.Message();
    EXPECT_EQ(KeysOf(reread->document(), 2, 3), (std::set<int>{36, 38, 42}));
}

// In a part with two staves the other staff's notes stay as they were, its own give way to the new ones.
TEST(MusicXmlWrite, AFillOfOneStaffOfAPianoKeepsTheOtherStaff)
{
    const ScoreFile score = Open("piano_kit_6-8_crlf.musicxml");
    stavio::Document edited = score.document();
    stavio::FrameContent frame = FrameOf({stavio::Chord({36, 38}, 1536), stavio::Chord({36, 38}, 1536)}, 2, 1536);
    ASSERT_TRUE(edited.SetFrame(1, 1, 0, frame));
    const toolbox::Result<std::string> written = score.Write(edited, Container::Same);
    ASSERT_TRUE(written) << written.Message();
    const std::string& bytes = *written;
    const std::string before = ReadFile(ScorePath("piano_kit_6-8_crlf.musicxml"));
    EXPECT_EQ(PartText(bytes, "P2"), PartText(before, "P2"));
    const std::string leftHand = "<note><pitch><step>F</step><octave>3</octave></pitch><duration>9</duration>";
    ExpectHas(MeasuresOfPart(bytes, "P1")[0],
              {leftHand, "<backup><duration>18</duration></backup>", "<staff>1</staff>", "\r\n"});
    EXPECT_EQ(MeasuresOfPart(bytes, "P1")[1], MeasuresOfPart(before, "P1")[1]);
    toolbox::Result<ScoreFile> reread = ScoreFile::FromBytes(bytes, "piano");
    ASSERT_TRUE(reread) << reread.Message();
    EXPECT_EQ(KeysOf(reread->document(), 1, 1), (std::set<int>{36, 38}));
    EXPECT_EQ(KeysOf(reread->document(), 2, 1), (std::set<int>{48, 53}));
    EXPECT_NE(bytes.find("<midi-channel>1</midi-channel><midi-program>1</midi-program>"), std::string::npos);
}

// New elements are laid out as the file lays out its own: a child per line, text inline.
TEST(MusicXmlWrite, NewElementsFollowTheFilesLayout)
{
    EXPECT_EQ(stavio::musicxml::LayOut("<note><chord/><unpitched><display-step>C</display-step></unpitched>"
                                       "<duration>1</duration></note>",
                                       "\t\t\t", "\t", "\r\n"),
              "<note>\r\n\t\t\t\t<chord/>\r\n\t\t\t\t<unpitched>\r\n\t\t\t\t\t<display-step>C</display-step>"
              "\r\n\t\t\t\t</unpitched>\r\n\t\t\t\t<duration>1</duration>\r\n\t\t\t</note>");
    EXPECT_EQ(stavio::musicxml::LayOut("<backup><duration>8</duration></backup>", "  ", "  ", "\n"),
              "<backup>\n    <duration>8</duration>\n  </backup>");
}

// (The corpus's broken files cover empty, timewise and unreadable files and archives.)
TEST(MusicXmlRead, BadFilesAreNamedWithWhatIsWrong)
{
    support::TempFolder folder;
    for (const auto& [bytes, complaint] : std::vector<std::pair<std::string, std::string>>{
             // A part is parsed on its own: its fault is still told at its place in the file.
             {"<score-partwise>\n<part-list/>\n<part id=\"P1\">\n<measure>\n<note></measure></part>\n</score-partwise>",
              "not well-formed XML at line 5:9: Start-end tags mismatch"},
             {"<html><body/></html>", "not a MusicXML score: its root element is <html>"},
             {"<score-partwise><part-list/></score-partwise>", "without parts"},
             {"<score-partwise><part id=\"P1\"/></score-partwise>", "it has no <part-list>"},
             {"PK\x03\x04garbage", "not a readable .mxl archive"}}) {
        support::WriteFile(folder / "bad.musicxml", bytes);
        const toolbox::Result<ScoreFile> score = ScoreFile::Read(folder / "bad.musicxml");
        EXPECT_FALSE(score) << complaint;
        ExpectHas(score.Message(), {folder / "bad.musicxml", complaint});
    }
}

TEST(MusicXmlCommands, FillInfoAndTheirRefusals)
{
    support::TempFolder folder;
    std::filesystem::create_directories(folder / "app/Tamberlyne");
    std::filesystem::copy_file(support::GrooveLibrary() + "/Rock 8ths.mid", folder / "app/Tamberlyne/Rock 8ths.mid");
    const std::string environment = "XDG_CONFIG_HOME=" + (folder / "config") + " XDG_DATA_HOME=" + (folder / "data");
    const std::string score = folder / "song.musicxml";
    support::WriteFile(score, ReadFile(ScorePath("two_parts.musicxml")));
    const std::string fill = "fill " + score + " --library " + (folder / "app/Tamberlyne") +
                             " --groove \"Rock 8ths\" --staff Drums --style drums --yes ";

    support::CommandRun run = support::RunTamberlyne(fill + "--measures 1-2", environment);
    ASSERT_EQ(run.status, 0) << run.err;
    // The report names the measures as the score numbers them (positions 2-3 here, after the pickup).
    ExpectHas(run.out, {"Wrote " + (folder / "song.drums.musicxml"), "Selection: measures 1-2 of every staff",
                        "notes and rests in measures 1-2", "Measure        |1               |2               |"});
    EXPECT_TRUE(ReadFile(score) == ReadFile(ScorePath("two_parts.musicxml")));
    toolbox::Result<ScoreFile> filled = ScoreFile::Read(folder / "song.drums.musicxml");
    ASSERT_TRUE(filled) << filled.Message();
    EXPECT_EQ(KeysOf(filled->document(), 2, 2), (std::set<int>{36, 38, 42}));   // measure "1"
    EXPECT_TRUE(KeysOf(filled->document(), 2, 4) == std::set<int>{36});         // measure "3" as it was

    // A new staff is a new part after the others, which keep their bytes.
    run = support::RunTamberlyne(fill + "--measures 1-2 --new-staff -o " + (folder / "new.musicxml"), environment);
    ASSERT_EQ(run.status, 0) << run.err;
    filled = ScoreFile::Read(folder / "new.musicxml");
    ASSERT_TRUE(filled) << filled.Message();
    ASSERT_EQ(filled->Staves().size(), 3U);
    EXPECT_TRUE(filled->Staves()[2].drum);
    EXPECT_EQ(filled->Staves()[2].name, "Drums 2");   // the score has a "Drums": --staff still tells them apart
    EXPECT_EQ(KeysOf(filled->document(), 3, 3), (std::set<int>{36, 38, 42}));
    EXPECT_TRUE(KeysOf(filled->document(), 3, 4).empty());

    // Two fills in one run, one output; a dry run writes nothing.
    const std::string twoFills = "fill " + score + " --library " + (folder / "app/Tamberlyne") +
                                 " --fill 1=\"Rock 8ths\" --fill 3=\"Rock 8ths\" --staff Drums --style drums --yes ";
    run = support::RunTamberlyne(twoFills + "-o " + (folder / "two.musicxml"), environment);
    ASSERT_EQ(run.status, 0) << run.err;
    filled = ScoreFile::Read(folder / "two.musicxml");
    ASSERT_TRUE(filled) << filled.Message();
    EXPECT_EQ(KeysOf(filled->document(), 2, 2), (std::set<int>{36, 38, 42}));   // measure "1"
    EXPECT_EQ(KeysOf(filled->document(), 2, 4), (std::set<int>{36, 38, 42}));   // measure "3"
    EXPECT_TRUE(KeysOf(filled->document(), 2, 3).empty());                      // "2", between the fills
    run = support::RunTamberlyne(twoFills + "--dry-run -o " + (folder / "dry.musicxml"), environment);
    EXPECT_EQ(run.status, 0) << run.err;
    ExpectHas(run.out, {"Dry run: nothing was written", "Closed Hi-Hat"});
    EXPECT_FALSE(std::filesystem::exists(folder / "dry.musicxml"));

    // Refusals change nothing and create nothing.
    for (const auto& [options, status, complaint] : std::vector<std::tuple<std::string, int, std::string>>{
             {"--measures 1-2", 1, "song.drums.musicxml exists; use --force"},
             {"--measures 7-9 -o " + (folder / "x.musicxml"), 2,
              "has no such measures (its measures are numbered 0 to 3)"},
             {"--measures 2 --staff Bass -o " + (folder / "x.musicxml"), 2, "no staff named \"Bass\""},
             {"--measures 2 --in-place -o " + (folder / "x.musicxml"), 2, "contradict"}}) {
        run = support::RunTamberlyne(fill + options, environment);
        EXPECT_EQ(run.status, status) << options;
        ExpectHas(run.err, {complaint});
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "x.musicxml"));
    std::string repeated = ReadFile(score);
    for (size_t at = repeated.find("number=\"2\""); at != std::string::npos; at = repeated.find("number=\"2\"", at)) {
        repeated.replace(at, 10, "number=\"1\"");
    }
    support::WriteFile(folder / "repeated.musicxml", repeated);
    run = support::RunTamberlyne("fill " + (folder / "repeated.musicxml") + " --measures 1 --groove Rock --yes");
    EXPECT_EQ(run.status, 2);
    ExpectHas(run.err, {"numbers 2 measures 1 (at positions 2 and 3", "cannot tell which one you mean"});
    EXPECT_FALSE(std::filesystem::exists(folder / "repeated.drums.musicxml"));

    // Without a score, -o writes the filled demo score.
    run = support::RunTamberlyne("fill --library " + (folder / "app/Tamberlyne") +
                                     " --measures 5-12 --groove \"Rock 8ths\" --staff Drums --yes -o " +
                                     (folder / "demo.musicxml"),
                                 environment);
    ASSERT_EQ(run.status, 0) << run.err;
    filled = ScoreFile::Read(folder / "demo.musicxml");
    ASSERT_TRUE(filled) << filled.Message();
    EXPECT_EQ(filled->Measures().size(), 16U);
    EXPECT_EQ(KeysOf(filled->document(), 2, 12), (std::set<int>{36, 38, 42}));

    run = support::RunTamberlyne("info " + score);
    EXPECT_EQ(run.status, 0);
    ExpectHas(run.out, {"4 measures (numbered 0 to 3)", "Measure 0 is a pickup",
                        "Drums  (part P2, MIDI channel 10)  drum staff"});
}
