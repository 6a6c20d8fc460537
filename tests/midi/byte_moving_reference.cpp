// The cleaner as first defined, for valid files and copies of them cut short anywhere: a plain
// array in which every insertion moves all later bytes up at once. Deliberately slow and
// literal; only what decides the output bytes and the cleaner's outputs is modelled (no event
// records), and the bytes read past the end, each of which the cleaner reports.
#include <algorithm>
#include <cstring>

#include "midi_test_support.h"

namespace {
class Reference {
public:
    explicit Reference(const Bytes& file) : buf_(file), size_(int32_t(file.size()))
    {
        buf_.resize(2 * file.size() + 1);
    }

    CleanOutcome Run()
    {
        CleanOutcome out;
        out.result = Pass(1, out.foundDrums);
        if (out.result && out.foundDrums && highest_ > 59) {
            out.result = Pass(2, out.foundDrums);
            out.remapped = true;
        }
        out.tpq = tpq_;
        out.lastBar = lastBar_;
        out.lastTickInBar = lastTickInBar_;
        out.image.assign(buf_.begin(), buf_.begin() + size_);
        out.reverseMap.assign(reverse_, reverse_ + 128);
        out.readsPastEnd = pastEnd_;
        return out;
    }

private:
    uint8_t Get()
    {
        ++bytesRead_;
        if (in_ < size_) return buf_[size_t(in_++)];
        ++pastEnd_;
        return 0;
    }
    uint32_t Word(int bytes)
    {
        uint32_t v = 0;
        while (bytes-- > 0) v = v << 8 | Get();
        return v;
    }
    uint32_t Number()
    {
        uint32_t v = 0;
        for (uint8_t b = 0x80; b > 127;) b = Get(), v = (v << 7) + (b & 0x7F);
        return v;
    }
    void Put(int32_t at, uint32_t value, int bytes)
    {
        while (bytes-- > 0) buf_[size_t(at++)] = uint8_t(value >> (8 * bytes));
    }
    bool StartChunk(const char* id)
    {
        // The id as one big-endian word: GCC 12 at -O3 misreads a loop into char[4] here
        // (a false -Wstringop-overflow).
        const uint32_t name = Word(4);
        uint32_t expected = 0;
        for (int i = 0; i < 4; ++i) expected = expected << 8 | uint8_t(id[i]);
        lengthIdx_ = in_;
        length_ = int32_t(Word(4));
        next_ = in_ + length_;
        return name == expected;
    }
    void Insert()
    {
        ++size_;
        std::memmove(&buf_[size_t(in_) + 1], &buf_[size_t(in_)], size_t(size_ - in_));
        buf_[size_t(in_)] = 0;
        ++next_;
        ++in_;
        Put(lengthIdx_, uint32_t(++length_), 4);
    }

    bool Pass(int pass, bool& found)
    {
        in_ = 0;
        if (!StartChunk("MThd") || length_ <= 5) return false;
        const uint32_t format = Word(2);
        const int32_t countIdx = in_;
        int32_t count = int32_t(Word(2));
        if (format > 2 || count == 0 || (count > 1 && format == 0)) return false;
        tpq_ = int32_t(Word(2));
        if (tpq_ > 32767) tpq_ = (tpq_ & 0xFF) * ((tpq_ >> 8) == 29 ? 30 : (tpq_ >> 8));
        in_ = next_;
        found = false;
        for (int32_t track = 1; track <= count; ++track) {
            const int32_t from = in_;
            bool drums = false;
            if (!Track(drums, !found, pass)) return false;
            if (drums) {
                found = true;
            } else if (track > 1) {
                const int32_t to = std::min(in_, size_);   // a chunk running past the end goes to the end
                std::memmove(&buf_[size_t(from)], &buf_[size_t(to)], size_t(size_ - to));
                size_ -= to - from;
                in_ = from;
                --track;
                Put(countIdx, uint32_t(--count), 2);
            }
        }
        return true;
    }

    bool Track(bool& drums, bool mayHaveNotes, int pass)
    {
        if (!StartChunk("MTrk")) return false;
        bytesRead_ = 0;
        int32_t tick = 0, tickInBar = 0, bar = 1, ticksPerMeasure = 4 * tpq_;
        uint8_t running = 0;
        uint8_t meta[2] = {0, 0};
        while (bytesRead_ < length_) {
            const int32_t delta = int32_t(Number());
            tick += delta;
            tickInBar += delta;
            while (ticksPerMeasure > 0 && tickInBar >= ticksPerMeasure) tickInBar -= ticksPerMeasure, ++bar;
            const int32_t statusIdx = in_;
            uint8_t status = Get(), first;
            const bool usingRunning = status < 0x80;
            if (usingRunning) {
                if (running == 0) return false;
                first = status;
                status = running;
            } else {
                first = Get();
                if (status <= 0xEF) running = status;
            }
            if (status == 0xF0) {
                for (int i = 0; i < 4; ++i) Get();
                // Past the end the scan would read zeros for ever: it stops at the first.
                for (bool past = false; !past;) {
                    past = in_ >= size_;
                    if (Get() == 0xF7) break;
                }
                continue;
            }
            const int32_t dataIdx = in_;
            if (status != 0xFF && (status >> 4) != 0xC && (status >> 4) != 0xD) Get();
            if (status == 0xFF) {
                const int32_t length = int32_t(Number()), start = in_;
                for (int32_t i = 0; i < length; ++i) {
                    const uint8_t b = Get();
                    if (i < 2) meta[i] = b;
                }
                if (length < 2) meta[length] = 0;   // the terminator stored after the data
                in_ = start + length;
                if (first == 0x2F) {
                    in_ = next_;
                    return true;
                }
                if (first == 0x58) {
                    if (tick > 0) return false;
                    ticksPerMeasure = meta[0] * (4 * tpq_ / (1 << meta[1]));
                }
            } else if (mayHaveNotes && (status & 0x0F) == 9) {
                drums = true;
                lastBar_ = bar;
                lastTickInBar_ = tickInBar;
                if ((status >> 4) == 8 || (status >> 4) == 9)
                    Key(first, pass, usingRunning ? statusIdx : statusIdx + 1);
            } else if (!usingRunning) {
                buf_[size_t(statusIdx)] = 0x89;
                if (in_ == dataIdx) Insert();
                Put(statusIdx + 1, 0x0040, 2);
            }
        }
        in_ = next_;
        return true;
    }

    void Key(uint8_t key, int pass, int32_t keyIdx)
    {
        highest_ = std::max<int>(highest_, key);
        lowest_ = std::min<int>(lowest_, key);
        used_[key] = true;
        if (pass != 2 || key <= 59) return;
        for (int p = lowest_ + 1; mappedTo_[key] == 0 && p <= 59; ++p)
            if (!used_[p]) used_[p] = true, reverse_[p] = key, mappedTo_[key] = uint8_t(p);
        if (mappedTo_[key] != 0) buf_[size_t(keyIdx)] = mappedTo_[key];
    }

    std::vector<uint8_t> buf_;
    int32_t size_, in_ = 0, next_ = 0, lengthIdx_ = 0, length_ = 0, bytesRead_ = 0, tpq_ = 0;
    int32_t lastBar_ = 0, lastTickInBar_ = 0;
    int64_t pastEnd_ = 0;
    int highest_ = 0, lowest_ = 127;
    bool used_[128] = {};
    uint8_t mappedTo_[128] = {}, reverse_[128] = {};
};
}   // namespace

CleanOutcome CleanByMovingBytes(const Bytes& file)
{
    return Reference(file).Run();
}
