// Entry frames the host has handed to plug-ins: each is a host-allocated copy of one
// staff-measure-layer (an EXQVF2005a with its entry and tuplet arrays) that lives until the
// plug-in frees it. The ledger owns every copy, grows and shrinks the entry arrays on the
// plug-in's request, writes copies back into the document, and counts what is still out.
//
// A pointer the host did not give out, or one already freed, is never touched: the request is
// refused and counted. Freed frames stay reserved for a while (kQuarantine) so that a second
// free of one is recognised even after new frames were handed out.
#pragma once

#include "sdk/frames.h"
#include "stavio/document/document.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>

namespace stavio {

class FrameLedger {
public:
    FrameLedger();
    ~FrameLedger();
    FrameLedger(const FrameLedger&) = delete;
    FrameLedger& operator=(const FrameLedger&) = delete;

    // A copy of staff slot `slot` of instrument list `list`, measure `meas`, layer `layer`
    // (0..3): an empty frame when that layer holds nothing, null when the slot or the measure
    // does not exist or the layer is out of range.
    EXQVF2005a* Load(const Document& doc, int32_t list, int32_t slot, int32_t meas, int32_t layer);
    // Writes the frame back into the document (the staff-measure-layer it was loaded from).
    // New entries get entry numbers, in the frame too; the frame's `frame` follows the frame
    // detail. Refused (false) for a frame the host did not give out, or one whose entry or
    // tuplet pointer or count no longer matches what the host allocated.
    bool Save(Document& doc, EXQVF2005a* frame);
    // Gives the frame back. False, counted, and nothing touched, for a frame that is not out.
    bool Free(EXQVF2005a* frame);

    // `count` new entries before `index` (0..numEntries): zeroed, valid, starting where the
    // entry before them ends. Reallocates `pent`.
    bool InsertEntries(EXQVF2005a* frame, int32_t index, int32_t count);
    // Removes `count` entries from `index`; all of them must exist.
    bool DeleteEntries(EXQVF2005a* frame, int32_t index, int32_t count);

    bool IsLive(const EXQVF2005a* frame) const;
    size_t LiveCount() const { return live_.size(); }
    size_t LoadedCount() const { return loaded_; }
    size_t RefusedFrees() const { return refusedFrees_; }

    static constexpr size_t kQuarantine = 256;

private:
    struct LiveFrame;
    LiveFrame* Find(const EXQVF2005a* frame) const;
    static bool Consistent(const LiveFrame& live);
    static void Publish(LiveFrame& live);
    using EntryResize = bool (*)(FrameContent& content, int32_t index, int32_t count);
    // Grows or shrinks a live frame's entry array with `resize` (InsertEntries, DeleteEntries of
    // entry_frames.h) and points the header at the new array.
    bool ResizeEntries(EXQVF2005a* frame, int32_t index, int32_t count, EntryResize resize);

    std::unordered_map<const EXQVF2005a*, std::unique_ptr<LiveFrame>> live_;
    std::deque<std::unique_ptr<LiveFrame>> quarantine_;
    size_t loaded_ = 0;
    size_t refusedFrees_ = 0;
};

}   // namespace stavio
