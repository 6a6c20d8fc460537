// Questions about the score and the host: staves, measures, pitches, regions, where the host
// lives, and redraws.
#include "stavio/document/pitch.h"
#include "stavio/services/exported_functions.h"

#include <cstring>
#include <string>

using stavio::Host;
using stavio::services::OnCurrentHost;

namespace {

// Copies `text` with its terminator into a field of `capacity` bytes; false when it does not fit.
bool CopyField(const std::string& text, char* field, size_t capacity)
{
    if (text.size() + 1 > capacity) {
        return false;
    }
    std::memcpy(field, text.c_str(), text.size() + 1);
    return true;
}

}   // namespace

extern "C" {

int32_t SX_SlotToInst(int32_t slot, int32_t IUlist, EVERSION)
{
    return OnCurrentHost<int32_t>(0, [&](Host& host) { return host.document().SlotToInst(slot, IUlist); });
}

int32_t SX_InstToSlot(int32_t inst, int32_t IUlist, EVERSION)
{
    return OnCurrentHost<int32_t>(0, [&](Host& host) { return host.document().InstToSlot(inst, IUlist); });
}

// Fills both regions it is given; answers 1 when something is selected, 0 when not.
int32_t SX_GetCurERegions(EREGION* selection, EREGION* document, EVERSION)
{
    return OnCurrentHost<int32_t>(0, [&](Host& host) {
        if (document != nullptr) {
            *document = host.document().WholeRegion();
        }
        EREGION current{};
        const bool selected = host.CurrentSelection(current);
        if (selection != nullptr && selected) {
            *selection = current;
        }
        return selected ? 1 : 0;
    });
}

int32_t SX_RedrawMusic(EVERSION)
{
    return OnCurrentHost<int32_t>(0, [](Host& host) {
        host.NoteRedraw();
        return 1;
    });
}

int32_t SX_NoteToMidi(const EXNOTE* note, int32_t, EVERSION)
{
    if (note == nullptr) {
        return -1;
    }
    return stavio::NoteToMidiKey(note->tcd, note->alteration);
}

TIME_EDU SX_GetMeasureDuration(int32_t, int32_t meas, EVERSION)
{
    return OnCurrentHost<TIME_EDU>(0, [&](Host& host) { return host.document().MeasureDuration(meas); });
}

// The application folder as a file spec: its parent folder and its own name.
int32_t SX_GetStavioPathMac(EFSSPEC* folder, EVERSION)
{
    if (folder == nullptr) {
        return 0;
    }
    return OnCurrentHost<int32_t>(0, [&](Host& host) {
        std::string path = host.ApplicationFolder();
        while (path.size() > 1 && path.back() == '/') {
            path.pop_back();
        }
        const size_t slash = path.rfind('/');
        if (path.empty() || slash == std::string::npos || slash + 1 == path.size()) {
            return 0;
        }
        const std::string parent = slash == 0 ? std::string("/") : path.substr(0, slash);
        EFSSPEC spec{};
        if (!CopyField(parent, spec.folder, sizeof(spec.folder)) ||
            !CopyField(path.substr(slash + 1), spec.name, sizeof(spec.name))) {
            return 0;
        }
        *folder = spec;
        return 1;
    });
}

int32_t SX_IsMachO(EVERSION)
{
    return 1;
}

int32_t SX_GetMaxLayers(EVERSION)
{
    return stavio::kMaxLayers;
}

}   // extern "C"
