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

// 'pfDP', 72 bytes: distances between notation items, in EVPU (288 to the inch).
struct EDTDistancePrefs {
    int16_t spaceBeforeKey;
    int16_t spaceAfterKey;
    int16_t keyAccidentalSpace;   // between the accidentals of a key
    int16_t spaceAfterKeyCancel;
    int16_t spaceBeforeClef;
    int16_t spaceAfterClef;
    int16_t spaceBeforeTime;
    int16_t spaceAfterTime;
    int16_t timeVerticalOffset;
    int16_t spaceBeforeBarline;
    int16_t spaceAfterBarline;
    int16_t clefChangeOffset;
    int16_t accidentalToNote;
    int16_t accidentalToAccidental;
    int16_t accidentalVerticalOverlap;
    int16_t dotToNote;
    int16_t dotToDot;
    int16_t dotVerticalOffset;
    int16_t graceNoteSpacing;
    int16_t graceToMainNote;
    int16_t primaryBeamSeparation;
    int16_t secondaryBeamSeparation;
    int16_t beamMaxSlope;
    int16_t stemToFlag;
    int16_t articulationToNote;
    int16_t articulationToArticulation;
    int16_t tupletToNote;
    int16_t tupletNumberOffset;
    int16_t restToRest;   // between rests of different layers
    int16_t musicStartFromBarline;
    int16_t chordSymbolBaseline;
    int16_t expressionAboveStaff;
    int16_t expressionBelowStaff;
    int16_t groupBracketToStaff;
    int16_t pianoBraceToStaff;
    int16_t lyricBaseline;
};
static_assert(sizeof(EDTDistancePrefs) == 72, "EDTDistancePrefs is 72 bytes");

// 'pfEX', 52 bytes: how parts are extracted from the score.
struct EDTExtractPrefs {
    int16_t firstPageNumber;
    int16_t measuresPerSystem;   // 0: as many as fit (0 to 255)
    int16_t multimeasureRests;   // 1: runs of empty measures become one rest
    int16_t removeEmptyStaves;
    int16_t spaceSystemsEvenly;
    int16_t systemsPerPage;   // 0: as many as fit (0 to 255)
    int16_t partNameFont;
    int16_t partNameSize;
    int16_t partNameStyle;
    int16_t partNameX;
    int16_t partNameY;
    int16_t showPartName;   // kept as "hide the part name"
    int16_t pageNumberFont;
    int16_t pageNumberSize;
    int16_t pageNumberStyle;
    int16_t pageNumberX;
    int16_t pageNumberY;
    int16_t showPageNumbers;   // kept as "hide page numbers"
    int16_t pagePercent;
    int16_t systemPercent;
    int16_t multimeasureRestMinimum;   // fewest empty measures that make a rest
    int16_t multimeasureRestWidth;
    int32_t multimeasureRestNumberOffset;
    int16_t fileNumbering;   // how the parts' files are numbered
    int16_t openEachPart;    // kept as "do not open the parts"
};
static_assert(sizeof(EDTExtractPrefs) == 52, "EDTExtractPrefs is 52 bytes");

// 'pfMS', 102 bytes: miscellaneous document settings.
struct EDTMiscDocPrefs {
    int16_t curveResolution;
    int16_t showAllLayers;      // kept as "show the active layer only"
    int16_t consolidateRests;   // rests common to all layers shown once
    int16_t adjustDotsForVoices;
    int16_t itemsFollowStaffPosition;
    int16_t defaultUnits;   // unit of measurement in the low byte
    int16_t beamStyle;
    int16_t extendBeamsOverRests;
    int16_t flattenBeams;
    int16_t beamFourEighthsInCommon;
    int16_t beamSixteenthsInPairs;
    int16_t primaryBeamWithinSpace;
    int16_t doubleBarlineAtKeyChange;
    int16_t showKeyCancels;
    int16_t cancelOnlyToNoKey;
    int16_t courtesyKey;
    int16_t courtesyTime;
    int16_t courtesyClef;
    int16_t clefOnFirstSystemOnly;
    int16_t changeClefPercent;   // size of a mid-measure clef, % (0 to 255)
    int16_t defaultClef;         // clef number (0 to 255)
    int16_t abbreviateCommonTime;
    int16_t abbreviateCutTime;
    int16_t timeSignatureSize;
    int16_t keepAccidentalsInMeasure;
    int16_t accidentalsAfterTies;
    int16_t accidentalsAcrossOctaves;
    int32_t playbackTempoScale;   // 1/65536 of the written tempo, low half first
    int16_t autoUpdateLayout;     // kept as "update the layout by hand"
    int32_t scrollViewStart;
    int16_t showDefaultStaffNames;
    int16_t showDefaultGroupNames;
    int16_t abbreviateNamesAfterFirst;
    int16_t nameJustification;
    int16_t pickupMeasureCount;
    int16_t measureNumberInterval;
    int16_t measureNumberStart;
    int16_t measureNumberOffsetX;
    int16_t measureNumberOffsetY;
    int16_t showMeasureNumbers;   // kept as "hide measure numbers"
    int16_t layer1StemUp;         // layer offsets: stems of layer 1 up
    int16_t layer2StemDown;
    int16_t layer3StemUp;
    int16_t layer4StemDown;
    int16_t layerRestOffset;
    int16_t layerNoteOffset;
    int16_t keepMeasureWidths;
    int16_t respaceAfterEdits;
    int16_t spacingReferenceDuration;   // the note value that gets the reference width, in EDU
};
static_assert(sizeof(EDTMiscDocPrefs) == 102, "EDTMiscDocPrefs is 102 bytes");

// 'pfRP', 40 bytes: repeat barlines, endings and jumps.
struct EDTRepeatPrefs {
    int16_t endingBracketHeight;
    int16_t endingFrontHook;
    int16_t endingBackHook;
    int16_t endingLineWidth;
    int16_t endingTextX;
    int16_t endingTextY;
    int16_t dotSpace;   // repeat dots from the thin line
    int16_t dotVertical;
    int16_t thickLineWidth;
    int16_t thinLineWidth;
    int16_t lineSpace;
    int16_t backToBackStyle;
    int16_t wingStyle;   // 0 to 255
    int16_t endingsOnTopStaffOnly;
    int16_t jumpTextX;
    int16_t jumpTextY;
    int16_t maximumPasses;
    int16_t playRepeats;   // kept as "ignore repeats in playback"
    int16_t endingInsetStart;
    int16_t endingInsetEnd;
};
static_assert(sizeof(EDTRepeatPrefs) == 40, "EDTRepeatPrefs is 40 bytes");

// 'pfSI', 60 bytes: sizes and thicknesses; thicknesses in 1/65536 of an EVPU.
struct EDTSizePrefs {
    int16_t graceNotePercent;
    int16_t cueNotePercent;
    int16_t tabNotePercent;
    int16_t smallNotePercent;
    int16_t chordSymbolPercent;
    int16_t tupletNumberPercent;
    int32_t stemWidth;
    int32_t staffLineWidth;
    int32_t barlineWidth;
    int32_t ledgerLineWidth;
    int16_t ledgerLeftHalf;
    int16_t ledgerRightHalf;
    int16_t ledgerLeftRestHalf;
    int16_t ledgerRightRestHalf;
    int32_t beamWidth;
    int16_t brokenBeamLength;
    int16_t stemLength;
    int16_t shortStemLength;
    int16_t halfStemLength;
    int32_t enclosureWidth;
    int32_t graceSlashWidth;
    int16_t slashGraceNotes;   // kept as "grace notes without slash"
    int16_t graceSlashAngle;   // degrees (0 to 255)
};
static_assert(sizeof(EDTSizePrefs) == 60, "EDTSizePrefs is 60 bytes");

// 'pfSS', 100 bytes: slurs, ties, hairpins and lines.
struct EDTSmartShapePrefs {
    int16_t slurStartThicknessX;
    int16_t slurStartThicknessY;
    int16_t slurMiddleThicknessX;
    int16_t slurMiddleThicknessY;
    int16_t slurEndThicknessX;
    int16_t slurEndThicknessY;
    int16_t tieStartThicknessX;
    int16_t tieStartThicknessY;
    int16_t tieMiddleThicknessX;
    int16_t tieMiddleThicknessY;
    int16_t tieEndThicknessX;
    int16_t tieEndThicknessY;
    int16_t slurSpaceAround;
    int16_t slurAvoidAccidentals;   // kept as "slurs cross accidentals"
    int16_t slurInset;
    int32_t slurMaximumStretch;
    int16_t slurSystemBreakOffset;
    int32_t hairpinOpening;
    int32_t hairpinShortOpening;
    int32_t hairpinLineWidth;
    int32_t lineWidth;
    int16_t dashLength;
    int16_t dashSpace;
    int16_t hookLength;
    int16_t showOctaveNumbers;   // kept as "hide the ottava's number"
    int32_t glissandoLineWidth;
    int16_t trillCharacter;   // character code (0 to 255)
    int16_t trillFont;
    int16_t bendArrowStyle;
    int16_t articulationsAvoidSlurs;   // kept as "articulations under slurs"
    int16_t bendHeight;
    int16_t bendWidth;
    int16_t bendReleaseWidth;
    int32_t tabSlideWidth;
    int16_t tabSlideStyle;   // 0 to 255
    int16_t engraverSlurs;   // kept as "plain slurs"
    int16_t engraverSlurMaxAngle;
    int16_t engraverSlurSymmetry;
    int16_t engraverSlurMaxLift;
    int16_t engraverSlurMinHeight;
    int16_t engraverSlurAccidentalSpace;
    int16_t hairpinBreakInset;   // where a hairpin crosses a system break
    int16_t hairpinShortSpan;    // spans shorter than this open less
};
static_assert(sizeof(EDTSmartShapePrefs) == 100, "EDTSmartShapePrefs is 100 bytes");

#pragma pack(pop)

// ---- Lookups --------------------------------------------------------------------------------------

// The field map of a preference record: 'pfDP', 'pfEX', 'pfMS', 'pfPB', 'pfPL', 'pfRP', 'pfSI',
// 'pfSS', and 'pfPF' number 0. False for every other tag and number.
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
