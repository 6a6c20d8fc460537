#include "toolbox/events.h"

#include <atomic>
#include <chrono>

namespace toolbox {

namespace {

std::atomic<uint32_t> gDoubleClickInterval{500};

}   // namespace

uint64_t NowMilliseconds()
{
    using namespace std::chrono;
    return static_cast<uint64_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

uint32_t DoubleClickInterval()
{
    return gDoubleClickInterval.load();
}

void SetDoubleClickInterval(uint32_t milliseconds)
{
    gDoubleClickInterval.store(milliseconds);
}

}   // namespace toolbox
