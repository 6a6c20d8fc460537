#include "stavio/web/score_view.h"

#include "sdk/tags.h"
#include "stavio/dialogs/dialog_text.h"
#include "stavio/dialogs/web_front_end.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"
#include "stavio/views/staff_view.h"

#include <sstream>

namespace stavio::web {

namespace {

constexpr EVERSION kStaffSpecVersion = 0x08000000;   // the 102-byte layout

std::string StaffName(const Document& doc, int32_t inst)
{
    EDTStaffSpec2003 spec{};
    if (!doc.Read(kTagStaffSpec, RecordKey::Other(static_cast<uint16_t>(inst), 0), spec, kStaffSpecVersion)) {
        return std::string();
    }
    return TextBlockText(doc, spec.fullName);
}

bool PlaysDrums(const Document& doc, int32_t inst)
{
    const std::optional<uint16_t> channel = ChannelCode(doc, StaffChannelDefinition(doc, inst));
    return channel && PlaysOnChannel10(*channel);
}

}   // namespace

std::string ScoreViewJson(const Document& doc, const std::string& name)
{
    std::ostringstream out;
    const int32_t measures = doc.MeasureCount();
    out << "{\"name\":" << JsonQuoted(name) << ",\"measures\":[";
    for (int32_t meas = 1; meas <= measures; ++meas) {
        out << (meas > 1 ? "," : "") << "{\"number\":" << meas << ",\"duration\":" << doc.MeasureDuration(meas) << "}";
    }
    out << "],\"staves\":[";
    const int32_t staves = doc.StaffCount(kMainInstrumentList);
    for (int32_t slot = 1; slot <= staves; ++slot) {
        const int32_t inst = doc.SlotToInst(slot, kMainInstrumentList);
        out << (slot > 1 ? "," : "") << "{\"slot\":" << slot << ",\"name\":" << JsonQuoted(StaffName(doc, inst))
            << ",\"drum\":" << (PlaysDrums(doc, inst) ? "true" : "false")
            << ",\"entries\":" << views::StaffEntriesJson(doc, inst, 1, measures) << "}";
    }
    out << "]}";
    return out.str();
}

}   // namespace stavio::web
