// Repaint: invalidates the parts of a grid's window that changed, and scrolls those that only
// moved.
//
//   Repaint repaint(geometry);
//   repaint.attach(hwnd());
//   repaint.row(selection.current().row);
//   repaint.scrolledRows(-20);
//
// What is out of view is left out. The user-interface thread. Distances are device pixels.
#pragma once

#include "toolkit/grid/model/geometry.h"

#include <windows.h>

namespace grid {

class Repaint {
public:
    explicit Repaint(const Geometry& geometry) : geometry_(geometry) {}

    /// Null when the window goes; until then, and before the first call, nothing is done.
    void attach(HWND window) { window_ = window; }

    void all() const;
    void part(const Rect& rect) const;
    void heading(int column) const;
    /// A row of the view; kNoRow for none.
    void row(RowIndex view) const;
    /// That row and everything below it.
    void rowsFrom(RowIndex view) const;
    /// From the left edge of a column to the right, headings and rows.
    void columnsFrom(int left) const;
    /// The rows of one column.
    void cells(int column) const;

    /// The rows stand that much further down, the columns with their headings that much further to
    /// the right: what is on the screen is moved, and the rest painted.
    void scrolledRows(int down) const;
    void scrolledColumns(int right) const;
    /// Paints at once.
    void now() const;

private:
    const Geometry& geometry_;
    HWND window_ = nullptr;
};

}  // namespace grid
