// Duration arithmetic on EDU values: the integer base-2 logarithm and the undotted base of a
// possibly dotted duration.
#pragma once

#include <cmath>
#include <cstdint>

// The integer part of log2(n). The small addend keeps exact powers of two from rounding down
// through the floating-point logarithm. 0 for n below 1.
inline int32_t IntLog2(int32_t n)
{
    if (n < 1) {
        return 0;
    }
    return static_cast<int32_t>(std::log(static_cast<double>(n)) / std::log(2.0) + 1e-8);
}

// The largest power of two not above n (0 for n below 1): 1024 for a quarter, also for a dotted
// quarter of 1536. A duration equal to its own DotsBase is a plain (undotted) one.
inline int32_t DotsBase(int32_t n)
{
    if (n < 1) {
        return 0;
    }
    return int32_t{1} << IntLog2(n);
}
