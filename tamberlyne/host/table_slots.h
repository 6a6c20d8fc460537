// Slot-by-number access to a host function table. The table's slots are typed function
// pointers of different types; start-up fills them by number, so it treats each slot as one
// pointer-sized word at its documented offset.
#pragma once

#include "sdk/funcs.h"

#include <cstring>

inline void* GetSlot(const StavioFuncs& table, int slot)
{
    void* value = nullptr;
    std::memcpy(&value, reinterpret_cast<const char*>(&table) + SlotOffset(slot), sizeof(value));
    return value;
}

inline void SetSlot(StavioFuncs& table, int slot, void* value)
{
    std::memcpy(reinterpret_cast<char*>(&table) + SlotOffset(slot), &value, sizeof(value));
}
