// How the host addresses a record inside its store.
//
// Every record key is three 16-bit words ordered as written, so that walking keys in order
// visits the incidences of one record group one after the other:
//   other records   (cmper, 0, inci)        EOtherID {cmper, inci}
//   details         (cmper1, cmper2, inci)  EDetailID {cmper1, cmper2, inci}
//   numbered lists  (number, 0, 0)          the first key word: global lists, texts
#pragma once

#include "sdk/types.h"

#include <cstdint>
#include <tuple>

namespace stavio {

enum class KeyKind {
    Other,    // (cmper, inci)
    Detail,   // (cmper1, cmper2, inci)
    Number,   // (number); no incidences
};

constexpr uint16_t kPickNumber = 0xFFFF;        // create: let the host choose the number
constexpr uint16_t kAppendIncidence = 0xFFFF;   // create: add after the last incidence (-1)

struct RecordKey {
    uint16_t group1 = 0;
    uint16_t group2 = 0;
    uint16_t inci = 0;

    bool operator<(const RecordKey& other) const
    {
        return std::tie(group1, group2, inci) < std::tie(other.group1, other.group2, other.inci);
    }
    bool operator==(const RecordKey& other) const
    {
        return group1 == other.group1 && group2 == other.group2 && inci == other.inci;
    }
    bool SameGroup(const RecordKey& other) const { return group1 == other.group1 && group2 == other.group2; }

    static RecordKey Other(uint16_t cmper, uint16_t inci) { return {cmper, 0, inci}; }
    static RecordKey Detail(uint16_t cmper1, uint16_t cmper2, uint16_t inci) { return {cmper1, cmper2, inci}; }
    static RecordKey Number(uint16_t number) { return {number, 0, 0}; }
};

// Between the interface's key union and the store's key, by the tag's key kind.
RecordKey KeyFromDataId(KeyKind kind, const EDataID& id);
void KeyToDataId(KeyKind kind, const RecordKey& key, EDataID& id);

}   // namespace stavio
