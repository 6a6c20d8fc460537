#include "toolbox/drawing.h"

namespace toolbox {

void DrawingPort::Normalize()
{
    state_.foreground = kBlack;
    state_.background = kWhite;
    state_.pen = PenState{};
}

void DrawingPort::UseThemeFont(int16_t font, int16_t script)
{
    state_.themeFont = font;
    state_.script = script;
}

void DrawingPort::Record(DrawKind kind, const DialogRect& rect) noexcept
{
    try {
        if (log_.size() >= kLogLimit)
            log_.erase(log_.begin(), log_.begin() + static_cast<std::ptrdiff_t>(kLogLimit / 2));
        log_.push_back(DrawOp{kind, rect, state_});
    } catch (...) {
        // A drawing that cannot be logged is still drawn; the log is for looking on only.
    }
}

}   // namespace toolbox
