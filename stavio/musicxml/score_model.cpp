#include "stavio/musicxml/score_model.h"

#include "sdk/tags.h"
#include "stavio/document/canonical.h"
#include "stavio/document/clefs.h"

#include <algorithm>
#include <cstring>

namespace stavio::musicxml {

namespace {

struct NoteValue {
    const char* name;
    int32_t edu;
};
constexpr NoteValue kNoteValues[] = {
    {"maxima", 32768}, {"long", 16384}, {"breve", 8192}, {"whole", 4096}, {"half", 2048}, {"quarter", 1024},
    {"eighth", 512},   {"16th", 256},   {"32nd", 128},   {"64th", 64},    {"128th", 32},  {"256th", 16},
};

RecordKey HoldKey(int32_t inst, int32_t meas)
{
    return RecordKey::Detail(static_cast<uint16_t>(inst), static_cast<uint16_t>(meas), 0);
}

}   // namespace

int16_t HostClefOf(const std::string& sign, int line, int octaveChange)
{
    if (sign == "percussion") {
        return kPercussionClef;
    }
    for (int16_t clef = 0; clef < kDefaultClefCount; ++clef) {
        const ClefMeaning* meaning = ClefMeaningOf(clef);
        if (meaning != nullptr && sign == meaning->sign && (line == 0 || line == meaning->line || meaning->line == 0) &&
            octaveChange == meaning->octaveChange) {
            return clef;
        }
    }
    return 0;
}

std::string ClefContent(int16_t clef)
{
    const ClefMeaning* meaning = ClefMeaningOf(clef);
    if (meaning == nullptr) {
        meaning = ClefMeaningOf(0);
    }
    std::string content = std::string("<sign>") + meaning->sign + "</sign>";
    if (meaning->line > 0) {
        content += "<line>" + std::to_string(meaning->line) + "</line>";
    }
    if (meaning->octaveChange != 0) {
        content += "<clef-octave-change>" + std::to_string(meaning->octaveChange) + "</clef-octave-change>";
    }
    return content;
}

int16_t MeasureClef(const Document& doc, int32_t inst, int32_t meas)
{
    const RecordStore::Bytes* hold = doc.Records().Find(kTagGfhold, HoldKey(inst, meas));
    int16_t clef = 0;
    if (hold != nullptr && hold->size() >= sizeof(clef)) {
        std::memcpy(&clef, hold->data(), sizeof(clef));
    }
    return clef;
}

void SetMeasureClef(Document& doc, int32_t inst, int32_t meas, int16_t clef)
{
    const RecordStore::Bytes* hold = doc.Records().Find(kTagGfhold, HoldKey(inst, meas));
    if (hold == nullptr || hold->size() < sizeof(clef)) {
        return;
    }
    RecordStore::Bytes bytes = *hold;
    std::memcpy(bytes.data(), &clef, sizeof(clef));
    doc.MutableRecords().Put(kTagGfhold, HoldKey(inst, meas), bytes);
}

int32_t TypeDuration(const std::string& type)
{
    for (const NoteValue& value : kNoteValues) {
        if (type == value.name) {
            return value.edu;
        }
    }
    return 0;
}

const char* TypeName(int32_t edu)
{
    for (const NoteValue& value : kNoteValues) {
        if (edu == value.edu) {
            return value.name;
        }
    }
    return nullptr;
}

int16_t StaffStepOf(char step, int octave)
{
    static const char kSteps[] = "CDEFGAB";
    const char* found = std::strchr(kSteps, step);
    const int index = found == nullptr || step == '\0' ? 0 : static_cast<int>(found - kSteps);
    constexpr int kLowestOctave = -10;   // far past any instrument, well inside the host's range
    constexpr int kHighestOctave = 20;
    return static_cast<int16_t>(index + 7 * (std::clamp(octave, kLowestOctave, kHighestOctave) - 4));
}

char StepLetter(int16_t tcd)
{
    static const char kSteps[] = "CDEFGAB";
    return kSteps[((tcd % 7) + 7) % 7];
}

int OctaveOf(int16_t tcd)
{
    return 4 + (tcd >= 0 ? tcd / 7 : -((6 - tcd) / 7));
}

}   // namespace stavio::musicxml
