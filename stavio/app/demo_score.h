// The demo score as MusicXML: what `tamberlyne fill -o OUT` fills when no score is given, so
// that the demo's result can be opened in a notation program.
#pragma once

#include <string>

namespace stavio::app {

// 16 measures of 4/4 (kDemoMeasures): a piano staff "Piano" resting throughout and a drum
// staff "Drums" on MIDI channel 10, as the demo document has them.
std::string DemoScoreText();

}   // namespace stavio::app
