#include "toolbox/geometry.h"

#include <algorithm>
#include <cstdint>

namespace toolbox {

namespace {

int16_t Edge(long value)
{
    return static_cast<int16_t>(std::clamp<long>(value, INT16_MIN, INT16_MAX));
}

}   // namespace

DialogRect MakeRect(long left, long top, long right, long bottom)
{
    return DialogRect{Edge(left), Edge(top), Edge(right), Edge(bottom)};
}

DialogRect InsetRect(const DialogRect& rect, int dx, int dy)
{
    long left = static_cast<long>(rect.left) + dx;
    long right = static_cast<long>(rect.right) - dx;
    long top = static_cast<long>(rect.top) + dy;
    long bottom = static_cast<long>(rect.bottom) - dy;
    if (right < left) left = right = (static_cast<long>(rect.left) + rect.right) / 2;
    if (bottom < top) top = bottom = (static_cast<long>(rect.top) + rect.bottom) / 2;
    return MakeRect(left, top, right, bottom);
}

DialogRect IntersectRects(const DialogRect& a, const DialogRect& b)
{
    const DialogRect common{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                            std::min(a.bottom, b.bottom)};
    return IsEmptyRect(common) ? DialogRect{} : common;
}

bool RectsOverlap(const DialogRect& a, const DialogRect& b)
{
    return !IsEmptyRect(IntersectRects(a, b));
}

}   // namespace toolbox
