// Small pieces of the MusicXML model shared by the reader and the writer: clefs, note values,
// staff positions and the clef a staff-measure holds in the host document.
#pragma once

#include "stavio/document/document.h"

#include <cstdint>
#include <string>

namespace stavio::musicxml {

// The host clef (0..17) for a MusicXML clef; treble (0) for one the host does not know.
int16_t HostClefOf(const std::string& sign, int line, int octaveChange);
// The <clef> content for a host clef ("<sign>G</sign><line>2</line>").
std::string ClefContent(int16_t clef);

// The clef of a staff-measure in the document (its 'SDGF' detail); 0 when it has none.
int16_t MeasureClef(const Document& doc, int32_t inst, int32_t meas);
void SetMeasureClef(Document& doc, int32_t inst, int32_t meas, int16_t clef);

// EDU of a <type> ("quarter" 1024), 0 for an unknown name; and back (nullptr when the
// undotted value is not one).
int32_t TypeDuration(const std::string& type);
const char* TypeName(int32_t edu);

// Diatonic steps from middle C for a step letter and an octave ("C", 4 -> 0).
int16_t StaffStepOf(char step, int octave);
char StepLetter(int16_t tcd);
int OctaveOf(int16_t tcd);

}   // namespace stavio::musicxml
