#include "tamberlyne/host/preference_maps.h"

#include "sdk/records.h"
#include "sdk/tags.h"
#include "tamberlyne/host/gateway.h"

#include <cstring>

namespace {

constexpr int kWordsPerOtherRecord = 6;

// Rows: bProcessed, the tag's last two characters, cmper, inci, structOffset, offsetInInci,
// bytesize, conversion.
PREFERENCE_LOCATION_MAPRECORD EDTPlaybackPrefs_MAP_ARRAY[] = {
    {0, '1', '3', 0, 0, 0, 1, 2, MC_NONE},  {0, '3', '9', 0, 0, 2, 3, 2, MC_NONE},
    {0, '3', '6', 0, 0, 4, 0, 2, MC_NONE},  {0, '3', '6', 0, 0, 6, 5, 2, MC_NONE},
    {0, '3', '7', 0, 0, 8, 0, 2, MC_NONE},  {0, '3', '7', 0, 0, 10, 1, 2, MC_NONE},
    {0, '3', '7', 0, 0, 12, 2, 2, MC_NONE},
};

PREFERENCE_LOCATION_MAPRECORD EDTPianoBracePrefs_MAP_ARRAY[] = {
    {0, '6', '5', 0, 0, 0, 0, 4, MC_MACFOURBYTE},  {0, '6', '5', 0, 0, 4, 2, 4, MC_MACFOURBYTE},
    {0, '6', '5', 0, 0, 8, 4, 4, MC_MACFOURBYTE},  {0, '6', '0', 0, 0, 12, 0, 4, MC_MACFOURBYTE},
    {0, '6', '0', 0, 0, 16, 2, 4, MC_MACFOURBYTE}, {0, '6', '0', 0, 0, 20, 4, 4, MC_MACFOURBYTE},
    {0, '6', '1', 0, 0, 24, 0, 4, MC_MACFOURBYTE}, {0, '6', '1', 0, 0, 28, 2, 4, MC_MACFOURBYTE},
    {0, '6', '4', 0, 0, 32, 0, 4, MC_MACFOURBYTE}, {0, '6', '4', 0, 0, 36, 2, 4, MC_MACFOURBYTE},
    {0, '4', '5', 0, 0, 40, 0, 4, MC_MACFOURBYTE},
};

PREFERENCE_LOCATION_MAPRECORD EDTPageFormatPrefsScore_MAP_ARRAY[] = {
    {0, '7', '0', 0, 0, 0, 0, 4, MC_MACFOURBYTE},   // pageHeight
    {0, '7', '0', 0, 0, 4, 2, 4, MC_MACFOURBYTE},   // pageWidth
    {0, '7', '0', 0, 0, 8, 4, 2, MC_NONE},          // pagePercent
    {0, '7', '0', 0, 0, 10, 5, 2, MC_NONE},         // systemPercent
    {0, '7', '1', 0, 0, 12, 0, 2, MC_NONE},         // rawStaffHeight
    {0, '7', '1', 0, 0, 14, 1, 2, MC_NONE},         // leftPageTopMargin
    {0, '7', '1', 0, 0, 16, 2, 2, MC_NONE},         // leftPageLeftMargin
    {0, '7', '1', 0, 0, 18, 3, 2, MC_NONE},         // leftPageBottomMargin
    {0, '7', '1', 0, 0, 20, 4, 2, MC_NONE},         // leftPageRightMargin
    {0, '7', '1', 0, 0, 22, 5, 2, MC_INVERTBOOL},   // facingPages (kept as "same margins on all pages")
    {0, '7', '2', 0, 0, 24, 0, 2, MC_NONE},         // rightPageTopMargin
    {0, '7', '2', 0, 0, 26, 1, 2, MC_NONE},         // rightPageLeftMargin
    {0, '7', '2', 0, 0, 28, 2, 2, MC_NONE},         // rightPageBottomMargin
    {0, '7', '2', 0, 0, 30, 3, 2, MC_NONE},         // rightPageRightMargin
    {0, '7', '3', 0, 0, 32, 0, 2, MC_NONE},         // systemTopMargin
    {0, '7', '3', 0, 0, 34, 1, 2, MC_NONE},         // systemLeftMargin
    {0, '7', '3', 0, 0, 36, 2, 2, MC_NONE},         // systemBottomMargin
    {0, '7', '3', 0, 0, 38, 3, 2, MC_NONE},         // systemRightMargin
    {0, '7', '3', 0, 0, 40, 4, 2, MC_NONE},         // systemDistance
    {0, '7', '4', 0, 0, 42, 0, 2, MC_NONE},         // firstSystemTopMargin
    {0, '7', '4', 0, 0, 44, 1, 2, MC_NONE},         // firstSystemLeftMargin
    {0, '7', '4', 0, 0, 46, 2, 2, MC_SIGNEDBYTE},   // firstPageSystemCount (low byte of its word)
};

PREFERENCE_LOCATION_MAPRECORD EDTDistancePrefs_MAP_ARRAY[] = {
    {0, '0', '5', 0, 0, 0, 0, 2, MC_NONE},    // spaceBeforeKey
    {0, '0', '5', 0, 0, 2, 1, 2, MC_NONE},    // spaceAfterKey
    {0, '0', '5', 0, 0, 4, 2, 2, MC_NONE},    // keyAccidentalSpace
    {0, '0', '5', 0, 0, 6, 3, 2, MC_NONE},    // spaceAfterKeyCancel
    {0, '0', '5', 0, 0, 8, 4, 2, MC_NONE},    // spaceBeforeClef
    {0, '0', '5', 0, 0, 10, 5, 2, MC_NONE},   // spaceAfterClef
    {0, '0', '6', 0, 0, 12, 0, 2, MC_NONE},   // spaceBeforeTime
    {0, '0', '6', 0, 0, 14, 1, 2, MC_NONE},   // spaceAfterTime
    {0, '0', '6', 0, 0, 16, 2, 2, MC_NONE},   // timeVerticalOffset
    {0, '0', '6', 0, 0, 18, 3, 2, MC_NONE},   // spaceBeforeBarline
    {0, '0', '6', 0, 0, 20, 4, 2, MC_NONE},   // spaceAfterBarline
    {0, '0', '6', 0, 0, 22, 5, 2, MC_NONE},   // clefChangeOffset
    {0, '0', '7', 0, 0, 24, 0, 2, MC_NONE},   // accidentalToNote
    {0, '0', '7', 0, 0, 26, 1, 2, MC_NONE},   // accidentalToAccidental
    {0, '0', '7', 0, 0, 28, 2, 2, MC_NONE},   // accidentalVerticalOverlap
    {0, '0', '7', 0, 0, 30, 3, 2, MC_NONE},   // dotToNote
    {0, '0', '7', 0, 0, 32, 4, 2, MC_NONE},   // dotToDot
    {0, '0', '7', 0, 0, 34, 5, 2, MC_NONE},   // dotVerticalOffset
    {0, '0', '8', 0, 0, 36, 0, 2, MC_NONE},   // graceNoteSpacing
    {0, '0', '8', 0, 0, 38, 1, 2, MC_NONE},   // graceToMainNote
    {0, '0', '8', 0, 0, 40, 2, 2, MC_NONE},   // primaryBeamSeparation
    {0, '0', '8', 0, 0, 42, 3, 2, MC_NONE},   // secondaryBeamSeparation
    {0, '0', '8', 0, 0, 44, 4, 2, MC_NONE},   // beamMaxSlope
    {0, '0', '8', 0, 0, 46, 5, 2, MC_NONE},   // stemToFlag
    {0, '0', '9', 0, 0, 48, 0, 2, MC_NONE},   // articulationToNote
    {0, '0', '9', 0, 0, 50, 1, 2, MC_NONE},   // articulationToArticulation
    {0, '0', '9', 0, 0, 52, 2, 2, MC_NONE},   // tupletToNote
    {0, '0', '9', 0, 0, 54, 3, 2, MC_NONE},   // tupletNumberOffset
    {0, '0', '9', 0, 0, 56, 4, 2, MC_NONE},   // restToRest
    {0, '0', '9', 0, 0, 58, 5, 2, MC_NONE},   // musicStartFromBarline
    {0, '1', '0', 0, 0, 60, 0, 2, MC_NONE},   // chordSymbolBaseline
    {0, '1', '0', 0, 0, 62, 1, 2, MC_NONE},   // expressionAboveStaff
    {0, '1', '0', 0, 0, 64, 2, 2, MC_NONE},   // expressionBelowStaff
    {0, '1', '0', 0, 0, 66, 3, 2, MC_NONE},   // groupBracketToStaff
    {0, '1', '0', 0, 0, 68, 4, 2, MC_NONE},   // pianoBraceToStaff
    {0, '1', '0', 0, 0, 70, 5, 2, MC_NONE},   // lyricBaseline
};

PREFERENCE_LOCATION_MAPRECORD EDTExtractPrefs_MAP_ARRAY[] = {
    {0, '1', '4', 0, 0, 0, 0, 2, MC_NONE},           // firstPageNumber
    {0, '1', '4', 0, 0, 2, 1, 2, MC_SIGNEDBYTE},     // measuresPerSystem
    {0, '1', '4', 0, 0, 4, 2, 2, MC_NONE},           // multimeasureRests
    {0, '1', '4', 0, 0, 6, 3, 2, MC_NONE},           // removeEmptyStaves
    {0, '1', '4', 0, 0, 8, 4, 2, MC_NONE},           // spaceSystemsEvenly
    {0, '1', '4', 0, 0, 10, 5, 2, MC_SIGNEDBYTE},    // systemsPerPage
    {0, '1', '5', 0, 0, 12, 0, 2, MC_NONE},          // partNameFont
    {0, '1', '5', 0, 0, 14, 1, 2, MC_NONE},          // partNameSize
    {0, '1', '5', 0, 0, 16, 2, 2, MC_NONE},          // partNameStyle
    {0, '1', '5', 0, 0, 18, 3, 2, MC_NONE},          // partNameX
    {0, '1', '5', 0, 0, 20, 4, 2, MC_NONE},          // partNameY
    {0, '1', '5', 0, 0, 22, 5, 2, MC_INVERTBOOL},    // showPartName
    {0, '1', '6', 0, 0, 24, 0, 2, MC_NONE},          // pageNumberFont
    {0, '1', '6', 0, 0, 26, 1, 2, MC_NONE},          // pageNumberSize
    {0, '1', '6', 0, 0, 28, 2, 2, MC_NONE},          // pageNumberStyle
    {0, '1', '6', 0, 0, 30, 3, 2, MC_NONE},          // pageNumberX
    {0, '1', '6', 0, 0, 32, 4, 2, MC_NONE},          // pageNumberY
    {0, '1', '6', 0, 0, 34, 5, 2, MC_INVERTBOOL},    // showPageNumbers
    {0, '1', '7', 0, 0, 36, 0, 2, MC_NONE},          // pagePercent
    {0, '1', '7', 0, 0, 38, 1, 2, MC_NONE},          // systemPercent
    {0, '1', '7', 0, 0, 40, 2, 2, MC_NONE},          // multimeasureRestMinimum
    {0, '1', '7', 0, 0, 42, 3, 2, MC_NONE},          // multimeasureRestWidth
    {0, '1', '7', 0, 0, 44, 4, 4, MC_MACFOURBYTE},   // multimeasureRestNumberOffset
    {0, '1', '8', 0, 0, 48, 0, 2, MC_NONE},          // fileNumbering
    {0, '1', '8', 0, 0, 50, 1, 2, MC_INVERTBOOL},    // openEachPart
};

PREFERENCE_LOCATION_MAPRECORD EDTMiscDocPrefs_MAP_ARRAY[] = {
    {0, '2', '7', 0, 0, 0, 0, 2, MC_NONE},           // curveResolution
    {0, '2', '7', 0, 0, 2, 1, 2, MC_INVERTBOOL},     // showAllLayers
    {0, '2', '7', 0, 0, 4, 2, 2, MC_NONE},           // consolidateRests
    {0, '2', '7', 0, 0, 6, 3, 2, MC_NONE},           // adjustDotsForVoices
    {0, '2', '7', 0, 0, 8, 4, 2, MC_NONE},           // itemsFollowStaffPosition
    {0, '2', '7', 0, 0, 10, 5, 2, MC_SIGNEDBYTE},    // defaultUnits
    {0, '2', '8', 0, 0, 12, 0, 2, MC_NONE},          // beamStyle
    {0, '2', '8', 0, 0, 14, 1, 2, MC_NONE},          // extendBeamsOverRests
    {0, '2', '8', 0, 0, 16, 2, 2, MC_NONE},          // flattenBeams
    {0, '2', '8', 0, 0, 18, 3, 2, MC_NONE},          // beamFourEighthsInCommon
    {0, '2', '8', 0, 0, 20, 4, 2, MC_NONE},          // beamSixteenthsInPairs
    {0, '2', '8', 0, 0, 22, 5, 2, MC_NONE},          // primaryBeamWithinSpace
    {0, '2', '9', 0, 0, 24, 0, 2, MC_NONE},          // doubleBarlineAtKeyChange
    {0, '2', '9', 0, 0, 26, 1, 2, MC_NONE},          // showKeyCancels
    {0, '2', '9', 0, 0, 28, 2, 2, MC_NONE},          // cancelOnlyToNoKey
    {0, '2', '9', 0, 0, 30, 3, 2, MC_NONE},          // courtesyKey
    {0, '2', '9', 0, 0, 32, 4, 2, MC_NONE},          // courtesyTime
    {0, '2', '9', 0, 0, 34, 5, 2, MC_NONE},          // courtesyClef
    {0, '3', '0', 0, 0, 36, 0, 2, MC_NONE},          // clefOnFirstSystemOnly
    {0, '3', '0', 0, 0, 38, 1, 2, MC_SIGNEDBYTE},    // changeClefPercent
    {0, '3', '0', 0, 0, 40, 2, 2, MC_SIGNEDBYTE},    // defaultClef
    {0, '3', '0', 0, 0, 42, 3, 2, MC_NONE},          // abbreviateCommonTime
    {0, '3', '0', 0, 0, 44, 4, 2, MC_NONE},          // abbreviateCutTime
    {0, '3', '0', 0, 0, 46, 5, 2, MC_NONE},          // timeSignatureSize
    {0, '3', '1', 0, 0, 48, 0, 2, MC_NONE},          // keepAccidentalsInMeasure
    {0, '3', '1', 0, 0, 50, 1, 2, MC_NONE},          // accidentalsAfterTies
    {0, '3', '1', 0, 0, 52, 2, 2, MC_NONE},          // accidentalsAcrossOctaves
    {0, '3', '1', 0, 0, 54, 3, 4, MC_WINFOURBYTE},   // playbackTempoScale
    {0, '3', '1', 0, 0, 58, 5, 2, MC_INVERTBOOL},    // autoUpdateLayout
    {0, '3', '2', 0, 0, 60, 0, 4, MC_MACFOURBYTE},   // scrollViewStart
    {0, '3', '2', 0, 0, 64, 2, 2, MC_NONE},          // showDefaultStaffNames
    {0, '3', '2', 0, 0, 66, 3, 2, MC_NONE},          // showDefaultGroupNames
    {0, '3', '2', 0, 0, 68, 4, 2, MC_NONE},          // abbreviateNamesAfterFirst
    {0, '3', '2', 0, 0, 70, 5, 2, MC_NONE},          // nameJustification
    {0, '3', '3', 0, 0, 72, 0, 2, MC_NONE},          // pickupMeasureCount
    {0, '3', '3', 0, 0, 74, 1, 2, MC_NONE},          // measureNumberInterval
    {0, '3', '3', 0, 0, 76, 2, 2, MC_NONE},          // measureNumberStart
    {0, '3', '3', 0, 0, 78, 3, 2, MC_NONE},          // measureNumberOffsetX
    {0, '3', '3', 0, 0, 80, 4, 2, MC_NONE},          // measureNumberOffsetY
    {0, '3', '3', 0, 0, 82, 5, 2, MC_INVERTBOOL},    // showMeasureNumbers
    {0, '3', '3', 0, 1, 84, 0, 2, MC_NONE},          // layer1StemUp
    {0, '3', '3', 0, 1, 86, 1, 2, MC_NONE},          // layer2StemDown
    {0, '3', '3', 0, 1, 88, 2, 2, MC_NONE},          // layer3StemUp
    {0, '3', '3', 0, 1, 90, 3, 2, MC_NONE},          // layer4StemDown
    {0, '3', '3', 0, 1, 92, 4, 2, MC_NONE},          // layerRestOffset
    {0, '3', '3', 0, 1, 94, 5, 2, MC_NONE},          // layerNoteOffset
    {0, '3', '4', 0, 0, 96, 0, 2, MC_NONE},          // keepMeasureWidths
    {0, '3', '4', 0, 0, 98, 1, 2, MC_NONE},          // respaceAfterEdits
    {0, '3', '4', 0, 0, 100, 2, 2, MC_NONE},         // spacingReferenceDuration
};

PREFERENCE_LOCATION_MAPRECORD EDTRepeatPrefs_MAP_ARRAY[] = {
    {0, '4', '1', 0, 0, 0, 0, 2, MC_NONE},          // endingBracketHeight
    {0, '4', '1', 0, 0, 2, 1, 2, MC_NONE},          // endingFrontHook
    {0, '4', '1', 0, 0, 4, 2, 2, MC_NONE},          // endingBackHook
    {0, '4', '1', 0, 0, 6, 3, 2, MC_NONE},          // endingLineWidth
    {0, '4', '1', 0, 0, 8, 4, 2, MC_NONE},          // endingTextX
    {0, '4', '1', 0, 0, 10, 5, 2, MC_NONE},         // endingTextY
    {0, '4', '2', 0, 0, 12, 0, 2, MC_NONE},         // dotSpace
    {0, '4', '2', 0, 0, 14, 1, 2, MC_NONE},         // dotVertical
    {0, '4', '2', 0, 0, 16, 2, 2, MC_NONE},         // thickLineWidth
    {0, '4', '2', 0, 0, 18, 3, 2, MC_NONE},         // thinLineWidth
    {0, '4', '2', 0, 0, 20, 4, 2, MC_NONE},         // lineSpace
    {0, '4', '2', 0, 0, 22, 5, 2, MC_NONE},         // backToBackStyle
    {0, '4', '3', 0, 0, 24, 0, 2, MC_SIGNEDBYTE},   // wingStyle
    {0, '4', '3', 0, 0, 26, 1, 2, MC_NONE},         // endingsOnTopStaffOnly
    {0, '4', '3', 0, 0, 28, 2, 2, MC_NONE},         // jumpTextX
    {0, '4', '3', 0, 0, 30, 3, 2, MC_NONE},         // jumpTextY
    {0, '4', '3', 0, 0, 32, 4, 2, MC_NONE},         // maximumPasses
    {0, '4', '3', 0, 0, 34, 5, 2, MC_INVERTBOOL},   // playRepeats
    {0, '4', '4', 0, 0, 36, 0, 2, MC_NONE},         // endingInsetStart
    {0, '4', '4', 0, 0, 38, 1, 2, MC_NONE},         // endingInsetEnd
};

PREFERENCE_LOCATION_MAPRECORD EDTSizePrefs_MAP_ARRAY[] = {
    {0, '4', '7', 0, 0, 0, 0, 2, MC_NONE},           // graceNotePercent
    {0, '4', '7', 0, 0, 2, 1, 2, MC_NONE},           // cueNotePercent
    {0, '4', '7', 0, 0, 4, 2, 2, MC_NONE},           // tabNotePercent
    {0, '4', '7', 0, 0, 6, 3, 2, MC_NONE},           // smallNotePercent
    {0, '4', '7', 0, 0, 8, 4, 2, MC_NONE},           // chordSymbolPercent
    {0, '4', '7', 0, 0, 10, 5, 2, MC_NONE},          // tupletNumberPercent
    {0, '4', '8', 0, 0, 12, 0, 4, MC_MACFOURBYTE},   // stemWidth
    {0, '4', '8', 0, 0, 16, 2, 4, MC_MACFOURBYTE},   // staffLineWidth
    {0, '4', '8', 0, 0, 20, 4, 4, MC_MACFOURBYTE},   // barlineWidth
    {0, '4', '9', 0, 0, 24, 0, 4, MC_MACFOURBYTE},   // ledgerLineWidth
    {0, '4', '9', 0, 0, 28, 2, 2, MC_NONE},          // ledgerLeftHalf
    {0, '4', '9', 0, 0, 30, 3, 2, MC_NONE},          // ledgerRightHalf
    {0, '4', '9', 0, 0, 32, 4, 2, MC_NONE},          // ledgerLeftRestHalf
    {0, '4', '9', 0, 0, 34, 5, 2, MC_NONE},          // ledgerRightRestHalf
    {0, '5', '0', 0, 0, 36, 0, 4, MC_MACFOURBYTE},   // beamWidth
    {0, '5', '0', 0, 0, 40, 2, 2, MC_NONE},          // brokenBeamLength
    {0, '5', '0', 0, 0, 42, 3, 2, MC_NONE},          // stemLength
    {0, '5', '0', 0, 0, 44, 4, 2, MC_NONE},          // shortStemLength
    {0, '5', '0', 0, 0, 46, 5, 2, MC_NONE},          // halfStemLength
    {0, '5', '1', 0, 0, 48, 0, 4, MC_MACFOURBYTE},   // enclosureWidth
    {0, '5', '1', 0, 0, 52, 2, 4, MC_MACFOURBYTE},   // graceSlashWidth
    {0, '5', '1', 0, 0, 56, 4, 2, MC_INVERTBOOL},    // slashGraceNotes
    {0, '5', '1', 0, 0, 58, 5, 2, MC_SIGNEDBYTE},    // graceSlashAngle
};

PREFERENCE_LOCATION_MAPRECORD EDTSmartShapePrefs_MAP_ARRAY[] = {
    {0, '5', '3', 0, 0, 0, 0, 2, MC_NONE},           // slurStartThicknessX
    {0, '5', '3', 0, 0, 2, 1, 2, MC_NONE},           // slurStartThicknessY
    {0, '5', '3', 0, 0, 4, 2, 2, MC_NONE},           // slurMiddleThicknessX
    {0, '5', '3', 0, 0, 6, 3, 2, MC_NONE},           // slurMiddleThicknessY
    {0, '5', '3', 0, 0, 8, 4, 2, MC_NONE},           // slurEndThicknessX
    {0, '5', '3', 0, 0, 10, 5, 2, MC_NONE},          // slurEndThicknessY
    {0, '5', '4', 0, 0, 12, 0, 2, MC_NONE},          // tieStartThicknessX
    {0, '5', '4', 0, 0, 14, 1, 2, MC_NONE},          // tieStartThicknessY
    {0, '5', '4', 0, 0, 16, 2, 2, MC_NONE},          // tieMiddleThicknessX
    {0, '5', '4', 0, 0, 18, 3, 2, MC_NONE},          // tieMiddleThicknessY
    {0, '5', '4', 0, 0, 20, 4, 2, MC_NONE},          // tieEndThicknessX
    {0, '5', '4', 0, 0, 22, 5, 2, MC_NONE},          // tieEndThicknessY
    {0, '5', '5', 0, 0, 24, 0, 2, MC_NONE},          // slurSpaceAround
    {0, '5', '5', 0, 0, 26, 1, 2, MC_INVERTBOOL},    // slurAvoidAccidentals
    {0, '5', '5', 0, 0, 28, 2, 2, MC_NONE},          // slurInset
    {0, '5', '5', 0, 0, 30, 3, 4, MC_MACFOURBYTE},   // slurMaximumStretch
    {0, '5', '5', 0, 0, 34, 5, 2, MC_NONE},          // slurSystemBreakOffset
    {0, '5', '6', 0, 0, 36, 0, 4, MC_MACFOURBYTE},   // hairpinOpening
    {0, '5', '6', 0, 0, 40, 2, 4, MC_MACFOURBYTE},   // hairpinShortOpening
    {0, '5', '6', 0, 0, 44, 4, 4, MC_MACFOURBYTE},   // hairpinLineWidth
    {0, '5', '7', 0, 0, 48, 0, 4, MC_MACFOURBYTE},   // lineWidth
    {0, '5', '7', 0, 0, 52, 2, 2, MC_NONE},          // dashLength
    {0, '5', '7', 0, 0, 54, 3, 2, MC_NONE},          // dashSpace
    {0, '5', '7', 0, 0, 56, 4, 2, MC_NONE},          // hookLength
    {0, '5', '7', 0, 0, 58, 5, 2, MC_INVERTBOOL},    // showOctaveNumbers
    {0, '5', '8', 0, 0, 60, 0, 4, MC_MACFOURBYTE},   // glissandoLineWidth
    {0, '5', '8', 0, 0, 64, 2, 2, MC_SIGNEDBYTE},    // trillCharacter
    {0, '5', '8', 0, 0, 66, 3, 2, MC_NONE},          // trillFont
    {0, '5', '8', 0, 0, 68, 4, 2, MC_NONE},          // bendArrowStyle
    {0, '5', '8', 0, 0, 70, 5, 2, MC_INVERTBOOL},    // articulationsAvoidSlurs
    {0, '5', '9', 0, 0, 72, 0, 2, MC_NONE},          // bendHeight
    {0, '5', '9', 0, 0, 74, 1, 2, MC_NONE},          // bendWidth
    {0, '5', '9', 0, 0, 76, 2, 2, MC_NONE},          // bendReleaseWidth
    {0, '5', '9', 0, 0, 78, 3, 4, MC_MACFOURBYTE},   // tabSlideWidth
    {0, '5', '9', 0, 0, 82, 5, 2, MC_SIGNEDBYTE},    // tabSlideStyle
    {0, '6', '2', 0, 0, 84, 0, 2, MC_INVERTBOOL},    // engraverSlurs
    {0, '6', '2', 0, 0, 86, 1, 2, MC_NONE},          // engraverSlurMaxAngle
    {0, '6', '2', 0, 0, 88, 2, 2, MC_NONE},          // engraverSlurSymmetry
    {0, '6', '2', 0, 0, 90, 3, 2, MC_NONE},          // engraverSlurMaxLift
    {0, '6', '2', 0, 0, 92, 4, 2, MC_NONE},          // engraverSlurMinHeight
    {0, '6', '2', 0, 0, 94, 5, 2, MC_NONE},          // engraverSlurAccidentalSpace
    {0, '6', '3', 0, 0, 96, 0, 2, MC_NONE},          // hairpinBreakInset
    {0, '6', '3', 0, 0, 98, 1, 2, MC_NONE},          // hairpinShortSpan
};

template <size_t N>
constexpr int16_t RowCount(const PREFERENCE_LOCATION_MAPRECORD (&)[N])
{
    return static_cast<int16_t>(N);
}

struct ArrayMapRow {
    EXTAG prefTag;
    uint16_t maxCmper;   // 0: any cmper; otherwise cmper 1 to maxCmper only
    EXTAG otherTag;
    int16_t count;
    bool inciFromCmper;   // first incidence cmper - 1, else 0
};

constexpr ArrayMapRow kArrayMap[] = {
    {MakeTag('p', 'f', 'P', 'F'), 1, MakeTag('o', 't', '7', '7'), 4, false},
    {MakeTag('p', 'f', 'G', 'D'), 0, MakeTag('o', 't', '7', '9'), 1, false},
    {MakeTag('p', 'f', 'G', 'G'), 0, MakeTag('o', 't', '8', '8'), 11, false},
    {MakeTag('p', 'f', 'G', 'b'), 4, MakeTag('o', 't', '9', '8'), 1, true},
    {MakeTag('p', 'f', 'G', 'd'), 0, MakeTag('o', 't', '8', '0'), 1, false},
    {MakeTag('p', 'f', 'G', 's'), 1, MakeTag('o', 't', '9', '1'), 1, false},
    {MakeTag('p', 'f', 'M', 'M'), 0, MakeTag('o', 't', '2', '5'), 2, false},
    {MakeTag('p', 'f', 'N', 'D'), 0, MakeTag('o', 't', '0', '4'), 1, false},
    {MakeTag('p', 'f', 'N', 'd'), 0, MakeTag('o', 't', '6', '6'), 1, false},
    {MakeTag('p', 'f', 'S', 'C'), 0, MakeTag('o', 't', '5', '2'), 2, false},
    {MakeTag('p', 'f', 'S', 'N'), 128, MakeTag('o', 't', '4', '0'), 1, true},
    {MakeTag('p', 'f', 'S', 'P'), 0, MakeTag('o', 't', '9', '4'), 3, false},
    {MakeTag('p', 'f', 'S', 'l'), 15, MakeTag('o', 't', '2', '6'), 1, true},
    {MakeTag('p', 'f', 'T', 'C'), 0, MakeTag('o', 't', '8', '6'), 5, false},
    {MakeTag('p', 'f', 'T', 'I'), 0, MakeTag('o', 't', '8', '4'), 4, false},
    {MakeTag('p', 'f', 'T', 'X'), 0, MakeTag('o', 't', '7', '8'), 8, false},
    {MakeTag('p', 'f', 'T', 'p'), 0, MakeTag('o', 't', '8', '5'), 4, false},
    {MakeTag('p', 'f', 'T', 's'), 9, MakeTag('o', 't', '9', '0'), 1, true},
};

// A ranged row is tested as cmper - 1 in 16 unsigned bits, so cmper 0 never matches one.
bool CmperMatches(const ArrayMapRow& row, int16_t cmper)
{
    if (row.maxCmper == 0) {
        return true;
    }
    const auto fromOne = static_cast<uint16_t>(static_cast<uint16_t>(cmper) - 1);
    return fromOne < row.maxCmper;
}

EXTAG OtherTagOf(const PREFERENCE_LOCATION_MAPRECORD& row)
{
    return MakeTag('o', 't', row.firstChar, row.secondChar);
}

EDataID OtherKeyOf(const PREFERENCE_LOCATION_MAPRECORD& row)
{
    EDataID key{};
    key.other.cmper = row.cmper != 0 ? row.cmper : kPreferenceCmper;
    key.other.inci = row.inci;
    return key;
}

bool SameRecord(const PREFERENCE_LOCATION_MAPRECORD& a, const PREFERENCE_LOCATION_MAPRECORD& b)
{
    return a.firstChar == b.firstChar && a.secondChar == b.secondChar && a.cmper == b.cmper && a.inci == b.inci;
}

// A row places its field inside the record's words and inside the caller's buffer of `capacity`
// bytes; rows that would reach outside either are left alone.
bool RowFits(const PREFERENCE_LOCATION_MAPRECORD& row, int32_t capacity)
{
    const int words = row.bytesize == 4 ? 2 : 1;
    return (row.bytesize == 2 || row.bytesize == 4) && row.offsetInInci >= 0 &&
           row.offsetInInci + words <= kWordsPerOtherRecord && row.structOffset >= 0 &&
           row.structOffset + row.bytesize <= capacity;
}

EDTGeneric LoadOtherRecord(const PREFERENCE_LOCATION_MAPRECORD& row)
{
    EDTGeneric record{};
    EDataID key = OtherKeyOf(row);
    int32_t size = kOtherRecordSize;
    gStavioFuncs.SX_LoadEData(OtherTagOf(row), &key, &record, &size, kPluginApiVersion);
    return record;
}

int32_t ReadFourByteField(const EDTGeneric& record, const PREFERENCE_LOCATION_MAPRECORD& row)
{
    const uint16_t high = static_cast<uint16_t>(record.words[row.offsetInInci]);
    const uint16_t low = static_cast<uint16_t>(record.words[row.offsetInInci + 1]);
    int32_t value = static_cast<int32_t>((static_cast<uint32_t>(high) << 16) | low);
    if (row.conversion == MC_WINFOURBYTE) {
        swapFB(&value);
    }
    return value;
}

int16_t ReadTwoByteField(const EDTGeneric& record, const PREFERENCE_LOCATION_MAPRECORD& row)
{
    const int16_t word = record.words[row.offsetInInci];
    switch (row.conversion) {
        case MC_INVERTBOOL: return word == 0 ? 1 : 0;
        case MC_SIGNEDBYTE: return static_cast<int16_t>(static_cast<uint16_t>(word) & 0x00ff);
        default: return word;
    }
}

void StoreField(const EDTGeneric& record, const PREFERENCE_LOCATION_MAPRECORD& row, char* buffer)
{
    if (row.bytesize == 4) {
        const int32_t value = ReadFourByteField(record, row);
        std::memcpy(buffer + row.structOffset, &value, sizeof(value));
    } else {
        const int16_t value = ReadTwoByteField(record, row);
        std::memcpy(buffer + row.structOffset, &value, sizeof(value));
    }
}

// Puts one field of the caller's record back into the record's words; true when a word changed.
bool PutField(const char* buffer, const PREFERENCE_LOCATION_MAPRECORD& row, EDTGeneric& record)
{
    int16_t* words = record.words;
    const int k = row.offsetInInci;
    if (row.bytesize == 4) {
        int32_t value = 0;
        std::memcpy(&value, buffer + row.structOffset, sizeof(value));
        if (row.conversion == MC_WINFOURBYTE) {
            swapFB(&value);
        }
        const auto bits = static_cast<uint32_t>(value);
        const auto high = static_cast<int16_t>(bits >> 16);
        const auto low = static_cast<int16_t>(bits & 0xffff);
        if (words[k] == high && words[k + 1] == low) {
            return false;
        }
        words[k] = high;
        words[k + 1] = low;
        return true;
    }
    int16_t value = 0;
    std::memcpy(&value, buffer + row.structOffset, sizeof(value));
    int16_t stored = value;
    switch (row.conversion) {
        case MC_INVERTBOOL:
            // Compared as words, not as truth values: a kept 2 becomes the 1 a load reads back as 0.
            stored = value == 0 ? 1 : 0;
            break;
        case MC_SIGNEDBYTE:
            stored = static_cast<int16_t>((static_cast<uint16_t>(words[k]) & 0xff00) |
                                          (static_cast<uint16_t>(value) & 0x00ff));
            break;
        default: break;
    }
    if (words[k] == stored) {
        return false;
    }
    words[k] = stored;
    return true;
}

void ClearProcessed(PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows)
{
    for (int16_t i = 0; i < rows; ++i) {
        map[i].bProcessed = 0;
    }
}

// Hands each row that shares map[first]'s "other" record and is not handled yet to `handleRow`,
// in map order, and marks it handled.
template <typename HandleRow>
void HandleGroup(PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows, int16_t first, HandleRow handleRow)
{
    for (int16_t j = first; j < rows; ++j) {
        if (map[j].bProcessed != 0 || !SameRecord(map[first], map[j])) {
            continue;
        }
        handleRow(map[j]);
        map[j].bProcessed = 1;
    }
}

}   // namespace

bool mapPrefStruct(EXTAG tag, int16_t cmper, PREFERENCE_LOCATION_MAPRECORD** map, int16_t* rows)
{
    struct FieldMap {
        EXTAG tag;
        PREFERENCE_LOCATION_MAPRECORD* rows;
        int16_t count;
        bool scoreOnly;   // number 0 only; the other numbers are not kept in fields
    };
    const FieldMap maps[] = {
        {MakeTag('p', 'f', 'D', 'P'), EDTDistancePrefs_MAP_ARRAY, RowCount(EDTDistancePrefs_MAP_ARRAY), false},
        {MakeTag('p', 'f', 'E', 'X'), EDTExtractPrefs_MAP_ARRAY, RowCount(EDTExtractPrefs_MAP_ARRAY), false},
        {MakeTag('p', 'f', 'M', 'S'), EDTMiscDocPrefs_MAP_ARRAY, RowCount(EDTMiscDocPrefs_MAP_ARRAY), false},
        {MakeTag('p', 'f', 'P', 'B'), EDTPianoBracePrefs_MAP_ARRAY, RowCount(EDTPianoBracePrefs_MAP_ARRAY), false},
        {MakeTag('p', 'f', 'P', 'F'), EDTPageFormatPrefsScore_MAP_ARRAY, RowCount(EDTPageFormatPrefsScore_MAP_ARRAY),
         true},
        {MakeTag('p', 'f', 'P', 'L'), EDTPlaybackPrefs_MAP_ARRAY, RowCount(EDTPlaybackPrefs_MAP_ARRAY), false},
        {MakeTag('p', 'f', 'R', 'P'), EDTRepeatPrefs_MAP_ARRAY, RowCount(EDTRepeatPrefs_MAP_ARRAY), false},
        {MakeTag('p', 'f', 'S', 'I'), EDTSizePrefs_MAP_ARRAY, RowCount(EDTSizePrefs_MAP_ARRAY), false},
        {MakeTag('p', 'f', 'S', 'S'), EDTSmartShapePrefs_MAP_ARRAY, RowCount(EDTSmartShapePrefs_MAP_ARRAY), false},
    };
    for (const FieldMap& found : maps) {
        if (found.tag != tag || (found.scoreOnly && cmper != 0)) {
            continue;
        }
        if (map != nullptr) {
            *map = found.rows;
        }
        if (rows != nullptr) {
            *rows = found.count;
        }
        return true;
    }
    return false;
}

bool mapPrefTag(EXTAG tag, int16_t cmper, EXTAG* otherTag, int16_t* count, int16_t* firstInci)
{
    if (otherTag != nullptr) {
        *otherTag = 0;
    }
    for (const ArrayMapRow& row : kArrayMap) {
        if (row.prefTag != tag || !CmperMatches(row, cmper)) {
            continue;
        }
        if (otherTag != nullptr) {
            *otherTag = row.otherTag;
        }
        if (count != nullptr) {
            *count = row.count;
        }
        if (firstInci != nullptr) {
            *firstInci = row.inciFromCmper ? static_cast<int16_t>(cmper - 1) : 0;
        }
        return true;
    }
    return false;
}

int32_t fragmentStructLoad(char* buffer, int32_t* size, PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows)
{
    if (size == nullptr) {
        return 0;
    }
    const int32_t capacity = *size;
    int32_t total = 0;
    for (int16_t i = 0; i < rows; ++i) {
        total += map[i].bytesize;
    }
    *size = total;
    if (buffer == nullptr) {
        return 1;
    }
    ClearProcessed(map, rows);
    for (int16_t i = 0; i < rows; ++i) {
        if (map[i].bProcessed != 0) {
            continue;
        }
        const EDTGeneric record = LoadOtherRecord(map[i]);
        HandleGroup(map, rows, i, [&](const PREFERENCE_LOCATION_MAPRECORD& row) {
            if (RowFits(row, capacity)) {
                StoreField(record, row, buffer);
            }
        });
    }
    return 1;
}

int32_t fragmentStructSave(const char* buffer, int32_t size, PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows)
{
    if (buffer == nullptr || size < 2 * rows) {
        return 0;
    }
    ClearProcessed(map, rows);
    for (int16_t i = 0; i < rows; ++i) {
        if (map[i].bProcessed != 0) {
            continue;
        }
        EDTGeneric record = LoadOtherRecord(map[i]);
        bool changed = false;
        HandleGroup(map, rows, i, [&](const PREFERENCE_LOCATION_MAPRECORD& row) {
            if (RowFits(row, size) && PutField(buffer, row, record)) {
                changed = true;
            }
        });
        if (changed) {
            EDataID key = OtherKeyOf(map[i]);
            gStavioFuncs.SX_SaveEData(OtherTagOf(map[i]), &key, &record, kOtherRecordSize, kPluginApiVersion);
        }
    }
    return 1;
}

void swapFB(int32_t* value)
{
    const auto bits = static_cast<uint32_t>(*value);
    *value = static_cast<int32_t>((bits << 16) | (bits >> 16));
}
