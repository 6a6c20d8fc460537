// Builds score documents for tests and examples: measures with time signatures, named staves
// in instrument list 0, measure flags. Every record goes in through the document's own record
// calls, so a built document holds exactly what a plug-in could have written.
//
//   Document doc = DocumentBuilder()
//                      .Measures(16, 4, 1024)          // 16 measures of 4/4
//                      .TimeSignatureFrom(9, 3, 1024)  // 3/4 from measure 9 on
//                      .Staff("Drum Set", "Dr.")
//                      .MeasureFlags(5, kMeasureAuxRefused)
//                      .Build();
#pragma once

#include "stavio/document/document.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace stavio {

class DocumentBuilder {
public:
    // `count` measures of `beats` beats of `divbeat` EDU each (4/4 is 4, 1024).
    DocumentBuilder& Measures(int count, int16_t beats = 4, int16_t divbeat = kEduPerQuarter);
    // From measure `meas` to the end: a new time signature.
    DocumentBuilder& TimeSignatureFrom(int meas, int16_t beats, int16_t divbeat);
    // A staff listed after the ones before; names are stored as text blocks ('SOTX' + 'txbl').
    // An empty name leaves the spec's name word 0.
    DocumentBuilder& Staff(const std::string& fullName, const std::string& abbreviatedName = "");
    // Sets the measure's `auxflag` bits (kMeasureAuxRefused ...).
    DocumentBuilder& MeasureFlags(int meas, uint16_t auxflag);

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

    int measureCount_ = 0;
    std::map<int, Meter> meters_;   // from measure -> meter
    std::map<int, uint16_t> auxflags_;
    std::vector<StaffNames> staves_;
};

// Adds a text block with its text to the document; returns the block number (0 on failure).
int16_t AddTextBlock(Document& doc, const std::string& text);
// The text of a text block ("" when there is none).
std::string TextBlockText(const Document& doc, int16_t block);

}  // namespace stavio
