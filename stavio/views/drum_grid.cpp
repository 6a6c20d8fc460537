#include "sdk/tags.h"
#include "stavio/midi_import/beat_quantiser.h"
#include "stavio/views/staff_entries.h"
#include "stavio/views/staff_view.h"

#include <algorithm>
#include <map>

namespace stavio::views {

namespace {

using midi_import::MeasureGrid;

constexpr EVERSION kMeasureSpecVersion = 0x0A000000;
constexpr char kEmpty = '-';
constexpr char kCymbalHit = 'x';
constexpr char kDrumHit = 'o';
constexpr char kBarLine = '|';

// The columns of one measure: per beat, how many and where they start.
struct MeasureColumns {
    int32_t measure = 0;
    MeasureGrid grid;
    std::vector<bool> tripletBeat;
    std::vector<int> firstColumn;   // per beat, and one past the last beat
    int Width() const { return firstColumn.back(); }
    int Columns(size_t beat) const { return firstColumn[beat + 1] - firstColumn[beat]; }
};

MeasureGrid GridOfMeasure(const Document& doc, int32_t meas)
{
    EDTMeasureSpec2005 spec{};
    if (!doc.Read(kTagMeasureSpec, RecordKey::Other(static_cast<uint16_t>(meas), 0), spec, kMeasureSpecVersion) ||
        spec.beats <= 0 || spec.divbeat <= 0) {
        return midi_import::GridFor(4, kEduPerQuarter, {});
    }
    // The meter as written: a beat of a power-of-two length is the denominator's note value.
    midi_import::TimeSignature meter{spec.beats, 4};
    if (4 * kEduPerQuarter % spec.divbeat == 0) {
        meter.denominator = 4 * kEduPerQuarter / spec.divbeat;
    }
    return midi_import::GridFor(spec.beats, spec.divbeat, meter);
}

// Which beat an entry starts in, and its column inside the beat.
std::pair<size_t, int> Cell(const MeasureColumns& columns, int32_t position)
{
    const MeasureGrid& grid = columns.grid;
    const auto beats = static_cast<int32_t>(columns.tripletBeat.size());
    const int32_t beat = std::clamp<int32_t>(position / grid.beat, 0, beats - 1);
    const int32_t offset = position - beat * grid.beat;
    const int32_t column = columns.tripletBeat[static_cast<size_t>(beat)] ? (6 * offset + grid.beat) / (2 * grid.beat)
                                                                          : (2 * offset + grid.step) / (2 * grid.step);
    return {static_cast<size_t>(beat), std::clamp<int32_t>(column, 0, columns.Columns(static_cast<size_t>(beat)) - 1)};
}

MeasureColumns ColumnsOf(const Document& doc, int32_t meas, const std::vector<ViewEntry>& entries)
{
    MeasureColumns columns;
    columns.measure = meas;
    columns.grid = GridOfMeasure(doc, meas);
    const auto beats = static_cast<size_t>(std::max(1, columns.grid.Beats()));
    columns.tripletBeat.assign(beats, false);
    for (const ViewEntry& entry : entries) {
        if (entry.measure == meas && entry.tuplet) {
            const int32_t beat = entry.position / std::max(1, columns.grid.beat);
            columns.tripletBeat[static_cast<size_t>(std::clamp<int32_t>(beat, 0, static_cast<int32_t>(beats) - 1))] =
                true;
        }
    }
    columns.firstColumn.push_back(0);
    for (size_t beat = 0; beat < beats; ++beat) {
        const int width =
            columns.tripletBeat[beat] ? 3 : std::max(1, columns.grid.beat / std::max(1, columns.grid.step));
        columns.firstColumn.push_back(columns.firstColumn.back() + width);
    }
    return columns;
}

// `text` left-aligned in `width` characters, cut when longer.
std::string Field(const std::string& text, int width)
{
    std::string field = text.substr(0, static_cast<size_t>(width));
    return field + std::string(static_cast<size_t>(width) - field.size(), ' ');
}

const PercussionMap* StaffMap(const Document& doc, int32_t inst)
{
    EDTDrumStaff drumStaff{};
    if (doc.Read(kTagDrumStaff, RecordKey::Other(static_cast<uint16_t>(inst), 0), drumStaff)) {
        if (const PercussionMap* map = doc.PercussionMapOf(drumStaff.percMap)) {
            return map;
        }
    }
    return doc.PercussionMapOf(kDefaultPercussionMap);
}

struct KitRow {
    int key = 0;
    int16_t tcd = 0;   // staff position: rows go from the top of the staff down
    std::string name;
    char mark = kDrumHit;
    std::string cells;
};

std::vector<KitRow> RowsFor(const std::vector<ViewEntry>& entries, const PercussionMap* map)
{
    std::map<int, KitRow> byKey;
    for (const ViewEntry& entry : entries) {
        for (size_t i = 0; i < entry.keys.size(); ++i) {
            const int key = entry.keys[i];
            if (byKey.count(key) != 0) {
                continue;
            }
            KitRow row{key, entry.tcds[i], "Key " + std::to_string(key), kDrumHit, ""};
            if (const PercussionNote* piece = map != nullptr ? map->ForKey(key) : nullptr) {
                row.tcd = piece->tcd;
                row.name = piece->name;
                const bool xHead = piece->notehead == Notehead::X || piece->notehead == Notehead::CircleX;
                row.mark = xHead ? kCymbalHit : kDrumHit;
            }
            byKey[key] = row;
        }
    }
    std::vector<KitRow> rows;
    for (auto& [key, row] : byKey) {
        rows.push_back(std::move(row));
    }
    std::stable_sort(rows.begin(), rows.end(), [](const KitRow& a, const KitRow& b) { return a.tcd > b.tcd; });
    return rows;
}

}   // namespace

std::string RenderDrumGrid(const Document& doc, int32_t inst, int32_t firstMeasure, int32_t lastMeasure,
                           const std::vector<std::string>& measureNames)
{
    if (!doc.StaffExists(inst)) {
        return "";
    }
    const std::vector<ViewEntry> entries = CollectEntries(doc, inst, firstMeasure, lastMeasure);
    std::vector<MeasureColumns> measures;
    const int32_t last = std::min(lastMeasure, doc.MeasureCount());
    for (int32_t meas = std::max(firstMeasure, 1); meas <= last; ++meas) {
        measures.push_back(ColumnsOf(doc, meas, entries));
    }
    std::vector<KitRow> rows = RowsFor(entries, StaffMap(doc, inst));
    size_t labelWidth = std::string("Measure").size();
    for (const KitRow& row : rows) {
        labelWidth = std::max(labelWidth, row.name.size());
    }
    std::string measureLine = Field("Measure", static_cast<int>(labelWidth)) + " ";
    std::string beatLine = Field("Beat", static_cast<int>(labelWidth)) + " ";
    for (KitRow& row : rows) {
        row.cells = Field(row.name, static_cast<int>(labelWidth)) + " ";
    }
    size_t next = 0;   // entries are in measure order
    for (const MeasureColumns& columns : measures) {
        const auto named = static_cast<size_t>(columns.measure);
        measureLine += kBarLine + Field(named >= 1 && named <= measureNames.size() ? measureNames[named - 1]
                                                                                   : std::to_string(columns.measure),
                                        columns.Width());
        beatLine += kBarLine;
        for (size_t beat = 0; beat + 1 < columns.firstColumn.size(); ++beat) {
            beatLine += Field(std::to_string(beat + 1), columns.Columns(beat));
        }
        std::vector<std::string> cells(rows.size(), std::string(static_cast<size_t>(columns.Width()), kEmpty));
        for (; next < entries.size() && entries[next].measure == columns.measure; ++next) {
            const auto [beat, column] = Cell(columns, entries[next].position);
            const auto at = static_cast<size_t>(columns.firstColumn[beat] + column);
            for (int key : entries[next].keys) {
                const auto row = static_cast<size_t>(
                    std::find_if(rows.begin(), rows.end(), [key](const KitRow& r) { return r.key == key; }) -
                    rows.begin());
                cells[row][at] = rows[row].mark;
            }
        }
        for (size_t row = 0; row < rows.size(); ++row) {
            rows[row].cells += kBarLine + cells[row];
        }
    }
    std::string grid = measureLine + kBarLine + "\n" + beatLine + kBarLine + "\n";
    for (const KitRow& row : rows) {
        grid += row.cells + kBarLine + "\n";
    }
    return grid;
}

}   // namespace stavio::views
