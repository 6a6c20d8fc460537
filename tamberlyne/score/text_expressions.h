// Text expression definitions ('SODT': a 12-byte header, then the zero-terminated text) and
// their assignments to one staff at one measure ('otDY').
#pragma once

#include "sdk/records.h"

// Cleans `text` in place (line feeds removed, carriage returns made blanks), then returns the
// number of an expression of the same length and playback type among 1..999, or of a new one.
// -1 when the new one cannot be built or the host refuses it.
int CreateTextExpression(char* text, int16_t font, int16_t size, int16_t type);

// The playback type stored in expression `number`'s header; false when it does not load.
bool ExpressionPlaybackType(int number, int16_t& type);

// An expression assignment as six words; word 5 is the staff word.
constexpr uint16_t kAssignOnStaff = 0x1000;
constexpr uint16_t kAssignNotStaffBits = 0x6000;
constexpr uint16_t kAssignStaffMask = 0x03FF;
constexpr int16_t kAssignHorizontalOffset = 76;

// True when the assignment is attached to staff `inst`.
bool AssignmentBelongsToStaff(const EDTGeneric& assignment, int inst);

bool LoadExpressionAssignment(int meas, int inci, EDTGeneric& assignment);
