#include "stavio/document/staff_playback.h"

#include "sdk/tags.h"

#include <algorithm>
#include <cstring>

namespace stavio {

namespace {

constexpr int32_t kLastNumberedChannel = 99;

RecordKey DefinitionKey(int32_t definition)
{
    return RecordKey::Other(static_cast<uint16_t>(definition), 0);
}

bool ValidDefinition(int32_t definition)
{
    return definition >= 1 && definition < kPickNumber;
}

}   // namespace

uint16_t DefaultChannelCode(int32_t definition)
{
    static constexpr uint16_t kCodes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15};
    constexpr int32_t kCount = static_cast<int32_t>(sizeof(kCodes) / sizeof(kCodes[0]));
    const int32_t index = definition < 1 ? 0 : (definition - 1) % kCount;
    return kCodes[index];
}

std::string DefaultStaffName(int32_t inst)
{
    return "Staff " + std::to_string(inst);
}

int32_t AddStaffPlayback(Document& doc, int32_t inst, const std::string& name)
{
    if (!doc.StaffExists(inst)) {
        return 0;
    }
    EDataID key{};
    key.other.cmper = kPickNumber;
    EDTGeneric definition{};
    if (doc.CreateRecord(kTagChannelDef, &key, &definition, sizeof(definition), kPluginApiVersion) == 0) {
        return 0;
    }
    const int32_t number = key.other.cmper;
    SetChannelCode(doc, number, DefaultChannelCode(number));
    SetChannelName(doc, number, name);

    EDTInstrumentUsage usage{};
    const auto pointer = static_cast<int16_t>(number - 1);
    usage.a = usage.b = usage.c = usage.d = usage.e = usage.f = pointer;
    doc.Write(kTagInstrumentUsage, RecordKey::Other(static_cast<uint16_t>(inst), 0), usage, kInstrumentUsageVersion);
    return number;
}

int32_t StaffChannelDefinition(const Document& doc, int32_t inst)
{
    EDTInstrumentUsage usage{};
    if (inst < 1 || inst >= kPickNumber ||
        !doc.Read(kTagInstrumentUsage, RecordKey::Other(static_cast<uint16_t>(inst), 0), usage,
                  kInstrumentUsageVersion)) {
        return 0;
    }
    return usage.a + 1;
}

std::optional<uint16_t> ChannelCode(const Document& doc, int32_t definition)
{
    EDTGeneric record{};
    if (!ValidDefinition(definition) || !doc.Read(kTagChannelDef, DefinitionKey(definition), record)) {
        return std::nullopt;
    }
    return static_cast<uint16_t>(record.words[0]);
}

bool SetChannelCode(Document& doc, int32_t definition, uint16_t code)
{
    if (!ValidDefinition(definition)) {
        return false;
    }
    EDTGeneric record{};
    doc.Read(kTagChannelDef, DefinitionKey(definition), record);
    record.words[0] = static_cast<int16_t>(code);
    return doc.Write(kTagChannelDef, DefinitionKey(definition), record);
}

int16_t ChannelProgram(const Document& doc, int32_t definition)
{
    EDTGeneric record{};
    if (!ValidDefinition(definition) || !doc.Read(kTagChannelDef, DefinitionKey(definition), record)) {
        return 0;
    }
    return record.words[1];
}

bool SetChannelProgram(Document& doc, int32_t definition, int16_t program)
{
    EDTGeneric record{};
    if (!ValidDefinition(definition) || !doc.Read(kTagChannelDef, DefinitionKey(definition), record)) {
        return false;
    }
    record.words[1] = program;
    return doc.Write(kTagChannelDef, DefinitionKey(definition), record);
}

std::string ChannelName(const Document& doc, int32_t definition)
{
    char text[kChannelNameSize] = {};
    if (!ValidDefinition(definition) ||
        !doc.Read(kTagChannelDefName, DefinitionKey(definition), text, sizeof(text), kPluginApiVersion)) {
        return {};
    }
    return std::string(text, strnlen(text, sizeof(text)));
}

bool SetChannelName(Document& doc, int32_t definition, const std::string& name)
{
    if (!ValidDefinition(definition)) {
        return false;
    }
    char text[kChannelNameSize] = {};
    std::memcpy(text, name.data(), std::min(name.size(), sizeof(text)));
    return doc.Write(kTagChannelDefName, DefinitionKey(definition), text, sizeof(text), kPluginApiVersion);
}

void FillChannelDefinitions(Document& doc)
{
    for (int32_t number = 1; number <= kLastNumberedChannel; ++number) {
        if (ChannelCode(doc, number)) {
            continue;
        }
        SetChannelCode(doc, number, DefaultChannelCode(number));
        SetChannelName(doc, number, "Channel " + std::to_string(number));
    }
}

}   // namespace stavio
