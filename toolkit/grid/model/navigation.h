// Where a key moves the current cell.
//
//   Cell target = navigate(geometry, selection.current(), Motion::pageDown);
//
// Any thread that may read the geometry; no state of its own.
#pragma once

#include "toolkit/grid/model/geometry.h"

namespace grid {

enum class Motion { left, right, up, down, pageUp, pageDown, rowStart, rowEnd, firstRow, lastRow };

/// The cell that `motion` leads to; the current one if there is none. Without a current row every
/// motion starts at a visible row. Without rows the result has no row.
Cell navigate(const Geometry& geometry, Cell current, Motion motion);

}  // namespace grid
