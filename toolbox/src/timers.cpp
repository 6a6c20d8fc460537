#include "toolbox/timers.h"

#include <algorithm>

namespace toolbox {

OSErr TimerSet::Start(int32_t id, int32_t periodMs, uint64_t nowMs) noexcept
{
    if (periodMs < 0) return kParamErr;
    const RunningTimer timer{id, periodMs, nowMs + static_cast<uint64_t>(periodMs)};
    for (RunningTimer& running : timers_) {
        if (running.id == id) {
            running = timer;
            return kNoErr;
        }
    }
    try {
        timers_.push_back(timer);
    } catch (...) {
        return kMemFull;
    }
    return kNoErr;
}

OSErr TimerSet::Kill(int32_t id) noexcept
{
    const auto found = std::find_if(timers_.begin(), timers_.end(), [id](const RunningTimer& t) { return t.id == id; });
    if (found == timers_.end()) return kParamErr;
    timers_.erase(found);
    return kNoErr;
}

bool TimerSet::IsRunning(int32_t id) const
{
    return std::any_of(timers_.begin(), timers_.end(), [id](const RunningTimer& t) { return t.id == id; });
}

std::vector<int32_t> TimerSet::TakeDue(uint64_t nowMs) noexcept
{
    try {
        std::vector<const RunningTimer*> due;
        for (const RunningTimer& timer : timers_) {
            if (timer.dueMs <= nowMs) due.push_back(&timer);
        }
        std::stable_sort(due.begin(), due.end(),
                         [](const RunningTimer* a, const RunningTimer* b) { return a->dueMs < b->dueMs; });
        std::vector<int32_t> ids;
        ids.reserve(due.size());
        for (const RunningTimer* timer : due) ids.push_back(timer->id);
        // Re-armed only once the answer is complete, so that a failure leaves every timer due.
        for (RunningTimer& timer : timers_) {
            if (timer.dueMs <= nowMs) timer.dueMs = nowMs + static_cast<uint64_t>(timer.periodMs);
        }
        return ids;
    } catch (...) {
        return {};
    }
}

std::optional<uint64_t> TimerSet::NextDue() const
{
    std::optional<uint64_t> next;
    for (const RunningTimer& timer : timers_) {
        if (!next || timer.dueMs < *next) next = timer.dueMs;
    }
    return next;
}

}   // namespace toolbox
