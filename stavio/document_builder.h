// Builds score documents for tests and examples: measures with time signatures, named staves
// in instrument list 0, measure flags, notes and rests, staff styles, text expressions and the
// drum-related records. Every record goes in through the document's own record calls, so a
// built document holds exactly what a plug-in could have written. Staves are numbered 1, 2 ...
// in the order they are declared (their slot in list 0 and their instrument number); anything
// aimed at a staff or measure that does not exist is left out.
//
//   Document doc = DocumentBuilder()
//                      .Measures(16, 4, 1024)          // 16 measures of 4/4
//                      .TimeSignatureFrom(9, 3, 1024)  // 3/4 from measure 9 on
//                      .Staff("Drum Set", "Dr.")
//                      .DrumStaff(1)
//                      .MeasureFlags(5, kMeasureAuxRefused)
//                      .Entries(1, 2, 0, {Note(36, 1024), Chord({38, 42}, 1024), Rest(2048)})
//                      .Build();
#pragma once

#include "stavio/document/document.h"

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace stavio {

// A notated pitch: diatonic steps from middle C and semitones.
struct NotePitch {
    int16_t tcd = 0;
    int16_t alteration = 0;
};
// A MIDI key spelled with sharps (61 is C#4: tcd 0, alteration 1).
NotePitch PitchOfKey(int midiKey);

// One entry: its notated duration and its notes (none: a rest).
struct EntrySpec {
    TIME_EDU duration = 0;
    std::vector<NotePitch> notes;
};
EntrySpec Note(int midiKey, TIME_EDU duration);
EntrySpec Chord(std::initializer_list<int> midiKeys, TIME_EDU duration);
EntrySpec Pitched(std::vector<NotePitch> notes, TIME_EDU duration);
EntrySpec Rest(TIME_EDU duration);

// A tuplet over entries `first`..`last` of a frame: `count` notes of `noteValue` in the time
// of `inTimeOf` notes of `referenceValue` (eighth triplet: 3, 512, 2, 512).
struct TupletSpec {
    int first = 0;
    int last = 0;
    int16_t count = 3;
    TIME_EDU noteValue = 512;
    int16_t inTimeOf = 2;
    TIME_EDU referenceValue = 512;
};

class DocumentBuilder {
public:
    // `count` measures of `beats` beats of `divbeat` EDU each (4/4 is 4, 1024).
    DocumentBuilder& Measures(int count, int16_t beats = 4, int16_t divbeat = kEduPerQuarter);
    // From measure `meas` to the end: a new time signature.
    DocumentBuilder& TimeSignatureFrom(int meas, int16_t beats, int16_t divbeat);
    // A staff listed after the ones before; names are stored as text blocks ('SOTX' + 'txbl').
    // An empty name leaves the staff record's name word 0. Its channel definition takes the full name.
    DocumentBuilder& Staff(const std::string& fullName, const std::string& abbreviatedName = "");
    // Sets the measure's `auxflag` bits (kMeasureAuxRefused ...).
    DocumentBuilder& MeasureFlags(int meas, uint16_t auxflag);

    // Notes and rests of staff `staff`, measure `meas`, layer `layer` (0..3), one after the
    // other from the start of the measure (replacing what an earlier call put there).
    DocumentBuilder& Entries(int staff, int meas, int layer, std::vector<EntrySpec> entries);
    DocumentBuilder& Tuplet(int staff, int meas, int layer, TupletSpec tuplet);

    // A drum staff: its channel definition gets the drum channel code 0x8009 and it gets a drum
    // staff record on percussion map 1.
    DocumentBuilder& DrumStaff(int staff);
    // Staff style `number` and its assignment to a staff over a range (appended after the
    // staff's earlier assignments).
    DocumentBuilder& StaffStyle(int16_t number, const EDTStaffStyle2003& style);
    DocumentBuilder& StyleAssignment(int staff, int16_t style, EXMEASRANGE range);
    // Text expression `number` and its assignment to a staff at a measure (appended; the
    // measure is marked as carrying expressions).
    DocumentBuilder& TextExpression(int16_t number, const std::string& text, int16_t playbackType);
    DocumentBuilder& ExpressionAssignment(int staff, int meas, int16_t expression);
    // Leaves the document without percussion map 1.
    DocumentBuilder& WithoutPercussionMap();
    // Every channel definition number 1..99 in use, none on the drum channel.
    DocumentBuilder& FillChannelDefinitions();

    Document Build() const;

private:
    struct StaffNames {
        std::string full;
        std::string abbreviated;
    };
    struct Meter {
        int16_t beats;
        int16_t divbeat;
    };
    struct LayerSpec {
        std::vector<EntrySpec> entries;
        std::vector<TupletSpec> tuplets;
    };
    struct StyleAssignmentSpec {
        int staff;
        int16_t style;
        EXMEASRANGE range;
    };
    struct ExpressionSpec {
        std::string text;
        int16_t playbackType;
    };
    struct ExpressionAssignmentSpec {
        int staff;
        int meas;
        int16_t expression;
    };
    using Place = std::tuple<int, int, int>;   // staff, measure, layer

    void BuildStaves(Document& doc) const;
    void BuildEntries(Document& doc) const;
    void BuildStylesAndExpressions(Document& doc) const;

    int measureCount_ = 0;
    std::map<int, Meter> meters_;   // from measure -> meter
    std::map<int, uint16_t> auxflags_;
    std::vector<StaffNames> staves_;
    std::map<Place, LayerSpec> layers_;
    std::vector<int> drumStaves_;
    std::map<int16_t, EDTStaffStyle2003> styles_;
    std::vector<StyleAssignmentSpec> styleAssignments_;
    std::map<int16_t, ExpressionSpec> expressions_;
    std::vector<ExpressionAssignmentSpec> expressionAssignments_;
    bool withoutPercussionMap_ = false;
    bool fillChannels_ = false;
};

// Adds a text block with its text to the document; returns the block number (0 on failure).
int16_t AddTextBlock(Document& doc, const std::string& text);
// The text of a text block ("" when there is none).
std::string TextBlockText(const Document& doc, int16_t block);

}   // namespace stavio
