// The checked-in MusicXML corpus (tests/musicxml/files) and what the tests do with each file, as
// its corpus.manifest says.
#pragma once

#include <string>
#include <vector>

namespace musicxml_support {

struct CorpusFile {
    std::string file;   // relative to the corpus folder
    std::string path;   // absolute
    bool valid = true;
    std::vector<std::string> channel10;   // part ids MuseScore plays on channel 10 as written
    std::string fillPart;                 // part id, or "new" for a new staff
    std::string fillFirst, fillLast;      // measure numbers
    std::string fillGroove;               // the groove to fill with
    std::string rootfile;                 // .mxl only
    std::string error;                    // broken only
    bool IsMxl() const { return file.size() > 4 && file.compare(file.size() - 4, 4, ".mxl") == 0; }
};

std::string CorpusFolder();
// Every file of the manifest, in its order. Fails the test on a line it cannot read.
std::vector<CorpusFile> Corpus();
// The score of a corpus file: the file's bytes, or a .mxl's root score.
std::string ScoreBytes(const CorpusFile& file);

}   // namespace musicxml_support
