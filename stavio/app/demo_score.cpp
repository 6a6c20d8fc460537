#include "stavio/app/demo_score.h"

#include "stavio/app/demo_document.h"

namespace stavio::app {

namespace {

void AppendPart(std::string& text, const char* id, const char* clef)
{
    text += "  <part id=\"";
    text += id;
    text += "\">\n";
    for (int meas = 1; meas <= kDemoMeasures; ++meas) {
        text += "    <measure number=\"" + std::to_string(meas) + "\">\n";
        if (meas == 1) {
            text += "      <attributes>\n"
                    "        <divisions>1</divisions>\n"
                    "        <key><fifths>0</fifths></key>\n"
                    "        <time><beats>4</beats><beat-type>4</beat-type></time>\n"
                    "        <clef>";
            text += clef;
            text += "</clef>\n"
                    "      </attributes>\n";
        }
        text += "      <note><rest measure=\"yes\"/><duration>4</duration><voice>1</voice></note>\n"
                "    </measure>\n";
    }
    text += "  </part>\n";
}

}   // namespace

std::string DemoScoreText()
{
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<score-partwise version=\"4.0\">\n"
        "  <work><work-title>Tamberlyne demo</work-title></work>\n"
        "  <part-list>\n"
        "    <score-part id=\"P1\">\n"
        "      <part-name>Piano</part-name>\n"
        "      <part-abbreviation>Pno.</part-abbreviation>\n"
        "      <score-instrument id=\"P1-I1\"><instrument-name>Piano</instrument-name></score-instrument>\n"
        "      <midi-instrument "
        "id=\"P1-I1\"><midi-channel>1</midi-channel><midi-program>1</midi-program></midi-instrument>\n"
        "    </score-part>\n"
        "    <score-part id=\"P2\">\n"
        "      <part-name>Drums</part-name>\n"
        "      <part-abbreviation>Dr.</part-abbreviation>\n"
        "    </score-part>\n"
        "  </part-list>\n";
    AppendPart(text, "P1", "<sign>G</sign><line>2</line>");
    AppendPart(text, "P2", "<sign>percussion</sign>");
    text += "</score-partwise>\n";
    return text;
}

}   // namespace stavio::app
