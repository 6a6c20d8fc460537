// Points and rectangles of the dialog model. Coordinates are pixels from the top left corner of a
// dialog's content area, y growing downwards. A rectangle holds the points with
// left <= x < right and top <= y < bottom, so its right and bottom edges lie outside it.
#pragma once

#include "toolbox/resources.h"

namespace toolbox {

struct Point {
    int x = 0;
    int y = 0;
};

inline bool operator==(const Point& a, const Point& b)
{
    return a.x == b.x && a.y == b.y;
}

inline bool operator==(const DialogRect& a, const DialogRect& b)
{
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
inline bool operator!=(const DialogRect& a, const DialogRect& b)
{
    return !(a == b);
}

inline int RectWidth(const DialogRect& rect)
{
    return rect.right - rect.left;
}
inline int RectHeight(const DialogRect& rect)
{
    return rect.bottom - rect.top;
}
inline bool IsEmptyRect(const DialogRect& rect)
{
    return rect.right <= rect.left || rect.bottom <= rect.top;
}

inline bool PointInRect(Point point, const DialogRect& rect)
{
    return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
}

// Builds a rectangle from wider numbers, holding each edge within the 16-bit range.
DialogRect MakeRect(long left, long top, long right, long bottom);

// Moves each edge `dx` and `dy` inwards; negative amounts grow the rectangle. A rectangle inset
// past its middle collapses to an empty one at its centre.
DialogRect InsetRect(const DialogRect& rect, int dx, int dy);

// The common part of two rectangles; an empty rectangle when they do not overlap.
DialogRect IntersectRects(const DialogRect& a, const DialogRect& b);
bool RectsOverlap(const DialogRect& a, const DialogRect& b);

}   // namespace toolbox
