#include "stavio/document_builder.h"

#include "sdk/tags.h"
#include "stavio/document/canonical.h"

namespace stavio {

namespace {
constexpr EVERSION kMeasureSpecVersion = 0x0A000000;   // the 26-byte layout
constexpr EVERSION kTextBlockVersion = 0x09000000;     // the 26-byte layout
constexpr EVERSION kStaffSpecVersion = 0x08000000;     // the 102-byte layout
}  // namespace

DocumentBuilder& DocumentBuilder::Measures(int count, int16_t beats, int16_t divbeat)
{
    measureCount_ = count;
    meters_[1] = Meter{beats, divbeat};
    return *this;
}

DocumentBuilder& DocumentBuilder::TimeSignatureFrom(int meas, int16_t beats, int16_t divbeat)
{
    meters_[meas] = Meter{beats, divbeat};
    return *this;
}

DocumentBuilder& DocumentBuilder::Staff(const std::string& fullName, const std::string& abbreviatedName)
{
    staves_.push_back(StaffNames{fullName, abbreviatedName});
    return *this;
}

DocumentBuilder& DocumentBuilder::MeasureFlags(int meas, uint16_t auxflag)
{
    auxflags_[meas] = auxflag;
    return *this;
}

Document DocumentBuilder::Build() const
{
    Document doc;
    for (int meas = 1; meas <= measureCount_; ++meas) {
        EDTMeasureSpec2005 spec = DefaultMeasureSpec();
        auto meter = meters_.upper_bound(meas);
        if (meter != meters_.begin()) {
            --meter;
            spec.beats = meter->second.beats;
            spec.divbeat = meter->second.divbeat;
        }
        auto flags = auxflags_.find(meas);
        if (flags != auxflags_.end()) {
            spec.auxflag = flags->second;
        }
        doc.Write(kTagMeasureSpec, RecordKey::Other(static_cast<uint16_t>(meas), 0), spec, kMeasureSpecVersion);
    }
    for (const StaffNames& names : staves_) {
        const int32_t inst = doc.AddStaff();
        const RecordKey key = RecordKey::Other(static_cast<uint16_t>(inst), 0);
        EDTStaffSpec2003 spec{};
        doc.Read(kTagStaffSpec, key, spec, kStaffSpecVersion);
        if (!names.full.empty()) {
            spec.fullName = AddTextBlock(doc, names.full);
        }
        if (!names.abbreviated.empty()) {
            spec.abbrvName = AddTextBlock(doc, names.abbreviated);
        }
        doc.Write(kTagStaffSpec, key, spec, kStaffSpecVersion);
    }
    return doc;
}

int16_t AddTextBlock(Document& doc, const std::string& text)
{
    EDataID textKey{};
    textKey.text.textnum = kPickNumber;
    if (doc.CreateRecord(kTagTextBody, &textKey, text.data(), static_cast<int32_t>(text.size()),
                         kPluginApiVersion) == 0) {
        return 0;
    }
    EDTTextBlock2004 block{};
    block.textID = static_cast<int16_t>(textKey.text.textnum);
    block.lineSpacingPercent = 100;
    EDataID blockKey{};
    blockKey.other.cmper = kPickNumber;
    blockKey.other.inci = 0;
    if (doc.CreateRecord(kTagTextBlock, &blockKey, &block, sizeof(block), kTextBlockVersion) == 0) {
        return 0;
    }
    return static_cast<int16_t>(blockKey.other.cmper);
}

std::string TextBlockText(const Document& doc, int16_t block)
{
    EDTTextBlock2004 spec{};
    if (block <= 0 || !doc.Read(kTagTextBlock, RecordKey::Other(static_cast<uint16_t>(block), 0), spec,
                                kTextBlockVersion)) {
        return {};
    }
    const auto* bytes = doc.Records().Find(kTagTextBody, RecordKey::Number(static_cast<uint16_t>(spec.textID)));
    return bytes == nullptr ? std::string() : std::string(bytes->begin(), bytes->end());
}

}  // namespace stavio
