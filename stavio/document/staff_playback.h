// How each staff plays: its instrument usage (0x4F02504C, key (instrument, 0)) points with
// `a` at a channel definition ('otOC' a + 1, word 0 = channel code, word 1 = General MIDI
// program) that has a name ('otoc', 12 bytes of text). Every staff the document makes gets a channel definition of its own.
#pragma once

#include "stavio/document/document.h"

#include <optional>
#include <string>

namespace stavio {

// A channel code is a 16-bit word of flags: the low bits the MIDI channel counted from 0, the top
// bit the host's drum mark. It is stored in the signed word 0 of the definition; the host reads
// and writes it as the unsigned bit pattern it is.
constexpr uint16_t kChannel10Code = 9;                                    // MIDI channel 10 counted from 0
constexpr uint16_t kDrumChannelBit = 0x8000;                              // the host's drum mark
constexpr uint16_t kDrumChannelCode = kDrumChannelBit | kChannel10Code;   // 0x8009
constexpr size_t kChannelNameSize = 12;

// Both forms mean MIDI channel 10: the plain code a plug-in writes (9) and the host's own drum
// form with the drum bit (0x8009).
constexpr bool PlaysOnChannel10(uint16_t code)
{
    return (code & ~kDrumChannelBit) == kChannel10Code;
}

// The channel code of channel definition `definition` (1, 2, ...) in a new document: MIDI
// channels 1, 2, 3 ... counted from 0, skipping 9 (the drums), after 15 starting over at 0.
uint16_t DefaultChannelCode(int32_t definition);

// "Staff 3": the channel name of a staff made without one.
std::string DefaultStaffName(int32_t inst);

// Gives a staff a new channel definition (the next free number, DefaultChannelCode) named
// `name` and an instrument usage whose `a` to `f` point at it. Returns the definition's number,
// 0 when the staff does not exist or no definition could be made.
int32_t AddStaffPlayback(Document& doc, int32_t inst, const std::string& name);

// The number of the staff's channel definition (its usage's `a` + 1); 0 without a usage.
int32_t StaffChannelDefinition(const Document& doc, int32_t inst);

std::optional<uint16_t> ChannelCode(const Document& doc, int32_t definition);
bool SetChannelCode(Document& doc, int32_t definition, uint16_t code);
// The General MIDI program a channel definition plays (word 1: 1..128, 0 when none is set, which
// plays as program 1).
int16_t ChannelProgram(const Document& doc, int32_t definition);
bool SetChannelProgram(Document& doc, int32_t definition, int16_t program);
// The name, at most 12 characters ("" when the definition has no name record).
std::string ChannelName(const Document& doc, int32_t definition);
// Writes the name record, cut to 12 bytes and padded with zeros.
bool SetChannelName(Document& doc, int32_t definition, const std::string& name);

// Adds channel definitions (named "Channel n") until every number 1..99 is in use, none of them
// with code 9: a document in which the drum channel has no definition left to take.
void FillChannelDefinitions(Document& doc);

}   // namespace stavio
