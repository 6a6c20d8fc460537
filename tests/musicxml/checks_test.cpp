// The checks catch what they are for: faults planted in corpus files are reported, by part and
// measure, and nothing is reported where nothing is wrong.
#include "tests/musicxml/support/byte_regions.h"
#include "tests/musicxml/support/corpus.h"
#include "tests/musicxml/support/score_checks.h"
#include "tests/support/test_support.h"

#include <gmock/gmock.h>

using namespace musicxml_support;
using ::testing::HasSubstr;

namespace {

std::string Corpus(const std::string& file)
{
    return support::ReadFile(CorpusFolder() + "/" + file);
}

// UTF-16LE bytes of ASCII text, to find and plant text in a UTF-16 file.
std::string Wide(const std::string& ascii)
{
    std::string wide;
    for (char c : ascii) wide += std::string(1, c) + '\0';
    return wide;
}

// `text` with its `nth` (1-based) `from` replaced by `to`; fails the test when there is none.
std::string ReplaceNth(std::string text, const std::string& from, const std::string& to, int nth = 1)
{
    std::size_t at = std::string::npos;
    for (int i = 0; i < nth; ++i) at = text.find(from, at == std::string::npos ? 0 : at + 1);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::string Joined(const std::vector<std::string>& lines)
{
    std::string joined;
    for (const std::string& line : lines) joined += line + "\n";
    return joined;
}

}   // namespace

TEST(ScoreChecks, ReportEachPlantedFault)
{
    struct Case {
        const char* file;
        const char* from;
        const char* to;
        int nth;
        const char* reported;
    };
    const Case cases[] = {
        {"rock_band.musicxml", "<instrument id=\"P3-I39\" />", "<instrument id=\"P3-I99\" />", 1,
         "part P3 measure 1 (#1): <instrument id=\"P3-I99\"> names no score-instrument"},
        {"rock_band.musicxml", "<instrument id=\"P3-I43\" />", "", 1, "a note without <instrument>"},
        {"rock_band.musicxml", "<part id=\"P2\">", "<part id=\"P9\">", 1, "<part id=\"P9\"> is not in the <part-list>"},
        {"rock_band.musicxml", "<part id=\"P2\">", "<part id=\"P9\">", 1, "<score-part id=\"P2\"> has no <part>"},
        {"rock_band.musicxml", "<score-instrument id=\"P2-I1\">", "<score-instrument id=\"P1-I1\">", 1,
         "score-instrument id P1-I1 used twice"},
        {"rock_band.musicxml", "<midi-instrument id=\"P3-I37\">", "<midi-instrument id=\"P3-X\">", 1,
         "<midi-instrument id=\"P3-X\"> names no score-instrument"},
        {"rock_band.musicxml", "</backup>", "</backup><forward><duration>6</duration></forward>", 1,
         "part P3 measure 1 (#1): holds 5 quarters"},
        {"rock_band.musicxml", "<measure width=\"150\" number=\"16\">", "<measure width=\"150\" number=\"17\">", 2,
         "part P2 does not have the first part's measures"},
        {"lead_sheet.musicxml", "<duration>8</duration>", "<duration>10</duration>", 1,
         "part P1 measure 1 (#1): holds 5 quarters, its time signature 4"},
        {"compound_meters.musicxml", "<type>eighth</type>", "<type>quarter</type>", 1,
         "part P1 measure 1 (#1): a quarter lasting 0.5 quarters"},
        {"strings_repeats.musicxml", "<actual-notes>3</actual-notes>", "<actual-notes>2</actual-notes>", 1,
         "part P1 measure 2 (#2): a eighth lasting 0.333333 quarters"},
        {"piano_pickup.musicxml", "<chord/>", "", 1, "part P1 measure 1 (#2): holds 6 quarters"},
        {"piano_pickup.musicxml", "implicit=\"yes\"", "width=\"90\"", 1,
         "part P1 measure 0 (#1): holds 1 quarters, its time signature 4"},
        {"piano_pickup.musicxml", "<divisions>8</divisions>", "<divisions>4</divisions>", 1,
         "part P1 measure 9 (#10): holds 8 quarters"},
    };
    for (const Case& c : cases) {
        std::string planted = ReplaceNth(Corpus(c.file), c.from, c.to, c.nth);
        EXPECT_THAT(Joined(ScoreProblems(planted)), HasSubstr(c.reported)) << c.file << ": " << c.from;
    }
    EXPECT_THAT(ScoreProblems("<score-partwise><part-list>"), ::testing::ElementsAre(HasSubstr("not well-formed")));
}

TEST(ByteRegions, FindTheFirstChangeOutsideWhatMayChange)
{
    const std::string rock = Corpus("rock_band.musicxml");
    const std::string piano = Corpus("piano_pickup.musicxml");
    const std::string strings = Corpus("strings_repeats.musicxml");
    const std::string march = Corpus("march_utf16.musicxml");
    const std::string newPart = "    <part id=\"P4\">\n        <measure number=\"1\"/>\n    </part>\n";
    const AllowedChanges drumsFiveToTwelve{{{"P3", {"5", "6", "7", "8", "9", "10", "11", "12"}}}, {}};
    struct Case {
        const char* what;
        std::string input;
        std::string output;
        AllowedChanges allowed;
        const char* reported;   // "" when nothing may be reported
    };
    const Case cases[] = {
        {"the same bytes", rock, rock, {}, ""},
        {"a changed measure that may change", rock,
         ReplaceNth(rock, "<measure width=\"150\" number=\"5\">\n", "<measure width=\"150\" number=\"5\">\n<note/>", 3),
         drumsFiveToTwelve, ""},
        {"the target's own score-part", rock, ReplaceNth(rock, "<part-name>Drum Set", "<part-name>Drums"),
         drumsFiveToTwelve, ""},
        {"a measure of the target outside the region", rock,
         ReplaceNth(rock, "<measure width=\"150\" number=\"4\">\n", "<measure width=\"150\" number=\"4\">\n ", 3),
         drumsFiveToTwelve, "changed at part P3 measure 4 (#4)"},
        {"the same measure of another part", rock,
         ReplaceNth(rock, "<measure width=\"150\" number=\"5\">\n", "<measure width=\"150\" number=\"5\">\n ", 1),
         drumsFiveToTwelve, "changed at part P1 measure 5 (#5)"},
        {"another part's score-part", rock, ReplaceNth(rock, "<midi-program>34<", "<midi-program>35<"),
         drumsFiveToTwelve, "changed at score-part P2"},
        {"the document type", rock, ReplaceNth(rock, "4.0 Partwise", "3.1 Partwise"), drumsFiveToTwelve,
         "changed at outside every part, byte 99"},
        {"the final newline", rock, rock.substr(0, rock.size() - 1), drumsFiveToTwelve, "outside every part"},
        {"line ends", piano, ReplaceNth(piano, "\r\n", "\n"), {}, "outside every part, byte 54"},
        {"a new part allowed",
         rock,
         ReplaceNth(rock, "</score-partwise>", newPart + "</score-partwise>"),
         {{}, {"P4"}},
         ""},
        {"a new part not allowed",
         rock,
         ReplaceNth(rock, "</score-partwise>", newPart + "</score-partwise>"),
         {},
         "changed at outside every part"},
        {"both measures numbered 8",
         strings,
         ReplaceNth(ReplaceNth(strings, "<measure number='8'>", "<measure number='8' >", 3), "<measure number='8'>",
                    "<measure number='8' >", 3),
         {{{"P2", {"8"}}}, {}},
         ""},
        {"a measure after two numbered 8",
         strings,
         ReplaceNth(strings, "<measure number='9'>", "<measure number='9' >", 2),
         {{{"P2", {"8"}}}, {}},
         "changed at part P2 measure 9 (#10)"},
        {"UTF-16, inside the region",
         march,
         ReplaceNth(march, Wide("<display-octave>4"), Wide("<display-octave>5"), 16),
         {{{"P2", {"5"}}}, {}},
         ""},
        {"UTF-16, another part",
         march,
         ReplaceNth(march, Wide("<step>E</step>"), Wide("<step>F</step>")),
         {{{"P2", {"5"}}}, {}},
         "changed at part P1 measure 1 (#1)"},
    };
    for (const Case& c : cases) {
        std::string change = FirstUnexpectedChange(c.input, c.output, c.allowed);
        if (*c.reported == '\0') {
            EXPECT_EQ(change, "") << c.what;
        } else {
            EXPECT_THAT(change, HasSubstr(c.reported)) << c.what;
        }
    }
}

TEST(ByteRegions, ScanFindsEveryMeasureOfEveryPartAndRefusesBadNesting)
{
    int measures = 0;
    for (const ElementRange& range : ScanElements(Corpus("march_utf16.musicxml"))) measures += range.name == "measure";
    EXPECT_EQ(measures, 32);
    EXPECT_THROW(ScanElements(Corpus("broken/not_well_formed.musicxml")), std::runtime_error);
}
