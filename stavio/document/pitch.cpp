#include "stavio/document/pitch.h"

namespace stavio {

int32_t NoteToMidiKey(int32_t tcd, int32_t alteration)
{
    static constexpr int32_t kMajorScale[7] = {0, 2, 4, 5, 7, 9, 11};
    constexpr int32_t kStepsPerOctave = 7;
    // Floor division, so that one step below middle C is B3, not a step of octave 4.
    int32_t octave = tcd / kStepsPerOctave;
    int32_t step = tcd % kStepsPerOctave;
    if (step < 0) {
        step += kStepsPerOctave;
        octave -= 1;
    }
    return 60 + octave * 12 + kMajorScale[step] + alteration;
}

}   // namespace stavio
