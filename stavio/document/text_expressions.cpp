#include "stavio/document/text_expressions.h"

#include "sdk/tags.h"

#include <cstring>

namespace stavio {

namespace {
constexpr EVERSION kMeasureSpecVersion = 0x0A000000;
}

std::vector<uint8_t> EncodeTextExpression(const TextExpressionDef& definition)
{
    std::vector<uint8_t> bytes(sizeof(definition.header) + definition.text.size() + 1, 0);
    std::memcpy(bytes.data(), &definition.header, sizeof(definition.header));
    std::memcpy(bytes.data() + sizeof(definition.header), definition.text.data(), definition.text.size());
    return bytes;
}

std::optional<TextExpressionDef> ReadTextExpression(const Document& doc, int number)
{
    if (number < 1 || number >= kPickNumber) {
        return std::nullopt;
    }
    const auto* bytes = doc.Records().Find(kTagTextExpression, RecordKey::Other(static_cast<uint16_t>(number), 0));
    if (bytes == nullptr || bytes->size() <= sizeof(EDTTextExpressionHeader)) {
        return std::nullopt;
    }
    TextExpressionDef definition;
    std::memcpy(&definition.header, bytes->data(), sizeof(definition.header));
    const char* text = reinterpret_cast<const char*>(bytes->data()) + sizeof(definition.header);
    definition.text.assign(text, strnlen(text, bytes->size() - sizeof(definition.header)));
    return definition;
}

bool WriteTextExpression(Document& doc, int number, const TextExpressionDef& definition)
{
    if (number < 1 || number >= kPickNumber) {
        return false;
    }
    const std::vector<uint8_t> bytes = EncodeTextExpression(definition);
    EDataID key{};
    key.other.cmper = static_cast<uint16_t>(number);
    return doc.SaveRecord(kTagTextExpression, &key, bytes.data(), static_cast<int32_t>(bytes.size()),
                          kPluginApiVersion) != 0;
}

EDTGeneric ExpressionAssignmentFor(int16_t expression, int32_t inst)
{
    EDTGeneric assignment{};
    assignment.words[0] = expression;
    assignment.words[2] = kExpressionOffset;
    assignment.words[5] = static_cast<int16_t>(static_cast<uint16_t>(inst) | kExpressionOnStaff);
    return assignment;
}

bool AssignmentOnStaff(const EDTGeneric& assignment, int32_t inst)
{
    const auto staffWord = static_cast<uint16_t>(assignment.words[5]);
    return (staffWord & kExpressionOnStaff) != 0 && (staffWord & kExpressionNotStaff) == 0 &&
           (staffWord & kExpressionStaffMask) == inst;
}

std::vector<EDTGeneric> ExpressionAssignments(const Document& doc, int meas)
{
    std::vector<EDTGeneric> assignments;
    if (meas < 1 || meas >= kPickNumber) {
        return assignments;
    }
    for (uint16_t inci = 0; inci < kAppendIncidence; ++inci) {
        EDTGeneric assignment{};
        if (!doc.Read(kTagExpressionAssign, RecordKey::Other(static_cast<uint16_t>(meas), inci), assignment)) {
            break;
        }
        assignments.push_back(assignment);
    }
    return assignments;
}

bool AddExpressionAssignment(Document& doc, int meas, const EDTGeneric& assignment)
{
    EDTMeasureSpec2005 spec{};
    const RecordKey specKey = RecordKey::Other(static_cast<uint16_t>(meas), 0);
    if (meas < 1 || meas >= kPickNumber || !doc.Read(kTagMeasureSpec, specKey, spec, kMeasureSpecVersion)) {
        return false;
    }
    EDataID key{};
    key.other.cmper = static_cast<uint16_t>(meas);
    key.other.inci = -1;
    if (doc.CreateRecord(kTagExpressionAssign, &key, &assignment, sizeof(assignment), kPluginApiVersion) == 0) {
        return false;
    }
    spec.meflag |= kMeasureMeflagHasExpressions;
    return doc.Write(kTagMeasureSpec, specKey, spec, kMeasureSpecVersion);
}

}   // namespace stavio
