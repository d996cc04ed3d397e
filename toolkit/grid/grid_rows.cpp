// The grid's rows: how many there are, which is the current one, which are selected.
#include "toolkit/grid/grid.h"
#include "toolkit/grid/model/selected_text.h"

#include <algorithm>
#include <utility>

namespace grid {

void Grid::setDataSource(DataSource* source) {
    endDrag(true);
    tip_.hide();
    cursor_.bind(source);
    hotColumn_ = kNoColumn;
    groups_.clear();
    geometry_.setRowCount(0);
    makeColumns();
    geometry_.scrollToX(0);
    selection_.moveTo({});
    wheelX_.reset();
    wheelY_.reset();
    repaint_.all();
    geometry_.setRowCount(approxCount());
    bars_.update();
    followSource(true, true);
}

void Grid::rowCountChanged() {
    takeRowCount();
    followSource(false, false);
}

void Grid::currentRowChanged() {
    if (cursor_.moving()) return;
    takeRowCount();
    // A row that the owner goes to is to be seen.
    const RowIndex now = cursor_.look(rowsKnown());
    if (now != row() && groups_.active() && groups_.reveal(now, *dataSource())) viewRowsChanged();
    followSource(true, false);
}

void Grid::dataChanged() {
    const bool otherRow = dataSource() && dataSource()->currentRow() != row();
    if (groups_.active()) {
        regroup();
    } else {
        takeRowCount();
    }
    tip_.hide();
    repaint_.rowsFrom(geometry_.firstRow());
    // The rows of a range stand elsewhere now.
    Selection one = selection_;
    one.moveTo(selection_.current());
    select(one);
    followSource(otherRow, true);
}

void Grid::takeRowCount() {
    if (groups_.active()) {
        if (approxCount() != grouping().rowCount()) regrouping_.request(hwnd());
        return;
    }
    RowIndex before = geometry_.rowCount();
    RowIndex oldY = geometry_.scrollY();
    geometry_.setRowCount(approxCount());
    if (geometry_.rowCount() == before) return;
    bool moved = geometry_.scrollY() != oldY;
    repaint_.rowsFrom(moved ? geometry_.firstRow() : std::min(before, geometry_.rowCount()));
    bars_.updateSoon();
}

void Grid::setCol(int column) {
    if (column >= 0 && column < columnCount()) moveCurrent({selection_.current().row, column});
}

void Grid::setCurrentCell(std::int64_t viewRow, int column) {
    if (viewRow >= 0 && viewRow < geometry_.rowCount() && column >= 0 && column < columnCount()) {
        moveCurrent({viewRow, column});
    }
}

// Rows that came and are in no group yet are not known.
RowIndex Grid::rowsKnown() const {
    return groups_.active() ? grouping().rowCount() : geometry_.rowCount();
}

// Where the user wants to go; the source has the last word about the row. On the row of a group
// the source's current row stays what it is.
void Grid::moveCurrent(Cell cell, Selecting how) {
    const bool onView = cell.row >= 0 && cell.row < geometry_.rowCount();
    const Grouping::Place place = onView ? grouping().at(cell.row) : Grouping::Place{};
    cursor_.moveTo(place.row);
    const bool otherRow = cursor_.take(rowsKnown());
    const Cell target{place.group != kNoGroup ? cell.row : grouping().viewOf(row()), cell.column};
    const bool otherColumn = target.column != selection_.current().column;
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
    const bool moved = cursor_.take(rowsKnown());
    const Cell old = selection_.current();
    const bool staysOnGroup = !moved && focusedGroup() != kNoGroup;
    const int column = old.column == kNoColumn ? geometry_.columns().firstVisible() : old.column;
    const Cell target{staysOnGroup ? old.row : grouping().viewOf(row()), column};
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
        tip_.hide();
        events_.focusMoved();
    }
    for (RowIndex view = geometry_.firstRow(); view < geometry_.endRow(); ++view) {
        const bool current = view == before.current().row || view == next.current().row;
        const bool moved = current && before.current() != next.current();
        if (moved || before.contains(view) != next.contains(view)) repaint_.row(view);
    }
}

void Grid::raiseRowColChange() {
    if (const auto procedure = onRowColChange) procedure();
}

void Grid::selectAll() {
    if (geometry_.rowCount() > 0) {
        Selection all = selection_;
        all.selectRows(0, geometry_.rowCount() - 1);
        select(all);
    }
}

std::wstring Grid::selectedText() const {
    std::wstring text;
    const auto groupLine = [this](int group) { return groupText(group); };
    SelectedText(cursor_, groups_, geometry_, selection_, groupLine).append(text, [] {
        return true;
    });
    return text;
}

}  // namespace grid
