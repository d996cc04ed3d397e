// Which cell is the current one, and which rows are selected.
//
//   Selection before = selection;
//   selection.extendTo({row, column});
//   if (selection.contains(row)) select(row);
//
// A plain value; any thread. The selected rows are those from the anchor to the end of the
// range: just the current row, unless more were selected with Shift. Rows are counted as they stand
// on view.
#pragma once

#include "toolkit/grid/model/shapes.h"

#include <algorithm>

namespace grid {

class Selection {
public:
    Cell current() const { return current_; }
    RowIndex firstRow() const { return std::min(anchor_, end_); }
    RowIndex lastRow() const { return std::max(anchor_, end_); }
    bool contains(RowIndex row) const {
        return row != kNoRow && row >= firstRow() && row <= lastRow();
    }

    /// Whether whole rows are selected: a range, or one by its record selector. If not, the
    /// selection is the current cell.
    bool wholeRows() const { return wholeRows_; }

    /// Makes a cell current and its row the only selected one.
    void moveTo(Cell cell) {
        current_ = cell;
        anchor_ = cell.row;
        end_ = cell.row;
        wholeRows_ = false;
    }
    /// Makes a cell current; the selected rows reach from the anchor to it.
    void extendTo(Cell cell) {
        current_ = cell;
        anchor_ = anchor_ == kNoRow ? cell.row : anchor_;
        end_ = cell.row;
        wholeRows_ = true;
    }
    void selectRow(Cell cell) {
        moveTo(cell);
        wholeRows_ = true;
    }
    /// All rows from `first` to `last`, wherever the current one is.
    void selectRows(RowIndex first, RowIndex last) {
        anchor_ = first;
        end_ = last;
        wholeRows_ = true;
    }

    friend bool operator==(const Selection&, const Selection&) = default;

private:
    Cell current_;
    RowIndex anchor_ = kNoRow;
    RowIndex end_ = kNoRow;
    bool wholeRows_ = false;
};

}  // namespace grid
