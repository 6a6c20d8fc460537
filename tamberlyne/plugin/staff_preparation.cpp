#include "tamberlyne/plugin/staff_preparation.h"

#include "sdk/funcs.h"
#include "sdk/tags.h"
#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/plugin/plugin_globals.h"

#include <cstring>

namespace {

constexpr int32_t kAlertSetUpPercussionFont = 0x4E21000C;
constexpr char kPercussionFontFamily[] = "Dorvane";
constexpr size_t kFontFamilyLength = sizeof(kPercussionFontFamily) - 1;   // "Dorvane Percussion" passes too
constexpr char kDrumStaffFont[] = "Dorvane Percussion";

// The percussion clef as it is drawn with the percussion font.
constexpr int16_t kPercussionClefAdjust = -10;
constexpr int16_t kPercussionClefChar = 139;
constexpr int16_t kPercussionClefYDisp = -6;
constexpr int16_t kPercussionClefSize = 24;
constexpr uint16_t kClefUsesFont = 0x0002;

// Drum staff settings as the host defines them.
constexpr uint16_t kPercussionMap = 1;
constexpr uint16_t kNoPlayMap = 0xFFFF;
constexpr int16_t kDrumStaffSizeEfx = 0x1800;
constexpr uint16_t kDrumStaffFlags = 0x2020;
constexpr uint16_t kDrumStaffNewStaffInstFlag = 0x0400;
constexpr uint16_t kDrumStaffInstFlag = 0x0020;
constexpr int16_t kPercussionClefs = 0x0C0C;

// Channel definitions: code 9 is MIDI channel 10 counted from 0; the host marks its own drum
// channel with 0x8000 on top.
constexpr int16_t kDrumChannelCode = 9;
constexpr uint16_t kHostDrumChannelCode = 0x8009;
constexpr int kFirstChannelDef = 1;
constexpr int kLastChannelDef = 99;
constexpr char kChannelDefName[12] = "Tamberlyne";   // ten characters, then two zero bytes
constexpr uint16_t kChannelUsageFlag = 0x5055;

bool LoadOther(EXTAG tag, int cmper, EDTGeneric& record)
{
    record = EDTGeneric{};
    return sx_loadother(tag, cmper, 0, &record, sizeof(record), kPluginApiVersion);
}

bool LoadUsage(int inst, EDTInstrumentUsage& usage)
{
    usage = EDTInstrumentUsage{};
    return sx_loadother(kTagInstrumentUsage, inst, 0, &usage, sizeof(usage), kInstrumentUsageVersion);
}

// The channel definition the staff's playback assignment points at (a + 1).
bool LoadStaffChannelDef(int inst, EDTGeneric& channelDef)
{
    EDTInstrumentUsage usage;
    return LoadUsage(inst, usage) && LoadOther(kTagChannelDef, usage.a + 1, channelDef);
}

bool ClefUsesPercussionFont(const EDTClefDef& clef)
{
    const int16_t font = (clef.flag & kClefUsesFont) != 0 ? clef.font : 0;
    char name[256] = {};
    SX_FontNumToName(font, name, sizeof(name) - 1);
    return std::strncmp(name, kPercussionFontFamily, kFontFamilyLength) == 0;
}

// Offers to draw the percussion clef with the percussion font; a definition that does not load
// is set up from scratch on Yes.
void CheckPercussionClefFont()
{
    EDTClefDef clef{};
    const bool loaded = sx_loadglobal(kTagClefDef, kPercussionClef, &clef, sizeof(clef));
    if (loaded && ClefUsesPercussionFont(clef)) {
        return;
    }
    if (SX_AlertMessage(nullptr, kAlertQuestion, kAlertSetUpPercussionFont, nullptr) != kAlertAnswerYes) {
        return;
    }
    clef.adjust = kPercussionClefAdjust;
    clef.clefchar = kPercussionClefChar;
    clef.clefydisp = kPercussionClefYDisp;
    clef.baseAdjust = 0;
    clef.font = SX_FontNameToNum(kPercussionFontFamily);
    clef.size = kPercussionClefSize;
    clef.efx = 0;
    clef.flag |= kClefUsesFont;
    sx_saveglobal(kTagClefDef, kPercussionClef, &clef, sizeof(clef));
}

// The first channel definition of 1..99 on channel 10; 0 when there is none.
int FindDrumChannelDef()
{
    for (int cmper = kFirstChannelDef; cmper <= kLastChannelDef; ++cmper) {
        EDTGeneric channelDef;
        if (LoadOther(kTagChannelDef, cmper, channelDef) && channelDef.words[0] == kDrumChannelCode) {
            return cmper;
        }
    }
    return 0;
}

// A new channel definition on channel 10 named "Tamberlyne"; 0 when the host refuses it.
int CreateDrumChannelDef()
{
    EDTGeneric channelDef{};
    channelDef.words[0] = kDrumChannelCode;
    int cmper = kNewRecordNumber;
    int inci = 0;
    if (!sx_createother(kTagChannelDef, cmper, inci, &channelDef, sizeof(channelDef), kPluginApiVersion)) {
        return 0;
    }
    sx_saveother(kTagChannelDefName, cmper, 0, kChannelDefName, sizeof(kChannelDefName), kPluginApiVersion);
    return cmper;
}

}   // namespace

void PutClef(int inst, int16_t clef)
{
    FrameDetail detail;
    for (int meas = SelRegion.start.meas; meas <= SelRegion.end.meas; ++meas) {
        if (detail.Load(inst, meas)) {
            detail.record().clef = clef;
            detail.Save(inst, meas);
        }
    }
    if (clef == kPercussionClef) {
        CheckPercussionClefFont();
    }
}

void MakeDrumStyle(int inst)
{
    EDTDrumStaff drumStaff{};
    drumStaff.percMap = kPercussionMap;
    for (uint16_t& playMap : drumStaff.playMap) {
        playMap = kNoPlayMap;
    }
    sx_saveother(kTagDrumStaff, inst, 0, &drumStaff, sizeof(drumStaff), kPluginApiVersion);

    // A staff that does not load is not written: saving would make one out of nothing.
    EDTStaffSpec2003 spec{};
    if (sx_loadother(kTagStaffSpec, inst, 0, &spec, sizeof(spec), kPluginApiVersion)) {
        spec.mfont = static_cast<uint16_t>(SX_FontNameToNum(kDrumStaffFont));
        spec.sizeefx = kDrumStaffSizeEfx;
        spec.flag |= kDrumStaffFlags;
        if (dlgFlags != 0) {
            // A new staff is a drum staff from its first measure on.
            spec.instflag |= kDrumStaffNewStaffInstFlag;
            spec.clefs = kPercussionClefs;
        } else if (SelRegion.start.meas == 1) {
            spec.clefs = kPercussionClefs;
        }
        spec.instflag |= kDrumStaffInstFlag;
        sx_saveother(kTagStaffSpec, inst, 0, &spec, sizeof(spec), kPluginApiVersion);
    }
    PutClef(inst, kPercussionClef);
}

void MakeCH10(int inst)
{
    EDTGeneric current;
    if (LoadStaffChannelDef(inst, current) && current.words[0] == kDrumChannelCode) {
        return;
    }
    int channelDef = FindDrumChannelDef();
    if (channelDef == 0) {
        channelDef = CreateDrumChannelDef();
        if (channelDef == 0) {
            return;
        }
    }
    EDTInstrumentUsage usage{};
    const auto index = static_cast<int16_t>(channelDef - 1);
    usage.a = usage.b = usage.c = usage.d = usage.e = usage.f = index;
    usage.flag = kChannelUsageFlag;
    sx_saveother(kTagInstrumentUsage, inst, 0, &usage, sizeof(usage), kInstrumentUsageVersion);
}

bool IsDrumStaff(int inst)
{
    EDTGeneric channelDef;
    return LoadStaffChannelDef(inst, channelDef) && static_cast<uint16_t>(channelDef.words[0]) == kHostDrumChannelCode;
}

bool PercussionMapPresent()
{
    EDTGeneric name;
    return LoadOther(kTagPercussionMapName, 1, name);
}
