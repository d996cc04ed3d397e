// Points, rectangles and cells, so that the grid's arithmetic does not depend on the window system.
//
//   Rect cell = geometry.cellRect({row, column});
//   if (cell.contains(mouse)) select(row);
//
// Plain values; any thread. Distances are device pixels, x to the right and y downwards.
#pragma once

#include <cstdint>

namespace grid {

/// Row numbers have 64 bits everywhere: a data source may have more rows than a scroll bar
/// positions.
using RowIndex = std::int64_t;

/// No row, no column.
inline constexpr RowIndex kNoRow = -1;
inline constexpr int kNoColumn = -1;

struct Point {
    int x = 0;
    int y = 0;
};

/// A rectangle without its right and bottom edge.
struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool empty() const { return right <= left || bottom <= top; }
    bool contains(Point p) const {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
    friend bool operator==(const Rect&, const Rect&) = default;
};

/// The part that two rectangles share; empty() when there is none.
Rect intersection(const Rect& a, const Rect& b);

struct Cell {
    RowIndex row = kNoRow;
    int column = kNoColumn;

    friend bool operator==(const Cell&, const Cell&) = default;
};

}  // namespace grid
