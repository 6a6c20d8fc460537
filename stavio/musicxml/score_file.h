// MusicXML scores in the host: reading a `.musicxml`, `.xml` or `.mxl` file (or standard input)
// into a host document, and writing it back by splicing.
//
// The user's file is theirs: a `ScoreFile` keeps the file's original bytes and the byte range
// of every element the host may replace (each part, each measure of each part, each
// `<score-part>` of the part list). Writing compares the document as it was read with the
// document after an edit and rewrites only the staff-measures, part-list entries and
// attributes that differ; every other byte is copied from the input. No change gives the
// input's bytes back exactly; a `.mxl` keeps its other archive entries.
//
//   toolbox::Result<ScoreFile> score = ScoreFile::Read("song.musicxml");
//   if (!score) { std::cerr << score.Message() << "\n"; ... }
//   Document edited = score->document();           // run the plug-in on a copy
//   ...
//   toolbox::Result<std::string> bytes = score->Write(edited, Container::Same);
//   toolbox::Status written = bytes ? WriteFileAtomically("song.drums.musicxml", *bytes) : bytes.status();
//
// Every failure's message names the file and says what is wrong.
#pragma once

#include "stavio/document/document.h"
#include "toolbox/status.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stavio::musicxml {

// How the score is stored: plain XML text (`.musicxml`, `.xml`) or the compressed archive.
enum class Container {
    Plain,
    Compressed,
    Same,   // for writing: as the input was
};

// The container a file name asks for: Compressed for "*.mxl" (any case), else Plain.
Container ContainerForPath(const std::string& path);

// One staff of the host document, as it came from the file.
struct StaffInfo {
    int32_t inst = 0;      // host instrument number (== slot in list 0)
    size_t part = 0;       // index into ScoreFile::Parts()
    int staffInPart = 1;   // 1.. (<staff> number within the part)
    std::string name;      // the part's name (with " (n)" added for staff n > 1 of a part)
    bool drum = false;     // plays on channel 10 or is a percussion staff with unpitched notes
};

struct PartInfo {
    std::string id;             // the part's id attribute ("P1")
    std::string name;           // <part-name>
    std::string abbreviation;   // <part-abbreviation>
    int staves = 1;
    int32_t firstInst = 0;   // host instrument of its first staff
    int midiChannel = 0;     // 1..16, 0 when the file gives none
    int midiProgram = 0;     // 1..128, 0 when the file gives none
    bool drum = false;
};

struct MeasureInfo {
    std::string number;   // the score's own number attribute ("0", "12a", "X1")
    bool implicit = false;
    int beats = 4;   // the time signature in force
    int beatType = 4;
    int fifths = 0;   // the key signature in force
};

class ScoreFile {
public:
    // Reads a score. `path` "-" reads standard input. A failure when it cannot be read, is not
    // well-formed XML (line:column), is not a partwise MusicXML score, or is a `.mxl` without a
    // score.
    static toolbox::Result<ScoreFile> Read(const std::string& path);
    // The same from bytes already in memory; `name` is the file's name for messages.
    static toolbox::Result<ScoreFile> FromBytes(std::string bytes, const std::string& name);

    const std::string& Name() const { return name_; }
    Container Stored() const { return container_; }
    // The document as it was read: measures 1..n in file order, staves 1..m in part order.
    const Document& document() const { return document_; }
    const std::vector<PartInfo>& Parts() const { return parts_; }
    const std::vector<StaffInfo>& Staves() const { return staves_; }
    const std::vector<MeasureInfo>& Measures() const { return measures_; }

    // The host measures (1..n) whose score number is `number`: none, one, or several when the
    // score repeats a number.
    std::vector<int32_t> MeasuresNumbered(const std::string& number) const;

    // The whole file after the changes between document() and `edited`, spliced into the
    // original bytes, in `container` (Same: as read). A failure when a change cannot be written.
    toolbox::Result<std::string> Write(const Document& edited, Container container) const;

    struct Impl;   // the byte ranges and archive entries the writer needs (score_index.h)
    ScoreFile();
    ~ScoreFile();
    ScoreFile(ScoreFile&&) noexcept;
    ScoreFile& operator=(ScoreFile&&) noexcept;

private:
    std::string name_;
    Container container_ = Container::Plain;
    Document document_;
    std::vector<PartInfo> parts_;
    std::vector<StaffInfo> staves_;
    std::vector<MeasureInfo> measures_;
    std::unique_ptr<Impl> impl_;
};

// Writes `bytes` to `path` through a temporary file in the same folder that is renamed over
// it, so a failure never leaves a half-written file. "-" writes standard output.
toolbox::Status WriteFileAtomically(const std::string& path, const std::string& bytes);

}   // namespace stavio::musicxml
