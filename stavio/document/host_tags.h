// Tags of the records the host keeps for itself. They begin with '#', which no plug-in tag
// does, and the layout registry does not know them: a plug-in's request for one is refused
// like any unknown tag. Keeping them in the record store puts them under undo and redo.
#pragma once

#include "sdk/tags.h"

namespace stavio {

// The entries of one staff-measure-layer: detail key (instrument, measure, layer); the bytes
// are EncodeFrame's (entry_frames.h). A layer that holds nothing has no record.
constexpr EXTAG kHostTagEntries = MakeTag('#', 'E', 'N', 'T');
// The document's running numbers: key (which, 0, 0), 32-bit value of the last number given.
constexpr EXTAG kHostTagCounters = MakeTag('#', 'C', 'N', 'T');
constexpr uint16_t kCounterEntryNumbers = 1;
constexpr uint16_t kCounterFrameNumbers = 2;

}   // namespace stavio
