// Slot 91: the host's MIDI import into the current document.
#include "stavio/midi_import/midi_import.h"
#include "stavio/services/exported_functions.h"

using stavio::Host;
using stavio::services::OnCurrentHost;

extern "C" {

// 1 when the file was imported into the region, 0 when nothing changed.
int32_t SX_ProcessMidiData(SxpMidiData* data, EVERSION)
{
    if (data == nullptr) {
        return 0;
    }
    return OnCurrentHost<int32_t>(
        0, [&](Host& host) { return stavio::midi_import::ProcessMidiData(host.document(), *data); });
}

}   // extern "C"
