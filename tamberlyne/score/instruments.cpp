#include "tamberlyne/score/instruments.h"

#include "tamberlyne/host/typed_records.h"

namespace {

constexpr int kMaxSlots = 1000;
constexpr int kDefaultLoadCount = 30;

}   // namespace

TInstruments::TInstruments() : maxsize(0), _system(0)
{}

TInstruments::TInstruments(int16_t system, bool unused) : maxsize(0), _system(0)
{
    LoadSystem(system, unused, kDefaultLoadCount);
}

void TInstruments::LoadSystem(int16_t system, bool /*unused*/, int /*unusedCount*/)
{
    _system = static_cast<uint32_t>(system);
    data.clear();
    maxsize = 0;
    try {
        for (int slot = 0; slot < kMaxSlots; ++slot) {
            TInstrRec record{};
            if (!sx_loadIU(system, static_cast<int16_t>(slot), record.IU)) {
                break;
            }
            record.userbool = false;
            data.push_back(record);
        }
    } catch (...) {
        // Out of memory part-way: an empty list rather than a partial one.
        std::vector<TInstrRec>().swap(data);
    }
    maxsize = static_cast<uint32_t>(data.size());
}

bool TInstruments::SaveSystem(int16_t system)
{
    _system = static_cast<uint32_t>(system);
    for (size_t slot = 0; slot < data.size(); ++slot) {
        sx_saveIU(system, static_cast<int16_t>(slot), data[slot].IU);
    }
    // The host moves the following records down on each deletion.
    const auto end = static_cast<int16_t>(data.size());
    EDTInstrumentUsed extra{};
    bool loaded = false;
    while ((loaded = sx_loadIU(system, end, extra))) {
        if (!sx_deleteIU(system, end)) {
            break;
        }
    }
    return loaded;
}
