// SourceCursor: the data source that a grid is bound to, and the row that it last saw current
// there.
//
//   SourceCursor cursor;
//   cursor.bind(&source);
//   cursor.moveTo(17);
//   if (cursor.take(cursor.rowCount())) select(cursor.row());
//
// The source decides about its current row and may refuse to move. One thread.
#pragma once

#include "toolkit/grid/model/data_source.h"
#include "toolkit/grid/model/shapes.h"

#include <cstdint>

namespace grid {

class SourceCursor {
public:
    /// Null for none. No row is current until somebody looks.
    void bind(DataSource* source);
    DataSource* source() const { return source_; }
    std::int64_t rowCount() const { return source_ ? source_->rowCount() : 0; }

    /// The source's current row as it was last taken.
    RowIndex row() const { return row_; }
    /// The source's current row now; kNoRow for none among the first `known` rows.
    RowIndex look(RowIndex known) const;
    /// Makes what `look` says the row. Returns whether that is another one.
    bool take(RowIndex known);

    /// Asks the source to go to a row; kNoRow asks for nothing. The source may refuse, or throw.
    void moveTo(RowIndex row);
    /// While moveTo asks: what the source tells of its current row is no news.
    bool moving() const { return moving_; }

private:
    DataSource* source_ = nullptr;
    RowIndex row_ = kNoRow;
    bool moving_ = false;
};

}  // namespace grid
