#include "stavio/document/clefs.h"

#include <iterator>

namespace stavio {

namespace {

struct ClefDefault {
    ClefMeaning meaning;
    int16_t adjust;
    int16_t clefchar;
    int16_t clefydisp;
};

// Glyphs of the music font: G clef '&', F clef '?', C clef 'B', percussion clef 139.
constexpr int16_t kGClef = 38;
constexpr int16_t kFClef = 63;
constexpr int16_t kCClef = 66;
constexpr int16_t kPercussionGlyph = 139;
constexpr int16_t kOldPercussionGlyph = 47;
constexpr int16_t kTabGlyph = 170;

constexpr ClefDefault kClefs[kDefaultClefCount] = {
    {{"treble", "G", 2, 0}, -10, kGClef, -6},
    {{"alto", "C", 3, 0}, -4, kCClef, -4},
    {{"tenor", "C", 4, 0}, -2, kCClef, -2},
    {{"bass", "F", 4, 0}, 2, kFClef, -2},
    {{"percussion (two bars)", "percussion", 0, 0}, -10, kOldPercussionGlyph, -4},
    {{"treble 8vb", "G", 2, -1}, -3, kGClef, -6},
    {{"bass 8vb", "F", 4, -1}, 9, kFClef, -2},
    {{"baritone F", "F", 3, 0}, 0, kFClef, -4},
    {{"French violin", "G", 1, 0}, -12, kGClef, -8},
    {{"baritone C", "C", 5, 0}, 0, kCClef, 0},
    {{"mezzo-soprano", "C", 2, 0}, -6, kCClef, -6},
    {{"soprano", "C", 1, 0}, -8, kCClef, -8},
    {{"percussion", "percussion", 0, 0}, -10, kPercussionGlyph, -6},
    {{"treble 8va", "G", 2, 1}, -17, kGClef, -6},
    {{"bass 8va", "F", 4, 1}, -5, kFClef, -2},
    {{"blank", "none", 0, 0}, -10, 0, 0},
    {{"tablature", "TAB", 0, 0}, -10, kTabGlyph, -4},
    {{"tablature (sans)", "TAB", 0, 0}, -10, kTabGlyph, -4},
};
static_assert(std::size(kClefs) == kDefaultClefCount, "one default per clef");

constexpr int16_t kClefSize = 24;

}   // namespace

std::vector<EDTClefDef> DefaultClefDefinitions(int16_t musicFont)
{
    std::vector<EDTClefDef> clefs;
    for (const ClefDefault& clef : kClefs) {
        EDTClefDef def{};
        def.adjust = clef.adjust;
        def.clefchar = clef.clefchar;
        def.clefydisp = clef.clefydisp;
        def.size = kClefSize;
        clefs.push_back(def);
    }
    EDTClefDef& percussion = clefs[kPercussionClef];
    percussion.font = musicFont;
    percussion.flag = kClefUsesFont;
    return clefs;
}

const ClefMeaning* ClefMeaningOf(int clef)
{
    if (clef < 0 || clef >= kDefaultClefCount) {
        return nullptr;
    }
    return &kClefs[clef].meaning;
}

}   // namespace stavio
