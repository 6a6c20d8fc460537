// 32-bit arithmetic as the MIDI reader needs it on hostile input: sums and products wrap the
// way 32-bit registers do (defined behaviour, same result as plain arithmetic whenever that
// does not overflow), divisions by zero give 0, positions saturate instead of overflowing.
#pragma once

#include <cstdint>
#include <limits>

namespace midi_arith {

inline int32_t Wrap(int64_t value)
{
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(value)));
}

inline int32_t WrapAdd(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t WrapSub(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

inline int32_t WrapMul(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Truncating division; a zero divisor gives 0 and INT32_MIN / -1 wraps.
inline int32_t SafeDiv(int32_t a, int32_t b)
{
    if (b == 0) return 0;
    if (b == -1) return WrapSub(0, a);
    return a / b;
}

// True when a is a whole multiple of b; with b = 0 only 0 counts as one.
inline bool IsMultiple(int32_t a, int32_t b)
{
    if (b == 0) return a == 0;
    if (b == -1) return true;
    return a % b == 0;
}

// Adds to a non-negative count or position, stopping at INT32_MAX.
inline int32_t SaturatingAdd(int32_t a, int64_t b)
{
    const int64_t sum = static_cast<int64_t>(a) + b;
    if (sum > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    if (sum < std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(sum);
}

}   // namespace midi_arith
