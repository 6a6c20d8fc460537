// How many beat rests a measure of slash notation holds, and how long each is. Adding and
// removing read compound meters differently on purpose: the remover treats every meter whose
// beat count divides by 3 as compound, so the three single-beat rests written into a 3/4
// measure are not recognised as its own and stay.
#pragma once

#include "sdk/records.h"

struct BeatRule {
    int beats;     // number of rests
    int divbeat;   // length of each, EDU
};

// 6/8 gives two dotted quarters and 12/8 four; 3/4 and 3/8 stay three beats.
inline BeatRule AddingBeatRule(const EDTMeasureSpec2005& spec)
{
    BeatRule rule{spec.beats, spec.divbeat};
    if (rule.beats > 5 && rule.beats % 3 == 0) {
        rule.beats /= 3;
        rule.divbeat *= 3;
    }
    return rule;
}

inline BeatRule RemovingBeatRule(const EDTMeasureSpec2005& spec)
{
    BeatRule rule{spec.beats, spec.divbeat};
    if (rule.beats % 3 == 0) {
        rule.beats /= 3;
        rule.divbeat *= 3;
    }
    return rule;
}

// The flags of a beat rest written for slash notation; the value is the host's.
constexpr uint32_t kSlashRestFlags = 0x81000000;
// Extra entry flags a beat rest may carry and still be recognised as one of ours.
constexpr uint16_t kSlashRestAllowedXef = 0x0080;
