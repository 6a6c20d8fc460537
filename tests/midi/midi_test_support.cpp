#include "midi_test_support.h"

#include <algorithm>

#include "tamberlyne/host/gateway.h"

namespace {
int32_t RecordAlert(EWND, int32_t, int32_t, const char* text, EVERSION)
{
    MidiTest::Alerts().push_back(text);
    return 0;
}
}   // namespace

std::vector<std::string>& MidiTest::Alerts()
{
    static std::vector<std::string> alerts;
    return alerts;
}

void MidiTest::SetUp()
{
    saved_ = gStavioFuncs.SX_AlertMessage;
    gStavioFuncs.SX_AlertMessage = &RecordAlert;
    Alerts().clear();
}

void MidiTest::TearDown()
{
    gStavioFuncs.SX_AlertMessage = saved_;
}

ReaderHarness::ReaderHarness(const Bytes& file, int32_t capacity)
    : block(static_cast<size_t>(capacity >= 0 ? capacity : 2 * static_cast<int32_t>(file.size()))),
      size(static_cast<int32_t>(file.size())),
      reader((std::copy(file.begin(), file.end(), block.begin()), block.data()), size,
             static_cast<int32_t>(block.size()))
{}

Bytes ReaderHarness::Image()
{
    const char* image = reader.Image();
    return Bytes(image, image + size);
}

CleanOutcome Clean(const Bytes& file, int32_t capacity)
{
    ReaderHarness h(file, capacity);
    CleanOutcome out;
    out.result = h.reader.CleanMidiFile(0, out.meter, out.tpq, out.foundDrums, out.lastBar, out.lastTickInBar);
    out.image = h.Image();
    out.remapped = h.reader.remappedany;
    out.reverseMap.assign(h.reader.PitchReverseMap, h.reader.PitchReverseMap + 128);
    out.readsPastEnd =
        std::count(MidiTest::Alerts().begin(), MidiTest::Alerts().end(), "Parsing error - trying to read beyond EOF.");
    return out;
}

namespace {
Bytes RandomTrack(std::mt19937& rng, bool first)
{
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    Bytes body;
    if (first && pick(2))
        body.insert(body.end(), {0x00, 0xFF, 0x58, 0x04, uint8_t(2 + pick(6)), uint8_t(1 + pick(3)), 24, 8});
    int lastStatus = 0;
    const int events = pick(60);
    for (int e = 0; e < events; ++e) {
        support::PutNumber(body, pick(4) ? rng() % 200 : rng() % 40000);
        const int kind = pick(12);
        if (kind == 0) {   // meta: tempo or text
            if (pick(2))
                body.insert(body.end(), {0xFF, 0x51, 0x03, uint8_t(pick(16)), uint8_t(pick(256)), uint8_t(pick(256))});
            else
                body.insert(body.end(), {0xFF, 0x01, 0x03, 'a', 'b', 'c'});
            lastStatus = 0;
        } else if (kind == 1) {   // system exclusive with its own end byte
            body.insert(body.end(), {0xF0, 0x05, 0x7E, 0x7F, 0x09, 0x01, 0xF7});
            lastStatus = 0;
        } else {
            const int channel = pick(3) ? 9 : pick(16);
            static const uint8_t kKinds[] = {0x80, 0x90, 0x90, 0x90, 0xA0, 0xB0, 0xC0, 0xD0, 0xE0};
            const uint8_t status = uint8_t(kKinds[pick(9)] | channel);
            if (status != lastStatus || pick(2)) body.push_back(status);
            lastStatus = status;
            body.push_back(uint8_t(pick(128)));
            if ((status & 0xF0) != 0xC0 && (status & 0xF0) != 0xD0) body.push_back(uint8_t(pick(128)));
        }
    }
    body.insert(body.end(), kEndOfTrack.begin(), kEndOfTrack.end());
    return body;
}
}   // namespace

Bytes RandomValidFile(std::mt19937& rng)
{
    static const int kDivisions[] = {96, 480, 960, 0xE728};
    const int format = static_cast<int>(rng() % 3 == 0 ? 0 : 1);
    const int tracks = format == 0 ? 1 : 1 + static_cast<int>(rng() % 6);
    std::vector<Bytes> bodies;
    for (int t = 0; t < tracks; ++t) bodies.push_back(RandomTrack(rng, t == 0));
    return Smf(format, kDivisions[rng() % 4], bodies);
}
