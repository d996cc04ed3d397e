// Maps rows to the 32-bit positions of a scroll bar and back.
//
//   ScrollRange range(rowCount, rowsOnAPage);
//   setBar(range.barMaximum(), range.barPage(), range.barPosition(topRow));
//   topRow = range.row(trackPosition);
//
// Any thread; a value. Up to kMaxBar rows a bar unit is a row. Beyond that a unit is several rows;
// the first and the last position still map exactly to the first and the last row.
#pragma once

#include "toolkit/grid/model/shapes.h"

namespace grid {

class ScrollRange {
public:
    /// Half the maximum of a scroll bar, so that the sum of two positions still fits in 32 bits.
    static constexpr RowIndex kMaxBar = RowIndex{1} << 30;

    ScrollRange(RowIndex rowCount, RowIndex rowsOnAPage);

    /// The last possible top row: the page below it is full.
    RowIndex lastTop() const { return lastTop_; }

    /// The bar's range is 0 to barMaximum(), both included; its largest position is
    /// barMaximum() - barPage() + 1.
    int barMaximum() const { return lastPosition_ + page_ - 1; }
    int barPage() const { return page_; }
    int barPosition(RowIndex topRow) const;

    /// The top row for a position, clamped to the range.
    RowIndex row(int barPosition) const;

private:
    RowIndex lastTop_;
    RowIndex rowsPerUnit_;
    int page_;
    int lastPosition_;
};

}  // namespace grid
