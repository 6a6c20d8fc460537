// The drawing state of a dialog's port, and the log of what was drawn into it.
//
// There are no pixels: drawing operations are recorded with the state they were drawn in, so
// that a front end can show them and tests can see that a redraw happened and how (a list drawn
// on a white background, a frame drawn in grey ...).
#pragma once

#include "toolbox/geometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace toolbox {

struct RGBColor {
    uint16_t red = 0;
    uint16_t green = 0;
    uint16_t blue = 0;
};

inline bool operator==(const RGBColor& a, const RGBColor& b)
{
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}
inline bool operator!=(const RGBColor& a, const RGBColor& b)
{
    return !(a == b);
}

constexpr RGBColor kBlack{0, 0, 0};
constexpr RGBColor kWhite{0xFFFF, 0xFFFF, 0xFFFF};

struct PenState {
    int16_t width = 1;
    int16_t height = 1;
};

inline bool operator==(const PenState& a, const PenState& b)
{
    return a.width == b.width && a.height == b.height;
}

// Theme fonts and scripts by number.
constexpr int16_t kSystemFont = 0;
constexpr int16_t kSmallSystemFont = 1;
constexpr int16_t kSmallEmphasizedSystemFont = 2;
constexpr int16_t kSystemScript = -1;

// Everything a theme drawing state covers: what SaveState keeps and RestoreState puts back.
struct DrawingState {
    RGBColor foreground = kBlack;
    RGBColor background = kWhite;
    PenState pen;
    int16_t themeFont = kSystemFont;
    int16_t script = kSystemScript;
};

inline bool operator==(const DrawingState& a, const DrawingState& b)
{
    return a.foreground == b.foreground && a.background == b.background && a.pen == b.pen &&
           a.themeFont == b.themeFont && a.script == b.script;
}

enum class DrawKind {
    kFrameRect,     // the outline of `rect` in the pen and foreground colour
    kDialogItems,   // the dialog's items within `rect`
    kListCells,     // a list's cells within `rect` (a list's view)
};

struct DrawOp {
    DrawKind kind = DrawKind::kFrameRect;
    DialogRect rect;
    DrawingState state;   // the port's state when it was drawn
};

class DrawingPort {
public:
    // The log keeps the newest operations only; beyond this many the oldest half is dropped.
    static constexpr size_t kLogLimit = 4096;

    const DrawingState& State() const { return state_; }

    // A copy of the whole state, to put back later with RestoreState. Saved states are plain
    // values: there is nothing to dispose of.
    DrawingState SaveState() const { return state_; }
    void RestoreState(const DrawingState& saved) { state_ = saved; }
    // Plain drawing whatever the theme: white background, black foreground, a 1 x 1 pen. The
    // font stays.
    void Normalize();

    void SetForeground(RGBColor color) { state_.foreground = color; }
    void SetBackground(RGBColor color) { state_.background = color; }
    PenState GetPenState() const { return state_.pen; }
    void SetPenState(PenState pen) { state_.pen = pen; }
    void SetPenSize(int16_t width, int16_t height) { state_.pen = PenState{width, height}; }
    void UseThemeFont(int16_t font, int16_t script);

    // The part of the port that can be seen. A front end that shows only part of the dialog sets
    // it; by default it is the whole content area.
    const DialogRect& VisibleRegion() const { return visible_; }
    void SetVisibleRegion(const DialogRect& region) { visible_ = region; }

    void FrameRect(const DialogRect& rect) { Record(DrawKind::kFrameRect, rect); }
    // Adds an operation to the log in the current state. Never fails: when memory runs out the
    // operation is not logged.
    void Record(DrawKind kind, const DialogRect& rect) noexcept;

    const std::vector<DrawOp>& Log() const { return log_; }
    void ClearLog() { log_.clear(); }

private:
    DrawingState state_;
    DialogRect visible_;
    std::vector<DrawOp> log_;
};

}   // namespace toolbox
