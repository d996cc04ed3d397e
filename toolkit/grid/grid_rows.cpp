// The grid and its data source: how many rows there are, and which is the current one.
#include "toolkit/grid/grid.h"

#include <algorithm>
#include <utility>

namespace grid {

void Grid::setDataSource(DataSource* source) {
    endDrag(true);
    hideTip();
    source_ = source;
    hotColumn_ = kNoColumn;
    grouping_ = {};
    toggledGroups_.clear();
    geometry_.setRowCount(0);
    makeColumns();
    geometry_.scrollToX(0);
    selection_.moveTo({});
    sourceRow_ = kNoRow;
    wheelX_.reset();
    wheelY_.reset();
    invalidateAll();
    geometry_.setRowCount(approxCount());
    updateScrollBars();
    followSource(true, true);
}

void Grid::rowCountChanged() {
    takeRowCount();
    followSource(false, false);
}

void Grid::currentRowChanged() {
    if (!movingSource_) {
        takeRowCount();
        if (currentOfSource() != sourceRow_) reveal(currentOfSource());
        followSource(true, false);
    }
}

void Grid::dataChanged() {
    const bool otherRow = source_ && source_->currentRow() != row();
    if (grouping_.active()) {
        regroup();
    } else {
        takeRowCount();
    }
    hideTip();
    invalidateRowsFrom(geometry_.firstRow());
    // The rows of a range stand elsewhere now.
    Selection one = selection_;
    one.moveTo(selection_.current());
    select(one);
    followSource(otherRow, true);
}

void Grid::takeRowCount() {
    if (grouping_.active()) {
        if (approxCount() != grouping_.rowCount()) regroupSoon();
        return;
    }
    RowIndex before = geometry_.rowCount();
    RowIndex oldY = geometry_.scrollY();
    geometry_.setRowCount(approxCount());
    if (geometry_.rowCount() == before) return;
    bool moved = geometry_.scrollY() != oldY;
    invalidateRowsFrom(moved ? geometry_.firstRow() : std::min(before, geometry_.rowCount()));
    updateScrollBarsSoon();
}

void Grid::setCol(int column) {
    if (column >= 0 && column < columnCount()) moveCurrent({selection_.current().row, column});
}

void Grid::setCurrentCell(std::int64_t viewRow, int column) {
    if (viewRow >= 0 && viewRow < geometry_.rowCount() && column >= 0 && column < columnCount()) {
        moveCurrent({viewRow, column});
    }
}

RowIndex Grid::currentOfSource() const {
    const RowIndex row = source_ ? source_->currentRow() : kNoRow;
    const RowIndex known = grouping_.active() ? grouping_.rowCount() : geometry_.rowCount();
    return row >= 0 && row < known ? row : kNoRow;
}

void Grid::moveSource(RowIndex row) {
    if (!source_ || row == kNoRow || row == source_->currentRow()) return;
    movingSource_ = true;
    try {
        source_->setCurrentRow(row);
    } catch (...) {
        movingSource_ = false;
        throw;
    }
    movingSource_ = false;
}

// Where the user wants to go; the source has the last word about the row. On the row of a group
// the source's current row stays what it is.
void Grid::moveCurrent(Cell cell, Selecting how) {
    const bool onView = cell.row >= 0 && cell.row < geometry_.rowCount();
    const Grouping::Place place = onView ? grouping_.at(cell.row) : Grouping::Place{};
    moveSource(place.row);
    const RowIndex now = currentOfSource();
    const Cell target{place.group != kNoGroup ? cell.row : grouping_.viewOf(now), cell.column};
    const bool otherRow = now != sourceRow_;
    const bool otherColumn = target.column != selection_.current().column;
    sourceRow_ = now;
    Selection next = selection_;
    switch (how) {
        case Selecting::one:
            next.moveTo(target);
            break;
        case Selecting::range:
            next.extendTo(target);
            break;
        case Selecting::wholeRow:
            next.selectRow(target);
            break;
    }
    select(next);
    scroll([&](Geometry& geometry) {
        geometry.scrollRowIntoView(target.row);
        if (otherColumn) geometry.scrollColumnIntoView(target.column);
    });
    if (otherRow || otherColumn) raiseRowColChange();
}

// Makes the source's current row the grid's. Raises the event when that is another one, or
// `always`.
void Grid::followSource(bool intoView, bool always) {
    const RowIndex now = currentOfSource();
    const bool moved = now != sourceRow_;
    sourceRow_ = now;
    const Cell old = selection_.current();
    const bool staysOnGroup = !moved && focusedGroup() != kNoGroup;
    const int column = old.column == kNoColumn ? geometry_.columns().firstVisible() : old.column;
    const Cell target{staysOnGroup ? old.row : grouping_.viewOf(now), column};
    if (target != old) {
        Selection next = selection_;
        next.moveTo(target);
        select(next);
    }
    if (intoView) scroll([&](Geometry& geometry) { geometry.scrollRowIntoView(target.row); });
    if (moved || always || target.column != old.column) raiseRowColChange();
}

// Paints the rows that look different now.
void Grid::select(const Selection& next) {
    const Selection before = std::exchange(selection_, next);
    if (before == next) return;
    if (before.current() != next.current()) {
        hideTip();
        reportFocus();
    }
    for (RowIndex view = geometry_.firstRow(); view < geometry_.endRow(); ++view) {
        const bool current = view == before.current().row || view == next.current().row;
        const bool moved = current && before.current() != next.current();
        if (moved || before.contains(view) != next.contains(view)) invalidateRow(view);
    }
}

void Grid::raiseRowColChange() {
    if (const auto procedure = onRowColChange) procedure();
}

void Grid::invalidateRow(RowIndex row) {
    if (row >= geometry_.firstRow() && row < geometry_.endRow()) {
        Rect rect = geometry_.rowRect(row);
        rect.top = std::max(rect.top, geometry_.dataArea().top);
        invalidate(rect);
    }
}

void Grid::invalidateRowsFrom(RowIndex row) {
    row = std::max(row, geometry_.firstRow());
    if (row > geometry_.firstRow() + geometry_.rowsOnAPage() + 1) return;
    int top = std::max(geometry_.rowRect(row).top, geometry_.dataArea().top);
    invalidate({0, top, geometry_.viewWidth(), geometry_.viewHeight()});
}

}  // namespace grid
