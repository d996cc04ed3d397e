#include "toolkit/grid/model/source_cursor.h"

#include <utility>

namespace grid {

void SourceCursor::bind(DataSource* source) {
    source_ = source;
    row_ = kNoRow;
}

RowIndex SourceCursor::look(RowIndex known) const {
    const RowIndex row = source_ ? source_->currentRow() : kNoRow;
    return row >= 0 && row < known ? row : kNoRow;
}

bool SourceCursor::take(RowIndex known) {
    const RowIndex now = look(known);
    return std::exchange(row_, now) != now;
}

void SourceCursor::moveTo(RowIndex row) {
    if (!source_ || row == kNoRow || row == source_->currentRow()) return;
    moving_ = true;
    try {
        source_->setCurrentRow(row);
    } catch (...) {
        moving_ = false;
        throw;
    }
    moving_ = false;
}

}  // namespace grid
