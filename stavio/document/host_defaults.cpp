#include "stavio/document/host_defaults.h"

#include "sdk/tags.h"
#include "stavio/document/clefs.h"

namespace stavio {

void InstallHostDefaults(Document& doc)
{
    const int16_t musicFont = doc.Fonts().NumberOf(kMusicFontName).value_or(0);
    const std::vector<EDTClefDef> clefs = DefaultClefDefinitions(musicFont);
    for (size_t clef = 0; clef < clefs.size(); ++clef) {
        doc.Write(kTagClefDef, RecordKey::Number(static_cast<uint16_t>(clef)), clefs[clef]);
    }

    EDTFontPref expressionFont{};
    const int16_t textFont = doc.Fonts().NumberOf(kTextFontName).value_or(0);
    expressionFont.fontIDHigh = static_cast<uint8_t>((textFont >> 8) & 0xFF);
    expressionFont.fontIDLow = static_cast<uint8_t>(textFont & 0xFF);
    expressionFont.sizeEfx = kDefaultTextExpressionSize;
    doc.Write(kTagDefaultFontPref, RecordKey::Other(kTextExpressionFontPref, 0), expressionFont);

    doc.SetPercussionMap(kDefaultPercussionMap, GeneralMidiKit());
}

}   // namespace stavio
