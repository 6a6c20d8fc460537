// Host types of the plug-in interface: positions, regions, record keys, file specifications.
// Every record that crosses the interface is laid out with 2-byte packing, as the host's
// published layouts are; pointer-free records carry a static_assert of their documented size.
#pragma once

#include <cstddef>
#include <cstdint>

using EXTAG = uint32_t;      // four characters, first in the most significant byte
using TIME_EDU = int32_t;    // host duration unit: 1024 to the quarter note
using EVERSION = uint32_t;   // API version word passed with most calls
using EWND = void*;          // a host window (opaque to the plug-in)
using EDLG = void*;          // a host dialog (opaque to the plug-in)
using ECONTROL = void*;      // a control of a host dialog (opaque to the plug-in)

constexpr EVERSION kPluginApiVersion = 0x0C000000;   // what the plug-in passes from its own code
constexpr TIME_EDU kEduPerQuarter = 1024;
constexpr TIME_EDU kEndOfMeasure = 0x7FFFFFFF;   // duraPos/edu meaning "to the end of the measure"

#pragma pack(push, 2)

struct EMUSICPOINT {
    uint16_t IUlist;    // instrument-usage list
    uint16_t IUslot;    // staff slot in that list (1-based)
    uint16_t meas;      // measure number (1-based)
    TIME_EDU duraPos;   // position inside the measure
};
static_assert(sizeof(EMUSICPOINT) == 10, "EMUSICPOINT is 10 bytes");

struct EREGION {
    EMUSICPOINT start;
    EMUSICPOINT end;
};
static_assert(sizeof(EREGION) == 20, "EREGION is 20 bytes");

// Record keys. "Other" records are addressed by (cmper, inci); details by two comparison
// numbers and an incidence; global lists by a number in the first word.
struct EOtherID {
    uint16_t cmper;
    int16_t inci;
};
struct EDetailID {
    uint16_t cmper1;
    uint16_t cmper2;
    int16_t inci;
};
struct EEntryID {
    int32_t entnum;
};
struct EEntryDetailID {
    int32_t entnum;
    int16_t inci;
};
struct ETextID {
    uint16_t textnum;
};
union EDataID {
    EOtherID other;
    EDetailID detail;
    EEntryID entry;
    EEntryDetailID entryDetail;
    ETextID text;
    uint16_t words[3];
};
static_assert(sizeof(EDataID) == 6, "EDataID is 6 bytes");

// A file specification: the folder and the name inside it, both zero-terminated UTF-8.
struct EFSSPEC {
    char folder[1024];
    char name[256];
};
static_assert(sizeof(EFSSPEC) == 1280, "EFSSPEC is 1280 bytes");

// What the host's MIDI import is given: the region to fill and the Standard MIDI File to read.
struct SxpMidiData {
    EREGION ereg;
    EFSSPEC midiFile;
};
static_assert(sizeof(SxpMidiData) == 1300, "SxpMidiData is 1300 bytes");

#pragma pack(pop)
