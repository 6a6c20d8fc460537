// What a front end tells the model about a person's input: modifier keys, the mouse-down message
// words, the clock and the double-click interval.
#pragma once

#include <cstdint>

namespace toolbox {

// Modifier keys held during a click, as a set of bits.
using Modifiers = uint16_t;
constexpr Modifiers kNoModifiers = 0;
constexpr Modifiers kCommandKey = 0x0100;
constexpr Modifiers kShiftKey = 0x0200;
constexpr Modifiers kOptionKey = 0x0800;
constexpr Modifiers kControlKey = 0x1000;

// The mouse-down message carries x in its first word and y in the low 16 bits of its second,
// with the modifier keys in the 16 bits above. These pack and unpack the second word.
constexpr intptr_t PackMouseDownWord(int y, Modifiers modifiers)
{
    return static_cast<intptr_t>(static_cast<uint16_t>(y)) | (static_cast<intptr_t>(modifiers) << 16);
}
constexpr int MouseDownY(intptr_t word)
{
    return static_cast<int16_t>(static_cast<uint16_t>(word & 0xFFFF));
}
constexpr Modifiers MouseDownModifiers(intptr_t word)
{
    return static_cast<Modifiers>((word >> 16) & 0xFFFF);
}

// Milliseconds of a clock that never goes back (its start is arbitrary). Event times and timer
// times are numbers of this clock; tests pass numbers of their own instead.
uint64_t NowMilliseconds();

// The longest time between two clicks on the same list cell that makes them a double click.
// One setting for the process, 500 ms unless changed.
uint32_t DoubleClickInterval();
void SetDoubleClickInterval(uint32_t milliseconds);

}   // namespace toolbox
