// How much room texts take where a grid shows them, measured as they are painted.
//
//   int wide = contentWidth(scene, column);
//   if (textCutOff(scene, {row, column.index()})) offerTip(scene.cell.text);
//
// The user-interface thread. Distances are device pixels.
#pragma once

#include "toolkit/grid/painter.h"

namespace grid {

/// Caption and picture of a heading without the padding at both sides.
int headingWidth(const Scene& scene, const Column& column);

/// The heading while it stands in the group area: there it always has a picture.
int chipWidth(const Scene& scene, const Column& column);

/// The column's width that shows its heading and its cells on view whole, at most the view's.
int contentWidth(const Scene& scene, const Column& column);

/// Whether not all of a cell's text is to be seen, or of a heading (row kNoRow). The text of a cell
/// is left in scene.cell.
bool textCutOff(const Scene& scene, Cell viewCell);

}  // namespace grid
