// Feeds arbitrary bytes to the host's MusicXML reader: as plain text (UTF-8 or UTF-16) and, when
// they start like a zip archive, as a .mxl container. The sanitizers report any read outside a
// buffer or undefined arithmetic; the checks below catch a broken promise of the reader: a
// refusal always says why, what it reads it describes consistently, and opening and saving
// without a change gives the input's bytes back.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "stavio/musicxml/score_file.h"

namespace {
void Expect(bool condition)
{
    if (!condition) std::abort();
}
}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using stavio::musicxml::Container;
    using stavio::musicxml::ScoreFile;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    toolbox::Result<ScoreFile> score = ScoreFile::FromBytes(bytes, "fuzz.musicxml");
    if (!score) {
        Expect(score.Message().rfind("fuzz.musicxml: ", 0) == 0);
        return 0;
    }
    size_t staves = 0;
    for (const auto& part : score->Parts()) {
        Expect(part.staves >= 1);
        staves += static_cast<size_t>(part.staves);
    }
    Expect(staves == score->Staves().size());
    for (const auto& staff : score->Staves()) Expect(staff.part < score->Parts().size());
    for (size_t measure = 0; measure < score->Measures().size(); ++measure)
        Expect(!score->MeasuresNumbered(score->Measures()[measure].number).empty());
    const toolbox::Result<std::string> written = score->Write(score->document(), Container::Same);
    Expect(written && *written == bytes);
    return 0;
}
