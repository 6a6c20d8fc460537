// What the writer needs to know about the file it splices into: its bytes, its encoding and
// container, and the byte range (in the UTF-8 text) of every element it may replace.
#pragma once

#include "stavio/musicxml/score_file.h"
#include "stavio/musicxml/xml_text.h"

#include <map>
#include <set>

namespace stavio::musicxml {

struct ByteRange {
    size_t begin = 0;   // the '<' of the element
    size_t end = 0;     // just past its end
};

struct MeasureIndex {
    ByteRange range;
    size_t contentBegin = 0;    // just past the start tag
    size_t contentEnd = 0;      // the '<' of </measure> (== contentBegin for <measure/>)
    size_t leadingEnd = 0;      // where the measure's music starts: past its leading print,
                                // attributes and barline elements (insertions go here)
    int divisionsAtStart = 1;   // the part's <divisions> in force where the measure starts
    int divisionsAtEnd = 1;
    int32_t length = 0;              // EDU the measure's music lasts (a pickup is shorter than its meter)
    std::vector<int> clefsWritten;   // staves (1..) that have a <clef> in this measure
};

struct PartIndex {
    std::string id;
    ByteRange range;
    ByteRange scorePart;   // its <score-part> in the part list
    std::vector<MeasureIndex> measures;
    std::map<int, int> instrumentKeys;        // score-instrument id index -> MIDI key (0..127)
    std::vector<std::string> instrumentIds;   // in file order
    std::map<std::string, int> keyOfInstrument;
};

struct ScoreFile::Impl {
    // The score is held once: `original` keeps the file's bytes only where they are not `text`
    // itself (a .mxl archive, a UTF-16 file).
    std::string original;
    std::string text;   // the score as UTF-8 text
    const std::string& OriginalBytes() const { return original.empty() ? text : original; }
    size_t textOffset = 0;   // bytes of a UTF-8 byte-order mark at the start of `text`
    TextEncoding encoding = TextEncoding::Utf8;
    std::string rootPath;   // the score's entry in a .mxl archive
    ByteRange partList;
    std::vector<PartIndex> parts;
    std::set<std::string> ids;   // every id attribute value of the score
    std::string indentUnit = "  ";
    std::string lineEnd = "\n";
    bool nested = false;        // the file puts a note's children on lines of their own
    bool spacedEmpty = false;   // the file writes empty elements as <chord /> rather than <chord/>
};

}   // namespace stavio::musicxml
