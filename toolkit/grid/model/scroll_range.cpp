#include "toolkit/grid/model/scroll_range.h"

#include <algorithm>

namespace grid {

ScrollRange::ScrollRange(RowIndex rowCount, RowIndex rowsOnAPage) {
    rowCount = std::max<RowIndex>(rowCount, 0);
    RowIndex page = std::clamp<RowIndex>(rowsOnAPage, 1, kMaxBar);
    lastTop_ = std::max<RowIndex>(rowCount - page, 0);
    // Written without rowCount + kMaxBar, which could overflow.
    rowsPerUnit_ = rowCount == 0 ? 1 : (rowCount - 1) / kMaxBar + 1;
    page_ = static_cast<int>(std::max<RowIndex>(page / rowsPerUnit_, 1));
    lastPosition_ = static_cast<int>(lastTop_ / rowsPerUnit_ + (lastTop_ % rowsPerUnit_ != 0));
}

int ScrollRange::barPosition(RowIndex topRow) const {
    topRow = std::clamp<RowIndex>(topRow, 0, lastTop_);
    return topRow == lastTop_ ? lastPosition_ : static_cast<int>(topRow / rowsPerUnit_);
}

RowIndex ScrollRange::row(int barPosition) const {
    if (barPosition >= lastPosition_) return lastTop_;
    return std::max(barPosition, 0) * rowsPerUnit_;
}

}  // namespace grid
