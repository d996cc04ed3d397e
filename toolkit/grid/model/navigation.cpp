#include "toolkit/grid/model/navigation.h"

#include <algorithm>

namespace grid {
namespace {

// The last row that is wholly on view, or the only one that fits at all.
RowIndex lastFullRow(const Geometry& geometry) {
    RowIndex first = geometry.firstRow();
    if (!geometry.fullyVisible(first)) ++first;
    return first + geometry.rowsOnAPage() - 1;
}

// A page key goes to the edge of the page first, and from there a page on; one row of the old
// page stays on view so that the eye finds its place.
RowIndex pageTarget(const Geometry& geometry, RowIndex row, bool down) {
    RowIndex page = std::max<RowIndex>(geometry.rowsOnAPage() - 1, 1);
    if (down) {
        RowIndex edge = lastFullRow(geometry);
        bool above = row >= geometry.firstRow() && row < edge;
        return above ? edge : row + page;
    }
    RowIndex edge = geometry.firstRow();
    if (!geometry.fullyVisible(edge)) ++edge;
    bool below = row > edge && row <= lastFullRow(geometry);
    return below ? edge : row - page;
}

RowIndex rowTarget(const Geometry& geometry, RowIndex row, Motion motion) {
    switch (motion) {
        case Motion::up:
            return row - 1;
        case Motion::down:
            return row + 1;
        case Motion::pageUp:
            return pageTarget(geometry, row, false);
        case Motion::pageDown:
            return pageTarget(geometry, row, true);
        case Motion::firstRow:
            return 0;
        case Motion::lastRow:
            return geometry.rowCount() - 1;
        default:
            return row;
    }
}

int columnTarget(const ColumnLayout& columns, int column, Motion motion) {
    int target = kNoColumn;
    switch (motion) {
        case Motion::left:
            target = columns.next(column, -1);
            break;
        case Motion::right:
            target = columns.next(column, 1);
            break;
        case Motion::rowStart:
            target = columns.firstVisible();
            break;
        case Motion::rowEnd:
            target = columns.lastVisible();
            break;
        default:
            break;
    }
    return target == kNoColumn ? column : target;
}

}  // namespace

Cell navigate(const Geometry& geometry, Cell current, Motion motion) {
    Cell target = current;
    if (target.column == kNoColumn) target.column = geometry.columns().firstVisible();
    if (geometry.rowCount() == 0) return {kNoRow, target.column};
    bool toAnEnd = motion == Motion::firstRow || motion == Motion::lastRow;
    if (current.row == kNoRow && !toAnEnd) return {geometry.firstRow(), target.column};
    RowIndex row = rowTarget(geometry, current.row, motion);
    target.row = std::clamp<RowIndex>(row, 0, geometry.rowCount() - 1);
    target.column = columnTarget(geometry.columns(), target.column, motion);
    return target;
}

}  // namespace grid
