// Text expressions as the host keeps them: definitions ('SODT' (n, 0): the 12-byte header
// EDTTextExpressionHeader, then the text and its terminating zero) and their assignments to a
// staff at a measure ('otDY' (measure, incidence), six words).
#pragma once

#include "sdk/records.h"
#include "stavio/document/document.h"

#include <optional>
#include <string>
#include <vector>

namespace stavio {

// Word 5 of an assignment: the instrument with kExpressionOnStaff set; an assignment with a bit
// of kExpressionNotStaff set belongs to no single staff.
constexpr uint16_t kExpressionOnStaff = 0x1000;
constexpr uint16_t kExpressionNotStaff = 0x6000;
constexpr uint16_t kExpressionStaffMask = 0x03FF;
constexpr int16_t kExpressionOffset = 76;   // horizontal offset written with a new assignment

struct TextExpressionDef {
    EDTTextExpressionHeader header{};
    std::string text;
};

std::vector<uint8_t> EncodeTextExpression(const TextExpressionDef& definition);
std::optional<TextExpressionDef> ReadTextExpression(const Document& doc, int number);
bool WriteTextExpression(Document& doc, int number, const TextExpressionDef& definition);

// An assignment of expression `expression` to staff `inst`: (expression, 0, 76, 0, 0, inst | 0x1000).
EDTGeneric ExpressionAssignmentFor(int16_t expression, int32_t inst);
// Whether an assignment belongs to staff `inst`.
bool AssignmentOnStaff(const EDTGeneric& assignment, int32_t inst);
// The assignments of a measure, incidence 0 first.
std::vector<EDTGeneric> ExpressionAssignments(const Document& doc, int meas);
// Appends an assignment to the measure and marks the measure as carrying expressions.
bool AddExpressionAssignment(Document& doc, int meas, const EDTGeneric& assignment);

}   // namespace stavio
