// Every record layout the host knows. To teach the host a new record, add its tag here: key
// kind, canonical size, and one (size, versions) layout per form callers may use.
#include "sdk/records.h"
#include "sdk/tags.h"
#include "stavio/document/canonical.h"
#include "stavio/document/layouts.h"

#include <cstring>

namespace stavio {

namespace {

constexpr size_t kTextExpressionHeaderSize = sizeof(EDTTextExpressionHeader);

template <typename Record>
Bytes BytesOf(const Record& record)
{
    Bytes bytes(sizeof(Record));
    std::memcpy(bytes.data(), &record, sizeof(Record));
    return bytes;
}

// A fixed-size record kept in one layout, the record itself, from `firstVersion` on.
template <typename Record>
TagLayouts SingleLayout(EXTAG tagId, const char* name, KeyKind keyKind, EVERSION firstVersion = kAnyVersionFirst)
{
    TagLayouts tag;
    tag.tag = tagId;
    tag.name = name;
    tag.keyKind = keyKind;
    tag.canonicalSize = sizeof(Record);
    tag.layouts = {PrefixLayout(sizeof(Record), firstVersion, kAnyVersionLast)};
    return tag;
}

TagLayouts MeasureSpec()
{
    TagLayouts tag;
    tag.tag = kTagMeasureSpec;
    tag.name = "measure specification";
    tag.keyKind = KeyKind::Other;
    tag.canonicalSize = sizeof(EDTMeasureSpec2005);
    tag.layouts = {PrefixLayout(sizeof(EDTMeasureSpec), kV9, kV10 - 1),
                   PrefixLayout(sizeof(EDTMeasureSpec2005), kV10, kAnyVersionLast)};
    tag.makeDefault = [] { return BytesOf(DefaultMeasureSpec()); };
    return tag;
}

TagLayouts StaffSpec()
{
    TagLayouts tag;
    tag.tag = kTagStaffSpec;
    tag.name = "staff specification";
    tag.keyKind = KeyKind::Other;
    tag.canonicalSize = sizeof(EDTStaffSpec2003);
    // The older layout is the first 66 bytes of the newer one.
    tag.layouts = {PrefixLayout(sizeof(EDTStaffSpec2003), kV8, kAnyVersionLast), PrefixLayout(66, kV5, kV8 - 1)};
    tag.makeDefault = [] { return BytesOf(DefaultStaffSpec()); };
    return tag;
}

TagLayouts InstrumentUsed()
{
    // Key: (list, slot - 1).
    return SingleLayout<EDTInstrumentUsed>(kTagInstrumentUsed, "instrument list entry", KeyKind::Other);
}

// The older text block layout is 48 bytes of which the host reads only the first word, the
// number of its text.
RecordLayout OldTextBlockLayout()
{
    constexpr int32_t kOldSize = 48;
    RecordLayout layout;
    layout.size = kOldSize;
    layout.firstVersion = kAnyVersionFirst;
    layout.lastVersion = kV8;
    layout.read = [](const Bytes& canonical, void* buffer) {
        std::memset(buffer, 0, kOldSize);
        std::memcpy(buffer, canonical.data() + offsetof(EDTTextBlock2004, textID), sizeof(int16_t));
    };
    layout.write = [](const void* buffer, Bytes& canonical) {
        std::memcpy(canonical.data() + offsetof(EDTTextBlock2004, textID), buffer, sizeof(int16_t));
    };
    return layout;
}

TagLayouts TextBlock()
{
    TagLayouts tag;
    tag.tag = kTagTextBlock;
    tag.name = "text block";
    tag.keyKind = KeyKind::Other;
    tag.canonicalSize = sizeof(EDTTextBlock2004);
    tag.layouts = {PrefixLayout(sizeof(EDTTextBlock2004), kV9, kAnyVersionLast), OldTextBlockLayout()};
    return tag;
}

TagLayouts TextBody()
{
    TagLayouts tag;
    tag.tag = kTagTextBody;
    tag.name = "text of a text block";
    tag.keyKind = KeyKind::Number;
    tag.variableSize = true;
    return tag;
}

// The caller's EDTGfhold2004 carries a pointer to its own array of one frame number per
// layer: on load the host fills that array from its own numbers; on save it ignores it.
RecordLayout FrameHoldLayout()
{
    RecordLayout layout;
    layout.size = kGfhold2004Size;
    layout.firstVersion = kV9;
    layout.lastVersion = kAnyVersionLast;
    layout.read = [](const Bytes& canonical, void* buffer) {
        FrameHoldRecord held{};
        std::memcpy(&held, canonical.data(), sizeof(held));
        auto* caller = static_cast<unsigned char*>(buffer);
        std::memcpy(caller + offsetof(EDTGfhold2004, clef), &held.clef, sizeof(held.clef));
        std::memcpy(caller + offsetof(EDTGfhold2004, flag), &held.flag, sizeof(held.flag));
        std::memcpy(caller + offsetof(EDTGfhold2004, clefPercent), &held.clefPercent, sizeof(held.clefPercent));
        int16_t* frames = nullptr;
        std::memcpy(&frames, caller + offsetof(EDTGfhold2004, frame), sizeof(frames));
        if (frames != nullptr) {
            std::memcpy(frames, held.frame, sizeof(held.frame));
        }
    };
    layout.write = [](const void* buffer, Bytes& canonical) {
        const auto* caller = static_cast<const unsigned char*>(buffer);
        std::memcpy(canonical.data() + offsetof(FrameHoldRecord, clef), caller + offsetof(EDTGfhold2004, clef),
                    sizeof(int16_t));
        std::memcpy(canonical.data() + offsetof(FrameHoldRecord, flag), caller + offsetof(EDTGfhold2004, flag),
                    sizeof(uint16_t));
        std::memcpy(canonical.data() + offsetof(FrameHoldRecord, clefPercent),
                    caller + offsetof(EDTGfhold2004, clefPercent), sizeof(int16_t));
    };
    return layout;
}

TagLayouts FrameHold()
{
    TagLayouts tag;
    tag.tag = kTagGfhold;
    tag.name = "staff-measure frame detail";
    tag.keyKind = KeyKind::Detail;   // (inst, meas, 0)
    tag.canonicalSize = sizeof(FrameHoldRecord);
    tag.layouts = {FrameHoldLayout()};
    return tag;
}

TagLayouts GenericOther()
{
    TagLayouts tag = SingleLayout<EDTGeneric>(kTagOtherPrefix, "six-word other record", KeyKind::Other);
    tag.mask = 0xFFFF0000;
    return tag;
}

// Records that belong to a staff: the staff must exist. With `firstIncidenceOnly` the record
// is one per staff, at incidence 0.
std::function<bool(const RecordStore&, const RecordKey&)> StaffMustExist(bool firstIncidenceOnly)
{
    return [firstIncidenceOnly](const RecordStore& records, const RecordKey& key) {
        if (firstIncidenceOnly && key.inci != 0) {
            return false;
        }
        return key.group1 != 0 && key.group1 != kPickNumber &&
               records.Find(kTagStaffSpec, RecordKey::Other(key.group1, 0)) != nullptr;
    };
}

TagLayouts StaffStyle()
{
    // Key: (style, 0).
    return SingleLayout<EDTStaffStyle2003>(kTagStaffStyle, "staff style", KeyKind::Other, kV8);
}

TagLayouts StaffStyleAssignment()
{
    // Key: (instrument, incidence).
    TagLayouts tag = SingleLayout<EDTStaffStyleAssign>(kTagStaffStyleAssign, "staff style assignment", KeyKind::Other);
    tag.acceptsKey = StaffMustExist(false);
    return tag;
}

// A text expression: the 12-byte header, then the text and its terminating zero.
TagLayouts TextExpression()
{
    TagLayouts tag;
    tag.tag = kTagTextExpression;
    tag.name = "text expression definition";
    tag.keyKind = KeyKind::Other;   // (expression, 0)
    tag.variableSize = true;
    tag.acceptsBytes = [](const uint8_t* bytes, size_t size) {
        return bytes != nullptr && size > kTextExpressionHeaderSize &&
               std::memchr(bytes + kTextExpressionHeaderSize, 0, size - kTextExpressionHeaderSize) != nullptr;
    };
    return tag;
}

TagLayouts DefaultFontPreference()
{
    // Key: (preference, 0); 6 is the text-expression font.
    return SingleLayout<EDTFontPref>(kTagDefaultFontPref, "default font preference", KeyKind::Other);
}

TagLayouts ClefDefinition()
{
    // Key: the clef number.
    return SingleLayout<EDTClefDef>(kTagClefDef, "clef definition", KeyKind::Number);
}

TagLayouts DrumStaff()
{
    // Key: (instrument, 0).
    TagLayouts tag = SingleLayout<EDTDrumStaff>(kTagDrumStaff, "drum staff", KeyKind::Other);
    tag.acceptsKey = StaffMustExist(true);
    return tag;
}

// The playback assignment has had this 24-byte layout since version 0x0A010000; requests
// naming an earlier version describe a layout this host does not keep.
TagLayouts InstrumentUsage()
{
    // Key: (instrument, 0).
    TagLayouts tag = SingleLayout<EDTInstrumentUsage>(kTagInstrumentUsage, "instrument usage", KeyKind::Other,
                                                      kInstrumentUsageVersion);
    tag.acceptsKey = StaffMustExist(true);
    return tag;
}

}   // namespace

EDTMeasureSpec2005 DefaultMeasureSpec()
{
    EDTMeasureSpec2005 spec{};
    spec.beats = 4;
    spec.divbeat = static_cast<int16_t>(kEduPerQuarter);
    return spec;
}

EDTStaffSpec2003 DefaultStaffSpec()
{
    // All zero: clef 0 (treble), the standard five-line staff, no names, no transposition.
    return EDTStaffSpec2003{};
}

std::vector<TagLayouts> StandardLayouts()
{
    std::vector<TagLayouts> tags;
    tags.push_back(MeasureSpec());
    tags.push_back(StaffSpec());
    tags.push_back(InstrumentUsed());
    tags.push_back(TextBlock());
    tags.push_back(TextBody());
    tags.push_back(FrameHold());
    tags.push_back(StaffStyle());
    tags.push_back(StaffStyleAssignment());
    tags.push_back(TextExpression());
    tags.push_back(DefaultFontPreference());
    tags.push_back(ClefDefinition());
    tags.push_back(DrumStaff());
    tags.push_back(InstrumentUsage());
    tags.push_back(GenericOther());   // families last: an exact tag above wins
    return tags;
}

}   // namespace stavio
