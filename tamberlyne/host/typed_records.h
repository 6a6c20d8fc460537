// Typed shortcuts over the record calls: each builds the key for one kind of record and answers
// true when the host's result, taken as 16 bits, is non-zero.
#pragma once

#include "sdk/records.h"

// Staves of an instrument list ('SOIu'), key (system, slot).
bool sx_loadIU(int16_t system, int16_t slot, EDTInstrumentUsed& record);
bool sx_saveIU(int16_t system, int16_t slot, EDTInstrumentUsed record);
bool sx_deleteIU(int16_t system, int16_t slot);

// A text expression definition ('SODT'), key (id, 0); `size` is in-out.
bool sx_loadtextexpression(int16_t id, char* buffer, int32_t& size, EVERSION version);

// A measure specification ('SOMS'), key (measure, 0), in the 24-byte layout.
bool sx_loadmeasurespec(int16_t meas, EDTMeasureSpec& record);
bool sx_savemeasurespec(int16_t meas, EDTMeasureSpec& record);

// Details, key (c1, c2, inci).
bool sx_loaddetail(EXTAG tag, int c1, int c2, void* buffer, int size, int inci, EVERSION version);
bool sx_savedetail(EXTAG tag, int c1, int c2, const void* buffer, int size, int inci, EVERSION version);

// Keys of a creation: as `cmper`, 0xFFFF asks the host for the next free number; as `inci`,
// -1 (0xFFFF in the key's 16 bits) appends after the last incidence.
constexpr int kNewRecordNumber = 0xFFFF;
constexpr int kAppendIncidence = -1;

// "Other" records, key (cmper, inci).
bool sx_loadother(EXTAG tag, int cmper, int inci, void* buffer, int size, EVERSION version);
bool sx_saveother(EXTAG tag, int cmper, int inci, const void* buffer, int size, EVERSION version);
// Creates a record. cmper 65535 asks the host for a new number (and incidence 0); the key the
// host chose is written back into `cmper` and `inci`.
bool sx_createother(EXTAG tag, int& cmper, int& inci, const void* buffer, int size, EVERSION version);
bool sx_deleteother(EXTAG tag, int cmper, int inci);

// Global lists, key = the number in the first word. A load zeroes `size` bytes first.
bool sx_loadglobal(EXTAG tag, int number, void* buffer, int size);
bool sx_saveglobal(EXTAG tag, int number, void* buffer, int size);
