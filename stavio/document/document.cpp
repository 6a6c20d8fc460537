#include "stavio/document/document.h"

#include "sdk/tags.h"
#include "stavio/document/canonical.h"
#include "stavio/document/host_defaults.h"
#include "stavio/document/staff_playback.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace stavio {

namespace {

template <typename Record>
Record RecordFrom(const RecordStore::Bytes& bytes)
{
    Record record{};
    std::memcpy(&record, bytes.data(), std::min(sizeof(Record), bytes.size()));
    return record;
}

template <typename Record>
RecordStore::Bytes BytesFrom(const Record& record)
{
    RecordStore::Bytes bytes(sizeof(Record));
    std::memcpy(bytes.data(), &record, sizeof(Record));
    return bytes;
}

bool HasIncidences(KeyKind kind)
{
    return kind != KeyKind::Number;
}

// A read (load, next, previous) that the document takes: the tag, and the layout it names. A
// variable-size tag has none and needs none.
struct ReadRequest {
    const TagLayouts* tag = nullptr;
    const RecordLayout* layout = nullptr;
};

// Nothing when an argument is missing or the tag or its (size, version) is unknown.
std::optional<ReadRequest> ResolveRead(const LayoutRegistry& registry, EXTAG tag, const EDataID* key,
                                       const void* buffer, const int32_t* size, EVERSION version)
{
    const TagLayouts* known = registry.FindTag(tag);
    if (key == nullptr || size == nullptr || known == nullptr) {
        return std::nullopt;
    }
    if (known->variableSize) {
        return ReadRequest{known, nullptr};
    }
    const RecordLayout* layout =
        buffer != nullptr ? registry.FindLayout(tag, *size, version) : registry.LayoutForQuery(tag, *size, version);
    if (layout == nullptr) {
        return std::nullopt;
    }
    return ReadRequest{known, layout};
}

}   // namespace

Document::Document() : Document(LayoutRegistry::Standard())
{}

Document::Document(const LayoutRegistry& registry) : registry_(&registry)
{
    InstallHostDefaults(*this);
}

// ---- Records -----------------------------------------------------------------------------------------

int32_t Document::DeliverBytes(const RecordStore::Bytes& bytes, void* buffer, int32_t* size)
{
    if (buffer == nullptr) {
        *size = static_cast<int32_t>(bytes.size());
        return 1;
    }
    if (*size < 0) {
        return 0;
    }
    const size_t count = std::min(static_cast<size_t>(*size), bytes.size());
    if (count > 0) {
        std::memcpy(buffer, bytes.data(), count);
    }
    *size = static_cast<int32_t>(count);
    return 1;
}

int32_t Document::LoadRecord(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version) const
{
    const std::optional<ReadRequest> read = ResolveRead(*registry_, tag, key, buffer, size, version);
    if (!read) {
        return 0;
    }
    const RecordStore::Bytes* canonical = records_.Find(tag, KeyFromDataId(read->tag->keyKind, *key));
    if (canonical == nullptr) {
        return 0;
    }
    if (read->layout == nullptr) {
        return DeliverBytes(*canonical, buffer, size);
    }
    if (buffer != nullptr) {
        read->layout->read(*canonical, buffer);
    }
    *size = read->layout->size;
    return 1;
}

int32_t Document::SaveRecord(EXTAG tag, const EDataID* key, const void* buffer, int32_t size, EVERSION version)
{
    const TagLayouts* known = registry_->FindTag(tag);
    if (key == nullptr || buffer == nullptr || known == nullptr || size < 0) {
        return 0;
    }
    const RecordKey recordKey = KeyFromDataId(known->keyKind, *key);
    if (HasIncidences(known->keyKind) && recordKey.inci == kAppendIncidence) {
        return 0;   // appending is what create is for
    }
    if (!known->AcceptsKey(records_, recordKey)) {
        return 0;
    }
    if (known->variableSize) {
        if (!known->AcceptsBytes(buffer, static_cast<size_t>(size))) {
            return 0;
        }
        const auto* bytes = static_cast<const uint8_t*>(buffer);
        records_.Put(tag, recordKey, RecordStore::Bytes(bytes, bytes + size));
        return 1;
    }
    const RecordLayout* layout = registry_->FindLayout(tag, size, version);
    if (layout == nullptr) {
        return 0;
    }
    const RecordStore::Bytes* existing = records_.Find(tag, recordKey);
    RecordStore::Bytes canonical = existing != nullptr ? *existing : known->DefaultRecord();
    layout->write(buffer, canonical);
    records_.Put(tag, recordKey, std::move(canonical));
    return 1;
}

int32_t Document::CreateRecord(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version)
{
    const TagLayouts* known = registry_->FindTag(tag);
    if (key == nullptr || known == nullptr || size < 0) {
        return 0;
    }
    RecordKey recordKey = KeyFromDataId(known->keyKind, *key);
    if (!known->AcceptsKey(records_, recordKey)) {
        return 0;
    }
    RecordStore::Bytes canonical;
    if (known->variableSize) {
        if (!known->AcceptsBytes(buffer, buffer != nullptr ? static_cast<size_t>(size) : 0)) {
            return 0;
        }
        if (buffer != nullptr) {
            const auto* bytes = static_cast<const uint8_t*>(buffer);
            canonical.assign(bytes, bytes + size);
        }
    } else {
        const RecordLayout* layout = registry_->FindLayout(tag, size, version);
        if (layout == nullptr) {
            return 0;
        }
        canonical = known->DefaultRecord();
        if (buffer != nullptr) {
            layout->write(buffer, canonical);
        }
    }
    if (!records_.Create(tag, known->keyKind, recordKey, std::move(canonical))) {
        return 0;
    }
    KeyToDataId(known->keyKind, recordKey, *key);
    AfterCreate(tag, recordKey);
    return 1;
}

int32_t Document::DeleteRecord(EXTAG tag, const EDataID* key, EVERSION version)
{
    (void)version;
    const TagLayouts* known = registry_->FindTag(tag);
    if (key == nullptr || known == nullptr) {
        return 0;
    }
    return records_.Delete(tag, known->keyKind, KeyFromDataId(known->keyKind, *key)) ? 1 : 0;
}

int32_t Document::NextRecord(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version) const
{
    return StepRecord(tag, key, buffer, size, version, true);
}

int32_t Document::PreviousRecord(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version) const
{
    return StepRecord(tag, key, buffer, size, version, false);
}

int32_t Document::StepRecord(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version, bool forward) const
{
    const std::optional<ReadRequest> read = ResolveRead(*registry_, tag, key, buffer, size, version);
    if (!read) {
        return 0;
    }
    const KeyKind keyKind = read->tag->keyKind;
    const RecordKey from = KeyFromDataId(keyKind, *key);
    auto step = forward ? records_.Next(tag, from) : records_.Previous(tag, from);
    if (!step) {
        return 0;
    }
    KeyToDataId(keyKind, step->first, *key);
    return LoadRecord(tag, key, buffer, size, version);
}

bool Document::Read(EXTAG tag, const RecordKey& key, void* buffer, int32_t size, EVERSION version) const
{
    const TagLayouts* known = registry_->FindTag(tag);
    if (known == nullptr) {
        return false;
    }
    EDataID id{};
    KeyToDataId(known->keyKind, key, id);
    return LoadRecord(tag, &id, buffer, &size, version) != 0;
}

bool Document::Write(EXTAG tag, const RecordKey& key, const void* buffer, int32_t size, EVERSION version)
{
    const TagLayouts* known = registry_->FindTag(tag);
    if (known == nullptr) {
        return false;
    }
    EDataID id{};
    KeyToDataId(known->keyKind, key, id);
    return SaveRecord(tag, &id, buffer, size, version) != 0;
}

void Document::AfterCreate(EXTAG tag, const RecordKey& key)
{
    if (tag != kTagStaffSpec) {
        return;
    }
    // A new staff spec is a new staff: list it last in the main list, below the last staff,
    // and give it a frame detail in every measure.
    const int32_t count = StaffCount(kMainInstrumentList);
    EDTInstrumentUsed entry{};
    entry.inst = static_cast<int16_t>(key.group1);
    if (count > 0) {
        const RecordStore::Bytes* last =
            records_.Find(kTagInstrumentUsed, RecordKey::Other(kMainInstrumentList, static_cast<uint16_t>(count - 1)));
        entry.separ = RecordFrom<EDTInstrumentUsed>(*last).separ - kStaffSpacing;
    }
    records_.Put(kTagInstrumentUsed, RecordKey::Other(kMainInstrumentList, static_cast<uint16_t>(count)),
                 BytesFrom(entry));
    const int32_t measures = MeasureCount();
    for (int32_t meas = 1; meas <= measures; ++meas) {
        const RecordKey detail = RecordKey::Detail(key.group1, static_cast<uint16_t>(meas), 0);
        if (records_.Find(kTagGfhold, detail) == nullptr) {
            records_.Put(kTagGfhold, detail, BytesFrom(FrameHoldRecord{}));
        }
    }
    AddStaffPlayback(*this, key.group1, DefaultStaffName(key.group1));
}

// ---- Score questions ----------------------------------------------------------------------------------

int32_t Document::MeasureCount() const
{
    return std::min<int32_t>(records_.NumberedRun(kTagMeasureSpec), 0xFFFE);
}

TIME_EDU Document::MeasureDuration(int32_t meas) const
{
    if (meas < 1 || meas > 0xFFFE) {
        return 0;
    }
    const RecordStore::Bytes* bytes = records_.Find(kTagMeasureSpec, RecordKey::Other(static_cast<uint16_t>(meas), 0));
    if (bytes == nullptr) {
        return 0;
    }
    const auto spec = RecordFrom<EDTMeasureSpec2005>(*bytes);
    return static_cast<TIME_EDU>(spec.beats) * spec.divbeat;
}

int32_t Document::StaffCount(uint16_t list) const
{
    return static_cast<int32_t>(records_.IncidenceCount(kTagInstrumentUsed, RecordKey::Other(list, 0)));
}

int32_t Document::SlotToInst(int32_t slot, int32_t list) const
{
    if (slot < 1 || slot > 0xFFFF || list < 0 || list > 0xFFFF) {
        return 0;
    }
    const RecordStore::Bytes* bytes = records_.Find(
        kTagInstrumentUsed, RecordKey::Other(static_cast<uint16_t>(list), static_cast<uint16_t>(slot - 1)));
    return bytes == nullptr ? 0 : RecordFrom<EDTInstrumentUsed>(*bytes).inst;
}

int32_t Document::InstToSlot(int32_t inst, int32_t list) const
{
    if (inst <= 0 || list < 0 || list > 0xFFFF) {
        return 0;
    }
    for (const auto& [key, bytes] : records_.All(kTagInstrumentUsed)) {
        if (key.group1 == list && RecordFrom<EDTInstrumentUsed>(bytes).inst == inst) {
            return key.inci + 1;
        }
    }
    return 0;
}

EREGION Document::WholeRegion() const
{
    EREGION region{};
    region.start.IUlist = kMainInstrumentList;
    region.start.IUslot = 1;
    region.start.meas = 1;
    region.start.duraPos = 0;
    region.end.IUlist = kMainInstrumentList;
    region.end.IUslot = static_cast<uint16_t>(StaffCount(kMainInstrumentList));
    region.end.meas = static_cast<uint16_t>(MeasureCount());
    region.end.duraPos = kEndOfMeasure;
    return region;
}

int32_t Document::AddStaff()
{
    RecordKey key = RecordKey::Other(kPickNumber, 0);
    const TagLayouts* known = registry_->FindTag(kTagStaffSpec);
    if (known == nullptr || !records_.Create(kTagStaffSpec, KeyKind::Other, key, known->DefaultRecord())) {
        return 0;
    }
    AfterCreate(kTagStaffSpec, key);
    return key.group1;
}

bool Document::StaffExists(int32_t inst) const
{
    return inst >= 1 && inst < kPickNumber &&
           records_.Find(kTagStaffSpec, RecordKey::Other(static_cast<uint16_t>(inst), 0)) != nullptr;
}

bool Document::MeasureExists(int32_t meas) const
{
    return meas >= 1 && meas < kPickNumber &&
           records_.Find(kTagMeasureSpec, RecordKey::Other(static_cast<uint16_t>(meas), 0)) != nullptr;
}

bool Document::FrameNumbers(int32_t inst, int32_t meas, int16_t frames[kMaxLayers]) const
{
    const RecordStore::Bytes* bytes =
        records_.Find(kTagGfhold, RecordKey::Detail(static_cast<uint16_t>(inst), static_cast<uint16_t>(meas), 0));
    if (bytes == nullptr) {
        return false;
    }
    const auto held = RecordFrom<FrameHoldRecord>(*bytes);
    std::copy(held.frame, held.frame + kMaxLayers, frames);
    return true;
}

bool Document::SetFrameNumbers(int32_t inst, int32_t meas, const int16_t frames[kMaxLayers])
{
    if (inst < 1 || inst > 0xFFFE || meas < 1 || meas > 0xFFFE) {
        return false;
    }
    const RecordKey key = RecordKey::Detail(static_cast<uint16_t>(inst), static_cast<uint16_t>(meas), 0);
    const RecordStore::Bytes* bytes = records_.Find(kTagGfhold, key);
    FrameHoldRecord held = bytes != nullptr ? RecordFrom<FrameHoldRecord>(*bytes) : FrameHoldRecord{};
    std::copy(frames, frames + kMaxLayers, held.frame);
    records_.Put(kTagGfhold, key, BytesFrom(held));
    return true;
}

// ---- Edit brackets --------------------------------------------------------------------------------------

int32_t Document::StartEdit(const std::string& undoName)
{
    history_.Start(undoName, records_);
    return 1;
}

int32_t Document::EndEdit()
{
    return history_.End() ? 1 : 0;
}

void Document::CancelEdit()
{
    history_.Cancel(records_);
}

bool Document::Undo()
{
    return history_.Undo(records_);
}

bool Document::Redo()
{
    return history_.Redo(records_);
}

}   // namespace stavio
