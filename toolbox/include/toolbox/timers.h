// Periodic timers of a dialog. The host's event loop asks which timers are due and sends one
// timer message for each; time is passed in (NowMilliseconds or a test's clock).
#pragma once

#include "toolbox/errors.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace toolbox {

struct RunningTimer {
    int32_t id = 0;
    int32_t periodMs = 0;
    uint64_t dueMs = 0;   // when it fires next
};

class TimerSet {
public:
    // Starts timer `id`, first due `periodMs` after `nowMs`. Starting a timer that runs already
    // restarts it with the new period. kParamErr for a negative period, kMemFull when memory
    // runs out.
    OSErr Start(int32_t id, int32_t periodMs, uint64_t nowMs) noexcept;
    // kParamErr when no timer of that id runs.
    OSErr Kill(int32_t id) noexcept;
    void KillAll() { timers_.clear(); }
    bool IsRunning(int32_t id) const;

    // In the order they were started.
    const std::vector<RunningTimer>& Running() const { return timers_; }

    // The ids of the timers due at `nowMs`, earliest first (ties in the order they were started).
    // Each fires once however many periods have passed and is next due a period after `nowMs`.
    std::vector<int32_t> TakeDue(uint64_t nowMs) noexcept;
    // When the next timer is due; nothing when none runs.
    std::optional<uint64_t> NextDue() const;

private:
    std::vector<RunningTimer> timers_;
};

}   // namespace toolbox
