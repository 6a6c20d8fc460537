// Entry frames: the notes and rests of one staff, measure and layer, allocated by the host
// between SX_LoadQVF and SX_FreeQVF.
#pragma once

#include "sdk/records.h"

#pragma pack(push, 2)

struct EXNOTE {
    int16_t tcd;          // diatonic steps from middle C (0 = C4)
    int16_t alteration;   // semitones
    int16_t noteID;
    uint32_t flag;   // bits 16-20 mirror the low five bits of noteID; 0x80000000: a rest's note record
};
static_assert(sizeof(EXNOTE) == 10, "EXNOTE is 10 bytes");

constexpr int kMaxNotesPerEntry = 12;

struct EXENTRY {
    uint32_t entnum;
    int16_t dura;   // notated duration in EDU
    int16_t orgposi;
    uint32_t ef;   // entry flags
    uint16_t xef;
    int16_t numNotes;   // 0 = a rest
    EXNOTE note[kMaxNotesPerEntry];
    int32_t elldur;   // start position of the entry in the measure, EDU
    int32_t actdur;   // actual duration, EDU
    int16_t clef;
};
static_assert(sizeof(EXENTRY) == 146, "EXENTRY is 146 bytes");

constexpr uint32_t kEntryValid = 0x80000000;
constexpr uint32_t kEntryIsNote = 0x40000000;
constexpr uint32_t kEntryRestHasNoteRecord = 0x01000000;
constexpr uint32_t kEntryInTuplet = 0x00000800;   // the entry lies under a tuplet of the frame
constexpr uint32_t kNoteIsRestRecord = 0x80000000;

struct TupletInfo {
    int16_t stoff;   // index of the first entry under the tuplet
    int16_t enoff;   // index of the last entry under the tuplet
    int16_t logInci;
    int32_t tupPeriod;   // actual length the tuplet takes, EDU
    EDTTuplet2005 tpDef;
};

struct EXQVF2005a {
    int16_t iuList;
    int16_t staffSlot;
    int16_t inst;
    int16_t meas;
    int16_t layer;
    int16_t isMirror;
    int16_t frame;
    EXENTRY* pent;
    int16_t numEntries;
    TupletInfo* tpInfo;
    int16_t numTuplets;
};

#pragma pack(pop)
