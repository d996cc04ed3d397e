// Which cell is the current one, and which rows are drawn as selected.
//
//   if (selection.moveTo({row, column})) raiseRowColChange();
//
// One thread. Today the selection is the current row; callers that paint ask contains(), so that
// a range of rows can come in behind it.
#pragma once

#include "toolkit/grid/model/shapes.h"

namespace grid {

class Selection {
public:
    Cell current() const { return current_; }
    bool contains(RowIndex row) const { return row != kNoRow && row == current_.row; }

    // Returns whether the current cell changed.
    bool moveTo(Cell cell) {
        bool moved = cell != current_;
        current_ = cell;
        return moved;
    }

private:
    Cell current_;
};

}  // namespace grid
