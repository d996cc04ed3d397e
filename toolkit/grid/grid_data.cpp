// The grid and its data source: how many rows there are, and which is the current one.
#include "toolkit/grid/grid.h"

#include <algorithm>

namespace grid {

void Grid::setDataSource(DataSource* source) {
    endDrag(true);
    hideTip();
    source_ = source;
    hotColumn_ = kNoColumn;
    geometry_.setRowCount(0);
    makeColumns();
    geometry_.scrollToX(0);
    selection_.moveTo({});
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
        followSource(true, false);
    }
}

void Grid::dataChanged() {
    takeRowCount();
    hideTip();
    invalidateRowsFrom(geometry_.firstRow());
    followSource(source_ && source_->currentRow() != row(), true);
}

void Grid::takeRowCount() {
    RowIndex before = geometry_.rowCount();
    RowIndex oldY = geometry_.scrollY();
    geometry_.setRowCount(approxCount());
    if (geometry_.rowCount() == before) {
        return;
    }
    bool moved = geometry_.scrollY() != oldY;
    invalidateRowsFrom(moved ? geometry_.firstRow() : std::min(before, geometry_.rowCount()));
    updateScrollBarsSoon();
}

void Grid::setCol(int column) {
    if (column >= 0 && column < columnCount()) {
        moveCurrent({row(), column});
    }
}

// Where the user wants to go; the source has the last word about the row.
void Grid::moveCurrent(Cell cell) {
    if (source_ && cell.row != kNoRow && cell.row != source_->currentRow()) {
        movingSource_ = true;
        try {
            source_->setCurrentRow(cell.row);
        } catch (...) {
            movingSource_ = false;
            throw;
        }
        movingSource_ = false;
    }
    Cell old = selection_.current();
    bool otherColumn = selection_.moveTo({old.row, cell.column});
    if (otherColumn) {
        invalidateRow(old.row);
        scroll([&](Geometry& geometry) { geometry.scrollColumnIntoView(cell.column); });
    }
    followSource(true, otherColumn);
}

// Makes the source's current row the grid's. Raises the event when that is another one, or
// `always`.
void Grid::followSource(bool intoView, bool always) {
    RowIndex row = source_ ? source_->currentRow() : kNoRow;
    row = row >= 0 && row < geometry_.rowCount() ? row : kNoRow;
    Cell old = selection_.current();
    int column = old.column == kNoColumn ? geometry_.columns().firstVisible() : old.column;
    bool moved = selection_.moveTo({row, column});
    if (moved) {
        hideTip();
        invalidateRow(old.row);
        invalidateRow(row);
    }
    if (intoView) {
        scroll([&](Geometry& geometry) { geometry.scrollRowIntoView(row); });
    }
    if (moved || always) {
        if (const auto procedure = onRowColChange) {
            procedure();
        }
    }
}

void Grid::invalidateRow(RowIndex row) {
    if (row >= geometry_.firstRow() && row < geometry_.endRow()) {
        Rect rect = geometry_.rowRect(row);
        rect.top = std::max(rect.top, geometry_.measures().headingHeight);
        invalidate(rect);
    }
}

void Grid::invalidateRowsFrom(RowIndex row) {
    row = std::max(row, geometry_.firstRow());
    if (row > geometry_.firstRow() + geometry_.rowsOnAPage() + 1) {
        return;
    }
    int top = std::max(geometry_.rowRect(row).top, geometry_.measures().headingHeight);
    invalidate({0, top, geometry_.viewWidth(), geometry_.viewHeight()});
}

}  // namespace grid
