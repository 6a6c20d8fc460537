#include "tamberlyne/midi/midi_events.h"

#include <iterator>

const LEventRec& EventQueue::back() const
{
    return barrierOnward_.empty() ? std::prev(sorted_.end())->second : barrierOnward_.back();
}

std::vector<LEventRec> EventQueue::ToVector() const
{
    std::vector<LEventRec> all;
    all.reserve(size());
    for (const auto& entry : sorted_) all.push_back(entry.second);
    all.insert(all.end(), barrierOnward_.begin(), barrierOnward_.end());
    return all;
}

void EventQueue::Add(const LEventRec& ev)
{
    if (size() >= limit_) return;
    if (empty() || (back().Tick <= ev.Tick && !back().stop)) {
        // Appending: to the sorted run while no barrier exists, else behind everything.
        if (barrierOnward_.empty() && !ev.stop) {
            sorted_.emplace_hint(sorted_.end(), ev.Tick, ev);
        } else {
            barrierOnward_.push_back(ev);
        }
        return;
    }
    AddBeforeFirstBarrier(ev);
}

// The walk from the front stops at the first record later than ev or at the first barrier,
// whichever comes first; ev goes in before it unless it is a barrier earlier than ev.
void EventQueue::AddBeforeFirstBarrier(const LEventRec& ev)
{
    auto later = sorted_.upper_bound(ev.Tick);
    if (later == sorted_.end()) {
        const LEventRec& barrier = barrierOnward_.front();
        if (ev.Tick > barrier.Tick) return;
        if (ev.stop) {
            barrierOnward_.push_front(ev);
        } else {
            sorted_.emplace_hint(sorted_.end(), ev.Tick, ev);
        }
        return;
    }
    if (!ev.stop) {
        sorted_.emplace_hint(later, ev.Tick, ev);
        return;
    }
    // A barrier inside the sorted run: it and every later record move behind it, in order.
    for (auto it = sorted_.end(); it != later;) {
        --it;
        barrierOnward_.push_front(it->second);
    }
    barrierOnward_.push_front(ev);
    sorted_.erase(later, sorted_.end());
}

void EventQueue::MarkLastAsStop()
{
    if (empty()) return;
    if (!barrierOnward_.empty()) {
        barrierOnward_.back().stop = true;
        return;
    }
    auto last = std::prev(sorted_.end());
    LEventRec record = last->second;
    record.stop = true;
    sorted_.erase(last);
    barrierOnward_.push_back(record);
}
