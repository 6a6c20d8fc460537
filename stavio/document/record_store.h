// The raw records of one document: canonical bytes by tag and key, with the host's rules for
// new numbers, appended incidences, deletion and walking. It knows nothing of layouts; the
// document checks those before it gets here.
#pragma once

#include "sdk/types.h"
#include "stavio/document/record_key.h"

#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace stavio {

class RecordStore {
public:
    using Bytes = std::vector<uint8_t>;
    using Records = std::map<RecordKey, Bytes>;

    const Bytes* Find(EXTAG tag, const RecordKey& key) const;
    Bytes* Find(EXTAG tag, const RecordKey& key);
    // Replaces or adds.
    void Put(EXTAG tag, const RecordKey& key, Bytes bytes);
    // A new record. kPickNumber in the first key word picks the number after the highest in
    // use (1 when none); kAppendIncidence picks the incidence after the group's last. The key
    // used is written back. False when the key is taken or no number is left.
    bool Create(EXTAG tag, KeyKind kind, RecordKey& key, Bytes bytes);
    // Removes the record; for kinds with incidences the later incidences of the group move
    // down by one. False when there is no such record.
    bool Delete(EXTAG tag, KeyKind kind, const RecordKey& key);
    // Removes the record and nothing else moves. False when there is no such record.
    bool Erase(EXTAG tag, const RecordKey& key);

    // The first record after / the last record before `key`, in key order.
    std::optional<std::pair<RecordKey, const Bytes*>> Next(EXTAG tag, const RecordKey& key) const;
    std::optional<std::pair<RecordKey, const Bytes*>> Previous(EXTAG tag, const RecordKey& key) const;

    // Every record of a tag, in key order (empty when none).
    const Records& All(EXTAG tag) const;
    size_t Count(EXTAG tag) const;
    // The number of incidences in the group of `key` (kinds with incidences).
    uint16_t IncidenceCount(EXTAG tag, const RecordKey& key) const;
    std::vector<EXTAG> Tags() const;
    // How many records numbered 1, 2, 3... follow each other from 1 (keys (n, 0, 0)): kept in
    // step with every change, so that asking costs one look-up however many there are.
    uint16_t NumberedRun(EXTAG tag) const;

    bool operator==(const RecordStore& other) const { return tags_ == other.tags_; }

private:
    void Added(EXTAG tag, const RecordKey& key);
    void Removed(EXTAG tag, const RecordKey& key);

    std::map<EXTAG, Records> tags_;
    std::map<EXTAG, uint16_t> runs_;   // NumberedRun of each tag that has one
};

}   // namespace stavio
