// Record tags by name. A tag is four characters, the first in the most significant byte.
#pragma once

#include "sdk/types.h"

constexpr EXTAG MakeTag(char a, char b, char c, char d)
{
    return (static_cast<EXTAG>(static_cast<unsigned char>(a)) << 24) |
           (static_cast<EXTAG>(static_cast<unsigned char>(b)) << 16) |
           (static_cast<EXTAG>(static_cast<unsigned char>(c)) << 8) | static_cast<EXTAG>(static_cast<unsigned char>(d));
}

// Score structure
constexpr EXTAG kTagMeasureSpec = 0x534F4D53;           // 'SOMS' EDTMeasureSpec / EDTMeasureSpec2005
constexpr EXTAG kTagStaffSpec = 0x534F4953;             // 'SOIS' EDTStaffSpec2003
constexpr EXTAG kTagInstrumentUsed = 0x534F4975;        // 'SOIu' EDTInstrumentUsed (system, slot)
constexpr EXTAG kTagTextBlock = 0x534F5458;             // 'SOTX' EDTTextBlock2004
constexpr EXTAG kTagTextBody = 0x7478626C;              // 'txbl' raw text of a text block
constexpr EXTAG kTagGfhold = 0x53444746;                // 'SDGF' EDTGfhold2004 (detail: inst, meas)
constexpr EXTAG kTagStaffSystemSpec = 0x534F5353;       // 'SOSS' (version-corrected only)
constexpr EXTAG kTagStaffSystemSpecAlt = 0x4F025353;    // (version-corrected only)
constexpr EXTAG kTagShapeExpression = 0x6F74444F;       // 'otDO' (version-corrected only)
constexpr EXTAG kTagStaffSystemDef = 0x534F5344;        // 'SOSD'
constexpr EXTAG kTagStaffSystemDefOther = 0x6F745344;   // 'otSD'
constexpr EXTAG kTagZeroFilled48 = 0x4F044958;          // loads that pre-zero 48 bytes
constexpr EXTAG kTagZeroFilled108 = 0x4F096649;         // loads that pre-zero 108 bytes

// Drum staff preparation
constexpr EXTAG kTagClefDef = 0x67626366;             // 'gbcf' EDTClefDef (global list)
constexpr EXTAG kTagDrumStaff = 0x4F024453;           // EDTDrumStaff (inst, 0)
constexpr EXTAG kTagInstrumentUsage = 0x4F02504C;     // EDTInstrumentUsage (inst, 0)
constexpr EXTAG kTagChannelDef = 0x6F744F43;          // 'otOC' channel definition (1..99)
constexpr EXTAG kTagChannelDefName = 0x6F746F63;      // 'otoc' channel definition name
constexpr EXTAG kTagPercussionMapName = 0x6F74444C;   // 'otDL' percussion map name

// Staff styles
constexpr EXTAG kTagStaffStyle = 0x4F0B5359;         // EDTStaffStyle2003
constexpr EXTAG kTagStaffStyleAssign = 0x4F025379;   // EDTStaffStyleAssign (inst, incidences)

// Text expressions
constexpr EXTAG kTagTextExpression = 0x534F4454;     // 'SODT' text expression definition
constexpr EXTAG kTagExpressionAssign = 0x6F744459;   // 'otDY' staff expression assignment (meas, incidences)
constexpr EXTAG kTagDefaultFontPref = 0x70666466;    // 'pfdf' default font preferences (number 6 = text expressions)

// Tuplets
constexpr EXTAG kTagTuplet = 0x6F745470;   // 'otTp' EDTTuplet2005 definitions

// Preference records ('pf..') and the 12-byte "other" records ('ot..') that carry them.
constexpr EXTAG kTagPrefPrefix = 0x70660000;    // 'pf' in the upper two characters
constexpr EXTAG kTagOtherPrefix = 0x6F740000;   // 'ot' in the upper two characters
