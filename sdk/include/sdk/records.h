// Host data record layouts. Field names are the host's. Sizes are the documented layout sizes;
// the size argument of a record call is that number, also for records that hold a pointer.
#pragma once

#include "sdk/types.h"

#pragma pack(push, 2)

// 'SOMS', key (measure, 0). 24 bytes: layout of versions 0x09xxxxxx.
struct EDTMeasureSpec {
    int16_t measpace;
    int16_t key;
    int16_t beats;     // number of beats
    int16_t divbeat;   // length of one beat in EDU
    uint16_t auxflag;
    uint16_t meflag;   // 0x4000: the measure carries expressions
    int16_t dispBeats;
    int16_t dispDivbeat;
    uint16_t newflag;
    int16_t custombarshape;
    int16_t customleftbarshape;
    int16_t frontSpaceExtra;
};
static_assert(sizeof(EDTMeasureSpec) == 24, "EDTMeasureSpec is 24 bytes");

// 'SOMS', 26 bytes: layout of versions 0x0A000000 and later.
struct EDTMeasureSpec2005 {
    int16_t measpace;
    int16_t key;
    int16_t beats;
    int16_t divbeat;
    uint16_t auxflag;
    uint16_t meflag;
    int16_t dispBeats;
    int16_t dispDivbeat;
    uint16_t newflag;
    int16_t custombarshape;
    int16_t customleftbarshape;
    int16_t frontSpaceExtra;
    int16_t backSpaceExtra;
};
static_assert(sizeof(EDTMeasureSpec2005) == 26, "EDTMeasureSpec2005 is 26 bytes");

constexpr uint16_t kMeasureAuxRefused = 0x0080;   // the plug-in may not write into this measure
constexpr uint16_t kMeasureMeflagHasExpressions = 0x4000;

// 'SOIS', key (instrument, 0), 102 bytes (layout of versions 0x08000000 and later).
struct EDTStaffSpec2003 {
    int16_t botBarlineOffset;
    uint16_t capoLowFret;
    uint16_t altFlag;
    uint16_t mfont;
    int16_t sizeefx;
    uint16_t flag;
    int16_t clefs;
    uint16_t topLines;
    uint16_t botLines;
    int16_t topBarlineOffset;
    int16_t transposition;
    uint16_t instflag;
    int16_t dw_wRest;
    int16_t h_otherRest;
    int16_t stemReversal;
    int16_t fullName;    // word 15: text block of the full name (0 = none)
    int16_t abbrvName;   // word 16: text block of the abbreviated name (0 = none)
    int16_t repeatDotsOff;
    int32_t lineSpace;
    int32_t vertTabNumOff;
    uint16_t moreFlags;
    uint16_t fretInstID;
    int32_t horzStemOffUp;
    int32_t horzStemOffDown;
    int32_t vertStemStartOffUp;
    int32_t vertStemStartOffDown;
    int32_t vertStemEndOffUp;
    int32_t vertStemEndOffDown;
    int16_t reserved[9];
    int16_t range[6];   // the staff's written range, carried as the host gives it
};
static_assert(sizeof(EDTStaffSpec2003) == 102, "EDTStaffSpec2003 is 102 bytes");
static_assert(offsetof(EDTStaffSpec2003, fullName) == 30, "full name is word 15");
static_assert(offsetof(EDTStaffSpec2003, abbrvName) == 32, "abbreviated name is word 16");

// 'SOIu', key (system, slot), 24 bytes: one staff of an instrument list.
struct EDTInstrumentUsed {
    int16_t inst;
    int16_t AAAA;
    int16_t BBBB;
    int16_t CCCC;
    int32_t separ;   // vertical position of the staff, negative downward
    int16_t measstart_meas;
    int32_t measstart_edu;
    int16_t measend_meas;
    int32_t measend_edu;
};
static_assert(sizeof(EDTInstrumentUsed) == 24, "EDTInstrumentUsed is 24 bytes");

// 'SOTX', key (block, 0), 26 bytes (layout of versions 0x09000000 and later).
struct EDTTextBlock2004 {
    int16_t textID;   // word 0: number of the 'txbl' text
    int16_t lineSpacingPercent;
    int16_t showShape;
    int16_t shapeID;
    int16_t noExpandSingleWord;
    int16_t wordWrap;
    int16_t justify;
    int32_t width;
    int32_t height;
    int16_t reserved[2];
};
static_assert(sizeof(EDTTextBlock2004) == 26, "EDTTextBlock2004 is 26 bytes");

// 'SDGF', detail (instrument, measure), documented size 10: a staff-measure's clef and the
// frame number of each layer (0 = the layer holds nothing). The caller allocates `frame` with
// one 16-bit slot per layer (SX_GetMaxLayers) before a load.
struct EDTGfhold2004 {
    int16_t clef;
    uint16_t flag;
    int16_t clefPercent;
    int16_t* frame;
};
constexpr int32_t kGfhold2004Size = 10;

// 'gbcf', global list indexed by clef number, 18 bytes. Clef 12 is the percussion clef.
struct EDTClefDef {
    int16_t adjust;
    int16_t clefchar;
    int16_t clefydisp;
    int16_t baseAdjust;
    int16_t shapeID;
    int16_t font;
    int16_t size;
    uint16_t efx;
    uint16_t flag;   // 0x0002: `font` is used
};
static_assert(sizeof(EDTClefDef) == 18, "EDTClefDef is 18 bytes");
constexpr int16_t kPercussionClef = 12;

// Drum staff record, key (instrument, 0), 24 bytes.
struct EDTDrumStaff {
    uint16_t percMap;
    uint16_t playMap[8];
    int16_t AAAA;
    int16_t BBBB;
    int16_t CCCC;
};
static_assert(sizeof(EDTDrumStaff) == 24, "EDTDrumStaff is 24 bytes");

// The staff's playback assignment, key (instrument, 0), 24 bytes, version 0x0A010000.
// `a` is the number of the staff's channel definition minus one.
struct EDTInstrumentUsage {
    int16_t a, b, c, d, e, f;
    uint16_t flag;
    int16_t aa, bb, cc, dd, ee;
};
static_assert(sizeof(EDTInstrumentUsage) == 24, "EDTInstrumentUsage is 24 bytes");
constexpr EVERSION kInstrumentUsageVersion = 0x0A010000;

// A 12-byte "other" record of six words (channel definitions and names, preference pieces,
// expression assignments ...).
struct EDTGeneric {
    int16_t words[6];
};
static_assert(sizeof(EDTGeneric) == 12, "EDTGeneric is 12 bytes");

struct EXMEASPOINT {
    int16_t meas;
    int32_t edu;   // kEndOfMeasure = to the end of the measure
};
static_assert(sizeof(EXMEASPOINT) == 6, "EXMEASPOINT is 6 bytes");

struct EXMEASRANGE {
    EXMEASPOINT start;
    EXMEASPOINT end;
};
static_assert(sizeof(EXMEASRANGE) == 12, "EXMEASRANGE is 12 bytes");

// Staff style definition, key (style, 0), 132 bytes.
struct EDTStaffStyle2003 {
    int16_t botBarlineOffset;
    uint16_t capoLowFret;
    uint16_t altFlag;
    uint16_t mfont;
    int16_t sizeefx;
    uint16_t flag;
    int16_t clefs;
    uint16_t topLines;
    uint16_t botLines;
    int16_t topBarlineOffset;
    int16_t transposition;
    uint16_t instflag;
    int16_t dw_wRest;
    int16_t h_otherRest;
    int16_t stemReversal;
    int16_t fullName;
    int16_t abbrvName;
    int16_t repeatDotsOff;
    int32_t lineSpace;
    int32_t vertTabNumOff;
    uint16_t moreFlags;
    uint16_t fretInstID;
    int32_t horzStemOffUp;
    int32_t horzStemOffDown;
    int32_t vertStemStartOffUp;
    int32_t vertStemStartOffDown;
    int32_t vertStemEndOffUp;
    int32_t vertStemEndOffDown;
    uint16_t mask1;
    uint16_t mask2;
    uint16_t mask3;
    int16_t BBBB;
    int16_t CCCC;
    uint16_t sfflag;
    char styleName[48];
};
static_assert(sizeof(EDTStaffStyle2003) == 132, "EDTStaffStyle2003 is 132 bytes");

// A staff style put on a staff over a range, key (instrument, incidence), 24 bytes.
struct EDTStaffStyleAssign {
    int16_t style;
    int16_t AAAA, BBBB, CCCC, DDDD, EEEE;
    EXMEASRANGE range;
};
static_assert(sizeof(EDTStaffStyleAssign) == 24, "EDTStaffStyleAssign is 24 bytes");

// 'pfdf' number 6: the default font of text expressions, 6 bytes.
struct EDTFontPref {
    uint8_t fontIDHigh;
    uint8_t fontIDLow;
    uint16_t sizeEfx;
    uint16_t efx;
};
static_assert(sizeof(EDTFontPref) == 6, "EDTFontPref is 6 bytes");

// Header of a text expression definition ('SODT'); the zero-terminated text follows it.
struct EDTTextExpressionHeader {
    int16_t font;
    int16_t sizeEfx;
    int16_t reserved[3];
    int16_t playbackType;   // low byte 17: human playback off, 16: on
};
static_assert(sizeof(EDTTextExpressionHeader) == 12, "EDTTextExpressionHeader is 12 bytes");

// Tuplet definition, 24 bytes: `symbolicNum` notes of `symbolicDur` in the time of `refNum` of
// `refDur` (a triplet of eighths: 3 x 512 in the time of 2 x 512).
struct EDTTuplet2005 {
    int16_t symbolicNum;
    int32_t symbolicDur;
    int16_t refNum;
    int32_t refDur;
    uint16_t flag;
    int16_t reserved[5];
};
static_assert(sizeof(EDTTuplet2005) == 24, "EDTTuplet2005 is 24 bytes");

#pragma pack(pop)
