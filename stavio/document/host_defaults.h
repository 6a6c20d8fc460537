// What every new document of this host holds before anything is put into it.
#pragma once

#include "stavio/document/document.h"

namespace stavio {

constexpr uint16_t kTextExpressionFontPref = 6;   // 'pfdf' number of the text-expression font
constexpr uint16_t kDefaultTextExpressionSize = 12;

// Installs the host's defaults: clef definitions 0..17 ('gbcf'; clef 12, the percussion clef,
// in the "Dorvane" font), the default text-expression font preference ('pfdf' 6: "Times New
// Roman" 12) and percussion map 1, the General MIDI kit, with its name record ('otDL' 1). The
// font table of a new document is FontTable::Defaults().
void InstallHostDefaults(Document& doc);

}   // namespace stavio
