// A score document of the host: its record store behind the strict layout registry, the
// score questions the host answers from it (staves, measures, regions), and its undo history.
//
// The record calls take the interface's own arguments (tag, key union, buffer, size,
// version) and give the interface's answers: 1 for success, 0 for a refused or failed request.
#pragma once

#include "sdk/sdk.h"
#include "stavio/document/edit_history.h"
#include "stavio/document/entry_frames.h"
#include "stavio/document/fonts.h"
#include "stavio/document/layouts.h"
#include "stavio/document/percussion_map.h"
#include "stavio/document/record_store.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace stavio {

constexpr int kMaxLayers = 4;
constexpr uint16_t kMainInstrumentList = 0;
constexpr int32_t kStaffSpacing = 300;   // vertical distance between staves the host adds

// A new document carries the host's defaults (host_defaults.h): clef definitions, the font
// table, the text-expression font preference and percussion map 1.
class Document {
public:
    Document();
    explicit Document(const LayoutRegistry& registry);

    // ---- Records through the layout registry --------------------------------------------------
    int32_t LoadRecord(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version) const;
    int32_t SaveRecord(EXTAG tag, const EDataID* key, const void* buffer, int32_t size, EVERSION version);
    int32_t CreateRecord(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version);
    int32_t DeleteRecord(EXTAG tag, const EDataID* key, EVERSION version);
    int32_t NextRecord(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version) const;
    int32_t PreviousRecord(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version) const;

    // The same by store key, for the host's own code: a fixed-size record through one of its
    // registered layouts. False when (tag, size, version) is unknown or the record is missing.
    // The typed forms pass sizeof(Record); a record that holds a pointer ('SDGF') has a
    // documented size of its own and goes through the sized form.
    bool Read(EXTAG tag, const RecordKey& key, void* buffer, int32_t size, EVERSION version) const;
    bool Write(EXTAG tag, const RecordKey& key, const void* buffer, int32_t size, EVERSION version);
    template <typename Record>
    bool Read(EXTAG tag, const RecordKey& key, Record& record, EVERSION version = kPluginApiVersion) const
    {
        return Read(tag, key, &record, static_cast<int32_t>(sizeof(Record)), version);
    }
    template <typename Record>
    bool Write(EXTAG tag, const RecordKey& key, const Record& record, EVERSION version = kPluginApiVersion)
    {
        return Write(tag, key, &record, static_cast<int32_t>(sizeof(Record)), version);
    }

    // The canonical records themselves (for the host's own code and for tests).
    const RecordStore& Records() const { return records_; }
    RecordStore& MutableRecords() { return records_; }
    const LayoutRegistry& Registry() const { return *registry_; }

    // ---- Score questions ------------------------------------------------------------------------
    // Measures are the 'SOMS' records 1..n.
    int32_t MeasureCount() const;
    // beats * divbeat of the measure; 0 when it does not exist.
    TIME_EDU MeasureDuration(int32_t meas) const;
    // Staves of an instrument list: host slot s (from 1) of list L is 'SOIu' record (L, s-1).
    int32_t StaffCount(uint16_t list = kMainInstrumentList) const;
    int32_t SlotToInst(int32_t slot, int32_t list) const;   // 0 when the slot holds no staff
    int32_t InstToSlot(int32_t inst, int32_t list) const;   // 0 when the staff is not listed
    // Whole document: slots 1..n of list 0, measures 1..m, duraPos 0 .. 0x7FFFFFFF.
    EREGION WholeRegion() const;

    // Adds a staff: the next instrument number with the default staff spec, listed last in
    // list 0, with a frame detail for every measure. Returns the instrument number (0 on failure).
    int32_t AddStaff();
    // Frame numbers the host keeps per staff-measure layer (the 'SDGF' detail's `frame` array).
    bool FrameNumbers(int32_t inst, int32_t meas, int16_t frames[kMaxLayers]) const;
    bool SetFrameNumbers(int32_t inst, int32_t meas, const int16_t frames[kMaxLayers]);
    bool StaffExists(int32_t inst) const;     // it has a staff specification
    bool MeasureExists(int32_t meas) const;   // it has a measure specification

    // ---- Entries (document_frames.cpp) ----------------------------------------------------------
    // The entries of one staff-measure-layer (layer 0..3), empty when it holds nothing; nullopt
    // when the staff or the measure does not exist or the layer is out of range.
    std::optional<FrameContent> Frame(int32_t inst, int32_t meas, int32_t layer) const;
    // Calls visit(meas, layer, entry) for each entry of the staff in the measures first..last
    // that the document has, every layer, in measure, layer and entry order.
    void ForEachEntry(int32_t inst, int32_t first, int32_t last,
                      const std::function<void(int32_t meas, int layer, const EXENTRY& entry)>& visit) const;
    // Writes one staff-measure-layer. Entries without a number (entnum 0, or one already used
    // earlier in the frame) get the document's next entry numbers, written back into
    // `content`. The frame detail follows: the layer's frame number becomes non-zero (kept if
    // it was already) when entries are written, 0 when none are. False, and nothing written,
    // when the staff or measure does not exist or the layer is out of range.
    bool SetFrame(int32_t inst, int32_t meas, int32_t layer, FrameContent& content);
    // The layer's frame number in the frame detail (0: empty or no detail).
    int16_t FrameNumber(int32_t inst, int32_t meas, int32_t layer) const;

    // ---- Fonts and percussion maps ----------------------------------------------------------------
    FontTable& Fonts() { return fonts_; }
    const FontTable& Fonts() const { return fonts_; }
    // Map `number`: null unless both its name record ('otDL' number) and its notes exist.
    const PercussionMap* PercussionMapOf(int number) const;
    // Puts the map's notes and its name record ('otDL' number, the name in 12 bytes).
    void SetPercussionMap(int number, PercussionMap map);
    void RemovePercussionMap(int number);

    // ---- Edit brackets and undo -----------------------------------------------------------------
    int32_t StartEdit(const std::string& undoName);
    int32_t EndEdit();   // 0 when no bracket is open
    void CancelEdit();
    bool Undo();
    bool Redo();
    int EditDepth() const { return history_.Depth(); }
    size_t UndoCount() const { return history_.UndoCount(); }
    size_t RedoCount() const { return history_.RedoCount(); }
    std::string UndoName() const { return history_.UndoName(); }

private:
    // A variable-size record: fills up to the caller's size and reports the bytes delivered
    // (the whole size when there is no buffer).
    static int32_t DeliverBytes(const RecordStore::Bytes& bytes, void* buffer, int32_t* size);
    // Next (forward) or previous record: moves `key` to it and loads it as LoadRecord does.
    int32_t StepRecord(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version, bool forward) const;
    void AfterCreate(EXTAG tag, const RecordKey& key);
    // The next value of one of the document's running numbers (1 after `limit`).
    uint32_t NextNumber(uint16_t counter, uint32_t limit);

    const LayoutRegistry* registry_;
    RecordStore records_;
    FontTable fonts_ = FontTable::Defaults();
    std::map<int, PercussionMap> percussionMaps_;
    EditHistory<RecordStore> history_;
};

}   // namespace stavio
