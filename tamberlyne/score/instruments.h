// The staves of one staff system held in memory, in slot order, so that a caller can change
// records and write the whole list back.
#pragma once

#include "sdk/records.h"

#include <cstdint>
#include <vector>

struct TInstrRec {
    EDTInstrumentUsed IU;
    bool userbool;   // for the caller's own use; false after a load, never saved
};

class TInstruments {
public:
    TInstruments();
    // Loads system `system`; the flag is not used.
    TInstruments(int16_t system, bool unused);

    // Reads slots 0, 1 ... up to the first that does not load (at most 1000). The flag and the
    // number are not used.
    void LoadSystem(int16_t system, bool unused, int unusedCount);
    // Writes element k at slot k and deletes every record the host still holds beyond the list.
    // Returns false: the result of the last load, which found no record.
    bool SaveSystem(int16_t system);

    std::vector<TInstrRec> data;   // element k is slot k
    uint32_t maxsize;              // records found by the last load
    uint32_t _system;              // the system last loaded or saved
};
