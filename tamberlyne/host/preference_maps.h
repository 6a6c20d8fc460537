// Preference records ('pf..') that newer hosts no longer keep whole. Some are assembled field by
// field from 12-byte "other" records ('ot..', six 16-bit words each); some became arrays of
// consecutive 12-byte records under one other tag. stavio/docs/preference-records.md lists every
// field and where the host keeps it.
#pragma once

#include "sdk/types.h"

constexpr int32_t kOtherRecordSize = 12;        // an "other" record: six 16-bit words
constexpr uint16_t kPreferenceCmper = 0xfffe;   // the cmper under which preference pieces are kept

enum MAP_ARRAY_CONVERSION : int32_t {
    MC_NONE = 0,
    MC_MACFOURBYTE = 1,   // 32-bit field: high half in word offsetInInci, low half in the next word
    MC_WINFOURBYTE = 2,   // 32-bit field: low half first, so the two halves are exchanged
    MC_INVERTBOOL = 3,    // 16-bit flag kept inverted
    MC_SIGNEDBYTE = 4,    // 16-bit field kept in the low byte of its word
};

// One field of a preference record and the "other" record word that holds it. The maps are
// static and writable: loading and saving mark the rows they have handled in bProcessed.
struct PREFERENCE_LOCATION_MAPRECORD {
    int16_t bProcessed;
    char firstChar;    // third character of the "ot" tag
    char secondChar;   // fourth character of the "ot" tag
    uint16_t cmper;    // 0 means the preference number 0xfffe
    int16_t inci;
    int16_t structOffset;   // byte offset in the preference record
    int16_t offsetInInci;   // first 16-bit word of the field in the 12-byte record (0 to 5)
    int16_t bytesize;       // 2 or 4
    MAP_ARRAY_CONVERSION conversion;
};

// ---- The preference records with field maps ------------------------------------------------------

#pragma pack(push, 2)

// 'pfPL', 14 bytes.
struct EDTPlaybackPrefs {
    int16_t baseKeyVelocity;
    int16_t tempo;
    int16_t playbackStartMode;
    int16_t swing;
    int16_t startMeasure;
    int16_t stopMeasure;
    int16_t playbackFlags;
};
static_assert(sizeof(EDTPlaybackPrefs) == 14, "EDTPlaybackPrefs is 14 bytes");

// 'pfPB', 44 bytes: the shape of the piano brace, in 1/65536 of a staff space.
struct EDTPianoBracePrefs {
    int32_t tipY;
    int32_t tipX;
    int32_t tipWidth;
    int32_t innerBodyY;
    int32_t innerBodyX;
    int32_t innerBodyWidth;
    int32_t outerBodyY;
    int32_t outerBodyX;
    int32_t outerBodyWidth;
    int32_t thickness;
    int32_t defaultWidth;
};
static_assert(sizeof(EDTPianoBracePrefs) == 44, "EDTPianoBracePrefs is 44 bytes");

// 'pfPF' number 0, 48 bytes: the score's page format. Lengths in EVPU (288 to the inch),
// margins as distances from the page edge.
struct EDTPageFormatPrefs {
    int32_t pageHeight;
    int32_t pageWidth;
    int16_t pagePercent;
    int16_t systemPercent;
    int16_t rawStaffHeight;
    int16_t leftPageTopMargin;
    int16_t leftPageLeftMargin;
    int16_t leftPageBottomMargin;
    int16_t leftPageRightMargin;
    int16_t facingPages;   // 1: right-hand pages have margins of their own
    int16_t rightPageTopMargin;
    int16_t rightPageLeftMargin;
    int16_t rightPageBottomMargin;
    int16_t rightPageRightMargin;
    int16_t systemTopMargin;
    int16_t systemLeftMargin;
    int16_t systemBottomMargin;
    int16_t systemRightMargin;
    int16_t systemDistance;   // space between systems
    int16_t firstSystemTopMargin;
    int16_t firstSystemLeftMargin;   // indent of the first system
    int16_t firstPageSystemCount;    // systems on the first page, 0 = as many as fit (0 to 255)
};
static_assert(sizeof(EDTPageFormatPrefs) == 48, "EDTPageFormatPrefs is 48 bytes");

#pragma pack(pop)

// ---- Lookups --------------------------------------------------------------------------------------

// The field map of a preference record: 'pfPL', 'pfPB', and 'pfPF' number 0. False for every
// other tag, among them the preferences this host does not keep in pieces.
bool mapPrefStruct(EXTAG tag, int16_t cmper, PREFERENCE_LOCATION_MAPRECORD** map, int16_t* rows);

// The array form of a preference record: `count` 12-byte records of `otherTag` from incidence
// `firstInci` under preference number 0xfffe. False (and otherTag 0) when there is none.
bool mapPrefTag(EXTAG tag, int16_t cmper, EXTAG* otherTag, int16_t* count, int16_t* firstInci);

struct PreferenceArrayMap {
    EXTAG otherTag = 0;
    int16_t count = 0;
    int16_t firstInci = 0;
};

// Assembles a preference record from its "other" records. `size` is in-out: the capacity in,
// the record's size (the sum of its fields) out; a null buffer asks only for the size and calls
// no host. A missing "other" record leaves its fields zero. 0 only for a null size.
int32_t fragmentStructLoad(char* buffer, int32_t* size, PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows);

// Writes a preference record back into its "other" records, saving only the records whose words
// changed. 0 for a null buffer or a size below twice the number of rows.
int32_t fragmentStructSave(const char* buffer, int32_t size, PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows);

// Exchanges the two 16-bit halves of a 32-bit value.
void swapFB(int32_t* value);
