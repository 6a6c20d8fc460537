// The event records the MIDI reader queues (tempo, meter, SMPTE offset, measure boundaries,
// end of the timeline) and the time-ordered list that holds them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <vector>

struct LEventRec {
    int32_t Tick = 0;          // absolute tick from the start of the track
    int32_t Bar = 0;           // measure, from 1
    int32_t Beat = 0;          // beat from 1 when exactly on a beat, else 0
    int32_t MicsPerBeat = 0;   // tempo in microseconds per quarter note; 0 = no tempo
    int32_t tickinbar = 0;
    int32_t EDUinbar = 0;   // position in the measure, 1024 to the beat
    double Speed = 0.0;     // quarter notes per minute
    bool stop = false;      // barrier: the usable timeline ends here
    int32_t BPM = 0;        // beats per measure
    int32_t TPB = 0;        // ticks per beat
    int32_t TPM = 0;        // ticks per measure
    int32_t Denominator = 0;
    uint8_t hr = 0, mn = 0, se = 0, fr = 0, ff = 0;   // SMPTE offset
};

// Records by tick. A new record goes after those of the same tick but before a barrier of the
// same tick; nothing later than a barrier met on the way in is kept. Records ahead of the
// first barrier are therefore always sorted, and are kept in a tree so that a record arriving
// out of order costs log n; the first barrier and whatever follows it keep arrival order.
// At most `limit` records are held; later ones are dropped (the reader sets the limit from the
// file's size, far above what any real file queues).
class EventQueue {
public:
    explicit EventQueue(size_t limit = SIZE_MAX) : limit_(limit) {}

    bool empty() const { return size() == 0; }
    size_t size() const { return sorted_.size() + barrierOnward_.size(); }
    const LEventRec& back() const;
    std::vector<LEventRec> ToVector() const;

    void Add(const LEventRec& ev);
    // Turns the last record into a barrier.
    void MarkLastAsStop();
    void SetLimit(size_t limit) { limit_ = limit; }

private:
    void AddBeforeFirstBarrier(const LEventRec& ev);

    std::multimap<int32_t, LEventRec> sorted_;   // ahead of the first barrier
    std::deque<LEventRec> barrierOnward_;        // the first barrier, then the rest in order
    size_t limit_;
};
