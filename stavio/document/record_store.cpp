#include "stavio/document/record_store.h"

namespace stavio {

namespace {
const RecordStore::Records kNoRecords;

bool HasIncidences(KeyKind kind)
{
    return kind != KeyKind::Number;
}

bool InNumberedRun(const RecordKey& key)
{
    return key.group1 != 0 && key.group2 == 0 && key.inci == 0;
}
}   // namespace

const RecordStore::Bytes* RecordStore::Find(EXTAG tag, const RecordKey& key) const
{
    auto records = tags_.find(tag);
    if (records == tags_.end()) {
        return nullptr;
    }
    auto record = records->second.find(key);
    return record == records->second.end() ? nullptr : &record->second;
}

RecordStore::Bytes* RecordStore::Find(EXTAG tag, const RecordKey& key)
{
    return const_cast<Bytes*>(static_cast<const RecordStore*>(this)->Find(tag, key));
}

void RecordStore::Put(EXTAG tag, const RecordKey& key, Bytes bytes)
{
    if (tags_[tag].insert_or_assign(key, std::move(bytes)).second) {
        Added(tag, key);
    }
}

bool RecordStore::Create(EXTAG tag, KeyKind kind, RecordKey& key, Bytes bytes)
{
    const Records& records = All(tag);
    RecordKey chosen = key;
    if (chosen.group1 == kPickNumber) {
        uint16_t highest = records.empty() ? 0 : records.rbegin()->first.group1;
        if (highest >= kPickNumber - 1) {
            return false;
        }
        chosen.group1 = static_cast<uint16_t>(highest + 1);
        if (HasIncidences(kind)) {
            chosen.inci = 0;
        }
    }
    if (!HasIncidences(kind)) {
        chosen.group2 = 0;
        chosen.inci = 0;
    } else if (chosen.inci == kAppendIncidence) {
        chosen.inci = IncidenceCount(tag, chosen);
        if (chosen.inci == kAppendIncidence) {
            return false;
        }
    }
    if (kind == KeyKind::Other) {
        chosen.group2 = 0;
    }
    if (records.count(chosen) != 0) {
        return false;
    }
    tags_[tag].emplace(chosen, std::move(bytes));
    Added(tag, chosen);
    key = chosen;
    return true;
}

bool RecordStore::Delete(EXTAG tag, KeyKind kind, const RecordKey& key)
{
    if (!Erase(tag, key)) {
        return false;
    }
    auto found = tags_.find(tag);
    if (found == tags_.end() || !HasIncidences(kind)) {
        return true;   // nothing left under the tag, or no incidences to move down
    }
    Records& records = found->second;
    // Move the later incidences of the group down by one, lowest first.
    for (auto later = records.upper_bound(key); later != records.end() && later->first.SameGroup(key);) {
        RecordKey lower = later->first;
        lower.inci = static_cast<uint16_t>(lower.inci - 1);
        const RecordKey higher = later->first;
        Bytes bytes = std::move(later->second);
        later = records.erase(later);
        Removed(tag, higher);
        records.emplace(lower, std::move(bytes));
        Added(tag, lower);
    }
    return true;
}

bool RecordStore::Erase(EXTAG tag, const RecordKey& key)
{
    auto found = tags_.find(tag);
    if (found == tags_.end() || found->second.erase(key) == 0) {
        return false;
    }
    Removed(tag, key);
    if (found->second.empty()) {
        tags_.erase(found);
    }
    return true;
}

std::optional<std::pair<RecordKey, const RecordStore::Bytes*>> RecordStore::Next(EXTAG tag, const RecordKey& key) const
{
    const Records& records = All(tag);
    auto next = records.upper_bound(key);
    if (next == records.end()) {
        return std::nullopt;
    }
    return std::make_pair(next->first, &next->second);
}

std::optional<std::pair<RecordKey, const RecordStore::Bytes*>> RecordStore::Previous(EXTAG tag,
                                                                                     const RecordKey& key) const
{
    const Records& records = All(tag);
    auto notBefore = records.lower_bound(key);
    if (notBefore == records.begin()) {
        return std::nullopt;
    }
    auto previous = std::prev(notBefore);
    return std::make_pair(previous->first, &previous->second);
}

const RecordStore::Records& RecordStore::All(EXTAG tag) const
{
    auto found = tags_.find(tag);
    return found == tags_.end() ? kNoRecords : found->second;
}

size_t RecordStore::Count(EXTAG tag) const
{
    return All(tag).size();
}

uint16_t RecordStore::IncidenceCount(EXTAG tag, const RecordKey& key) const
{
    const Records& records = All(tag);
    RecordKey first = key;
    first.inci = 0;
    uint16_t count = 0;
    for (auto record = records.lower_bound(first); record != records.end() && record->first.SameGroup(key); ++record) {
        count = static_cast<uint16_t>(record->first.inci + 1);
    }
    return count;
}

uint16_t RecordStore::NumberedRun(EXTAG tag) const
{
    auto run = runs_.find(tag);
    return run == runs_.end() ? 0 : run->second;
}

void RecordStore::Added(EXTAG tag, const RecordKey& key)
{
    uint16_t run = NumberedRun(tag);
    if (!InNumberedRun(key) || key.group1 != run + 1) {
        return;   // the run from 1 is as it was
    }
    // The gap after the run is closed: the run now reaches the next gap.
    const Records& records = tags_[tag];
    while (run < kPickNumber && records.count(RecordKey::Number(static_cast<uint16_t>(run + 1))) != 0) {
        ++run;
    }
    runs_[tag] = run;
}

void RecordStore::Removed(EXTAG tag, const RecordKey& key)
{
    auto run = runs_.find(tag);
    if (run == runs_.end() || !InNumberedRun(key) || key.group1 > run->second) {
        return;
    }
    if (key.group1 == 1) {
        runs_.erase(run);
    } else {
        run->second = static_cast<uint16_t>(key.group1 - 1);
    }
}

std::vector<EXTAG> RecordStore::Tags() const
{
    std::vector<EXTAG> tags;
    for (const auto& [tag, records] : tags_) {
        if (!records.empty()) {
            tags.push_back(tag);
        }
    }
    return tags;
}

}   // namespace stavio
