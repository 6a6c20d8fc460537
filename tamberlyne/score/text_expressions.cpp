#include "tamberlyne/score/text_expressions.h"

#include "sdk/tags.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/host/versioned_records.h"

#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr int kFirstExpression = 1;
constexpr int kLastExpression = 999;
constexpr int32_t kHeaderSize = sizeof(EDTTextExpressionHeader);
constexpr int32_t kSpareBytes = 2;   // allocated beyond the header, text and terminator

void CleanLineBreaks(char* text)
{
    char* out = text;
    for (const char* in = text; *in != '\0'; ++in) {
        if (*in == '\n') {
            continue;
        }
        *out++ = (*in == '\r') ? ' ' : *in;
    }
    *out = '\0';
}

// Loads the whole definition; false when it does not exist or holds no header.
bool LoadExpression(int number, std::vector<char>& bytes)
{
    int32_t size = 0;
    if (!sx_loadtextexpression(static_cast<int16_t>(number), nullptr, size, kPluginApiVersion) || size < kHeaderSize) {
        return false;
    }
    bytes.assign(static_cast<size_t>(size), 0);
    return sx_loadtextexpression(static_cast<int16_t>(number), bytes.data(), size, kPluginApiVersion) &&
           size >= kHeaderSize;
}

EDTTextExpressionHeader HeaderOf(const std::vector<char>& bytes)
{
    EDTTextExpressionHeader header{};
    std::memcpy(&header, bytes.data(), sizeof(header));
    return header;
}

}   // namespace

int CreateTextExpression(char* text, int16_t font, int16_t size, int16_t type)
{
    CleanLineBreaks(text);
    const auto length = static_cast<int32_t>(std::strlen(text));
    const int32_t storedSize = kHeaderSize + length + 1;

    // Same length and type is taken as the same expression; the text itself is not compared.
    for (int number = kFirstExpression; number <= kLastExpression; ++number) {
        int32_t found = 0;
        if (!sx_loadtextexpression(static_cast<int16_t>(number), nullptr, found, kPluginApiVersion)) {
            break;
        }
        std::vector<char> bytes;
        if (found == storedSize && LoadExpression(number, bytes) && HeaderOf(bytes).playbackType == type) {
            return number;
        }
    }

    const auto bufferSize = static_cast<size_t>(storedSize + kSpareBytes);
    std::unique_ptr<char[]> buffer(new (std::nothrow) char[bufferSize]());
    if (!buffer) {
        return -1;
    }
    EDTTextExpressionHeader header{};
    header.font = font;
    header.sizeEfx = size;
    header.playbackType = type;
    std::memcpy(buffer.get(), &header, sizeof(header));
    std::memcpy(buffer.get() + kHeaderSize, text, static_cast<size_t>(length) + 1);
    EDataID key{};
    key.other.cmper = kNewRecordNumber;
    key.other.inci = 0;
    if (SX_CreateEData(kTagTextExpression, &key, buffer.get(), storedSize, kPluginApiVersion) == 0) {
        return -1;
    }
    return key.other.cmper;
}

bool ExpressionPlaybackType(int number, int16_t& type)
{
    std::vector<char> bytes;
    if (!LoadExpression(number, bytes)) {
        return false;
    }
    type = HeaderOf(bytes).playbackType;
    return true;
}

bool AssignmentBelongsToStaff(const EDTGeneric& assignment, int inst)
{
    const auto staffWord = static_cast<uint16_t>(assignment.words[5]);
    return (staffWord & kAssignOnStaff) != 0 && (staffWord & kAssignNotStaffBits) == 0 &&
           (staffWord & kAssignStaffMask) == inst;
}

bool LoadExpressionAssignment(int meas, int inci, EDTGeneric& assignment)
{
    assignment = EDTGeneric{};
    return sx_loadother(kTagExpressionAssign, meas, inci, &assignment, sizeof(assignment), kPluginApiVersion);
}
