// The score `tamberlyne fill` works on: 16 measures of 4/4, a piano staff "Piano" and a drum
// staff "Drums" (it plays on the host's drum channel, on percussion map 1).
#pragma once

#include "stavio/document/document.h"

namespace stavio::app {

constexpr int kDemoMeasures = 16;
constexpr int kDemoDrumSlot = 2;

Document BuildDemoDocument();

}   // namespace stavio::app
