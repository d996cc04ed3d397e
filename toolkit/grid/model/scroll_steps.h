// Where a step of a scroll bar, or a turn of the wheel, leads.
//
//   geometry.scrollToY(steppedY(geometry, ScrollStep::pageOn));
//   geometry.scrollToX(steppedX(geometry, ScrollStep::lineBack, width));
//
// Plain functions; any thread that may read the geometry. Distances are device pixels; positions
// may lie outside the range, which the geometry clamps.
#pragma once

#include "toolkit/grid/model/geometry.h"

#include <cstdint>

namespace grid {

enum class ScrollStep { lineBack, lineOn, pageBack, pageOn, first, last };

/// A line is a row; a page leaves one row of the old page on view.
RowIndex steppedY(const Geometry& geometry, ScrollStep step);
/// `line` is what an arrow scrolls by; a page leaves as much of the old page on view.
int steppedX(const Geometry& geometry, ScrollStep step, int line);

/// What a notch of the wheel scrolls by when it is set to so many lines; at most a page.
RowIndex wheelNotchY(const Geometry& geometry, std::int64_t lines);
/// The same for so many characters sideways; at most the view.
RowIndex wheelNotchX(const Geometry& geometry, std::int64_t characters, int line);

}  // namespace grid
