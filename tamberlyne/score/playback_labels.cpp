#include "tamberlyne/score/playback_labels.h"

#include "sdk/records.h"
#include "sdk/tags.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/score/measure_record.h"
#include "tamberlyne/score/text_expressions.h"

#include <algorithm>
#include <string>

namespace {

constexpr int kDefaultExpressionFontPref = 6;
constexpr char kFallbackFont[] = "Times New Roman";
constexpr uint16_t kFallbackFontBits = 0x1000;
constexpr uint16_t kFallbackFontMask = 0x10FF;
constexpr int kLookBackMeasures = 25;

// Low byte of an expression's playback type.
constexpr int kLabelHumanOn = 16;
constexpr int kLabelHumanOff = 17;

struct LabelsSeen {
    bool on = false;
    bool off = false;
};

// The label kind (16 on, 17 off) of an assignment on staff `inst`; 0 for anything else,
// including an assignment whose expression does not load.
int LabelKind(const EDTGeneric& assignment, int inst)
{
    int16_t type = 0;
    if (!AssignmentBelongsToStaff(assignment, inst) || !ExpressionPlaybackType(assignment.words[0], type)) {
        return 0;
    }
    const int kind = type & 0xFF;
    return (kind == kLabelHumanOn || kind == kLabelHumanOff) ? kind : 0;
}

LabelsSeen ScanLabels(int inst, int meas)
{
    LabelsSeen seen;
    EDTGeneric assignment;
    for (int inci = 0; LoadExpressionAssignment(meas, inci, assignment); ++inci) {
        const int kind = LabelKind(assignment, inst);
        seen.on = seen.on || kind == kLabelHumanOn;
        seen.off = seen.off || kind == kLabelHumanOff;
    }
    return seen;
}

void DefaultExpressionFont(int16_t& font, int16_t& size)
{
    EDTFontPref pref{};
    if (sx_loadglobal(kTagDefaultFontPref, kDefaultExpressionFontPref, &pref, sizeof(pref))) {
        font = static_cast<int16_t>((pref.fontIDHigh << 8) | pref.fontIDLow);
        size = static_cast<int16_t>(pref.sizeEfx);
        return;
    }
    const auto number = static_cast<uint16_t>(SX_FontNameToNum(kFallbackFont));
    font = static_cast<int16_t>((number | kFallbackFontBits) & kFallbackFontMask);
    size = 0;
}

}   // namespace

bool AddLabel(const char* text, int inst, int meas, int16_t type)
{
    int16_t font = 0;
    int16_t size = 0;
    DefaultExpressionFont(font, size);
    std::string cleaned(text);
    const int expression = CreateTextExpression(cleaned.data(), font, size, type);

    EDTMeasureSpec2005 spec;
    const bool specLoaded = LoadMeasureSpec(meas, spec);
    EDTGeneric assignment{};
    assignment.words[0] = static_cast<int16_t>(expression);
    assignment.words[2] = kAssignHorizontalOffset;
    assignment.words[5] = static_cast<int16_t>(inst | kAssignOnStaff);
    int cmper = meas;
    int inci = kAppendIncidence;
    sx_createother(kTagExpressionAssign, cmper, inci, &assignment, sizeof(assignment), kPluginApiVersion);
    // A measure that does not load is not written: saving would make one out of nothing.
    if (!specLoaded) {
        return false;
    }
    spec.meflag |= kMeasureMeflagHasExpressions;
    return SaveMeasureSpec(meas, spec);
}

bool TurnHumanPlaybackOff(int inst, int meas)
{
    const int oldest = std::max(1, meas - kLookBackMeasures);
    for (int before = meas - 1; before >= oldest; --before) {
        const LabelsSeen seen = ScanLabels(inst, before);
        if (seen.on) {
            break;
        }
        if (seen.off) {
            return false;
        }
    }
    // An "on" label where playback is to go off contradicts it and goes.
    EDTGeneric assignment;
    int inci = 0;
    while (LoadExpressionAssignment(meas, inci, assignment)) {
        const int kind = LabelKind(assignment, inst);
        if (kind == kLabelHumanOff) {
            return false;
        }
        if (kind == kLabelHumanOn && sx_deleteother(kTagExpressionAssign, meas, inci)) {
            continue;
        }
        ++inci;
    }
    AddLabel("<HP off>", inst, meas, kPlaybackTypeHumanOff);
    return true;
}

bool TurnHumanPlaybackOn(int inst, int meas)
{
    const LabelsSeen seen = ScanLabels(inst, meas);
    if (!seen.on && !seen.off) {
        AddLabel("<HP on>", inst, meas, kPlaybackTypeHumanOn);
    }
    return true;
}
