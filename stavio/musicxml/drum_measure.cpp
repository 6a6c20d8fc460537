#include "stavio/musicxml/drum_measure.h"

#include "sdk/tags.h"
#include "stavio/document/pitch.h"
#include "stavio/document_builder.h"
#include "stavio/musicxml/score_model.h"
#include "stavio/musicxml/xml_text.h"

#include <algorithm>
#include <numeric>

namespace stavio::musicxml {

namespace {

constexpr EVERSION kMeasureSpecVersion = 0x0A000000;

// One note or rest of a written voice.
struct VoiceEntry {
    int32_t position = 0;    // EDU
    int32_t actual = 0;      // EDU
    int32_t notated = 0;     // EDU, dotted values included
    std::vector<int> keys;   // empty: a rest
    bool wholeMeasureRest = false;
    int tuplet = -1;   // index into the frame's tuplets
    bool tupletStart = false;
    bool tupletStop = false;
    int64_t duration = 0;   // in divisions
};

struct Voice {
    int number = 1;
    bool stemsUp = true;
    std::vector<VoiceEntry> entries;
    int staff = 0;   // the <staff> of a part with several staves; 0 writes none
};

std::vector<int> KeysOf(const EXENTRY& entry)
{
    std::vector<int> keys;
    if ((entry.ef & kEntryIsNote) == 0) {
        return keys;
    }
    const int count = std::clamp<int>(entry.numNotes, 0, kMaxNotesPerEntry);
    for (int i = 0; i < count; ++i) {
        keys.push_back(NoteToMidiKey(entry.note[i].tcd, entry.note[i].alteration));
    }
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

// The undotted value and dot count of a notated length (a quarter for one that is none).
std::pair<int32_t, int> ValueAndDots(int32_t notated)
{
    for (int32_t value = 4096; value >= 16; value /= 2) {
        if (notated == value) {
            return {value, 0};
        }
        if (notated == value + value / 2) {
            return {value, 1};
        }
        if (notated == value + value / 2 + value / 4) {
            return {value, 2};
        }
    }
    return {0, 0};
}

int64_t Lcm(int64_t a, int64_t b)
{
    return a / std::gcd(a, b) * b;
}

// The <note> elements of a voice; `beat` is the length of a beat, for beaming.
void WriteVoice(const Voice& voice, const FrameContent& frame, bool drum, int32_t beat,
                const std::map<int, std::string>& instrumentOf, const PercussionMap& kit,
                std::vector<std::string>& lines)
{
    // Beam groups: consecutive notes of an eighth or shorter inside one beat.
    std::vector<std::string> beam1(voice.entries.size());
    std::vector<std::string> beam2(voice.entries.size());
    size_t at = 0;
    while (at < voice.entries.size()) {
        auto beamable = [&](size_t i) {
            const VoiceEntry& entry = voice.entries[i];
            return !entry.keys.empty() && ValueAndDots(entry.notated).first <= 512 &&
                   ValueAndDots(entry.notated).first > 0;
        };
        if (!beamable(at)) {
            ++at;
            continue;
        }
        const int32_t beatIndex = voice.entries[at].position / std::max(beat, 1);
        size_t end = at + 1;
        while (end < voice.entries.size() && beamable(end) &&
               voice.entries[end].position / std::max(beat, 1) == beatIndex) {
            ++end;
        }
        if (end - at >= 2) {
            for (size_t i = at; i < end; ++i) {
                beam1[i] = i == at ? "begin" : i + 1 == end ? "end" : "continue";
                const bool short16 = ValueAndDots(voice.entries[i].notated).first <= 256;
                if (!short16) {
                    continue;
                }
                const bool before = i > at && ValueAndDots(voice.entries[i - 1].notated).first <= 256;
                const bool after = i + 1 < end && ValueAndDots(voice.entries[i + 1].notated).first <= 256;
                beam2[i] = before && after ? "continue"
                           : before        ? "end"
                           : after         ? "begin"
                           : i == at       ? "forward hook"
                                           : "backward hook";
            }
        }
        at = end;
    }

    for (size_t i = 0; i < voice.entries.size(); ++i) {
        const VoiceEntry& entry = voice.entries[i];
        // Plain variables, not a structured binding: the lambda below captures them, which C++17
        // allows only for variables.
        const std::pair<int32_t, int> valueAndDots = ValueAndDots(entry.notated);
        const int32_t value = valueAndDots.first;
        const int dots = valueAndDots.second;
        const char* type = TypeName(value);
        const TupletInfo* tuplet = entry.tuplet >= 0 ? &frame.tuplets[static_cast<size_t>(entry.tuplet)] : nullptr;
        auto tail = [&](std::string& note) {
            note += "<voice>" + std::to_string(voice.number) + "</voice>";
            if (type != nullptr && !entry.wholeMeasureRest) {
                note += std::string("<type>") + type + "</type>";
                for (int d = 0; d < dots; ++d) {
                    note += "<dot/>";
                }
            }
            if (tuplet != nullptr) {
                note += "<time-modification><actual-notes>" + std::to_string(tuplet->tpDef.symbolicNum) +
                        "</actual-notes><normal-notes>" + std::to_string(tuplet->tpDef.refNum) +
                        "</normal-notes></time-modification>";
            }
        };
        if (entry.keys.empty()) {
            std::string note = entry.wholeMeasureRest ? "<note><rest measure=\"yes\"/>" : "<note><rest/>";
            note += "<duration>" + std::to_string(entry.duration) + "</duration>";
            tail(note);
            if (voice.staff > 0) {
                note += "<staff>" + std::to_string(voice.staff) + "</staff>";
            }
            if (tuplet != nullptr && (entry.tupletStart || entry.tupletStop)) {
                note += std::string("<notations><tuplet type=\"") + (entry.tupletStart ? "start" : "stop") +
                        "\"/></notations>";
            }
            lines.push_back(note + "</note>");
            continue;
        }
        for (size_t k = 0; k < entry.keys.size(); ++k) {
            const int key = entry.keys[k];
            std::string note = "<note>";
            if (k > 0) {
                note += "<chord/>";
            }
            const PercussionNote* piece = drum ? kit.ForKey(key) : nullptr;
            if (drum) {
                const int16_t tcd = piece != nullptr ? piece->tcd : static_cast<int16_t>(6);
                note += std::string("<unpitched><display-step>") + StepLetter(tcd) + "</display-step><display-octave>" +
                        std::to_string(OctaveOf(tcd)) + "</display-octave></unpitched>";
            } else {
                const NotePitch pitch = PitchOfKey(key);
                note += std::string("<pitch><step>") + StepLetter(pitch.tcd) + "</step>" +
                        (pitch.alteration != 0 ? "<alter>" + std::to_string(pitch.alteration) + "</alter>" : "") +
                        "<octave>" + std::to_string(OctaveOf(pitch.tcd)) + "</octave></pitch>";
            }
            note += "<duration>" + std::to_string(entry.duration) + "</duration>";
            const auto instrument = instrumentOf.find(key);
            if (drum && instrument != instrumentOf.end()) {
                note += "<instrument id=\"" + EscapeXml(instrument->second) + "\"/>";
            }
            tail(note);
            note += std::string("<stem>") + (voice.stemsUp ? "up" : "down") + "</stem>";
            if (drum && piece != nullptr && piece->notehead != Notehead::Normal) {
                note += std::string("<notehead>") + NoteheadName(piece->notehead) + "</notehead>";
            }
            if (voice.staff > 0) {
                note += "<staff>" + std::to_string(voice.staff) + "</staff>";
            }
            if (k == 0) {
                if (!beam1[i].empty()) {
                    note += "<beam number=\"1\">" + beam1[i] + "</beam>";
                }
                if (!beam2[i].empty()) {
                    note += "<beam number=\"2\">" + beam2[i] + "</beam>";
                }
                if (tuplet != nullptr && (entry.tupletStart || entry.tupletStop)) {
                    note += std::string("<notations><tuplet type=\"") + (entry.tupletStart ? "start" : "stop") + "\"" +
                            (entry.tupletStart ? " bracket=\"yes\"" : "") + "/></notations>";
                }
            }
            lines.push_back(note + "</note>");
        }
    }
}

// A voice as written, with the frame (tuplets) it comes from.
struct WrittenVoice {
    Voice voice;
    FrameContent frame;
};

}   // namespace

std::set<int> KeysInMeasure(const Document& doc, int32_t inst, int32_t meas)
{
    std::set<int> keys;
    for (int layer = 0; layer < kMaxLayers; ++layer) {
        const std::optional<FrameContent> frame = doc.Frame(inst, meas, layer);
        if (!frame) {
            continue;
        }
        for (const EXENTRY& entry : frame->entries) {
            for (int key : KeysOf(entry)) {
                keys.insert(key);
            }
        }
    }
    return keys;
}

MeasureMusic WriteMeasureMusic(const Document& doc, int32_t inst, int32_t meas, bool drum, int divisions,
                               const std::map<int, std::string>& instrumentOf, int32_t restLength, int staff,
                               int firstVoice)
{
    MeasureMusic music;
    const PercussionMap* kitInDocument = doc.PercussionMapOf(kDefaultPercussionMap);
    const PercussionMap kit = kitInDocument != nullptr ? *kitInDocument : GeneralMidiKit();
    EDTMeasureSpec2005 spec{};
    doc.Read(kTagMeasureSpec, RecordKey::Other(static_cast<uint16_t>(meas), 0), spec, kMeasureSpecVersion);
    const int32_t measureLength = restLength > 0 ? restLength : std::max<int32_t>(spec.beats * spec.divbeat, 1);

    // Layer 0 is split into hands (voice 1) and feet (voice 2) on a drum staff. Each other layer
    // that holds notes is a voice of its own after them; layers of rests only (slash notation
    // keeps such rests) are not written.
    std::vector<WrittenVoice> voices;
    int nextVoice = firstVoice;
    for (int layer = 0; layer < kMaxLayers; ++layer) {
        const FrameContent frame = doc.Frame(inst, meas, layer).value_or(FrameContent{});
        const bool hasNotes = std::any_of(frame.entries.begin(), frame.entries.end(),
                                          [](const EXENTRY& entry) { return (entry.ef & kEntryIsNote) != 0; });
        if (layer > 0 && !hasNotes) {
            continue;
        }
        Voice upper{nextVoice++, true, {}, staff};
        Voice lower{layer == 0 && drum ? nextVoice++ : 0, false, {}, staff};
        bool anyLower = false;
        for (size_t i = 0; i < frame.entries.size(); ++i) {
            const EXENTRY& source = frame.entries[i];
            VoiceEntry entry;
            entry.position = source.elldur;
            entry.actual = source.actdur;
            entry.notated = source.dura;
            for (size_t t = 0; t < frame.tuplets.size(); ++t) {
                const TupletInfo& tuplet = frame.tuplets[t];
                if (static_cast<int>(i) >= tuplet.stoff && static_cast<int>(i) <= tuplet.enoff) {
                    entry.tuplet = static_cast<int>(t);
                    entry.tupletStart = static_cast<int>(i) == tuplet.stoff;
                    entry.tupletStop = static_cast<int>(i) == tuplet.enoff;
                }
            }
            entry.wholeMeasureRest =
                (source.ef & kEntryIsNote) == 0 && frame.entries.size() == 1 && source.actdur == measureLength;
            VoiceEntry lowerEntry = entry;
            for (int key : KeysOf(source)) {
                const PercussionNote* piece = kit.ForKey(key);
                if (lower.number != 0 && piece != nullptr && piece->foot) {
                    lowerEntry.keys.push_back(key);
                    anyLower = true;
                } else {
                    entry.keys.push_back(key);
                }
            }
            upper.entries.push_back(entry);
            lowerEntry.wholeMeasureRest = entry.wholeMeasureRest;
            lower.entries.push_back(lowerEntry);
        }
        if (layer > 0) {
            // A voice of its own: stems down when only feet play in it.
            upper.stemsUp = std::any_of(upper.entries.begin(), upper.entries.end(), [&](const VoiceEntry& entry) {
                return std::any_of(entry.keys.begin(), entry.keys.end(), [&](int key) {
                    const PercussionNote* piece = kit.ForKey(key);
                    return !drum || piece == nullptr || !piece->foot;
                });
            });
        }
        if (layer == 0 && upper.entries.empty()) {
            VoiceEntry rest;
            rest.actual = measureLength;
            rest.notated = measureLength;
            rest.wholeMeasureRest = true;
            upper.entries.push_back(rest);
        }
        voices.push_back(WrittenVoice{upper, frame});
        if (anyLower) {
            voices.push_back(WrittenVoice{lower, frame});
        }
    }

    // Durations in divisions: the part's own where they are exact, else a multiple of them.
    int64_t units = std::max(divisions, 1);
    auto exactUnits = [](int64_t numerator, int64_t denominator) {
        const int64_t g = std::gcd(numerator, denominator);
        return denominator / (g == 0 ? 1 : g);
    };
    auto tupletOf = [](const WrittenVoice& written, const VoiceEntry& entry) -> const TupletInfo* {
        return entry.tuplet >= 0 ? &written.frame.tuplets[static_cast<size_t>(entry.tuplet)] : nullptr;
    };
    for (const WrittenVoice& written : voices) {
        for (const VoiceEntry& entry : written.voice.entries) {
            if (const TupletInfo* tuplet = tupletOf(written, entry)) {
                units = Lcm(units, exactUnits(static_cast<int64_t>(entry.notated) * tuplet->tpDef.refNum,
                                              static_cast<int64_t>(tuplet->tpDef.symbolicNum) * kEduPerQuarter));
            } else {
                units = Lcm(units, exactUnits(entry.actual, kEduPerQuarter));
                units = Lcm(units, exactUnits(entry.position, kEduPerQuarter));
            }
        }
    }
    music.divisions = static_cast<int>(std::min<int64_t>(units, 1 << 20));
    const int32_t beat = spec.divbeat > 0 ? spec.divbeat : kEduPerQuarter;
    int64_t position = 0;   // where the writing stands, in divisions
    for (WrittenVoice& written : voices) {
        int64_t start = 0;
        for (VoiceEntry& entry : written.voice.entries) {
            if (const TupletInfo* tuplet = tupletOf(written, entry)) {
                entry.duration = static_cast<int64_t>(entry.notated) * tuplet->tpDef.refNum * music.divisions /
                                 (static_cast<int64_t>(tuplet->tpDef.symbolicNum) * kEduPerQuarter);
            } else {
                entry.duration = static_cast<int64_t>(entry.actual) * music.divisions / kEduPerQuarter;
            }
        }
        if (position > 0) {
            music.lines.push_back("<backup><duration>" + std::to_string(position) + "</duration></backup>");
            position = 0;
        }
        // A voice that starts late or leaves a gap moves on with <forward>.
        std::vector<VoiceEntry> entries = std::move(written.voice.entries);
        written.voice.entries.clear();
        for (VoiceEntry& entry : entries) {
            const int64_t at =
                entry.tuplet >= 0 ? start : static_cast<int64_t>(entry.position) * music.divisions / kEduPerQuarter;
            if (at > start) {
                Voice gapBefore = written.voice;
                WriteVoice(gapBefore, written.frame, drum, beat, instrumentOf, kit, music.lines);
                music.lines.push_back("<forward><duration>" + std::to_string(at - start) + "</duration></forward>");
                written.voice.entries.clear();
                start = at;
            }
            start += entry.duration;
            written.voice.entries.push_back(entry);
        }
        WriteVoice(written.voice, written.frame, drum, beat, instrumentOf, kit, music.lines);
        position = start;
    }
    return music;
}

}   // namespace stavio::musicxml
