#include "stavio/frame_ledger.h"

#include "stavio/document/entry_frames.h"

namespace stavio {

struct FrameLedger::LiveFrame {
    EXQVF2005a header{};    // what the plug-in holds a pointer to
    FrameContent content;   // the arrays `header.pent` and `header.tpInfo` point into
    int32_t inst = 0;
    int32_t meas = 0;
    int32_t layer = 0;
};

FrameLedger::FrameLedger() = default;
FrameLedger::~FrameLedger() = default;

FrameLedger::LiveFrame* FrameLedger::Find(const EXQVF2005a* frame) const
{
    auto found = live_.find(frame);
    return found == live_.end() ? nullptr : found->second.get();
}

bool FrameLedger::IsLive(const EXQVF2005a* frame) const
{
    return Find(frame) != nullptr;
}

// Points the header at the current arrays and counts.
void FrameLedger::Publish(LiveFrame& live)
{
    live.header.pent = live.content.entries.empty() ? nullptr : live.content.entries.data();
    live.header.numEntries = static_cast<int16_t>(live.content.entries.size());
    live.header.tpInfo = live.content.tuplets.empty() ? nullptr : live.content.tuplets.data();
    live.header.numTuplets = static_cast<int16_t>(live.content.tuplets.size());
}

// The plug-in may change what the arrays hold, not the arrays themselves.
bool FrameLedger::Consistent(const LiveFrame& live)
{
    const EXQVF2005a& header = live.header;
    const auto entries = static_cast<int16_t>(live.content.entries.size());
    const auto tuplets = static_cast<int16_t>(live.content.tuplets.size());
    const EXENTRY* entryArray = entries == 0 ? nullptr : live.content.entries.data();
    const TupletInfo* tupletArray = tuplets == 0 ? nullptr : live.content.tuplets.data();
    return header.numEntries == entries && header.numTuplets == tuplets &&
           (entries == 0 || header.pent == entryArray) && (tuplets == 0 || header.tpInfo == tupletArray);
}

EXQVF2005a* FrameLedger::Load(const Document& doc, int32_t list, int32_t slot, int32_t meas, int32_t layer)
{
    const int32_t inst = doc.SlotToInst(slot, list);
    if (inst <= 0) {
        return nullptr;
    }
    std::optional<FrameContent> content = doc.Frame(inst, meas, layer);
    if (!content) {
        return nullptr;
    }
    auto live = std::make_unique<LiveFrame>();
    live->content = std::move(*content);
    live->inst = inst;
    live->meas = meas;
    live->layer = layer;
    EXQVF2005a& header = live->header;
    header.iuList = static_cast<int16_t>(list);
    header.staffSlot = static_cast<int16_t>(slot);
    header.inst = static_cast<int16_t>(inst);
    header.meas = static_cast<int16_t>(meas);
    header.layer = static_cast<int16_t>(layer);
    header.isMirror = 0;
    header.frame = doc.FrameNumber(inst, meas, layer);
    Publish(*live);
    EXQVF2005a* handed = &live->header;
    live_.emplace(handed, std::move(live));
    ++loaded_;
    return handed;
}

bool FrameLedger::Save(Document& doc, EXQVF2005a* frame)
{
    LiveFrame* live = Find(frame);
    if (live == nullptr || !Consistent(*live)) {
        return false;
    }
    if (!doc.SetFrame(live->inst, live->meas, live->layer, live->content)) {
        return false;
    }
    live->header.frame = doc.FrameNumber(live->inst, live->meas, live->layer);
    return true;
}

bool FrameLedger::Free(EXQVF2005a* frame)
{
    auto found = live_.find(frame);
    if (found == live_.end()) {
        ++refusedFrees_;
        return false;
    }
    // Keep the header's memory reserved for a while, so that the address is not handed out
    // again at once and a second free of it is seen for what it is. The arrays go now.
    std::unique_ptr<LiveFrame> retired = std::move(found->second);
    live_.erase(found);
    retired->content = FrameContent{};
    quarantine_.push_back(std::move(retired));
    if (quarantine_.size() > kQuarantine) {
        quarantine_.pop_front();
    }
    return true;
}

bool FrameLedger::InsertEntries(EXQVF2005a* frame, int32_t index, int32_t count)
{
    return ResizeEntries(frame, index, count, &stavio::InsertEntries);
}

bool FrameLedger::DeleteEntries(EXQVF2005a* frame, int32_t index, int32_t count)
{
    return ResizeEntries(frame, index, count, &stavio::DeleteEntries);
}

bool FrameLedger::ResizeEntries(EXQVF2005a* frame, int32_t index, int32_t count, EntryResize resize)
{
    LiveFrame* live = Find(frame);
    if (live == nullptr || !Consistent(*live) || !resize(live->content, index, count)) {
        return false;
    }
    Publish(*live);
    return true;
}

}   // namespace stavio
